#pragma once

#include "Sequence/OpenSequence.h"
#include "SonaroHost/Base/RenderProgress.h"
#include "Terminal/Caller.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace SonaroPython
{

// A run of the sonaro command in this process, on a thread of its own, so that the one that waits for it can listen to
// Python. Nothing reaches the standard streams.
//
// Threads  Stop: any. The rest: one at a time, without the interpreter's lock where they wait.
class CommandRun final : public SonaroCommand::Caller
{
public:
	// The JSON of timelines in memory by the paths that stand for them among the arguments.
	using Texts = std::map<std::string, std::shared_ptr<std::string const>>;

	// Programmes, likewise.
	using Programmes = std::map<std::string, std::shared_ptr<OpenSequence>>;

	// inArguments: without the program's name.
	CommandRun(std::vector<std::string> inArguments, Texts inTexts, Programmes inProgrammes);
	// Stops it and waits for its end.
	~CommandRun() override;
	CommandRun(CommandRun const&) = delete;
	CommandRun& operator=(CommandRun const&) = delete;

	// Whether it ended in that time.
	bool WaitFor(std::chrono::milliseconds inTime);
	void Stop() { mStop.request_stop(); }
	// What there was since the last call, the latest of it.
	std::optional<SonaroHost::RenderProgress> TakeProgress();

	// Once it has ended: the exit code, and what was thrown, CommandStopped where it was stopped; null for nothing.
	int GetExitCode() const { return mExitCode; }
	std::exception_ptr const& GetFailure() const { return mFailure; }
	std::string const& GetOutput() const { return mOutput; }
	std::vector<std::string> const& GetErrors() const { return mErrors; }
	std::vector<std::string> const& GetWarnings() const { return mWarnings; }

	void TakeError(std::string const& inMessage) override { mErrors.push_back(inMessage); }
	void TakeWarning(std::string const& inMessage) override { mWarnings.push_back(inMessage); }
	void TakeResult(std::string const& inText) override { mOutput += inText; }
	void Follow(SonaroHost::RenderProgress const& inProgress, int inSampleRate) override;
	std::stop_token GetStop() override { return mStop.get_token(); }
	SonaroCommand::CalledProgramme const* FindProgramme(std::string const& inPath) override;
	std::shared_ptr<std::string const> FindTimelineText(std::string const& inPath) override;

private:
	void Run(std::vector<std::string> inArguments);

	Texts mTexts;
	Programmes mProgrammes;
	std::stop_source mStop;
	std::mutex mMutex;
	std::condition_variable mChanged;
	bool mHasEnded = false;
	std::optional<SonaroHost::RenderProgress> mProgress;
	int mExitCode = 0;
	std::exception_ptr mFailure;
	// Written by the thread, read once it has ended.
	std::string mOutput;
	std::vector<std::string> mErrors;
	std::vector<std::string> mWarnings;
	std::thread mThread;
};

} // namespace SonaroPython
