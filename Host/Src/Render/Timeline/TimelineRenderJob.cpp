#include "SonaroHost/Render/TimelineRenderJob.h"

#include "Files/OutputFolder.h"
#include "Render/RenderPasses.h"
#include "StemName.h"
#include "TimelineRenderer.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Render/ClipRenderRequest.h"
#include "SonaroHost/Render/JobChecks.h"
#include "SonaroHost/Render/TimelineGraph.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

TimelineOptions MakeOptions(TimelineRenderRequest const& inRequest)
{
	TimelineOptions options;
	options.mSampleRate = inRequest.mSampleRate;
	options.mLayout = inRequest.mLayout;
	options.mFadeShape = inRequest.mFadeShape;
	return options;
}

std::string GetEnding(OutputContainer inContainer)
{
	switch (inContainer)
	{
	case OutputContainer::eWav:
		return ".wav";
	case OutputContainer::eAiff:
		return ".aiff";
	case OutputContainer::eFlac:
		return ".flac";
	case OutputContainer::eCaf:
		break;
	}
	return ".caf";
}

} // namespace

TimelineRenderJob::TimelineRenderJob(TimelineRenderRequest inRequest)
	: mRequest(std::move(inRequest)),
	  mInput(mRequest.mInput, mRequest.mMediaFolders)
{
	CheckNumbers();
	ChooseFormat();
	mSequence = mInput.MakeSequence(MakeOptions(mRequest));
	mNotes = mInput.GetNotes();
	mNotes.insert(mNotes.end(), mSequence.mNotes.begin(), mSequence.mNotes.end());
	CheckHasSound(mSequence);
	ChooseRange();
	PlanFiles();
	CheckFiles();
}

TimelineRenderJob::~TimelineRenderJob() = default;

void TimelineRenderJob::ChooseRange()
{
	mRange = {0, mSequence.mFrames};
	if (!mRequest.mRange.empty())
	{
		FoundRange found = FindRange(mRequest.mRange, mInput.GetTimeline(), mSequence);
		mRange = found.mRange;
		mRangeNotes = std::move(found.mNotes);
		mNotes.insert(mNotes.end(), mRangeNotes.begin(), mRangeNotes.end());
	}
}

void TimelineRenderJob::CheckNumbers() const
{
	if (mRequest.mBlockFrames < 1 || mRequest.mBlockFrames > kMaxBlockFrames)
	{
		Refuse("a block has 1 to " + std::to_string(kMaxBlockFrames) + " samples, not " +
			   std::to_string(mRequest.mBlockFrames));
	}
	CheckLevels(mRequest.mLevels, mRequest.mGain);
}

void TimelineRenderJob::ChooseFormat()
{
	mFormat.mContainer = mRequest.mContainer;
	mFormat.mSamples = mRequest.mSamples.value_or(GetDefaultSamples(mRequest.mContainer));
	if (mRequest.mDither == Dither::eTriangular && mFormat.mSamples == OutputSamples::eFloat32)
	{
		Refuse("dither is for 16 and 24 bits; floats are not rounded");
	}
	constexpr int kFloats = 0;
	mFormat.mDither = mRequest.mDither.value_or(ChooseDither(mFormat.mSamples, kFloats, false));
}

void TimelineRenderJob::PlanFiles()
{
	struct Stem
	{
		std::string mName;
		ProgrammeRange mRange;
		std::optional<std::size_t> mOnlyChild;
	};
	std::vector<Stem> stems;
	for (TrackRow const& row : mSequence.mTracks)
	{
		if (mRequest.mStems == Stems::eTracks && row.mDepth == 0 && row.mIsHeard)
		{
			stems.push_back({row.mTrack, mRange, row.mIndex});
		}
	}
	for (MarkerRow const& marker : mSequence.mMarkers)
	{
		ProgrammeRange const own = FindNamedRange(marker, mSequence);
		std::int64_t const first = std::max(own.mFirstFrame, mRange.mFirstFrame);
		std::int64_t const end = std::min(own.mFirstFrame + own.mFrames, mRange.mFirstFrame + mRange.mFrames);
		if (mRequest.mStems == Stems::eMarkers && first < end)
		{
			stems.push_back({marker.mName, {first, end - first}, std::nullopt});
		}
	}
	if (mRequest.mStems == Stems::eNone)
	{
		stems.push_back({"", mRange, std::nullopt});
	}
	if (stems.empty())
	{
		Refuse(mRequest.mStems == Stems::eTracks
				   ? "no track of the timeline is heard, so there are no stems"
				   : "no marker stands before the end of what is rendered, so there are no stems");
	}
	for (Stem const& stem : stems)
	{
		RenderedFile& planned = mFiles.emplace_back();
		planned.mOnlyChild = stem.mOnlyChild;
		planned.mName = stem.mName;
		planned.mRange = stem.mRange;
		planned.mFades = ChooseFades(mRequest.mFadeIn, mRequest.mFadeOut, stem.mRange.mFrames,
			GetSampleRate(), stem.mName.empty() ? "the output" : "\"" + stem.mName + "\"");
		planned.mPath = mRequest.mStems == Stems::eNone
							? mRequest.mOutput
							: mRequest.mOutput / MakeStemName(mFiles.size() - 1, stems.size(), stem.mName,
													 GetEnding(mFormat.mContainer));
		std::int64_t const label =
			ToSamples(mSequence.mGlobalStart.value_or(Ratio()), GetSampleRate()) + stem.mRange.mFirstFrame;
		if (mSequence.mGlobalStart && label >= 0)
		{
			planned.mTimeReference = label;
		}
	}
}

void TimelineRenderJob::CheckFiles() const
{
	OutputPlan plan;
	plan.mFiles = mRequest.mOtherOutputs;
	for (RenderedFile const& planned : mFiles)
	{
		plan.mFiles.push_back(planned.mPath);
	}
	plan.mFolder = mRequest.mStems != Stems::eNone ? mRequest.mOutput : std::filesystem::path();
	plan.mInputs = {mRequest.mInput};
	plan.mMedia = mInput.ListMedia();
	plan.mReplaces = mRequest.mReplace;
	plan.Check();
}

std::optional<TimelineRenderSummary> TimelineRenderJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	std::optional<OutputFolder> folder;
	if (mRequest.mStems != Stems::eNone)
	{
		folder.emplace(mRequest.mOutput);
	}
	bool const measuresTracks = mRequest.mMeasuring == Measuring::eTracks;
	if (!mRequest.mKeepsRows && !measuresTracks)
	{
		DropRows(mSequence);
	}
	bool const isMixAlone = std::all_of(mFiles.begin(), mFiles.end(),
		[measuresTracks](RenderedFile const& inFile)
		{ return TimelineRenderer::IsMix(inFile, measuresTracks); });
	if (isMixAlone)
	{
		mInput.DropTimeline();
	}
	TimelineOptions options = MakeOptions(mRequest);
	options.mSampleRate = mSequence.mSampleRate;
	options.mLayout = GetOutputLayout();
	TimelineRenderer renderer(mInput, mSequence, std::move(options), mRequest.mBlockFrames, inStop);
	auto const render = [&renderer](RenderPass const& inPass, RenderPasses::Sink const& inSink)
	{ return renderer.Render(inPass, inSink); };
	auto files = RenderPasses(MakePlan(), render, inProgress).Run();
	if (!files)
	{
		return std::nullopt;
	}
	TimelineRenderSummary summary;
	static_cast<RenderedFiles&>(summary) = std::move(*files);
	renderer.Describe(summary);
	summary.mElapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
	return summary;
}

RenderPlan TimelineRenderJob::MakePlan() const
{
	RenderPlan plan;
	plan.mSampleRate = GetSampleRate();
	plan.mLayout = GetOutputLayout();
	plan.mFormat = mFormat;
	plan.mGain = mRequest.mGain;
	plan.mLevels = mRequest.mLevels;
	plan.mMeasuring = mRequest.mMeasuring;
	plan.mMix.mRange = mRange;
	if (mRequest.mStems != Stems::eMarkers)
	{
		// All stems of tracks have those of the mix.
		plan.mMix.mFades = mFiles.front().mFades;
	}
	plan.mFiles = mFiles;
	plan.mWritesMix = mRequest.mStems == Stems::eNone;
	return plan;
}

} // namespace SonaroHost::Otio
