#include "SonaroHost/Serve/ServedTimeline.h"

#include "FlacStream.h"
#include "GraphPool.h"
#include "PlanarRead.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Otio/RationalTime.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "StateTag.h"
#include "WaveFile.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

namespace SonaroHost::Serve
{

namespace
{

// Choices of tracks that are remembered.
constexpr std::size_t kMostFiles = 64;

// The file of a bundle that holds the timeline, and the path itself otherwise.
std::filesystem::path FindContentFile(std::filesystem::path const& inPath)
{
	std::error_code error;
	return std::filesystem::is_directory(inPath, error) ? inPath / "content.otio" : inPath;
}

} // namespace

struct ServedTimeline::Content
{
	explicit Content(ServeRequest const& inRequest)
		: mInput(inRequest.mInput, inRequest.mMediaFolders, inRequest.mText),
		  mSequence(mInput.MakeSequence(inRequest.mOptions))
	{
		Otio::CheckCanRender(mSequence, mInput.GetMedia());
	}

	EncoderFormat MakeFormat(OutputFormat const& inFormat, ProgrammeRange const& inRange) const
	{
		EncoderFormat format{
			inFormat, mSequence.mSampleRate, mSequence.mLayout, inRange.mFrames, {}, inRange.mFirstFrame};
		std::int64_t const label =
			Otio::ToSamples(mSequence.mGlobalStart.value_or(Ratio()), mSequence.mSampleRate) +
			inRange.mFirstFrame;
		if (mSequence.mGlobalStart && label >= 0)
		{
			format.mTimeReference = label;
		}
		return format;
	}

	Otio::TimelineInput mInput;
	Otio::TimelineSequence mSequence;
};

ServedTimeline::ServedTimeline(ServeRequest inRequest)
	: mRequest(std::move(inRequest))
{
	std::filesystem::path const file = FindContentFile(mRequest.mInput);
	mStates[file] = ReadFileState(file);
	mContent = std::make_shared<Content>(mRequest);
	mNotes = mContent->mInput.GetNotes();
	auto const& sequence = mContent->mSequence;
	mNotes.insert(mNotes.end(), sequence.mNotes.begin(), sequence.mNotes.end());
	for (Otio::TrackRow const& row : sequence.mTracks)
	{
		if (row.mDepth == 0)
		{
			mTracks.push_back(&row);
		}
	}
	ReadStates();
	Programme programme = Otio::MakeProgramme(sequence, mContent->mInput.GetMedia());
	// Readers may outlive this object: the pool keeps the media.
	programme.mMedia = std::shared_ptr<GraphMedia const>(mContent, programme.mMedia.get());
	programme.mOpenForGraph = [content = mContent] { return content->mInput.GetMedia().OpenForGraph(); };
	auto const warmUp =
		static_cast<std::int64_t>(std::llround(mRequest.mWarmUpSeconds * programme.mSampleRate));
	// One more, since waveforms are computed at a low priority and may keep theirs for long.
	mPool = std::make_shared<GraphPool>(
		std::move(programme), GraphPool::Limits{std::max(mRequest.mMostGraphs, 1u) + 1, warmUp});
}

ServedTimeline::~ServedTimeline() = default;

Otio::TimelineSequence const& ServedTimeline::GetSequence() const
{
	return mContent->mSequence;
}

Otio::Timeline const& ServedTimeline::GetTimeline() const
{
	return mContent->mInput.GetTimeline();
}

void ServedTimeline::ReadStates()
{
	for (std::filesystem::path const& path : mContent->mInput.ListMedia())
	{
		mStates.emplace(path, ReadFileState(path));
	}
	StateTag tag;
	tag.Add(mRequest.mVersion);
	for (auto const& [path, state] : mStates)
	{
		tag.Add(path.native());
		tag.Add(state);
	}
	auto const& sequence = mContent->mSequence;
	tag.Add(std::to_string(sequence.mSampleRate) + " " + std::to_string(sequence.mLayout.size()) + " " +
			std::to_string(static_cast<int>(mRequest.mOptions.mFadeShape)) + " " +
			std::to_string(static_cast<int>(mRequest.mOptions.mResampling)) + " " +
			std::to_string(static_cast<int>(mRequest.mOptions.mStretchEngine)) +
			(mRequest.mOptions.mKeepsPitch ? " kept" : ""));
	if (auto const& listener = mRequest.mOptions.mListener)
	{
		HeadAngles const head = listener->GetAngles();
		tag.Add("ears " + listener->mFile.native() + " " + std::to_string(head.mYaw) + " " +
				std::to_string(head.mPitch) + " " + std::to_string(head.mRoll));
		tag.Add(ReadFileState(listener->mFile));
	}
	mTag = tag.GetText();
}

bool ServedTimeline::IsCurrent() const
{
	return std::ranges::all_of(
		mStates, [](auto const& inEntry) { return ReadFileState(inEntry.first) == inEntry.second; });
}

std::set<std::string> ServedTimeline::ListLeftOut(TrackChoice const& inChoice) const
{
	for (auto const* const numbers : {&inChoice.mMuted, &inChoice.mSoloed})
	{
		for (unsigned const number : *numbers)
		{
			if (number < 1 || number > mTracks.size())
			{
				Refuse("there is no track " + std::to_string(number) + "; the timeline has " +
					   std::to_string(mTracks.size()));
			}
		}
	}
	std::set<std::string> leftOut;
	for (unsigned number = 1; number <= mTracks.size(); ++number)
	{
		bool const isHeard = !inChoice.mMuted.contains(number) &&
							 (inChoice.mSoloed.empty() || inChoice.mSoloed.contains(number));
		if (!isHeard)
		{
			leftOut.insert(mTracks[number - 1]->mPlace);
		}
	}
	return leftOut;
}

std::shared_ptr<MixFile const> ServedTimeline::OpenWave(
	TrackChoice const& inChoice, MixFile::Clock::time_point inDeadline)
{
	std::set<std::string> leftOut = ListLeftOut(inChoice);
	{
		std::lock_guard const lock(mMutex);
		if (auto const found = mFiles.find(inChoice); found != mFiles.end())
		{
			return found->second;
		}
	}
	std::string const why = mPool->FindWhyInOneRun(leftOut, inDeadline);
	StateTag tag;
	tag.Add(mTag);
	tag.Add(std::to_string(static_cast<int>(mRequest.mFormat.mSamples)) + " " +
			std::to_string(static_cast<int>(mRequest.mFormat.mDither)));
	for (std::string const& origin : leftOut)
	{
		tag.Add(origin);
	}
	EncoderFormat const format = mContent->MakeFormat(mRequest.mFormat, {0, mContent->mSequence.mFrames});
	auto file = std::make_shared<WaveFile const>(mPool, std::move(leftOut), format, tag.GetText(), why);
	std::lock_guard const lock(mMutex);
	if (mFiles.size() >= kMostFiles)
	{
		mFiles.clear();
	}
	return mFiles.emplace(inChoice, std::move(file)).first->second;
}

std::string ServedTimeline::GetProblem() const
{
	return mPool->GetProblem();
}

void ServedTimeline::Hear(TrackChoice const& inChoice, ProgrammeRange const& inRange,
	MixFile::Clock::time_point inDeadline, std::function<void(dsp::AudioBuffer const& inBlock)> const& inSink)
{
	mPool->Render(ListLeftOut(inChoice), inRange, inDeadline, inSink);
}

void ServedTimeline::Read(TrackChoice const& inChoice, ProgrammeRange const& inRange,
	MixFile::Clock::time_point inDeadline, std::span<float* const> outChannels,
	std::function<void()> const& inAfterBlock)
{
	auto const& sequence = mContent->mSequence;
	ReadPlanes(*mPool, ListLeftOut(inChoice),
		{sequence.mLayout, sequence.mFrames, mRequest.mOptions.mListener.has_value(), inRange, inDeadline,
			outChannels, inAfterBlock});
}

std::unique_ptr<MixStream> ServedTimeline::OpenFlac(
	TrackChoice const& inChoice, ProgrammeRange const& inRange)
{
	OutputFormat format = mRequest.mFormat;
	format.mContainer = OutputContainer::kFlac;
	if (format.mSamples == OutputSamples::kFloat32)
	{
		format.mSamples = GetDefaultSamples(OutputContainer::kFlac);
		format.mDither = ChooseDither(format.mSamples, 0, false);
	}
	std::int64_t const first = std::clamp<std::int64_t>(inRange.mFirstFrame, 0, mContent->mSequence.mFrames);
	std::int64_t const frames =
		std::clamp<std::int64_t>(inRange.mFrames, 0, mContent->mSequence.mFrames - first);
	if (frames == 0)
	{
		Refuse("the range has no sample; the timeline has " + std::to_string(mContent->mSequence.mFrames));
	}
	mPool->CheckRange(ListLeftOut(inChoice), {first, frames});
	return std::make_unique<FlacStream>(
		mPool, ListLeftOut(inChoice), mContent->MakeFormat(format, {first, frames}), first);
}

} // namespace SonaroHost::Serve
