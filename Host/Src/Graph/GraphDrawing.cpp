#include "SonaroHost/Graph/GraphDrawing.h"

#include "Sequence/Node/SequenceNode.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "zorvcore/debug/TypeName.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <typeinfo>
#include <utility>

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

// What a node is called, and the colour of its kind, on which black letters can be read.
struct KindStyle
{
	Sequence::NodeLabel::Kind mKind;
	// Before the name, or instead of it.
	char const* mWord;
	char const* mColour;
};

constexpr KindStyle kKindStyles[] = {
	{Sequence::NodeLabel::Kind::kSequence, "sequence", "#d9e2ec"},
	{Sequence::NodeLabel::Kind::kTrack, "track", "#bcd8f5"},
	{Sequence::NodeLabel::Kind::kSubmix, "submix", "#cfc4f0"},
	{Sequence::NodeLabel::Kind::kMaster, "master", "#f5c8a8"},
	{Sequence::NodeLabel::Kind::kClip, "clip", "#c6e8c8"},
	{Sequence::NodeLabel::Kind::kNest, "nested", "#a8dcd4"},
	{Sequence::NodeLabel::Kind::kMulticam, "multicam", "#9fd8ea"},
	{Sequence::NodeLabel::Kind::kEffect, "effect", "#f7d4e2"},
	{Sequence::NodeLabel::Kind::kFader, "fader", "#f4e6a6"},
	{Sequence::NodeLabel::Kind::kSend, "send to", "#e4d3f2"},
	{Sequence::NodeLabel::Kind::kReturn, "return of", "#e4d3f2"},
};

KindStyle const& GetStyle(Sequence::NodeLabel::Kind inKind)
{
	return *std::ranges::find(kKindStyles, inKind, &KindStyle::mKind);
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

// Names that are longer are shortened, and whole in a tooltip.
constexpr std::size_t kLongestName = 48;

std::string ShowName(std::string const& inName)
{
	return EscapeMarkup(ShortenMiddle(inName, kLongestName));
}

// Nothing for a name that is shown whole. Graphviz reads entities in it.
std::string MakeTooltip(std::string const& inName)
{
	return inName.size() <= kLongestName ? "" : ", tooltip=\"" + Escape(EscapeMarkup(inName)) + "\"";
}

// What a node of the engine does for something that has a name; null for what says as much by its class.
char const* FindWord(std::string_view inClass)
{
	constexpr std::pair<std::string_view, char const*> kWords[] = {{"AudioClipRenderer", "content"},
		{"BinauralPanner", "ears"}, {"AudioStreamRenderer", "samples"}, {"AudioTrackGroupRenderer", "sum"},
		{"AudioTrackInletRenderer", "input"}, {"ConversionPanner", "layout"},
		{"ConvertedContent", "converted content"}, {"FadeItem", "fade"}, {"ItemContent", "content"},
		{"AudioContentMulticamRenderer", "angles"}, {"MulticamContent", "cuts"}, {"PanStage", "pan"}};
	auto const* const found =
		std::ranges::find(kWords, inClass, [](auto const& inWord) { return inWord.first; });
	return found != std::end(kWords) ? found->second : nullptr;
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

// Silence between items, and panners that change nothing.
bool IsFraming(NodeRef const& inNode)
{
	std::string const name = GetName(inNode);
	return name == "SilentAudioTrackRenderableItem" || name == "AudioPannerNone";
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
	Walk(GraphDrawing& outDrawing, SN::FrameRate const& inFrameRate, GraphDrawingOptions const& inOptions)
		: mDrawing(outDrawing),
		  mFrameRate(inFrameRate),
		  mOptions(inOptions)
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
		NameFades();
	}

private:
	struct Found
	{
		NodeRef mNode;
		// Nested sequences on the way to it, itself among them.
		std::size_t mDepth = 0;
		// Whether what feeds it stands in a cluster of its own.
		bool mIsNest = false;
	};

	void AddEdges(std::vector<NodeRef> const& inNodes, std::size_t inTo, bool inAreProcessors)
	{
		for (NodeRef const& node : inNodes)
		{
			if (node && (mOptions.mShowsAll || !IsFraming(node)))
			{
				mDrawing.mEdges.push_back({Find(node, inTo), inTo, inAreProcessors});
			}
		}
	}

	// Fades are named by what they fade.
	void NameFades()
	{
		std::map<std::size_t, std::string> names;
		for (Edge const& edge : mDrawing.mEdges)
		{
			auto const& label = mDrawing.mNodes[edge.mFrom].mLabel;
			if (label && mDrawing.mNodes[edge.mTo].mClass == "FadeItem")
			{
				std::string& name = names[edge.mTo];
				name += (name.empty() ? "" : ", ") + label->mName;
			}
		}
		for (auto const& [node, name] : names)
		{
			mDrawing.mNodes[node].mOwner = name;
		}
	}

	// inFrom: the node that it was found at.
	std::size_t Find(NodeRef const& inNode, std::size_t inFrom)
	{
		auto const [place, isNew] = mIndices.try_emplace(inNode.GetUnknown().get(), mFound.size());
		std::size_t const index = place->second;
		if (isNew)
		{
			Add(inNode, inFrom);
		}
		else if (mDrawing.mNodes[index].mSequence != GetSequenceWithin(inFrom))
		{
			mDrawing.mNodes[index].mSequence = 0;
		}
		return index;
	}

	void Add(NodeRef const& inNode, std::size_t inFrom)
	{
		bool const isRoot = mFound.empty();
		bool const isNest = !isRoot && static_cast<bool>(SN::InterfaceRef<Sequence::SequenceNode>(inNode));
		std::size_t const depth = isRoot ? 0 : mFound[inFrom].mDepth + (isNest ? 1 : 0);
		bool const isClosed = isNest && mOptions.mMaxDepth && depth > *mOptions.mMaxDepth;
		Sequence::NodeLabel const* const label = mOptions.mLabels ? mOptions.mLabels->Find(inNode) : nullptr;
		mFound.push_back({inNode, depth, isNest && !isClosed});
		mDrawing.mNodes.push_back({GetName(inNode), GetFile(inNode), GetLatency(inNode, mFrameRate), isClosed,
			label ? std::optional(*label) : std::nullopt, isRoot ? 0 : GetSequenceWithin(inFrom),
			isRoot ? std::string() : GetOwner(inFrom)});
	}

	// The name of a node, or of the one that it works for.
	std::string GetOwner(std::size_t inNode) const
	{
		Node const& node = mDrawing.mNodes[inNode];
		return node.mLabel ? node.mLabel->mName : node.mOwner;
	}

	// The sequence of what feeds a node.
	std::size_t GetSequenceWithin(std::size_t inNode) const
	{
		return mFound[inNode].mIsNest ? inNode : mDrawing.mNodes[inNode].mSequence;
	}

	GraphDrawing& mDrawing;
	SN::FrameRate mFrameRate;
	GraphDrawingOptions const& mOptions;
	std::vector<Found> mFound;
	std::map<void const*, std::size_t> mIndices;
};

GraphDrawing::GraphDrawing(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph,
	SN::FrameRate const& inFrameRate, GraphDrawingOptions const& inOptions)
	: mFrameRate(inFrameRate)
{
	Walk(*this, inFrameRate, inOptions).Run(inGraph);
}

std::string GraphDrawing::DescribeNode(Node const& inNode) const
{
	std::string lines;
	std::string attributes;
	if (inNode.mLabel)
	{
		KindStyle const& style = GetStyle(inNode.mLabel->mKind);
		std::string const& name = inNode.mLabel->mName;
		bool const isNameEnough = name.empty() || name == style.mWord;
		lines = std::string(style.mWord) + (isNameEnough ? "" : " <b>" + ShowName(name) + "</b>") + "<br/>";
		attributes = ", fillcolor=\"" + std::string(style.mColour) + "\"" + MakeTooltip(name);
	}
	else if (char const* const word = FindWord(inNode.mClass); word && !inNode.mOwner.empty())
	{
		lines = std::string(word) + " of " + ShowName(inNode.mOwner) + "<br/>";
		attributes = MakeTooltip(inNode.mOwner);
	}
	if (!inNode.mFile.empty())
	{
		lines += "<b>" + ShowName(inNode.mFile) + "</b><br/>";
		attributes += ", fillcolor=\"#e6e0d4\"" + MakeTooltip(inNode.mFile);
	}
	lines += "<font point-size=\"8\">" + EscapeMarkup(inNode.mClass) + "</font>";
	lines += inNode.mIsClosed ? "<br/>deeper levels not drawn" : "";
	return "label=<" + lines + ">" + attributes;
}

std::string GraphDrawing::DescribeDelay(std::string const& inWhat, std::int64_t inFrames) const
{
	constexpr double kMilliseconds = 1000.0;
	double const rate = mFrameRate.GetSamplesPerSecond();
	return inWhat + " " + FormatCount(inFrames, "frame") + ", " +
		   FormatNumber(static_cast<double>(inFrames) * kMilliseconds / rate) + " ms";
}

std::string GraphDrawing::DescribeEdge(Edge const& inEdge) const
{
	Node const& from = mNodes[inEdge.mFrom];
	std::int64_t const wait = from.mLabel ? from.mLabel->mWaitFrames : 0;
	std::string text = from.mLatencyFrames == 0 ? "" : DescribeDelay("latency", from.mLatencyFrames);
	text += wait == 0 ? "" : (text.empty() ? "" : "\\n") + DescribeDelay("waits", wait);
	std::string attributes = inEdge.mIsProcessor ? "style=dashed, arrowhead=odot" : "";
	attributes += text.empty() ? "" : (attributes.empty() ? "label=\"" : ", label=\"") + text + "\"";
	return "\tn" + std::to_string(inEdge.mFrom) + " -> n" + std::to_string(inEdge.mTo) +
		   (attributes.empty() ? "\n" : " [" + attributes + "]\n");
}

std::string GraphDrawing::DescribeCluster(Members const& inMembers, std::size_t inSequence) const
{
	std::string text;
	for (std::size_t const i : inMembers.at(inSequence))
	{
		text += "\tn" + std::to_string(i) + " [";
		text += DescribeNode(mNodes[i]);
		text += "]\n";
		if (i != 0 && inMembers.contains(i))
		{
			auto const& label = mNodes[i].mLabel;
			text += "\tsubgraph cluster_" + std::to_string(i) + " {\n\tlabel=\"";
			text += Escape(ShortenMiddle(MakePrintable(label ? label->mName : std::string()), kLongestName));
			text += "\"\n";
			text += DescribeCluster(inMembers, i);
			text += "\t}\n";
		}
	}
	return text;
}

std::string GraphDrawing::ToDot(std::string const& inTitle) const
{
	Members members;
	for (std::size_t i = 0; i < mNodes.size(); ++i)
	{
		members[mNodes[i].mSequence].push_back(i);
	}
	// Graphviz tries as often as these limits say, times the nodes, to shorten edges: without them, nests of a few
	// levels take it minutes.
	std::string text = "digraph {\n\tlabel=\"" + Escape(MakePrintable(inTitle)) +
					   "\"\n\trankdir=LR\n\tnslimit=2\n\tnslimit1=2\n\tfontname=\"sans-serif\"\n"
					   "\tcolor=\"#5b6b7d\"\n\tstyle=rounded\n"
					   "\tnode [shape=box, style=filled, fillcolor=\"#f4f4f4\", fontname=\"sans-serif\", "
					   "fontsize=10]\n\tedge [fontname=\"sans-serif\", fontsize=8]\n" +
					   DescribeCluster(members, 0);
	for (Edge const& edge : mEdges)
	{
		text += DescribeEdge(edge);
	}
	return text + "}\n";
}

} // namespace SonaroHost
