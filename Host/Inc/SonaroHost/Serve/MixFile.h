#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace SonaroHost::Serve
{

// A WAV of known length whose bytes are rendered when they are asked for: those of the file that a render of the same
// timeline writes.
//
// History  Where GetWhyInOneRun is not empty, samples depend on more of what came before than a start can settle. Then the
//          bytes are those of the file as long as they are read from its start on, one after the other; a read elsewhere
//          begins GetWarmUpSeconds earlier, and what effects remember from before that is missing.
// Threads  Any.
class MixFile
{
public:
	using Clock = std::chrono::steady_clock;

	virtual ~MixFile() = default;

	// In bytes.
	virtual std::int64_t GetLength() const = 0;
	// A text that differs for any other timeline, state of its media, choice of tracks and format: letters and digits.
	virtual std::string const& GetTag() const = 0;
	virtual std::string const& GetWhyInOneRun() const = 0;
	virtual double GetWarmUpSeconds() const = 0;

	// Throws the HostError that a former reading of this part met.
	virtual void CheckRange(std::int64_t inOffset, std::int64_t inEnd) const = 0;
	// Up to inMost bytes, one at least, from inOffset on, which is below the length; they end with a frame where more
	// follow. Throws a HostError, or a TooBusyError past the deadline.
	virtual std::string Read(
		std::int64_t inOffset, std::int64_t inMost, Clock::time_point inDeadline) const = 0;
};

// A file that can only be made from its start on, such as FLAC.
// Threads: one at a time.
class MixStream
{
public:
	using Clock = std::chrono::steady_clock;

	virtual ~MixStream() = default;

	// The next bytes; none at the end. Errors as of MixFile.
	virtual std::string Read(Clock::time_point inDeadline) = 0;
};

} // namespace SonaroHost::Serve
