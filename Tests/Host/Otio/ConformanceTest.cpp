#include "RenderSequence.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Otio/TimelineFile.h"
#include "SonaroHost/OtioSequence/TimelineMaker.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <string>
#include <vector>

namespace SonaroHost::Otio::ConformanceTest
{

namespace
{

using nlohmann::json;
using Samples = std::vector<std::vector<double>>;

std::filesystem::path const kFolder = std::filesystem::path(SONARO_CONFORMANCE) / "otio";

std::vector<std::string> ListCases()
{
	std::vector<std::string> names;
	for (auto const& entry : std::filesystem::directory_iterator(kFolder / "cases"))
	{
		if (entry.path().extension() == ".otio")
		{
			names.push_back(entry.path().stem());
		}
	}
	std::sort(names.begin(), names.end());
	return names;
}

FadeShape ParseShape(std::string const& inName)
{
	return inName == "linear" ? FadeShape::kLinear
							  : (inName == "s-curve" ? FadeShape::kSCurve : FadeShape::kEqualPower);
}

// In double precision, by the formulas of the documents.
double GetShapeGain(std::string const& inName, double inProgress)
{
	double const p = inProgress;
	return inName == "linear"
			   ? p
			   : (inName == "s-curve" ? p * p * (3.0 - 2.0 * p) : std::sin(p * std::numbers::pi / 2.0));
}

// What media hold at a position, by their rule; in a straight line between samples.
double ReadMedia(json const& inMedia, std::int64_t inChannel, double inPosition)
{
	constexpr double kFullScale = 32768.0;
	constexpr double kChannelStep = 5000.0;
	if (inPosition < 0.0 || inPosition > inMedia["frames"].get<double>() - 1.0)
	{
		return 0.0;
	}
	double const first = inMedia["first"].get<double>() + kChannelStep * static_cast<double>(inChannel);
	return (first + inPosition) / kFullScale;
}

double GetFade(json const& inRun, std::int64_t inFrame)
{
	if (!inRun.contains("fade"))
	{
		return 1.0;
	}
	json const& fade = inRun["fade"];
	double const begin = fade[2].get<double>();
	double const progress = (static_cast<double>(inFrame) - begin) / (fade[3].get<double>() - begin);
	return GetShapeGain(fade[0], fade[1] == "in" ? progress : 1.0 - progress);
}

double GetRamp(json const& inRun, std::int64_t inFrame)
{
	if (!inRun.contains("ramp"))
	{
		return 1.0;
	}
	json const& ramp = inRun["ramp"];
	double const begin = ramp[1].get<double>();
	double const progress = (static_cast<double>(inFrame) - begin) / (ramp[2].get<double>() - begin);
	double const value = std::lerp(ramp[3].get<double>(), ramp[4].get<double>(), progress);
	return ramp[0] == "linear" ? value : std::pow(10.0, value / 20.0);
}

Samples WorkOut(json const& inExpected)
{
	auto const frames = inExpected["frames"].get<std::size_t>();
	Samples samples;
	for (json const& runs : inExpected["channels"])
	{
		std::vector<double>& channel = samples.emplace_back(frames);
		for (json const& run : runs)
		{
			json const& media = inExpected["media"][run["media"].get<std::string>()];
			for (auto frame = run["from"].get<std::int64_t>(); frame < run["to"].get<std::int64_t>(); ++frame)
			{
				double const passed = static_cast<double>(frame - run["from"].get<std::int64_t>());
				double const position =
					run["first"].get<double>() +
					(run["step"].get<double>() + run.value("bend", 0.0) * passed) * passed;
				channel[static_cast<std::size_t>(frame)] +=
					ReadMedia(media, run["channel"].get<std::int64_t>(), position) *
					run["gain"].get<double>() * GetFade(run, frame) * GetRamp(run, frame);
			}
		}
	}
	return samples;
}

// Samples that are not compared: where what is resampled has not settled, beside the ends of runs, and where a case
// leaves them open.
std::vector<bool> FindSkipped(json const& inExpected)
{
	auto const frames = inExpected["frames"].get<std::int64_t>();
	std::vector<bool> isSkipped(static_cast<std::size_t>(frames));
	auto const skip = [&isSkipped, frames](std::int64_t inFirst, std::int64_t inEnd)
	{
		for (std::int64_t frame = std::max<std::int64_t>(inFirst, 0); frame < std::min(inEnd, frames);
			 ++frame)
		{
			isSkipped[static_cast<std::size_t>(frame)] = true;
		}
	};
	auto const reach = inExpected.value("unsettled", std::int64_t{0});
	for (json const& run : inExpected["channels"][0])
	{
		for (char const* const end : {"from", "to"})
		{
			auto const place = run[end].get<std::int64_t>();
			skip(place - reach, place + reach);
		}
	}
	for (json const& stretch : inExpected.value("skipped", json::array()))
	{
		skip(stretch[0], stretch[1]);
	}
	return isSkipped;
}

// Nothing where nothing is scaled. Gains are products of single precision, the progress of a fade is a sum.
double GetTolerance(json const& inExpected)
{
	if (inExpected.contains("within"))
	{
		return inExpected["within"].get<double>() / 32768.0;
	}
	double tolerance = 0.0;
	for (json const& runs : inExpected["channels"])
	{
		for (json const& run : runs)
		{
			double const forRun = run.contains("fade") ? 4.0e-6 : (run["gain"] == 1 ? 0.0 : 1.0e-6);
			tolerance = std::max(tolerance, forRun);
		}
	}
	return tolerance;
}

void CompareSamples(SN::Testing::Samples const& inActual, json const& inExpected)
{
	Samples const expected = WorkOut(inExpected);
	ASSERT_EQ(inActual.size(), expected.size());
	std::vector<bool> const isSkipped = FindSkipped(inExpected);
	double const tolerance = GetTolerance(inExpected);
	for (std::size_t channel = 0; channel < expected.size(); ++channel)
	{
		ASSERT_EQ(inActual[channel].size(), expected[channel].size());
		for (std::size_t frame = 0; frame < expected[channel].size(); ++frame)
		{
			ASSERT_TRUE(isSkipped[frame] ||
						std::abs(double{inActual[channel][frame]} - expected[channel][frame]) <= tolerance)
				<< "channel " << channel << ", frame " << frame << ": " << inActual[channel][frame] * 32768.0f
				<< " instead of " << expected[channel][frame] * 32768.0;
		}
	}
}

std::string Join(std::vector<Note> const& inNotes)
{
	std::string text;
	for (Note const& note : inNotes)
	{
		text += std::to_string(static_cast<int>(note.mKind)) + " " + note.mPlace + ": " + note.mText + "\n";
	}
	return text;
}

class OtioConformance : public testing::TestWithParam<std::string>
{
};

TEST_P(OtioConformance, EverySampleIsAsTheCaseSays)
{
	std::filesystem::path const base = kFolder / "cases" / GetParam();
	json const expected = json::parse(std::ifstream(base.string() + ".expected.json"));
	SCOPED_TRACE(expected["why"].get<std::string>());
	TimelineFile const file(base.string() + ".otio");
	TimelineOptions options;
	options.mFadeShape = ParseShape(expected.value("fades", std::string("equal-power")));
	if (expected.contains("layout"))
	{
		options.mLayout = ParseLayout(expected["layout"].get<std::string>());
	}
	FileMedia media;
	TimelineSequence const sequence = MakeTimelineSequence(
		file.GetDocument().mTimelines.front(), MediaFinder(file.GetFolder()), media, options);

	EXPECT_EQ(sequence.mSampleRate, expected["rate"].get<int>());
	EXPECT_EQ(sequence.mFrames, expected["frames"].get<std::int64_t>());
	bool const warns = HasGuesses(sequence.mNotes) || HasGuesses(file.GetDocument().mNotes);
	EXPECT_EQ(warns, expected.value("warns", false))
		<< Join(file.GetDocument().mNotes) << Join(sequence.mNotes);
	auto const countUnread = [](std::vector<Note> const& inNotes)
	{
		return std::count_if(inNotes.begin(), inNotes.end(),
			[](Note const& inNote) { return inNote.mKind == Note::Kind::kLevelNotRead; });
	};
	EXPECT_EQ(
		countUnread(file.GetDocument().mNotes) + countUnread(sequence.mNotes), expected.value("unread", 0));
	std::vector<std::string> missing;
	for (MissingMedia const& entry : sequence.mMissing)
	{
		missing.push_back(entry.mClip);
	}
	EXPECT_EQ(missing, expected.value("missing", std::vector<std::string>{}));
	json markers = json::array();
	for (MarkerRow const& marker : sequence.mMarkers)
	{
		markers.push_back({marker.mName, ToSamples(marker.mStart, sequence.mSampleRate)});
	}
	EXPECT_EQ(markers, expected.value("markers", json::array()));
	EXPECT_EQ(sequence.mGlobalStart.value_or(Ratio()), Ratio(expected.value("global_start", 0)));
	CompareSamples(RenderSequence(sequence, 512), expected);
	EXPECT_EQ(media.FindFailure(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Cases, OtioConformance, testing::ValuesIn(ListCases()),
	[](auto const& inInfo)
	{
		std::string name = inInfo.param;
		std::replace(name.begin(), name.end(), '-', '_');
		return name;
	});

} // namespace

} // namespace SonaroHost::Otio::ConformanceTest
