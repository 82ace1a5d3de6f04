#include "ShiftedParameter.h"

#include <utility>

namespace SonaroHost::Sequence
{

ShiftedParameter::ShiftedParameter(Parameter const& inParameter, CurveTime const& inTime)
	: mParameter(inParameter),
	  mTime(inTime)
{
}

bool ShiftedParameter::Changes(SN::IRenderableAudioComponentParam& inParameter)
{
	return inParameter.GetNextInterestingTime(-SN::kTimeMax, nullptr) != SN::kTimeMax;
}

ShiftedParameter::Parameter ShiftedParameter::CloneAndDetach(bool inForRender)
{
	return zorvcore::classref::MakeObject<ShiftedParameter>(mParameter->CloneAndDetach(inForRender), mTime);
}

void ShiftedParameter::Init(unsigned inBufferFrames, SN::FrameRate const& inFrameRate, bool inFlag)
{
	mParameter->Init(inBufferFrames, inFrameRate, inFlag);
}

void ShiftedParameter::UpdateControl(
	SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache, VX::KeyframeBase* outKeyframe)
{
	mParameter->UpdateControl(mTime.Map(inTime), ioCache, outKeyframe);
}

SN::TickTime ShiftedParameter::GetNextInterestingTime(SN::TickTime const& inTime, VX::KeyframeCacheBase*)
{
	return Changes(*mParameter) ? inTime : SN::kTimeMax;
}

void ShiftedParameter::ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool inFlag)
{
	mParameter->ReplaceControl(std::move(inControl), inFlag);
}

void* ShiftedParameter::QueryMap(SN::Guid const& inIdentifier)
{
	void* const found =
		zorvcore::classref::QueryInterfaces<SN::IRenderableAudioComponentParam>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SonaroHost::Sequence
