#include "ChainBuilder.h"

#include "Sequence/Listening/BinauralPanner.h"
#include "Sequence/Stage/EffectStage.h"
#include "Sequence/Stage/LevelStage.h"
#include "Sequence/Stage/MeterTap.h"
#include "Sequence/Stage/PanStage.h"
#include "Sequence/Stage/SendStage.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/LayoutPlan.h"

#include <cmath>
#include <memory>
#include <string>
#include <utility>

namespace SonaroHost::Sequence
{

BuiltChain ChainBuilder::Build(Chain const& inChain)
{
	for (Stage const& stage : inChain.mStages)
	{
		if (std::holds_alternative<Meter>(stage))
		{
			mTools.NoteOneRun("a meter of " + mContext.mPlace.Describe() + " hears the whole in one run");
		}
		if (&stage == &inChain.mStages.back() && inChain.mPan && !mContext.mTap)
		{
			mLeftGain = std::make_shared<LeftGain>();
		}
		std::visit([this](auto const& inStage) { Add(inStage); }, stage);
	}
	if (mContext.mTap)
	{
		Add(Meter{mContext.mTap});
	}
	mBuilt.mPanner = mContext.mListener ? MakeEars(*mContext.mListener)
										: MakePanner(mContext.mOutput, inChain.mPan, mLeftGain);
	return std::move(mBuilt);
}

void ChainBuilder::Add(Fader const& inFader)
{
	if (!inFader.mGain && !inFader.mMute)
	{
		return;
	}
	mBuilt.mProcessors.push_back(
		zorvcore::classref::MakeObject<LevelStage>(MakeLevel(inFader), MakeClock(), mLeftGain));
	mTools.Label(mBuilt.mProcessors.back(), {NodeLabel::Kind::kFader, {}});
}

void ChainBuilder::Add(Effect const& inEffect)
{
	Processor const effect = MakeEffect(inEffect);
	std::int64_t const latency = mTools.GetLatency(*effect);
	if (latency < 0)
	{
		Refuse(mContext.mPlace, "the effect " + Quote(inEffect.mName) + " has a negative latency");
	}
	if (mContext.mDropsLateEffects && effect->GetDelay() != SN::kTimeZero &&
		mTools.GetContext()->IsDelayCompensationDisabled())
	{
		return;
	}
	if (effect->HasHistory() && !inEffect.mForgetsAfterLatency)
	{
		mTools.NoteHistory("the effect " + Quote(inEffect.mName) + " of " + mContext.mPlace.Describe() +
						   " may depend on all that came before");
	}
	auto const health = std::make_shared<EffectHealth>(inEffect.mName, mContext.mPlace.Describe(),
		mContext.mPlace.mOrigin ? *mContext.mPlace.mOrigin : std::string());
	health->mLatencyFrames = latency;
	health->mTime = mContext.mPlace.mTime;
	health->mFacts = inEffect.mFacts;
	mTools.NoteEffect(health);
	EffectTerms const terms{static_cast<unsigned>(mContext.mInput.size()),
		mTools.GetContext()->GetMaxBlockSize(), MakeClock(), latency, health,
		MakeClock().FindFrames(inEffect.mJumps)};
	mBuilt.mProcessors.push_back(zorvcore::classref::MakeObject<EffectStage>(effect, terms));
	mTools.Label(mBuilt.mProcessors.back(), {NodeLabel::Kind::kEffect, inEffect.mName});
	mBuilt.mLatency += latency;
}

Processor ChainBuilder::MakeEffect(Effect const& inEffect) const
{
	try
	{
		Processor effect = inEffect.mMake
							   ? inEffect.mMake(mTools.GetContext(), mTools.GetFrameRate(), mContext.mInput)
							   : Processor();
		if (effect)
		{
			return effect;
		}
	}
	catch (HostError const& error)
	{
		Refuse(mContext.mPlace, error.GetParts().mReason, error.GetParts().mRemedy);
	}
	Refuse(mContext.mPlace, "the effect " + Quote(inEffect.mName) + " cannot be created");
}

void ChainBuilder::Add(Send const& inSend)
{
	if (!mContext.mTargets)
	{
		Refuse(mContext.mPlace, "only tracks and submixes can send", "remove the send");
	}
	if (inSend.mSubmix >= mContext.mTargets->size())
	{
		Refuse(mContext.mPlace, "it sends to submix index " + std::to_string(inSend.mSubmix) +
									", but there are " + std::to_string(mContext.mTargets->size()) +
									", counted from 0");
	}
	SendTarget const& target = (*mContext.mTargets)[inSend.mSubmix];
	Processor const send = zorvcore::classref::MakeObject<SendStage>(SendStage::Settings{
		MakeLevel(inSend.mLevel), MakeClock(), MakePanner(target.mLayout, inSend.mPan, nullptr),
		mContext.mMute, mTools.GetContext()->GetMaxBlockSize()});
	mBuilt.mProcessors.push_back(send);
	mBuilt.mSends.push_back({send, inSend.mSubmix, mBuilt.mLatency});
}

void ChainBuilder::Add(Meter const& inMeter)
{
	if (!inMeter.mSetter)
	{
		Refuse(mContext.mPlace, "a meter has no setter");
	}
	mBuilt.mProcessors.push_back(zorvcore::classref::MakeObject<MeterTap>(inMeter.mSetter, MakeClock()));
}

template <class T>
ParameterFollower<T> ChainBuilder::Follow(
	SN::InterfaceRef<AutomationParameter<T>> const& inParameter, float inDefault) const
{
	auto const heard = mTools.GetHeard(inParameter);
	if (heard && !mTools.IsLive())
	{
		typename AutomationParameter<T>::Reading const reading(*heard);
		if (!reading.GetCurve())
		{
			return {nullptr, static_cast<float>(reading.GetControl())};
		}
	}
	return {heard, inDefault};
}

Level ChainBuilder::MakeLevel(Fader const& inFader) const
{
	return {Follow(inFader.mGain, 1.0f), Follow(inFader.mMute, 0.0f)};
}

Panner ChainBuilder::MakeEars(Listener const& inListener) const
{
	try
	{
		CheckCanListen(
			mContext.mInput, static_cast<int>(std::lround(mTools.GetFrameRate().GetSamplesPerSecond())));
	}
	catch (HostError const& error)
	{
		Refuse(mContext.mPlace, error.GetParts().mReason, error.GetParts().mRemedy);
	}
	// Like parameters, the head keeps still in an export.
	Listener listener = inListener;
	if (!mTools.IsLive())
	{
		listener.mOrientation = std::make_shared<HeadOrientation>(inListener.GetAngles());
	}
	return zorvcore::classref::MakeObject<BinauralPanner>(
		mContext.mInput, listener, MakeClock(), mTools.GetContext()->GetMaxBlockSize());
}

Panner ChainBuilder::MakePanner(SN::AudioChannelLayout const& inOutput, NumberParameter const& inPan,
	std::shared_ptr<LeftGain> const& inLeftGain)
{
	if (!inPan)
	{
		return mTools.GetFixedPanner(mContext.mInput, inOutput, mContext.mMixdown);
	}
	try
	{
		constexpr double kMiddle = 0.5;
		LayoutPlan(mContext.mInput, {.mLayout = inOutput, .mPan = kMiddle, .mMixdown = {}});
	}
	catch (HostError const& error)
	{
		Refuse(mContext.mPlace, error.GetParts().mReason, error.GetParts().mRemedy);
	}
	return zorvcore::classref::MakeObject<PanStage>(
		mContext.mInput, inOutput, Follow(inPan, 0.0f), MakeClock(), inLeftGain);
}

} // namespace SonaroHost::Sequence
