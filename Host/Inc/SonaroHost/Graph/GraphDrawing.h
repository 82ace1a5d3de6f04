#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Sequence/NodeLabels.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// What a drawing of a graph shows.
struct GraphDrawingOptions
{
	// So many levels of nested sequences are drawn, and what is nested deeper is one node each; all of them without it.
	std::optional<std::size_t> mMaxDepth;
	// Also the silence between the items of tracks, and panners that change nothing.
	bool mShowsAll = false;
	// What nodes are called; null for their classes alone.
	Sequence::NodeLabels const* mLabels = nullptr;
};

// The nodes of a graph as their labels and they themselves describe them, for pictures of it.
//
// Nodes    Each object is one, however many others it feeds. Those of a nested sequence stand together in a cluster, except
//          for what several sequences share.
// Edges    Latencies and waits stand on those that leave the node which has them, in frames and milliseconds.
// Threads  The one that owns the graph.
class GraphDrawing
{
public:
	// What Graphviz can lay out while somebody waits: its time grows faster than the square of the nodes.
	static constexpr std::size_t kMaxPictureNodes = 2000;

	GraphDrawing(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, SN::FrameRate const& inFrameRate,
		GraphDrawingOptions const& inOptions = {});

	std::size_t GetNumNodes() const { return mNodes.size(); }

	// The drawing in the language of Graphviz: what a node is fed by with solid lines, what works in it with dashed ones.
	std::string ToDot(std::string const& inTitle) const;

private:
	struct Edge
	{
		std::size_t mFrom = 0;
		std::size_t mTo = 0;
		bool mIsProcessor = false;
	};
	struct Node
	{
		std::string mClass;
		// The file behind a source, or empty.
		std::string mFile;
		std::int64_t mLatencyFrames = 0;
		// What feeds it is left out.
		bool mIsClosed = false;
		// What it is to people; nothing for what only the engine knows.
		std::optional<Sequence::NodeLabel> mLabel;
		// The nested sequence that it belongs to; 0 for the outermost one.
		std::size_t mSequence = 0;
		// The name of what a node of the engine works for; may be empty.
		std::string mOwner;
	};
	class Walk;

	std::string DescribeNode(Node const& inNode) const;
	std::string DescribeEdge(Edge const& inEdge) const;
	std::string DescribeDelay(std::string const& inWhat, std::int64_t inFrames) const;
	// The nodes of a sequence and, as clusters, those of the ones that stand in it.
	using Members = std::map<std::size_t, std::vector<std::size_t>>;
	std::string DescribeCluster(Members const& inMembers, std::size_t inSequence) const;

	SN::FrameRate mFrameRate;
	std::vector<Node> mNodes;
	std::vector<Edge> mEdges;
};

enum class GraphFormat
{
	kDot,
	kSvg,
	kPng,
};

// The bytes of a file with a drawing, laid out by Graphviz unless it stays text. Throws a HostError of kind kOutput when
// that cannot.
// Threads: one at a time.
std::string DrawGraph(std::string const& inDot, GraphFormat inFormat);

} // namespace SonaroHost
