#pragma once

#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Render/OutputRequest.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Farm
{
class PieceSet;
}

namespace SonaroHost::Otio
{

// How the programme is cut into files.
enum class Stems
{
	// Into one.
	kNone,
	// One for each child of the timeline that is heard. Without limiting and effects of the sum they add up to the mix.
	kTracks,
	// One for each marker, of the mix; a point names all up to the next one.
	kMarkers,
};

// A timeline that is to be rendered into sound files.
struct TimelineRenderRequest : OutputRequest
{
	// The timeline: .otio, .otioz or .otiod.
	std::filesystem::path mInput;
	// The JSON of one in memory; see TimelineInput.
	std::shared_ptr<std::string const> mText;
	// Folders that are searched for media that are not at their own paths, in this order.
	std::vector<std::filesystem::path> mMediaFolders;
	// How it is laid out: rate, layout, speeds, listener.
	TimelineOptions mOptions;
	// The range as FindRange reads it; empty for all.
	std::string mRange;
	// With stems, mOutput is a folder.
	Stems mStems = Stems::kNone;
	// Whether the job's sequence keeps its rows of tracks and clips when it runs, for a report. Measuring tracks keeps
	// them anyway.
	bool mKeepsRows = true;
	// The pieces of a plan of it, which are joined in place of a render; see OpenPieces.
	std::shared_ptr<Farm::PieceSet const> mPieces;
	// Files that the caller reads besides, such as a plan, which no output may replace.
	std::vector<std::filesystem::path> mOtherInputs;
};

} // namespace SonaroHost::Otio
