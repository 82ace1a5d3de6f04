#pragma once

#include "zorvcore/classref/InterfaceRef.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

namespace SonaroHost::Sequence
{

// What a node of a graph is to the person whose sequence it is.
struct NodeLabel
{
	enum class Kind
	{
		kSequence,
		kTrack,
		kSubmix,
		kMaster,
		kClip,
		kNest,
		kMulticam,
		kEffect,
		kFader,
		kSend,
		// Where a send waits for other branches.
		kReturn,
	};

	Kind mKind = Kind::kTrack;
	// The person's name for it, of a send or a return that of the submix; may be empty.
	std::string mName;
	// Frames by which its output waits for others.
	std::int64_t mWaitFrames = 0;
};

// The labels of one graph, which outlives their use.
class NodeLabels
{
public:
	void Add(SN::InterfaceRef<SN::UnknownBase> const& inNode, NodeLabel inLabel)
	{
		mLabels.insert_or_assign(inNode.GetUnknown().get(), std::move(inLabel));
	}
	// Null for a node without one.
	NodeLabel const* Find(SN::InterfaceRef<SN::UnknownBase> const& inNode) const
	{
		auto const found = mLabels.find(inNode.GetUnknown().get());
		return found != mLabels.end() ? &found->second : nullptr;
	}

private:
	std::unordered_map<void const*, NodeLabel> mLabels;
};

} // namespace SonaroHost::Sequence
