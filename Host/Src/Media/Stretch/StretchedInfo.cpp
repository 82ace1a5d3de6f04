#include "StretchedInfo.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

// What the time scaler takes, less the blocks that it has taken when its last output is there.
constexpr std::int64_t kMostScaledFrames = 999'000'000;

} // namespace

AudioFileInfo MakeStretched(AudioFileInfo inFile, Stretch const& inStretch)
{
	inFile.mStretch = inStretch;
	inFile.mFileFrames = std::exchange(inFile.mFrames, inStretch.CountFrames(inFile.mFrames));
	Ratio const scaled = (Ratio(inFile.mFileFrames) - inStretch.mStart) / inStretch.mPitch;
	if (inStretch.mEngine == StretchEngine::kScaler && scaled > Ratio(kMostScaledFrames))
	{
		RefuseFile(inFile.mPath, "is longer than the 999000000 samples that the scaler can stretch",
			"cut it into parts, or use --stretch omega");
	}
	return inFile;
}

AudioFileInfo GetFileOf(AudioFileInfo inRecording)
{
	if (inRecording.mStretch)
	{
		inRecording.mStretch.reset();
		inRecording.mFrames = std::exchange(inRecording.mFileFrames, 0);
	}
	return inRecording;
}

CurvePositions MakeRampPositions(AudioFileInfo const& inRecording)
{
	Ratio const rate(inRecording.mSampleRate);
	std::int64_t const first = inRecording.mStretch->mStart.Floor();
	return {inRecording.mStretch->mRamp->mCurve,
		{rate, rate, 0, first, inRecording.mStretch->mStart - Ratio(first)}};
}

std::int64_t GetFrameOfFile(AudioFileInfo const& inRecording, std::int64_t inFrame)
{
	if (!inRecording.mStretch)
	{
		return inFrame;
	}
	Stretch const& stretch = *inRecording.mStretch;
	if (stretch.mRamp)
	{
		CurvePositions const positions = MakeRampPositions(inRecording);
		std::int64_t const place = positions.Find(positions.IsBackwards(0) ? -inFrame : inFrame).mWhole;
		return std::min(place, inRecording.mFileFrames);
	}
	return std::min((stretch.mStart + Ratio(inFrame) * stretch.mSpeed).Floor(), inRecording.mFileFrames);
}

} // namespace SonaroHost
