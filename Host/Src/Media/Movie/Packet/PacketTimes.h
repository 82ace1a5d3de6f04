#pragma once

namespace SonaroHost
{

// How exactly the timestamps of a stream say where its packets are.
enum class PacketTimes
{
	// To the tick: sound that can be cut anywhere, as PCM, may have gaps of any length.
	kExact,
	// Rounded by one who wrote them; the packets of a codec with a fixed length follow each other.
	kRounded,
	// Those of packets that do not hold whole frames.
	kLoose,
};

} // namespace SonaroHost
