#include "SonaroHost/Automation/AutomationParameter.h"

#include "SonaroHost/Base/HostError.h"

#include <cmath>
#include <type_traits>
#include <utility>

namespace SonaroHost
{

namespace
{

std::atomic<std::uint32_t> sGenerations{0};

bool IsSame(bool inA, bool inB)
{
	return inA == inB;
}

// What is not a number is the same as itself.
bool IsSame(float inA, float inB)
{
	return inA == inB || (std::isnan(inA) && std::isnan(inB));
}

} // namespace

template <class T>
AutomationParameter<T>::State::State(boost::shared_ptr<Control> inControl, Curve inCurve, bool inIsPending)
	: mControl(std::move(inControl)),
	  mCurve(std::move(inCurve)),
	  mGeneration(sGenerations.fetch_add(1, std::memory_order_relaxed) + 1),
	  mIsPending(inIsPending),
	  mHeard(mControl->GetValue())
{
}

template <class T>
AutomationParameter<T>::AutomationParameter(
	boost::shared_ptr<VX::ParamValueBase> const& inControl, Curve const& inCurve)
	: mState(std::make_unique<State const>(CheckControl(inControl), CheckCurve(inCurve), false))
{
}

template <class T>
SN::InterfaceRef<AutomationParameter<T>> AutomationParameter<T>::Create(T inValue)
{
	return zorvcore::classref::MakeObject<AutomationParameter>(
		boost::shared_ptr<VX::ParamValueBase>(new Control(inValue)));
}

template <class T>
void AutomationParameter<T>::SetCurve(Curve const& inCurve)
{
	Curve const curve = CheckCurve(inCurve);
	mState.Replace(
		[&](State const& inOld) { return std::make_unique<State const>(inOld.mControl, curve, true); });
}

template <class T>
void AutomationParameter<T>::ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool)
{
	boost::shared_ptr<Control> const control = CheckControl(inControl);
	mState.Replace(
		[&](State const& inOld) { return std::make_unique<State const>(control, inOld.mCurve, true); });
}

template <class T>
SN::InterfaceRef<AutomationParameter<T>> AutomationParameter<T>::Detach() const
{
	Reader const state(mState);
	return zorvcore::classref::MakeObject<AutomationParameter>(state->mControl->Clone(), state->mCurve);
}

template <class T>
void AutomationParameter<T>::UpdateControl(
	SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache, VX::KeyframeBase* outKeyframe)
{
	Reader const state(mState);
	auto& keyframe = static_cast<VX::Keyframe<T>&>(*outKeyframe);
	keyframe.mTime = inTime;
	keyframe.mValue = Sample(*state, inTime, ioCache);
}

template <class T>
SN::TickTime AutomationParameter<T>::GetNextInterestingTime(
	SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache)
{
	Reader const state(mState);
	return state->HasPoints()
			   ? state->mCurve->GetNextInterestingTime(inTime, FindSegment(*state, inTime, ioCache))
			   : SN::kTimeMax;
}

template <class T>
bool AutomationParameter<T>::HasActionPending()
{
	Reader const state(mState);
	bool const hasMoved = !state->HasPoints() &&
						  !IsSame(state->mControl->GetValue(), state->mHeard.load(std::memory_order_relaxed));
	return hasMoved || state->mIsPending.load(std::memory_order_relaxed);
}

template <class T>
bool AutomationParameter<T>::IsEmpty()
{
	return !Reader(mState)->HasPoints();
}

template <class T>
boost::shared_ptr<VX::ParamValueBase> AutomationParameter<T>::GetStartValue()
{
	return Reader(mState)->mControl;
}

template <class T>
boost::shared_ptr<typename AutomationParameter<T>::Control> AutomationParameter<T>::CheckControl(
	boost::shared_ptr<VX::ParamValueBase> const& inControl)
{
	if (!inControl || inControl->GetTypeCode() != VX::kParamTypeCode<T>)
	{
		Refuse(std::is_same_v<T, bool> ? "a switch needs a control that holds true or false"
									   : "this parameter needs a control that holds a number");
	}
	return boost::static_pointer_cast<Control>(inControl);
}

template <class T>
typename AutomationParameter<T>::Curve AutomationParameter<T>::CheckCurve(Curve const& inCurve)
{
	if (std::is_same_v<T, bool> && inCurve && !inCurve->HoldsOnly())
	{
		Refuse("the curve of a switch cannot interpolate; set every point to hold");
	}
	return std::is_same_v<T, bool> && inCurve ? std::make_shared<AutomationCurve const>(inCurve->MakeSwitch())
											  : inCurve;
}

// The first keyframe of a cache has the segment's first time, generation and index, and the last one its last time.
template <class T>
std::size_t AutomationParameter<T>::FindSegment(
	State const& inState, SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache)
{
	auto* const cache = static_cast<VX::KeyframeCache<VX::Keyframe<T>>*>(ioCache);
	if (!cache || cache->GetCount() < 2)
	{
		return inState.mCurve->FindSegment(inTime);
	}
	VX::Keyframe<T>& first = (*cache)[0];
	if (first.mIncomingKind == inState.mGeneration && cache->Contains(inTime))
	{
		return first.mOutgoingKind;
	}
	std::size_t const segment = inState.mCurve->FindSegment(inTime);
	first.mTime = inState.mCurve->GetSegmentStart(segment);
	first.mIncomingKind = inState.mGeneration;
	first.mOutgoingKind = static_cast<std::uint32_t>(segment);
	(*cache)[cache->GetCount() - 1].mTime = inState.mCurve->GetSegmentEnd(segment);
	return segment;
}

// Only what changes is written: stores take the memory from other threads that sample the parameter.
template <class T>
T AutomationParameter<T>::Hear(State const& inState)
{
	if (inState.mIsPending.load(std::memory_order_relaxed))
	{
		inState.mIsPending.store(false, std::memory_order_relaxed);
	}
	T const heard = inState.mControl->GetValue();
	if (!inState.HasPoints() && !IsSame(inState.mHeard.load(std::memory_order_relaxed), heard))
	{
		inState.mHeard.store(heard, std::memory_order_relaxed);
	}
	return heard;
}

template <class T>
AutomationParameter<T>::Reading::Reading(AutomationParameter const& inParameter)
	: mState(inParameter.mState),
	  mControl(Hear(*mState))
{
}

template <class T>
T AutomationParameter<T>::Sample(
	State const& inState, SN::TickTime const& inTime, VX::KeyframeCacheBase* ioCache)
{
	T const heard = Hear(inState);
	if (!inState.HasPoints())
	{
		return heard;
	}
	double const value = inState.mCurve->GetValue(inTime, FindSegment(inState, inTime, ioCache));
	if constexpr (std::is_same_v<T, bool>)
	{
		return value != 0.0;
	}
	else
	{
		return static_cast<T>(value);
	}
}

template class AutomationParameter<float>;
template class AutomationParameter<bool>;

} // namespace SonaroHost
