#include "ClipStretch.h"

#include "SonaroHost/Base/NumberText.h"

#include <algorithm>
#include <cstdint>

namespace SonaroHost::Otio
{

std::optional<Stretch> ChooseStretch(MakerContext& ioContext, Clip const& inClip)
{
	Stretch stretch;
	stretch.mSpeed = GetKeptSpeed(inClip, ioContext.mOptions.mKeepsPitch);
	stretch.mPitch = Stretch::GetPitchFactor(inClip.GetSettings().mSemitones);
	stretch.mEngine = ioContext.mOptions.mStretchEngine;
	if (stretch.IsPlain())
	{
		return std::nullopt;
	}
	if (!stretch.IsInRange())
	{
		double const factor = stretch.mPitch.ToDouble();
		ioContext.Tell(Note::Kind::kIgnored, inClip.mPlace,
			"a speed of " + FormatAllDigits(stretch.mSpeed.ToDouble()) +
				" cannot keep its pitch, which follows the speed; use " +
				FormatNumber(Stretch::kLowestSpeed * factor) + " to " +
				FormatNumber(Stretch::kHighestSpeed * factor));
		return std::nullopt;
	}
	return stretch;
}

void CheckPitchOfNest(MakerContext& ioContext, Item const& inItem)
{
	bool const byDefault = ioContext.mOptions.mKeepsPitch;
	if (GetKeptSpeed(inItem, byDefault) != Ratio(1) ||
		(GetSpeed(inItem).mCurve && KeepsPitch(inItem, byDefault)))
	{
		ioContext.Tell(Note::Kind::kIgnored, inItem.mPlace,
			"only clips can keep their pitch; that of this item follows its speed");
	}
}

std::shared_ptr<Sequence::Media const> GetStretched(MakerContext& ioContext, Stretch const& inStretch,
	ClipMedia const& inMedia, TimeSpan const& inReach, Ratio const& inMediaStart)
{
	Ratio const rate = Ratio::FromDouble(inMedia.mMedia->mSampleRate);
	std::int64_t const frames = inStretch.CountFrames(inMedia.mMedia->mFrames);
	auto const toFrame = [&](Ratio const& inTime)
	{
		Ratio const frame = (inTime - inMediaStart) * rate / inStretch.mSpeed;
		return std::clamp<std::int64_t>(frame.Floor(), 0, frames);
	};
	return ioContext.mMedia.GetStretched(
		inMedia, inStretch, {toFrame(inReach.mStart - inStretch.mSpeed), toFrame(inReach.mEnd)});
}

} // namespace SonaroHost::Otio
