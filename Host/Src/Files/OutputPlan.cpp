#include "SonaroHost/Files/OutputPlan.h"

#include "FilePlace.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/StandardStreams.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace SonaroHost
{

namespace
{

// The timeline of a bundle.
constexpr char const* kContent = "content.otio";
constexpr char const* kRemedy = "; choose another name";

struct Output
{
	// The name for messages: "the output" and its path in quotes, or "the standard output".
	std::string mName;
	std::filesystem::path mPath;
	FilePlace mPlace;
	bool mIsFolder = false;
};

[[noreturn]] void RefuseOne(Output const& inOutput, std::string const& inWhy)
{
	Refuse(inOutput.mName + " " + inWhy);
}

// Where a path leads. A standard stream leads somewhere only where it is a file: others, such as a terminal, may well
// be input and output at once.
std::optional<std::filesystem::path> FindFile(std::filesystem::path const& inPath, std::FILE* inStream)
{
	if (!IsStandardStream(inPath))
	{
		return inPath;
	}
	std::filesystem::path const file = GetPathOfOpenFile(inStream);
	std::error_code error;
	return std::filesystem::is_regular_file(file, error) ? std::optional(file) : std::nullopt;
}

bool IsBundle(std::filesystem::path const& inFolder)
{
	std::error_code error;
	return GetLowerEnding(inFolder) == ".otiod" && std::filesystem::exists(inFolder / kContent, error);
}

void CheckBundle(Output const& inOutput)
{
	std::error_code error;
	std::filesystem::path folder = std::filesystem::weakly_canonical(
		std::filesystem::absolute(FollowLinks(inOutput.mPath), error), error);
	for (; folder != folder.parent_path(); folder = folder.parent_path())
	{
		if (IsBundle(folder))
		{
			RefuseOne(inOutput,
				"is inside the bundle " + QuotePath(folder) + " and would change it; write it elsewhere");
		}
	}
}

void CheckTimeline(Output const& inOutput)
{
	std::string const ending = GetLowerEnding(FollowLinks(inOutput.mPath));
	if (!inOutput.mIsFolder && inOutput.mPlace.IsThere() && (ending == ".otio" || ending == ".otioz"))
	{
		RefuseOne(inOutput, std::string("would replace a timeline") + kRemedy);
	}
}

void CheckInput(Output const& inOutput, std::filesystem::path const& inInput, FilePlace const& inPlace)
{
	if (inOutput.mPlace.IsSame(inPlace) || inOutput.mPlace.IsSame(FilePlace(inInput / kContent)))
	{
		RefuseOne(inOutput, std::string("is the input itself") + kRemedy);
	}
	std::error_code error;
	if (std::filesystem::is_directory(inInput, error) && inOutput.mPlace.IsWithin(inPlace))
	{
		RefuseOne(inOutput, "is inside the input " + QuoteInput(inInput) + "; write it elsewhere");
	}
}

void CheckMedium(Output const& inOutput, std::filesystem::path const& inMedium, FilePlace const& inPlace)
{
	// A name that is alike would be taken for the medium the next time.
	if (inOutput.mPlace.IsSame(inPlace) || inOutput.mPlace.IsAlike(inPlace))
	{
		RefuseOne(inOutput, (inPlace.IsThere() ? "is a media file of the timeline, "
											   : "is where a media file of the timeline is expected, ") +
								QuotePath(inMedium) + kRemedy);
	}
	if (!inOutput.mIsFolder && !inOutput.mPlace.IsThere() && inPlace.IsWithin(inOutput.mPlace))
	{
		RefuseOne(inOutput, "has the name of a folder in which a media file of the timeline is expected, " +
								QuotePath(inMedium) + kRemedy);
	}
}

void CheckOther(Output const& inOutput, Output const& inOther)
{
	if (inOutput.mPlace.IsSame(inOther.mPlace))
	{
		RefuseOne(inOutput, "is the same file as " + inOther.mName + kRemedy);
	}
	for (auto const& [file, other] : {std::pair(&inOutput, &inOther), std::pair(&inOther, &inOutput)})
	{
		if (!file->mIsFolder && !file->mPlace.IsThere() && other->mPlace.IsWithin(file->mPlace))
		{
			RefuseOne(*file, "has the name of a folder of " + other->mName + kRemedy);
		}
	}
}

// Whether a folder is made for the run.
bool IsMade(std::filesystem::path const& inFolder, FilePlace const& inMade)
{
	FilePlace const folder(inFolder.empty() ? "." : inFolder);
	return !folder.IsThere() && (folder.IsSame(inMade) || inMade.IsWithin(folder));
}

std::vector<Output> FindOutputs(OutputPlan const& inPlan)
{
	std::vector<Output> outputs;
	bool isStreamTaken = false;
	for (std::filesystem::path const& path : inPlan.mFiles)
	{
		bool const isStream = IsStandardStream(path);
		if (isStream && isStreamTaken)
		{
			Refuse("only one output can go to the standard output; give the others file names");
		}
		isStreamTaken = isStreamTaken || isStream;
		if (auto const file = FindFile(path, stdout))
		{
			outputs.push_back({(isStream ? "" : "the output ") + QuoteOutput(path), *file, FilePlace(*file)});
		}
	}
	if (!inPlan.mFolder.empty())
	{
		constexpr bool kIsFolder = true;
		outputs.push_back({"the output " + QuotePath(inPlan.mFolder), inPlan.mFolder,
			FilePlace(inPlan.mFolder), kIsFolder});
	}
	return outputs;
}

// That the files can be made there.
void CheckPlaces(OutputPlan const& inPlan)
{
	std::error_code error;
	if (std::filesystem::exists(inPlan.mFolder, error) &&
		!std::filesystem::is_directory(inPlan.mFolder, error))
	{
		RefuseOutput("cannot create the folder " + QuotePath(inPlan.mFolder) +
					 ": a file has that name; choose another name");
	}
	FilePlace const folder(inPlan.mFolder);
	for (std::filesystem::path const& path : inPlan.mFiles)
	{
		if (IsStandardStream(path))
		{
			continue;
		}
		if (!inPlan.mReplaces && std::filesystem::exists(path, error))
		{
			RefuseOutput("cannot write " + QuotePath(path) +
						 ": it already exists; remove it, choose another name or allow overwriting");
		}
		if (inPlan.mFolder.empty() || !IsMade(FollowLinks(path).parent_path(), folder))
		{
			CheckPlace(path);
		}
	}
}

} // namespace

void OutputPlan::Check() const
{
	std::vector<Output> const outputs = FindOutputs(*this);
	for (std::filesystem::path const& path : mInputs)
	{
		auto const file = FindFile(path, stdin);
		std::optional<FilePlace> const place = file ? std::optional<FilePlace>(*file) : std::nullopt;
		for (std::size_t i = 0; place && i < outputs.size(); ++i)
		{
			CheckInput(outputs[i], path, *place);
		}
	}
	for (std::filesystem::path const& path : mMedia)
	{
		FilePlace const place(path);
		for (Output const& output : outputs)
		{
			CheckMedium(output, path, place);
		}
	}
	for (auto output = outputs.begin(); output != outputs.end(); ++output)
	{
		CheckBundle(*output);
		CheckTimeline(*output);
		std::for_each(outputs.begin(), output, [&](Output const& inOther) { CheckOther(*output, inOther); });
	}
	CheckPlaces(*this);
}

} // namespace SonaroHost
