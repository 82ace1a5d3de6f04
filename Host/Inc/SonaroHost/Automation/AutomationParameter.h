#pragma once

#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Automation/AutomationCurve.h"
#include "SonaroHost/Automation/PublishedState.h"
#include "Vexilon/Keyframe.h"
#include "Vexilon/ParamValue.h"

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace SonaroHost
{

// A parameter for the engine: a control, and a curve. A curve with points replaces the control at all times; for a trim
// over automation, put two faders into a chain.
//
// Types    T is float, or bool with a curve that holds only: there every value but 0 is true.
// Edits    SetCurve, ReplaceControl and the control's own SetValue are heard from the next sampling on.
// Effects  Sampling sets no control. So a curve reaches IAudioFilter::SetParameter only where the engine hands sampled values
//          on, which IAudioFilter::HasHistory describes: in exports, for effects without history. Others read it by Reading.
// Caches   ioCache may be null.
// Threads  UpdateControl, GetNextInterestingTime, HasActionPending and IsEmpty: any number at once, while
//          others edit; they never wait, lock, allocate or free. The rest: the host's threads.
template <class T>
class AutomationParameter final
	: public SN::Implements<AutomationParameter<T>, SN::IRenderableAudioComponentParam>
{
public:
	using Control = VX::ParamValue<T>;
	using Curve = std::shared_ptr<AutomationCurve const>;

	// Throws a HostError like ReplaceControl and SetCurve. No curve is one without points.
	explicit AutomationParameter(
		boost::shared_ptr<VX::ParamValueBase> const& inControl, Curve const& inCurve = {});

	class Reading;

	// A parameter that stays at a value, unless SetCurve gives it a curve; for one that a host moves, make the control and hand
	// it to the constructor.
	static SN::InterfaceRef<AutomationParameter> Create(T inValue);

	// Throws a HostError when a boolean parameter gets a curve that moves.
	void SetCurve(Curve const& inCurve);

	// A parameter like this one at present, that edits of this one do not reach.
	SN::InterfaceRef<AutomationParameter> Detach() const;

	SN::InterfaceRef<SN::IRenderableAudioComponentParam> CloneAndDetach(bool) override { return Detach(); }
	void Init(unsigned, SN::FrameRate const&, bool) override {}
	void UpdateControl(SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache,
		VX::KeyframeBase* outKeyframe) SONARO_NONBLOCKING override;
	SN::TickTime GetNextInterestingTime(
		SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache) SONARO_NONBLOCKING override;
	// True from an edit until a sampling has heard it.
	bool HasActionPending() override;
	// Throws a HostError when the control is null or of another type.
	void ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool inFlag) override;
	void Preroll(SN::TickTime const&) override {}
	void Reset() override {}
	bool IsEmpty() override;
	boost::shared_ptr<VX::ParamValueBase> GetStartValue() override;

private:
	// Only what is heard of it changes once it is published.
	struct State
	{
		State(boost::shared_ptr<Control> inControl, Curve inCurve, bool inIsPending);

		bool HasPoints() const { return mCurve && !mCurve->IsEmpty(); }

		boost::shared_ptr<Control> mControl;
		Curve mCurve;
		// Identifies the state whose segments a cache holds, among all states of the process.
		std::uint32_t mGeneration;
		// Whether a sampling has heard this state, and what of the control was heard last.
		mutable std::atomic<bool> mIsPending;
		mutable std::atomic<T> mHeard;
	};
	using Reader = typename PublishedState<State>::Reader;

	static boost::shared_ptr<Control> CheckControl(boost::shared_ptr<VX::ParamValueBase> const& inControl);
	static Curve CheckCurve(Curve const& inCurve);
	// The segment of a curve with points, by the cache where that covers the time, and into it.
	static std::size_t FindSegment(
		State const& inState, SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache);
	// Marks a state as heard and gives the control's value.
	static T Hear(State const& inState);
	static T Sample(State const& inState, SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache);

	PublishedState<State> mState;
};

// What a parameter is at one moment, for who follows its curve frame by frame. It counts as a sampling. Short-lived,
// on one thread; it never waits, locks, allocates or frees.
template <class T>
class AutomationParameter<T>::Reading
{
public:
	explicit Reading(AutomationParameter const& inParameter);

	// Null where the control counts.
	AutomationCurve const* GetCurve() const { return mState->HasPoints() ? mState->mCurve.get() : nullptr; }
	T GetControl() const { return mControl; }
	// Another one after every edit but a move of the control.
	std::uint32_t GetGeneration() const { return mState->mGeneration; }

private:
	Reader mState;
	T mControl;
};

extern template class AutomationParameter<float>;
extern template class AutomationParameter<bool>;

} // namespace SonaroHost
