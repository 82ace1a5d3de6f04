#pragma once

#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/Types.h"
#include "Vexilon/Keyframe.h"

#include <cstddef>
#include <vector>

namespace SN
{

class IAudioRenderContext;

// How the parameters of a node are set up.
struct ParameterOwnerSettings
{
	FrameRate mFrameRate;
	// The index of the one boolean parameter, or ParameterOwnerMixin::kNoBypass.
	unsigned long long mBypassIndex = 0xFFFFFFFF;
	// Handed to each parameter's Init.
	bool mParamInitFlag = false;
	// Handed out with each entry of CollectLiveParameters.
	bool mActionFlag = false;
	// Whether room for all detached parameters is made at once.
	bool mReserve = true;
};

// The base of every node whose behaviour is automated. It alone touches the parameters: it samples them
// on request into plain numbers, which the node's audio code reads without a call.
//
// The parameters are the host's own in a context with prefetch at nesting depth 0, so that edits are heard live.
// Everywhere else they are detached clones, one for each parameter and render context.
//
// Errors   An empty reference among the parameters raises the null-pointer exception in every operation
//          that walks them. Exceptions of a parameter pass through.
// Threads  One at a time. Nothing allocates after Init, but for what a parameter does.
class ParameterOwnerMixin
	: public Implements<ParameterOwnerMixin, ILiveAudioParameterOwner, IParameterOwnerMixin>
{
public:
	using Parameters = std::vector<InterfaceRef<IRenderableAudioComponentParam>>;

	// The bypass index of a node that has no boolean parameter.
	static constexpr unsigned long long kNoBypass = 0xFFFFFFFF;

	// An empty reference in inParams ends the detaching, or the Init of shared parameters, at its place.
	// Always succeeds; a context that is none of the engine's raises the null-pointer exception.
	int Init(Parameters const& inParams, ParameterOwnerSettings const& inSettings,
		InterfaceRef<IAudioRenderContext> const& inContext);

	TickTime GetNextInterestingTime(TickTime const& inTime) SONARO_NONBLOCKING override;
	void UpdateControls(TickTime const& inTime) SONARO_NONBLOCKING override;
	void CollectLiveParameters(LiveAudioParameterMap& outParameters) override;

protected:
	// What a node's Clone calls: shares the parameters of inOther, or with inCloneParams detaches them.
	// Nothing is sampled yet.
	void CopyFrom(ParameterOwnerMixin const& inOther, bool inCloneParams, FrameRate const& inFrameRate,
		unsigned inBufferFrames);

	void Preroll(TickTime const& inTime);
	// The parameters forget their state; what was sampled last stays.
	void Reset();

	// The value as last sampled. inIndex counts all parameters, the boolean one among them, which must not be asked
	// for; there is no check.
	float GetValue(unsigned long long inIndex) const SONARO_NONBLOCKING
	{
		return mValues[inIndex > mBypassIndex ? inIndex - 1 : inIndex];
	}
	// The same for a parameter that may be missing.
	float GetValueOrZero(unsigned long long inIndex) const SONARO_NONBLOCKING
	{
		return inIndex < mValues.size() ? GetValue(inIndex) : 0.0f;
	}
	bool IsBypassed() const { return mBypass; }
	unsigned long long GetParameterCount() const { return mParams.size(); }
	InterfaceRef<IRenderableAudioComponentParam> GetParameter(unsigned long long inIndex) const
	{
		return mParams[inIndex];
	}
	// There is a boolean parameter, it is true and it will always be.
	bool IsBypassConstant();

private:
	void DetachParameters(Parameters const& inParams, ParameterOwnerSettings const& inSettings,
		InterfaceRef<IAudioRenderContext> const& inContext, unsigned inBufferFrames);
	void ResizeValues(std::size_t inCount);
	VX::KeyframeCacheBase* GetCache(unsigned long long inIndex);

	Parameters mParams;
	unsigned long long mBypassIndex = kNoBypass;
	VX::KeyframeCache<VX::Keyframe<bool>> mBypassCache;
	bool mBypass = false;
	// One for each parameter; the float parameters stand in the first of them, in their order.
	std::vector<float> mValues;
	std::vector<VX::KeyframeCache<VX::Keyframe<float>>> mCaches;
	bool mActionFlag = false;
};

} // namespace SN
