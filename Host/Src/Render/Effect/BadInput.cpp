#include "BadInput.h"

#include "SonaroHost/Sequence/OutermostTime.h"
#include "Vexilon/BinaryData.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace SonaroHost
{

namespace
{

using Sequence::Item;
using Sequence::OutermostTime;

// As far as filters of resamplers and crossfades reach beyond a time.
constexpr double kReachSeconds = 1.0;

class BadInputSearch
{
public:
	BadInputSearch(SN::FrameRate const& inFrameRate, SN::TickTime const& inTime)
		: mFrameRate(inFrameRate),
		  mTime(inTime)
	{
	}

	std::optional<BadInput> Search(Sequence::Description const& inDescription, OutermostTime const& inTime)
	{
		for (Sequence::Track const& track : inDescription.mTracks)
		{
			for (Item const& item : track.mItems)
			{
				if (auto found = Search(item, inTime.From(item.mStart)))
				{
					return found;
				}
			}
		}
		return std::nullopt;
	}

private:
	std::optional<BadInput> Search(Item const& inItem, OutermostTime const& inTime)
	{
		SN::TickTime const reach = SN::TickTime::FromSeconds(kReachSeconds);
		SN::TickTime const ends[] = {inTime.Map(SN::kTimeZero), inTime.Map(inItem.mEnd - inItem.mStart)};
		if (inTime.mIsKnown &&
			(mTime + reach < std::min(ends[0], ends[1]) || mTime - reach > std::max(ends[0], ends[1])))
		{
			return std::nullopt;
		}
		if (auto const* const clip = std::get_if<Sequence::Clip>(&inItem.mContent))
		{
			auto const frame = FindBad(inItem, *clip, inTime);
			return frame ? std::optional(BadInput{inItem.mName, inItem.mOrigin, clip->mMedia->mName,
							   clip->mMedia->mIsFile ? frame : std::nullopt})
						 : std::nullopt;
		}
		OutermostTime inner = inTime.Into(Sequence::GetSequenceStart(inItem), inItem.mSpeed);
		inner.mIsKnown &= !inItem.mSpeedCurve;
		std::optional<BadInput> found;
		for (Sequence::Description const* const sequence : Sequence::ListSequences(inItem))
		{
			found = found ? found : Search(*sequence, inner);
		}
		return found;
	}

	// Reads the recording around the place that is heard at the time, and finds the nearest one; the first of all where
	// that is not known.
	std::optional<std::int64_t> FindBad(
		Item const& inItem, Sequence::Clip const& inClip, OutermostTime const& inTime) const
	{
		Sequence::Media const& media = *inClip.mMedia;
		double const speed = inItem.mSpeed * media.mSampleRate;
		if (!inTime.mIsKnown || inItem.mSpeedCurve)
		{
			return FindBad(media, 0, media.mFrames, 0);
		}
		double const seconds = ((mTime - inTime.mStart) / inTime.mScale).GetSeconds();
		std::int64_t const middle = inClip.mFirstFrame + std::llround(seconds * speed);
		auto const reach = std::llround(std::abs(speed) * kReachSeconds);
		std::int64_t const first = std::clamp<std::int64_t>(middle - reach, 0, media.mFrames);
		std::int64_t const end = std::clamp<std::int64_t>(middle + reach, first, media.mFrames);
		return FindBad(media, first, end, middle);
	}

	std::optional<std::int64_t> FindBad(
		Sequence::Media const& inMedia, std::int64_t inFirst, std::int64_t inEnd, std::int64_t inMiddle) const
	{
		constexpr std::int64_t kScanFrames = 4096;
		auto const source = inMedia.mOpen(mFrameRate);
		dsp::AudioBuffer block(static_cast<unsigned>(inMedia.mLayout.size()), kScanFrames);
		std::optional<std::int64_t> nearest;
		for (std::int64_t frame = inFirst; source && frame < inEnd; frame += kScanFrames)
		{
			block.SetUseSize(static_cast<unsigned>(std::min(kScanFrames, inEnd - frame)));
			source->ReadAudio(VX::BinaryData(), block, SN::TickTime(frame, source->GetFrameRate()), false);
			for (std::int64_t index = 0; index < block.GetUseSize(); ++index)
			{
				std::int64_t const found = frame + index;
				bool const isNearer = !nearest || std::abs(found - inMiddle) < std::abs(*nearest - inMiddle);
				nearest = isNearer && IsBad(block, index) ? found : nearest;
			}
		}
		return nearest;
	}

	static bool IsBad(dsp::AudioBuffer const& inBlock, std::int64_t inIndex)
	{
		for (unsigned channel = 0; channel < inBlock.GetNumChannels(); ++channel)
		{
			if (!inBlock.IsChannelSilent(channel) && !std::isfinite(inBlock.GetChannel(channel)[inIndex]))
			{
				return true;
			}
		}
		return false;
	}

	SN::FrameRate mFrameRate;
	SN::TickTime mTime;
};

} // namespace

std::optional<BadInput> FindBadInput(
	Sequence::Description const& inDescription, SN::FrameRate const& inFrameRate, SN::TickTime const& inTime)
{
	return BadInputSearch(inFrameRate, inTime).Search(inDescription, {});
}

} // namespace SonaroHost
