#pragma once

#include "SonaroHost/Media/MediaFinder.h"
#include "SonaroHost/Otio/TimelineFile.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Sequence/FileMedia.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// Whether a path is one of a timeline: a file that ends in .otio or .otioz, or a bundle, a folder that ends in .otiod.
bool IsTimelinePath(std::filesystem::path const& inPath);

// A timeline with what belongs to it on the disk: where renders, pictures and lists begin.
// Threads: one at a time.
class TimelineInput
{
public:
	// inMediaFolders: where media are looked for that are not in their place. inText: the timeline's JSON where it is in
	// memory and inPath is the name that it goes by; see TimelineFile. Throws a HostError.
	explicit TimelineInput(std::filesystem::path const& inPath,
		std::vector<std::filesystem::path> inMediaFolders = {},
		std::shared_ptr<std::string const> const& inText = nullptr);

	// The timeline; the first one where there are several.
	Timeline const& GetTimeline() const { return mFile.GetDocument().mTimelines.front(); }
	FileMedia const& GetMedia() const { return mMedia; }

	// What no output may replace: media of all timelines in the file, heard or not, and the places where they were
	// looked for.
	std::vector<std::filesystem::path> ListMedia() const;

	TimelineSequence MakeSequence(TimelineOptions const& inOptions = {});

	// Frees the timeline, once it is laid out for the last time: the graph of many clips finds room in its place. From
	// then on there are the media alone.
	void DropTimeline() { mFile.DropDocument(); }

	// Those of the reader, and of what was chosen here.
	std::vector<Note> const& GetNotes() const { return mNotes; }

private:
	std::filesystem::path mPath;
	TimelineFile mFile;
	MediaFinder mFinder;
	FileMedia mMedia;
	std::vector<Note> mNotes;
};

} // namespace SonaroHost::Otio
