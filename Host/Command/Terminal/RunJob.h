#pragma once

#include "ProgressReport.h"
#include "StopSignals.h"

namespace SonaroCommand
{

// Runs a job of the library to its end and returns its summary, showing how far it has come. When the process is
// asked to end, the job clears away what it began, and then the process ends.
template <class Job>
auto RunJob(Job& ioJob, int inSampleRate, bool inIsQuiet)
{
	auto const run = [&]
	{
		ProgressReport report(inSampleRate, inIsQuiet);
		return ioJob.Run([&](SonaroHost::RenderProgress const& inProgress) { report.Update(inProgress); },
			StopSignals::GetToken());
	};
	auto const summary = run();
	if (!summary)
	{
		StopSignals::EndProcess();
	}
	return *summary;
}

} // namespace SonaroCommand
