#pragma once

#include "ConvertedFile.h"
#include "Media/SoundDecoder.h"
#include "SonaroHost/Media/AudioFileInfo.h"
#include "TimeStretcher.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>

namespace SonaroHost
{

// The samples of a recording that a stretcher makes of a file, block by block from the start: the file is converted to
// another speed by its positions, and then stretched.
class BlockStretchDecoder : public SoundDecoder
{
public:
	~BlockStretchDecoder() override;

	unsigned GetNumChannels() const noexcept final { return mNumChannels; }
	bool IsSeekExact() const noexcept final { return false; }
	std::int64_t GetPosition() const noexcept final { return mPosition; }
	std::int64_t Read(float* outSamples, std::int64_t inFrames) final;
	bool SeekTo(std::int64_t inFrame) final { return inFrame == mPosition; }

protected:
	// inFile: a decoder of the file, at its start.
	BlockStretchDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile);

	AudioFileInfo const& GetRecording() const noexcept { return mRecording; }

private:
	// Before the first frame, once. The decoder keeps the stretcher until its end.
	virtual std::unique_ptr<TimeStretcher> MakeStretcher() = 0;
	// The frames of the file for each one that the stretcher takes.
	virtual Ratio GetConversion(TimeStretcher const& inStretcher) const = 0;
	// Before each block, which follows all that was read.
	virtual void PrepareBlock() {}
	// Where the recording ends if the file has so many frames.
	virtual std::int64_t FindEnd(std::int64_t inFileFrames) const = 0;

	// Called before the first frame: many decoders never read one.
	void Start();
	// Stretches blocks until there is output.
	void Fill();
	// Gives up to so many of the frames that are there.
	std::int64_t Give(float* outSamples, std::int64_t inFrames);

	AudioFileInfo mRecording;
	unsigned mNumChannels;
	// Null from the start on.
	std::unique_ptr<SoundDecoder> mDecoder;
	// Null before.
	std::unique_ptr<TimeStretcher> mStretcher;
	std::unique_ptr<ConvertedFile> mFile;
	dsp::AudioBuffer mInput;
	dsp::AudioBuffer mOutput;
	// What of the output is there, and was given.
	unsigned mReady = 0;
	unsigned mGiven = 0;
	// Frames that were read.
	std::int64_t mPosition = 0;
};

} // namespace SonaroHost
