#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// The way from one node of a sequence, a track, a submix or the master, to another: its output or a send.
struct DelayEdge
{
	std::size_t mDestination = 0;
	// The latency, in frames, of the effects before the place at which it leaves the node.
	std::int64_t mLatency = 0;
	// Frames that it has to wait so that all that meets at the destination belongs to one time. The plan fills it in.
	std::int64_t mWait = 0;
};

struct DelayNode
{
	// The name for messages.
	std::string mName;
	// The latency of all its effects, in frames.
	std::int64_t mLatency = 0;
	std::vector<DelayEdge> mEdges;
};

// The order in which the nodes of a sequence are rendered, and how far ahead of the sequence's time each one is
// asked, so that every branch arrives at every mix at its nominal sample.
//
// Each node is asked ahead by the most that any of its edges needs: what the destination is asked ahead by,
// and the edge's own latency. What an edge needs less than that, it waits.
class DelayPlan
{
public:
	// The last node is the one that all the others end in, if anywhere. Throws a HostError that shows the way of a
	// circle by its names.
	explicit DelayPlan(std::vector<DelayNode> inNodes);

	std::vector<DelayNode> const& GetNodes() const { return mNodes; }
	// Every node comes after those that feed it, otherwise as they were given; the last node last.
	std::vector<std::size_t> const& GetOrder() const { return mOrder; }
	// How far ahead a node is asked, in frames.
	std::int64_t GetAhead(std::size_t inNode) const { return mAhead[inNode]; }

private:
	void FindOrder();
	[[noreturn]] void RefuseCircle(std::vector<std::size_t> const& inFeeders) const;
	void FindDelays();

	std::vector<DelayNode> mNodes;
	std::vector<std::size_t> mOrder;
	std::vector<std::int64_t> mAhead;
};

} // namespace SonaroHost::Sequence
