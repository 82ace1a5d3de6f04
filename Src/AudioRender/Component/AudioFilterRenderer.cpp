#include "AudioRender/Component/AudioFilterRenderer.h"

#include "Sonaro/AudioFilterControl.h"
#include "Sonaro/AudioFilterException.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvcore/threads/CurrentThread.h"
#include "zorvcore/utility/MachineException.h"
#include "zorvcore/utility/RunGuarded.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace SN
{

namespace
{

namespace exceptions = zorvcore::utility::exceptions;

constexpr unsigned long long kFilterBypass = 0;
// Parameter i of the effect is control kFirstParameter + i.
constexpr unsigned kFirstParameter = 1;

[[noreturn]] void RaiseFilterException(InterfaceRef<IAudioFilter> const& inFilter, unsigned inCode)
{
	exceptions::InternalHiddenFilterWindowsSEHException(
		inCode, true, __FILE__, __LINE__, "SN::AudioFilterRenderer::ProcessAudioData");
	throw AudioFilterException(inFilter, "Caught machine exception while prerolling audio filter.");
}

} // namespace

int AudioFilterRenderer::Create(
	AudioFilterSettings const& inSettings, InterfaceRef<IAudioProcessor>* outProcessor)
{
	if (inSettings.mChannelLayout.empty())
	{
		return eInvalidArgument;
	}
	if (!inSettings.mContext)
	{
		return eNullPointer;
	}
	auto const renderer = zorvcore::classref::MakeObject<AudioFilterRenderer>();
	int const result = renderer->AudioRenderContextClient::Init(inSettings.mContext, inSettings.mFrameRate);
	renderer->InitFrom(inSettings);
	if (ResultSucceeded(result))
	{
		*outProcessor = renderer;
	}
	return result;
}

void AudioFilterRenderer::InitFrom(AudioFilterSettings const& inSettings)
{
	bool const hasHistory = inSettings.mFilter->HasHistory();
	ParameterOwnerMixin::Init(inSettings.mParams,
		{
			.mFrameRate = inSettings.mFrameRate,
			.mBypassIndex = kFilterBypass,
			.mParamInitFlag = GetFilterParamFlag(),
			.mActionFlag = inSettings.mActionFlag,
			.mReserve = !hasHistory,
		},
		inSettings.mContext);
	mPushControls = !(IsPrefetchEnabled() && GetNestingDepth() == 0) && !hasHistory;
	mRealTime = IsPrefetchEnabled();
	mMaxFrames = GetMaxBlockSize();
	mFilter = inSettings.mFilter;
	mSecondFilter = inSettings.mSecondFilter;
	MakeDelay();
	mChannelLayout = inSettings.mChannelLayout;
	mRate = inSettings.mFrameRate;
	exceptions::InstallGuards();
}

void AudioFilterRenderer::MakeDelay()
{
	if (unsigned const latency = mFilter->GetLatency(); latency != 0)
	{
		mDelayBuffer.Init(mFilter->GetNumChannels(), latency, mMaxFrames);
	}
}

InterfaceRef<IAudioProcessor> AudioFilterRenderer::Clone(
	FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval)
{
	auto const clone = StartClone(*this);
	clone->CopyFrom(*this, true, inFrameRate, inControlInterval);
	clone->mMaxFrames = inMaxBlockSize;
	if (mFilter)
	{
		mFilter->Clone(clone->mFilter, mRealTime);
		clone->mSecondFilter = mSecondFilter;
		clone->mRealTime = mRealTime;
		clone->ReplaceControls();
		clone->MakeDelay();
	}
	clone->mChannelLayout = mChannelLayout;
	clone->mRate = inFrameRate;
	return clone;
}

void AudioFilterRenderer::ReplaceControls()
{
	for (unsigned i = kFirstParameter; i < GetParameterCount(); ++i)
	{
		GetParameter(i)->ReplaceControl(
			boost::make_shared<AudioFilterControl>(mFilter, i - kFirstParameter), false);
	}
}

void AudioFilterRenderer::ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime)
{
	unsigned const code = exceptions::RunGuarded([&] { Run(inBuffer, inTime); });
	if (code != exceptions::kNoMachineException)
	{
		RaiseFilterException(mFilter, code);
	}
}

void AudioFilterRenderer::Run(dsp::AudioBuffer& ioBuffer, TickTime const& inTime)
{
	if (!mFilter)
	{
		return;
	}
	if (!IsBypassed())
	{
		mFilter->Process(ioBuffer, inTime, GetFilterRenderFlag());
	}
	else if (mFilter->GetLatency() != 0)
	{
		Delay(ioBuffer);
	}
}

// The delay takes the largest block at a time; items that are faster than 1 hand over longer ones.
void AudioFilterRenderer::Delay(dsp::AudioBuffer& ioBuffer)
{
	if (ioBuffer.GetUseSize() <= mMaxFrames)
	{
		mDelayBuffer.Write(ioBuffer);
		mDelayBuffer.Read(ioBuffer);
		return;
	}
	for (unsigned first = 0; first < ioBuffer.GetUseSize(); first += mMaxFrames)
	{
		dsp::AudioSubBuffer piece;
		piece.Init(ioBuffer.GetNumChannels());
		piece.Assign(ioBuffer, first);
		piece.SetUseSize(std::min(mMaxFrames, piece.GetUseSize()));
		mDelayBuffer.Write(piece);
		mDelayBuffer.Read(piece);
	}
}

void AudioFilterRenderer::Preroll(TickTime const& inTime, bool)
{
	ParameterOwnerMixin::Preroll(inTime);
	bool const fromMainThread = zorvcore::threads::CurrentThreadIsMainThread() && IsImmediateRender();
	for (auto i = static_cast<unsigned>(GetParameterCount()); i > kFirstParameter;)
	{
		--i;
		fromMainThread ? mFilter->SetParameterFromMainThread(i - kFirstParameter, GetValue(i))
					   : mFilter->SetParameter(i - kFirstParameter, GetValue(i));
	}
}

void AudioFilterRenderer::UpdateControls(TickTime const& inTime)
{
	ParameterOwnerMixin::UpdateControls(inTime);
	if (mPushControls)
	{
		for (unsigned i = kFirstParameter; i < GetParameterCount(); ++i)
		{
			mFilter->SetParameter(i - kFirstParameter, GetValue(i));
		}
	}
}

void AudioFilterRenderer::InitializeAudioFilter()
{
	auto const channels = static_cast<unsigned>(mChannelLayout.size());
	for (auto const& filter : {mFilter, mSecondFilter})
	{
		if (filter)
		{
			filter->Initialize(mRealTime, mMaxFrames, mRate, channels);
		}
	}
}

void AudioFilterRenderer::ShutdownAudioFilter()
{
	for (auto const& filter : {mFilter, mSecondFilter})
	{
		if (filter)
		{
			filter->Shutdown();
		}
	}
}

TickTime AudioFilterRenderer::GetDelay()
{
	return mFilter ? TickTime(mFilter->GetLatency(), mRate) : kTimeZero;
}

} // namespace SN
