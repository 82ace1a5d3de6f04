#pragma once

#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Render/Fades.h"
#include "SonaroHost/Render/OutputRequest.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Render/RenderSummary.h"

#include <filesystem>
#include <optional>
#include <stop_token>
#include <vector>

namespace SonaroHost
{

// Renders a programme that a host has made of a sequence of its own into a sound file.
class ProgrammeRenderJob
{
public:
	// inMedia: files that no output may replace. Throws a HostError for a request that makes no sense.
	ProgrammeRenderJob(
		Programme inProgramme, OutputRequest inRequest, std::vector<std::filesystem::path> const& inMedia);

	int GetSampleRate() const { return mProgramme.mSampleRate; }
	Programme const& GetProgramme() const { return mProgramme; }

	// As TimelineRenderJob does. To be called once.
	std::optional<RenderSummary> Run(
		ProgressCallback const& inProgress = {}, std::stop_token const& inStop = {});

private:
	Programme mProgramme;
	OutputRequest mRequest;
	OutputFormat mFormat;
	Fades mFades;
};

} // namespace SonaroHost
