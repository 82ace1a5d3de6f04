#include "Panner/AutomatedPanner.h"

namespace SN
{

int AutomatedPanner::Init(AutomatedPannerSettings const& inSettings, std::size_t inParameterCount)
{
	if (!inSettings.mContext)
	{
		return eNullPointer;
	}
	if (inParameterCount != kAnyParameterCount && inSettings.mParams.size() != inParameterCount)
	{
		return eFailure;
	}
	int const result = AudioRenderContextClient::Init(inSettings.mContext, inSettings.mFrameRate);
	if (ResultSucceeded(result))
	{
		ParameterOwnerMixin::Init(inSettings.mParams,
			{
				.mFrameRate = inSettings.mFrameRate,
				.mParamInitFlag = GetPannerParamFlag(),
				.mActionFlag = inSettings.mActionFlag,
			},
			inSettings.mContext);
	}
	mNextTime = kTimeMax;
	return result;
}

void AutomatedPanner::CopyFrom(
	AutomatedPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	PanProcessorBase::CopyFrom(inOther, inFrameRate, inControlInterval);
	ParameterOwnerMixin::CopyFrom(inOther, false, inFrameRate, inControlInterval);
	mNextTime = kTimeMax;
}

bool AutomatedPanner::IsJump(TickTime const& inTime) const
{
	Prefetcher const* const prefetcher = GetPrefetcher();
	return inTime != mNextTime && (!prefetcher || prefetcher->mReverse == 0);
}

void AutomatedPanner::NoteBlock(TickTime const& inTime, unsigned inFrames)
{
	mNextTime = inTime;
	mNextTime.AddFrames(inFrames, GetFrameRate());
}

bool AutomatedPanner::StandsAt(unsigned long long inIndex, float inValue) const
{
	return GetParameter(inIndex)->IsEmpty() && GetValue(inIndex) == inValue;
}

} // namespace SN
