// Reads the pictures of timelines as XML and looks where things stand.

#include "Media.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Picture/PictureColours.h"
#include "SonaroHost/Picture/TimelineDrawing.h"
#include "SonaroHost/Render/TimelineWaveformJob.h"
#include "TimelineJson.h"

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <sstream>

namespace SonaroHost::Testing::TimelinePictureTest
{

using testing::HasSubstr;
using Tree = boost::property_tree::ptree;
using Span = TimelinePicture::Span;

// What is drawn in groups of one kind.
struct Group
{
	double Get(std::string const& inElement, std::string const& inName) const
	{
		return mTree.get<double>(inElement + ".<xmlattr>." + inName);
	}
	std::string GetText() const { return mTree.get<std::string>("svg.text", ""); }
	std::string GetTitle() const { return mTree.get<std::string>("title", ""); }

	Tree mTree;
};

void Collect(Tree const& inTree, std::string const& inPart, std::vector<Group>& outGroups)
{
	for (auto const& [name, child] : inTree)
	{
		if (name == "g" && child.get<std::string>("<xmlattr>.data-part") == inPart)
		{
			outGroups.push_back({child});
		}
		if (name == "g")
		{
			Collect(child, inPart, outGroups);
		}
	}
}

// A picture that was drawn. What is no XML fails.
class Drawn
{
public:
	explicit Drawn(std::string const& inSvg)
	{
		std::istringstream text(inSvg);
		read_xml(text, mTree);
	}

	double GetHeight() const { return mTree.get<double>("svg.<xmlattr>.height"); }
	Tree const& GetRoot() const { return mTree.get_child("svg"); }
	std::vector<Group> Find(std::string const& inPart) const
	{
		std::vector<Group> groups;
		Collect(GetRoot(), inPart, groups);
		return groups;
	}

private:
	Tree mTree;
};

// The boxes of all texts right below an element, as x and width, with what they say.
struct Label
{
	double mX = 0.0;
	double mWidth = 0.0;
	std::string mText;
};

std::vector<Label> ListLabels(Tree const& inTree)
{
	std::vector<Label> labels;
	for (auto const& [name, child] : inTree)
	{
		if (name == "svg")
		{
			labels.push_back({child.get<double>("<xmlattr>.x"), child.get<double>("<xmlattr>.width"),
				child.get<std::string>("text")});
		}
	}
	return labels;
}

TimelinePicture MakePicture(std::size_t inLanes, double inLength = 10.0)
{
	TimelinePicture picture;
	picture.mLength = inLength;
	for (std::size_t i = 0; i < inLanes; ++i)
	{
		picture.mLanes.emplace_back().mName = "lane " + std::to_string(i);
		picture.mLanes.back().mPath = picture.mLanes.back().mName;
	}
	return picture;
}

TimelineStyle MakeStyle(unsigned inWidth = 1200, PictureTheme inTheme = PictureTheme::kLight)
{
	return {WaveformStyle::Make(inTheme), inWidth, std::nullopt};
}

std::optional<Otio::ProgrammeTimecode> MakeTimecode(double inRate, double inStart)
{
	Otio::Timeline timeline;
	timeline.mGlobalStartTime = Otio::RationalTime{inStart * inRate, inRate};
	Otio::TimelineSequence sequence;
	sequence.mGlobalStart = Otio::ToSeconds(*timeline.mGlobalStartTime);
	return Otio::ProgrammeTimecode::Find(timeline, sequence);
}

TEST(TimelinePicture, TheRulerHasRoundLabelsInTheirPlacesThatNeverOverlap)
{
	for (double const length : {0.02, 0.5, 10.0, 61.0, 599.0, 3600.0, 36000.0, 179999.0})
	{
		for (unsigned const width : {330u, 1200u, 4000u})
		{
			// Before an hour, before the first minute that drops numbers, and before 0.
			for (auto const& [rate, start] : {std::pair(0.0, 0.0), {23.976, 3590.0}, {25.0, 3590.0},
					 {25.0, -5.0}, {29.97, 3590.0}, {29.97, 59.7}, {29.97, -60.3}, {59.94, 59.7}})
			{
				SCOPED_TRACE(testing::Message()
							 << length << " s, " << width << " pixels, rate " << rate << ", from " << start);
				TimelinePicture picture = MakePicture(1, length);
				picture.mTimecode = rate > 0.0 ? MakeTimecode(rate, start) : std::nullopt;
				Group const ruler = Drawn(DrawTimelineSvg(picture, MakeStyle(width))).Find("ruler").at(0);
				double const left = ruler.Get("rect", "x");
				double const pixels = (width - left) / length;
				double end = left;
				auto const labels = ListLabels(ruler.mTree);
				// The name of the timeline, which is empty, is no text.
				EXPECT_GE(labels.size(), length < 0.1 ? 0u : 1u);
				EXPECT_LE(labels.size(), width / 40);
				// None is left out at the start but for a dropped number.
				EXPECT_TRUE(
					labels.size() < 2 || labels[0].mX - left < 2.1 * (labels[1].mX - labels[0].mX) + 3.0);
				for (Label const& label : labels)
				{
					EXPECT_GE(label.mX, end) << label.mText;
					end = label.mX + label.mWidth;
					EXPECT_LE(end, width) << label.mText;
					if (picture.mTimecode)
					{
						double const x = picture.mTimecode->FindTime(label.mText).value().ToDouble() * pixels;
						EXPECT_NEAR(label.mX - 3.0 - left, x, 0.02) << label.mText;
						bool const isShort = labels.size() > 1 && length > 60.0;
						EXPECT_TRUE(!isShort || label.mText.ends_with(":00") ||
									label.mText.ends_with(";00") || label.mText.ends_with(";02") ||
									label.mText.ends_with(";04"))
							<< label.mText;
					}
				}
			}
		}
	}
}

TEST(TimelinePicture, NamesStayWithinTheirClipsWholeOrWithAnEllipsis)
{
	std::string const names[] = {"A", "Take 3", "interview_with_a_very_long_name_of_its_own.wav", "",
		"שלום עולם וברכה", "مقابلة مع المخرج", "日本語のインタビュー素材", "e\u0301te\u0301 a\u0300 la plage",
		"WWWWWWWWWWWW", "👩‍👩‍👧 family 👩‍👩‍👧"};
	for (std::string const& name : names)
	{
		for (double const seconds : {0.01, 0.2, 0.4, 0.7, 1.5, 9.0})
		{
			SCOPED_TRACE(name + " " + std::to_string(seconds));
			TimelinePicture picture = MakePicture(1);
			picture.mLanes[0].mBlocks.push_back({name, {}, {0.5, 0.5 + seconds}, {}});
			Drawn const drawn(DrawTimelineSvg(picture, MakeStyle()));
			Group const clip = drawn.Find("clip").at(0);
			double const left = clip.Get("rect", "x");
			double const right = left + clip.Get("rect", "width");
			auto const labels = ListLabels(clip.mTree);
			for (Label const& label : labels)
			{
				EXPECT_GE(label.mX, left);
				EXPECT_LE(label.mX + label.mWidth, right);
				std::size_t const ellipsis = label.mText.find("…");
				std::string const start = label.mText.substr(0, ellipsis);
				EXPECT_TRUE(name.starts_with(start)) << start;
				// Of three letters at least.
				EXPECT_TRUE(label.mText == name || (ellipsis != std::string::npos && start.size() >= 3))
					<< start;
			}
			bool const mayBeEmpty = name.empty() || (seconds < 0.7 && name != "A");
			EXPECT_TRUE(seconds <= 0.01 ? labels.empty() : mayBeEmpty || !labels.empty());
			EXPECT_THAT(clip.GetTitle(), HasSubstr(name));
		}
	}
}

TEST(TimelinePicture, NestedLanesAreIndentedAndSilentOnesGrey)
{
	PictureColours const& colours = GetPictureColours(PictureTheme::kLight);
	auto const toText = [](Colour const& inColour)
	{
		char text[8];
		std::snprintf(text, sizeof text, "#%02x%02x%02x", inColour.mRed, inColour.mGreen, inColour.mBlue);
		return std::string(text);
	};
	TimelinePicture picture = MakePicture(5);
	for (std::size_t i = 0; i < 5; ++i)
	{
		picture.mLanes[i].mDepth = i;
		picture.mLanes[i].mWhySilent = i == 3 ? "it is muted" : "";
		picture.mLanes[i].mColumns = i == 3 ? std::vector<float>() : std::vector<float>{-1.0f, 1.0f, 0.5f};
	}
	Drawn const drawn(DrawTimelineSvg(picture, MakeStyle()));
	std::vector<Group> const lanes = drawn.Find("lane");
	ASSERT_EQ(lanes.size(), 4u);
	double before = 0.0;
	for (Group const& lane : lanes)
	{
		EXPECT_GT(lane.Get("svg", "x"), before);
		before = lane.Get("svg", "x");
		EXPECT_EQ(lane.mTree.count("path"), 2u);
		EXPECT_EQ(lane.mTree.get<std::string>("svg.text.<xmlattr>.fill"), toText(colours.mText));
	}
	Group const quiet = drawn.Find("quiet-lane").at(0);
	EXPECT_EQ(quiet.mTree.get<std::string>("rect.<xmlattr>.fill"), toText(colours.mQuietLane));
	EXPECT_EQ(quiet.mTree.get<std::string>("svg.text.<xmlattr>.fill"), toText(colours.mFaintText));
	EXPECT_EQ(quiet.mTree.count("path"), 0u);
	EXPECT_THAT(quiet.GetTitle(), HasSubstr("it is muted"));
}

TEST(TimelinePicture, MarkersStandAtTheirTimesAndTheirNamesKeepApart)
{
	TimelinePicture picture = MakePicture(2);
	picture.mMarkers = {{"Start of the first verse of the song", "", "GREEN", {1.0, 1.0}, std::nullopt},
		{"B", "a remark", "", {2.0, 4.0}, 1}, {"C", "", "unknown", {2.001, 2.001}, std::nullopt}};
	Drawn const drawn(DrawTimelineSvg(picture, MakeStyle(1170)));
	std::vector<Group> const flags = drawn.Find("marker");
	ASSERT_EQ(flags.size(), 3u);
	double const xs[] = {270.0, 370.0, 370.1};
	for (std::size_t i = 0; i < 3; ++i)
	{
		EXPECT_NEAR(flags[i].Get("rect", "x"), xs[i], 0.01);
		for (Label const& label : ListLabels(flags[i].mTree))
		{
			EXPECT_LE(label.mX + label.mWidth, i < 2 ? xs[i + 1] : 1170.0);
		}
	}
	EXPECT_THAT(flags[0].GetText(), testing::StartsWith("Start of"));
	EXPECT_EQ(flags[1].GetText(), "");
	EXPECT_NEAR(flags[1].Get("rect", "width"), 200.0, 0.01);
	EXPECT_THAT(flags[1].GetTitle(), HasSubstr("a remark"));
	// The timeline's own go over all lanes, that of a lane stays in it.
	EXPECT_EQ(drawn.Find("marker-line").size(), 3u);
	EXPECT_EQ(drawn.Find("lane").at(1).mTree.count("g"), 1u);
}

TEST(TimelinePicture, LinesThatStandCloseTogetherLetTheWaveBelowThemShow)
{
	// 5000 clips and 350 markers in 10 s, and a few with room around them.
	TimelinePicture picture = MakePicture(2, 20.0);
	for (int i = 0; i < 5000; ++i)
	{
		picture.mLanes[0].mBlocks.push_back({"clip", {}, {0.002 * i, 0.002 * (i + 1)}, {}});
	}
	for (double const start : {11.0, 12.0, 12.1, 14.0})
	{
		picture.mLanes[0].mBlocks.push_back({"alone", {}, {start, start + 0.01}, {}});
	}
	for (int i = 0; i < 350; ++i)
	{
		picture.mMarkers.push_back({"m", "", "", {i / 35.0, i / 35.0}, i % 2});
	}
	picture.mMarkers.push_back({"m", "", "", {15.0, 15.0}, std::nullopt});
	Drawn const drawn(DrawTimelineSvg(picture, MakeStyle(2170)));
	auto const countPlain = [&](char const* inPart, std::string const& inAttribute)
	{
		return std::ranges::count_if(drawn.Find(inPart),
			[&](Group const& inGroup) { return !inGroup.mTree.get_optional<double>(inAttribute); });
	};
	EXPECT_EQ(countPlain("clip", "rect.<xmlattr>.fill-opacity"), 5);
	EXPECT_GE(drawn.Find("clip").size(), 1000u);
	EXPECT_EQ(countPlain("marker-line", "polyline.<xmlattr>.stroke-opacity"), 3);
	EXPECT_EQ(drawn.Find("marker-line").size(), 351u);
}

TEST(TimelinePicture, ColoursHaveContrast)
{
	for (PictureTheme const theme : {PictureTheme::kLight, PictureTheme::kDark})
	{
		SCOPED_TRACE(theme == PictureTheme::kLight ? "light" : "dark");
		PictureColours const& of = GetPictureColours(theme);
		WaveformStyle const wave = WaveformStyle::Make(theme);
		constexpr double kText = 4.5;
		constexpr double kGraphics = 3.0;
		struct Pair
		{
			char const* mName;
			Colour mFront;
			Colour mGround;
			double mLeast;
		};
		std::vector<Pair> pairs = {{"text", of.mText, of.mPanel, kText},
			{"faint text", of.mFaintText, of.mPanel, kText}, {"name", of.mText, of.mNameStrip, kText},
			{"faint name", of.mFaintText, of.mQuietBlock, kText}, {"tick", of.mTick, of.mPanel, kGraphics},
			{"border", of.mBorder, of.mBlock, kGraphics}, {"border", of.mBorder, wave.mBackground, kGraphics},
			{"border", of.mBorder, of.mNameStrip, kGraphics}, {"nest", of.mNestBorder, of.mBlock, kGraphics},
			{"quiet border", of.mQuietBorder, of.mQuietLane, kGraphics},
			{"quiet border", of.mQuietBorder, of.mQuietBlock, kGraphics},
			{"missing", of.mMissingBorder, of.mQuietBlock, kGraphics},
			{"fade", of.mFade, of.mFadeHalo, kGraphics}, {"wave", wave.mWave, wave.mBackground, kGraphics},
			{"wave", wave.mWave, of.mBlock, kGraphics}, {"RMS", wave.mRms, wave.mWave, kGraphics}};
		for (char const* const marker : {"PINK", "RED", "ORANGE", "YELLOW", "GREEN", "CYAN", "BLUE", "PURPLE",
				 "MAGENTA", "BLACK", "WHITE", ""})
		{
			for (Colour const& ground : {of.mPanel, of.mBlock, of.mQuietLane, wave.mBackground})
			{
				pairs.push_back({marker, GetMarkerColour(marker, theme), ground, kGraphics});
			}
		}
		for (Pair const& pair : pairs)
		{
			EXPECT_GE(GetContrast(pair.mFront, pair.mGround), pair.mLeast) << pair.mName;
		}
	}
	EXPECT_NEAR(GetContrast({0, 0, 0}, {255, 255, 255}), 21.0, 1.0e-9);
	EXPECT_NEAR(GetContrast({118, 118, 118}, {255, 255, 255}), 4.54, 0.01);
}

TEST(TimelinePicture, LanesAreNeitherTooHighNorTooLow)
{
	for (auto const& [lanes, least, most] : {std::tuple(1u, 80u, 80u), {2u, 80u, 80u}, {16u, 80u, 80u},
			 {60u, 28u, 28u}, {1000u, 28u, 28u}, {20000u, 1u, 2u}})
	{
		TimelinePicture const picture = MakePicture(lanes);
		unsigned const height = ChoosePictureHeight(picture, MakeStyle());
		EXPECT_GE(height / lanes, least) << lanes;
		EXPECT_LE((height - 22) / lanes, most) << lanes;
		EXPECT_LE(height, kMaxPictureSize);
	}
}

TEST(TimelinePicture, NamesAreNoMarkup)
{
	std::string const names[] = {"</text><script>alert(1)</script>", "a & b", "\" onload=\"x", "<!-- ", "]]>",
		"&amp;", "tab\there", "\xff\xfe"};
	for (std::string const& name : names)
	{
		TimelinePicture picture = MakePicture(1);
		picture.mTitle = name;
		picture.mLanes[0].mPath = name;
		picture.mLanes[0].mBlocks.push_back({name, name, {0.0, 10.0}, TimelinePicture::BlockKind::kMissing});
		picture.mMarkers.push_back({name, name, name, {1.0, 2.0}, 0});
		std::string const svg = DrawTimelineSvg(picture, MakeStyle());
		EXPECT_THAT(svg, testing::Not(HasSubstr("<script")));
		Drawn const drawn(svg);
		bool const isPlain = name.find_first_of("\t\xff") == std::string::npos;
		EXPECT_TRUE(!isPlain || drawn.Find("missing-clip").at(0).GetText() == name) << svg;
		EXPECT_TRUE(!isPlain || drawn.Find("lane").at(0).GetTitle() == name);
	}
}

class TimelinePictureOfFile : public testing::Test
{
protected:
	// A second of silence at 48 kHz but for a click in its middle.
	TimelinePictureOfFile()
	{
		Sound sound{1, 48000, std::vector<float>(48000)};
		sound.mSamples[24000] = 1.0f;
		WriteSound(mFolder / "click.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	}

	TimelinePicture Read(Json const& inTimeline)
	{
		Write(inTimeline);
		Otio::TimelineInput input(mFolder / "edit.otio");
		return MakeTimelinePicture(input.GetTimeline(), input.MakeSequence());
	}

	void Write(Json const& inTimeline) { std::ofstream(mFolder / "edit.otio") << inTimeline.dump(); }

	// What the command draws of the file. outLength: of the programme, in seconds.
	Drawn Draw(double* outLength = nullptr)
	{
		TimelineWaveformRequest request;
		request.mInput = mFolder / "edit.otio";
		request.mOutput = mFolder / "picture.svg";
		request.mFormat = WaveformFormat::kSvg;
		TimelineWaveformJob job(request);
		EXPECT_TRUE(job.Run());
		if (outLength)
		{
			*outLength = static_cast<double>(job.GetSequence().mFrames) / job.GetSampleRate();
		}
		std::ifstream file(request.mOutput);
		return Drawn(std::string(std::istreambuf_iterator<char>(file), {}));
	}

	TemporaryFolder mFolder;
};

std::string Describe(TimelinePicture const& inPicture)
{
	std::ostringstream text;
	for (TimelinePicture::Lane const& lane : inPicture.mLanes)
	{
		text << std::string(lane.mDepth, ' ') << lane.mName << (lane.mWhySilent.empty() ? "" : " silent")
			 << ":";
		for (TimelinePicture::Block const& block : lane.mBlocks)
		{
			text << " " << block.mName << " " << block.mSpan.mStart << "-" << block.mSpan.mEnd;
		}
		for (TimelinePicture::Fade const& fade : lane.mFades)
		{
			text << (fade.mIsRising ? " /" : " \\") << fade.mSpan.mStart << "-" << fade.mSpan.mEnd;
		}
		text << "\n";
	}
	return text.str();
}

TEST_F(TimelinePictureOfFile, ClipsFadesAndNestsStandWhereTheyAreHeard)
{
	Json const transition = {{"OTIO_SCHEMA", "Transition.1"}, {"transition_type", "SMPTE_Dissolve"},
		{"in_offset", Time(0.2)}, {"out_offset", Time(0.2)}};
	Json const faded = WithSettings(
		Clip("a", "click.wav", 0.0, 0.6), {{"fade_in", {{"duration", 0.2}, {"curve", "linear"}}}});
	Json const inner = Stack({Track("Boom", {Gap(0.4), Clip("shout", "click.wav", 0.0, 0.6)})});
	Json const nest = With(inner, {{"name", "Scene"}});
	Json const off = With(nest, {{"name", "Off"}, {"enabled", false}});
	TimelinePicture const picture =
		Read(Timeline({Track("One", {Gap(0.4), faded, transition, Clip("b", "click.wav", 0.4, 0.6)}),
						  Track("Two", {Gap(1.0), nest, off}),
						  With(Track("Pictures", {Clip("c", "click.wav")}), {{"kind", "Video"}})},
			{Marker("here", 1.0, 0.0)}));
	EXPECT_EQ(Describe(picture), "Mix:\n"
								 "One: a 0.4-1 b 1-1.6 /0.4-0.6 \\0.8-1.2 /0.8-1.2\n"
								 "Two: Scene 1-2\n"
								 " Scene:\n"
								 "  Boom: shout 1.4-2\n"
								 " Off silent:\n"
								 "  Boom silent: shout 2.4-3\n");
	ASSERT_EQ(picture.mMarkers.size(), 1u);
	EXPECT_FALSE(picture.mMarkers[0].mLane);
	Drawn const drawn(DrawTimelineSvg(picture, MakeStyle()));
	std::vector<Group> const fades = drawn.Find("fade-in");
	ASSERT_EQ(fades.size(), 2u);
	std::istringstream points(fades[1].mTree.get<std::string>("polyline.<xmlattr>.points"));
	std::vector<double> xs;
	for (std::string point; points >> point;)
	{
		xs.push_back(std::stod(point));
	}
	EXPECT_NEAR(xs.front(), 170.0 + 1030.0 * 0.8 / picture.mLength, 0.01);
	EXPECT_NEAR(xs.back(), 170.0 + 1030.0 * 1.2 / picture.mLength, 0.01);
}

// Where the highest pixel of a lane's wave is.
double FindPeak(Group const& inLane)
{
	std::istringstream words(inLane.mTree.get<std::string>("path.<xmlattr>.d"));
	char letter = 0;
	double x = 0.0;
	double y = 0.0;
	double best = 1.0e9;
	double place = 0.0;
	words >> letter >> x >> y;
	for (double value = 0.0; words >> letter && letter != 'Z' && words >> value;)
	{
		(letter == 'H' ? x : y) = value;
		place = y < best ? x : place;
		best = std::min(best, y);
	}
	return place;
}

TEST_F(TimelinePictureOfFile, WavesOfNestedTracksStandWhereTheyAreHeard)
{
	Json const inner = Stack({Track("Boom", {Clip("click", "click.wav", 0.0, 1.0)})});
	auto const nest = [&](double inSpeed)
	{
		Json const warp = {{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", inSpeed}};
		return With(inner, {{"name", "Nest"}, {"effects", List({warp})},
							   {"source_range", Range(0.0, 1.0 / std::abs(inSpeed))}});
	};
	// The click's time in a programme that begins with a second of silence.
	for (auto const& [speed, time] : {std::pair(1.0, 1.5), {2.0, 1.25}, {0.5, 2.0}})
	{
		SCOPED_TRACE(speed);
		Write(Timeline({Track("One", {Gap(1.0), nest(speed)})}));
		double length = 0.0;
		std::vector<Group> const lanes = Draw(&length).Find("lane");
		ASSERT_EQ(lanes.size(), 4u);
		for (Group const& lane : lanes)
		{
			EXPECT_NEAR(FindPeak(lane), 170.0 + 1030.0 * time / length, 2.0) << lane.GetTitle();
		}
	}
}

TEST_F(TimelinePictureOfFile, WavesOfRampedClipsStandWhereTheyAreHeard)
{
	for (bool const keepsPitch : {false, true})
	{
		Json clip = Clip("click", "click.wav", 0.0, 1.0);
		Json const keys = List({{{"time", 0}, {"value", 0.5}}, {{"time", 1}, {"value", 1.5}}});
		clip["metadata"]["sonaro"] = {{"speed", {{"keyframes", keys}}}, {"keep_pitch", keepsPitch}};
		Write(Timeline({Track("One", {Gap(1.0), clip})}));
		// Half a second of the media is over when (t + t^2) / 2 is.
		double const time = 1.0 + (std::sqrt(5.0) - 1.0) / 2.0;
		std::vector<Group> const lanes = Draw().Find("lane");
		ASSERT_EQ(lanes.size(), 2u);
		for (Group const& lane : lanes)
		{
			EXPECT_NEAR(FindPeak(lane), 170.0 + 1030.0 * time / 2.0, 3.0) << lane.GetTitle();
		}
	}
}

TEST_F(TimelinePictureOfFile, BitmapsShowTheSame)
{
	TimelinePicture picture = MakePicture(3);
	std::string const plain = DrawTimelinePng(picture, MakeStyle());
	EXPECT_TRUE(plain.starts_with("\x89PNG"));
	EXPECT_NE(DrawTimelinePng(picture, MakeStyle(1200, PictureTheme::kDark)), plain);
	picture.mLanes[1].mName = "another";
	EXPECT_NE(DrawTimelinePng(picture, MakeStyle()), plain);
}

} // namespace SonaroHost::Testing::TimelinePictureTest
