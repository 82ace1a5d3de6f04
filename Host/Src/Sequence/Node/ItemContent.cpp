#include "ItemContent.h"

#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

ItemContent::ItemContent(Settings const& inSettings)
	: Implements({inSettings.mContent}),
	  mSettings(inSettings),
	  mConverted(inSettings.mContent),
	  mNest(mConverted ? mConverted->GetContent() : inSettings.mContent)
{
}

void ItemContent::Interrupt()
{
	if (mConverted)
	{
		mConverted->Interrupt();
	}
	if (mNest)
	{
		mNest->Interrupt();
	}
}

SN::InterfaceRef<SN::IAudioGenerator> ItemContent::Clone()
{
	Settings settings = mSettings;
	settings.mPlayhead = std::make_shared<Playhead>();
	settings.mJumps = std::make_shared<std::uint64_t>(0);
	settings.mScratch = MakeAlike(*mSettings.mScratch);
	if (mSettings.mOuter->mClone)
	{
		settings.mOuter = mSettings.mOuter->mClone;
	}
	mSettings.mPlayhead->mClone = settings.mPlayhead;
	settings.mContent = mSettings.mContent->Clone();
	unsigned const frames = mSettings.mScratch->GetCapacity();
	for (Processor& processor : settings.mProcessors)
	{
		processor = processor->Clone(mSettings.mFrameRate, frames, frames);
	}
	settings.mPanner = mSettings.mPanner->Clone(mSettings.mFrameRate, frames);
	mSettings.mPlayhead->mClone.reset();
	return zorvcore::classref::MakeObject<ItemContent>(settings);
}

bool ItemContent::HasHistory()
{
	if (!mHasHistory)
	{
		mHasHistory = mSettings.mLatency > 0 || ReadingNode::HasHistory() ||
					  std::ranges::any_of(mSettings.mProcessors,
						  [](Processor const& inProcessor) { return inProcessor->HasHistory(); });
	}
	return *mHasHistory;
}

void ItemContent::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	if (mIsPrerolled)
	{
		return;
	}
	mIsPrerolled = true;
	mNext.reset();
	mSettings.mContent->Preroll(
		MapRun(inStartTime.ToFrame64(mSettings.mFrameRate), 0), MapDirection(inReverse));
	for (Processor const& processor : mSettings.mProcessors)
	{
		processor->Preroll(inStartTime, inReverse);
	}
	mSettings.mPanner->Preroll(inStartTime, inReverse);
}

void ItemContent::Reset()
{
	if (!mIsPrerolled)
	{
		return;
	}
	mIsPrerolled = false;
	mNext.reset();
	ReadingNode::Reset();
	for (Processor const& processor : mSettings.mProcessors)
	{
		processor->Reset();
	}
	mSettings.mPanner->Reset();
}

void ItemContent::InitializeAudioFilters()
{
	if (!mAreFiltersRunning)
	{
		mAreFiltersRunning = true;
		ReadingNode::InitializeAudioFilters();
		for (Processor const& processor : mSettings.mProcessors)
		{
			processor->InitializeAudioFilter();
		}
	}
}

void ItemContent::ShutdownAudioFilters()
{
	if (mAreFiltersRunning)
	{
		mAreFiltersRunning = false;
		ReadingNode::ShutdownAudioFilters();
		for (Processor const& processor : mSettings.mProcessors)
		{
			processor->ShutdownAudioFilter();
		}
	}
}

void ItemContent::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	bool const isReverse = mSettings.mOuter->mIsPrefetchedInReverse;
	std::int64_t first = inRange.mStart.ToFrame64(mSettings.mFrameRate);
	// Ends between two frames count whole.
	std::int64_t count = (inRange.mEnd - inRange.mStart).ToFrame64(mSettings.mFrameRate) + 2;
	first -= isReverse ? mSettings.mLatency : 0;
	count += mSettings.mLatency;
	SN::TickTime const start = MapRun(first, count);
	if (mNest)
	{
		mNest->SetPrefetchDirection(
			MapDirection(isReverse) != (mConverted && mConverted->IsBackwards(first)));
	}
	mSettings.mContent->AccumulatePrefetchRequests(
		{start, start + SN::TickTime(count, mSettings.mFrameRate)}, inType, inAccumulator);
}

void ItemContent::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	std::int64_t const frame = inTime.ToFrame64(mSettings.mFrameRate);
	std::int64_t const frames = ioBuffer.GetUseSize();
	std::int64_t const begin = inReverse ? frame + frames : frame;
	bool const isInTurn = mNext == begin && mIsReverse == inReverse && mJumps == *mSettings.mJumps;
	mJumps = *mSettings.mJumps;
	mSettings.mPlayhead->mIsFresh = !isInTurn;
	mSettings.mPlayhead->mIsUnheard = mSettings.mOuter->mIsSettling || mSettings.mOuter->mIsUnheard;
	if (!isInTurn)
	{
		Interrupt();
		Settle(begin, inReverse);
	}
	mNext = inReverse ? frame : frame + frames;
	mIsReverse = inReverse;
	if (frames != 0 && frames <= mSettings.mScratch->GetCapacity() && CanReadInto(ioBuffer))
	{
		Render(frame, frames, inReverse, &ioBuffer);
		return;
	}
	dsp::AudioSubBuffer window;
	window.Init(
		std::min<unsigned long long>(mSettings.mPanner->GetNumOutputChannels(), ioBuffer.GetNumChannels()));
	for (std::int64_t done = 0; done < frames;)
	{
		std::int64_t const count = std::min<std::int64_t>(frames - done, mSettings.mScratch->GetCapacity());
		window.Assign(ioBuffer, static_cast<unsigned>(done));
		window.SetUseSize(static_cast<unsigned>(count));
		done += count;
		Render(inReverse ? begin - done : begin + done - count, count, inReverse, &window);
	}
}

void ItemContent::Settle(std::int64_t inBegin, bool inReverse)
{
	mSettings.mPlayhead->mIsSettling = true;
	for (std::int64_t left = mSettings.mLatency; left > 0;)
	{
		std::int64_t const count = std::min<std::int64_t>(left, mSettings.mScratch->GetCapacity());
		Render(inReverse ? inBegin + left - count : inBegin - left, count, inReverse, nullptr);
		left -= count;
	}
	mSettings.mPlayhead->mIsSettling = false;
}

void ItemContent::Render(
	std::int64_t inFrame, std::int64_t inCount, bool inReverse, dsp::AudioBuffer* outBuffer)
{
	Playhead& head = *mSettings.mPlayhead;
	head.Begin(inFrame, inCount, inReverse);
	if (mNest)
	{
		mNest->SetUnheard(head.mIsSettling || head.mIsUnheard);
	}
	std::int64_t const ahead = inReverse ? -mSettings.mLatency : mSettings.mLatency;
	if (outBuffer && CanReadInto(*outBuffer))
	{
		// The engine's item has silenced it already.
		mSettings.mContent->GetAudioData(
			MapRun(inFrame + ahead, inCount), *outBuffer, MapDirection(inReverse));
		return;
	}
	mSettings.mScratch->SetUseSize(static_cast<unsigned>(inCount));
	mSettings.mScratch->Zero();
	dsp::AudioSubBuffer sound;
	sound.Init(mSettings.mScratch->GetNumChannels());
	sound.Assign(*mSettings.mScratch, 0);
	mSettings.mContent->GetAudioData(MapRun(inFrame + ahead, inCount), sound, MapDirection(inReverse));
	SN::TickTime const time(inFrame, mSettings.mFrameRate);
	for (Processor const& processor : mSettings.mProcessors)
	{
		processor->ProcessAudioData(sound, time);
	}
	if (!outBuffer)
	{
		return;
	}
	if (mSettings.mPanner->DoesNotAlterAudio())
	{
		outBuffer->CopyFrom(sound);
	}
	else
	{
		mSettings.mPanner->ProcessAudioData(sound, *outBuffer, time);
	}
}

// A clip of the item's channels, without processors, into a window: what runs in a buffer of its own may depend on how
// the memory is aligned.
bool ItemContent::CanReadInto(dsp::AudioBuffer const& inBuffer) const
{
	return mSettings.mProcessors.empty() && !mNest && !inBuffer.CanProcessInGroupsOfFour() &&
		   inBuffer.GetNumChannels() == mSettings.mScratch->GetNumChannels() &&
		   mSettings.mPanner->DoesNotAlterAudio();
}

SN::TickTime ItemContent::MapRun(std::int64_t inFrame, std::int64_t inCount) const
{
	std::int64_t const first = mSettings.mIsBackwards ? mSettings.mFirstFrame + 1 - inFrame - inCount
													  : mSettings.mFirstFrame + inFrame;
	return {first, mSettings.mFrameRate};
}

void ItemContent::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters)
{
	auto const collect = [&](auto const& inNode)
	{
		if (SN::InterfaceRef<SN::ILiveAudioParameterOwner> const owner = inNode)
		{
			owner->CollectLiveParameters(outParameters);
		}
	};
	collect(mSettings.mPanner);
	std::ranges::for_each(mSettings.mProcessors, collect);
	ReadingNode::CollectLiveParameters(outParameters);
}

std::vector<SN::InterfaceRef<SN::UnknownBase>> ItemContent::GetProcessorNodes()
{
	std::vector<SN::InterfaceRef<SN::UnknownBase>> nodes(
		mSettings.mProcessors.begin(), mSettings.mProcessors.end());
	nodes.emplace_back(mSettings.mPanner);
	return nodes;
}

} // namespace SonaroHost::Sequence
