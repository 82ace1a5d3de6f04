#include "ProgrammeRender.h"

#include "Options/SharedOptions.h"
#include "Report/EffectRows.h"
#include "Report/Json.h"
#include "Report/Levels.h"
#include "Report/MediaRows.h"
#include "Report/RenderedFileRows.h"
#include "Report/ReportFile.h"
#include "Report/StrictRender.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Render/ProgrammeRenderJob.h"
#include "Terminal/Console.h"

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

// The version of the keys: one more for any change that a reader would stumble over.
constexpr int kSequenceReportVersion = 1;

void CheckOptions(CLI::App& ioParser, RenderOptions const& inOptions)
{
	constexpr char const* kWhy = "does not apply to a sequence, which sets this itself";
	RefuseGroup(ioParser, kForSoundFiles, kWhy);
	RefuseGroup(ioParser, kForTimelines, kWhy);
	for (char const* const name :
		{"--rate", "--resampling", "--layout", "--keep-pitch", "--stretch", "--binaural"})
	{
		if (ioParser.get_option(name)->count() > 0)
		{
			Refuse(std::string(name) + " " + kWhy);
		}
	}
	if (inOptions.WantsPage())
	{
		Refuse("--report: there is no page of a sequence; let the name end in .json");
	}
}

Json MakeProgrammeReport(std::string const& inInput, ProgrammeRenderJob const& inJob,
	RenderSummary const& inSummary, OutputLevels const& inLevels)
{
	Programme const& programme = inJob.GetProgramme();
	int const rate = inJob.GetSampleRate();
	Json json{{"schema", "sonaro.sequence-render"}, {"version", kSequenceReportVersion}, {"input", inInput},
		{"programme", {{"rate", rate}, {"samples", programme.mFrames},
						  {"seconds", static_cast<double>(programme.mFrames) / rate},
						  {"layout", GetLayoutName(programme.GetLayout())}}},
		{"outputs", ListFiles(inSummary, programme.GetLayout(), rate)}};
	AddMix(json, inSummary, inLevels);
	AddOneRun(json, inSummary);
	json["effects"] = ListEffects(inSummary.mGraph);
	json["damaged"] = ListDamaged(inSummary.mDamaged);
	json["elapsedSeconds"] = inSummary.mElapsedSeconds;
	json["realTimeFactor"] = GetRealTimeFactor(inSummary.GetFrames(), rate, inSummary.mElapsedSeconds);
	return json;
}

} // namespace

void RenderCalledProgramme(CLI::App& ioParser, RenderOptions const& inOptions, std::string const& inInput,
	CalledProgramme const& inProgramme)
{
	CheckOptions(ioParser, inOptions);
	OutputRequest request;
	inOptions.Fill(request);
	request.mContainer = inOptions.ChooseContainer();
	ProgrammeRenderJob job(inProgramme.mProgramme, request, inProgramme.mMedia);
	CheckReport(inOptions, ReportFolder::kIsThere);
	RenderSummary const summary = RunStrictly(job, inOptions, [](std::string const&) {});
	WarnOfLevels(summary);
	WarnOfDamage(summary);
	std::string const report = ToText(MakeProgrammeReport(inInput, job, summary, inOptions.mLevels));
	FinishAfter(inOptions.mOutput,
		[&]
		{
			if (!inOptions.mReport.empty())
			{
				WriteReport(inOptions, report);
			}
			if (inOptions.mAsJson)
			{
				PrintResult(report);
			}
		});
}

} // namespace SonaroCommand
