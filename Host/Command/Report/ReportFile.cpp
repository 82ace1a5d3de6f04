#include "ReportFile.h"

#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "Terminal/Caller.h"
#include "Terminal/Console.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace SonaroCommand
{

using SonaroHost::OutputFile;

namespace
{

// A caller takes what is meant for the standard output.
bool GoesToCaller(RenderOptions const& inOptions)
{
	return FindCaller() && SonaroHost::IsStandardStream(inOptions.mReport);
}

} // namespace

void CheckReport(RenderOptions const& inOptions, ReportFolder inFolder)
{
	if (GoesToCaller(inOptions))
	{
		return;
	}
	std::filesystem::path const folder = std::filesystem::path(inOptions.mReport).parent_path();
	std::error_code ignored;
	bool const isThere = folder.empty() || std::filesystem::is_directory(folder, ignored);
	if (!inOptions.mReport.empty() && (isThere || inFolder == ReportFolder::kIsThere))
	{
		OutputFile const file(inOptions.mReport);
	}
}

void WriteReport(RenderOptions const& inOptions, std::string const& inText)
{
	if (GoesToCaller(inOptions))
	{
		PrintResult(inText);
		return;
	}
	std::error_code error;
	std::filesystem::create_directories(std::filesystem::path(inOptions.mReport).parent_path(), error);
	OutputFile file(inOptions.mReport);
	file.Write(inText.data(), static_cast<std::int64_t>(inText.size()));
	file.Commit(!inOptions.mKeepsOldFile);
}

} // namespace SonaroCommand
