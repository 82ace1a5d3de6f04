#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Engine/ReadAhead.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SonaroHost/Metering/LoudnessReading.h"
#include "SonaroHost/Offline/LearnedNoise.h"
#include "SonaroHost/Render/Fades.h"
#include "SonaroHost/Sequence/GraphReport.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// A file that a render writes: as planned, and what came of it.
struct RenderedFile
{
	// Where it was written; empty where nothing was.
	std::filesystem::path mPath;
	// The name of the track or marker; empty for the mix.
	std::string mName;
	// The range in the programme.
	ProgrammeRange mRange;
	// The fades at the ends of that range.
	Fades mFades;
	// What a WAV carries as its place in time, in samples since midnight.
	std::optional<std::int64_t> mTimeReference;
	// The peak of the samples before rounding, as far as they are finite where the loudness is measured; linear, 1 being
	// full scale.
	float mPeak = 0.0f;
	// Samples beyond full scale that rounding has clipped.
	std::int64_t mClippedSamples = 0;
	// Samples that are infinite, not a number or above +240 dBFS.
	std::int64_t mImplausibleSamples = 0;
	// The loudness of what was written, where it was measured.
	std::optional<LoudnessReading> mLoudness;
	// The least gain of the limiter; 1 where it had nothing to do.
	double mSmallestLimiterGain = 1.0;
};

// How reading ahead went in a render as playback.
struct PlaybackSummary
{
	ReadAheadReport mReadAhead;
	// Reads that found nothing.
	std::uint64_t mMisses = 0;
	// The inputs' samples that are silent instead.
	std::uint64_t mMissedFrames = 0;
	// Those samples, for each input.
	std::vector<std::uint64_t> mMissedFramesOfInputs;
};

// What a render came to.
struct RenderSummary
{
	// The first file; of a render without stems the only one.
	RenderedFile const& GetFile() const { return mFiles.front(); }
	// The frames of that file.
	std::int64_t GetFrames() const { return GetFile().mRange.mFrames; }

	// Frames a second of all files, in Hz.
	int mSampleRate = 0;
	// The format of all files.
	OutputFormat mFormat;
	// One, or one for each stem.
	std::vector<RenderedFile> mFiles;
	// The reading of the mix in the range, before it is normalized and limited; when it was measured.
	std::optional<LoudnessReading> mMix;
	// Linear; 1 without normalizing.
	double mNormalizingGain = 1.0;
	// How far a limiter keeps the loudness from what was asked for, in LU.
	double mLoudnessError = 0.0;
	// The reading of each row of a timeline's tracks, after its fader; nothing for those that are not heard. What is only
	// rendered for effects to settle does not count.
	std::vector<std::optional<LoudnessReading>> mTracks;
	// The graph of the mix.
	Sequence::GraphReport mGraph;
	// Nothing for a render that was not run as a playback.
	std::optional<PlaybackSummary> mPlayback;
	// The media in which damage was found.
	std::vector<DamagedMedia> mDamaged;
	// The media whose noise was learned, to be reduced.
	std::vector<LearnedNoise> mLearnedNoise;
	// What the render took by the clock.
	double mElapsedSeconds = 0.0;
};

} // namespace SonaroHost
