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

// The samples of a recording that is a file stretched.
//
// Method  The file is converted by its positions to the speed times the ratio of the stretcher, and then stretched: so
//         the speed is exact, and what the ratio lacks is left to the pitch.
class StretchedDecoder final : public SoundDecoder
{
public:
	// inFile: a decoder of the file, at its start.
	StretchedDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile);
	~StretchedDecoder() override;

	unsigned GetNumChannels() const noexcept override { return mNumChannels; }
	bool IsSeekExact() const noexcept override { return false; }
	std::int64_t GetPosition() const noexcept override { return mPosition; }
	std::int64_t Read(float* outSamples, std::int64_t inFrames) override;
	bool SeekTo(std::int64_t inFrame) override { return inFrame == mPosition; }

private:
	// Called before the first frame: many decoders never read one.
	void Start();
	// Stretches blocks until there is output.
	void Fill();
	// Where the recording ends by what was found of the file.
	std::int64_t FindEnd() const;

	Stretch mStretch;
	std::int64_t mFileFrames;
	std::int64_t mFrames;
	int mSampleRate;
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
	std::int64_t mPosition = 0;
};

} // namespace SonaroHost
