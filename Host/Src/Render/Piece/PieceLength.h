#pragma once

#include <cstdint>

namespace SonaroHost
{

// The length of the pieces that threads render, for tests that cut where no render would.
//
// Threads  Set while no job is made.
class PieceLength
{
public:
	// The length while it lives, in frames, at least 1; rounded up to whole blocks.
	explicit PieceLength(std::int64_t inFrames) { sForTests = inFrames; }
	~PieceLength() { sForTests = 0; }
	PieceLength(PieceLength const&) = delete;
	PieceLength& operator=(PieceLength const&) = delete;

	// 0 for those that suit.
	static std::int64_t GetForTests() { return sForTests; }

private:
	inline static std::int64_t sForTests = 0;
};

} // namespace SonaroHost
