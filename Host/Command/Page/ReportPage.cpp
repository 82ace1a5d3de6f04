#include "ReportPage.h"

#include "Markup.h"
#include "Report/Levels.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"

#include <cstdint>
#include <filesystem>

namespace SonaroCommand::Page
{

using namespace SonaroHost;

namespace
{

constexpr PlotSize kMixSize{1120, 300};
constexpr PlotSize kTrackSize{560, 240};
// A wide blank, which HTML does not drop.
constexpr char const* kIndent = "\u2003";

int GetRate(Json const& inReport)
{
	return inReport["programme"]["rate"].get<int>();
}

// Several inputs of sound files are named by the first.
std::string GetInputName(Json const& inReport)
{
	std::string path = GetText(inReport, "input");
	std::size_t count = 1;
	if (inReport.contains("inputs"))
	{
		path = GetText(inReport["inputs"].front(), "path");
		count = inReport["inputs"].size();
	}
	std::string const name = path == "-" ? "standard input" : std::filesystem::path(path).filename().string();
	return count > 1 ? name + " and " + FormatCount(count - 1, "other input") : name;
}

std::string FormatSamples(Json const& inObject, char const* inKey, int inSampleRate)
{
	auto const samples = inObject[inKey].get<std::int64_t>();
	return FormatTime(samples, inSampleRate) + " (" + FormatCount(samples, "sample") + ")";
}

std::string MakeFacts(std::vector<std::pair<std::string, std::string>> const& inFacts)
{
	std::string text = "<dl>\n";
	for (auto const& [name, value] : inFacts)
	{
		text += "<dt>" + EscapeMarkup(name) + "</dt><dd>" + Isolate(value) + "</dd>\n";
	}
	return text + "</dl>\n";
}

std::string MakeSettings(Json const& inReport, ReportPictures const& inPictures)
{
	Json const& programme = inReport["programme"];
	int const rate = GetRate(inReport);
	std::vector<std::pair<std::string, std::string>> facts;
	if (inReport.contains("input"))
	{
		facts.emplace_back("Timeline", GetText(inReport, "input"));
	}
	facts.emplace_back("Programme", FormatSamples(programme, "samples", rate) + ", " +
										GetText(programme, "layout") + ", " + std::to_string(rate) + " Hz");
	Json const& range = inReport["range"];
	facts.emplace_back("Range", "from " + FormatTime(range["firstSample"].get<std::int64_t>(), rate) + ", " +
									FormatSamples(range, "samples", rate));
	if (Json const& outputs = inReport["outputs"]; !outputs.empty())
	{
		Json const& file = outputs.front();
		bool const isDithered = GetText(file, "dither") == "tpdf";
		facts.emplace_back("Format", GetText(file, "encoding") + " " + GetText(file, "format") + ", " +
										 GetText(file, "layout") + ", " + GetText(file, "rate") + " Hz" +
										 (isDithered ? ", dithered" : ""));
	}
	facts.insert(facts.end(), inPictures.mSettings.begin(), inPictures.mSettings.end());
	return MakeSection("settings", "Settings", MakeFacts(facts));
}

std::string MakeWaveform(ReportPictures const& inPictures)
{
	std::string const picture =
		inPictures.mWaveform.empty() ? "" : "<div class=\"paper\">" + inPictures.mWaveform + "</div>\n";
	return MakeSection(
		"waveform", "Waveform", MakeFigure("waveform-text", picture, EscapeMarkup(inPictures.mWaveformText)));
}

// inId: what the ids of their captions begin with.
std::string MakePlots(
	std::vector<PlottedLoudness> const& inPlots, PlotSize const& inSize, std::string const& inId)
{
	std::string text;
	for (PlottedLoudness const& plot : inPlots)
	{
		LoudnessSeries const& series = *plot.mSeries;
		auto const range = series.GetRange();
		std::string const caption =
			": momentary at most " + FormatFixed(series.GetMomentaryMaximum().mLoudness, 1) +
			" LUFS, short-term at most " + FormatFixed(series.GetShortTermMaximum().mLoudness, 1) + " LUFS" +
			(range ? ", loudness range " + FormatFixed(*range, 1) + " LU" : "");
		text += MakeFigure(inId + std::to_string(&plot - inPlots.data() + 1),
			DrawLoudness({plot}, PlotPlace::kPage, inSize), Isolate(plot.mTitle) + caption);
	}
	return text;
}

std::string MakeLoudness(ReportPictures const& inPictures)
{
	if (inPictures.mMixes.empty() && inPictures.mTracks.empty())
	{
		return {};
	}
	std::string text = MakePlots(inPictures.mMixes, kMixSize, "mix-");
	if (!inPictures.mTracks.empty())
	{
		text += "<h3>Tracks</h3>\n" +
				MakeParagraph("After their faders. Those of nested stacks show the time for which they are "
							  "rendered, one run after the other.") +
				"<div class=\"plots\">\n" + MakePlots(inPictures.mTracks, kTrackSize, "track-") + "</div>\n";
	}
	return MakeSection("loudness", "Loudness over time", text);
}

// A paragraph where the loudness of a file or a track was measured without some of its samples.
std::string DescribeLeftOut(std::string const& inName, Json const& inMeasured)
{
	auto const found = inMeasured.find("leftOutSamples");
	return found == inMeasured.end() ? ""
									 : MakeParagraph("The loudness of " + inName + " leaves out " +
													 FormatCount(found->get<std::size_t>(), "sample") +
													 " (infinite, not a number or above +240 dBFS).");
}

std::string MakeLevels(Json const& inReport)
{
	std::string text;
	if (auto const found = inReport.find("normalizing"); found != inReport.end())
	{
		text += MakeParagraph("Normalized to " + GetFixed(*found, "targetLufs", 1) + " LUFS by " +
							  GetFixed(*found, "gainDb", 2) + " dB, with an error of " +
							  GetFixed(*found, "errorLu", 2) + " LU.");
	}
	for (Json const& file : inReport["outputs"])
	{
		std::string const path = GetText(file, "path");
		if (double const reduction = file["limiterReductionDb"].get<double>(); reduction > 0.0)
		{
			text += MakeParagraph(path + " was limited by up to " + FormatFixed(reduction, 1) + " dB.");
		}
		if (auto const clipped = file["clippedSamples"].get<std::int64_t>(); clipped > 0)
		{
			text += MakeParagraph(FormatCount(clipped, "sample") + " of " + path + " clipped at full scale.");
		}
		text += DescribeLeftOut(path, file);
	}
	for (Json const& track : inReport.value("tracks", Json::array()))
	{
		text += DescribeLeftOut("track " + GetText(track, "track"), track);
	}
	return MakeSection("levels", "Levels",
		text.empty() ? MakeParagraph("Nothing was normalized, limited or clipped.") : text);
}

std::string MakeFiles(Json const& inReport)
{
	int const rate = GetRate(inReport);
	return MakeSection("files", "Files written",
		MakeTable("Files with their peaks and loudness",
			{TextColumn("File", "path"), TimeColumn("From", "firstSample", rate),
				TimeColumn("Length", "samples", rate), FixedColumn("Loudness, LUFS", "integratedLufs", 1),
				FixedColumn("True peak, dBTP", "truePeakDbtp", 2), FixedColumn("Peak, dBFS", "peakDbfs", 2),
				FixedColumn("Clipped samples", "clippedSamples", 0)},
			inReport["outputs"], "No file was written."));
}

std::string MakeInputs(Json const& inReport)
{
	int const rate = GetRate(inReport);
	return MakeSection("inputs", "Inputs",
		MakeTable("Sound files and where they are heard",
			{TextColumn("File", "media"), TimeColumn("From", "firstSample", rate),
				TimeColumn("To", "endSample", rate), FixedColumn("Rate, Hz", "mediaRate", 0),
				FixedColumn("Speed", "speed", 3)},
			inReport["clips"], "There are no inputs."));
}

std::string MakeTracks(Json const& inReport)
{
	auto const name = [](Json const& inRow)
	{
		std::string const own = GetText(inRow, "name");
		std::string text;
		for (std::size_t depth = 0; depth < inRow["depth"].get<std::size_t>(); ++depth)
		{
			text += kIndent;
		}
		return text + (own.empty() ? GetText(inRow, "track") : own);
	};
	auto const heard = [](Json const& inRow)
	{ return inRow["isHeard"].get<bool>() ? std::string("yes") : "no: " + GetText(inRow, "reason"); };
	return MakeSection("tracks", "Tracks",
		MakeTable("Tracks after their faders, before the mix is normalized",
			{{"Track", name}, {"Heard", heard}, TextColumn("Layout", "layout"),
				FixedColumn("Loudness, LUFS", "integratedLufs", 1),
				FixedColumn("True peak, dBTP", "truePeakDbtp", 2), FixedColumn("Peak, dBFS", "peakDbfs", 2),
				TextColumn("Place", "place")},
			inReport["tracks"], "There are no tracks."));
}

std::string MakeMarkers(Json const& inReport)
{
	int const rate = GetRate(inReport);
	Json const& markers = inReport["markers"];
	return markers.empty() ? ""
						   : MakeSection("markers", "Markers",
								 MakeTable("Markers and the parts that they stand for",
									 {TextColumn("Marker", "name"), TimeColumn("From", "firstSample", rate),
										 TimeColumn("To", "endSample", rate), TextColumn("Track", "track"),
										 TextColumn("Comment", "comment"), TextColumn("Place", "place")},
									 markers, {}));
}

std::string MakeAngles(Json const& inReport)
{
	int const rate = GetRate(inReport);
	Json const& angles = inReport["angles"];
	return angles.empty()
			   ? ""
			   : MakeSection("angles", "Angles",
					 MakeTable("Which angle of multicam stacks is heard when",
						 {TextColumn("Stack", "track"), TimeColumn("From", "firstSample", rate),
							 TimeColumn("To", "endSample", rate), FixedColumn("Number", "angle", 0),
							 TextColumn("Angle", "name"), TextColumn("Place", "place")},
						 angles, {}));
}

// "gain 6, cutoff from 100 by 3 keyframes, bypassed".
std::string DescribeControls(Json const& inEffect)
{
	std::string text;
	auto const add = [&text](std::string const& inPart) { text += (text.empty() ? "" : ", ") + inPart; };
	auto const describe = [](Json const& inValue)
	{
		return inValue.is_object() ? "from " + FormatNumber(inValue["first"].get<double>()) + " by " +
										 FormatCount(inValue["keyframes"].get<std::size_t>(), "keyframe")
			   : inValue.is_string() ? inValue.get<std::string>()
									 : FormatNumber(inValue.get<double>());
	};
	if (inEffect.contains("preset"))
	{
		add("preset " + GetText(inEffect, "preset"));
	}
	if (auto const controls = inEffect.find("controls"); controls != inEffect.end())
	{
		for (auto const& [symbol, value] : controls->items())
		{
			add(symbol + " " + describe(value));
		}
	}
	if (auto const bypass = inEffect.find("bypass"); bypass != inEffect.end() && *bypass != false)
	{
		add(*bypass == true ? "bypassed" : "bypass " + describe(*bypass));
	}
	return text;
}

std::string MakeEffects(Json const& inReport)
{
	auto const effects = inReport.find("effects");
	return effects == inReport.end() || effects->empty()
			   ? ""
			   : MakeSection("effects", "Effects",
					 MakeTable("Plugins in the order in which they were made",
						 {TextColumn("Effect", "name"), TextColumn("On", "on"),
							 {"Controls", DescribeControls},
							 FixedColumn("Latency, samples", "latencySamples", 0), TextColumn("URI", "uri"),
							 TextColumn("Place", "place")},
						 *effects, {}));
}

std::string MakeLearnedNoise(Json const& inReport)
{
	auto const level = [](Json const& inRow)
	{
		Json const& number = inRow["levelDbfs"];
		return number.is_null() ? std::string("nothing was learned") : FormatFixed(number.get<double>(), 1);
	};
	auto const place = [](Json const& inRow)
	{
		Json const& learn = inRow["learn"];
		int const rate = inRow["rate"].get<int>();
		auto const format = [&](char const* inKey)
		{ return FormatTime(learn[inKey].get<std::int64_t>(), rate); };
		return learn.is_null() ? std::string("its quietest stretches")
							   : format("firstMediaSample") + " to " + format("endMediaSample");
	};
	Json const& noises = inReport["learnedNoise"];
	return noises.empty() ? ""
						  : MakeSection("noise", "Noise",
								MakeTable("Noise that was learned and reduced",
									{TextColumn("File", "path"), {"Learned from", place},
										{"Level, dBFS", level}, FixedColumn("Reduction, dB", "reduction", 1)},
									noises, {}));
}

std::string MakeMissing(Json const& inReport)
{
	return MakeSection("missing", "Missing media",
		MakeTable("Clips that are silent since their media are missing",
			{TextColumn("Clip", "clip"), TextColumn("Track", "track"), TextColumn("File", "path"),
				TextColumn("Reason", "reason"), TextColumn("Place", "place")},
			inReport["missing"], "No media are missing."));
}

std::string MakeDamaged(Json const& inReport)
{
	auto const list = [](Json const& inRow)
	{
		int const rate = inRow["rate"].get<int>();
		std::string text;
		for (Json const& stretch : inRow["stretches"])
		{
			text += (text.empty() ? "" : ", ") +
					FormatTime(stretch["firstSample"].get<std::int64_t>(), rate) + " to " +
					FormatTime(stretch["endSample"].get<std::int64_t>(), rate);
		}
		return text;
	};
	return MakeSection("damaged", "Damaged media",
		MakeTable("Parts of media that cannot be decoded and are silent",
			{TextColumn("File", "path"), {"Parts", list}}, inReport["damaged"], "No damage was found."));
}

std::string MakeNotes(Json const& inReport)
{
	return MakeSection("notes", "Guesses and notes",
		MakeTable("What was guessed, ignored or not read, with its place in the file",
			{TextColumn("Kind", "kind"), TextColumn("Note", "text"), TextColumn("Clip", "clip"),
				TextColumn("Track", "track"), TextColumn("Place", "place")},
			inReport["notes"], "Nothing was guessed, ignored or left unread."));
}

// What a reader is to see first.
std::string MakeWarnings(Json const& inReport)
{
	std::string text;
	if (inReport.contains("refused"))
	{
		text += MakeParagraph("The render was refused and nothing but this report was written: " +
							  GetText(inReport, "refused") + ".");
	}
	if (auto const found = inReport.find("missing"); found != inReport.end() && !found->empty())
	{
		text += MakeParagraph(FormatCount(found->size(), "clip") + " without media" +
							  (inReport.contains("refused") ? "." : ": silence in their place."));
	}
	if (Json const& damaged = inReport["damaged"]; !damaged.empty())
	{
		text += MakeParagraph(FormatCount(damaged.size(), "damaged file") + ".");
	}
	if (auto const found = inReport.find("levelsNotRead"); found != inReport.end() && *found != 0)
	{
		text += MakeParagraph(FormatCount(found->get<std::size_t>(), "level") +
							  " of other programs not read: parts may be too loud or too quiet.");
	}
	return text.empty() ? "" : "<div class=\"warning\" role=\"note\">\n" + text + "</div>\n";
}

// Links to the sections that the page has.
std::string MakeContents(std::string const& inSections)
{
	std::string const heading = "<h2 id=\"";
	std::string text = "<nav aria-label=\"Sections\"><ul>\n";
	for (std::size_t at = inSections.find(heading); at != std::string::npos;
		 at = inSections.find(heading, at + 1))
	{
		std::size_t const id = at + heading.size();
		std::size_t const title = inSections.find("\">", id) + 2;
		text += "<li><a href=\"#" + inSections.substr(id, title - 2 - id) + "\">" +
				inSections.substr(title, inSections.find('<', title) - title) + "</a></li>\n";
	}
	return text + "</ul></nav>\n";
}

// The style sheet of pages: light and dark by the reader's choice, for any width, and for paper. It refers to nothing
// outside.
std::string GetPageStyle()
{
	return SonaroHost::GetPlotColours() +
		   "*{box-sizing:border-box}\n"
		   "body{margin:0 auto;padding:1.5rem;max-width:72rem;background:var(--paper);color:var(--ink);"
		   "font:1rem/1.5 system-ui,sans-serif}\n"
		   "h1{font-size:1.6rem;line-height:1.25;margin:0 0 .25rem;overflow-wrap:anywhere}\n"
		   "h2{font-size:1.2rem;margin:2.25rem 0 .5rem;padding-top:.75rem;border-top:1px solid var(--line)}\n"
		   "p{margin:.4rem 0;overflow-wrap:anywhere}\n"
		   "a{color:var(--short-term)}\n"
		   ".lead,caption,figcaption{color:var(--soft);overflow-wrap:anywhere}\n"
		   ".warning{border-left:.3rem solid var(--integrated);padding:.1rem .75rem;margin:1rem 0}\n"
		   "nav ul{display:flex;flex-wrap:wrap;gap:.25rem 1.25rem;list-style:none;margin:1rem 0;padding:0}\n"
		   "dl{display:grid;grid-template-columns:max-content 1fr;gap:.25rem 1.5rem;margin:.5rem 0}\n"
		   "dt{color:var(--soft)}\ndd{margin:0;overflow-wrap:anywhere}\n"
		   ".scroll{overflow-x:auto;margin:.5rem 0}\n"
		   "a:focus-visible,.scroll:focus-visible,figure:focus-visible{outline:2px solid "
		   "var(--short-term);outline-offset:2px}\n"
		   "table{border-collapse:collapse;width:100%;font-variant-numeric:tabular-nums}\n"
		   "caption{text-align:left;padding-bottom:.25rem}\n"
		   "th,td{text-align:left;vertical-align:top;padding:.3rem 1rem .3rem 0;"
		   "border-bottom:1px solid var(--line)}\n"
		   "thead th{color:var(--soft);font-weight:600;white-space:nowrap}\n"
		   "tbody th{font-weight:600}\n"
		   "tbody th,tbody td:last-child{min-width:9rem;overflow-wrap:anywhere}\n"
		   ".number{text-align:right;white-space:nowrap}\n"
		   "figure{margin:.75rem 0}\n"
		   ".paper>svg,.plot{display:block;width:100%;height:auto}\n"
		   ".paper{background:var(--paper);border:1px solid var(--line);border-radius:.25rem;padding:.5rem;"
		   "overflow-x:auto}\n"
		   ".plots{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,30rem),1fr));"
		   "gap:0 1.5rem}\n"
		   // The picture is drawn for light paper.
		   "@media screen and (prefers-color-scheme:dark){.paper>svg{filter:invert(1) hue-rotate(180deg)}}\n"
		   "@media (max-width:40rem){body{padding:1rem}dl{grid-template-columns:1fr;gap:0}"
		   "dd{margin-bottom:.5rem}.paper>svg,.plot{min-width:44rem}.plots .plot{min-width:28rem}"
		   "figure{overflow-x:auto}}\n"
		   // A heading and its picture fit on a page of paper.
		   "@media print{body{max-width:none;padding:0;font-size:10pt}nav{display:none}"
		   ".paper,.plot,tr,.warning{break-inside:avoid}h2,h3{break-after:avoid}"
		   "figcaption{break-before:avoid}.paper>svg,.plot{max-height:80vh}"
		   ".plots{grid-template-columns:1fr 1fr}.scroll,.paper{overflow:visible}}\n" +
		   SonaroHost::GetPlotStyle();
}

std::string MakeHead(std::string const& inTitle)
{
	return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
		   "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
		   "style-src 'unsafe-inline'\">\n"
		   "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
		   inTitle + "</title>\n<style>\n" + GetPageStyle() + "</style>\n</head>\n";
}

} // namespace

std::string MakeReportPage(Json const& inReport, ReportPictures const& inPictures)
{
	bool const isTimeline = inReport.contains("tracks");
	bool const isRendered = !inReport["outputs"].empty();
	std::string const sections =
		MakeSettings(inReport, inPictures) + (isRendered ? MakeWaveform(inPictures) : "") +
		MakeLoudness(inPictures) + (isRendered ? MakeLevels(inReport) : "") + MakeFiles(inReport) +
		(isTimeline
				? MakeTracks(inReport) + MakeAngles(inReport) + MakeMarkers(inReport) + MakeMissing(inReport)
				: MakeInputs(inReport)) +
		MakeEffects(inReport) + MakeLearnedNoise(inReport) + MakeDamaged(inReport) +
		(isTimeline ? MakeNotes(inReport) : "");
	std::string const name = GetInputName(inReport);
	Json const& range = inReport["range"];
	std::string const lead = FormatTime(range["samples"].get<std::int64_t>(), GetRate(inReport)) + ", " +
							 GetText(inReport["programme"], "layout") + ", " +
							 std::to_string(GetRate(inReport)) + " Hz";
	return MakeHead(EscapeMarkup("Render report: " + name)) +
		   "<body>\n<header>\n<h1>Render report: " + Isolate(name) + "</h1>\n<p class=\"lead\">" +
		   EscapeMarkup(lead) + "</p>\n" + MakeWarnings(inReport) + MakeContents(sections) +
		   "</header>\n<main>\n" + sections + "</main>\n</body>\n</html>\n";
}

} // namespace SonaroCommand::Page
