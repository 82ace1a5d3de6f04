#pragma once

#include "SonaroHost/Base/FadeShape.h"
#include "SonaroHost/OtioSequence/ProgrammeTimecode.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// What a picture of a timeline shows. Times are in seconds from the start of the programme.
struct TimelinePicture
{
	// From a time to a later one.
	struct Span
	{
		double mStart = 0.0;
		double mEnd = 0.0;
	};

	enum class BlockKind
	{
		kClip,
		// A nested track or stack, which has a lane of its own.
		kNest,
		// Silent as the timeline wants it.
		kSilent,
		// Its media are missing or end before it.
		kMissing,
	};

	// What stands on a track, as far as it is visible.
	struct Block
	{
		std::string mName;
		// Why it is not heard, or empty.
		std::string mReason;
		Span mSpan;
		BlockKind mKind = BlockKind::kClip;
	};

	// The gain of a fade, or of one side of a crossfade.
	struct Fade
	{
		Span mSpan;
		// The part of it that is visible.
		Span mVisible;
		FadeShape mShape = FadeShape::kLinear;
		bool mIsRising = true;
	};

	// How frames of the sequence that holds a track lie in the programme: frame n at mStart + n * mFrameSeconds.
	struct Clock
	{
		double mStart = 0.0;
		double mFrameSeconds = 0.0;
	};

	// A track, or what stands in a stack by itself.
	struct Lane
	{
		std::string mName;
		// With the names of all that it is nested in.
		std::string mPath;
		// Why it is not heard; empty where it is.
		std::string mWhySilent;
		std::size_t mDepth = 0;
		std::vector<Block> mBlocks;
		std::vector<Fade> mFades;
		// Minimum, maximum and RMS of each column, as a Waveform has them, from the start of the programme to its end.
		// Empty where nothing was heard.
		std::vector<float> mColumns;
		// What a graph's view calls the place where it is heard; empty for the mix, and for what is not heard.
		std::string mOrigin;
		Clock mClock;
	};

	// A marked moment or range.
	struct Marker
	{
		std::string mName;
		std::string mComment;
		// OpenTimelineIO's name of it, such as "RED".
		std::string mColour;
		Span mSpan;
		// Nothing for the timeline's own.
		std::optional<std::size_t> mLane;
	};

	std::string mTitle;
	double mLength = 0.0;
	// The mix, and then all that may be heard in the order of the file.
	std::vector<Lane> mLanes;
	std::vector<Marker> mMarkers;
	// Without it the ruler is in seconds.
	std::optional<Otio::ProgrammeTimecode> mTimecode;
};

// All but the columns, which come from a render: see TimelineWaves.
TimelinePicture MakeTimelinePicture(
	Otio::Timeline const& inTimeline, Otio::TimelineSequence const& inSequence);

} // namespace SonaroHost
