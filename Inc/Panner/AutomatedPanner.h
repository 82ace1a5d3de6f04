#pragma once

#include "AudioRender/Core/ParameterOwnerMixin.h"
#include "Panner/PanProcessorBase.h"

#include <limits>

namespace SN
{

// What a panner with controls is made with.
struct AutomatedPannerSettings
{
	InterfaceRef<IAudioRenderContext> mContext;
	FrameRate mFrameRate;
	bool mActionFlag = false;
	ParameterOwnerMixin::Parameters mParams;
};

// The base of panners with controls. It knows where the next block should begin, so that a panner can notice a jump
// of the playhead, over which no gain may ramp.
//
// Clones share the controls and nothing else.
class AutomatedPanner : public Implements<AutomatedPanner, PanProcessorBase, ParameterOwnerMixin>
{
public:
	// eNullPointer without a context, eFailure for another count of controls than inParameterCount,
	// eInvalidArgument for the invalid rate.
	int Init(AutomatedPannerSettings const& inSettings, std::size_t inParameterCount);

	void Preroll(TickTime const& inTime, bool) override { ParameterOwnerMixin::Preroll(inTime); }
	void Reset() override { ParameterOwnerMixin::Reset(); }

protected:
	using Implements::Implements;

	static constexpr std::size_t kAnyParameterCount = std::numeric_limits<std::size_t>::max();

	void CopyFrom(AutomatedPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

	// Whether the block at inTime does not follow the last one. In reverse no block counts as a jump.
	bool IsJump(TickTime const& inTime) const SONARO_NONBLOCKING;
	// The block at inTime was so long.
	void NoteBlock(TickTime const& inTime, unsigned inFrames) SONARO_NONBLOCKING;

	// Whether a control has no keyframes and was last sampled at inValue.
	bool StandsAt(unsigned long long inIndex, float inValue) const SONARO_NONBLOCKING;

private:
	// Where the next block begins when it follows the last one.
	TickTime mNextTime;
};

} // namespace SN
