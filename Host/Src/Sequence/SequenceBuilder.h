#pragma once

#include "ChainBuilder.h"
#include "DelayPlan.h"
#include "ItemBuilder.h"
#include "ItemListBuilder.h"
#include "Sequence/Node/GraphTools.h"
#include "Sequence/Node/SequenceNode.h"
#include "Sequence/Stage/Playhead.h"
#include "Sonaro/DelayDependency.h"
#include "Sonaro/Prefetcher.h"
#include "SonaroHost/Sequence/Description.h"
#include "SonaroHost/Sequence/GraphReport.h"
#include "SonaroHost/Sequence/GraphView.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

struct SequenceContext
{
	// What leads to it, as "Dialogue / Scene 4 / "; empty for the outermost one.
	std::string const& mPrefix;
	NestMaker const& mBuildNest;
	GraphReport& mReport;
	GraphView const& mView;
	// The prefetcher of the outermost sequence in a playback; else null.
	SN::Prefetcher const* mPrefetcher = nullptr;
	OutermostTime mTime = {};
};

// The engine's group of one sequence: a renderer for each track, submix and master, every feeder before what
// it feeds.
//
// Sends   One that has to wait for other branches ends in a return: a mix track without stages that reads
//         this send alone and waits in its own output, which can be done by the sample in any block.
class SequenceBuilder
{
public:
	// All outlive this object.
	SequenceBuilder(GraphTools& ioTools, Description const& inDescription, SequenceContext const& inContext);

	// Called once.
	Generator Build();

private:
	enum class Kind
	{
		kTrack,
		kSubmix,
		kMaster,
	};

	// A track, a submix or the master, tracks first, the master last.
	struct Node
	{
		Kind mKind = Kind::kMaster;
		std::string const* mName = nullptr;
		std::string const* mOrigin = nullptr;
		// Among the tracks or the submixes, from 1 on.
		std::size_t mNumber = 0;
		SN::AudioChannelLayout const* mLayout = nullptr;
		Chain const* mChain = nullptr;
		MuteSwitch mMute;
		// The index of the node it goes to; none where it goes to its sends alone.
		std::optional<std::size_t> mOutput;
		// How far ahead the node is asked, once there is a plan.
		std::shared_ptr<std::int64_t> mAhead = std::make_shared<std::int64_t>(0);
		std::shared_ptr<std::uint64_t> mJumps = std::make_shared<std::uint64_t>(0);
		BuiltChain mBuilt;
		// The items of a track.
		BuiltItemList mItems;
		// The engine's renderer.
		Generator mGenerator;
		// What the destination of each send reads.
		std::vector<Identity> mReturns;
	};

	void ListNodes();
	SN::InterfaceRef<SN::IAudioMeterSetter> FindTap(Node const& inNode) const;
	std::size_t FindDestination(Output const& inOutput, Place const& inPlace) const;
	Place GetPlace(Node const& inNode) const;
	void CheckLayout(Node const& inNode) const;
	void BuildChain(Node& ioNode);
	void BuildItems(Node& ioNode, Track const& inTrack, std::size_t inReportIndex);
	DelayPlan MakePlan() const;
	void ReportTracks(DelayPlan const& inPlan, std::size_t inReportIndex);

	void MakeRenderer(std::size_t inIndex, DelayPlan const& inPlan);
	Generator MakeMixTrack(Node const& inNode, std::vector<Identity> const& inInputs) const;
	std::vector<Identity> FindInputs(std::size_t inIndex) const;
	void MakeReturns(std::size_t inIndex, DelayPlan const& inPlan);
	// Enters a renderer into the group, asked so many frames ahead, its output waiting.
	void AddToGroup(
		Generator const& inRenderer, SequenceNode::Settings::Track const& inTrack, std::int64_t inWait);
	Generator MakeGroup() const;
	// How many frames of the master must run before its output is right, once all that feeds it is.
	std::int64_t GetHistoryFrames() const;

	GraphTools& mTools;
	Description const& mDescription;
	SequenceContext const& mContext;
	// The tracks that are not left out.
	std::vector<Track const*> mHeard;
	std::vector<SendTarget> mTargets;
	std::vector<Node> mNodes;
	std::shared_ptr<Playhead> mPlayhead = std::make_shared<Playhead>();
	// The generators in the group's order.
	std::vector<Generator> mGenerators;
	std::deque<std::vector<SN::DelayDependency>> mDelays;
	std::vector<SequenceNode::Settings::Track> mTracks;
};

} // namespace SonaroHost::Sequence
