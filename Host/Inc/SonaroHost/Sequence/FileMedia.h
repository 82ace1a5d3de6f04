#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Sequence/Media.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>

namespace SonaroHost
{

// Sound files as media of sequences. Each file is one media, whatever the number of clips
// that are cut from it, and each graph opens it once.
//
// Errors   A source gives silence where its file cannot be decoded: whoever renders asks GetFailure after each block.
// Threads  Get, and making graphs: one at a time. GetFailure: the one that made the graphs.
class FileMedia
{
public:
	FileMedia();

	// Looks into the file when it is new. Throws a HostError, the same every time, when it cannot be read.
	// inShownPath: what people call it, as messages do.
	std::shared_ptr<Sequence::Media const> Get(
		std::filesystem::path const& inPath, std::filesystem::path const& inShownPath);

	// What the file is, by the path that people call it; null for one that is not there or cannot be read.
	AudioFileInfo const* FindInfo(std::filesystem::path const& inShownPath) const;

	// Why one of the sources that graphs have opened and still hold stopped being decoded; the first one's.
	std::optional<HostError> GetFailure() const;

private:
	struct File
	{
		std::shared_ptr<Sequence::Media const> mMedia;
		// Its path is the one for people.
		AudioFileInfo mInfo;
		// Why there are no media.
		std::optional<HostError> mError;
	};
	class OpenSources;

	HostError NameAsShown(HostError const& inError) const;

	std::map<std::filesystem::path, File> mFiles;
	// Files by the path for people.
	std::map<std::filesystem::path, File const*> mShownFiles;
	// Shared with the media, which outlive this where a graph does.
	std::shared_ptr<OpenSources> mSources;
};

} // namespace SonaroHost
