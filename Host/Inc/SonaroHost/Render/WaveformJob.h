#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Media/Stretch.h"
#include "SonaroHost/Waveform/Waveform.h"
#include "SonaroHost/Waveform/WaveformStyle.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>

namespace SonaroHost
{

class OutputFile;

// Columns in a file of data.
inline constexpr std::int64_t kMaxWaveformColumns = 1 << 24;

enum class WaveformFormat
{
	kPng,
	kSvg,
	// Minima and maxima in version 2 of the format that browsers' peak viewers read, as text or binary.
	kJson,
	kDat,
};

inline bool IsPicture(WaveformFormat inFormat)
{
	return inFormat == WaveformFormat::kPng || inFormat == WaveformFormat::kSvg;
}

enum class WaveformChannels
{
	kStacked,
	kMerged,
};

// A sound file whose waveform is wanted.
struct WaveformRequest
{
	// A sound file or a movie.
	std::filesystem::path mInput;
	// Which audio stream of a movie, from 1; 0 for all, one after the other.
	unsigned mStream = 0;
	std::filesystem::path mOutput;
	WaveformFormat mFormat = WaveformFormat::kPng;
	// In the input, whatever the speed.
	TimePosition mStart;
	// The length, at most to the input's end, which is where it ends without one.
	std::optional<TimePosition> mDuration;
	// How it is heard, as in a render: see ClipRenderRequest.
	double mSpeed = 1.0;
	bool mKeepsPitch = false;
	// By how many semitones the pitch is shifted.
	double mSemitones = 0.0;
	StretchEngine mStretchEngine = kDefaultStretchEngine;
	// One of both at most. A picture is exactly so wide, 1200 pixels without either; data has at most so many
	// columns, of 256 samples without either.
	std::optional<std::int64_t> mWidth;
	std::optional<std::int64_t> mSamplesPerColumn;
	WaveformChannels mChannels = WaveformChannels::kStacked;
	// The style of pictures.
	WaveformStyle mStyle;
	// Bits of a value in data: 8 or 16.
	int mBits = 16;
	// Whether an older file of the output's name may be replaced.
	bool mReplace = true;
};

// What a waveform came to.
struct WaveformSummary
{
	// What it shows, in frames of mSampleRate, which is in Hz.
	std::int64_t mFrames = 0;
	int mSampleRate = 0;
	// The size of the output; a picture's columns are its pixels.
	std::size_t mChannels = 0;
	std::int64_t mColumns = 0;
	// An average, in a picture.
	double mSamplesPerColumn = 0.0;
	double mElapsedSeconds = 0.0;
};

// Draws or writes the waveform of a sound file.
class WaveformJob
{
public:
	// Opens the input and checks the request against it. Throws a HostError.
	explicit WaveformJob(WaveformRequest inRequest);

	AudioFileInfo const& GetInputInfo() const { return mSource->GetInfo(); }

	// Computes on the engine's waveform thread, whose queue must not be paused for good, and calls inProgress on
	// the calling one, another one, every now and then. Nothing when asked to stop, or throwing a HostError: then
	// there is no output, and a file that was there before stays. To be called once.
	std::optional<WaveformSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	// Opens the input as it is heard.
	void Open();
	void ChooseColumns();
	SN::InterfaceRef<SN::IAudioGenerator> MakeStream(
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext) const;
	// False when asked to stop.
	bool Compute(ProgressCallback const& inProgress, std::stop_token const& inStop);
	void Write(OutputFile& ioFile) const;

	WaveformRequest mRequest;
	SN::InterfaceRef<AudioFileSource> mSource;
	// The range in what is heard of the input.
	std::int64_t mFirstFrame = 0;
	std::int64_t mFrames = 0;
	// The columns of the output.
	std::int64_t mColumns = 0;
	// The waveform as it is computed: for a picture finer than its pixels, if possible.
	Waveform mWaveform;
};

} // namespace SonaroHost
