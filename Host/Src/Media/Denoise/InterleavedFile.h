#pragma once

#include "Media/SoundDecoder.h"
#include "Sonaro/IAudioGenerator.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace SonaroHost
{

// The samples of all channels of a file, one after the other as they stand in it, as one channel of the engine's: frame n
// of that is channel n % channels of the file's frame n / channels. Silence before and after the file.
//
// Errors   Those of the decoder pass through GetAudioData.
// Threads  One at a time.
class InterleavedFile final : public SN::Implements<InterleavedFile, SN::IAudioGenerator>
{
public:
	static constexpr SN::Identifier<InterleavedFile> kIdentifier{
		0x3d5e0c9a81b7462full, 0xa4f2681c07de593bull};

	using Opener = std::function<std::unique_ptr<SoundDecoder>()>;

	// inOpen: opens a decoder at the start of the file. inFrames: the length that the file states. inRate: what times
	// count by.
	InterleavedFile(Opener inOpen, std::int64_t inFrames, SN::FrameRate const& inRate);

	// So many samples from inFirst on; throws what the decoder throws.
	void Read(float* outSamples, std::int64_t inFirst, unsigned inCount);

	// Frames of the file that are there, as far as it was read: fewer than it states where it is cut short.
	std::int64_t GetFrames() const { return mFrames; }

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override { return {}; }
	bool HasHistory() override { return false; }
	SN::TickTime GetDelay() SONARO_NONBLOCKING override { return SN::kTimeZero; }
	void Preroll(SN::TickTime const&, bool) override {}
	void FillInitialDelay(SN::TickTime const&, SN::TickTime const&, bool, bool) SONARO_NONBLOCKING override {}
	void AccumulatePrefetchRequests(
		SN::PrefetchRange const&, SN::PrefetchType, SN::PrefetchRequestAccumulator&) override
	{
	}
	// Not in a playback: it decodes.
	void GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override;
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}

private:
	// Decodes the frames from here on, unless they are held already.
	void Hold(std::int64_t inFrame);
	void MoveTo(std::int64_t inFrame);

	Opener mOpen;
	std::unique_ptr<SoundDecoder> mDecoder;
	std::int64_t mFrames;
	SN::FrameRate mRate;
	std::int64_t mHeldStart = -1;
	std::vector<float> mHeld;
};

} // namespace SonaroHost
