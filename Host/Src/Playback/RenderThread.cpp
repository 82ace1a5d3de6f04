#include "RenderThread.h"

#include "Render/Effect/LatencyGrowth.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvcore/threads/CurrentThread.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <utility>

namespace SonaroHost::Playback
{

namespace
{

using namespace std::chrono_literals;

// Whatever happens comes with a wake-up; a loss of the device does not.
constexpr std::chrono::milliseconds kLongestSleep = 20ms;

// Short enough for a string that has allocated nothing.
constexpr char const* kNoMemory = "out of memory";

// A quarter of what is kept filled, in a power of two.
unsigned ChoosePlayedBlock(Programme const& inProgramme, std::int64_t inTargetFrames)
{
	unsigned frames = 1024;
	while (frames > 32 && frames * 4 > inTargetFrames)
	{
		frames /= 2;
	}
	return ChooseBlock(inProgramme, frames);
}

} // namespace

RenderThread::RenderThread(Programme const& inProgramme, OutputDevice& ioDevice, DeviceFormat const& inFormat,
	TransportSettings const& inSettings, bool inIsRealtime)
	: mDevice(ioDevice),
	  mWakes(std::make_shared<WakeUp>()),
	  mTargetFrames(inSettings.mTargetFrames),
	  mIsRealtime(inIsRealtime),
	  mBlockFrames(ChoosePlayedBlock(inProgramme, mTargetFrames)),
	  mGraph(std::make_unique<PlayedGraph>(inProgramme, mBlockFrames)),
	  // Room for a fade of 2 ms besides.
	  mFeed(inFormat, mTargetFrames + mBlockFrames + inFormat.mSampleRate / 100, *mWakes),
	  mTransport(*mGraph, mFeed, mHistory, mWakes, inSettings),
	  mFrames(inProgramme.mFrames),
	  mHeardGraph(mGraph.get())
{
	for (auto const& meter : inSettings.mMeters)
	{
		meter->Init(inProgramme.GetFrameRate(), inFormat.mChannels);
	}
	SN::AudioPrefetch::NotifyPrefetchIntervalChanged(SN::TickTime::FromSeconds(1.0));
	mThread = std::thread([this] { Run(); });
}

RenderThread::~RenderThread()
{
	mIsEnding.store(true, std::memory_order_release);
	mWakes->Wake();
	mThread.join();
}

void RenderThread::Post(Command const& inCommand)
{
	{
		std::lock_guard const lock(mMutex);
		mCommands.push_back(inCommand);
		std::uint64_t const posted = mPosted.fetch_add(1, std::memory_order_release) + 1;
		if (std::holds_alternative<PlayCommand>(inCommand))
		{
			mPlayPosted.store(posted, std::memory_order_release);
		}
	}
	mWakes->Wake();
}

void RenderThread::TakeOver(Programme const& inProgramme)
{
	std::lock_guard const lock(mTakingOver);
	Replace(inProgramme);
}

void RenderThread::Replace(Programme const& inProgramme)
{
	auto next = std::make_unique<PlayedGraph>(inProgramme, mBlockFrames);
	zorvcore::threads::Gate isDone(false);
	Post(TakeOverCommand{next.get(), &isDone});
	isDone.PassThrough();
	mGraph = std::move(next);
	mFrames.store(mGraph->GetProgramme().mFrames, std::memory_order_release);
	mReported.clear();
	LimitLoop(mGraph->GetProgramme().mFrames);
}

void RenderThread::LimitLoop(std::int64_t inFrames)
{
	std::optional<ProgrammeRange> loop = GetState().mLoop;
	if (loop && loop->mFirstFrame + loop->mFrames > inFrames)
	{
		loop->mFrames = inFrames - loop->mFirstFrame;
		SetLoop(loop->mFrames > 0 ? loop : std::nullopt);
	}
}

bool RenderThread::MakeUpForLatency()
{
	std::lock_guard const lock(mTakingOver);
	bool const isLate = HasLateEffect(mGraph->GetReport());
	if (isLate)
	{
		Replace(mGraph->GetProgramme());
	}
	return isLate;
}

std::vector<std::string> RenderThread::TakeWarnings()
{
	using Kind = EffectFault::Kind;
	std::lock_guard const lock(mTakingOver);
	std::vector<std::string> warnings;
	for (auto const& effect : mGraph->GetReport().mEffects)
	{
		Kind const fault = effect->mFault.load(std::memory_order_acquire);
		Kind const reported = std::exchange(mReported[effect], fault);
		if (fault != reported)
		{
			std::int64_t const place = std::clamp<std::int64_t>(FindHeardPlace(), 0, mFrames.load());
			HostError::Parts parts = DescribeFault(mGraph->GetProgramme(), *effect, place);
			parts.mRemedy =
				fault == Kind::kBadInput ? "these samples are silent" : "the effect is bypassed from now on";
			warnings.emplace_back(HostError(HostError::Kind::kInput, std::move(parts)).what());
		}
	}
	return warnings;
}

void RenderThread::SetLoop(std::optional<ProgrammeRange> const& inLoop)
{
	{
		std::lock_guard const lock(mMutex);
		mLoop = inLoop;
	}
	Post(LoopCommand{inLoop});
}

void RenderThread::SetSpeed(double inSpeed)
{
	Post(SpeedCommand{PlaySpeed::Make(inSpeed)});
	mSpeed.store(inSpeed, std::memory_order_release);
}

bool RenderThread::IsFilled() const
{
	std::uint64_t const posted = mPosted.load(std::memory_order_acquire);
	if (mDone.load(std::memory_order_acquire) != posted)
	{
		return false;
	}
	std::int64_t const filled = mFeed.GetRing().CountWritten() - mFeed.GetRing().CountRead();
	bool const isFull = filled >= mTargetFrames && !mTransport.HasEnoughToOpen();
	return !mIsPlaying.load(std::memory_order_acquire) || isFull;
}

PlaybackState RenderThread::GetState() const
{
	PlaybackState state;
	// The order is that of Post and Work: a command that is not done yet is seen as such.
	std::uint64_t const play = mPlayPosted.load(std::memory_order_acquire);
	bool const isAskedFor = mDone.load(std::memory_order_acquire) < play;
	state.mIsPlaying = isAskedFor || IsEndUnheard() || mIsPlaying.load(std::memory_order_acquire);
	state.mFrames = mFrames.load(std::memory_order_acquire);
	state.mFrame = std::clamp<std::int64_t>(FindHeardPlace(), 0, state.mFrames);
	state.mSpeed = mSpeed.load(std::memory_order_acquire);
	state.mMisses = mFeed.CountMisses() + mDevice.CountUnderflows();
	state.mMissedFrames = mFeed.CountMissedFrames();
	state.mUnreadFrames = mUnreadFrames.load(std::memory_order_relaxed);
	std::lock_guard const lock(mMutex);
	state.mLoop = mLoop;
	state.mFailure = mFailure;
	return state;
}

bool RenderThread::IsEndUnheard() const
{
	return mHasEnded.load(std::memory_order_acquire) &&
		   mFeed.GetRing().CountWritten() > mFeed.GetRing().CountRead();
}

void RenderThread::ClearFailure()
{
	std::lock_guard const lock(mMutex);
	mFailure.clear();
}

std::int64_t RenderThread::FindHeardPlace() const
{
	std::int64_t const onItsWay = std::max<std::int64_t>(mDevice.GetLatencyFrames() - mFeed.CountIdle(), 0);
	return static_cast<std::int64_t>(mHistory.Find(mFeed.GetRing().CountRead() - onItsWay));
}

void RenderThread::Run()
{
	zorvcore::threads::SetCurrentThreadName("sonaro-play");
	// Below the threads of devices.
	constexpr int kRealtimePriority = 5;
	if (!mIsRealtime || !zorvcore::threads::SetCurrentThreadRealtime(kRealtimePriority))
	{
		zorvcore::threads::SetCurrentThreadPriority(zorvcore::threads::ThreadPriority::kUrgent);
	}
	while (!mIsEnding.load(std::memory_order_acquire))
	{
		Work();
		mWakes->WaitFor(kLongestSleep);
	}
}

void RenderThread::Work()
{
	Attempt([this] { CheckDevice(); });
	TakeCommands();
	Attempt(
		[this]
		{
			StartTakeover();
			mTransport.Fill();
		});
	if (mTakeover.mGraph && !mTransport.Has(*mHeardGraph))
	{
		mHeardGraph = std::exchange(mTakeover.mGraph, nullptr);
		mTakeover.mIsDone->Open();
	}
	mUnreadFrames.store(mTransport.CountUnreadFrames(), std::memory_order_relaxed);
	mIsPlaying.store(mTransport.IsPlaying(), std::memory_order_release);
	mHasEnded.store(mTransport.HasEnded(), std::memory_order_release);
	mDone.fetch_add(mTaken.size(), std::memory_order_release);
	mTaken.clear();
}

void RenderThread::TakeCommands()
{
	if (mPosted.load(std::memory_order_acquire) == mDone.load(std::memory_order_relaxed))
	{
		return;
	}
	{
		std::lock_guard const lock(mMutex);
		mTaken.swap(mCommands);
	}
	for (Command const& command : mTaken)
	{
		Attempt([&] { std::visit([this](auto const& inCommand) { Do(inCommand); }, command); });
	}
}

template <class Action>
void RenderThread::Attempt(Action const& inAction)
{
	try
	{
		inAction();
	}
	catch (std::exception const& error)
	{
		// The device still takes what is in the ring.
		mTransport.Halt();
		NoteFailure(dynamic_cast<std::bad_alloc const*>(&error) ? kNoMemory : error.what());
	}
}

void RenderThread::Do(TakeOverCommand const& inCommand)
{
	mTakeover = inCommand;
	StartTakeover();
}

void RenderThread::StartTakeover()
{
	if (mTakeover.mGraph && !mTransport.Has(*mTakeover.mGraph))
	{
		mTransport.TakeOver(*mTakeover.mGraph);
	}
}

void RenderThread::CheckDevice()
{
	// Nobody would ever hear the end that is in the ring.
	auto const loss = mTransport.IsPlaying() || IsEndUnheard() ? mDevice.FindLoss() : std::nullopt;
	if (loss)
	{
		mTransport.HaltAt(FindHeardPlace());
		NoteFailure(loss->c_str());
	}
}

void RenderThread::NoteFailure(char const* inReason)
{
	std::lock_guard const lock(mMutex);
	try
	{
		mFailure = inReason;
	}
	catch (std::bad_alloc const&)
	{
		mFailure = kNoMemory;
	}
}

} // namespace SonaroHost::Playback
