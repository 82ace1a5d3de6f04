#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Offline/Denoise.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// What became of the parts of a timeline, for people. Frames are those of the render's rate, counted from the start
// of the programme: frame 0 is heard first. Places are JSON pointers into the file.
namespace SonaroHost::Otio
{

// How a clip whose own speed changes passes its media, in what is visible of it.
struct RampRow
{
	// A second of the media, counted from the file's first sample, and the frame at which it is heard.
	struct Moment
	{
		std::int64_t mSecond = 0;
		std::int64_t mFrame = 0;
	};

	// The way through the media from the first moment to the last, the integral of the speed, in seconds: as a whole number
	// or a fraction, "45/8", and rounded.
	std::string mExactSeconds;
	double mSeconds = 0.0;
	double mLowestSpeed = 1.0;
	double mHighestSpeed = 1.0;
	// The multiples of so many seconds that are heard, in the order in which they are: 1 where there are at most 600.
	std::int64_t mStepSeconds = 1;
	std::vector<Moment> mMoments;
};

// A clip that stands on an audio track.
struct ClipRow
{
	enum class Status
	{
		kHeard,
		// Silent on purpose: disabled, muted, frozen, cut away by what it is nested in ...
		kSilent,
		// Its media cannot be found or read.
		kMissing,
		// Its media are there, and all that it asks for lies outside of them.
		kOutside,
	};

	Status mStatus = Status::kHeard;
	// Why it is not heard.
	std::string mReason;
	std::string mName;
	// The tracks and stacks that it stands in, outermost first, as "Dialogue / Scene 4 / Boom".
	std::string mTrack;
	std::string mPlace;

	// The frames in which it is visible through what it is nested in; without what crossfades add to it.
	std::int64_t mFirstFrame = 0;
	std::int64_t mEndFrame = 0;

	// Empty where there is none.
	std::filesystem::path mMedia;
	// Samples a second of the media.
	int mMediaRate = 0;
	// The part of the media that sounds meanwhile, in its samples, counted from the file's first one;
	// the smaller one first, also where it is read backwards. Beyond either end of the file is silence.
	std::int64_t mFirstMediaSample = 0;
	std::int64_t mEndMediaSample = 0;
	// All time warps together: media time that passes in a second of the programme's; the mean where that changes.
	double mSpeed = 1.0;
	// Whether it changes, by a ramp of its own or of what it is nested in.
	bool mHasChangingSpeed = false;
	std::optional<RampRow> mRamp;
	// Whether a time warp of its own leaves its pitch as it is.
	bool mKeepsPitch = false;
	// By how much its pitch is shifted besides.
	double mSemitones = 0.0;
	// How the noise of its media is reduced.
	std::optional<Denoise> mDenoise;
};

// A track, a nested stack or track, or a clip that stands in a stack by itself.
struct TrackRow
{
	bool mIsHeard = true;
	// Why it is not.
	std::string mReason;
	std::string mName;
	std::string mTrack;
	std::string mPlace;
	// Which child it is of the stack that it stands in. 0 on a track.
	std::size_t mIndex = 0;
	// How many compositions stand around it below the timeline's own stack; 0 for those of the timeline itself.
	std::size_t mDepth = 0;
	SN::AudioChannelLayout mLayout;
	// Whether a meter can hear it: a track or an item of the description has mPlace as its mOrigin. A track without items
	// has none.
	bool mIsMeasured = false;
	// Whether it is of a kind that can be heard; tracks of video are not.
	bool mIsAudio = true;
};

// A stretch of the programme in which one of the angles of a multicam stack is heard, crossfades to the stack and from it
// included. Those of one stack do not overlap: while a cut fades, the new angle counts. Those of stacks that are heard
// together do, and so do those of a stack within an angle and the angle's.
struct AngleRow
{
	// Its number, from 1 on.
	std::size_t mAngle = 0;
	std::string mName;
	// The stack, with the tracks and stacks that it stands in, outermost first; empty for the timeline's own.
	std::string mTrack;
	// Of the angle.
	std::string mPlace;
	// A time at which the content of the stack passes a cut is brought to the nearest frame, halves up.
	std::int64_t mFirstFrame = 0;
	std::int64_t mEndFrame = 0;
};

// What a clip is without, against the timeline's will: all of its media, or the part that it asks for.
struct MissingMedia
{
	std::string mClip;
	std::string mTrack;
	std::string mPlace;
	// The media; where there are none, the place where they were looked for first; empty for a clip without a
	// reference to a file.
	std::filesystem::path mPath;
	std::string mReason;
};

// A marker of anything that is heard, where it falls into what is visible of that.
struct MarkerRow
{
	std::string mName;
	std::string mComment;
	// The track with the item that carries it.
	std::string mTrack;
	std::string mPlace;
	// Exact, in seconds from the start of the programme. The end is cut off where the item ends.
	Ratio mStart;
	Ratio mEnd;
	// OpenTimelineIO's name of its colour, such as "RED"; empty for none.
	std::string mColour;
};

} // namespace SonaroHost::Otio
