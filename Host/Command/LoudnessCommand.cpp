#include "Command.h"

#include "Options/ListenerOptions.h"
#include "Options/SharedOptions.h"
#include "Options/StretchOptions.h"
#include "Report/LoudnessRows.h"
#include "Report/RenderedFileRows.h"
#include "Report/TimelineNotes.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Metering/LoudnessPlot.h"
#include "SonaroHost/Metering/LoudnessSeries.h"
#include "SonaroHost/Render/ClipRenderJob.h"
#include "SonaroHost/Render/OutputRequest.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "Terminal/Caller.h"
#include "Terminal/Console.h"
#include "Terminal/RunJob.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

class LoudnessCommand final : public Command
{
public:
	explicit LoudnessCommand(CLI::App& ioProgram)
		: Command(ioProgram, "loudness", "Measure the loudness of sound files, movies and timelines")
	{
		Add("INPUT", mInputs, "(required) ...",
			"One or more sound files, movies or timelines (.otio, .otioz, .otiod); - is the standard input")
			->required();
		Add("-o,--output", mOutput, "OUTPUT",
			"Draw the loudness over time into this SVG file, replaced if it exists and written only if an "
			"input has a loudness; - is the standard output");
		AddFlag("--no-overwrite", mKeepsOldFile, "Fail if the output file already exists");
		AddFlag("--quiet", mIsQuiet, "Print only warnings and errors");
		AddFlag("--json", mAsJson, "Print the result as JSON");
		Add("--start", mStart, "TIME", "Where to start in a single input");
		Add("--duration", mDuration, "TIME", "How much of a single input to measure, at most to its end");
		AddStreamOption(GetParser(), mStream);
		mStretch.AddForSoundFiles(GetParser());
		mStretch.AddForAll(GetParser());
		mListener.AddOptions(GetParser());
		Add("--range", mRange, "RANGE",
			"Measure only this part of a single timeline, as in \"sonaro render\"");
		AddTimelineOptions(GetParser(), mMediaFolders, mFades);
		GroupByInput(GetParser(), {"--start", "--duration", "--stream", "--speed", "--pitch"},
			{"--range", "--media", "--fades"});
		GetParser().footer("Loudness is measured by EBU R 128 (ITU-R BS.1770), the loudness range by EBU "
						   "Tech 3342. Maxima are\n"
						   "those of the momentary loudness (0.4 s) and the short-term loudness (3 s), with "
						   "the times at which\n"
						   "their windows end. A timeline is measured as \"sonaro render\" would write it.\n"
						   "Inputs that are silent, too short or too quiet have no loudness: the others are "
						   "measured, and the\n"
						   "exit code is 1.\n" +
						   std::string(kTimesHelp) +
						   "\n\n"
						   "Examples:\n"
						   "  sonaro loudness mix.wav\n"
						   "  sonaro loudness *.wav film.mov\n"
						   "  sonaro loudness mix.wav -o loudness.svg\n"
						   "  sonaro loudness film.mov --stream 2 --json\n"
						   "  sonaro loudness edit.otio --range Verse");
	}

	int Run() override
	{
		MakeRoomForOutputs({mOutput});
		CheckOptions();
		if (!mOutput.empty())
		{
			OutputPlan{{mOutput}, {}, mListener.AddFile({mInputs.begin(), mInputs.end()}), {}, !mKeepsOldFile}
				.Check();
			// Only to see that it can be written, before the work begins.
			OutputFile const file(mOutput);
		}
		std::vector<MeasuredProgramme> const programmes = MeasureAll();
		bool const isDrawn = !mOutput.empty() && WritePlot(programmes);
		if (mAsJson || (!mIsQuiet && !programmes.empty()))
		{
			std::string const text =
				mAsJson ? ListLoudnessForMachines(programmes) : ListLoudnessForPeople(programmes);
			FinishAfter(isDrawn ? mOutput : std::string(), [&text] { PrintResult(text); });
		}
		return mExitCode;
	}

private:
	// Throws a HostError for options that the inputs have no use for.
	void CheckOptions()
	{
		auto const timelines = std::ranges::count_if(
			mInputs, [](std::string const& inInput) { return Otio::IsTimelinePath(inInput); });
		if (timelines == 0)
		{
			RefuseGroup(GetParser(), kForTimelines, "applies only to timelines (.otio, .otioz, .otiod)");
		}
		if (timelines > 0)
		{
			RefuseGroup(GetParser(), kForSoundFiles,
				"applies only to sound files and movies; use --range to measure a part of a timeline");
		}
		for (char const* const name : {"--start", "--duration", "--stream", "--range"})
		{
			if (mInputs.size() > 1 && GetParser().get_option(name)->count() > 0)
			{
				Refuse(std::string(name) + " applies only to a single input; measure the inputs one by one");
			}
		}
		if (!mOutput.empty() && !IsStandardStream(mOutput) && GetLowerEnding(mOutput) != ".svg")
		{
			Refuse("cannot choose a format from the name " + QuotePath(mOutput) + "; end it in .svg");
		}
	}

	void FillRequest(OutputRequest& outRequest) const
	{
		if (!mOutput.empty())
		{
			outRequest.mOtherOutputs.emplace_back(mOutput);
		}
		outRequest.mReplace = !mKeepsOldFile;
		outRequest.mMeasuring = Measuring::kOutput;
		outRequest.mKeepsSeries = true;
	}

	// These throw a HostError for an input that cannot be read.
	MeasuredProgramme Measure(std::string const& inInput)
	{
		return Otio::IsTimelinePath(inInput) ? MeasureTimeline(inInput) : MeasureFile(inInput);
	}

	static void Warn(std::string const& inInput, RenderSummary const& inSummary)
	{
		WarnOfDamage(inSummary);
		WarnOfLeftOut(QuoteInput(inInput), inSummary.mMix);
	}

	MeasuredProgramme MeasureFile(std::string const& inInput) const
	{
		ClipRenderRequest request;
		FillRequest(request);
		ClipInput& input = request.mInputs.emplace_back();
		input.mPath = inInput;
		input.mStream = mStream;
		input.mStart = ParseTimeIfGiven("--start", mStart).value_or(TimePosition());
		input.mDuration = ParseTimeIfGiven("--duration", mDuration);
		mStretch.Fill(request);
		request.mListener = mListener.MakeListener();
		ClipRenderJob job(std::move(request));
		RenderSummary const summary = RunJob(job, job.GetSampleRate(), mIsQuiet);
		Warn(inInput, summary);
		return {inInput, job.GetSampleRate(), job.GetFrames(), job.GetOutputLayout(), summary.mMix};
	}

	MeasuredProgramme MeasureTimeline(std::string const& inInput)
	{
		Otio::TimelineRenderRequest request;
		FillRequest(request);
		request.mInput = inInput;
		request.mText = FindTimelineText(inInput);
		request.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
		request.mOptions.mFadeShape = ParseFades(mFades);
		mStretch.Fill(request.mOptions);
		request.mOptions.mListener = mListener.MakeListener();
		request.mRange = mRange;
		request.mKeepsRows = false;
		Otio::TimelineRenderJob job(std::move(request));
		WarnOfNotes(job.GetSequence().mMissing, job.GetNotes());
		RenderSummary const summary = RunJob(job, job.GetSampleRate(), mIsQuiet);
		Warn(inInput, summary);
		bool const isComplete =
			job.GetSequence().mMissing.empty() && Otio::ListMissingEffects(job.GetNotes()).empty();
		if (!isComplete && mExitCode == kExitSuccess)
		{
			mExitCode = kExitMissing;
		}
		return {inInput, job.GetSampleRate(), job.GetRange().mFrames, job.GetOutputLayout(), summary.mMix};
	}

	std::vector<MeasuredProgramme> MeasureAll()
	{
		std::vector<MeasuredProgramme> programmes;
		for (std::string const& input : mInputs)
		{
			try
			{
				programmes.push_back(Measure(input));
			}
			catch (HostError const& error)
			{
				if (mInputs.size() == 1)
				{
					throw;
				}
				bool const isNamed = !error.GetParts().mFile.empty();
				PrintError((isNamed ? "" : QuoteInput(input) + ": ") + error.what());
				mExitCode = kExitFailure;
				continue;
			}
			if (std::string const problem = DescribeProblem(programmes.back()); !problem.empty())
			{
				PrintError(QuoteInput(input) + " " + problem);
				mExitCode = kExitFailure;
			}
		}
		return programmes;
	}

	// Whether there was anything to draw.
	bool WritePlot(std::vector<MeasuredProgramme> const& inProgrammes) const
	{
		using Maximum = LoudnessSeries::Maximum;
		bool hasLoudness = false;
		std::vector<PlottedLoudness> plots;
		for (MeasuredProgramme const& programme : inProgrammes)
		{
			std::string const problem = DescribeProblem(programme);
			hasLoudness = hasLoudness || problem.empty();
			auto series = programme.mReading ? programme.mReading->mSeries
											 : std::make_shared<LoudnessSeries const>(
												   0.1, std::vector<float>(), Maximum(), Maximum());
			plots.push_back({programme.mPath, std::move(series), std::nullopt,
				problem.empty() ? "" : "This input " + problem});
		}
		if (!hasLoudness)
		{
			PrintError("nothing was drawn, since no input has a loudness");
			return false;
		}
		std::string const text = DrawLoudness(plots, PlotPlace::kFile);
		OutputFile file(mOutput);
		file.Write(text.data(), static_cast<std::int64_t>(text.size()));
		file.Commit(!mKeepsOldFile);
		return true;
	}

	std::vector<std::string> mInputs;
	std::string mOutput;
	std::string mStart;
	std::string mDuration;
	unsigned mStream = 0;
	StretchOptions mStretch;
	ListenerOptions mListener;
	std::string mRange;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;
	int mExitCode = kExitSuccess;
};

} // namespace

std::unique_ptr<Command> MakeLoudnessCommand(CLI::App& ioProgram)
{
	return std::make_unique<LoudnessCommand>(ioProgram);
}

} // namespace SonaroCommand
