#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/MediaDamage.h"

#include <optional>
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
};

} // namespace SonaroHost
