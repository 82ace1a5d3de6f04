#pragma once

#include "SonaroHost/Media/MediaFinder.h"
#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Sequence/FileMedia.h"

#include <filesystem>
#include <set>
#include <string>

namespace SonaroHost::Otio
{

// All media that clips refer to, heard or not, pictures too: the files, and the places where they were looked for
// before.
class MediaList
{
public:
	// Both outlive this object. inFiles: the media that are known by now.
	MediaList(MediaFinder const& inFinder, FileMedia const& inFiles)
		: mFinder(inFinder),
		  mFiles(inFiles)
	{
	}

	void Add(Timeline const& inTimeline);
	std::set<std::filesystem::path> const& GetPaths() const { return mPaths; }

private:
	void Add(std::vector<Composable> const& inChildren);
	void Add(Clip const& inClip);
	// Adds the sound file that is taken for a movie's sound, or the places where one would be.
	void AddSoundOf(std::string const& inUrl);

	MediaFinder const& mFinder;
	FileMedia const& mFiles;
	std::set<std::string> mUrls;
	std::set<std::filesystem::path> mPaths;
};

} // namespace SonaroHost::Otio
