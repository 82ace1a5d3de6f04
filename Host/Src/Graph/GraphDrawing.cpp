#include "SonaroHost/Graph/GraphDrawing.h"

#include "Sequence/Node/SequenceNode.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "zorvcore/debug/TypeName.h"

#include <map>
#include <typeinfo>

namespace SonaroHost
{

namespace
{

using NodeRef = SN::InterfaceRef<SN::UnknownBase>;

// Names of classes have no other characters.
std::string Narrow(std::u16string const& inText)
{
	std::string text;
	for (char16_t const character : inText)
	{
		text += character < 0x80 ? static_cast<char>(character) : '?';
	}
	return text;
}

// The text as it stands between quotes in Graphviz's language.
std::string Escape(std::string const& inText)
{
	std::string text;
	for (char const character : inText)
	{
		bool const isControl = static_cast<unsigned char>(character) < 0x20;
		text += character == '"' || character == '\\' ? std::string("\\") + character
				: isControl                           ? std::string(" ")
													  : std::string(1, character);
	}
	return text;
}

std::string GetName(NodeRef const& inNode)
{
	if (auto const info = SN::InterfaceRef<SN::IAudioRenderGraphNodeInfo>(inNode))
	{
		return Narrow(info->GetNodeName());
	}
	SN::Unknown const& object = *inNode.GetUnknown();
	std::string const name = zorvcore::debug::GetTypeName(typeid(object));
	return name.substr(name.rfind(':') + 1);
}

std::string GetFile(NodeRef const& inNode)
{
	auto const source = SN::InterfaceRef<AudioFileSource>(inNode);
	return source ? source->GetInfo().mPath.filename().string() : std::string();
}

std::int64_t GetLatency(NodeRef const& inNode, SN::FrameRate const& inFrameRate)
{
	SN::TickTime delay;
	if (auto const generator = SN::InterfaceRef<SN::IAudioGenerator>(inNode))
	{
		delay = generator->GetDelay();
	}
	else if (auto const processor = SN::InterfaceRef<SN::IAudioProcessor>(inNode))
	{
		delay = processor->GetDelay();
	}
	return delay.ToFrame64(inFrameRate);
}

} // namespace

// Goes from the output on, and from each node to what feeds it.
class GraphDrawing::Walk
{
public:
	Walk(GraphDrawing& outDrawing, SN::FrameRate const& inFrameRate, std::optional<std::size_t> inMaxDepth)
		: mDrawing(outDrawing),
		  mFrameRate(inFrameRate),
		  mMaxDepth(inMaxDepth)
	{
	}

	void Run(NodeRef const& inRoot)
	{
		Find(inRoot, 0);
		for (std::size_t i = 0; i < mFound.size(); ++i)
		{
			auto const info = SN::InterfaceRef<SN::IAudioRenderGraphNodeInfo>(mFound[i].mNode);
			if (info && !mDrawing.mNodes[i].mIsClosed)
			{
				AddEdges(info->GetInputNodes(), i, false);
				AddEdges(info->GetProcessorNodes(), i, true);
			}
		}
	}

private:
	struct Found
	{
		NodeRef mNode;
		// Nested sequences on the way to it, itself among them.
		std::size_t mDepth = 0;
	};

	void AddEdges(std::vector<NodeRef> const& inNodes, std::size_t inTo, bool inAreProcessors)
	{
		for (NodeRef const& node : inNodes)
		{
			if (node)
			{
				mDrawing.mEdges.push_back({Find(node, mFound[inTo].mDepth), inTo, inAreProcessors});
			}
		}
	}

	std::size_t Find(NodeRef const& inNode, std::size_t inDepth)
	{
		auto const [place, isNew] = mIndices.try_emplace(inNode.GetUnknown().get(), mFound.size());
		if (isNew)
		{
			bool const isNest =
				!mFound.empty() && static_cast<bool>(SN::InterfaceRef<Sequence::SequenceNode>(inNode));
			std::size_t const depth = inDepth + (isNest ? 1 : 0);
			mFound.push_back({inNode, depth});
			mDrawing.mNodes.push_back({GetName(inNode), GetFile(inNode), GetLatency(inNode, mFrameRate),
				isNest && mMaxDepth && depth > *mMaxDepth});
		}
		return place->second;
	}

	GraphDrawing& mDrawing;
	SN::FrameRate mFrameRate;
	std::optional<std::size_t> mMaxDepth;
	std::vector<Found> mFound;
	std::map<void const*, std::size_t> mIndices;
};

GraphDrawing::GraphDrawing(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph,
	SN::FrameRate const& inFrameRate, std::optional<std::size_t> inMaxDepth)
{
	Walk(*this, inFrameRate, inMaxDepth).Run(inGraph);
}

std::string GraphDrawing::ToDot(std::string const& inTitle) const
{
	// Graphviz tries as often as these limits say, times the nodes, to shorten edges: without them, nests of a few
	// levels take it minutes.
	std::string text = "digraph {\n\tlabel=\"" + Escape(inTitle) +
					   "\"\n\trankdir=LR\n\tnslimit=2\n\tnslimit1=2\n\tnode [shape=box, "
					   "fontname=\"sans-serif\", fontsize=10]\n";
	for (std::size_t i = 0; i < mNodes.size(); ++i)
	{
		Node const& node = mNodes[i];
		text += "\tn" + std::to_string(i) + " [label=\"" + Escape(node.mName);
		text += node.mFile.empty() ? "" : "\\n" + Escape(node.mFile);
		text += node.mLatencyFrames == 0 ? "" : "\\nlatency " + FormatCount(node.mLatencyFrames, "sample");
		text += node.mIsClosed ? "\\ndeeper levels not drawn" : "";
		text += "\"]\n";
	}
	for (Edge const& edge : mEdges)
	{
		text += "\tn" + std::to_string(edge.mFrom) + " -> n" + std::to_string(edge.mTo);
		text += edge.mIsProcessor ? " [style=dashed, arrowhead=odot]\n" : "\n";
	}
	return text + "}\n";
}

} // namespace SonaroHost
