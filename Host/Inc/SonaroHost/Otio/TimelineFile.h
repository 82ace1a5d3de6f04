#pragma once

#include "SonaroHost/Otio/Reader.h"

#include <filesystem>
#include <memory>
#include <string>

namespace SonaroHost
{
class TemporaryFolder;
}

namespace SonaroHost::Otio
{

// A timeline as it lies on the disk: a bare .otio file; an .otiod bundle, a folder with "content.otio" and
// "media/"; or an .otioz bundle, the same in a zip archive, whose media are unpacked into a temporary folder that
// lives as long as this.
class TimelineFile
{
public:
	// Throws a HostError of kind kInput that says what is wrong with the file, or kOutput when there is no room to
	// unpack it.
	explicit TimelineFile(std::filesystem::path const& inPath);
	// One in memory, the JSON of an .otio file. inPath: where it would lie, from which relative media count and by which
	// messages call it; nothing is read there.
	TimelineFile(std::filesystem::path const& inPath, std::string const& inText);
	~TimelineFile();
	TimelineFile(TimelineFile&&) noexcept;
	TimelineFile& operator=(TimelineFile&&) noexcept;

	Document const& GetDocument() const { return mDocument; }
	// Frees it; what was unpacked stays.
	void DropDocument() { mDocument = Document(); }
	// The folder from which relative media count.
	std::filesystem::path const& GetFolder() const { return mFolder; }
	// What the folder is called before people: the archive, where it was unpacked.
	std::filesystem::path const& GetShownFolder() const { return mShownFolder; }

private:
	std::unique_ptr<TemporaryFolder> mUnpacked;
	std::filesystem::path mFolder;
	std::filesystem::path mShownFolder;
	Document mDocument;
};

} // namespace SonaroHost::Otio
