#pragma once

#include <filesystem>
#include <vector>

namespace SonaroHost
{

// What a run writes and what it must not touch: checked before anything is opened for writing, so that no render,
// picture or report destroys what somebody needs. Files are told apart by what they are, through links and other
// spellings of their paths. "-" is the standard output, also where that is a file.
struct OutputPlan
{
	// Throws a HostError that names the output, and why it cannot be written there:
	//   kind kRequest  It is an input, a medium, the place where a medium is looked for, a folder above one, part of a
	//                  bundle, another timeline, or another output.
	//   kind kOutput   It is there and may not be replaced; or it has no folder, or is one.
	void Check() const;

	// Files, written each as a whole.
	std::vector<std::filesystem::path> mFiles;
	// That is made for them with the folders above it, where there is none. Empty for none.
	std::filesystem::path mFolder;
	// Sound files, timelines, bundles.
	std::vector<std::filesystem::path> mInputs;
	// A timeline's media: files that are there, and places where files are looked for.
	std::vector<std::filesystem::path> mMedia;
	// Whether older files may be replaced.
	bool mReplaces = true;
};

} // namespace SonaroHost
