#include "TimelineWaveform.h"

#include "Command.h"
#include "Console.h"
#include "Json.h"
#include "RunJob.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "TimelineNotes.h"

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

std::string DescribeForPeople(TimelineWaveformRequest const& inRequest, std::string const& inOutput,
	TimelineWaveformSummary const& inSummary)
{
	std::string text = ShowOutput(inOutput) + ": " + FormatTime(inSummary.mFrames, inSummary.mSampleRate) +
					   ", " + std::to_string(inRequest.mWidth) + " x " + std::to_string(inSummary.mHeight) +
					   " pixels, from the top:\n";
	for (std::string const& band : inSummary.mBands)
	{
		text += "  " + SonaroHost::MakePrintable(band) + "\n";
	}
	return text;
}

std::string DescribeForMachines(TimelineWaveformRequest const& inRequest,
	TimelineWaveformReport const& inReport, TimelineWaveformSummary const& inSummary)
{
	return ToText({{"input", inReport.mInput}, {"output", inReport.mOutput}, {"samples", inSummary.mFrames},
		{"rate", inSummary.mSampleRate}, {"columns", inRequest.mWidth}, {"height", inSummary.mHeight},
		{"bands", inSummary.mBands}, {"elapsedSeconds", inSummary.mElapsedSeconds}});
}

} // namespace

int DrawTimeline(TimelineWaveformRequest const& inRequest, TimelineWaveformReport const& inReport)
{
	TimelineWaveformJob job(inRequest);
	WarnOfNotes(job.GetSequence().mMissing, {});
	TimelineWaveformSummary const summary = RunJob(job, job.GetSampleRate(), inReport.mIsQuiet);
	if (inReport.mAsJson || !inReport.mIsQuiet)
	{
		PrintResult(inReport.mAsJson ? DescribeForMachines(inRequest, inReport, summary)
									 : DescribeForPeople(inRequest, inReport.mOutput, summary));
	}
	return job.GetSequence().mMissing.empty() ? kExitSuccess : kExitMissing;
}

} // namespace SonaroCommand
