#include "SequenceBuilder.h"

#include "Sequence/Listening/BinauralPanner.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <utility>

namespace SonaroHost::Sequence
{

namespace
{

std::string const sMasterName = "master";

} // namespace

SequenceBuilder::SequenceBuilder(
	GraphTools& ioTools, Description const& inDescription, SequenceContext const& inContext)
	: mTools(ioTools),
	  mDescription(inDescription),
	  mContext(inContext)
{
	for (Track const& track : inDescription.mTracks)
	{
		if (!inContext.mView.mLeftOut.contains(track.mOrigin))
		{
			mHeard.push_back(&track);
		}
	}
	for (Submix const& submix : inDescription.mSubmixes)
	{
		mTargets.push_back({submix.mLayout, GraphTools::MakeIdentity()});
	}
}

Generator SequenceBuilder::Build()
{
	ListNodes();
	std::size_t const reportIndex = mContext.mReport.mTracks.size();
	for (Node const& node : mNodes)
	{
		mContext.mReport.mTracks.push_back({GetPlace(node).GetPath(), 0, 0, 0});
	}
	for (Node& node : mNodes)
	{
		CheckLayout(node);
		BuildChain(node);
	}
	// The plan is made before any item, since a circle is what the whole sequence suffers from.
	DelayPlan const plan = MakePlan();
	for (std::size_t index = 0; index < mHeard.size(); ++index)
	{
		BuildItems(mNodes[index], *mHeard[index], reportIndex + index);
	}
	ReportTracks(plan, reportIndex);
	for (std::size_t const index : plan.GetOrder())
	{
		MakeRenderer(index, plan);
	}
	Generator const sequence = zorvcore::classref::MakeObject<SequenceNode>(
		SequenceNode::Settings{MakeGroup(), mTracks, mPlayhead, mDescription.mLayout, mTools.GetFrameRate(),
			mTools.GetScratch(GraphTools::ScratchUse::kSettling, mDescription.mLayout.size()),
			mContext.mPrefetcher, GetHistoryFrames()});
	mTools.Label(sequence, {NodeLabel::Kind::kSequence, mDescription.mName});
	return sequence;
}

std::int64_t SequenceBuilder::GetHistoryFrames() const
{
	auto const& binaural = mDescription.mBinaural;
	return binaural ? BinauralPanner::GetSettlingFrames(binaural->mListener, mTools.GetFrameRate()) : 0;
}

// Nothing is asked ahead by the group itself; the sequence asks its tracks.
Generator SequenceBuilder::MakeGroup() const
{
	return mTools.GetFactory().CreateAudioTrackGroupRenderer({
		.mContext = mTools.GetContext(),
		.mFrameRate = mTools.GetFrameRate(),
		.mGenerators = mGenerators,
		.mDelayDependencies = mDelays,
		.mChannels = mDescription.mLayout,
		.mOwner = GraphTools::MakeIdentity(),
	});
}

void SequenceBuilder::ListNodes()
{
	auto const add = [this](Kind inKind, auto const& inTrack, auto const& inAll)
	{
		Node& node = mNodes.emplace_back();
		node.mKind = inKind;
		node.mName = &inTrack.mName;
		node.mOrigin = &inTrack.mOrigin;
		node.mNumber = static_cast<std::size_t>(&inTrack - inAll.data()) + 1;
		node.mLayout = &inTrack.mLayout;
		node.mChain = &inTrack.mChain;
		node.mMute = inTrack.mMute;
		if (inTrack.mOutput.mKind != Output::Kind::kNone)
		{
			node.mOutput = FindDestination(inTrack.mOutput, GetPlace(node));
		}
	};
	for (Track const* const track : mHeard)
	{
		add(Kind::kTrack, *track, mDescription.mTracks);
	}
	for (Submix const& submix : mDescription.mSubmixes)
	{
		add(Kind::kSubmix, submix, mDescription.mSubmixes);
	}
	Node& master = mNodes.emplace_back();
	master.mName = &sMasterName;
	master.mLayout = &mDescription.GetMasterLayout();
	master.mChain = &mDescription.mMaster;
}

std::size_t SequenceBuilder::FindDestination(Output const& inOutput, Place const& inPlace) const
{
	std::size_t const tracks = mHeard.size();
	std::size_t const submixes = mDescription.mSubmixes.size();
	if (inOutput.mKind == Output::Kind::kMaster)
	{
		return tracks + submixes;
	}
	if (inOutput.mSubmix >= submixes)
	{
		Refuse(inPlace, "it goes to submix index " + std::to_string(inOutput.mSubmix) + ", but there are " +
							std::to_string(submixes) + ", counted from 0");
	}
	return tracks + inOutput.mSubmix;
}

Place SequenceBuilder::GetPlace(Node const& inNode) const
{
	char const* const kind = inNode.mKind == Kind::kTrack    ? "track"
							 : inNode.mKind == Kind::kSubmix ? "submix"
															 : "sequence";
	Place place{kind, &mContext.mPrefix, inNode.mName, nullptr, inNode.mOrigin, mContext.mTime};
	place.mNumber = inNode.mNumber;
	return place;
}

void SequenceBuilder::CheckLayout(Node const& inNode) const
{
	std::size_t const channels = inNode.mLayout->size();
	if (channels == 0 || channels > kMaxChannels)
	{
		Refuse(GetPlace(inNode), "a layout has 1 to " + std::to_string(kMaxChannels) + " channels, not " +
									 std::to_string(channels));
	}
}

void SequenceBuilder::BuildChain(Node& ioNode)
{
	bool const isMaster = ioNode.mKind == Kind::kMaster;
	SN::AudioChannelLayout const& output =
		ioNode.mOutput ? *mNodes[*ioNode.mOutput].mLayout : *ioNode.mLayout;
	ChainContext context{GetPlace(ioNode), *ioNode.mLayout, output, mDescription.mMixdown,
		isMaster ? nullptr : &mTargets, {mPlayhead, ioNode.mAhead, mTools.GetFrameRate()}};
	context.mMute = mTools.GetHeard(ioNode.mMute);
	context.mTap = FindTap(ioNode);
	context.mListener = isMaster && mDescription.mBinaural ? &mDescription.mBinaural->mListener : nullptr;
	if (isMaster && ioNode.mChain->mPan)
	{
		Refuse(
			context.mPlace, "its layout is that of the sequence, so it cannot be panned", "remove the pan");
	}
	ioNode.mBuilt = ChainBuilder(mTools, context).Build(*ioNode.mChain);
}

SN::InterfaceRef<SN::IAudioMeterSetter> SequenceBuilder::FindTap(Node const& inNode) const
{
	return inNode.mKind == Kind::kTrack ? mContext.mView.FindTap(*inNode.mOrigin)
										: SN::InterfaceRef<SN::IAudioMeterSetter>();
}

void SequenceBuilder::BuildItems(Node& ioNode, Track const& inTrack, std::size_t inReportIndex)
{
	ItemListContext const context{GetPlace(ioNode), mDescription.mMixdown, mContext.mBuildNest,
		mContext.mView, mPlayhead, ioNode.mJumps, inReportIndex, mContext.mReport.mItems};
	ioNode.mItems = ItemListBuilder(mTools, inTrack, context).Build();
}

// The edges are each node's sends in their order, and its output after them.
DelayPlan SequenceBuilder::MakePlan() const
{
	std::vector<DelayNode> nodes;
	for (Node const& node : mNodes)
	{
		DelayNode& planned = nodes.emplace_back();
		planned.mName = *node.mName;
		planned.mLatency = node.mBuilt.mLatency;
		for (BuiltSend const& send : node.mBuilt.mSends)
		{
			planned.mEdges.push_back({mHeard.size() + send.mSubmix, send.mLatency, 0});
		}
		if (node.mOutput)
		{
			planned.mEdges.push_back({*node.mOutput, node.mBuilt.mLatency, 0});
		}
	}
	return DelayPlan(std::move(nodes));
}

void SequenceBuilder::ReportTracks(DelayPlan const& inPlan, std::size_t inReportIndex)
{
	for (std::size_t index = 0; index < mNodes.size(); ++index)
	{
		DelayNode const& node = inPlan.GetNodes()[index];
		TrackReport& report = mContext.mReport.mTracks[inReportIndex + index];
		report.mAheadFrames = inPlan.GetAhead(index);
		report.mLatencyFrames = node.mLatency;
		report.mWaitFrames = mNodes[index].mOutput ? node.mEdges.back().mWait : 0;
		*mNodes[index].mAhead = report.mAheadFrames;
	}
}

void SequenceBuilder::MakeRenderer(std::size_t inIndex, DelayPlan const& inPlan)
{
	Node& node = mNodes[inIndex];
	if (node.mKind == Kind::kTrack)
	{
		node.mGenerator = mTools.GetFactory().CreateAudioClipTrackRenderer({
			.mContext = mTools.GetContext(),
			.mFrameRate = mTools.GetFrameRate(),
			.mItems = node.mItems.mItems,
			.mOwner = GraphTools::MakeIdentity(),
			.mMute = node.mMute,
			.mProcessors = node.mBuilt.mProcessors,
			.mPanProcessor = node.mBuilt.mPanner,
			.mChannels = *node.mLayout,
		});
		node.mItems = {};
	}
	else
	{
		node.mGenerator = MakeMixTrack(node, FindInputs(inIndex));
	}
	std::int64_t const wait = node.mOutput ? inPlan.GetNodes()[inIndex].mEdges.back().mWait : 0;
	mTools.Label(node.mGenerator, {node.mKind == Kind::kTrack       ? NodeLabel::Kind::kTrack
									  : node.mKind == Kind::kSubmix ? NodeLabel::Kind::kSubmix
																	: NodeLabel::Kind::kMaster,
									  *node.mName, wait});
	AddToGroup(node.mGenerator, {inPlan.GetAhead(inIndex), node.mJumps, node.mBuilt.mLatency}, wait);
	MakeReturns(inIndex, inPlan);
}

Generator SequenceBuilder::MakeMixTrack(Node const& inNode, std::vector<Identity> const& inInputs) const
{
	EngineFactory const& factory = mTools.GetFactory();
	return factory.CreateAudioMixTrackRenderer({
		.mContext = mTools.GetContext(),
		.mFrameRate = mTools.GetFrameRate(),
		.mSource = factory.CreateAudioTrackInletRenderer(
			mTools.GetContext(), mTools.GetFrameRate(), inInputs, *inNode.mLayout),
		.mOwner = GraphTools::MakeIdentity(),
		.mMute = inNode.mMute,
		.mProcessors = inNode.mBuilt.mProcessors,
		.mPanProcessor = inNode.mBuilt.mPanner,
		.mChannels = *inNode.mLayout,
	});
}

std::vector<Identity> SequenceBuilder::FindInputs(std::size_t inIndex) const
{
	std::vector<Identity> inputs;
	for (Node const& node : mNodes)
	{
		if (node.mOutput == inIndex)
		{
			inputs.push_back(node.mGenerator);
		}
	}
	for (Node const& node : mNodes)
	{
		for (std::size_t send = 0; send < node.mReturns.size(); ++send)
		{
			if (mHeard.size() + node.mBuilt.mSends[send].mSubmix == inIndex)
			{
				inputs.push_back(node.mReturns[send]);
			}
		}
	}
	return inputs;
}

void SequenceBuilder::MakeReturns(std::size_t inIndex, DelayPlan const& inPlan)
{
	Node& node = mNodes[inIndex];
	for (std::size_t index = 0; index < node.mBuilt.mSends.size(); ++index)
	{
		BuiltSend const& send = node.mBuilt.mSends[index];
		DelayEdge const& edge = inPlan.GetNodes()[inIndex].mEdges[index];
		std::string const& name = mDescription.mSubmixes[send.mSubmix].mName;
		mTools.Label(send.mProcessor, {NodeLabel::Kind::kSend, name});
		if (edge.mWait == 0)
		{
			node.mReturns.push_back(send.mProcessor);
			continue;
		}
		SN::AudioChannelLayout const& layout = mTargets[send.mSubmix].mLayout;
		Node wait;
		wait.mLayout = &layout;
		wait.mBuilt.mPanner = mTools.GetFixedPanner(layout, layout, std::nullopt);
		Generator const generator = MakeMixTrack(wait, {send.mProcessor});
		mTools.Label(generator, {NodeLabel::Kind::kReturn, name, edge.mWait});
		AddToGroup(generator, {inPlan.GetAhead(edge.mDestination), wait.mJumps}, edge.mWait);
		node.mReturns.push_back(generator);
	}
}

void SequenceBuilder::AddToGroup(
	Generator const& inRenderer, SequenceNode::Settings::Track const& inTrack, std::int64_t inWait)
{
	mGenerators.push_back(inRenderer);
	mTracks.push_back(inTrack);
	// One entry, that of the output: sends of sequences wait in return tracks of their own.
	mDelays.emplace_back(1).back().mDelay = static_cast<std::uint32_t>(inWait);
}

} // namespace SonaroHost::Sequence
