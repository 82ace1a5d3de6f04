#pragma once

#include "SonaroHost/Base/OutputFormat.h"
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
	SampleBytes(OutputFormat const& inFormat, unsigned inChannels, std::int64_t inFirstFrame);

	void Append(dsp::AudioBuffer const& inBlock, std::string& ioBytes);

private:
	unsigned mChannels;
	int mSampleSize;
	// One for each channel; none for floats.
	std::vector<SampleQuantizer> mQuantizers;
};

} // namespace SonaroHost::Serve
