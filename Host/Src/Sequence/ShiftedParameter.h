#pragma once

#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/Types.h"

namespace SonaroHost::Sequence
{

// From the time at which a stage works to the time of the curves that belong to its sound.
struct CurveTime
{
	SN::TickTime Map(SN::TickTime const& inTime) const { return (inTime - mLag) * mScale; }

	SN::TickTime mLag;
	double mScale = 1.0;
};

// A parameter whose curves stand in a time other than that of the stage it controls.
//
// Blocks   Where the curve changes anywhere, the stage is to be sampled in every control block, moving or not:
//          so the blocks lie the same however a range is cut. They would begin anew wherever a piece without
//          changes ran through at once.
// Threads  Those of the parameter behind it.
class ShiftedParameter final : public SN::IRenderableAudioComponentParam
{
public:
	using Parameter = SN::InterfaceRef<SN::IRenderableAudioComponentParam>;

	ShiftedParameter(Parameter const& inParameter, CurveTime const& inTime);

	// Whether its value changes over time by itself.
	static bool Changes(SN::IRenderableAudioComponentParam& inParameter);

	Parameter CloneAndDetach(bool inForRender) override;
	void Init(unsigned inBufferFrames, SN::FrameRate const& inFrameRate, bool inFlag) override;
	void UpdateControl(
		SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache, VX::KeyframeBase* outKeyframe) override;
	SN::TickTime GetNextInterestingTime(SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache) override;
	bool HasActionPending() override { return mParameter->HasActionPending(); }
	void ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool inFlag) override;
	void Preroll(SN::TickTime const& inTime) override { mParameter->Preroll(mTime.Map(inTime)); }
	void Reset() override { mParameter->Reset(); }
	bool IsEmpty() override { return mParameter->IsEmpty(); }
	boost::shared_ptr<VX::ParamValueBase> GetStartValue() override { return mParameter->GetStartValue(); }

protected:
	void* QueryMap(SN::Guid const& inIdentifier) override;

private:
	Parameter mParameter;
	CurveTime mTime;
};

} // namespace SonaroHost::Sequence
