#include "ChainBuilder.h"

#include "EffectStage.h"
#include "MeterTap.h"
#include "Priming.h"
#include "SonaroHost/HostError.h"
#include "SonaroHost/RenderContextScope.h"

#include <string>
#include <utility>

namespace SonaroHost::Sequence
{

BuiltChain ChainBuilder::Build(Chain const& inChain)
{
	for (Stage const& stage : inChain.mStages)
	{
		std::visit([this](auto const& inStage) { Add(inStage); }, stage);
	}
	mBuilt.mPanner = MakePanner(mSite.mOutput, inChain.mPan);
	return std::move(mBuilt);
}

void ChainBuilder::Add(Fader const& inFader)
{
	if (!inFader.mGain && !inFader.mMute)
	{
		return;
	}
	Processor fader;
	CheckEngineResult(
		mTools.GetFactory().CreateAudioFaderRenderer(mTools.GetContext(), mTools.GetFrameRate(),
			{Shift(inFader.mGain, mTools.GetFullGain()), Shift(inFader.mMute, mTools.GetNotMuted())}, &fader),
		"a fader");
	PrimeFader(*fader, static_cast<unsigned>(mSite.mInput.size()), mTools.GetFrameRate());
	// Clones of faders begin at full gain where a playback runs in reverse.
	mBuilt.mIsClonable = mBuilt.mIsClonable && !mTools.GetContext()->IsPrefetchEnabled();
	mBuilt.mProcessors.push_back(fader);
}

void ChainBuilder::Add(Effect const& inEffect)
{
	Processor const effect = inEffect.mMake
								 ? inEffect.mMake(mTools.GetContext(), mTools.GetFrameRate(), mSite.mInput)
								 : Processor();
	if (!effect)
	{
		Refuse(mSite.mPlace, "the effect " + Quote(inEffect.mName) + " cannot be made");
	}
	std::int64_t const latency = mTools.GetLatency(*effect);
	if (latency < 0)
	{
		Refuse(mSite.mPlace, "the effect " + Quote(inEffect.mName) + " has a latency below 0");
	}
	EffectTerms const terms{static_cast<unsigned>(mSite.mInput.size()),
		mTools.GetContext()->GetMaxBlockSize(), mTools.GetFrameRate(), GetCurveTime()};
	mBuilt.mProcessors.push_back(zorvcore::classref::MakeObject<EffectStage>(effect, terms));
	mBuilt.mLatency += latency;
}

void ChainBuilder::Add(Send const& inSend)
{
	if (!mSite.mTargets)
	{
		Refuse(mSite.mPlace, "only tracks and submixes can send", "take the send out");
	}
	if (inSend.mSubmix >= mSite.mTargets->size())
	{
		Refuse(mSite.mPlace, "it sends to submix " + std::to_string(inSend.mSubmix) + " of " +
								 std::to_string(mSite.mTargets->size()) + ", which are counted from 0");
	}
	SendTarget const& target = (*mSite.mTargets)[inSend.mSubmix];
	Processor send;
	CheckEngineResult(mTools.GetFactory().CreateAudioSendRenderer(mTools.GetContext(), mTools.GetFrameRate(),
						  target.mIdentity,
						  {Shift(inSend.mLevel.mGain, mTools.GetFullGain()),
							  Shift(inSend.mLevel.mMute, mTools.GetNotMuted())},
						  MakePanner(target.mLayout, inSend.mPan), &send),
		"a send");
	mBuilt.mProcessors.push_back(send);
	mBuilt.mSends.push_back({send, inSend.mSubmix, mBuilt.mLatency});
}

void ChainBuilder::Add(Meter const& inMeter)
{
	if (!inMeter.mSetter)
	{
		Refuse(mSite.mPlace, "a meter shows nothing to anybody");
	}
	if (mTools.GetContext()->IsNotTopLevelPlayback())
	{
		// The engine's own would hear nothing.
		Add(Effect{"meter", [&inMeter](auto const&, auto const&, auto const&)
			{ return zorvcore::classref::MakeObject<MeterTap>(inMeter.mSetter); }});
		return;
	}
	Processor meter;
	CheckEngineResult(mTools.GetFactory().CreateAudioMeterRenderer(
						  mTools.GetContext(), mTools.GetFrameRate(), inMeter.mSetter, &meter),
		"a meter");
	mBuilt.mProcessors.push_back(meter);
}

Parameter ChainBuilder::Shift(Parameter const& inParameter, Parameter const& inDefault)
{
	if (!inParameter)
	{
		return inDefault;
	}
	mBuilt.mIsClonable = mBuilt.mIsClonable && !ShiftedParameter::Changes(*inParameter);
	return zorvcore::classref::MakeObject<ShiftedParameter>(inParameter, GetCurveTime());
}

CurveTime ChainBuilder::GetCurveTime() const
{
	return {mTools.ToTime(mSite.mLead + mBuilt.mLatency), mSite.mCurveScale};
}

Panner ChainBuilder::MakePanner(SN::AudioChannelLayout const& inOutput, Parameter const& inPan)
{
	// Clones of panners begin in the middle.
	mBuilt.mIsClonable = mBuilt.mIsClonable && !inPan;
	try
	{
		return inPan ? mTools.MakePanner(mSite.mInput, inOutput, Shift(inPan, inPan))
					 : mTools.GetFixedPanner(mSite.mInput, inOutput, mSite.mMixdown);
	}
	catch (HostError const& error)
	{
		if (error.GetKind() != HostError::Kind::eRequest)
		{
			throw;
		}
		Refuse(mSite.mPlace, error.GetParts().mReason, error.GetParts().mRemedy);
	}
}

} // namespace SonaroHost::Sequence
