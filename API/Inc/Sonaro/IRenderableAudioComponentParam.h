#pragma once

#include "Sonaro/Types.h"
#include "Vexilon/Keyframe.h"
#include "Vexilon/ParamValue.h"

#include <boost/shared_ptr.hpp>

namespace SN
{

// One automated control of a node, implemented by the host: what its value is at a time, and when that
// changes next. A node samples it at the start of each control block and smooths in between.
//
// Threads  In a graph for playback at the top level the host's own object is in use: the thread that
//          renders and the host's reach it at once, and sampling must neither lock nor allocate. Every
//          other graph works on a detached clone.
class SONARO_API IRenderableAudioComponentParam : public virtual Unknown
{
public:
	static constexpr Identifier<IRenderableAudioComponentParam> kIdentifier{
		0x6f2c51e70b8a4d93ull, 0x8b1f64d2c09e7a35ull};

	// An independent parameter of the same curve, which later edits do not reach. inForRender: true for
	// the one clone that all nodes of a render share, false for one that belongs to the clone of a node.
	virtual InterfaceRef<IRenderableAudioComponentParam> CloneAndDetach(bool inForRender) = 0;

	// Before the first sampling, for a graph of this rate and of control blocks of inBufferFrames samples;
	// again for every node that shares the parameter. inFlag: from the context, the host's own.
	virtual void Init(unsigned inBufferFrames, FrameRate const& inFrameRate, bool inFlag) = 0;

	// Fills outKeyframe, a VX::Keyframe of the parameter's type, with the value at inTime. ioCache, a
	// VX::KeyframeCache of the same type, belongs to the caller and may be used to be quick.
	virtual void UpdateControl(TickTime const& inTime, VX::KeyframeCacheBase* ioCache,
		VX::KeyframeBase* outKeyframe) SONARO_NONBLOCKING = 0;

	// The next time from inTime on at which the parameter has to be sampled again; kTimeMax for never.
	virtual TickTime GetNextInterestingTime(
		TickTime const& inTime, VX::KeyframeCacheBase* ioCache) SONARO_NONBLOCKING = 0;

	// Whether the host should look at the parameter while it is being heard.
	virtual bool HasActionPending() = 0;

	// The control that holds the value where there are no keyframes.
	virtual void ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool inFlag) = 0;

	// A run from inTime is about to begin; may allocate what the run needs.
	virtual void Preroll(TickTime const& inTime) = 0;
	// Forgets what a run has left behind.
	virtual void Reset() = 0;
	// No keyframes.
	virtual bool IsEmpty() = 0;
	// The control as it stands.
	virtual boost::shared_ptr<VX::ParamValueBase> GetStartValue() = 0;

	~IRenderableAudioComponentParam() override = default;
};

} // namespace SN
