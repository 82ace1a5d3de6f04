#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/DamagedMedia.h"

#include <optional>
#include <vector>

namespace SonaroHost
{

// The media that one graph reads, where several graphs read the same files side by side: each of them has its own.
//
// Lifetime Ends after the graph's. What was found damaged is known to all from then on.
// Threads  That of the graph.
class GraphMedia
{
public:
	virtual ~GraphMedia() = default;

	// Why one of them stopped being decoded, the one that was opened first; nothing while all are.
	virtual std::optional<HostError> FindFailure() const = 0;
	// What of them was found damaged by this graph, until now.
	virtual std::vector<DamagedMedia> ListDamaged() const = 0;
};

} // namespace SonaroHost
