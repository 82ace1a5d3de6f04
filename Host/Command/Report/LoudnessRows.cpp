#include "LoudnessRows.h"

#include "Json.h"
#include "Levels.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/Metering/LoudnessSeries.h"
#include "Terminal/TextTable.h"
#include "TimelineRows.h"

#include <cmath>
#include <utility>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

using Maximum = LoudnessSeries::Maximum;

// The version of the keys: one more for any change that a reader would stumble over.
constexpr int kLoudnessVersion = 1;
// The shortest programme that has an integrated loudness, in seconds.
constexpr double kShortestSeconds = 0.4;
constexpr char const* kNoValue = "-";

std::string ShowInput(std::string const& inPath)
{
	return IsStandardStream(inPath) ? "standard input" : MakePrintable(inPath);
}

std::string FormatLevel(double inDecibels, int inDigits)
{
	return std::isfinite(inDecibels) ? FormatFixed(inDecibels, inDigits) : kNoValue;
}

std::string FormatMaximum(Maximum const& inMaximum)
{
	return FormatLevel(inMaximum.mLoudness, 1);
}

std::string FormatMaximumTime(Maximum const& inMaximum)
{
	constexpr int kMilliseconds = 1000;
	return std::isfinite(inMaximum.mLoudness)
			   ? FormatTime(std::llround(inMaximum.mSeconds * kMilliseconds), kMilliseconds)
			   : kNoValue;
}

std::string FormatRange(LoudnessSeries const& inSeries)
{
	auto const range = inSeries.GetRange();
	return range ? FormatFixed(*range, 1) : kNoValue;
}

std::string DescribeOne(MeasuredProgramme const& inProgramme)
{
	std::string text =
		ShowInput(inProgramme.mPath) + ": " + FormatTime(inProgramme.mFrames, inProgramme.mSampleRate) +
		", " + GetLayoutName(inProgramme.mLayout) + ", " + std::to_string(inProgramme.mSampleRate) + " Hz\n";
	if (!inProgramme.mReading)
	{
		return text;
	}
	auto const add = [&text](std::string inName, std::string const& inValue)
	{
		inName.resize(12, ' ');
		text += inName + inValue + "\n";
	};
	LoudnessReading const& reading = *inProgramme.mReading;
	LoudnessSeries const& series = *reading.mSeries;
	auto const withUnit = [](std::string const& inValue, char const* inUnit)
	{ return inValue == kNoValue ? inValue : inValue + inUnit; };
	auto const describeMaximum = [&](Maximum const& inMaximum)
	{
		return withUnit(FormatMaximum(inMaximum), " LUFS") +
			   (std::isfinite(inMaximum.mLoudness) ? " at most, at " + FormatMaximumTime(inMaximum) : "");
	};
	add("Integrated", withUnit(FormatLevel(reading.mIntegrated, 1), " LUFS"));
	add("Range", withUnit(FormatRange(series), " LU"));
	add("Momentary", describeMaximum(series.GetMomentaryMaximum()));
	add("Short-term", describeMaximum(series.GetShortTermMaximum()));
	add("True peak", FormatFixed(ToDecibels(reading.mTruePeak), 2) + " dBTP");
	add("Peak", FormatPeak(static_cast<float>(reading.mPeak)));
	return text;
}

Json DescribeMaximum(Maximum const& inMaximum)
{
	bool const isMeasured = std::isfinite(inMaximum.mLoudness);
	return {{"lufs", GetNumberOrSilence(inMaximum.mLoudness)},
		{"seconds", isMeasured ? Json(inMaximum.mSeconds) : Json()}};
}

} // namespace

std::string DescribeProblem(MeasuredProgramme const& inProgramme)
{
	if (!inProgramme.mReading)
	{
		return "has " + std::to_string(inProgramme.mLayout.size()) + " channels at " +
			   std::to_string(inProgramme.mSampleRate) + " Hz, whose loudness cannot be measured";
	}
	if (std::isfinite(inProgramme.mReading->mIntegrated))
	{
		return {};
	}
	if (inProgramme.mReading->mPeak == 0.0)
	{
		return "is silent, so it has no loudness";
	}
	if (static_cast<double>(inProgramme.mFrames) < kShortestSeconds * inProgramme.mSampleRate)
	{
		return "is too short for its loudness to be measured: " +
			   FormatTime(inProgramme.mFrames, inProgramme.mSampleRate) + ", less than 0.4 seconds";
	}
	return "is too quiet for its loudness to be measured: "
		   "no block of 0.4 seconds, one every 0.1 seconds, is above -70 LUFS";
}

std::string ListLoudnessForPeople(std::vector<MeasuredProgramme> const& inProgrammes)
{
	if (inProgrammes.size() == 1)
	{
		return DescribeOne(inProgrammes.front());
	}
	std::vector<std::vector<std::string>> rows{
		{"LUFS", "range LU", "momentary", "at", "short-term", "at", "dBTP", "dBFS", "input"}};
	for (MeasuredProgramme const& programme : inProgrammes)
	{
		std::vector<std::string>& row = rows.emplace_back(8, kNoValue);
		if (programme.mReading)
		{
			LoudnessReading const& reading = *programme.mReading;
			LoudnessSeries const& series = *reading.mSeries;
			row = {FormatLevel(reading.mIntegrated, 1), FormatRange(series),
				FormatMaximum(series.GetMomentaryMaximum()), FormatMaximumTime(series.GetMomentaryMaximum()),
				FormatMaximum(series.GetShortTermMaximum()), FormatMaximumTime(series.GetShortTermMaximum()),
				FormatLevel(ToDecibels(reading.mTruePeak), 2), FormatLevel(ToDecibels(reading.mPeak), 2)};
		}
		row.push_back(ShowInput(programme.mPath));
	}
	return FormatTable(rows);
}

std::string ListLoudnessForMachines(std::vector<MeasuredProgramme> const& inProgrammes)
{
	Json list = Json::array();
	for (MeasuredProgramme const& programme : inProgrammes)
	{
		Json json{{"path", programme.mPath}, {"rate", programme.mSampleRate}, {"samples", programme.mFrames},
			{"seconds", static_cast<double>(programme.mFrames) / programme.mSampleRate},
			{"layout", GetLayoutName(programme.mLayout)}};
		if (auto const& reading = programme.mReading)
		{
			auto const range = reading->mSeries->GetRange();
			AddLoudness(json, *reading);
			json.update(Json{{"rangeLu", range ? Json(*range) : Json()},
				{"momentaryMaximum", DescribeMaximum(reading->mSeries->GetMomentaryMaximum())},
				{"shortTermMaximum", DescribeMaximum(reading->mSeries->GetShortTermMaximum())}});
		}
		if (std::string const problem = DescribeProblem(programme); !problem.empty())
		{
			json["problem"] = problem;
		}
		list.push_back(std::move(json));
	}
	return ToText({{"schema", "sonaro.loudness"}, {"version", kLoudnessVersion}, {"inputs", list}});
}

} // namespace SonaroCommand
