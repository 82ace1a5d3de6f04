#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Engine/ReadAhead.h"
#include "SonaroHost/Media/DamagedMedia.h"
#include "SonaroHost/Metering/LoudnessReading.h"
#include "SonaroHost/Render/RenderedFile.h"
#include "SonaroHost/Sequence/GraphReport.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace SonaroHost
{

// How reading ahead went in a render as playback.
struct PlaybackSummary
{
	ReadAheadReport mReadAhead;
	// Reads that found nothing, and the inputs' samples that are silent instead.
	std::uint64_t mMisses = 0;
	std::uint64_t mMissedFrames = 0;
	// Those samples, for each input.
	std::vector<std::uint64_t> mMissedFramesOfInputs;
};

// What a render came to.
struct RenderSummary
{
	// The first file; of a render without stems the only one.
	RenderedFile const& GetFile() const { return mFiles.front(); }
	std::int64_t GetFrames() const { return GetFile().mRange.mFrames; }

	int mSampleRate = 0;
	OutputFormat mFormat;
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
	std::optional<PlaybackSummary> mPlayback;
	// The media in which damage was found.
	std::vector<DamagedMedia> mDamaged;
	// What the render took by the clock.
	double mElapsedSeconds = 0.0;
};

} // namespace SonaroHost
