#include "RulerTicks.h"

#include "TextFit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>

namespace SonaroHost
{

namespace
{

// Pixels between the end of a label and the next tick.
constexpr double kLabelGap = 14.0;
// Pixels between ticks without labels.
constexpr double kTickGap = 7.0;
constexpr std::array<std::int64_t, 20> kRoundSeconds{1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600,
	7200, 14400, 21600, 43200, 86400, 432000, 864000};

// A ruler that counts in units, of which a second has mPerSecond by its labels.
struct TickScale
{
	// Steps in units, from the smallest on.
	std::vector<std::int64_t> mSteps;
	std::int64_t mPerSecond = 1;
	// The unit at the start of the programme, or the one before.
	std::int64_t mFirst = 0;
	// The real time of a unit of labels, nearly.
	double mUnitSeconds = 1.0;
	// The tick of a unit; nothing for one that has no label.
	std::function<std::optional<RulerTick>(std::int64_t inUnit, std::int64_t inStep)> mMakeTick;
};

void AddRoundSeconds(TickScale& ioScale)
{
	for (std::int64_t const seconds : kRoundSeconds)
	{
		ioScale.mSteps.push_back(seconds * ioScale.mPerSecond);
	}
}

std::string FormatSeconds(std::int64_t inMilliseconds, std::int64_t inStep)
{
	auto const seconds = static_cast<long long>(inMilliseconds / 1000);
	std::array<char, 48> text{};
	if (seconds >= 3600)
	{
		std::snprintf(
			text.data(), text.size(), "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
	}
	else
	{
		std::snprintf(text.data(), text.size(), "%lld:%02lld", seconds / 60, seconds % 60);
	}
	std::string label = text.data();
	int const digits = inStep % 1000 == 0 ? 0 : inStep % 100 == 0 ? 1 : inStep % 10 == 0 ? 2 : 3;
	if (digits > 0)
	{
		std::snprintf(text.data(), text.size(), ".%03lld", static_cast<long long>(inMilliseconds % 1000));
		label += std::string(text.data()).substr(0, static_cast<std::size_t>(digits) + 1);
	}
	return label;
}

TickScale MakeSecondsScale()
{
	constexpr double kMillisecond = 0.001;
	TickScale scale;
	scale.mPerSecond = 1000;
	scale.mUnitSeconds = kMillisecond;
	scale.mSteps = {1, 2, 5, 10, 20, 50, 100, 200, 500};
	AddRoundSeconds(scale);
	scale.mMakeTick = [](std::int64_t inUnit, std::int64_t inStep) {
		return RulerTick{static_cast<double>(inUnit) * kMillisecond, FormatSeconds(inUnit, inStep)};
	};
	return scale;
}

// inUnit: below 0 before the timecode 0.
std::optional<RulerTick> FindTick(
	Otio::ProgrammeTimecode const& inTimecode, std::int64_t inUnit, std::int64_t inNominal, char inSeparator)
{
	auto const unit = static_cast<long long>(std::abs(inUnit));
	long long const second = unit / inNominal;
	std::array<char, 96> label{};
	std::snprintf(label.data(), label.size(), "%s%02lld:%02lld:%02lld%c%02lld", inUnit < 0 ? "-" : "",
		second / 3600, second / 60 % 60, second % 60, inSeparator, unit % inNominal);
	auto const time = inTimecode.FindTime(label.data());
	return time ? std::optional(RulerTick{time->ToDouble(), label.data()}) : std::nullopt;
}

// Frames by their labels: at 29.97 those of a second are 30, and where numbers are dropped, steps of whole seconds count
// the first one there is.
TickScale MakeTimecodeScale(Otio::ProgrammeTimecode const& inTimecode)
{
	TickScale scale;
	scale.mPerSecond = std::max<std::int64_t>(1, std::llround(std::ceil(inTimecode.GetRate() - 0.001)));
	scale.mUnitSeconds = 1.0 / inTimecode.GetRate();
	for (std::int64_t frames = 1; frames < scale.mPerSecond; ++frames)
	{
		if (scale.mPerSecond % frames == 0)
		{
			scale.mSteps.push_back(frames);
		}
	}
	AddRoundSeconds(scale);
	std::string const start = inTimecode.GetLabel(Ratio());
	char const separator = start[start.size() - 3];
	bool const isNegative = start.front() == '-';
	long long hours = 0;
	long long minutes = 0;
	long long seconds = 0;
	if (std::sscanf(start.c_str() + (isNegative ? 1 : 0), "%lld:%lld:%lld", &hours, &minutes, &seconds) == 3)
	{
		std::int64_t const second = (hours * 60 + minutes) * 60 + seconds;
		scale.mFirst = (isNegative ? -second - 1 : second) * scale.mPerSecond;
	}
	scale.mMakeTick = [&inTimecode, separator, nominal = scale.mPerSecond](
						  std::int64_t inUnit, std::int64_t inStep) -> std::optional<RulerTick>
	{
		auto tick = FindTick(inTimecode, inUnit, nominal, separator);
		// At 29.97 two numbers are dropped, at 59.94 four.
		std::int64_t const dropped = inUnit < 0 ? -(nominal / 15) : nominal / 15;
		return tick || inStep % nominal != 0 ? tick
											 : FindTick(inTimecode, inUnit + dropped, nominal, separator);
	};
	return scale;
}

std::vector<RulerTick> MakeTicks(TickScale const& inScale, std::int64_t inStep, double inLength)
{
	std::vector<RulerTick> ticks;
	// The quotient is rounded towards 0.
	std::int64_t const before = inScale.mFirst > 0 ? inStep - 1 : 0;
	for (std::int64_t unit = (inScale.mFirst + before) / inStep * inStep;; unit += inStep)
	{
		// One more that has no label does not end it: the first unit lies up to a second before the programme.
		auto const tick = inScale.mMakeTick(unit, inStep);
		double const time =
			tick ? tick->mTime : static_cast<double>(unit - inScale.mFirst) * inScale.mUnitSeconds - 1.0;
		if (time > inLength)
		{
			return ticks;
		}
		if (tick && time >= 0.0)
		{
			ticks.push_back(*tick);
		}
	}
}

// The smallest step so many pixels wide.
std::int64_t ChooseStep(TickScale const& inScale, double inPixelsPerSecond, double inPixels)
{
	for (std::int64_t const step : inScale.mSteps)
	{
		if (static_cast<double>(step) * inScale.mUnitSeconds * inPixelsPerSecond >= inPixels)
		{
			return step;
		}
	}
	return inScale.mSteps.back();
}

// The smallest step that divides another one and is wide enough, or that itself.
std::int64_t ChooseMinorStep(TickScale const& inScale, double inPixelsPerSecond, std::int64_t inMajor)
{
	for (std::int64_t const step : inScale.mSteps)
	{
		if (step < inMajor && inMajor % step == 0 &&
			static_cast<double>(step) * inScale.mUnitSeconds * inPixelsPerSecond >= kTickGap)
		{
			return step;
		}
	}
	return inMajor;
}

} // namespace

std::vector<RulerTick> MakeRulerTicks(TimelinePicture const& inPicture, double inPixels, double inSize)
{
	if (!(inPicture.mLength > 0.0))
	{
		return {};
	}
	TickScale const scale =
		inPicture.mTimecode ? MakeTimecodeScale(*inPicture.mTimecode) : MakeSecondsScale();
	double const pixelsPerSecond = inPixels / inPicture.mLength;
	// No label is wider than that of the end with all its digits, or that of the start with its sign.
	auto const first = scale.mMakeTick(scale.mFirst, 1);
	std::int64_t const end = scale.mFirst + static_cast<std::int64_t>(inPicture.mLength / scale.mUnitSeconds);
	auto const last = scale.mMakeTick(end - end % scale.mPerSecond + scale.mPerSecond - 1, 1);
	double const width = kLabelGap + std::max(EstimateTextWidth(last ? last->mLabel : "00:00:00:00", inSize),
										 EstimateTextWidth(first ? first->mLabel : "", inSize));
	std::int64_t const major = ChooseStep(scale, pixelsPerSecond, width);
	std::vector<RulerTick> ticks = MakeTicks(scale, major, inPicture.mLength);
	std::int64_t const minor = ChooseMinorStep(scale, pixelsPerSecond, major);
	if (minor != major)
	{
		for (RulerTick& tick : MakeTicks(scale, minor, inPicture.mLength))
		{
			bool const isMajor = std::ranges::any_of(
				ticks, [&tick](RulerTick const& inOther) { return inOther.mTime == tick.mTime; });
			if (!isMajor)
			{
				ticks.push_back({tick.mTime, {}});
			}
		}
	}
	return ticks;
}

std::string FormatRulerTime(TimelinePicture const& inPicture, double inTime)
{
	return inPicture.mTimecode ? inPicture.mTimecode->GetLabel(Ratio::FromDouble(inTime))
							   : FormatSeconds(std::llround(inTime * 1000.0), 1);
}

} // namespace SonaroHost
