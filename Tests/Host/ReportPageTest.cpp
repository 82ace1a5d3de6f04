// The page that "--report mix.html" writes, read as text and by a browser.

#include "MarkupCheck.h"
#include "ProgramRun.h"
#include "TimelineJson.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <regex>
#include <set>

namespace SonaroHost::Testing::ReportPageTest
{

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int kRate = 48000;

std::set<std::string> const kElements{"html", "head", "meta", "title", "style", "body", "header", "main",
	"nav", "section", "h1", "h2", "h3", "p", "ul", "li", "a", "dl", "dt", "dd", "div", "figure", "figcaption",
	"table", "caption", "thead", "tbody", "tr", "th", "td", "svg", "g", "rect", "path", "line", "text",
	"tspan", "bdi", "title", "desc", "defs", "use", "symbol", "clipPath", "polyline", "polygon", "circle"};

class ReportPageTest : public ProgramTest
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, kRate, 6 * kRate));
	}

	void WriteTimeline(std::string const& inTrack, std::string const& inClip, std::string const& inMissing)
	{
		Json const odd = WithSettings(Track(inTrack, {Clip(inClip, "tone.wav", 0.0, 5.0)}), {{inClip, 3}});
		WriteBytes(mFolder / "edit.otio",
			WithSettings(
				Timeline({odd, Track("Other", {Clip(inClip, inMissing), Clip("b", "tone.wav", 1.0, 4.0)})},
					{Marker("Verse", 1.0, 0.5)}),
				{{"layout", "stereo"}})
				.dump());
	}

	std::string Report(Words const& inOptions = {}, int inExitCode = 3)
	{
		ProgramResult const result =
			Run(Join({"render", "edit.otio", "-o", "mix.wav", "--quiet", "--report", "mix.html"}, inOptions));
		EXPECT_EQ(result.mExitCode, inExitCode) << result.mErrors;
		return ReadBytes(mFolder / "mix.html");
	}
};

std::size_t CountText(std::string const& inText, std::string const& inPart)
{
	std::size_t count = 0;
	for (std::size_t at = inText.find(inPart); at != std::string::npos; at = inText.find(inPart, at + 1))
	{
		++count;
	}
	return count;
}

// The cell of a table with a number.
std::string MakeCell(Json const& inNumber, int inDigits)
{
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), ">%.*f<", inDigits, inNumber.get<double>());
	return text.data();
}

TEST_F(ReportPageTest, PageShowsWhatTheReportHas)
{
	WriteTimeline("Dialogue", "gian", "gone.wav");
	Words const options = {"--normalize", "-20", "--limit-dbtp", "-9", "--range", "0.5..4.5", "--fade-in",
		"1.5", "--media", ".", "--fades", "linear"};
	std::string const page = Report(options);
	ASSERT_EQ(
		Run(Join({"render", "edit.otio", "-o", "mix.wav", "--report", "mix.json"}, options)).mExitCode, 3);
	Json const report = Json::parse(ReadBytes(mFolder / "mix.json"));
	ExpectMarkup(page, kElements);
	Json const& file = report["outputs"][0];
	Json const& track = report["tracks"][0];
	for (std::string const& text : {MakeCell(file["integratedLufs"], 1), MakeCell(file["truePeakDbtp"], 2),
			 MakeCell(track["integratedLufs"], 1), MakeCell(track["truePeakDbtp"], 2),
			 ">" + report["notes"][0]["place"].get<std::string>() + "<", std::string(">./gone.wav<"),
			 std::string(">does not exist<"), std::string("<h1>Render report: <bdi>edit.otio</bdi></h1>"),
			 std::string("Normalized to -20.0 LUFS"), std::string("was limited by up to"),
			 std::string("<dt>--normalize</dt><dd><bdi>-20 LUFS</bdi></dd>"),
			 std::string("<dt>--range</dt><dd><bdi>0.5..4.5</bdi></dd>"),
			 std::string("<dt>--fade-in</dt><dd><bdi>1.5 s</bdi></dd>"),
			 std::string("<dt>--media</dt><dd><bdi>.</bdi></dd>"),
			 std::string("<dt>--fades</dt><dd><bdi>linear</bdi></dd>"), std::string("<h2 id=\"markers\">"),
			 std::string(">Verse<"), std::string(">0:01.500<"), std::string("No damage was found."),
			 std::string("class=\"plot-target\" x1"), std::string("1 clip without media")})
	{
		EXPECT_NE(page.find(text), std::string::npos) << text;
	}
	// The mix and two tracks, each with three curves, and a picture of the timeline.
	auto const count = [&page](std::string const& inText) { return CountText(page, inText); };
	EXPECT_EQ(count("<svg class=\"plot\""), 3u);
	EXPECT_EQ(count("<path class=\"plot-integrated\""), 3u);
	EXPECT_EQ(count("role=\"img\""), 4u);
	// Keys reach all of them, and their texts are what they are read out by.
	EXPECT_EQ(count("<figure tabindex=\"0\" aria-labelledby=\""), 4u);
	EXPECT_EQ(count("<figure"), 4u);
	EXPECT_EQ(count("<figcaption id=\""), 4u);
	EXPECT_THAT(page, AllOf(HasSubstr("<figcaption id=\"track-1\"><bdi>Dialogue</bdi>: momentary at most "),
						  HasSubstr("aria-label=\"Loudness over time: Mix. Momentary at most ")));
	EXPECT_EQ(count("<svg aria-label=\"Waveform of the whole timeline"), 1u);
	EXPECT_EQ(count("<th scope=\"row\""), count("<tr>") - count("<thead>"));
	std::regex const links("href=\"#([a-z]+)\"");
	for (auto link = std::sregex_iterator(page.begin(), page.end(), links); link != std::sregex_iterator();
		 ++link)
	{
		EXPECT_EQ(count("id=\"" + link->str(1) + "\""), 1u) << link->str();
	}
}

TEST_F(ReportPageTest, SamplesThatTheLoudnessOfATrackLeavesOutAreReported)
{
	Sound faulty = MakeSound(2, kRate, 2 * kRate);
	faulty.mSamples[1000] = std::numeric_limits<float>::infinity();
	WriteSound(mFolder / "faulty.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, faulty);
	WriteBytes(mFolder / "edit.otio",
		Timeline({Track("Whole", {Clip("a", "tone.wav")}), Track("Faulty", {Clip("b", "faulty.wav")})})
			.dump());
	EXPECT_THAT(Report({}, 0), AllOf(HasSubstr("The loudness of mix.wav leaves out 1 sample ("),
								   HasSubstr("The loudness of track Faulty leaves out 1 sample ("),
								   Not(HasSubstr("track Whole leaves out"))));
}

TEST_F(ReportPageTest, HostileNamesStayText)
{
	constexpr char const* kScript = "<script>alert(1)</script>";
	constexpr char const* kAttribute = "\" onload=\"alert(2)\" '><img src=x onerror=alert(3)>";
	WriteTimeline(kScript, kAttribute, "</td></table>&lt;<svg onload=alert(4)>.wav");
	std::string const page = Report();
	ExpectMarkup(page, kElements);
	EXPECT_THAT(
		page, AllOf(HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;"), HasSubstr("&lt;/table&gt;&amp;lt;"),
				  Not(HasSubstr("<script")), Not(HasSubstr("<img")), HasSubstr("default-src 'none'")));
	// What is no text is written out.
	WriteTimeline("bell\a and \u202ebackwards", "a", "gone.wav");
	EXPECT_THAT(Report(), HasSubstr("bell\\x07 and \\u202ebackwards"));
	EXPECT_THAT(Report({"--strict"}, 1),
		AllOf(HasSubstr("The render was refused"), HasSubstr("No file was written."),
			HasSubstr("1 clip without media."), Not(HasSubstr("silence in their place"))));
}

TEST_F(ReportPageTest, SoundFilesAndStemsHavePagesToo)
{
	EXPECT_EQ(Run({"render", "tone.wav", "tone.wav", "-o", "out.wav", "--report", "out.HTM", "--pan", "0.3",
					  "--reverse", "--at", "0", "--at", "7"})
				  .mExitCode,
		0);
	std::string const page = ReadBytes(mFolder / "out.HTM");
	ExpectMarkup(page, kElements);
	EXPECT_THAT(page, AllOf(HasSubstr("tone.wav and 1 other input"), HasSubstr("Waveform of out.wav"),
						  HasSubstr("<svg class=\"plot\""), Not(HasSubstr("Missing media")),
						  HasSubstr("<dt>--pan</dt><dd><bdi>0.3</bdi></dd>"),
						  HasSubstr("<dt>--reverse</dt><dd><bdi>yes</bdi></dd>"),
						  HasSubstr("<dt>--at</dt><dd><bdi>0 s, 7 s</bdi></dd>")));
	EXPECT_EQ(
		Run({"render", "tone.wav", "-o", "-", "--report", "pipe.html", "--start", "0:01"}).mExitCode, 0);
	EXPECT_THAT(
		ReadBytes(mFolder / "pipe.html"), AllOf(HasSubstr("no picture of what went to the standard output"),
											  HasSubstr("<dt>--start</dt><dd><bdi>0:01</bdi></dd>")));

	WriteTimeline("Dialogue", "a", "gone.wav");
	EXPECT_EQ(Run({"render", "edit.otio", "-o", "stems", "--stems", "track", "--report", "stems/all.html"})
				  .mExitCode,
		3);
	std::string const stems = ReadBytes(mFolder / "stems/all.html");
	ExpectMarkup(stems, kElements);
	EXPECT_THAT(stems, AllOf(HasSubstr("stems/01 Dialogue.wav"), HasSubstr("stems/02 Other.wav")));
	// The standard output has no name to choose by.
	EXPECT_TRUE(Json::accept(Run({"render", "edit.otio", "-o", "mix.wav", "--report", "-"}).mOutput));
}

// The relative luminance of WCAG 2.
double GetLuminance(std::string const& inColour)
{
	constexpr std::array<double, 3> kWeights{0.2126, 0.7152, 0.0722};
	double luminance = 0.0;
	for (std::size_t i = 0; i < kWeights.size(); ++i)
	{
		double const part = std::stoi(inColour.substr(1 + 2 * i, 2), nullptr, 16) / 255.0;
		luminance += kWeights[i] * (part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4));
	}
	return luminance;
}

double GetContrast(std::string const& inA, std::string const& inB)
{
	auto const [darker, lighter] = std::minmax({GetLuminance(inA), GetLuminance(inB)});
	return (lighter + 0.05) / (darker + 0.05);
}

TEST_F(ReportPageTest, ColoursHaveTheContrastOfLevelAAInBothThemes)
{
	EXPECT_NEAR(GetContrast("#ffffff", "#000000"), 21.0, 0.001);
	EXPECT_NEAR(GetContrast("#ffffff", "#767676"), 4.54, 0.01);
	EXPECT_EQ(Run({"render", "tone.wav", "-o", "out.wav", "--report", "out.html"}).mExitCode, 0);
	std::string const page = ReadBytes(mFolder / "out.html");
	std::vector<std::map<std::string, std::string>> themes;
	std::regex const root(":root\\{([^}]*)\\}");
	std::regex const variable("--([a-z-]+):(#[0-9a-f]{6})");
	for (auto rule = std::sregex_iterator(page.begin(), page.end(), root); rule != std::sregex_iterator();
		 ++rule)
	{
		std::string const text = rule->str(1);
		std::map<std::string, std::string>& theme = themes.emplace_back();
		for (auto one = std::sregex_iterator(text.begin(), text.end(), variable);
			 one != std::sregex_iterator(); ++one)
		{
			theme[one->str(1)] = one->str(2);
		}
	}
	ASSERT_EQ(themes.size(), 2u);
	EXPECT_GT(GetLuminance(themes[0].at("paper")), 0.9);
	EXPECT_LT(GetLuminance(themes[1].at("paper")), 0.1);
	for (auto const& theme : themes)
	{
		// Texts and links, then lines that carry a meaning.
		for (auto const& [name, least] : std::map<std::string, double>{{"ink", 4.5}, {"soft", 4.5},
				 {"short-term", 4.5}, {"momentary", 3.0}, {"integrated", 3.0}, {"target", 3.0}})
		{
			EXPECT_GE(GetContrast(theme.at(name), theme.at("paper")), least) << name << " " << theme.at(name);
		}
	}
}

// Chromium on a page, without a network; nothing where it is not installed.
class BrowserTest : public ReportPageTest
{
protected:
	void SetUp() override
	{
		ReportPageTest::SetUp();
		for (char const* const path : {"/usr/bin/chromium", "/usr/bin/chromium-browser"})
		{
			mBrowser = mBrowser.empty() && std::filesystem::exists(path) ? path : mBrowser;
		}
		if (mBrowser.empty())
		{
			GTEST_SKIP() << "no chromium is installed";
		}
	}

	// inDo: what the browser does with the page.
	ProgramResult Open(std::string const& inName, std::string const& inSize = "1280,900",
		std::string const& inDo = "--dump-dom") const
	{
		ProgramStart start;
		start.mFolder = mFolder.Get().string();
		start.mArguments = {"--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
			"--no-first-run", "--proxy-server=127.0.0.1:9", "--host-resolver-rules=MAP * ~NOTFOUND",
			"--enable-logging=stderr", "--user-data-dir=" + (mFolder / "profile").string(),
			"--hide-scrollbars", "--window-size=" + inSize, "--virtual-time-budget=1000", inDo,
			"file://" + (mFolder / inName).string()};
		return RunProgram(mBrowser, start);
	}

	std::string mBrowser;
};

TEST_F(BrowserTest, PageLoadsWithoutAComplaintAndFitsAPhone)
{
	WriteTimeline("<script>console.error('script')</script>" + std::string(200, 'y'),
		"a long name " + std::string(200, 'x'), "gone.wav");
	std::string const page = Report();
	ProgramResult const result = Open("mix.html");
	EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
	EXPECT_THAT(result.mErrors, Not(HasSubstr("CONSOLE")));
	EXPECT_THAT(
		result.mOutput, AllOf(HasSubstr("<h1>Render report: <bdi>edit.otio</bdi></h1>"), HasSubstr("</svg>"),
							HasSubstr("&lt;script&gt;"), Not(HasSubstr("<script>"))));

	// With a script of ours, without the policy that forbids it: complaints are seen, and the page says how wide it is.
	std::string copy = page;
	std::size_t const policy = copy.find("<meta http-equiv");
	copy.erase(policy, copy.find('>', policy) + 1 - policy);
	copy.insert(copy.find("</body>"),
		"<script>console.error('seen');document.title='width '+document.documentElement.scrollWidth+' of '+"
		"window.innerWidth</script>");
	WriteBytes(mFolder / "copy.html", copy);
	for (int const size : {500, 900})
	{
		ProgramResult const shown = Open("copy.html", std::to_string(size) + ",900");
		EXPECT_THAT(shown.mErrors, AllOf(HasSubstr("CONSOLE"), HasSubstr("seen")));
		std::smatch width;
		ASSERT_TRUE(std::regex_search(shown.mOutput, width, std::regex("<title>width ([0-9]+) of ([0-9]+)")));
		EXPECT_LE(std::stoi(width[2]), size);
		EXPECT_LE(std::stoi(width[1]), std::stoi(width[2]));
	}
}

TEST_F(BrowserTest, TallPicturesFitPagesOfPaper)
{
	Json timeline = Timeline({});
	for (int i = 0; i < 40; ++i)
	{
		timeline["tracks"]["children"].push_back(Track("T", {Clip("a", "tone.wav", 0.0, 5.0)}));
	}
	WriteBytes(mFolder / "edit.otio", timeline.dump());
	Report({}, 0);
	EXPECT_EQ(Open("mix.html", "1280,900", "--print-to-pdf=" + (mFolder / "mix.pdf").string()).mExitCode, 0);
	// The settings, the waveform on a page of its own, eight plots a page and the tables.
	EXPECT_LE(CountText(ReadBytes(mFolder / "mix.pdf"), "/Type /Page\n"), 10u);
}

} // namespace SonaroHost::Testing::ReportPageTest
