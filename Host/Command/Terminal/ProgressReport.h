#pragma once

#include "SonaroHost/Base/RenderProgress.h"

#include <chrono>
#include <cstddef>

namespace SonaroCommand
{

class Caller;

// Shows on the error output how far a render has come: a bar on a terminal, a line every ten seconds elsewhere. Its
// end clears the bar. A Caller, that of the thread which makes it, gets every step instead.
class ProgressReport
{
public:
	// inIsQuiet: it shows nothing, but a caller goes on being called.
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

	Caller* mCaller;
	Style mStyle;
	int mSampleRate;
	Clock::time_point mBegin = Clock::now();
	Clock::time_point mNext;
	// Columns that the bar covers now.
	std::size_t mDrawn = 0;
};

} // namespace SonaroCommand
