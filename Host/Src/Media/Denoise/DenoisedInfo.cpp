#include "DenoisedInfo.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/TimePosition.h"

#include <utility>

namespace SonaroHost
{

namespace
{

void CheckReduction(double inReduction)
{
	if (!(inReduction >= Denoise::kLeastReduction && inReduction <= Denoise::kMostReduction))
	{
		Refuse("a reduction of " + FormatAllDigits(inReduction) + " dB is out of range; use 0 to 60");
	}
}

// It is the request that does not fit the file.
[[noreturn]] void RefuseSpan(
	AudioFileInfo const& inFile, std::string const& inReason, std::string const& inRemedy)
{
	throw HostError(HostError::Kind::kRequest, {inFile.mPath, {}, inReason, inRemedy});
}

void CheckSpan(AudioFileInfo const& inFile, Denoise::Span const& inSpan)
{
	auto const format = [&](std::int64_t inFrame) { return FormatTime(inFrame, inFile.mSampleRate); };
	std::string const range = format(inSpan.mFirst) + " to " + format(inSpan.mEnd);
	std::int64_t const shortest = GetShortestLearnSpan(inFile.mSampleRate);
	if (inFile.mFrames < shortest)
	{
		RefuseSpan(inFile,
			"is too short to learn noise from: it has " + FormatCount(inFile.mFrames, "sample") + ", and " +
				std::to_string(shortest) + " are needed",
			"leave its noise as it is");
	}
	if (inSpan.mFirst < 0 || inSpan.mEnd > inFile.mFrames)
	{
		RefuseSpan(inFile,
			"the noise cannot be learned from " + range + ", as the file has " + format(inFile.mFrames),
			"choose a range within the file");
	}
	if (inSpan.mEnd <= inSpan.mFirst)
	{
		RefuseSpan(inFile, "the noise cannot be learned from " + range + ", which ends before it begins",
			"choose an end after the start");
	}
	if (inSpan.mEnd - inSpan.mFirst < shortest)
	{
		RefuseSpan(inFile,
			"the noise cannot be learned from " + range + ", which is less than " +
				FormatCount(shortest, "sample"),
			"choose a longer range");
	}
}

} // namespace

AudioFileInfo MakeDenoised(AudioFileInfo inFile, Denoise const& inDenoise)
{
	CheckReduction(inDenoise.mReduction);
	if (inDenoise.mLearn)
	{
		CheckSpan(inFile, *inDenoise.mLearn);
	}
	inFile.mDenoise = inDenoise;
	inFile.mNoise = std::make_shared<SharedNoiseProfile>();
	return inFile;
}

AudioFileInfo GetNoisyFileOf(AudioFileInfo inRecording)
{
	inRecording.mDenoise.reset();
	inRecording.mNoise.reset();
	return inRecording;
}

DenoiseProcessor::Settings MakeSettings(AudioFileInfo const& inRecording, std::int64_t inFirst)
{
	return {*inRecording.mDenoise, inRecording.mSampleRate, inRecording.GetNumChannels(), inRecording.mFrames,
		inFirst, inRecording.mNoise, {}};
}

void RethrowFor(AudioFileInfo const& inRecording, std::exception_ptr const& inFailure)
{
	try
	{
		std::rethrow_exception(inFailure);
	}
	catch (HostError const& error)
	{
		HostError::Parts parts = error.GetParts();
		parts.mFile = parts.mFile.empty() ? inRecording.mPath : parts.mFile;
		throw HostError(error.GetKind(), std::move(parts));
	}
}

} // namespace SonaroHost
