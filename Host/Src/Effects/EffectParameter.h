#pragma once

#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Automation/AutomationCurve.h"
#include "SonaroHost/Base/LiveControl.h"
#include "SonaroHost/Effects/EffectDescription.h"
#include "Vexilon/Keyframe.h"
#include "Vexilon/ParamValue.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <optional>

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

// What moves a parameter of an effect; either may be null.
struct ParameterMoves
{
	std::shared_ptr<AutomationCurve const> mCurve;
	std::shared_ptr<LiveControl const> mLive;
};

// A parameter of an effect that follows a curve, or what a listener holds it at. Wherever it is sampled it sets its
// control, and so the effect: the engine leaves that to the parameters of effects that have a history.
//
// Live     See LiveControl. At a jump of the playback, and when it is sampled first, what is held counts at once.
// Threads  As IRenderableAudioComponentParam says. Sampling neither locks nor allocates.
class EffectParameter final : public SN::Implements<EffectParameter, SN::IRenderableAudioComponentParam>
{
public:
	using Control = boost::shared_ptr<VX::ParamValue<float>>;

	// Without a curve, and while nobody holds it, the parameter is what its control has now.
	EffectParameter(Control inControl, ParameterMoves inMoves, ParameterRange const& inRange);

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
	bool IsEmpty() override { return !mMoves.mCurve; }
	boost::shared_ptr<VX::ParamValueBase> GetStartValue() override { return mControl; }

private:
	// What it is to become, without ramps.
	float GetTarget(SN::TickTime const& inTime) const;
	// Begins a ramp where the listener has moved something.
	void NoteMove(SN::TickTime const& inTime);
	// The target, or what is on the way to it.
	float Approach(float inTarget, SN::TickTime const& inTime);
	float Mix(float inTarget) const;

	Control mControl;
	ParameterMoves mMoves;
	ParameterRange mRange;
	// Whether it was sampled, what was held then and ever, and at which time.
	bool mIsSampled = false;
	bool mWasHeld = false;
	std::optional<float> mHeld;
	SN::TickTime mLastTime;
	// The ramp after a move: from where, and how much of it is left.
	float mRampFrom = 0.0f;
	SN::TickTime mRampLeft;
};

} // namespace SonaroHost::Effects
