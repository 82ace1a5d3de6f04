#pragma once

#include "Feed/DeviceFeed.h"
#include "Feed/PlaceHistory.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "SonaroHost/Base/ProgrammeRange.h"
#include "Stream/SpeedStream.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace SonaroHost::Playback
{

struct TransportSettings
{
	// How much of the ring is kept filled; it has room for a block and a fade besides.
	std::int64_t mTargetFrames = 0;
	// How much is there before anything is heard, at most three quarters of that.
	std::int64_t mOpenFrames = 0;
	// Hear what is put into the ring, and are reset where playing begins anew.
	std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>> mMeters = {};
};

// What a playback does with its graph and its ring: it keeps the ring filled with what is to be heard.
//
// Ends     What is played is always exactly what the programme has there. Where it stops or goes on elsewhere before its
//          end, what comes next at the old place is heard for 2 ms more, fading out.
// Media    What was read ahead can be taken out of memory before it is played, when others need that. Then it is read again,
//          and what comes too late is a miss. Where that does not help, its silence is played and counted for a while.
// Starts   Media are read, and half of the ring or as much as the device asks for at once is filled, before anything is heard.
// Threads  The render thread's. Rendering a block neither allocates nor locks; commands and reading ahead do.
class Transport
{
public:
	// All outlive it.
	Transport(PlayedGraph& ioGraph, DeviceFeed& ioFeed, PlaceHistory& ioHistory,
		std::shared_ptr<WakeUp> const& inWakes, TransportSettings const& inSettings);

	// At the end of the programme it begins again at the other one.
	void Play();
	void Stop();
	void Seek(std::int64_t inPlace);
	// inHeard: the place that is heard now. A loop whose end lies after it but was passed in what is not heard yet begins at once.
	void SetLoop(std::optional<ProgrammeRange> const& inLoop, std::int64_t inHeard);
	void SetSpeed(PlaySpeed const& inSpeed);
	// Plays a grain of 60 ms from there on, backwards when the last one was later; then it is stopped there.
	void Scrub(std::int64_t inPlace);
	void TakeOver(PlayedGraph& ioGraph) { mStream.TakeOver(ioGraph, mMode != Mode::kStopped); }
	bool Has(PlayedGraph const& inGraph) const { return mStream.Has(inGraph); }

	// Fills the ring as far as it goes. Throws a HostError when media have stopped being decoded.
	void Fill();
	// Without a fade, for when nothing more can be rendered: what is in the ring is still heard, and it goes on after that.
	void Halt();
	// The same when nobody hears the ring any more, and it goes on elsewhere.
	void HaltAt(std::int64_t inPlace);

	bool IsPlaying() const { return mMode != Mode::kStopped; }
	// Whether it stopped by itself at the end of what it played, which may not have been heard yet.
	bool HasEnded() const { return mHasEnded; }
	// Whether the gate is closed while enough for opening it is there, which lasts until Fill ends. From any thread.
	bool HasEnoughToOpen() const { return mFeed.CountBeyondGate() >= mSettings.mOpenFrames; }
	// See PlaybackState.
	std::uint64_t CountUnreadFrames() const { return mUnread; }

private:
	enum class Mode
	{
		kStopped,
		kPlaying,
		kScrubbing,
	};

	void Begin(std::int64_t inPlace);
	// Fades out what is heard, and takes back what is not yet. Returns the place from which it can go on.
	std::int64_t End();
	void Rest(std::int64_t inPlace);

	// Whether a place lies after the loop, in the direction of playing.
	bool IsBeyondLoop(std::int64_t inPlace) const;
	std::int64_t GetProgrammeEnd() const { return mStream.GetGraph().GetProgramme().mFrames; }
	std::int64_t GetGrainFrames() const;
	// How many frames are left before it stops by itself, and how many to append now.
	std::int64_t CountLeft() const;
	std::int64_t CountWanted() const;
	// Appends frames that are ready. Those whose media were taken out of memory meanwhile are read again first.
	void FillBlock(std::int64_t inFrames);
	// Renders a block, and counts what was not there. False when it has to be read again.
	bool RenderBlock();
	void FadeOut();
	void ShapeGrain();
	void Write(double inPlace);
	void CheckNowAndThen();
	// Appends the last frames before it stops by itself.
	void WriteLast(double inPlace);
	void OpenWhenFilled();

	DeviceFeed& mFeed;
	PlaceHistory& mHistory;
	TransportSettings mSettings;
	int mSampleRate;
	PlayStream mStream;
	SpeedStream mSpeeds;
	dsp::AudioBuffer mBlock;

	Mode mMode = Mode::kStopped;
	bool mHasEnded = false;
	// While stopped.
	std::int64_t mPlace = 0;
	std::optional<ProgrammeRange> mLoop;
	PlaySpeed mSpeed;
	std::int64_t mScrubPlace = 0;
	std::int64_t mGrainDone = 0;
	std::int64_t mFramesToCheck = 0;
	std::uint64_t mUnread = 0;
	// How often the next block was read again, and for how many frames none is, since that was in vain.
	unsigned mReadsAgain = 0;
	std::int64_t mFramesInVain = 0;
	// The gate's place while it is closed.
	std::int64_t mGate = 0;
};

} // namespace SonaroHost::Playback
