#include "NestBuilder.h"

#include "Sonaro/AudioUtilities.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

namespace
{

constexpr std::size_t kMaxDepth = 64;

// Builds on the next level, as an instance that shares scratch memory with the others of its number there.
class LevelScope
{
public:
	LevelScope(SN::IAudioRenderContext& ioContext, unsigned inInstance)
		: mContext(ioContext),
		  mInstance(inInstance)
	{
		mContext.PushNestingLevel();
		for (unsigned count = 0; count < mInstance; ++count)
		{
			mContext.IncrementInstanceIndex();
		}
	}
	~LevelScope()
	{
		for (unsigned count = 0; count < mInstance; ++count)
		{
			mContext.DecrementInstanceIndex();
		}
		mContext.PopNestingLevel();
	}
	LevelScope(LevelScope const&) = delete;
	LevelScope& operator=(LevelScope const&) = delete;

private:
	SN::IAudioRenderContext& mContext;
	unsigned mInstance;
};

} // namespace

NestBuilder::NestBuilder(GraphTools& ioTools, GraphReport& ioReport, GraphView const& inView)
	: mTools(ioTools),
	  mReport(ioReport),
	  mView(inView),
	  mBuildNest([this](Nest const& inNest, Place const& inPlace) { return BuildNest(inNest, inPlace); })
{
}

Generator NestBuilder::BuildOutermost(Description const& inDescription, SN::Prefetcher const* inPrefetcher)
{
	mPath = {&inDescription};
	CountUses(inDescription);
	std::string const prefix;
	SequenceContext const context{prefix, mBuildNest, mReport, mView, inPrefetcher};
	return SequenceBuilder(mTools, inDescription, context).Build();
}

Generator NestBuilder::BuildNest(Nest const& inNest, Place const& inPlace)
{
	Description const& description = *inNest.mSequence;
	CheckPath(description, inPlace);
	if (mBuilt[&description] >= SN::GetMaxNestableSequenceInstances())
	{
		mReport.mOmittedNests.push_back(inPlace.GetPath() + " / " + *inPlace.mItemName);
		return mTools.GetFactory().CreateSilentRenderer(description.mLayout);
	}
	++mBuilt[&description];
	LevelScope const scope(*mTools.GetContext(), ChooseInstance(description));
	mPath.push_back(&description);
	std::string const prefix = inPlace.GetItemPrefix();
	SequenceContext const context{prefix, mBuildNest, mReport, mView, nullptr, inPlace.mInnerTime};
	Generator const nest = SequenceBuilder(mTools, description, context).Build();
	mPath.pop_back();
	return nest;
}

void NestBuilder::CountUses(Description const& inDescription)
{
	if (mUses[&inDescription]++ != 0)
	{
		return;
	}
	for (Track const& track : inDescription.mTracks)
	{
		for (Item const& item : track.mItems)
		{
			for (Description const* const sequence : ListSequences(item))
			{
				CountUses(*sequence);
			}
		}
	}
}

unsigned NestBuilder::ChooseInstance(Description const& inDescription)
{
	if (mUses.at(&inDescription) == 1)
	{
		return 0;
	}
	std::size_t const level = mPath.size();
	mInstances.resize(std::max(mInstances.size(), level + 1));
	return ++mInstances[level];
}

void NestBuilder::CheckPath(Description const& inDescription, Place const& inPlace) const
{
	if (std::ranges::find(mPath, &inDescription) != mPath.end())
	{
		Refuse(inPlace, "the sequence " + Quote(inDescription.mName) + " is nested in itself");
	}
	if (mPath.size() >= kMaxDepth)
	{
		Refuse(inPlace, "sequences are nested deeper than " + std::to_string(kMaxDepth) + " levels",
			"remove levels, or render the inner ones to separate files");
	}
}

} // namespace SonaroHost::Sequence
