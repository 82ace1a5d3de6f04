#include "CommandRun.h"

#include "Program.h"

#include <utility>

namespace SonaroPython
{

CommandRun::CommandRun(std::vector<std::string> inArguments, Texts inTexts, Programmes inProgrammes)
	: mTexts(std::move(inTexts)),
	  mProgrammes(std::move(inProgrammes)),
	  mThread([this, arguments = std::move(inArguments)]() mutable { Run(std::move(arguments)); })
{
}

CommandRun::~CommandRun()
{
	Stop();
	mThread.join();
}

void CommandRun::Run(std::vector<std::string> inArguments)
{
	SonaroCommand::CallerScope const scope(*this);
	try
	{
		mExitCode = SonaroCommand::Program().Run(std::move(inArguments));
	}
	catch (...)
	{
		mFailure = std::current_exception();
	}
	std::lock_guard const lock(mMutex);
	mHasEnded = true;
	mChanged.notify_all();
}

bool CommandRun::WaitFor(std::chrono::milliseconds inTime)
{
	std::unique_lock lock(mMutex);
	return mChanged.wait_for(lock, inTime, [this] { return mHasEnded; });
}

std::optional<SonaroHost::RenderProgress> CommandRun::TakeProgress()
{
	std::lock_guard const lock(mMutex);
	return std::exchange(mProgress, std::nullopt);
}

void CommandRun::Follow(SonaroHost::RenderProgress const& inProgress, int /*inSampleRate*/)
{
	std::lock_guard const lock(mMutex);
	mProgress = inProgress;
}

SonaroCommand::CalledProgramme const* CommandRun::FindProgramme(std::string const& inPath)
{
	auto const found = mProgrammes.find(inPath);
	return found == mProgrammes.end() ? nullptr : &found->second->GetProgramme();
}

std::shared_ptr<std::string const> CommandRun::FindTimelineText(std::string const& inPath)
{
	auto const found = mTexts.find(inPath);
	return found == mTexts.end() ? nullptr : found->second;
}

} // namespace SonaroPython
