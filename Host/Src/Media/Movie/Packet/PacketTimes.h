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
	// Rounded, and single ones may be off: those of packets that do not hold whole frames, or that vary in length.
	kLoose,
	// The container has none, so that its packets follow each other: only the first one counts.
	kNone,
};

} // namespace SonaroHost
