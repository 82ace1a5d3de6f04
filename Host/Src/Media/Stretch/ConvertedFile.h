#pragma once

#include "Media/SoundDecoder.h"
#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Media/RateConverter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace SonaroHost
{

// The sound of a file from a frame on, played at another speed by its positions, in order; silence after its end. What is
// not finite is silence, too.
//
// Threads  One at a time.
class ConvertedFile
{
public:
	// Output n stands at the file's frame inStart + n * inStep. inFrames: the length that the file states.
	ConvertedFile(std::unique_ptr<SoundDecoder> inDecoder, std::int64_t inFrames, Ratio const& inStart,
		Ratio const& inStep);

	// The next outputs, as many as the buffer uses, in all channels of the file.
	void Read(dsp::AudioBuffer& outBuffer);

	// Frames of the file that are there, as far as it was read: fewer than it states where it is cut short.
	std::int64_t GetFrames() const { return mFrames; }

private:
	// Decodes so many frames, at most kDecodedFrames. Returns how many are there.
	std::int64_t Decode(std::int64_t inFrames);
	void Skip(std::int64_t inFrames);
	// Forgets what lies before a span and fetches what lacks of it.
	void MoveTo(RateConverter::Span const& inSpan);
	// Appends frames of the file, which are silence after its end.
	void Append(std::size_t inFrames);

	std::unique_ptr<SoundDecoder> mDecoder;
	std::int64_t mFrames;
	// None where nothing is converted.
	std::optional<RateConverter> mConverter;
	// Counted from the file's start where nothing is converted.
	std::int64_t mNextOutput = 0;
	// Where the held samples begin, in frames of the file.
	std::int64_t mStart = 0;
	std::vector<std::vector<float>> mChannels;
	std::vector<float> mDecoded;
	std::vector<RateConverter::Channel> mPlaces;
};

} // namespace SonaroHost
