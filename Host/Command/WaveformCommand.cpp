#include "WaveformCommand.h"

#include "Console.h"
#include "Json.h"
#include "OptionGroups.h"
#include "RunJob.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "TimeOption.h"
#include "TimelineOptions.h"
#include "TimelineWaveform.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>

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

std::string ToLower(std::string inText)
{
	std::transform(inText.begin(), inText.end(), inText.begin(),
		[](unsigned char inCharacter) { return static_cast<char>(std::tolower(inCharacter)); });
	return inText;
}

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

char const* GetName(WaveformFormat inFormat)
{
	return std::find_if(std::begin(kFormats), std::end(kFormats),
		[inFormat](FormatName const& inEntry) { return inEntry.mFormat == inFormat; })
		->mShown;
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

double GetSeconds(WaveformSummary const& inSummary)
{
	return static_cast<double>(inSummary.mFrames) / inSummary.mSampleRate;
}

double GetRealTimeFactor(WaveformSummary const& inSummary)
{
	return inSummary.mElapsedSeconds > 0.0 ? GetSeconds(inSummary) / inSummary.mElapsedSeconds : 0.0;
}

std::string DescribeForPeople(
	std::string const& inOutput, WaveformRequest const& inRequest, WaveformSummary const& inSummary)
{
	std::array<char, 96> text{};
	std::snprintf(text.data(), text.size(), "%.10g samples per column, %.0f times faster than real time",
		inSummary.mSamplesPerColumn, GetRealTimeFactor(inSummary));
	std::string const shape = IsPicture(inRequest.mFormat)
								  ? " x " + std::to_string(inRequest.mStyle.mHeight) + " pixels"
								  : " columns of " + std::to_string(inRequest.mBits) + " bits";
	return ShowOutput(inOutput) + ": " + FormatTime(inSummary.mFrames, inSummary.mSampleRate) + " (" +
		   std::to_string(inSummary.mFrames) + " samples), " + std::to_string(inSummary.mColumns) + shape +
		   ", " + std::to_string(inSummary.mChannels) +
		   (inSummary.mChannels == 1 ? " channel, " : " channels, ") + GetName(inRequest.mFormat) + "\n" +
		   text.data() + "\n";
}

std::string DescribeForMachines(std::string const& inInput, std::string const& inOutput,
	WaveformRequest const& inRequest, WaveformSummary const& inSummary)
{
	Json json;
	json["input"] = inInput;
	json["output"] = inOutput;
	json["format"] = GetName(inRequest.mFormat);
	json["samples"] = inSummary.mFrames;
	json["seconds"] = GetSeconds(inSummary);
	json["channels"] = inSummary.mChannels;
	json["rate"] = inSummary.mSampleRate;
	json["columns"] = inSummary.mColumns;
	json["samplesPerColumn"] = inSummary.mSamplesPerColumn;
	if (IsPicture(inRequest.mFormat))
	{
		json["height"] = inRequest.mStyle.mHeight;
	}
	else
	{
		json["bits"] = inRequest.mBits;
	}
	json["elapsedSeconds"] = inSummary.mElapsedSeconds;
	json["realTimeFactor"] = GetRealTimeFactor(inSummary);
	return ToText(json);
}

} // namespace

WaveformCommand::WaveformCommand(CLI::App& ioProgram)
	: Command(ioProgram, "waveform", "Draw the waveform of a sound file or timeline, or write it as data"),
	  mHeight(WaveformStyle().mHeight),
	  mFloorDecibels(WaveformStyle().mFloorDecibels)
{
	GetParser()
		.add_option("INPUT", mInput,
			"Sound file or movie, - for the standard input, or timeline (.otio, .otioz, .otiod)")
		->option_text("(required)")
		->required();
	GetParser()
		.add_option("-o,--output", mOutput,
			"Output file, replaced if it exists and written only if the command succeeds; - is the standard "
			"output, with --format")
		->option_text("OUTPUT (required)")
		->required();
	GetParser()
		.add_option(
			"--format", mFormat, "Output format: png, svg, json or dat (default: by the ending of OUTPUT)")
		->option_text("NAME")
		->check(CLI::IsMember({"png", "svg", "json", "dat"}, CLI::ignore_case));
	GetParser().add_flag("--no-overwrite", mKeepsOldFile, "Fail if the output file already exists");
	AddRangeOptions();
	AddPictureOptions();
	AddDataOptions();
	AddReportOptions();
	AddTimelineOptions(GetParser(), mMediaFolders, mFades);
	GroupByInput(GetParser(),
		{"--start", "--duration", "--samples-per-column", "--stream", "--channels", "--bits"},
		{"--media", "--fades"});
	GetParser().footer(
		"PNG and SVG are pictures; JSON and DAT hold minima and maxima for waveform viewers in browsers,\n"
		"in version 2 of their format.\n" +
		std::string(kTimesHelp) +
		"\n\n"
		"Examples:\n"
		"  sonaro waveform interview.flac -o interview.png\n"
		"  sonaro waveform music.mp3 -o music.svg --width 800 --height 120 --channels merged\n"
		"  sonaro waveform quiet.wav -o quiet.png --scale db --floor-db -72 --background none\n"
		"  sonaro waveform music.wav -o verse.png --start 1:02.5 --duration 30\n"
		"  sonaro waveform podcast.wav -o podcast.dat --samples-per-column 512 --bits 8\n"
		"  sonaro waveform edit.otio -o edit.png");
}

void WaveformCommand::AddRangeOptions()
{
	GetParser().add_option("--start", mStart, "Where in the input to start")->option_text("TIME");
	GetParser()
		.add_option("--duration", mDuration, "How much of the input to show, at most to its end")
		->option_text("TIME");
	auto* const width =
		GetParser()
			.add_option("--width", mWidth,
				"Width in pixels, up to 32767 (default: 1200); for JSON and DAT, the most columns")
			->option_text("COLUMNS");
	GetParser()
		.add_option("--samples-per-column", mSamplesPerColumn,
			"Samples per column, instead of --width (default for JSON and DAT: 256)")
		->option_text("SAMPLES")
		->excludes(width);
	AddStreamOption(GetParser(), mStream);
	GetParser()
		.add_option("--channels", mChannels, "Show channels stacked, or merged into one (default: stacked)")
		->option_text("HOW")
		->check(CLI::IsMember({"stacked", "merged"}));
}

void WaveformCommand::AddPictureOptions()
{
	GetParser()
		.add_option("--height", mHeight, "Height in pixels, up to 32767 (default: 240)")
		->option_text("PIXELS");
	GetParser()
		.add_option("--background", mBackground,
			"Colour of the background: #rrggbb, #rrggbbaa or none (default: #ffffff)")
		->option_text("COLOUR");
	GetParser()
		.add_option("--wave", mWave, "Colour between minimum and maximum (default: #24548a)")
		->option_text("COLOUR");
	GetParser().add_option("--rms", mRms, "Colour of the RMS (default: #7aaadc)")->option_text("COLOUR");
	GetParser()
		.add_option("--scale", mScale, "Scale of amplitudes: linear, or db for decibels (default: linear)")
		->option_text("NAME")
		->check(CLI::IsMember({"linear", "db"}));
	GetParser()
		.add_option("--floor-db", mFloorDecibels,
			"Level at the centre line with --scale db, at least -1000 and below 0 (default: -60)")
		->option_text("DB");
}

void WaveformCommand::AddDataOptions()
{
	GetParser()
		.add_option("--bits", mBits, "Bits per value in JSON and DAT, 8 or 16 (default: 16)")
		->option_text("BITS")
		->check(CLI::IsMember({8, 16}));
}

void WaveformCommand::AddReportOptions()
{
	GetParser().add_flag("--quiet", mIsQuiet, "Print only warnings and errors");
	GetParser().add_flag("--json", mAsJson, "Print the summary as JSON");
}

std::string WaveformCommand::DescribeInputs() const
{
	return "waveform accepts sound files (such as WAV, AIFF, FLAC, Ogg and MP3), movies (such as MOV, MP4, "
		   "MKV and MXF) and timelines (.otio, .otioz, .otiod)";
}

int WaveformCommand::Run()
{
	MakeRoomForOutputs({mOutput});
	if (Otio::IsTimelinePath(mInput))
	{
		return DrawTimeline(MakeTimelineRequest(), {mInput, mOutput, mIsQuiet, mAsJson});
	}
	RefuseGroup(GetParser(), kForTimelines, "applies only to timelines (.otio, .otioz, .otiod)");
	WaveformRequest const request = MakeRequest();
	WaveformJob job(request);
	Report(request, Compute(job));
	return kExitSuccess;
}

WaveformRequest WaveformCommand::MakeRequest()
{
	WaveformRequest request;
	request.mInput = mInput;
	request.mStream = mStream;
	request.mOutput = mOutput;
	request.mFormat = ChooseWaveformFormat(mFormat, mOutput);
	CheckOptionsFit(request.mFormat);
	if (!mStart.empty())
	{
		request.mStart = ParseTime("--start", mStart);
	}
	if (!mDuration.empty())
	{
		request.mDuration = ParseTime("--duration", mDuration);
	}
	request.mWidth = mWidth;
	request.mSamplesPerColumn = mSamplesPerColumn;
	request.mChannels = mChannels == "merged" ? WaveformChannels::kMerged : WaveformChannels::kStacked;
	request.mStyle = MakeStyle();
	request.mBits = mBits;
	request.mReplace = !mKeepsOldFile;
	return request;
}

TimelineWaveformRequest WaveformCommand::MakeTimelineRequest()
{
	RefuseGroup(GetParser(), kForSoundFiles,
		"applies only to sound files; a timeline is drawn whole, its channels merged");
	TimelineWaveformRequest request;
	request.mInput = mInput;
	request.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
	request.mOutput = mOutput;
	request.mFormat = ChooseWaveformFormat(mFormat, mOutput);
	request.mOptions.mFadeShape = ParseFades(mFades);
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

WaveformStyle WaveformCommand::MakeStyle() const
{
	WaveformStyle style;
	style.mHeight = mHeight;
	ParseColour("--background", mBackground, style.mBackground);
	ParseColour("--wave", mWave, style.mWave);
	ParseColour("--rms", mRms, style.mRms);
	style.mScale = mScale == "db" ? AmplitudeScale::kDecibels : AmplitudeScale::kLinear;
	style.mFloorDecibels = mFloorDecibels;
	return style;
}

void WaveformCommand::CheckOptionsFit(WaveformFormat inFormat)
{
	auto const isGiven = [this](char const* inName) { return GetParser().get_option(inName)->count() > 0; };
	for (char const* const name : {"--height", "--background", "--wave", "--rms", "--scale", "--floor-db"})
	{
		if (!IsPicture(inFormat) && isGiven(name))
		{
			Refuse(std::string(name) + " applies only to pictures, not to " + GetName(inFormat));
		}
	}
	if (IsPicture(inFormat) && isGiven("--bits"))
	{
		Refuse("--bits applies only to JSON and DAT, not to " + std::string(GetName(inFormat)));
	}
	if (isGiven("--floor-db") && mScale != "db")
	{
		Refuse("--floor-db needs --scale db");
	}
}

WaveformSummary WaveformCommand::Compute(WaveformJob& ioJob) const
{
	return RunJob(ioJob, ioJob.GetInputInfo().mSampleRate, mIsQuiet);
}

void WaveformCommand::Report(WaveformRequest const& inRequest, WaveformSummary const& inSummary) const
{
	if (mAsJson)
	{
		PrintResult(DescribeForMachines(mInput, mOutput, inRequest, inSummary));
	}
	else if (!mIsQuiet)
	{
		PrintResult(DescribeForPeople(mOutput, inRequest, inSummary));
	}
}

} // namespace SonaroCommand
