#include "ItemBuilder.h"

#include "../RemappedGenerator.h"
#include "ChainBuilder.h"
#include "NestedContent.h"
#include "Sonaro/AudioUtilities.h"
#include "SonaroHost/ChannelLayouts.h"
#include "SonaroHost/RenderContextScope.h"

#include <cmath>
#include <string>
#include <utility>

namespace SonaroHost::Sequence
{

BuiltItem ItemBuilder::Build(Item const& inItem)
{
	CheckContent(inItem);
	double const speed = GetReadingSpeed(inItem);
	mIsSilent = speed == 0.0;
	mIsBackwards = speed < 0.0;
	mSpeed = mIsSilent ? 1.0 : std::abs(speed);
	CheckSpeed();
	bool const isResampled = mSpeed != 1.0;
	mLead = std::llround(static_cast<double>(mSite.mExtension) * mSpeed);

	ChainSite const site{
		mSite.mPlace, GetContentLayout(inItem), mSite.mLayout, mSite.mMixdown, nullptr, mLead, 1.0 / mSpeed};
	BuiltChain const chain = ChainBuilder(mTools, site).Build(inItem.mChain);
	mBuilt.mLatency = std::llround(static_cast<double>(chain.mLatency) / mSpeed);
	mBuilt.mSettlingFrames = mBuilt.mLatency;
	mBuilt.mIsClonable = !isResampled && chain.mIsClonable;
	// Where the latency is no whole number of the item's frames, the content makes up for it.
	mLead += std::llround(static_cast<double>(mBuilt.mLatency) * mSpeed) - chain.mLatency;
	CheckEngineResult(
		mTools.GetFactory().CreateRealtimeAudioClipTrackItemRenderer(mTools.GetContext(),
			mTools.GetFrameRate(), MakeContent(inItem, site.mInput), chain.mProcessors, chain.mPanner, mSpeed,
			mTools.GetSameTime(), mTools.ToTime(mBuilt.mLatency), &mBuilt.mGenerator),
		"an item");
	return std::move(mBuilt);
}

void ItemBuilder::CheckContent(Item const& inItem) const
{
	if (Nest const* const nest = std::get_if<Nest>(&inItem.mContent))
	{
		if (!nest->mSequence)
		{
			Refuse(mSite.mPlace, "it has no sequence");
		}
	}
	else if (auto const& media = std::get<Clip>(inItem.mContent).mMedia; !media || !media->mOpen)
	{
		Refuse(mSite.mPlace, "it has no recording");
	}
	else if (!(media->mSampleRate > 0.0) || !std::isfinite(media->mSampleRate))
	{
		Refuse(mSite.mPlace, "the sample rate of " + Quote(media->mName) + " is none");
	}
	if (!std::isfinite(inItem.mSpeed))
	{
		Refuse(mSite.mPlace, "a speed is a finite number");
	}
}

double ItemBuilder::GetReadingSpeed(Item const& inItem) const
{
	Clip const* const clip = std::get_if<Clip>(&inItem.mContent);
	double const rate = mTools.GetFrameRate().GetSamplesPerSecond();
	return clip ? inItem.mSpeed * (clip->mMedia->mSampleRate / rate) : inItem.mSpeed;
}

void ItemBuilder::CheckSpeed() const
{
	// What the resampler may want beyond the frames that pass.
	constexpr double kMargin = 64.0;
	double const frames = mTools.GetContext()->GetMaxBlockSize() * mSpeed + kMargin;
	if (mSpeed != 1.0 && frames > SN::GetMaxResampleBufferSize())
	{
		Refuse(mSite.mPlace,
			"so fast, its blocks would be longer than the " + std::to_string(SN::GetMaxResampleBufferSize()) +
				" frames that can be resampled",
			"render in smaller blocks or slow it down");
	}
}

SN::AudioChannelLayout ItemBuilder::GetContentLayout(Item const& inItem) const
{
	if (Nest const* const nest = std::get_if<Nest>(&inItem.mContent))
	{
		return nest->mSequence->mLayout;
	}
	Clip const& clip = std::get<Clip>(inItem.mContent);
	return clip.mChannels.empty() ? clip.mMedia->mLayout
								  : MakeLayoutOfChannels(static_cast<unsigned>(clip.mChannels.size()));
}

Generator ItemBuilder::MakeContent(Item const& inItem, SN::AudioChannelLayout const& inLayout)
{
	if (mIsSilent)
	{
		Generator silence;
		CheckEngineResult(mTools.GetFactory().CreateSilentRenderer(inLayout, &silence), "silence");
		return silence;
	}
	return std::visit(
		[&](auto const& inContent) { return MakeContent(inContent, inLayout); }, inItem.mContent);
}

Generator ItemBuilder::MakeContent(Clip const& inClip, SN::AudioChannelLayout const& inLayout)
{
	SN::AudioChannelMap channels;
	for (unsigned channel = 0; channel < inLayout.size(); ++channel)
	{
		unsigned const source = inClip.mChannels.empty() ? channel : inClip.mChannels[channel];
		if (source >= inClip.mMedia->mLayout.size())
		{
			Refuse(mSite.mPlace, "channel " + std::to_string(source) + " is none of the " +
									 std::to_string(inClip.mMedia->mLayout.size()) + " of " +
									 Quote(inClip.mMedia->mName) + ", which are counted from 0");
		}
		channels.emplace(channel, source);
	}
	std::int64_t const first = GetFirstFrame(inClip.mFirstFrame);
	constexpr float kGain = 1.0f;
	constexpr double kClipSpeed = 1.0;
	SN::FrameRate const& rate = mTools.GetFrameRate();
	Generator clip;
	CheckEngineResult(mTools.GetFactory().CreateAudioClipRenderer(mTools.GetContext(), rate,
						  {{mTools.GetStream(*inClip.mMedia), channels}}, inLayout,
						  mTools.ToTime(mIsBackwards ? 0 : first), kGain, kClipSpeed, &clip),
		"a clip");
	if (mIsBackwards)
	{
		return zorvcore::classref::MakeObject<RemappedGenerator>(clip, FrameMap{first + 1, rate, rate, true});
	}
	return clip;
}

Generator ItemBuilder::MakeContent(Nest const& inNest, SN::AudioChannelLayout const& inLayout)
{
	BuiltNest const nest = mSite.mBuildNest(inNest, mSite.mPlace);
	mBuilt.mSettlingFrames +=
		std::llround(static_cast<double>(nest.mAheadFrames + nest.mSettlingFrames) / mSpeed);
	mBuilt.mIsClonable = mBuilt.mIsClonable && nest.mIsClonable;
	ContentWindow const window{GetFirstFrame(mTools.ToFrames(inNest.mStart)),
		std::llround(static_cast<double>(mSite.mLength) * mSpeed), mIsBackwards,
		mTools.ToTime(mBuilt.mLatency), mSpeed, nest.mAheadFrames, nest.mSettlingFrames};
	return zorvcore::classref::MakeObject<NestedContent>(nest.mGenerator, mTools.GetContext(),
		mTools.GetFrameRate(), static_cast<unsigned>(inLayout.size()), window);
}

} // namespace SonaroHost::Sequence
