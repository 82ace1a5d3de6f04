#pragma once

#include "AudioRender/Core/NodeVisitor.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <limits>
#include <vector>

namespace SN
{

class AudioRenderContextClient;
class CompensatingDelayOwnerMixin;

// What a chain works on: one request, in playing order.
struct ChainRequest
{
	// Aimed at the whole request; moved on while the chain runs.
	dsp::AudioSubBuffer& mWindow;
	// Where the pan processor writes, aimed likewise; null when it is to be left out.
	dsp::AudioSubBuffer* mPanOutput = nullptr;
	// The lowest time of the request.
	TickTime mTime;
	FrameRate mFrameRate;
	bool mReverse = false;
};

// The processors of a track or an item and the pan processor after them, run in control blocks.
//
// Controls  Where nothing changes within a request, it runs in one piece, with the parameters sampled
//           once. Otherwise, and always in reverse, it is cut on the grid of the control interval, which
//           goes on over requests, and the parameters are sampled where a block begins.
// Order     Processors in order, then the pan processor. In reverse, times fall from the top of the
//           request, unless the policy says otherwise.
// Threads   One at a time. Run allocates nothing.
class ProcessorChain
{
public:
	using Processors = std::vector<InterfaceRef<IAudioProcessor>>;

	// What differs between the nodes that have a chain.
	struct Policy
	{
		// Has a line for each send among the processors; null where sends hear what is there.
		CompensatingDelayOwnerMixin* mDelayOwner = nullptr;
		// Leaves out processors with a latency: it would go uncompensated.
		bool mSkipsLatentProcessors = false;
		// Times rise from that of the request in both directions.
		bool mTimesAlwaysRise = false;
		// Where the request is cut, sends hear what is there in spite of their lines.
		bool mBlocksSkipSendDelays = false;
		// A pan processor that is left out has no say in where parameters change, and keeps its own.
		bool mIdlePanRests = false;
		// Every request is cut on the grid, whether anything changes or not, also with nothing to run but what samples
		// parameters.
		bool mAlwaysCuts = false;
		// No piece of a request that is cut is longer.
		unsigned mMaxPiece = std::numeric_limits<unsigned>::max();
	};

	void Init(Processors const& inProcessors, InterfaceRef<IAudioPanProcessor> const& inPanProcessor);
	// Clones of the other's processors; the place in the control block is taken over.
	void CloneFrom(ProcessorChain const& inOther, AudioRenderContextClient const& inClient);

	// May be empty.
	InterfaceRef<IAudioPanProcessor> const& GetPanProcessor() const { return mPanProcessor; }
	unsigned CountSends() const;
	// Whether there is no processor, whatever the pan processor.
	bool IsEmpty() const { return mLinks.empty(); }

	// Visits them in their order, the pan processor last.
	void VisitNodes(NodeVisitor& ioVisitor) const;
	void Preroll(TickTime const& inTime, bool inReverse) const;
	// The next request begins a control block.
	void RestartControlBlock() SONARO_NONBLOCKING { mBlockPosition = 0; }
	// All parameters, at once.
	void UpdateControls(TickTime const& inTime) const SONARO_NONBLOCKING { UpdateControls(inTime, true); }

	void Run(ChainRequest const& inRequest, AudioRenderContextClient const& inClient,
		Policy const& inPolicy) SONARO_NONBLOCKING;

private:
	// A processor with what it was asked for once.
	struct Link
	{
		InterfaceRef<IAudioProcessor> mProcessor;
		// Empty for one without parameters.
		InterfaceRef<IParameterOwnerMixin> mOwner;
		bool mIsSend = false;
	};

	TickTime FindNextChange(TickTime const& inTime, bool inWithPan) const SONARO_NONBLOCKING;
	void UpdateControls(TickTime const& inTime, bool inWithPan) const SONARO_NONBLOCKING;
	void RunBlocks(ChainRequest const& inRequest, TickTime const& inTime, unsigned inInterval,
		Policy const& inPolicy) SONARO_NONBLOCKING;
	void Apply(ChainRequest const& inRequest, TickTime const& inTime,
		Policy const& inPolicy) const SONARO_NONBLOCKING;

	std::vector<Link> mLinks;
	InterfaceRef<IAudioPanProcessor> mPanProcessor;
	InterfaceRef<IParameterOwnerMixin> mPanOwner;
	// Samples of the current control block that are processed.
	unsigned mBlockPosition = 0;
};

} // namespace SN
