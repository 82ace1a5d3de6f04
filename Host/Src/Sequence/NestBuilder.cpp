#include "NestBuilder.h"

#include "Sonaro/AudioUtilities.h"
#include "SonaroHost/RenderContextScope.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

namespace
{

constexpr std::size_t kMaxDepth = 64;

// Builds on the next level, as an instance that shares scratch memory with no other one there.
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

NestBuilder::NestBuilder(GraphTools& ioTools, GraphReport& ioReport)
	: mTools(ioTools),
	  mReport(ioReport),
	  mBuildNest([this](Nest const& inNest, Place const& inPlace) { return BuildNest(inNest, inPlace); })
{
}

BuiltSequence NestBuilder::BuildOutermost(Description const& inDescription)
{
	mPath = {&inDescription};
	std::string const prefix;
	SequenceSite const site{prefix, GraphTools::MakeIdentity(), mBuildNest, mReport};
	return SequenceBuilder(mTools, inDescription, site).Build();
}

BuiltNest NestBuilder::BuildNest(Nest const& inNest, Place const& inPlace)
{
	Description const& description = *inNest.mSequence;
	CheckPath(description, inPlace);
	std::string const prefix = inPlace.GetItemPrefix();
	Known& known = mKnown[{&description, mPath.size()}];
	bool const isCloned = known.mNest.mGenerator && known.mNest.mIsClonable &&
						  known.mInstances < SN::GetMaxNestableSequenceInstances();
	return isCloned ? CloneKnown(known, prefix) : BuildAnew(description, prefix, known);
}

void NestBuilder::CheckPath(Description const& inDescription, Place const& inPlace) const
{
	if (std::find(mPath.begin(), mPath.end(), &inDescription) != mPath.end())
	{
		Refuse(inPlace, "the sequence " + Quote(inDescription.mName) + " is nested in itself");
	}
	if (mPath.size() >= kMaxDepth)
	{
		Refuse(inPlace, "sequences are nested deeper than " + std::to_string(kMaxDepth) + " levels",
			"take levels out, or render the inner ones to files of their own");
	}
}

BuiltNest NestBuilder::BuildAnew(
	Description const& inDescription, std::string const& inPrefix, Known& outKnown)
{
	std::size_t const level = mPath.size();
	mInstances.resize(std::max(mInstances.size(), level + 1));
	LevelScope const scope(*mTools.GetContext(), mInstances[level]++);
	ReportRange range{mReport.mTracks.size(), 0, mReport.mItems.size(), 0};
	mPath.push_back(&inDescription);
	SequenceSite const site{inPrefix, GraphTools::MakeIdentity(), mBuildNest, mReport};
	BuiltSequence const built = SequenceBuilder(mTools, inDescription, site).Build();
	mPath.pop_back();
	range.mEndTrack = mReport.mTracks.size();
	range.mEndItem = mReport.mItems.size();
	BuiltNest const nest{built.mGenerator, built.mAhead.back(), built.mSettlingFrames, built.mIsClonable};
	outKnown = {site.mIdentity, nest, 1, inPrefix, range};
	return nest;
}

BuiltNest NestBuilder::CloneKnown(Known& ioKnown, std::string const& inPrefix)
{
	LevelScope const scope(*mTools.GetContext(), 0);
	BuiltNest nest = ioKnown.mNest;
	CheckEngineResult(mTools.GetFactory().CreateAudioTrackGroupRendererViaCloning(
						  mTools.GetContext(), mTools.GetFrameRate(), ioKnown.mIdentity, &nest.mGenerator),
		"a nested sequence");
	++ioKnown.mInstances;
	RepeatReport(ioKnown, inPrefix);
	return nest;
}

void NestBuilder::RepeatReport(Known const& inKnown, std::string const& inPrefix)
{
	ReportRange const& range = inKnown.mReport;
	std::size_t const shift = mReport.mTracks.size() - range.mFirstTrack;
	for (std::size_t index = range.mFirstTrack; index < range.mEndTrack; ++index)
	{
		TrackReport report = mReport.mTracks[index];
		report.mPlace.replace(0, inKnown.mPrefix.size(), inPrefix);
		mReport.mTracks.push_back(std::move(report));
	}
	for (std::size_t index = range.mFirstItem; index < range.mEndItem; ++index)
	{
		ItemReport report = mReport.mItems[index];
		report.mTrack += shift;
		mReport.mItems.push_back(std::move(report));
	}
}

} // namespace SonaroHost::Sequence
