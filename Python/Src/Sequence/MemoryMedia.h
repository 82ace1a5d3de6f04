#pragma once

#include "Samples.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Sequence/Media.h"

#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// What was thrown by media that are functions of Python, the first of it.
// Threads: any.
class MediaFailures
{
public:
	void Keep(std::string const& inMedia, std::string const& inReason, std::exception_ptr inException);
	std::optional<SonaroHost::HostError> Find() const;
	// The exception itself, which is then forgotten; null for none.
	std::exception_ptr Take();

private:
	mutable std::mutex mMutex;
	std::optional<SonaroHost::HostError> mError;
	std::exception_ptr mException;
};

// What media have that are no files.
struct MediaFacts
{
	std::string mName;
	double mSampleRate = 48000.0;
	std::string mLayout;
	std::int64_t mFrames = 0;
};

// A recording that is an array. The array stays as it is as long as the result lives.
std::shared_ptr<SonaroHost::Sequence::Media const> MakeArrayMedia(
	SampleArray const& inSamples, MediaFacts const& inFacts);

// A recording that is a function of the first frame and a number of frames, both within the recording. It returns samples
// of the shape (channels, frames), the same for a frame whenever it is asked for it. It is called on any thread.
std::shared_ptr<SonaroHost::Sequence::Media const> MakeFunctionMedia(pybind11::function const& inFunction,
	MediaFacts const& inFacts, std::shared_ptr<MediaFailures> inFailures);

} // namespace SonaroPython
