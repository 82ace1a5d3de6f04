#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// The nodes of a graph as they describe themselves, for pictures of it.
//
// Nodes    Each object is one, however many others it feeds.
// Threads  The one that owns the graph.
class GraphDrawing
{
public:
	// What Graphviz can lay out while somebody waits: its time grows faster than the square of the nodes.
	static constexpr std::size_t kMaxPictureNodes = 2000;

	// inMaxDepth: so many levels of nested sequences are drawn, and what is nested deeper is one node each; all
	// of them without it.
	GraphDrawing(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, SN::FrameRate const& inFrameRate,
		std::optional<std::size_t> inMaxDepth = std::nullopt);

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
		std::string mName;
		// The file behind a source, or empty.
		std::string mFile;
		std::int64_t mLatencyFrames = 0;
		// What feeds it is left out.
		bool mIsClosed = false;
	};
	class Walk;

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
