#pragma once

#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Render/WaveformJob.h"
#include "SonaroHost/Waveform/Waveform.h"
#include "SonaroHost/Waveform/WaveformStyle.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace SonaroHost
{

// A timeline whose waveform is wanted, as a picture.
struct TimelineWaveformRequest
{
	std::filesystem::path mInput;
	std::vector<std::filesystem::path> mMediaFolders;
	std::filesystem::path mOutput;
	// A picture.
	WaveformFormat mFormat = WaveformFormat::kPng;
	Otio::TimelineOptions mOptions;
	// Pixels.
	unsigned mWidth = 1200;
	// Without a height of its own a band is 80 pixels high.
	std::optional<unsigned> mHeight;
	WaveformStyle mStyle;
	bool mReplace = true;
};

struct TimelineWaveformSummary
{
	std::int64_t mFrames = 0;
	int mSampleRate = 0;
	unsigned mHeight = 0;
	// The bands from the top down: the mix, and each track as it arrives there.
	std::vector<std::string> mBands;
	double mElapsedSeconds = 0.0;
};

// Draws what is heard of a timeline: a band for the mix and one for each of its tracks that is heard, each with all its
// channels in one. It is rendered once; tracks are seen after their faders, before their pans.
class TimelineWaveformJob
{
public:
	// Opens the timeline and checks the request against it. Throws a HostError.
	explicit TimelineWaveformJob(TimelineWaveformRequest inRequest);

	Otio::TimelineSequence const& GetSequence() const { return mSequence; }
	int GetSampleRate() const { return mSequence.mSampleRate; }

	// The same as that of WaveformJob, on the calling thread.
	std::optional<TimelineWaveformSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	// The height of a picture of so many bands. Throws a HostError when it does not fit them.
	unsigned ChooseHeight(unsigned inBands) const;

	TimelineWaveformRequest mRequest;
	Otio::TimelineInput mInput;
	Otio::TimelineSequence mSequence;
};

} // namespace SonaroHost
