#pragma once

#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Picture/TimelinePicture.h"
#include "SonaroHost/Render/WaveformJob.h"
#include "SonaroHost/Waveform/WaveformStyle.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace SonaroHost
{

// A timeline whose waveform is wanted, as a picture.
struct TimelineWaveformRequest
{
	// The timeline: .otio, .otioz or .otiod.
	std::filesystem::path mInput;
	// The JSON of one in memory; see TimelineInput.
	std::shared_ptr<std::string const> mText;
	std::vector<std::filesystem::path> mMediaFolders;
	// Where the picture is written.
	std::filesystem::path mOutput;
	// A picture.
	WaveformFormat mFormat = WaveformFormat::kPng;
	Otio::TimelineOptions mOptions;
	// Pixels.
	unsigned mWidth = 1200;
	// Without a height it grows with the bands, which are 28 to 80 pixels high.
	std::optional<unsigned> mHeight;
	WaveformStyle mStyle;
	// Whether a file that is there is replaced.
	bool mReplace = true;
};

// What a picture of a timeline came to.
struct TimelineWaveformSummary
{
	// The programme, in frames of mSampleRate, which is in Hz.
	std::int64_t mFrames = 0;
	int mSampleRate = 0;
	// In pixels.
	unsigned mHeight = 0;
	// The bands from the top down: the mix, and each track, with why it is not heard.
	std::vector<std::string> mBands;
	double mElapsedSeconds = 0.0;
};

// Draws a timeline: a band for the mix and one for each of its tracks, nested ones too, each with all its channels in
// one, below a ruler and markers. It is rendered once; tracks are seen after their faders, before their pans.
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
	// Renders the programme and hands the waves to the picture; false when asked to stop.
	bool Hear(TimelinePicture& ioPicture, bool inSearchesLatency, ProgressCallback const& inProgress,
		std::stop_token const& inStop);

	TimelineWaveformRequest mRequest;
	Otio::TimelineInput mInput;
	Otio::TimelineSequence mSequence;
};

} // namespace SonaroHost
