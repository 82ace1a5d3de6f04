#include "Command.h"

#include "Options/SharedOptions.h"
#include "Options/StretchOptions.h"
#include "Report/Levels.h"
#include "Report/TimelineNotes.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Render/TimelineWaveformJob.h"
#include "SonaroHost/Render/WaveformJob.h"
#include "Terminal/Caller.h"
#include "Terminal/Console.h"
#include "Terminal/RunJob.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

namespace
{

using namespace SonaroHost;

struct FormatName
{
	char const* mName;
	char const* mShown;
	WaveformFormat mFormat;
};

constexpr FormatName kFormats[] = {
	{"png", "PNG", WaveformFormat::kPng},
	{"svg", "SVG", WaveformFormat::kSvg},
	{"json", "JSON", WaveformFormat::kJson},
	{"dat", "DAT", WaveformFormat::kDat},
};

WaveformFormat ChooseWaveformFormat(std::string const& inFormat, std::string const& inOutput)
{
	if (inFormat.empty() && IsStandardStream(inOutput))
	{
		Refuse("the standard output needs --format, since it has no name to choose by");
	}
	std::string const ending = std::filesystem::path(inOutput).extension().string();
	std::string const name = ToLower(!inFormat.empty() ? inFormat : ending.empty() ? "" : ending.substr(1));
	for (FormatName const& format : kFormats)
	{
		if (name == format.mName)
		{
			return format.mFormat;
		}
	}
	Refuse("cannot choose a format from the name " + QuotePath(inOutput) +
		   "; end it in .png, .svg, .json or .dat, or use --format");
}

char const* GetFormatName(WaveformFormat inFormat)
{
	return std::ranges::find(kFormats, inFormat, &FormatName::mFormat)->mShown;
}

void ParseColour(std::string const& inOption, std::string const& inText, Colour& ioColour)
{
	if (inText.empty())
	{
		return;
	}
	auto const colour = Colour::Parse(inText);
	if (!colour)
	{
		Refuse(
			inOption + ": '" + inText + "' is not a colour; use #rrggbb, #rrggbbaa (with opacity) or none");
	}
	ioColour = *colour;
}

std::string DescribeForPeople(
	std::string const& inOutput, WaveformRequest const& inRequest, WaveformSummary const& inSummary)
{
	std::array<char, 32> samples{};
	std::snprintf(samples.data(), samples.size(), "%.10g", inSummary.mSamplesPerColumn);
	std::string const shape = IsPicture(inRequest.mFormat)
								  ? " x " + std::to_string(inRequest.mStyle.mHeight) + " pixels"
								  : " columns of " + std::to_string(inRequest.mBits) + " bits";
	return ShowOutput(inOutput) + ": " + FormatTime(inSummary.mFrames, inSummary.mSampleRate) + " (" +
		   std::to_string(inSummary.mFrames) + " samples), " + std::to_string(inSummary.mColumns) + shape +
		   ", " + FormatCount(inSummary.mChannels, "channel") + ", " + GetFormatName(inRequest.mFormat) +
		   "\n" + samples.data() + " samples per column, " +
		   DescribeRealTimeFactor(
			   GetRealTimeFactor(inSummary.mFrames, inSummary.mSampleRate, inSummary.mElapsedSeconds));
}

std::string DescribeForMachines(std::string const& inInput, std::string const& inOutput,
	WaveformRequest const& inRequest, WaveformSummary const& inSummary)
{
	Json json{{"input", inInput}, {"output", inOutput}, {"format", GetFormatName(inRequest.mFormat)},
		{"samples", inSummary.mFrames},
		{"seconds", static_cast<double>(inSummary.mFrames) / inSummary.mSampleRate},
		{"channels", inSummary.mChannels}, {"rate", inSummary.mSampleRate}, {"columns", inSummary.mColumns},
		{"samplesPerColumn", inSummary.mSamplesPerColumn}};
	if (IsPicture(inRequest.mFormat))
	{
		json["height"] = inRequest.mStyle.mHeight;
	}
	else
	{
		json["bits"] = inRequest.mBits;
	}
	json["elapsedSeconds"] = inSummary.mElapsedSeconds;
	json["realTimeFactor"] =
		GetRealTimeFactor(inSummary.mFrames, inSummary.mSampleRate, inSummary.mElapsedSeconds);
	return ToText(json);
}

std::string DescribeForPeople(std::string const& inOutput, TimelineWaveformRequest const& inRequest,
	TimelineWaveformSummary const& inSummary)
{
	std::string text = ShowOutput(inOutput) + ": " + FormatTime(inSummary.mFrames, inSummary.mSampleRate) +
					   ", " + std::to_string(inRequest.mWidth) + " x " + std::to_string(inSummary.mHeight) +
					   " pixels, from the top:\n";
	for (std::string const& band : inSummary.mBands)
	{
		text += "  " + MakePrintable(band) + "\n";
	}
	return text;
}

std::string DescribeForMachines(std::string const& inInput, std::string const& inOutput,
	TimelineWaveformRequest const& inRequest, TimelineWaveformSummary const& inSummary)
{
	return ToText({{"input", inInput}, {"output", inOutput}, {"samples", inSummary.mFrames},
		{"rate", inSummary.mSampleRate}, {"columns", inRequest.mWidth}, {"height", inSummary.mHeight},
		{"bands", inSummary.mBands}, {"elapsedSeconds", inSummary.mElapsedSeconds}});
}

class WaveformCommand final : public Command
{
public:
	explicit WaveformCommand(CLI::App& ioProgram)
		: Command(
			  ioProgram, "waveform", "Draw the waveform of a sound file or timeline, or write it as data"),
		  mHeight(WaveformStyle().mHeight),
		  mFloorDecibels(WaveformStyle().mFloorDecibels)
	{
		AddFileOptions();
		AddRangeOptions();
		AddPictureOptions();
		AddTimelineOptions(GetParser(), mMediaFolders, mFades);
		GroupByInput(GetParser(),
			{"--start", "--duration", "--speed", "--pitch", "--samples-per-column", "--stream", "--channels",
				"--bits"},
			{"--media", "--fades"});
		GetParser().footer(
			"PNG and SVG are pictures; JSON and DAT hold minima and maxima for waveform viewers in "
			"browsers,\n"
			"in version 2 of their format.\n" +
			std::string(kTimesHelp) +
			"\n\n"
			"Examples:\n"
			"  sonaro waveform interview.flac -o interview.png\n"
			"  sonaro waveform music.mp3 -o music.svg --width 800 --height 120 --channels merged\n"
			"  sonaro waveform quiet.wav -o quiet.png --scale db --floor-db -72 --background none\n"
			"  sonaro waveform music.wav -o verse.png --start 1:02.5 --duration 30\n"
			"  sonaro waveform podcast.wav -o podcast.dat --samples-per-column 512 --bits 8\n"
			"  sonaro waveform edit.otio -o edit.svg --theme dark");
	}

	int Run() override
	{
		MakeRoomForOutputs({mOutput});
		if (Otio::IsTimelinePath(mInput))
		{
			TimelineWaveformRequest const request = MakeTimelineRequest();
			TimelineWaveformJob job(request);
			std::vector<Otio::Note> const effects = Otio::ListMissingEffects(job.GetSequence().mNotes);
			WarnOfNotes(job.GetSequence().mMissing, effects);
			Report(request, RunJob(job, job.GetSampleRate(), mIsQuiet));
			return job.GetSequence().mMissing.empty() && effects.empty() ? kExitSuccess : kExitMissing;
		}
		RefuseGroup(GetParser(), kForTimelines, "applies only to timelines (.otio, .otioz, .otiod)");
		WaveformRequest const request = MakeRequest();
		WaveformJob job(request);
		Report(request, RunJob(job, job.GetInputInfo().mSampleRate, mIsQuiet));
		return kExitSuccess;
	}

private:
	void AddFileOptions()
	{
		Add("INPUT", mInput, "(required)",
			"Sound file or movie, - for the standard input, or timeline (.otio, .otioz, .otiod)")
			->required();
		Add("-o,--output", mOutput, "OUTPUT (required)",
			"Output file, replaced if it exists and written only if the command succeeds; - is the standard "
			"output, with --format")
			->required();
		Add("--format", mFormat, "NAME",
			"Output format: png, svg, json or dat (default: by the ending of OUTPUT)")
			->check(CLI::IsMember({"png", "svg", "json", "dat"}, CLI::ignore_case));
		AddFlag("--no-overwrite", mKeepsOldFile, "Fail if the output file already exists");
	}

	void AddRangeOptions()
	{
		Add("--start", mStart, "TIME", "Where in the input to start");
		Add("--duration", mDuration, "TIME", "How much of the input to show, at most to its end");
		mStretch.AddForSoundFiles(GetParser());
		mStretch.AddForAll(GetParser());
		CLI::Option* const width = Add("--width", mWidth, "COLUMNS",
			"Width in pixels, up to 32767 (default: 1200); for JSON and DAT, the most columns");
		Add("--samples-per-column", mSamplesPerColumn, "SAMPLES",
			"Samples per column, instead of --width (default for JSON and DAT: 256)")
			->excludes(width);
		AddStreamOption(GetParser(), mStream);
		Add("--channels", mChannels, "HOW", "Show channels stacked, or merged into one (default: stacked)")
			->check(CLI::IsMember({"stacked", "merged"}));
	}

	void AddPictureOptions()
	{
		Add("--height", mHeight, "PIXELS",
			"Height in pixels, up to 32767 (default: 240; of a timeline 28 to 80 for each track)");
		Add("--theme", mTheme, "NAME", "Colours of pictures: light or dark (default: light)")
			->check(CLI::IsMember({"light", "dark"}));
		Add("--background", mBackground, "COLOUR",
			"Colour of the background: #rrggbb, #rrggbbaa or none (default: #ffffff, in dark pictures "
			"#14171c)");
		Add("--wave", mWave, "COLOUR",
			"Colour between minimum and maximum (default: #24548a, in dark pictures #5e9cde)");
		Add("--rms", mRms, "COLOUR", "Colour of the RMS (default: #7aaadc, in dark pictures #1a426e)");
		Add("--scale", mScale, "NAME", "Scale of amplitudes: linear, or db for decibels (default: linear)")
			->check(CLI::IsMember({"linear", "db"}));
		Add("--floor-db", mFloorDecibels, "DB",
			"Level at the centre line with --scale db, at least -1000 and below 0 (default: -60)");
		Add("--bits", mBits, "BITS", "Bits per value in JSON and DAT, 8 or 16 (default: 16)")
			->check(CLI::IsMember({"8", "16"}));
		AddFlag("--quiet", mIsQuiet, "Print only warnings and errors");
		AddFlag("--json", mAsJson, "Print the summary as JSON");
	}

	// The options as the library takes them; throws a HostError for one that makes no sense.
	WaveformRequest MakeRequest()
	{
		WaveformRequest request;
		request.mInput = mInput;
		request.mStream = mStream;
		request.mOutput = mOutput;
		request.mFormat = ChooseWaveformFormat(mFormat, mOutput);
		CheckOptionsFit(request.mFormat);
		request.mStart = ParseTimeIfGiven("--start", mStart).value_or(TimePosition());
		request.mDuration = ParseTimeIfGiven("--duration", mDuration);
		mStretch.Fill(request);
		request.mWidth = mWidth;
		request.mSamplesPerColumn = mSamplesPerColumn;
		request.mChannels = mChannels == "merged" ? WaveformChannels::kMerged : WaveformChannels::kStacked;
		request.mStyle = MakeStyle();
		request.mBits = mBits;
		request.mReplace = !mKeepsOldFile;
		return request;
	}

	TimelineWaveformRequest MakeTimelineRequest()
	{
		RefuseGroup(GetParser(), kForSoundFiles,
			"applies only to sound files; a timeline is drawn whole, its channels merged");
		TimelineWaveformRequest request;
		request.mText = FindTimelineText(mInput);
		request.mInput = mInput;
		request.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
		request.mOutput = mOutput;
		request.mFormat = ChooseWaveformFormat(mFormat, mOutput);
		request.mOptions.mFadeShape = ParseFades(mFades);
		mStretch.Fill(request.mOptions);
		if (mWidth)
		{
			request.mWidth = static_cast<unsigned>(std::clamp<std::int64_t>(*mWidth, 0, kMaxPictureSize + 1));
		}
		if (GetParser().get_option("--height")->count() > 0)
		{
			request.mHeight = mHeight;
		}
		request.mStyle = MakeStyle();
		request.mReplace = !mKeepsOldFile;
		return request;
	}

	WaveformStyle MakeStyle() const
	{
		WaveformStyle style =
			WaveformStyle::Make(mTheme == "dark" ? PictureTheme::kDark : PictureTheme::kLight);
		style.mHeight = mHeight;
		ParseColour("--background", mBackground, style.mBackground);
		ParseColour("--wave", mWave, style.mWave);
		ParseColour("--rms", mRms, style.mRms);
		style.mScale = mScale == "db" ? AmplitudeScale::kDecibels : AmplitudeScale::kLinear;
		style.mFloorDecibels = mFloorDecibels;
		return style;
	}

	// Throws a HostError for an option that the format has no use for.
	void CheckOptionsFit(WaveformFormat inFormat)
	{
		auto const isGiven = [this](char const* inName)
		{ return GetParser().get_option(inName)->count() > 0; };
		for (char const* const name :
			{"--height", "--theme", "--background", "--wave", "--rms", "--scale", "--floor-db"})
		{
			if (!IsPicture(inFormat) && isGiven(name))
			{
				Refuse(std::string(name) + " applies only to pictures, not to " + GetFormatName(inFormat));
			}
		}
		if (IsPicture(inFormat) && isGiven("--bits"))
		{
			Refuse("--bits applies only to JSON and DAT, not to " + std::string(GetFormatName(inFormat)));
		}
		if (isGiven("--floor-db") && mScale != "db")
		{
			Refuse("--floor-db needs --scale db");
		}
	}

	template <class Request, class Summary>
	void Report(Request const& inRequest, Summary const& inSummary) const
	{
		if (mAsJson || !mIsQuiet)
		{
			std::string const text = mAsJson ? DescribeForMachines(mInput, mOutput, inRequest, inSummary)
											 : DescribeForPeople(mOutput, inRequest, inSummary);
			FinishAfter(mOutput, [&text] { PrintResult(text); });
		}
	}

	std::string mInput;
	std::string mOutput;
	std::string mFormat;
	std::string mStart;
	std::string mDuration;
	StretchOptions mStretch;
	std::optional<std::int64_t> mWidth;
	std::optional<std::int64_t> mSamplesPerColumn;
	unsigned mStream = 0;
	std::string mChannels = "stacked";
	unsigned mHeight;
	std::string mTheme;
	std::string mBackground;
	std::string mWave;
	std::string mRms;
	std::string mScale = "linear";
	double mFloorDecibels;
	int mBits = 16;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;
};

} // namespace

std::unique_ptr<Command> MakeWaveformCommand(CLI::App& ioProgram)
{
	return std::make_unique<WaveformCommand>(ioProgram);
}

} // namespace SonaroCommand
