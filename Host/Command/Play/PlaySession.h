#pragma once

#include "PlayedInput.h"
#include "SonaroHost/Metering/LoudnessMeterSetter.h"
#include "SonaroHost/Metering/PeakMeter.h"
#include "SonaroHost/Playback/LiveEffects.h"
#include "SonaroHost/Playback/LiveMix.h"
#include "SonaroHost/Playback/Playback.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace SonaroCommand
{

// What happened beside the playback.
struct PlayEvent
{
	enum class Kind
	{
		// The timeline was read anew, and what it is now is played.
		kReload,
		// It cannot be played as it is now, and what it was before goes on.
		kBadReload,
		// An effect is bypassed from now on, or samples are silent.
		kFault,
	};

	Kind mKind = Kind::kReload;
	std::string mText;
};

// A playback of the program: what is played, on which device, with live levels and meters.
//
// Threads  Reload: any, beside all else, one call at a time. The rest: one.
class PlaySession
{
public:
	// Opens the device. Throws a HostError.
	PlaySession(PlayRequest const& inRequest, std::unique_ptr<SonaroHost::Playback::OutputDevice> ioDevice,
		double inAheadSeconds);

	// What was opened at first, for its ranges and whether something is missing.
	PlayedInput const& GetFirstInput() const { return *mFirst; }
	SonaroHost::Playback::Playback& GetPlayback() { return *mPlayback; }
	SonaroHost::Playback::LiveMix& GetMix() { return mMix; }
	SonaroHost::Playback::LiveEffects& GetEffects() { return mEffects; }
	SonaroHost::PeakMeter& GetPeaks() { return *mPeaks; }
	SonaroHost::LoudnessReading GetLoudness() { return mLoudness->GetReading(); }
	// Where the head of who listens with two ears is turned, live; null without --binaural.
	SonaroHost::HeadOrientation* FindHead() const
	{
		auto const& listener = mRequest.mTimeline.mListener;
		return listener ? listener->mOrientation.get() : nullptr;
	}
	unsigned CountChannels() const { return mChannels; }
	int GetSampleRate() const { return mSampleRate; }
	std::string FormatPlace(std::int64_t inFrame) const;

	// Reads the timeline anew and lets it take over.
	void Reload();
	std::vector<PlayEvent> TakeEvents();
	// Whether any of these was a fault.
	bool HasFault() const { return mHasFault; }

	// After all else: ends the playback and completes what the device keeps. Throws a HostError when that fails.
	void Finish();

private:
	// Programmes with live levels, whose effects are held as those before.
	SonaroHost::Playback::LiveMix::Mixed Prepare(PlayedInput const& inInput) const;
	void Adopt(SonaroHost::Playback::LiveMix::Mixed const& inMixed);
	void NoteEvent(PlayEvent inEvent);

	PlayRequest mRequest;
	// Outlive the playback, which reads their media.
	std::shared_ptr<PlayedInput> mFirst;
	std::shared_ptr<PlayedInput> mInput;
	unsigned mChannels;
	int mSampleRate;
	SonaroHost::Playback::LiveMix mMix;
	SonaroHost::Playback::LiveEffects mEffects;
	SN::InterfaceRef<SonaroHost::PeakMeter> mPeaks;
	SN::InterfaceRef<SonaroHost::LoudnessMeterSetter> mLoudness;
	std::unique_ptr<SonaroHost::Playback::OutputDevice> mDevice;
	std::unique_ptr<SonaroHost::Playback::Playback> mPlayback;
	// Of mInput and of the events.
	mutable std::mutex mMutex;
	std::vector<PlayEvent> mEvents;
	bool mHasFault = false;
	std::chrono::steady_clock::time_point mNextLatency;
};

} // namespace SonaroCommand
