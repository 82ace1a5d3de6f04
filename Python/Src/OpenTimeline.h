#pragma once

#include "SonaroHost/Serve/ServedTimeline.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace SonaroPython
{

// A timeline that samples are read of, at any place and in any order: those of the file that the command writes.
//
// Options  Those of "sonaro render" that say how a timeline is laid out, as command-line arguments.
// Threads  Any, without the interpreter's lock.
class OpenTimeline
{
public:
	struct Settings
	{
		std::string mPath;
		// Null for a timeline that is read from the path.
		std::shared_ptr<std::string const> mText;
		std::vector<std::string> mArguments;
		// How many read at once.
		unsigned mReaders = 1;
		// Below 0: from the start of the programme on. See ServeRequest.
		double mWarmUpSeconds = -1.0;
	};

	// Throws a HostError.
	explicit OpenTimeline(Settings const& inSettings);

	unsigned GetNumChannels() const;
	// Programme, tracks, clips, markers, missing media and notes, as the command's report has them.
	std::string DescribeAsJson() const;
	// inTrack: the number of the outermost track that is heard alone, from 1 on; 0 for the mix. See ServedTimeline::Read.
	void Read(std::int64_t inFirst, std::int64_t inFrames, unsigned inTrack,
		std::span<float* const> outChannels, std::function<void()> const& inAfterBlock);

private:
	SonaroHost::Serve::ServedTimeline mTimeline;
};

} // namespace SonaroPython
