#pragma once

#include "SonaroHost/Base/RenderProgress.h"

#include <chrono>
#include <cstddef>

namespace SonaroCommand
{

// Shows on the error output how far a render has come: a bar on a terminal, a line every ten seconds elsewhere. Its
// end clears the bar.
class ProgressReport
{
public:
	// inIsQuiet: it shows nothing.
	ProgressReport(int inSampleRate, bool inIsQuiet);
	~ProgressReport();
	ProgressReport(ProgressReport const&) = delete;
	ProgressReport& operator=(ProgressReport const&) = delete;

	void Update(SonaroHost::RenderProgress const& inProgress);

private:
	using Clock = std::chrono::steady_clock;

	void DrawBar(SonaroHost::RenderProgress const& inProgress, double inElapsedSeconds);
	void PrintLine(SonaroHost::RenderProgress const& inProgress, double inElapsedSeconds) const;

	enum class Style
	{
		kNone,
		kBar,
		kLines,
	};

	Style mStyle;
	int mSampleRate;
	Clock::time_point mBegin = Clock::now();
	Clock::time_point mNext;
	// Columns that the bar covers now.
	std::size_t mDrawn = 0;
};

} // namespace SonaroCommand
