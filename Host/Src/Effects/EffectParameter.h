#pragma once

#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Automation/AutomationCurve.h"
#include "SonaroHost/Effects/EffectDescription.h"
#include "Vexilon/Keyframe.h"
#include "Vexilon/ParamValue.h"

#include <boost/shared_ptr.hpp>

#include <memory>

namespace SonaroHost::Effects
{

// What a parameter of an effect may be.
struct ParameterRange
{
	float mMinimum = 0.0f;
	float mMaximum = 1.0f;
	// Only whole numbers.
	bool mIsInteger = false;

	// At a sample rate, which some ranges are factors of.
	static ParameterRange Make(Control const& inControl, double inSampleRate);
	float Limit(double inValue) const;
};

// A parameter of an effect that follows a curve. Wherever it is sampled it sets its control, and so the effect: the
// engine leaves that to the parameters of effects that have a history.
//
// Threads  As IRenderableAudioComponentParam says. Sampling neither locks nor allocates.
class EffectParameter final : public SN::Implements<EffectParameter, SN::IRenderableAudioComponentParam>
{
public:
	using Control = boost::shared_ptr<VX::ParamValue<float>>;

	// inCurve: null for a parameter that stays at what its control has.
	EffectParameter(
		Control inControl, std::shared_ptr<AutomationCurve const> inCurve, ParameterRange const& inRange);

	// The clone sets the same control until another one replaces it.
	SN::InterfaceRef<SN::IRenderableAudioComponentParam> CloneAndDetach(bool inForRender) override;
	void Init(unsigned, SN::FrameRate const&, bool) override {}
	void UpdateControl(SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache,
		VX::KeyframeBase* outKeyframe) SONARO_NONBLOCKING override;
	SN::TickTime GetNextInterestingTime(
		SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache) SONARO_NONBLOCKING override;
	bool HasActionPending() override { return false; }
	// Throws a HostError when the control is null or not one of numbers.
	void ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool inFlag) override;
	void Preroll(SN::TickTime const&) override {}
	void Reset() override {}
	bool IsEmpty() override { return !mCurve; }
	boost::shared_ptr<VX::ParamValueBase> GetStartValue() override { return mControl; }

private:
	Control mControl;
	std::shared_ptr<AutomationCurve const> mCurve;
	ParameterRange mRange;
};

} // namespace SonaroHost::Effects
