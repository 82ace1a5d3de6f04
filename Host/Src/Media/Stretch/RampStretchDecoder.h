#pragma once

#include "Base/CurvePositions.h"
#include "ConvertedFile.h"
#include "Media/SoundDecoder.h"
#include "OmegaStretcher.h"
#include "SonaroHost/Media/AudioFileInfo.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>

namespace SonaroHost
{

// The samples of a recording that is a file stretched along a ramp, by an engine whose ratio can change.
//
// Method  The file is converted by the factor of the pitch, and then stretched. Before each block of 256 samples the ratio
//         is set so that the block ends where the integral of the curve is: what a ratio is rounded by, the next one
//         makes up for.
class RampStretchDecoder final : public SoundDecoder
{
public:
	// inFile: a decoder of the file, at its start.
	RampStretchDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile);
	~RampStretchDecoder() override;

	unsigned GetNumChannels() const noexcept override { return mNumChannels; }
	bool IsSeekExact() const noexcept override { return false; }
	std::int64_t GetPosition() const noexcept override { return mPosition; }
	std::int64_t Read(float* outSamples, std::int64_t inFrames) override;
	bool SeekTo(std::int64_t inFrame) override { return inFrame == mPosition; }

private:
	// Called before the first frame: many decoders never read one.
	void Start();
	void Fill();
	// Frames of the converted file that pass up to a frame of the recording.
	double GetPassed(std::int64_t inFrame) const;
	// Where the recording ends by what was found of the file.
	std::int64_t FindEnd() const;

	AudioFileInfo mRecording;
	unsigned mNumChannels;
	CurvePositions mPositions;
	bool mIsBackwards;
	// Null from the start on.
	std::unique_ptr<SoundDecoder> mDecoder;
	// Null before.
	std::unique_ptr<ConvertedFile> mFile;
	std::unique_ptr<OmegaStretcher> mStretcher;
	dsp::AudioBuffer mInput;
	dsp::AudioBuffer mOutput;
	// What was stretched, in frames of the recording and of the converted file as the engine counts them.
	std::int64_t mMade = 0;
	double mPassed = 0.0;
	// Frames that were read.
	std::int64_t mPosition = 0;
};

} // namespace SonaroHost
