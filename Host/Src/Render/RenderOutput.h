#pragma once

#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/Metering/PeakLimiter.h"
#include "SonaroHost/Render/AudioFileWriter.h"
#include "SonaroHost/Render/RenderSummary.h"

#include <cstdint>
#include <optional>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// What becomes of the blocks of a pass: fades, a gain, a limiter whose latency is made up for, a meter, a file.
class RenderOutput
{
public:
	struct Setup
	{
		int mSampleRate = 0;
		SN::AudioChannelLayout mLayout;
		OutputFormat mFormat;
		float mGain = 1.0f;
		// The limit as a linear amplitude.
		std::optional<double> mLimit;
		bool mMeasures = false;
		bool mKeepsSeries = false;
		// False where it is only measured.
		bool mWrites = true;
		// Whether an older file of the output's name may be replaced.
		bool mReplaces = true;
	};

	RenderOutput(Setup const& inSetup, RenderedFile inFile);

	// Works in the block.
	void Add(dsp::AudioBuffer& ioBlock);
	// Completes the file under its temporary name, after the last block.
	void Complete();
	// Renames the file to its final name.
	void Commit();

	RenderedFile const& GetFile() const { return mFile; }

private:
	// Limits a block and passes on what the limiter releases, which lags behind.
	void Limit(dsp::AudioBuffer& ioBlock);
	void Write(dsp::AudioBuffer& ioBlock);
	// Where no meter does.
	void FindPeak(float const* inSamples, unsigned inFrames);

	Setup mSetup;
	RenderedFile mFile;
	std::optional<AudioFileWriter> mWriter;
	std::optional<LoudnessMeter> mMeter;
	std::optional<PeakLimiter> mLimiter;
	std::vector<float> mPlausible;
	std::int64_t mFramesAdded = 0;
	// The limiter's frames that are still to be dropped at the start.
	std::int64_t mFramesToDrop = 0;
};

} // namespace SonaroHost
