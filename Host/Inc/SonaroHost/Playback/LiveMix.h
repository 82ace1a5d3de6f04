#pragma once

#include "SonaroHost/Metering/PeakMeter.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Sequence/Description.h"
#include "Vexilon/ParamValue.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Playback
{

// What a listener does to the tracks of a programme's outermost sequence while it plays: a gain after the last effect of
// each, which sends after that hear too, its mute, solo, and its pan where the sequence pans it. Changes are heard with
// the next block, ramped over 5 ms, mutes over 10 ms. As long as nothing is changed, what is heard stays the same bits.
//
// Solo     While any track is solo, all others are muted.
// Takeover Tracks of another programme keep what was set for the track of the same origin, or of the same place where tracks
//          have none.
// Threads  Any.
class LiveMix
{
public:
	class Mixed;

	// A programme to be mixed by this, which itself stays as it is.
	Mixed Prepare(Programme const& inProgramme) const;
	// From now on the tracks are those of that programme, which plays or is about to. What is set meanwhile counts, too.
	void Adopt(Mixed const& inMixed);

	// How many tracks the outermost sequence has.
	std::size_t CountTracks() const;
	// The track's name; it need not differ from others.
	std::string GetName(std::size_t inTrack) const;

	// Linear, 0 or more; 1 at first.
	void SetGain(std::size_t inTrack, float inGain);
	float GetGain(std::size_t inTrack) const;
	void SetMute(std::size_t inTrack, bool inIsMuted);
	// Whether the track is muted by itself, in the sequence at first.
	bool IsMuted(std::size_t inTrack) const;
	void SetSolo(std::size_t inTrack, bool inIsSolo);
	bool IsSolo(std::size_t inTrack) const;
	// Whether the sequence has a pan for it.
	bool CanPan(std::size_t inTrack) const;
	// From 0 (left) through 0.5 to 1 (right), in place of the curve that may be there.
	void SetPan(std::size_t inTrack, float inPan);

	// The largest magnitude since the last call, after the gain and before the pan; linear.
	float TakePeak(std::size_t inTrack);

private:
	// Handles of a track, which its graph shares.
	struct Track
	{
		std::string mOrigin;
		std::string mName;
		boost::shared_ptr<VX::ParamValue<float>> mGain;
		// Null for tracks that are not panned.
		Sequence::NumberParameter mPan;
		std::optional<float> mPanValue;
		Sequence::MuteSwitch mSwitch;
		SN::InterfaceRef<PeakMeter> mMeter;
		bool mIsMuted = false;
		bool mIsSolo = false;
	};

	static Track MakeTrack(Sequence::Track const& inTrack, Track const* inBefore);
	static void Attach(Track const& inHandles, Sequence::Track& ioTrack);
	static void ApplyPan(Track& ioTrack);
	// These are called under the lock.
	void ApplyMutes();
	Track const* FindBefore(std::string const& inOrigin, std::size_t inIndex) const;

	mutable std::mutex mMutex;
	std::vector<Track> mTracks;
};

// A programme whose tracks can be mixed.
class LiveMix::Mixed
{
public:
	Programme const& GetProgramme() const { return mProgramme; }

private:
	friend class LiveMix;

	Programme mProgramme;
	std::vector<Track> mTracks;
};

} // namespace SonaroHost::Playback
