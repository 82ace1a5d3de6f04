#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"

#include <array>
#include <atomic>
#include <cstddef>

namespace SonaroHost
{

// The largest magnitude of each channel since somebody looked, linear, 1 being full scale.
//
// Threads  SetMeterData and Reset: the render thread; they neither lock nor allocate. TakePeak: any. The rest: while
//          nothing renders.
class PeakMeter final : public SN::Implements<PeakMeter, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<PeakMeter> kIdentifier{0xa4c7e2905b18fd63ull, 0x7d3f60b9c2e8514aull};
	static constexpr std::size_t kMostChannels = 64;

	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(
		dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void Shutdown() override {}
	void Reset() override;

	// Of one channel, which begins anew.
	float TakePeak(std::size_t inChannel);
	// The largest of all channels.
	float TakePeak();

private:
	std::array<std::atomic<float>, kMostChannels> mPeaks{};
};

} // namespace SonaroHost
