#include "ProgressReport.h"

#include "Caller.h"
#include "OperatingSystem.h"
#include "SonaroHost/Base/TimePosition.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>

namespace SonaroCommand
{

namespace
{

using namespace std::chrono_literals;

constexpr auto kBarInterval = 100ms;
constexpr auto kLineInterval = 10s;

double GetFraction(SonaroHost::RenderProgress const& inProgress)
{
	return inProgress.mFramesTotal > 0
			   ? static_cast<double>(inProgress.mFramesDone) / static_cast<double>(inProgress.mFramesTotal)
			   : 1.0;
}

// "312x real time, 0:04 left"
std::string DescribeSpeed(
	SonaroHost::RenderProgress const& inProgress, int inSampleRate, double inElapsedSeconds)
{
	double const rendered = static_cast<double>(inProgress.mFramesDone) / inSampleRate;
	double const fraction = GetFraction(inProgress);
	double const left = fraction > 0.0 ? inElapsedSeconds * (1.0 - fraction) / fraction : 0.0;
	auto const secondsLeft = std::llround(std::min(left, 359999.0));
	std::array<char, 64> text{};
	std::snprintf(text.data(), text.size(), "%.0fx real time, %lld:%02lld left",
		inElapsedSeconds > 0.0 ? rendered / inElapsedSeconds : 0.0, secondsLeft / 60, secondsLeft % 60);
	return text.data();
}

int GetPercent(SonaroHost::RenderProgress const& inProgress)
{
	return static_cast<int>(100.0 * GetFraction(inProgress));
}

} // namespace

ProgressReport::ProgressReport(int inSampleRate, bool inIsQuiet)
	: mCaller(FindCaller()),
	  mStyle(mCaller || inIsQuiet      ? Style::kNone
			 : IsErrorOutputTerminal() ? Style::kBar
									   : Style::kLines),
	  mSampleRate(inSampleRate),
	  mNext(mBegin + (mStyle == Style::kBar ? Clock::duration(kBarInterval) : Clock::duration(kLineInterval)))
{
}

ProgressReport::~ProgressReport()
{
	if (mDrawn > 0)
	{
		std::fprintf(stderr, "\r%*s\r", static_cast<int>(mDrawn), "");
		std::fflush(stderr);
	}
}

void ProgressReport::Update(SonaroHost::RenderProgress const& inProgress)
{
	if (mCaller)
	{
		mCaller->Follow(inProgress, mSampleRate);
	}
	if (mStyle == Style::kNone)
	{
		return;
	}
	auto const now = Clock::now();
	if (now < mNext)
	{
		return;
	}
	double const elapsed = std::chrono::duration<double>(now - mBegin).count();
	if (mStyle == Style::kBar)
	{
		mNext = now + kBarInterval;
		DrawBar(inProgress, elapsed);
	}
	else
	{
		mNext = now + kLineInterval;
		PrintLine(inProgress, elapsed);
	}
}

void ProgressReport::DrawBar(SonaroHost::RenderProgress const& inProgress, double inElapsedSeconds)
{
	std::array<char, 16> percent{};
	std::snprintf(percent.data(), percent.size(), " %3d %%  ", GetPercent(inProgress));
	std::string const text = percent.data() + DescribeSpeed(inProgress, mSampleRate, inElapsedSeconds);

	// One column stays free, lest the terminal break the line.
	int const room = GetTerminalWidth() - 1 - static_cast<int>(text.size()) - 2;
	std::string line;
	if (int const width = std::min(room, 50); width >= 5)
	{
		auto const filled = static_cast<std::size_t>(GetFraction(inProgress) * width);
		line += '[';
		line.append(filled, '=');
		line.append(static_cast<std::size_t>(width) - filled, ' ');
		line += ']';
	}
	line += text;
	std::size_t const drawn = line.size();
	line.resize(std::max(drawn, mDrawn), ' ');
	mDrawn = drawn;
	std::fprintf(stderr, "\r%s", line.c_str());
	std::fflush(stderr);
}

void ProgressReport::PrintLine(SonaroHost::RenderProgress const& inProgress, double inElapsedSeconds) const
{
	std::fprintf(stderr, "sonaro: %d %% (%s of %s), %s\n", GetPercent(inProgress),
		SonaroHost::FormatTime(inProgress.mFramesDone, mSampleRate).c_str(),
		SonaroHost::FormatTime(inProgress.mFramesTotal, mSampleRate).c_str(),
		DescribeSpeed(inProgress, mSampleRate, inElapsedSeconds).c_str());
}

} // namespace SonaroCommand
