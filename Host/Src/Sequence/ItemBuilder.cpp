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
	Visit(inItem, [this](auto const& inContent) { Check(inContent); });
	if (!std::isfinite(inItem.mSpeed))
	{
		Refuse(mContext.mPlace, "its speed is not a finite number");
	}
	double const speed =
		inItem.mSpeed * Visit(inItem, [this](auto const& inContent) { return GetRateFactor(inContent); });
	mIsSilent = speed == 0.0;
	mIsBackwards = speed < 0.0;
	mSpeed = mIsSilent ? 1.0 : std::abs(speed);
	CheckSpeed();
	mLead = std::llround(static_cast<double>(mContext.mExtension) * mSpeed);

	auto const playhead = std::make_shared<Playhead>();
	auto const latency = std::make_shared<std::int64_t>(0);
	ChainContext context{mContext.mPlace,
		Visit(inItem, [this](auto const& inContent) { return GetLayout(inContent); }), mContext.mLayout,
		mContext.mMixdown, nullptr, {playhead, latency, mTools.GetFrameRate(), mLead, 1.0 / mSpeed}};
	context.mTap = mContext.mTap;
	context.mDropsLateEffects = true;
	BuiltChain const chain = ChainBuilder(mTools, context).Build(inItem.mChain);
	*latency = chain.mLatency;
	mBuilt.mLatency = std::llround(static_cast<double>(chain.mLatency) / mSpeed);
	std::int64_t const first =
		Visit(inItem, [this](auto const& inContent) { return GetFirstFrame(inContent); });
	auto const content = zorvcore::classref::MakeObject<ItemContent>(ItemContent::Settings{
		MakeContent(inItem, context.mInput), mIsBackwards ? first + mLead : first - mLead, mIsBackwards,
		chain.mProcessors, chain.mPanner, chain.mLatency, playhead, mContext.mPlayhead, mContext.mJumps,
		mTools.GetFrameRate(), mTools.GetScratch(GraphTools::ScratchUse::kItem, context.mInput.size())});
	mBuilt.mGenerator = mTools.GetFactory().CreateRealtimeAudioClipTrackItemRenderer({
		.mContext = mTools.GetContext(),
		.mFrameRate = mTools.GetFrameRate(),
		.mSource = content,
		.mPanProcessor = mTools.GetFixedPanner(mContext.mLayout, mContext.mLayout, std::nullopt),
		.mSpeed = mSpeed,
	});
	return std::move(mBuilt);
}

void ItemBuilder::Check(Nest const& inNest) const
{
	if (!inNest.mSequence)
	{
		Refuse(mContext.mPlace, "it has no sequence");
	}
}

void ItemBuilder::Check(Clip const& inClip) const
{
	auto const& media = inClip.mMedia;
	if (!media || !media->mOpen)
	{
		Refuse(mContext.mPlace, "it has no media");
	}
	if (!(media->mSampleRate > 0.0) || !std::isfinite(media->mSampleRate))
	{
		Refuse(mContext.mPlace, "the sample rate of " + Quote(media->mName) + " is invalid");
	}
}

double ItemBuilder::GetRateFactor(Clip const& inClip) const
{
	// Rates that count alike are not resampled, even where a frame is no whole number of ticks.
	double const rate = inClip.mMedia->mSampleRate;
	SN::FrameRate const graphRate = mTools.GetFrameRate();
	return SN::FrameRate::FromSamplesPerSecond(rate) == graphRate ? 1.0
																  : rate / graphRate.GetSamplesPerSecond();
}

void ItemBuilder::CheckSpeed() const
{
	// What the resampler may want beyond the frames that pass.
	constexpr double kMargin = 64.0;
	double const frames = mTools.GetContext()->GetMaxBlockSize() * mSpeed + kMargin;
	if (mSpeed != 1.0 && frames > SN::GetMaxResampleBufferSize())
	{
		Refuse(mContext.mPlace,
			"at its speed, its blocks would be longer than the " +
				std::to_string(SN::GetMaxResampleBufferSize()) + " frames that can be resampled",
			"render in smaller blocks or reduce the speed");
	}
}

SN::AudioChannelLayout ItemBuilder::GetLayout(Clip const& inClip) const
{
	return inClip.mChannels.empty() ? inClip.mMedia->mLayout
									: MakeLayoutOfChannels(static_cast<unsigned>(inClip.mChannels.size()));
}

Generator ItemBuilder::MakeContent(Item const& inItem, SN::AudioChannelLayout const& inLayout)
{
	if (mIsSilent)
	{
		return mTools.GetFactory().CreateSilentRenderer(inLayout);
	}
	return Visit(inItem, [&](auto const& inContent) { return MakeGenerator(inContent, inLayout); });
}

Generator ItemBuilder::MakeGenerator(Clip const& inClip, SN::AudioChannelLayout const& inLayout)
{
	SN::AudioChannelMap channels;
	for (unsigned channel = 0; channel < inLayout.size(); ++channel)
	{
		unsigned const source = inClip.mChannels.empty() ? channel : inClip.mChannels[channel];
		if (source >= inClip.mMedia->mLayout.size())
		{
			Refuse(mContext.mPlace, "channel index " + std::to_string(source) +
										" is out of range: there are " +
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

Generator ItemBuilder::MakeGenerator(Nest const& inNest, SN::AudioChannelLayout const&)
{
	return mContext.mBuildNest(inNest, mContext.mPlace);
}

} // namespace SonaroHost::Sequence
