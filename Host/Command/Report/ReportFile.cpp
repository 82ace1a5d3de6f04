#include "ReportFile.h"

#include "SonaroHost/Files/OutputFile.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace SonaroCommand
{

using SonaroHost::OutputFile;

void CheckReport(RenderOptions const& inOptions, ReportFolder inFolder)
{
	std::filesystem::path const folder = std::filesystem::path(inOptions.mReport).parent_path();
	bool const isThere = folder.empty() || std::filesystem::is_directory(folder);
	if (!inOptions.mReport.empty() && (isThere || inFolder == ReportFolder::kIsThere))
	{
		OutputFile const file(inOptions.mReport);
	}
}

void WriteReport(RenderOptions const& inOptions, std::string const& inText)
{
	std::error_code error;
	std::filesystem::create_directories(std::filesystem::path(inOptions.mReport).parent_path(), error);
	OutputFile file(inOptions.mReport);
	file.Write(inText.data(), static_cast<std::int64_t>(inText.size()));
	file.Commit(!inOptions.mKeepsOldFile);
}

} // namespace SonaroCommand
