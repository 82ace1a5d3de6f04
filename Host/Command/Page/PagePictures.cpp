#include "PagePictures.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Files/Temporary.h"
#include "SonaroHost/Files/WholeFile.h"
#include "SonaroHost/Render/WaveformJob.h"
#include "Terminal/Console.h"
#include "Terminal/RunJob.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <utility>

namespace SonaroCommand::Page
{

using namespace SonaroHost;

namespace
{

constexpr unsigned kWaveformWidth = 1100;
constexpr unsigned kFileHeight = 200;

std::filesystem::path MakePictureFolder()
{
	std::filesystem::path const parent = GetFolderOfTemporaries();
	std::random_device random;
	for (;;)
	{
		std::filesystem::path const path = parent / ("sonaro-picture-" + std::to_string(random()));
		std::error_code error;
		if (std::filesystem::create_directory(path, error))
		{
			return path;
		}
		if (error)
		{
			throw HostError(HostError::Kind::kInput, "cannot create a temporary folder in " +
														 QuotePath(parent) + ": " + error.message() +
														 "; set TMPDIR to another folder");
		}
	}
}

// What an SVG file holds, from its element on, with a label for those who do not see it.
std::string ReadPicture(std::filesystem::path const& inPath, std::string const& inLabel)
{
	std::string const text = ReadWholeFile(inPath);
	std::size_t const start = text.find("<svg ");
	if (start == std::string::npos)
	{
		return {};
	}
	// Pictures of timelines say that they are images, those of sound files do not.
	std::size_t const end = text.find('>', start);
	bool const isImage = text.substr(start, end - start).find("role=\"img\"") != std::string::npos;
	return std::string("<svg aria-label=\"") + EscapeMarkup(inLabel) + (isImage ? "\"" : "\" role=\"img\"") +
		   text.substr(start + 4);
}

// A text about a picture, with the names of its bands where it has any.
template <class Summary>
std::string AddBands(std::string inText, Summary const& inSummary)
{
	if constexpr (requires { inSummary.mBands; })
	{
		for (std::string const& band : inSummary.mBands)
		{
			inText += (&band == &inSummary.mBands.front() ? ", from the top: " : ", ") + band;
		}
	}
	return inText;
}

bool IsIn(std::vector<Otio::MissingMedia> const& inList, Otio::MissingMedia const& inMedia)
{
	return std::any_of(inList.begin(), inList.end(),
		[&inMedia](Otio::MissingMedia const& inOther)
		{ return inOther.mTrack == inMedia.mTrack && inOther.mPlace == inMedia.mPlace; });
}

// Refuses to draw as missing what was heard.
void CheckMissing(Otio::TimelineSequence const& inDrawn, std::vector<Otio::MissingMedia> const& inMissing)
{
	for (Otio::MissingMedia const& media : inDrawn.mMissing)
	{
		if (!IsIn(inMissing, media))
		{
			throw HostError(HostError::Kind::kInput, QuotePath(media.mPath) + ": " + media.mReason);
		}
	}
}

// Runs a job that draws into a file. inRequest: without the file. inMissing: media that were missing already.
template <class Job, class Request>
void AddWaveform(Request inRequest, std::string const& inText, bool inIsQuiet, ReportPictures& ioPictures,
	std::vector<Otio::MissingMedia> const& inMissing = {})
{
	try
	{
		Temporary const folder(&MakePictureFolder);
		inRequest.mOutput = folder.GetPath() / "waveform.svg";
		inRequest.mFormat = WaveformFormat::kSvg;
		inRequest.mWidth = kWaveformWidth;
		inRequest.mStyle.mBackground.mAlpha = 0;
		std::filesystem::path const path = inRequest.mOutput;
		Job job(std::move(inRequest));
		int rate = 0;
		if constexpr (requires { job.GetSequence(); })
		{
			CheckMissing(job.GetSequence(), inMissing);
			rate = job.GetSampleRate();
		}
		else
		{
			rate = job.GetInputInfo().mSampleRate;
		}
		auto const summary = RunJob(job, rate, inIsQuiet);
		std::string const text = AddBands(inText, summary);
		ioPictures.mWaveform = ReadPicture(path, text);
		ioPictures.mWaveformText = text;
	}
	catch (HostError const& error)
	{
		PrintWarning(std::string("the report has no picture of the waveform: ") + error.what());
		ioPictures.mWaveformText = std::string("There is no picture: ") + error.what() + ".";
	}
}

// An option's values, numbers with their unit.
std::string DescribeValues(CLI::Option const& inOption)
{
	static std::map<std::string, std::string> const sUnits = {
		{"TIME", " s"}, {"DB", " dB"}, {"LUFS", " LUFS"}, {"HZ", " Hz"}, {"SAMPLES", " samples"}};
	std::string const& name = inOption.get_option_text();
	auto const unit = sUnits.find(name.substr(0, name.find(' ')));
	std::string text;
	for (std::string const& value : inOption.results())
	{
		bool const isNumber = value.find_first_not_of("+-.0123456789") == std::string::npos;
		text += (text.empty() ? "" : ", ") + value + (isNumber && unit != sUnits.end() ? unit->second : "");
	}
	return text == "true" ? "yes" : text;
}

// The options that were given, but for those of no influence on what is rendered.
std::vector<std::pair<std::string, std::string>> ListSettings(CLI::App const& inParser)
{
	static std::set<std::string> const sOthers = {
		"--output", "--report", "--no-overwrite", "--quiet", "--json", "--jobs"};
	std::vector<std::pair<std::string, std::string>> settings;
	for (CLI::Option const* const option : inParser.get_options(
			 [](CLI::Option const* inOption) { return inOption->count() > 0 && inOption->nonpositional(); }))
	{
		if (std::string const name = option->get_name(); !sOthers.contains(name))
		{
			settings.emplace_back(name, DescribeValues(*option));
		}
	}
	return settings;
}

void AddPlot(std::string const& inTitle, std::optional<LoudnessReading> const& inReading,
	std::optional<double> const& inTarget, std::vector<PlottedLoudness>& ioPlots)
{
	if (inReading && inReading->mSeries)
	{
		ioPlots.push_back({inTitle, inReading->mSeries, inTarget});
	}
}

} // namespace

ReportPictures MakePictures(CLI::App const& inParser, std::optional<double> const& inTarget,
	RenderSummary const& inSummary, std::vector<std::string> const& inTracks)
{
	ReportPictures pictures;
	pictures.mSettings = ListSettings(inParser);
	if (inSummary.mFiles.size() == 1)
	{
		AddPlot("Mix", inSummary.GetFile().mLoudness, inTarget, pictures.mMixes);
	}
	else
	{
		AddPlot(
			inTarget ? "Mix, before it is normalized" : "Mix", inSummary.mMix, std::nullopt, pictures.mMixes);
	}
	for (std::size_t i = 0; i < inSummary.mTracks.size(); ++i)
	{
		AddPlot(inTracks[i], inSummary.mTracks[i], std::nullopt, pictures.mTracks);
	}
	return pictures;
}

void AddFileWaveform(std::string const& inPath, bool inIsQuiet, ReportPictures& ioPictures)
{
	if (IsStandardStream(inPath))
	{
		ioPictures.mWaveformText = "There is no picture of what went to the standard output.";
		return;
	}
	WaveformRequest request;
	request.mInput = inPath;
	request.mStyle.mHeight = kFileHeight;
	AddWaveform<WaveformJob>(
		std::move(request), "Waveform of " + inPath + ", a band for each channel", inIsQuiet, ioPictures);
}

void AddTimelineWaveform(TimelineWaveformRequest inRequest, std::vector<Otio::MissingMedia> const& inMissing,
	bool inIsQuiet, ReportPictures& ioPictures)
{
	AddWaveform<TimelineWaveformJob>(
		std::move(inRequest), "Waveform of the whole timeline", inIsQuiet, ioPictures, inMissing);
}

} // namespace SonaroCommand::Page
