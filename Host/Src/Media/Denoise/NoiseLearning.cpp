#include "NoiseLearning.h"

#include "DenoisedInfo.h"
#include "InterleavedFile.h"
#include "Media/SoundDecoders.h"
#include "Media/Stretch/StretchedInfo.h"
#include "SonaroHost/Base/HostError.h"

#include <atomic>
#include <chrono>

namespace SonaroHost
{

namespace
{

// How long a wish to stop waits at most.
constexpr std::chrono::milliseconds kPatience{50};

std::int64_t CountFrames(AudioFileInfo const& inRecording)
{
	auto const& denoise = inRecording.mDenoise;
	if (!denoise || denoise->mReduction <= Denoise::kLeastReduction || inRecording.mNoise->IsLearned())
	{
		return 0;
	}
	return denoise->mLearn ? denoise->mLearn->mEnd - denoise->mLearn->mFirst : GetFileOf(inRecording).mFrames;
}

bool LearnNoise(AudioFileInfo const& inRecording, std::function<void(std::int64_t)> const& inReport,
	std::stop_token const& inStop)
{
	AudioFileInfo const recording = GetFileOf(inRecording);
	std::atomic<std::int64_t> done{0};
	DenoiseProcessor::Settings settings = MakeSettings(recording, 0);
	settings.mReport = [&done](std::int64_t inFrames) { done = inFrames; };
	SN::FrameRate const rate = SN::FrameRate::FromSamplesPerSecond(recording.mSampleRate);
	auto const open = [file = GetNoisyFileOf(recording)] { return OpenSoundDecoder(file); };
	auto const file = zorvcore::classref::MakeObject<InterleavedFile>(open, recording.mFrames, rate);
	auto const read = [&file](float** ioChannels, long long inStart, int inCount)
	{ file->Read(ioChannels[0], inStart, static_cast<unsigned>(inCount)); };
	auto const stream = zorvcore::classref::MakeObject<DenoiseProcessor>(settings)->CreateProcessedStream(
		read, 0, {recording.mFrames, rate});
	auto future = stream->GetNextBuffer();
	while (!zorvcore::async::WaitForUntypedUntil(future, std::chrono::steady_clock::now() + kPatience))
	{
		inReport(done);
		if (inStop.stop_requested())
		{
			future.Cancel();
		}
	}
	if (future.GetStatus() == zorvcore::async::FutureStatus::kFailed)
	{
		RethrowFor(recording, future.GetException());
	}
	// A file that ends early, or whose reads fail, would give the noise of another recording.
	if (file->GetFrames() < recording.mFrames)
	{
		RefuseFile(recording.mPath,
			"cannot be read at sample " + std::to_string(file->GetFrames()) +
				", although its header states " + std::to_string(recording.mFrames) +
				" samples: it is truncated or damaged",
			"get a complete copy");
	}
	return !inStop.stop_requested();
}

} // namespace

std::int64_t CountFramesToLearn(NoisyRecordings const& inRecordings)
{
	std::int64_t frames = 0;
	for (AudioFileInfo const* const recording : inRecordings)
	{
		frames += CountFrames(*recording);
	}
	return frames;
}

bool LearnNoise(NoisyRecordings const& inRecordings, std::function<void(std::int64_t)> const& inReport,
	std::stop_token const& inStop)
{
	std::int64_t done = 0;
	for (AudioFileInfo const* const recording : inRecordings)
	{
		std::int64_t const frames = CountFrames(*recording);
		auto const report = [&](std::int64_t inFrames) { inReport(done + inFrames); };
		if (frames > 0 && !LearnNoise(*recording, report, inStop))
		{
			return false;
		}
		done += frames;
	}
	return true;
}

std::vector<LearnedNoise> ListLearnedNoise(NoisyRecordings const& inRecordings)
{
	std::vector<LearnedNoise> list;
	for (AudioFileInfo const* const recording : inRecordings)
	{
		auto const profile = recording->mNoise ? recording->mNoise->Find() : nullptr;
		if (profile)
		{
			std::optional<double> const level =
				profile->IsSilent() ? std::nullopt : std::optional(profile->GetLevel());
			list.push_back({recording->mPath, recording->mSampleRate, *recording->mDenoise, level});
		}
	}
	return list;
}

} // namespace SonaroHost
