#pragma once

#include "SonaroHost/Binaural/Listener.h"
#include "SonaroHost/Media/Stretch.h"
#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Otio/Note.h"
#include "SonaroHost/OtioSequence/TimelineReport.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// How a timeline is laid out; the options of the command of these names.
struct TimelineOptions
{
	// The rate. Without one it is that of the most clips' media, and 48000 where there are none.
	std::optional<int> mSampleRate;
	// The layout. Without one it is the timeline's own, and stereo where it names none, unless all that is heard is mono.
	std::optional<SN::AudioChannelLayout> mLayout;
	// The shape of transitions and fades that name none.
	FadeShape mFadeShape = FadeShape::kEqualPower;
	// Of clips and nested sequences at other rates and speeds.
	Sequence::Resampling mResampling = Sequence::Resampling::kExact;
	// Whether clips at other speeds keep their pitch where their time warps do not say so.
	bool mKeepsPitch = false;
	StretchEngine mStretchEngine = kDefaultStretchEngine;
	// Who hears the mix with two ears, so that the output is stereo and mLayout that of the mix around the listener: without
	// one the timeline's own, and the widest of what is heard where it names none.
	std::optional<Listener> mListener;
	// Whether a person can switch the angles of multicam stacks in a playback, which then reads all of them ahead.
	bool mCanSwitchAngles = false;
};

// A timeline as a sequence that a graph can be made of, and what is to be reported about it.
struct TimelineSequence
{
	// The timeline's, for messages; empty where it is from none.
	std::filesystem::path mFile;
	// The place of its stack, a JSON pointer.
	std::string mPlace;
	// The rate at which mDescription is to be rendered: its times are whole frames of this rate.
	int mSampleRate = 48000;
	std::shared_ptr<Sequence::Description const> mDescription;
	// The layout of the programme; that of the mix before a listener's ears is in mDescription.
	SN::AudioChannelLayout mLayout;
	// The programme's first frame within the description. What else this holds is cut away by the timeline.
	std::int64_t mFirstFrame = 0;
	// How many frames the programme has.
	std::int64_t mFrames = 0;
	// Its exact length is above 0, even where it has no frame.
	bool mHasLength = false;

	// Why nothing of the programme is heard, such as "2 tracks of kind Video, none of kind Audio". Empty where a clip is
	// heard, or would be if its media were there; one that its gain alone makes silent counts as heard.
	std::string mWhySilent;

	// The label of frame 0, in seconds, and the rate in which the timeline gives it.
	std::optional<Ratio> mGlobalStart;
	double mGlobalStartRate = 0.0;

	// The rows in the order of the file.
	std::vector<ClipRow> mClips;
	std::vector<TrackRow> mTracks;
	// In the order of their first frames; those of a stack before those of stacks within it.
	std::vector<AngleRow> mAngles;
	// By the places of multicam stacks, where angles can be switched: below 0 until somebody does. Those of stacks that are the
	// timeline's own, or that stand right on its tracks, are live in a playback; see Sequence::Multicam.
	std::map<std::string, Sequence::AngleSwitch> mAngleSwitches;
	// The markers in the order of time.
	std::vector<MarkerRow> mMarkers;
	std::vector<MissingMedia> mMissing;
	// The notes of laying out, without those of the reader.
	std::vector<Note> mNotes;
};

// Frees the rows of tracks, clips and angles: of many clips they take as much memory as a graph.
void DropRows(TimelineSequence& ioSequence);

// The notes of effects that are not heard since their plugins are missing.
std::vector<Note> ListMissingEffects(std::vector<Note> const& inNotes);

// Why the programme is not as the timeline means it: whether a note reports something that was guessed or ignored.
bool HasGuesses(std::vector<Note> const& inNotes);

} // namespace SonaroHost::Otio
