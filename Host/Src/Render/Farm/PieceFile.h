#pragma once

#include "PieceFacts.h"
#include "Render/Piece/Piece.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace SonaroHost::Farm
{

// The file of a piece, read a segment at a time.
//
// Threads  Any.
class PieceFile
{
public:
	// Nothing for a file that is no piece. Throws a HostError that names the file for one that is damaged or not whole.
	static std::optional<PieceFile> Open(std::filesystem::path const& inPath);

	std::filesystem::path const& GetPath() const { return mPath; }
	PieceFacts const& GetFacts() const { return mFacts; }

	// Whether all of its samples and records are as they were written. Reads them.
	bool IsUndamaged() const;
	// Reads a segment into a piece that was cleared. inTaps: which tap of the piece each of the file's is; empty for none
	// at all. Throws a HostError that names the file where it is damaged.
	void Read(std::size_t inSegment, std::vector<std::size_t> const& inTaps, Piece& outPiece) const;

private:
	PieceFile(std::filesystem::path inPath, PieceFacts inFacts);

	std::vector<char> ReadBytes(
		std::int64_t inStart, std::int64_t inCount, std::string const& inDigest) const;

	std::filesystem::path mPath;
	PieceFacts mFacts;
	// Where the samples and the records of each segment start.
	std::vector<std::int64_t> mSamplesStarts;
	std::vector<std::int64_t> mHeardStarts;
};

} // namespace SonaroHost::Farm
