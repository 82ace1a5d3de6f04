#pragma once

#include "SonaroHost/AudioFileSource.h"
#include "SonaroHost/HostError.h"
#include "SonaroHost/Sequence/Media.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>

namespace SonaroHost::Otio
{

// The sound files of a timeline as media of a sequence. Each file is one media, whatever the number of clips
// that are cut from it, and each graph opens it once.
//
// Errors   A source gives silence where its file cannot be decoded: whoever renders asks GetFailure after each block.
// Threads  Get, and making graphs: one at a time. GetFailure: the one that made the graphs.
class FileMedia
{
public:
	FileMedia();

	// Looks into the file when it is new. Throws a HostError, the same every time, when it cannot be read.
	std::shared_ptr<Sequence::Media const> Get(std::filesystem::path const& inPath);

	// Why one of the sources that graphs have opened and still hold stopped being decoded; the first one's.
	std::optional<HostError> GetFailure() const;

private:
	struct File
	{
		std::shared_ptr<Sequence::Media const> mMedia;
		// Without media.
		std::optional<HostError> mError;
	};
	class OpenSources;

	std::map<std::filesystem::path, File> mFiles;
	// Shared with the media, which outlive this where a graph does.
	std::shared_ptr<OpenSources> mSources;
};

} // namespace SonaroHost::Otio
