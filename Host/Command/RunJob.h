#pragma once

#include "OperatingSystem.h"
#include "ProgressReport.h"

#include <stop_token>

namespace SonaroCommand
{

// Runs a job of the library to its end and returns its summary, telling how far it has come. When the
// process is asked to end, the job clears away what it began, and then the process ends.
template <class Job>
auto RunJob(Job& ioJob, int inSampleRate, bool inIsQuiet)
{
	InterruptGuard interrupt;
	std::stop_source stop;
	auto const run = [&]
	{
		ProgressReport report(inSampleRate, inIsQuiet);
		auto const progress = [&](SonaroHost::RenderProgress const& inProgress)
		{
			report.Update(inProgress);
			if (interrupt.IsInterrupted())
			{
				stop.request_stop();
			}
		};
		return ioJob.Run(progress, stop.get_token());
	};
	auto const summary = run();
	if (!summary)
	{
		interrupt.EndProcess();
	}
	return *summary;
}

} // namespace SonaroCommand
