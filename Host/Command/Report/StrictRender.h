#pragma once

#include "Options/RenderOptions.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Render/RenderSummary.h"
#include "Terminal/RunJob.h"

#include <string>

namespace SonaroCommand
{

// "only the report was written because of --strict: 1 clip has no media".
inline std::string DescribeStrictRefusal(RenderOptions const& inOptions, std::string const& inReason)
{
	return std::string(inOptions.mReport.empty() ? "nothing was written" : "only the report was written") +
		   " because of " + (inOptions.IsStrictInAll() ? "--strict" : "--strict=media") + ": " + inReason;
}

// Runs a job as RunJob does. When --strict was given and the job fails since an input is not in order, such as damaged
// media, inWriteRefusal gets the reason, before the HostError is thrown on.
template <class Job, class WriteRefusal>
auto RunStrictly(Job& ioJob, RenderOptions const& inOptions, WriteRefusal const& inWriteRefusal)
{
	using SonaroHost::HostError;
	try
	{
		return RunJob(ioJob, ioJob.GetSampleRate(), inOptions.mIsQuiet);
	}
	catch (HostError const& error)
	{
		if (inOptions.IsStrictInAll() && error.GetKind() == HostError::Kind::kInput)
		{
			inWriteRefusal(error.what());
		}
		throw;
	}
}

} // namespace SonaroCommand
