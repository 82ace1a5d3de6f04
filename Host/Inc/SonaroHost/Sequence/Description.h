#pragma once

#include "Sonaro/AudioChannelMix.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Base/FadeShape.h"
#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Base/SpeedCurve.h"
#include "SonaroHost/Binaural/Listener.h"
#include "SonaroHost/Sequence/Chain.h"
#include "SonaroHost/Sequence/Media.h"
#include "SonaroHost/Sequence/Resampling.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// A sequence as an editor knows it, in plain values: what stands where, and what it passes through. It knows
// neither blocks nor the order of work; a SequenceGraph is made of it, for export and playback alike.
//
// Times    In the sequence's time, from 0 on. They are brought to the nearest frame of the rate at which a
//          graph is made, each for itself, so that items which meet go on meeting.
//          Clip::mFirstFrame counts the recording's own samples, everything else is time of the sequence.
// Lifetime A graph needs the description only while it is made; it keeps what it has of parameters and media.
// Threads  It stays as it is while graphs are made of it; in a playback, parameters are live beyond
//          that, and so are the mutes of the outermost sequence.
namespace SonaroHost::Sequence
{

struct Description;

// Not 0 while muted.
using MuteSwitch = std::shared_ptr<zorvcore::threads::AtomicIntegral<int>>;

// A piece of a recording.
struct Clip
{
	// What it is cut from.
	std::shared_ptr<Media const> mMedia;
	// The recording's frame that is heard first; also before its start and beyond its end, where silence is.
	std::int64_t mFirstFrame = 0;
	// Channels of the clip from those of the recording, in order, counted from 0; empty for all.
	std::vector<unsigned> mChannels;
};

// A stretch of another sequence, from a time of it on.
struct Nest
{
	// The sequence of which a stretch is heard.
	std::shared_ptr<Description const> mSequence;
	// The time of that sequence which is heard at the item's start.
	SN::TickTime mStart;
};

// A fade from or to silence.
struct Fade
{
	// In the time of the sequence that has the item; for a cut, in that of the angles. 0 for none.
	SN::TickTime mLength;
	// How the gain goes from 0 to 1, or back.
	FadeShape mShape = FadeShape::kLinear;
};

// The index of the angle that is heard, from 0 on, as a person chooses it while a playback runs. Below 0 the cuts decide;
// an index that no angle has is silence.
using AngleSwitch = std::shared_ptr<zorvcore::threads::AtomicIntegral<int>>;

// Sequences that run side by side in one time, one of which is heard at a time: the angles of several cameras. All have the
// same layout. Only what is heard is rendered, but for angles that have to remember: those with effects whose memory goes
// beyond their latency run on, so that their reverberation is theirs when they come back.
struct Multicam
{
	// Where another angle begins to be heard.
	struct Cut
	{
		// In the angles' time: the first frame of the new angle, to the sample.
		SN::TickTime mTime;
		// Index of the new angle.
		std::size_t mAngle = 0;
		// From the cut on, the angle before goes out while this one comes in; up to the next cut at most. Without a
		// length it is a hard cut. Nothing of an angle is heard before its cut.
		Fade mFade;
	};

	// One for each angle, by its index.
	std::vector<std::shared_ptr<Description const>> mAngles;
	// The angles' time that is heard first. There is silence before their time 0.
	SN::TickTime mStart;
	// The angle before the first cut.
	std::size_t mFirstAngle = 0;
	// In the order of time. Of several at one frame, the last one counts.
	std::vector<Cut> mCuts;
	// Empty for the cuts alone. Live in the outermost sequence of a playback: it is read once for each block that is asked of
	// the angles, and a change is a hard cut at the start of the next one, which an item at another speed or with late
	// effects asks for ahead of what is heard. Elsewhere it stays what it was when the graph was made.
	AngleSwitch mSwitch;
};

// What stands on a track. Items of a track are in the order of time and do not overlap.
struct Item
{
	// For messages and reports.
	std::string mName;
	// The first frame that is heard, and the one after the last; not below 0, and at most 50 hours.
	SN::TickTime mStart;
	SN::TickTime mEnd;
	// What is heard of what.
	std::variant<Clip, Nest, Multicam> mContent;
	// The speed of the content, pitch following: 2 is twice as fast, below 0 backwards, the frame that is heard first
	// staying the same. 0 is silence. It stands for the simplest fraction that rounds to it.
	double mSpeed = 1.0;
	// Where it is set, the speed at each time from the item's start on, in place of mSpeed; the pitch follows. The content
	// is always converted by its positions, which stand at the integral of the curve.
	std::shared_ptr<SpeedCurve const> mSpeedCurve;
	// How far after the content's first frame it really begins, in frames of the content, a recording's as the
	// recording has them. It is heard where the content is converted by its positions; elsewhere samples stay whole.
	Ratio mOffset;
	// How a content of another rate or speed becomes samples of the sequence.
	Resampling mResampling = Resampling::kExact;
	// Its channels become those of the track; no sends.
	Chain mChain;
	// Fades within the item, from and to silence. None at an end that a crossfade reaches.
	Fade mFadeIn;
	Fade mFadeOut;
	// What it was made from, for messages: a JSON pointer into a file, for instance; or nothing.
	std::string mOrigin;
};

// Around the cut between an item and the one that follows without a gap. Both go on under it, beyond their
// ends, as far as it reaches.
struct Crossfade
{
	// Index of the item that goes out; the next one comes in.
	std::size_t mOutgoing = 0;
	// How far it reaches to either side of the cut. It stays within the two items, and crossfades do not
	// overlap.
	SN::TickTime mBefore;
	SN::TickTime mAfter;
	// How the gain of each of the two goes, from 1 to 0 and from 0 to 1.
	FadeShape mOutgoingShape = FadeShape::kLinear;
	FadeShape mIncomingShape = FadeShape::kLinear;
};

// Where a track or a submix goes.
struct Output
{
	enum class Kind
	{
		kMaster,
		kSubmix,
		// It is heard through its sends alone.
		kNone,
	};

	// To the sum of the sequence, to a submix, or nowhere.
	Kind mKind = Kind::kMaster;
	// Index, for kSubmix.
	std::size_t mSubmix = 0;
};

// Items one after the other, with what their sum passes through.
struct Track
{
	// For messages and reports; need not differ from others.
	std::string mName;
	// The layout of the items' sound on it.
	SN::AudioChannelLayout mLayout;
	// In the order of time, without overlaps.
	std::vector<Item> mItems;
	// One at a cut at most.
	std::vector<Crossfade> mCrossfades;
	Chain mChain;
	// Empty for a track that is never muted; live in a playback.
	MuteSwitch mMute;
	Output mOutput;
	// The same as that of an item.
	std::string mOrigin;
};

// The sum of what is put out and sent to it.
struct Submix
{
	// For messages and reports.
	std::string mName;
	// The layout of the sum; what comes in is converted to it.
	SN::AudioChannelLayout mLayout;
	Chain mChain;
	// As that of a track.
	MuteSwitch mMute;
	Output mOutput;
	// The same as that of an item.
	std::string mOrigin;
};

// What a sequence sounds like to a listener in its middle.
struct BinauralOutput
{
	// The ears, and the head that may be turned.
	Listener mListener;
	// That of the master, whose channels stand around the listener; see FindField.
	SN::AudioChannelLayout mLayout;
};

// A whole sequence: all that is heard, and in which layout. Its length is that of its items (GetLength); what renders it
// chooses rate and range.
struct Description
{
	// For messages and reports, as in "Scene 4" of what nests it.
	std::string mName;
	// The layout of what comes out of it.
	SN::AudioChannelLayout mLayout;
	// They are heard together, in any order.
	std::vector<Track> mTracks;
	// Their outputs form no circle.
	std::vector<Submix> mSubmixes;
	// No sends and no pan.
	Chain mMaster;
	// What of 5.1 is heard in mono and stereo; without it, the engine's own choice.
	std::optional<SN::AudioChannelMix::MixdownType51> mMixdown;
	// Where it is set, the master has a layout of its own, and mLayout is stereo, for two ears.
	std::optional<BinauralOutput> mBinaural;

	// The layout of the sum, which for a listener is that of the field around the head.
	SN::AudioChannelLayout const& GetMasterLayout() const { return mBinaural ? mBinaural->mLayout : mLayout; }
};

// The sequences within an item, without those that are missing; none for a clip.
std::vector<Description const*> ListSequences(Item const& inItem);
// The time of these that is heard at the item's start; 0 for a clip.
SN::TickTime GetSequenceStart(Item const& inItem);

// Lets a listener hear a sequence whose layout was that of its master.
void HearWithTwoEars(Listener const& inListener, Description& ioDescription);

} // namespace SonaroHost::Sequence
