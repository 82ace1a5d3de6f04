#pragma once

#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Support/Answers.h"
#include "Support/Pull.h"

#include <boost/shared_ptr.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace SN::Testing
{

// A parameter whose value is a function of time, and which keeps a record of its calls, shared with its
// clones. Answers keyframes of both types.
class FakeParameter final : public Answers<IRenderableAudioComponentParam>
{
public:
	using ValueAt = std::function<float(TickTime const& inTime)>;
	using Log = std::vector<std::string>;

	// A constant without keyframes.
	explicit FakeParameter(float inValue)
		: mValueAt([inValue](TickTime const&) { return inValue; })
	{
	}
	explicit FakeParameter(ValueAt inValueAt)
		: mValueAt(std::move(inValueAt)),
		  mIsEmpty(false)
	{
	}

	InterfaceRef<IRenderableAudioComponentParam> CloneAndDetach(bool inForRender) override
	{
		mLog->push_back(inForRender ? "detach" : "clone");
		auto const clone = zorvcore::classref::MakeObject<FakeParameter>(mValueAt);
		clone->mIsEmpty = mIsEmpty;
		clone->mNext = mNext;
		clone->mLog = mLog;
		return clone;
	}
	void Init(unsigned inBufferFrames, FrameRate const& inFrameRate, bool inFlag) override
	{
		mLog->push_back("init " + std::to_string(inBufferFrames) + " " +
						std::to_string(inFrameRate.GetTicksPerFrame()) + (inFlag ? " flag" : ""));
	}
	void UpdateControl(
		TickTime const& inTime, VX::KeyframeCacheBase* ioCache, VX::KeyframeBase* outKeyframe) override
	{
		mLastCache = ioCache;
		float const value = mValueAt(inTime);
		if (mControl)
		{
			mControl->SetValue(value);
		}
		if (outKeyframe->GetTypeCode() == VX::kParamTypeBool)
		{
			static_cast<VX::Keyframe<bool>*>(outKeyframe)->mValue = value != 0.0f;
		}
		else
		{
			static_cast<VX::Keyframe<float>*>(outKeyframe)->mValue = value;
		}
	}
	TickTime GetNextInterestingTime(TickTime const&, VX::KeyframeCacheBase* ioCache) override
	{
		mLastCache = ioCache;
		return mNext;
	}
	bool HasActionPending() override { return mIsPending; }
	void ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool inFlag) override
	{
		mLog->push_back(inFlag ? "control flag" : "control");
		mControl = boost::static_pointer_cast<VX::ParamValue<float>>(inControl);
	}
	void Preroll(TickTime const&) override { mLog->push_back("preroll"); }
	void Reset() override { mLog->push_back("reset"); }
	bool IsEmpty() override { return mIsEmpty; }
	boost::shared_ptr<VX::ParamValueBase> GetStartValue() override { return {}; }

	ValueAt mValueAt;
	bool mIsEmpty = true;
	bool mIsPending = false;
	TickTime mNext = kTimeMax;
	VX::KeyframeCacheBase* mLastCache = nullptr;
	// Set to each value that is sampled.
	boost::shared_ptr<VX::ParamValue<float>> mControl;
	std::shared_ptr<Log> mLog = std::make_shared<Log>();
};

// Parameters that stand at these values.
inline std::vector<InterfaceRef<IRenderableAudioComponentParam>> ConstantParameters(
	std::vector<float> const& inValues)
{
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> params;
	for (float const value : inValues)
	{
		params.push_back(zorvcore::classref::MakeObject<FakeParameter>(value));
	}
	return params;
}

} // namespace SN::Testing
