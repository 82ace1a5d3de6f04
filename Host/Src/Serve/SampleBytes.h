#pragma once

#include "Render/Encoder/AudioEncoder.h"
#include "SonaroHost/Metering/SampleQuantizer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost::Serve
{

// Samples as the bytes that they are in a WAV: interleaved, lower bytes first, rounded as AudioFileWriter does.
class SampleBytes
{
public:
	// inFirstFrame: that of the file with which it begins.
	SampleBytes(EncoderFormat const& inFormat, std::int64_t inFirstFrame);

	void Append(dsp::AudioBuffer const& inBlock, std::string& ioBytes);

private:
	unsigned mChannels;
	int mSampleSize;
	FramePlaces mPlaces;
	// One for each channel; none for floats.
	std::vector<SampleQuantizer> mQuantizers;
};

} // namespace SonaroHost::Serve
