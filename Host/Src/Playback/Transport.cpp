#include "Transport.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Playback
{

namespace
{

constexpr int kEndFadesPerSecond = 500;
constexpr int kGrainFadesPerSecond = 200;
constexpr double kGrainSeconds = 0.06;
constexpr int kChecksPerSecond = 10;
// How often a block is read again, as it may be purged again meanwhile, and for how long none is after that.
constexpr unsigned kMostReads = 3;
constexpr int kSecondsInVain = 2;

// Multiplies frames by gains that inGain gives for each.
template <class Gain>
void Shape(dsp::AudioBuffer& ioBuffer, Gain const& inGain)
{
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		float* const samples = ioBuffer.GetChannel(channel);
		for (unsigned i = 0; i < ioBuffer.GetUseSize() && !ioBuffer.IsChannelSilent(channel); ++i)
		{
			samples[i] *= inGain(i);
		}
	}
}

} // namespace

Transport::Transport(PlayedGraph& ioGraph, DeviceFeed& ioFeed, PlaceHistory& ioHistory,
	std::shared_ptr<WakeUp> const& inWakes, TransportSettings const& inSettings)
	: mFeed(ioFeed),
	  mHistory(ioHistory),
	  mSettings(inSettings),
	  mSampleRate(ioGraph.GetProgramme().mSampleRate),
	  mStream(ioGraph, inWakes),
	  mSpeeds(mStream, ioFeed.GetRing().GetChannels(), ioGraph.GetBlockFrames()),
	  mBlock(ioFeed.GetRing().GetChannels(), ioGraph.GetBlockFrames())
{
}

void Transport::Play()
{
	if (mMode == Mode::kPlaying)
	{
		return;
	}
	std::int64_t const place = mMode == Mode::kScrubbing ? mScrubPlace : mPlace;
	End();
	mMode = Mode::kPlaying;
	Begin(place);
	if (CountLeft() == 0)
	{
		Begin(mSpeed.IsReverse() ? GetProgrammeEnd() : 0);
	}
}

void Transport::Stop()
{
	if (mMode == Mode::kPlaying)
	{
		Rest(End());
	}
}

void Transport::Seek(std::int64_t inPlace)
{
	std::int64_t const place = std::clamp<std::int64_t>(inPlace, 0, GetProgrammeEnd());
	End();
	if (mMode == Mode::kPlaying)
	{
		Begin(place);
		return;
	}
	Rest(place);
}

void Transport::SetLoop(std::optional<ProgrammeRange> const& inLoop, std::int64_t inHeard)
{
	mLoop = inLoop;
	if (mMode == Mode::kPlaying && mLoop && IsBeyondLoop(mSpeeds.GetPlace()) && !IsBeyondLoop(inHeard))
	{
		End();
		Begin(mLoop->mFirstFrame + (mSpeed.IsReverse() ? mLoop->mFrames : 0));
	}
	else if (mMode == Mode::kPlaying)
	{
		mSpeeds.SetLoop(mLoop ? mLoop->mFirstFrame : 0, mLoop ? mLoop->mFirstFrame + mLoop->mFrames : 0);
	}
}

bool Transport::IsBeyondLoop(std::int64_t inPlace) const
{
	return mSpeed.IsReverse() ? inPlace <= mLoop->mFirstFrame
							  : inPlace >= mLoop->mFirstFrame + mLoop->mFrames;
}

void Transport::SetSpeed(PlaySpeed const& inSpeed)
{
	if (inSpeed.mSpeed == mSpeed.mSpeed)
	{
		return;
	}
	mSpeed = inSpeed;
	if (mMode == Mode::kPlaying)
	{
		Begin(End());
	}
}

void Transport::Scrub(std::int64_t inPlace)
{
	bool const isBackwards = inPlace < (mMode == Mode::kPlaying ? mSpeeds.GetPlace() : mScrubPlace);
	End();
	mMode = Mode::kScrubbing;
	mScrubPlace = inPlace;
	mGrainDone = 0;
	PlaySpeed speed;
	speed.mSpeed = isBackwards ? -1.0 : 1.0;
	mSpeeds.Begin({isBackwards, 0, 0}, inPlace, speed);
}

void Transport::Begin(std::int64_t inPlace)
{
	mReadsAgain = 0;
	for (auto const& meter : mSettings.mMeters)
	{
		meter->Reset();
	}
	std::int64_t const first = mLoop ? mLoop->mFirstFrame : 0;
	std::int64_t const end = mLoop ? first + mLoop->mFrames : 0;
	mSpeeds.Begin(PlayOrder::Make(mSpeed.IsReverse(), first, end, inPlace), inPlace, mSpeed);
}

std::int64_t Transport::End()
{
	if (mMode == Mode::kStopped)
	{
		return mPlace;
	}
	std::int64_t const place = mSpeeds.GetPlace();
	if (!mFeed.IsOpen())
	{
		// The frames that are taken back may begin at another place.
		std::int64_t const begun = static_cast<std::int64_t>(mHistory.Find(mGate));
		bool const isBegun = mFeed.GetRing().CountWritten() > mGate;
		mFeed.TakeBackUnheard();
		return isBegun ? begun : place;
	}
	FadeOut();
	return place;
}

void Transport::FadeOut()
{
	std::int64_t const fade = std::max(mSampleRate / kEndFadesPerSecond, 1);
	auto const place = static_cast<double>(mSpeeds.GetPlace());
	mGate = mFeed.GetRing().CountWritten() + fade;
	mFeed.CloseAt(mGate);
	for (std::int64_t done = 0; done < fade; done += mBlock.GetUseSize())
	{
		mBlock.SetUseSize(static_cast<unsigned>(std::min<std::int64_t>(fade - done, mBlock.GetCapacity())));
		mStream.Advance();
		if (mSpeeds.IsReady(mBlock.GetUseSize()))
		{
			mSpeeds.Render(mBlock);
		}
		else
		{
			mBlock.Zero();
		}
		ShapeGrain();
		Shape(mBlock, [&](unsigned inIndex)
			{ return static_cast<float>(fade - done - inIndex) / static_cast<float>(fade + 1); });
		Write(place);
	}
}

void Transport::Rest(std::int64_t inPlace)
{
	mMode = Mode::kStopped;
	mHasEnded = false;
	mPlace = inPlace;
	mStream.FinishTakeover();
	mHistory.Note(mFeed.GetRing().CountWritten(), static_cast<double>(inPlace), 0.0);
}

void Transport::Halt()
{
	mFeed.TakeBackUnheard();
	HaltAt(static_cast<std::int64_t>(mHistory.Find(mFeed.GetRing().CountWritten())));
}

void Transport::HaltAt(std::int64_t inPlace)
{
	mFeed.TakeBackUnheard();
	// Also where a fade was broken off: nothing is missing after what is there.
	mGate = mFeed.GetRing().CountWritten();
	mFeed.CloseAt(mGate);
	Rest(inPlace);
}

void Transport::Fill()
{
	if (mMode == Mode::kStopped)
	{
		return;
	}
	mStream.Advance();
	for (std::int64_t frames = CountWanted(); frames > 0 && mSpeeds.IsReady(frames); frames = CountWanted())
	{
		FillBlock(frames);
		mStream.Advance();
	}
	if (mMode != Mode::kStopped && CountLeft() == 0)
	{
		// A programme that has taken over is over here already: nothing more is missing.
		mGate = mFeed.GetRing().CountWritten();
		mFeed.CloseAt(mGate);
		Rest(mMode == Mode::kScrubbing ? mScrubPlace : mSpeeds.GetPlace());
		mHasEnded = true;
	}
	OpenWhenFilled();
}

std::int64_t Transport::GetGrainFrames() const
{
	return std::max<std::int64_t>(static_cast<std::int64_t>(kGrainSeconds * mSampleRate), 1);
}

std::int64_t Transport::CountLeft() const
{
	return mMode == Mode::kScrubbing ? GetGrainFrames() - mGrainDone : mSpeeds.CountLeft();
}

std::int64_t Transport::CountWanted() const
{
	std::int64_t const filled = mFeed.GetRing().CountWritten() - mFeed.GetRing().CountRead();
	std::int64_t const block = mBlock.GetCapacity();
	if (mMode == Mode::kStopped || filled >= mSettings.mTargetFrames)
	{
		return 0;
	}
	// A shorter block fills the ring where fades and jumps have left it between two blocks, but none that is very short.
	std::int64_t const free = mSettings.mTargetFrames - filled + std::max<std::int64_t>(block / 4, 1);
	// Where blocks end at jumps, the place that is heard is exact; in a short loop there would be too many of them.
	bool const endsAtJumps = mLoop && mLoop->mFrames >= block;
	return std::min({block, free, CountLeft(), endsAtJumps ? mSpeeds.CountToJump() : block});
}

void Transport::FillBlock(std::int64_t inFrames)
{
	auto const place = static_cast<double>(mSpeeds.GetPlace());
	bool const isLast = inFrames == CountLeft();
	mBlock.SetUseSize(static_cast<unsigned>(inFrames));
	if (!RenderBlock())
	{
		return;
	}
	ShapeGrain();
	CheckNowAndThen();
	isLast ? WriteLast(place) : Write(place);
}

bool Transport::RenderBlock()
{
	PlayedGraph const& graph = mStream.GetGraph();
	std::uint64_t const before = graph.CountUnreadFrames();
	mSpeeds.Render(mBlock);
	std::uint64_t const unread = graph.CountUnreadFrames() - before;
	unsigned const reads = std::exchange(mReadsAgain, 0);
	mFramesInVain = std::max<std::int64_t>(mFramesInVain - mBlock.GetUseSize(), 0);
	if (unread == 0)
	{
		return true;
	}
	mFramesInVain = reads == kMostReads ? kSecondsInVain * std::int64_t{mSampleRate} : mFramesInVain;
	if (mFramesInVain == 0 && mSpeeds.TakeBackLast())
	{
		mReadsAgain = reads + 1;
		return false;
	}
	mUnread += unread;
	return true;
}

void Transport::ShapeGrain()
{
	if (mMode != Mode::kScrubbing)
	{
		return;
	}
	std::int64_t const fade = std::max(mSampleRate / kGrainFadesPerSecond, 1);
	Shape(mBlock,
		[&](unsigned inIndex)
		{
			std::int64_t const frame = mGrainDone + inIndex;
			std::int64_t const edge =
				std::clamp<std::int64_t>(std::min(frame + 1, GetGrainFrames() - frame), 0, fade);
			return static_cast<float>(edge) / static_cast<float>(fade);
		});
	mGrainDone += mBlock.GetUseSize();
}

void Transport::CheckNowAndThen()
{
	mFramesToCheck -= mBlock.GetUseSize();
	if (mFramesToCheck <= 0)
	{
		mFramesToCheck = mSampleRate / kChecksPerSecond;
		mStream.GetGraph().Check();
	}
}

void Transport::Write(double inPlace)
{
	SampleRing& ring = mFeed.GetRing();
	mHistory.Note(ring.CountWritten(), inPlace, mMode == Mode::kPlaying ? mSpeed.mSpeed : 0.0);
	ring.Write(mBlock);
	SN::TickTime const time(
		static_cast<std::int64_t>(inPlace), SN::FrameRate::FromSamplesPerSecond(mSampleRate));
	for (auto const& meter : mSettings.mMeters)
	{
		meter->SetMeterData(mBlock, time);
	}
}

void Transport::WriteLast(double inPlace)
{
	std::int64_t const end = mFeed.GetRing().CountWritten() + mBlock.GetUseSize();
	bool const isHeard = mFeed.IsOpen();
	// The gate of a feed that is heard closes before its last frames are there; another one opens after that.
	if (isHeard)
	{
		mFeed.CloseAt(end);
	}
	Write(inPlace);
	if (!isHeard)
	{
		mFeed.CloseAt(end);
	}
	mGate = end;
	Rest(mMode == Mode::kScrubbing ? mScrubPlace
								   : std::clamp<std::int64_t>(mSpeeds.GetPlace(), 0, GetProgrammeEnd()));
	mHasEnded = true;
}

void Transport::OpenWhenFilled()
{
	if (mMode != Mode::kStopped && HasEnoughToOpen())
	{
		mFeed.Open();
	}
}

} // namespace SonaroHost::Playback
