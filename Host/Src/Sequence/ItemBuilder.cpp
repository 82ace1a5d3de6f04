#include "ItemBuilder.h"

#include "ChainBuilder.h"
#include "Sequence/Node/ItemContent.h"
#include "Sonaro/AudioUtilities.h"
#include "SonaroHost/Base/ChannelLayouts.h"

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
	mLead = std::llround(static_cast<double>(mSite.mExtension) * mSpeed);

	auto const playhead = std::make_shared<Playhead>();
	auto const latency = std::make_shared<std::int64_t>(0);
	ChainSite site{mSite.mPlace, GetContentLayout(inItem), mSite.mLayout, mSite.mMixdown, nullptr,
		{playhead, latency, mTools.GetFrameRate(), mLead, 1.0 / mSpeed}};
	site.mTap = mSite.mTap;
	site.mDropsLateEffects = true;
	BuiltChain const chain = ChainBuilder(mTools, site).Build(inItem.mChain);
	*latency = chain.mLatency;
	mBuilt.mLatency = std::llround(static_cast<double>(chain.mLatency) / mSpeed);
	std::int64_t const first = GetFirstFrame(inItem);
	auto const content = zorvcore::classref::MakeObject<ItemContent>(ItemContent::Settings{
		MakeContent(inItem, site.mInput), mIsBackwards ? first + mLead : first - mLead, mIsBackwards,
		chain.mProcessors, chain.mPanner, chain.mLatency, playhead, mSite.mPlayhead, mSite.mJumps,
		mTools.GetFrameRate(), mTools.GetScratch(GraphTools::ScratchUse::eItem, site.mInput.size())});
	mBuilt.mGenerator = mTools.GetFactory().CreateRealtimeAudioClipTrackItemRenderer({
		.mContext = mTools.GetContext(),
		.mFrameRate = mTools.GetFrameRate(),
		.mSource = content,
		.mPanProcessor = mTools.GetFixedPanner(mSite.mLayout, mSite.mLayout, std::nullopt),
		.mSpeed = mSpeed,
	});
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
		Refuse(mSite.mPlace, "it has no media");
	}
	else if (!(media->mSampleRate > 0.0) || !std::isfinite(media->mSampleRate))
	{
		Refuse(mSite.mPlace, "the sample rate of " + Quote(media->mName) + " is invalid");
	}
	if (!std::isfinite(inItem.mSpeed))
	{
		Refuse(mSite.mPlace, "its speed is not a finite number");
	}
}

double ItemBuilder::GetReadingSpeed(Item const& inItem) const
{
	Clip const* const clip = std::get_if<Clip>(&inItem.mContent);
	if (!clip)
	{
		return inItem.mSpeed;
	}
	// Rates that count alike are not resampled, even where a frame is no whole number of ticks.
	double const rate = clip->mMedia->mSampleRate;
	SN::FrameRate const graphRate = mTools.GetFrameRate();
	return SN::FrameRate::FromSamplesPerSecond(rate) == graphRate
			   ? inItem.mSpeed
			   : inItem.mSpeed * (rate / graphRate.GetSamplesPerSecond());
}

void ItemBuilder::CheckSpeed() const
{
	// What the resampler may want beyond the frames that pass.
	constexpr double kMargin = 64.0;
	double const frames = mTools.GetContext()->GetMaxBlockSize() * mSpeed + kMargin;
	if (mSpeed != 1.0 && frames > SN::GetMaxResampleBufferSize())
	{
		Refuse(mSite.mPlace,
			"at its speed, its blocks would be longer than the " +
				std::to_string(SN::GetMaxResampleBufferSize()) + " frames that can be resampled",
			"render in smaller blocks or reduce the speed");
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
		return mTools.GetFactory().CreateSilentRenderer(inLayout);
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
			Refuse(mSite.mPlace, "channel index " + std::to_string(source) + " is out of range: there are " +
									 std::to_string(inClip.mMedia->mLayout.size()) + " in " +
									 Quote(inClip.mMedia->mName) + ", counted from 0");
		}
		channels.emplace(channel, source);
	}
	return mTools.GetFactory().CreateAudioClipRenderer({
		.mContext = mTools.GetContext(),
		.mFrameRate = mTools.GetFrameRate(),
		.mGenerators = {{mTools.GetStream(*inClip.mMedia), channels}},
		.mChannelLayout = inLayout,
	});
}

Generator ItemBuilder::MakeContent(Nest const& inNest, SN::AudioChannelLayout const&)
{
	return mSite.mBuildNest(inNest, mSite.mPlace);
}

std::int64_t ItemBuilder::GetFirstFrame(Item const& inItem) const
{
	Nest const* const nest = std::get_if<Nest>(&inItem.mContent);
	return nest ? mTools.ToFrames(nest->mStart) : std::get<Clip>(inItem.mContent).mFirstFrame;
}

} // namespace SonaroHost::Sequence
