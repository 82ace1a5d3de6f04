#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SonaroHost/Offline/LearnedNoise.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

namespace SonaroHost
{

// The media that graphs read: all those of a programme or, where several graphs read the same files side by side, those
// that one of them has for itself.
//
// Lifetime Ends after the graph's. What one graph found damaged is known to all from then on.
// Threads  That of the graph.
class GraphMedia
{
public:
	virtual ~GraphMedia() = default;

	// Why one of them stopped being decoded, the one that was opened first; nothing while all are.
	virtual std::optional<HostError> FindFailure() const = 0;
	// What of them was found damaged until now, by the graph where they are one's own.
	virtual std::vector<DamagedMedia> ListDamaged() const = 0;
	// How many of their frames were silent in a playback until now, since they were not there when they were read.
	virtual std::uint64_t CountUnreadFrames() const { return 0; }

	// Frames of media whose noise is to be reduced and has to be learned first.
	virtual std::int64_t CountFramesToLearn() const { return 0; }
	// Learns them, which otherwise whoever reads them first has to wait for. inReport: called on this thread with the frames
	// that are done. False when asked to stop. Throws a HostError.
	virtual bool LearnNoise(
		std::function<void(std::int64_t)> const& /*inReport*/, std::stop_token const& /*inStop*/) const
	{
		return true;
	}
	// What was learned until now.
	virtual std::vector<LearnedNoise> ListLearnedNoise() const { return {}; }
};

} // namespace SonaroHost
