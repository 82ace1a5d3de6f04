#pragma once

#include "Command.h"
#include "Feed/DeviceFeed.h"
#include "Feed/PlaceHistory.h"
#include "SonaroHost/Playback/OutputDevice.h"
#include "SonaroHost/Playback/PlaybackState.h"
#include "Transport.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace SonaroHost::Playback
{

// The thread that keeps the ring of a playback filled, and what others see of it.
//
// Step  Who     What
// M1    others  append a command and count it, under the lock
// M2    others  wake the thread (N1)
// M3    others  wait at the gate of a takeover
// M4    others  ask it to end, and wake it
// L1    thread  takes all commands, under the lock
// L2    thread  does them; one that throws takes none of the others along
// L3    thread  starts a takeover again that has thrown
// L4    thread  fills the ring
// L5    thread  opens the gate of a takeover that is complete
// L6    thread  counts the commands as done, and sleeps until there is news (N2)
//
// Threads  As Playback.
class RenderThread
{
public:
	RenderThread(Programme const& inProgramme, OutputDevice& ioDevice, DeviceFormat const& inFormat,
		TransportSettings const& inSettings, bool inIsRealtime);
	~RenderThread();

	DeviceFeed& GetFeed() { return mFeed; }
	void Post(Command const& inCommand);
	// Beside all else.
	void TakeOver(Programme const& inProgramme);
	std::vector<std::string> TakeWarnings();
	bool MakeUpForLatency();
	void SetLoop(std::optional<ProgrammeRange> const& inLoop);
	void SetSpeed(double inSpeed);

	// Whether Post's commands are done and the ring is filled.
	bool IsFilled() const;
	PlaybackState GetState() const;
	// Forgets why it stopped.
	void ClearFailure();

private:
	void Run();
	// One round: commands, and what they lead to.
	void Work();
	void TakeCommands();
	// When it throws, playing stops with the reason, and all else goes on.
	template <class Action>
	void Attempt(Action const& inAction);
	void Do(PlayCommand const&) { mTransport.Play(); }
	void Do(StopCommand const&) { mTransport.Stop(); }
	void Do(SeekCommand const& inCommand) { mTransport.Seek(inCommand.mPlace); }
	void Do(ScrubCommand const& inCommand) { mTransport.Scrub(inCommand.mPlace); }
	void Do(LoopCommand const& inCommand) { mTransport.SetLoop(inCommand.mLoop, FindHeardPlace()); }
	void Do(SpeedCommand const& inCommand) { mTransport.SetSpeed(inCommand.mSpeed); }
	void Do(TakeOverCommand const& inCommand);
	// Until it has succeeded once: whoever waits for the takeover cannot go on without it.
	void StartTakeover();
	// Keeps the loop within a programme that has taken over.
	void LimitLoop(std::int64_t inFrames);
	void CheckDevice();
	// Also where there is no memory left for it.
	void NoteFailure(char const* inReason);
	// With the lock of what is taken over.
	void Replace(Programme const& inProgramme);
	std::int64_t FindHeardPlace() const;
	// Whether it stopped at the end of the programme, of which the device has yet to take a part.
	bool IsEndUnheard() const;

	OutputDevice& mDevice;
	std::shared_ptr<WakeUp> mWakes;
	std::int64_t mTargetFrames;
	bool mIsRealtime;
	unsigned mBlockFrames;
	std::unique_ptr<PlayedGraph> mGraph;
	DeviceFeed mFeed;
	PlaceHistory mHistory;
	Transport mTransport;

	// Of the graph that was made last, and what was said of its effects.
	std::mutex mTakingOver;
	std::map<std::shared_ptr<Sequence::EffectHealth const>, EffectFault::Kind> mReported;
	mutable std::mutex mMutex;
	std::vector<Command> mCommands;
	std::string mFailure;
	std::optional<ProgrammeRange> mLoop;
	std::atomic<double> mSpeed{1.0};
	std::atomic<std::int64_t> mFrames;
	std::atomic<std::uint64_t> mUnreadFrames{0};
	// Commands that were given, and that are done.
	std::atomic<std::uint64_t> mPosted{0};
	std::atomic<std::uint64_t> mDone{0};
	// How many there were with the last command to play.
	std::atomic<std::uint64_t> mPlayPosted{0};
	std::atomic<bool> mIsPlaying{false};
	std::atomic<bool> mHasEnded{false};
	std::atomic<bool> mIsEnding{false};

	// The render thread's: commands at work, and a takeover that is not complete, from which graph.
	std::vector<Command> mTaken;
	TakeOverCommand mTakeover;
	PlayedGraph* mHeardGraph;
	std::thread mThread;
};

} // namespace SonaroHost::Playback
