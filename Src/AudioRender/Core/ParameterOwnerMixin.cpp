#include "AudioRender/Core/ParameterOwnerMixin.h"

#include "AudioRender/Core/AudioRenderContext.h"

#include <algorithm>

namespace SN
{

int ParameterOwnerMixin::Init(Parameters const& inParams, ParameterOwnerSettings const& inSettings,
	InterfaceRef<IAudioRenderContext> const& inContext)
{
	InterfaceRef<AudioRenderContext> const context(inContext);
	unsigned const bufferFrames = context->GetControlInterval();
	if (context->IsPrefetchEnabled() && context->GetNestingDepth() == 0)
	{
		mParams = inParams;
		for (auto const& param : mParams)
		{
			if (!param)
			{
				break;
			}
			param->Init(bufferFrames, inSettings.mFrameRate, inSettings.mParamInitFlag);
		}
	}
	else
	{
		DetachParameters(inParams, inSettings, inContext, bufferFrames);
	}
	mBypassIndex = inSettings.mBypassIndex;
	mActionFlag = inSettings.mActionFlag;
	// Room also for what an empty reference has cut off, which reads as 0.
	ResizeValues(inParams.size());
	return kSuccess;
}

void ParameterOwnerMixin::DetachParameters(Parameters const& inParams,
	ParameterOwnerSettings const& inSettings, InterfaceRef<IAudioRenderContext> const& inContext,
	unsigned inBufferFrames)
{
	InterfaceRef<AudioRenderContext> const context(inContext);
	if (inSettings.mReserve)
	{
		mParams.reserve(inParams.size());
	}
	for (auto const& param : inParams)
	{
		if (!param)
		{
			break;
		}
		InterfaceRef<IRenderableAudioComponentParam> clone = context->FindParameter(param);
		if (!clone)
		{
			clone = param->CloneAndDetach(true);
			context->AddParameter(param, clone);
		}
		clone->Init(inBufferFrames, inSettings.mFrameRate, inSettings.mParamInitFlag);
		mParams.push_back(clone);
	}
}

void ParameterOwnerMixin::CopyFrom(ParameterOwnerMixin const& inOther, bool inCloneParams,
	FrameRate const& inFrameRate, unsigned inBufferFrames)
{
	if (inCloneParams)
	{
		for (auto const& param : inOther.mParams)
		{
			auto const clone = param->CloneAndDetach(false);
			clone->Init(inBufferFrames, inFrameRate, false);
			mParams.push_back(clone);
		}
	}
	else
	{
		mParams = inOther.mParams;
	}
	mBypassIndex = inOther.mBypassIndex;
	mActionFlag = inOther.mActionFlag;
	ResizeValues(inOther.mValues.size());
}

void ParameterOwnerMixin::ResizeValues(std::size_t inCount)
{
	mValues.resize(inCount);
	mCaches.resize(inCount);
}

VX::KeyframeCacheBase* ParameterOwnerMixin::GetCache(unsigned long long inIndex)
{
	if (inIndex == mBypassIndex)
	{
		return &mBypassCache;
	}
	return &mCaches[inIndex > mBypassIndex ? inIndex - 1 : inIndex];
}

TickTime ParameterOwnerMixin::GetNextInterestingTime(TickTime const& inTime)
{
	TickTime next = kTimeMax;
	for (unsigned long long i = 0; i < mParams.size(); ++i)
	{
		next = std::min(next, mParams[i]->GetNextInterestingTime(inTime, GetCache(i)));
	}
	return next;
}

void ParameterOwnerMixin::UpdateControls(TickTime const& inTime)
{
	VX::Keyframe<float> value;
	for (unsigned long long i = 0; i < mParams.size(); ++i)
	{
		if (i == mBypassIndex)
		{
			VX::Keyframe<bool> bypass;
			mParams[i]->UpdateControl(inTime, &mBypassCache, &bypass);
			mBypass = bypass.mValue;
			continue;
		}
		mParams[i]->UpdateControl(inTime, GetCache(i), &value);
		mValues[i > mBypassIndex ? i - 1 : i] = value.mValue;
	}
}

void ParameterOwnerMixin::CollectLiveParameters(LiveAudioParameterMap& outParameters)
{
	for (auto const& param : mParams)
	{
		if (param->HasActionPending())
		{
			outParameters.try_emplace(param.GetUnknown().get(), LiveAudioParameter{param, mActionFlag});
		}
	}
}

void ParameterOwnerMixin::Preroll(TickTime const& inTime)
{
	for (auto const& param : mParams)
	{
		param->Preroll(inTime);
	}
	// The call goes through the interface, so that a node can sample in its own way.
	static_cast<IParameterOwnerMixin*>(this)->UpdateControls(inTime);
}

void ParameterOwnerMixin::Reset()
{
	for (auto const& param : mParams)
	{
		param->Reset();
	}
}

bool ParameterOwnerMixin::IsBypassConstant()
{
	if (mBypassIndex >= mParams.size())
	{
		return false;
	}
	auto const& bypass = mParams[mBypassIndex];
	TickTime const next = bypass->GetNextInterestingTime(kTimeZero, &mBypassCache);
	VX::Keyframe<bool> value;
	bypass->UpdateControl(kTimeZero, &mBypassCache, &value);
	return next == kTimeMax && value.mValue;
}

} // namespace SN
