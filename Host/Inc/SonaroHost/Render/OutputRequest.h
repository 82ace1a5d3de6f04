#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/TimePosition.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace SonaroHost
{

// The largest block that a render may be asked for, in frames.
inline constexpr unsigned kMaxBlockFrames = 262144;

// The most threads that a render may be asked for.
inline constexpr unsigned kMostJobs = 256;

// What a whole render is brought to, once everything is mixed.
struct OutputLevels
{
	// The integrated loudness of the mix in the range, in LUFS, -70 to 0. Stems get the gain of the mix. Not together
	// with a gain for the whole, which it would undo.
	std::optional<double> mNormalizeLoudness;
	// The highest true peak of each file, in dBTP, -60 to 20.
	std::optional<double> mLimitDecibels;

	// Whether samples pass as they are.
	bool IsNone() const { return !mNormalizeLoudness && !mLimitDecibels; }
};

// What is measured. All tracks together take about as long as a render itself.
enum class Measuring
{
	kNothing,
	// Loudness and true peak of what is written.
	kOutput,
	// The mix is measured, and each track and nested sequence as well.
	kTracks,
};

// How far a render goes on beyond the end of its programme, where effects are still heard.
struct Tail
{
	// Without one, until all is below -90 dBFS for two seconds, at most 30 seconds; that takes a pass more.
	std::optional<TimePosition> mLength;
};

// What every render is asked, of sound files and of timelines: where it goes, as what, and how loud.
struct OutputRequest
{
	// A file, or "-" for the standard output; of stems the folder, which is made where there is none, with the folders
	// above it. Empty where nothing is written and only the mix is measured.
	std::filesystem::path mOutput;
	// What the caller writes besides, such as a report: checked together with the outputs.
	std::vector<std::filesystem::path> mOtherOutputs;
	// Whether older files of the outputs' names may be replaced, the other outputs' too.
	bool mReplace = true;
	OutputContainer mContainer = OutputContainer::kWav;
	// Without these, GetDefaultSamples and ChooseDither decide.
	std::optional<OutputSamples> mSamples;
	std::optional<Dither> mDither;

	// Linear, of each file alike; at 1, samples pass bit for bit.
	float mGain = 1.0f;
	// Times of the fades from silence at the start of each file and to silence at its end; together at most as long as
	// the file.
	std::optional<TimePosition> mFadeIn;
	std::optional<TimePosition> mFadeOut;
	// Of all files that end with the programme. Without it they end there.
	std::optional<Tail> mTail;
	OutputLevels mLevels;
	Measuring mMeasuring = Measuring::kNothing;
	// Whether readings have their series: the loudness over time, in 144 kB for an hour of each.
	bool mKeepsSeries = false;
	// More costs memory and gains nothing.
	unsigned mBlockFrames = 4096;
	// How many threads render, at most, the calling one among them, 1 to kMostJobs. The files and the summary are the same
	// for any number. Each thread has a graph of the programme, opens its media, and needs room for some pieces of it:
	// where memory, the limit of open files or a short programme does not allow so many, there are fewer. What can only be
	// decoded from its start, such as MP3, is decoded once, into a nameless temporary file. A playback has one thread.
	unsigned mJobs = 1;
	// Whether a medium in which damage is found fails the render; otherwise there is silence in its place.
	bool mRefusesDamage = false;
};

// Throws a HostError for a number that is out of range, or levels that contradict each other.
void CheckNumbers(OutputRequest const& inRequest);

// The samples that are written, dithered as asked for or, without a wish, where they need it. Throws a HostError for a
// dither of floats.
OutputFormat ChooseFormat(OutputRequest const& inRequest, Dither inNeeded);

// The samples that are asked for or usual.
OutputSamples ChooseSamples(OutputRequest const& inRequest);

} // namespace SonaroHost
