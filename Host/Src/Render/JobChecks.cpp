#include "SonaroHost/Render/JobChecks.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"

#include <algorithm>

namespace SonaroHost
{

FrameRange ChooseRange(
	AudioFileInfo const& inInfo, TimePosition const& inStart, std::optional<TimePosition> const& inDuration)
{
	if (inInfo.mFrames == 0)
	{
		RefuseFile(inInfo.mPath, "has no samples");
	}
	FrameRange range;
	range.mFirst = inStart.ToSamples(inInfo.mSampleRate);
	if (range.mFirst >= inInfo.mFrames)
	{
		Refuse(QuotePath(inInfo.mPath) + " is " + FormatTime(inInfo.mFrames, inInfo.mSampleRate) + " (" +
			   std::to_string(inInfo.mFrames) + " samples) long; the start at sample " +
			   std::to_string(range.mFirst) + " is past its end");
	}
	range.mFrames = inInfo.mFrames - range.mFirst;
	if (inDuration)
	{
		range.mFrames = std::min(range.mFrames, inDuration->ToSamples(inInfo.mSampleRate));
	}
	if (range.mFrames == 0)
	{
		Refuse("the duration is shorter than one sample; there is nothing to render");
	}
	return range;
}

Fades ChooseFades(std::optional<TimePosition> const& inFadeIn, std::optional<TimePosition> const& inFadeOut,
	std::int64_t inFrames, int inSampleRate, std::string const& inWhat)
{
	Fades const fades{
		inFadeIn ? inFadeIn->ToSamples(inSampleRate) : 0, inFadeOut ? inFadeOut->ToSamples(inSampleRate) : 0};
	if (fades.mIn > inFrames - fades.mOut)
	{
		Refuse("the fades are longer than the " + FormatTime(inFrames, inSampleRate) + " (" +
			   FormatCount(inFrames, "sample") + ") of " + inWhat);
	}
	return fades;
}

} // namespace SonaroHost
