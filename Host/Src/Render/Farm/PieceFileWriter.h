#pragma once

#include "PieceFacts.h"
#include "Render/Piece/Piece.h"
#include "SonaroHost/Files/OutputFile.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace SonaroHost::Farm
{

// Writes the file of a piece, which appears when it is whole.
//
// Threads  One at a time.
class PieceFileWriter
{
public:
	// inFacts: without segments. Throws a HostError.
	PieceFileWriter(std::filesystem::path const& inPath, PieceFacts inFacts);
	~PieceFileWriter();

	// Appends what was rendered; its failure is thrown after the blocks before it.
	void Take(Piece& ioPiece);
	// How many it has taken.
	std::int64_t GetFrames() const { return mFrames; }
	// Throws a HostError.
	void Commit(
		std::vector<DamagedMedia> inDamaged, std::vector<LearnedNoise> inLearnedNoise, bool inReplaces);

private:
	class HeardWriter;

	void WriteHeader();
	void WriteBlock(dsp::AudioBuffer const& inBlock);
	void WriteHeard();

	OutputFile mFile;
	// What the meters heard, until all samples are written.
	std::unique_ptr<OutputFile> mHeard;
	PieceFacts mFacts;
	std::unique_ptr<TapReplay> mReplay;
	// Those of the segment.
	std::vector<float> mSamples;
	std::vector<char> mRecords;
	std::int64_t mFrames = 0;
	std::int64_t mHeardBytes = 0;
};

} // namespace SonaroHost::Farm
