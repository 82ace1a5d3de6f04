#include "ItemBuilder.h"

#include "ChainBuilder.h"
#include "Media/RampConverter.h"
#include "Sequence/Node/ConvertedContent.h"
#include "Sequence/Node/ItemContent.h"
#include "Sequence/Node/MulticamContent.h"
#include "Sonaro/AudioUtilities.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/RateConverter.h"

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
	ChooseSpeed(inItem);
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
	std::int64_t const start = mIsConverted ? 0 : mIsBackwards ? first + mLead : first - mLead;
	auto const content = zorvcore::classref::MakeObject<ItemContent>(
		ItemContent::Settings{MakeContent(inItem, context.mInput), start, mIsBackwards && !mIsConverted,
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

void ItemBuilder::ChooseSpeed(Item const& inItem)
{
	if (inItem.mSpeedCurve)
	{
		mIsConverted = true;
		return;
	}
	mIsSilent = inItem.mSpeed == 0.0;
	mIsBackwards = inItem.mSpeed < 0.0;
	if (mIsSilent)
	{
		return;
	}
	if (inItem.mResampling == Resampling::kEngine)
	{
		mSpeed = std::abs(inItem.mSpeed *
						  Visit(inItem, [this](auto const& inContent) { return GetRateFactor(inContent); }));
		CheckSpeed();
		if (mSpeed != 1.0)
		{
			mTools.NoteHistory(
				mContext.mPlace.Describe() +
				" is resampled by the real-time engine, which goes on from what it read before");
		}
		return;
	}
	Ratio const step = Ratio::FromExactDouble(inItem.mSpeed) *
					   Visit(inItem, [this](auto const& inContent) { return GetRateRatio(inContent); });
	if (step != Ratio(1) && step != Ratio(-1))
	{
		mStep = step;
		mIsConverted = true;
		CheckStep();
	}
}

void ItemBuilder::CheckStep() const
{
	Ratio const largest(RateConverter::kLargestStep);
	if (*mStep == Ratio())
	{
		Refuse(mContext.mPlace, "its speed is too close to 0", "use 0 for silence");
	}
	if (*mStep > largest || *mStep < -largest)
	{
		Refuse(mContext.mPlace,
			"its speed takes more than " + std::to_string(RateConverter::kLargestStep) +
				" samples for each output sample",
			"reduce the speed");
	}
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

void ItemBuilder::Check(Multicam const& inMulticam) const
{
	std::size_t const count = inMulticam.mAngles.size();
	auto const checkAngle = [&](std::size_t inAngle)
	{
		if (inAngle >= count)
		{
			Refuse(mContext.mPlace, "angle index " + std::to_string(inAngle) +
										" is out of range: there are " + std::to_string(count) +
										", counted from 0");
		}
	};
	checkAngle(inMulticam.mFirstAngle);
	for (auto const& angle : inMulticam.mAngles)
	{
		if (!angle)
		{
			Refuse(mContext.mPlace, "one of its angles has no sequence");
		}
		if (angle->mLayout != inMulticam.mAngles.front()->mLayout)
		{
			Refuse(mContext.mPlace, "its angles have different layouts", "use the widest one for all");
		}
	}
	SN::TickTime last = -SN::kTimeMax;
	for (Multicam::Cut const& cut : inMulticam.mCuts)
	{
		checkAngle(cut.mAngle);
		if (cut.mTime < last || cut.mFade.mLength < SN::kTimeZero)
		{
			Refuse(mContext.mPlace, cut.mTime < last ? "its cuts are not in the order of time"
													 : "a fade of its cuts is shorter than 0");
		}
		last = cut.mTime;
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

Ratio ItemBuilder::GetRateRatio(Clip const& inClip) const
{
	double const rate = inClip.mMedia->mSampleRate;
	SN::FrameRate const graphRate = mTools.GetFrameRate();
	if (SN::FrameRate::FromSamplesPerSecond(rate) == graphRate)
	{
		return Ratio(1);
	}
	return Ratio::FromDouble(rate) / GetGraphRate();
}

// A whole number where its frame rounds to the graph's; otherwise ticks count.
Ratio ItemBuilder::GetGraphRate() const
{
	SN::FrameRate const graphRate = mTools.GetFrameRate();
	std::int64_t const whole = std::llround(graphRate.GetSamplesPerSecond());
	bool const isWhole = SN::FrameRate::FromSamplesPerSecond(static_cast<double>(whole)) == graphRate;
	return isWhole ? Ratio(whole) : Ratio(zorvmediatypes::kTicksPerSecond, graphRate.GetTicksPerFrame());
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
	Generator const content =
		Visit(inItem, [&](auto const& inContent) { return MakeGenerator(inContent, inLayout); });
	return mIsConverted ? Convert(inItem, content, inLayout) : content;
}

Generator ItemBuilder::Convert(
	Item const& inItem, Generator const& inContent, SN::AudioChannelLayout const& inLayout) const
{
	return zorvcore::classref::MakeObject<ConvertedContent>(
		ConvertedContent::Settings{inContent, MakeConverter(inItem), mTools.GetFrameRate(),
			mTools.GetScratch(GraphTools::ScratchUse::kConversion, inLayout.size())});
}

std::shared_ptr<SampleConverter const> ItemBuilder::MakeConverter(Item const& inItem) const
{
	std::int64_t const first =
		Visit(inItem, [this](auto const& inChosen) { return GetFirstFrame(inChosen); });
	RateQuality const quality =
		inItem.mResampling == Resampling::kDraft ? RateQuality::kDraft : RateQuality::kFull;
	if (!inItem.mSpeedCurve)
	{
		return std::make_shared<RateConverter const>(*mStep,
			RateConverter::Position{first, inItem.mOffset - Ratio(mContext.mExtension) * *mStep}, quality);
	}
	Ratio const rate = GetGraphRate();
	CurvePositions::Settings positions;
	positions.mOutputRate = rate;
	positions.mInputRate =
		rate * Visit(inItem, [this](auto const& inContent) { return GetRateRatio(inContent); });
	positions.mOrigin = mContext.mExtension;
	positions.mFrame = first;
	positions.mOffset = inItem.mOffset;
	try
	{
		return std::make_shared<RampConverter const>(*inItem.mSpeedCurve, positions, quality);
	}
	catch (HostError const& error)
	{
		Refuse(mContext.mPlace, error.GetParts().mReason, "reduce the speed");
	}
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

Generator ItemBuilder::MakeGenerator(Multicam const& inMulticam, SN::AudioChannelLayout const& inLayout)
{
	MulticamContent::Settings settings;
	for (auto const& angle : inMulticam.mAngles)
	{
		std::size_t const histories = mTools.CountHistories();
		Generator const generator = mContext.mBuildNest({angle, inMulticam.mStart}, mContext.mPlace);
		settings.mAngles.push_back({generator, mTools.CountHistories() > histories});
	}
	settings.mCuts = MakeCuts(inMulticam);
	settings.mSwitch = mTools.GetHeard(inMulticam.mSwitch);
	settings.mReadsAll = mTools.GetContext()->GetMulticamOption() ||
						 (inMulticam.mSwitch && !mTools.GetContext()->IsNotTopLevelPlayback());
	settings.mLayout = inLayout;
	settings.mFrameRate = mTools.GetFrameRate();
	settings.mScratch = mTools.GetScratch(GraphTools::ScratchUse::kAngle, inLayout.size());
	return zorvcore::classref::MakeObject<MulticamContent>(settings);
}

AngleCuts ItemBuilder::MakeCuts(Multicam const& inMulticam) const
{
	AngleCuts cuts(static_cast<int>(inMulticam.mFirstAngle));
	for (Multicam::Cut const& cut : inMulticam.mCuts)
	{
		cuts.Add({mTools.ToFrames(cut.mTime), static_cast<int>(cut.mAngle),
			mTools.ToFrames(cut.mFade.mLength), cut.mFade.mShape});
	}
	return cuts;
}

} // namespace SonaroHost::Sequence
