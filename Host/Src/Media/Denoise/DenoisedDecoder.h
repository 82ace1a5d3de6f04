#pragma once

#include "InterleavedFile.h"
#include "Media/SoundDecoder.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Media/AudioFileInfo.h"
#include "SonaroHost/Offline/DenoiseProcessor.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>

namespace SonaroHost
{

// The samples of a file, its noise reduced, out of the engine's generator for offline processes.
//
// Seeks    As quick as those of the file: the process begins anew a little before the place.
// Errors   Those of the file.
class DenoisedDecoder final : public SoundDecoder
{
public:
	// inOpen: opens the file, its noise as it is.
	DenoisedDecoder(AudioFileInfo const& inRecording, InterleavedFile::Opener inOpen);
	~DenoisedDecoder() override;

	unsigned GetNumChannels() const noexcept override { return mRecording.GetNumChannels(); }
	bool IsSeekExact() const noexcept override { return mIsSeekExact; }
	std::int64_t GetPosition() const noexcept override { return mPosition; }
	std::int64_t Read(float* outSamples, std::int64_t inFrames) override;
	bool SeekTo(std::int64_t inFrame) override;

private:
	class Run;

	AudioFileInfo mRecording;
	InterleavedFile::Opener mOpen;
	bool mIsSeekExact;
	std::int64_t mPosition = 0;
	// Null before the first frame, and after a seek: many decoders never read one.
	std::unique_ptr<Run> mRun;
	dsp::AudioBuffer mOutput;
};

} // namespace SonaroHost
