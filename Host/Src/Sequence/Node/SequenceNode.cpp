#include "SequenceNode.h"

#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

SequenceNode::SequenceNode(Settings const& inSettings)
	: Implements(std::vector{inSettings.mGroup}, inSettings.mLayout, inSettings.mFrameRate),
	  mSettings(inSettings)
{
	SN::InterfaceRef<SN::IAudioRenderGraphNodeInfo> const info(mSettings.mGroup);
	for (SN::InterfaceRef<SN::UnknownBase> const& node : info->GetInputNodes())
	{
		Generator const generator(node);
		mMembers.push_back({generator, generator, mSettings.mTracks[mMembers.size()], 0, 0});
		Settings::Track const& track = mMembers.back().mTrack;
		mSettlingFrames = std::max({mSettlingFrames, track.mAhead, track.mLatency});
	}
	mSettlingFrames += mSettings.mHistoryFrames;
}

SN::InterfaceRef<SN::IAudioGenerator> SequenceNode::Clone()
{
	Settings settings = mSettings;
	settings.mPlayhead = std::make_shared<Playhead>();
	settings.mDiscarded = MakeAlike(*mSettings.mDiscarded);
	mSettings.mPlayhead->mClone = settings.mPlayhead;
	for (Settings::Track& track : settings.mTracks)
	{
		track.mJumps = std::make_shared<std::uint64_t>(0);
	}
	settings.mGroup = mSettings.mGroup->Clone();
	mSettings.mPlayhead->mClone.reset();
	return zorvcore::classref::MakeObject<SequenceNode>(settings);
}

void SequenceNode::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	if (mIsPrerolled)
	{
		Reset();
	}
	mIsPrerolled = true;
	mNext.reset();
	// The members are prerolled and not the group, which would warm up, too.
	for (Member const& member : mMembers)
	{
		member.mGenerator->Preroll(inStartTime, inReverse);
	}
}

void SequenceNode::Reset()
{
	mIsPrerolled = false;
	mNext.reset();
	ReadingNode::Reset();
}

LoopRange SequenceNode::GetLoop() const
{
	SN::Prefetcher const* const prefetcher = mSettings.mPrefetcher;
	if (!prefetcher || prefetcher->mLoopEnabled == 0)
	{
		return {};
	}
	return {
		prefetcher->mStart.ToFrame64(mSettings.mFrameRate), prefetcher->mEnd.ToFrame64(mSettings.mFrameRate)};
}

void SequenceNode::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	if (mSettings.mPrefetcher)
	{
		SetPrefetchDirection(mSettings.mPrefetcher->mReverse != 0);
	}
	bool const isReverse = mSettings.mPlayhead->mIsPrefetchedInReverse;
	LoopRange const loop = GetLoop();
	SN::FrameRate const& rate = mSettings.mFrameRate;
	for (Member const& member : mMembers)
	{
		SN::TickTime const ahead(member.mTrack.mAhead, rate);
		SN::PrefetchRange range = isReverse ? SN::PrefetchRange(inRange.mStart - ahead, inRange.mEnd)
											: SN::PrefetchRange(inRange.mStart, inRange.mEnd + ahead);
		if (!loop.IsEmpty())
		{
			// What lies beyond the loop comes from its other side.
			SN::TickTime const first(loop.mFirst, rate);
			SN::TickTime const end(loop.mEnd, rate);
			SN::TickTime const beyond =
				std::min(isReverse ? first - range.mStart : range.mEnd - end, end - first);
			if (beyond > SN::kTimeZero)
			{
				member.mGenerator->AccumulatePrefetchRequests(isReverse
																  ? SN::PrefetchRange(end - beyond, end)
																  : SN::PrefetchRange(first, first + beyond),
					inType, inAccumulator);
				range = isReverse ? SN::PrefetchRange(std::min(first, range.mEnd), range.mEnd)
								  : SN::PrefetchRange(range.mStart, std::max(end, range.mStart));
			}
		}
		if (range.IsValid())
		{
			member.mGenerator->AccumulatePrefetchRequests(range, inType, inAccumulator);
		}
	}
}

void SequenceNode::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	std::int64_t const frame = inTime.ToFrame64(mSettings.mFrameRate);
	std::int64_t const end = frame + ioBuffer.GetUseSize();
	std::int64_t const begin = inReverse ? end : frame;
	Playhead& head = *mSettings.mPlayhead;
	LoopRange const loop = GetLoop();
	head.mIsFresh = !IsInTurn(begin, inReverse, loop);
	head.mLoop = loop;
	if (head.mIsFresh)
	{
		mHasJumped = true;
		Settle(begin, inReverse);
	}
	mNext = inReverse ? frame : end;
	mIsReverse = inReverse;
	Render(frame, ioBuffer, inReverse);
}

bool SequenceNode::IsInTurn(std::int64_t inBegin, bool inReverse, LoopRange const& inLoop) const
{
	if (!mNext || mIsReverse != inReverse)
	{
		return false;
	}
	// Another loop: tracks that are ahead have to be elsewhere.
	LoopRange const& before = mSettings.mPlayhead->mLoop;
	bool const isSameLoop = before.mFirst == inLoop.mFirst && before.mEnd == inLoop.mEnd;
	bool const isAround =
		!inLoop.IsEmpty() && (inReverse ? *mNext == inLoop.mFirst && inBegin == inLoop.mEnd
										: *mNext == inLoop.mEnd && inBegin == inLoop.mFirst);
	return (*mNext == inBegin || isAround) && (isSameLoop || mSettlingFrames == 0);
}

void SequenceNode::Settle(std::int64_t inBegin, bool inReverse)
{
	mSettings.mPlayhead->mIsSettling = true;
	dsp::AudioBuffer& discarded = *mSettings.mDiscarded;
	for (std::int64_t left = mSettlingFrames; left > 0;)
	{
		std::int64_t const count = std::min<std::int64_t>(left, discarded.GetCapacity());
		discarded.SetUseSize(static_cast<unsigned>(count));
		Render(inReverse ? inBegin + left - count : inBegin - left, discarded, inReverse);
		left -= count;
	}
	mSettings.mPlayhead->mIsSettling = false;
}

void SequenceNode::Render(std::int64_t inFrame, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	std::int64_t const frames = ioBuffer.GetUseSize();
	if (mSettings.mPlayhead->mLoop.IsEmpty())
	{
		RenderRun(inFrame, ioBuffer, inReverse);
		return;
	}
	dsp::AudioSubBuffer window;
	window.Init(ioBuffer.GetNumChannels());
	for (std::int64_t done = 0; done < frames;)
	{
		std::int64_t const begin = inReverse ? inFrame + frames - 1 - done : inFrame + done;
		std::int64_t const count = GetRunLength(begin, frames - done, inReverse);
		window.Assign(ioBuffer, static_cast<unsigned>(done));
		window.SetUseSize(static_cast<unsigned>(count));
		RenderRun(inReverse ? begin - count + 1 : begin, window, inReverse);
		done += count;
	}
}

std::int64_t SequenceNode::GetRunLength(std::int64_t inBegin, std::int64_t inCount, bool inReverse) const
{
	LoopRange const& loop = mSettings.mPlayhead->mLoop;
	std::int64_t count = inCount;
	for (Member const& member : mMembers)
	{
		std::int64_t const frame =
			loop.Wrap(inReverse ? inBegin - member.mTrack.mAhead : inBegin + member.mTrack.mAhead, inReverse);
		count = loop.GetRunLength(frame, count, inReverse);
	}
	return count;
}

void SequenceNode::RenderRun(std::int64_t inFrame, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	std::int64_t const count = ioBuffer.GetUseSize();
	Playhead& head = *mSettings.mPlayhead;
	head.Begin(inFrame, count, inReverse);
	ioBuffer.Zero();
	for (std::size_t index = 0; index < mMembers.size(); ++index)
	{
		Member& member = mMembers[index];
		// A run does not jump, so that its highest frame shows where it lies in reverse.
		std::int64_t const first =
			inReverse ? head.mLoop.Wrap(inFrame + count - 1 - member.mTrack.mAhead, true) - count + 1
					  : head.mLoop.Wrap(inFrame + member.mTrack.mAhead, false);
		SN::TickTime const time(first, mSettings.mFrameRate);
		NoteRequest(member, first, count, inReverse);
		if (index + 1 < mMembers.size())
		{
			member.mCached->GenerateAudio(static_cast<unsigned>(count), time, inReverse);
		}
		else
		{
			member.mGenerator->GetAudioData(time, ioBuffer, inReverse);
		}
	}
	mHasJumped = false;
}

// A track that is asked for the same once more answers with what it has, and its effects stand still. In a short loop
// it may be the next round that is asked for; a request for nothing lets it forget.
void SequenceNode::NoteRequest(Member& ioMember, std::int64_t inFrame, std::int64_t inCount, bool inReverse)
{
	bool const follows =
		inReverse ? inFrame + inCount == ioMember.mFrame : inFrame == ioMember.mFrame + ioMember.mCount;
	if (!follows || mHasJumped)
	{
		++*ioMember.mTrack.mJumps;
	}
	if (ioMember.mCached && inFrame == ioMember.mFrame && inCount == ioMember.mCount)
	{
		ioMember.mCached->GenerateAudio(0, SN::TickTime(inFrame, mSettings.mFrameRate), inReverse);
	}
	ioMember.mFrame = inFrame;
	ioMember.mCount = inCount;
}

} // namespace SonaroHost::Sequence
