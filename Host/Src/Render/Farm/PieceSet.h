#pragma once

#include "PieceFile.h"
#include "SonaroHost/Media/GraphMedia.h"
#include "SonaroHost/Render/FarmPlan.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Farm
{

// All pieces of a plan, in order, as one row of segments.
//
// Threads  Any.
class PieceSet
{
public:
	// inPaths: files, and folders in which all files are looked at. What belongs to another plan is left alone; of several
	// files of one piece the first that is undamaged counts. Throws a HostError that names pieces that are missing, and files
	// that are damaged or of other plans.
	PieceSet(FarmPlan const& inPlan, std::vector<std::filesystem::path> const& inPaths);

	ProgrammeRange const& GetRange() const { return mRange; }
	// All files of pieces of the plan that were found.
	std::vector<std::filesystem::path> const& GetPaths() const { return mPaths; }
	std::size_t CountSegments() const { return mSegments.size(); }
	// The tracks whose meters' hearings the pieces carry, by their origins.
	std::vector<std::string> const& GetTaps() const { return mFiles.front().GetFacts().mTaps; }

	// See PieceFile.
	void Read(std::size_t inSegment, std::vector<std::size_t> const& inTaps, Piece& outPiece) const;
	// The frames of the largest segment.
	std::int64_t GetMostFrames() const;

	// What renders of the pieces found of media.
	std::vector<DamagedMedia> ListDamaged() const;
	std::vector<LearnedNoise> const& ListLearnedNoise() const
	{
		return mFiles.front().GetFacts().mLearnedNoise;
	}

private:
	struct Place
	{
		std::size_t mFile = 0;
		std::size_t mSegment = 0;
	};

	ProgrammeRange mRange;
	// In the order of the plan.
	std::vector<PieceFile> mFiles;
	std::vector<std::filesystem::path> mPaths;
	std::vector<Place> mSegments;
};

// What the pieces found of media, for a programme that reads none itself.
class StoredMedia final : public GraphMedia
{
public:
	explicit StoredMedia(std::shared_ptr<PieceSet const> inPieces)
		: mPieces(std::move(inPieces))
	{
	}

	std::optional<HostError> FindFailure() const override { return std::nullopt; }
	std::vector<DamagedMedia> ListDamaged() const override { return mPieces->ListDamaged(); }
	std::vector<LearnedNoise> ListLearnedNoise() const override { return mPieces->ListLearnedNoise(); }

private:
	std::shared_ptr<PieceSet const> mPieces;
};

} // namespace SonaroHost::Farm
