#pragma once

#include "SonaroHost/Base/RenderProgress.h"
#include "SonaroHost/Render/Programme.h"

#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace SonaroCommand
{

// A programme of a sequence that a caller has made.
struct CalledProgramme
{
	SonaroHost::Programme mProgramme;
	// Files that it reads, which no output may replace.
	std::vector<std::filesystem::path> mMedia;
};

// Who runs a command within its own process, in place of a person at a terminal: it gets all that would be printed, and
// asks the command to stop. Without one, a command prints to the standard streams and heeds the signals of the process.
//
// Threads  The functions are called on the thread that runs the command, but for Follow; see ProgressCallback.
class Caller
{
public:
	virtual ~Caller() = default;

	virtual void TakeError(std::string const& inMessage) = 0;
	virtual void TakeWarning(std::string const& inMessage) = 0;
	// What a command prints on the standard output.
	virtual void TakeResult(std::string const& inText) = 0;
	virtual void Follow(SonaroHost::RenderProgress const& inProgress, int inSampleRate) = 0;
	virtual std::stop_token GetStop() = 0;
	// The programme that goes by that path, which outlives the command; null for what is to be read from there.
	virtual CalledProgramme const* FindProgramme(std::string const& inPath) = 0;
	// The JSON of a timeline that is in memory and goes by that path; null for one to be read from there.
	virtual std::shared_ptr<std::string const> FindTimelineText(std::string const& inPath) = 0;
};

// Makes a caller that of the thread as long as this lives; it outlives this.
class CallerScope
{
public:
	explicit CallerScope(Caller& ioCaller);
	~CallerScope();
	CallerScope(CallerScope const&) = delete;
	CallerScope& operator=(CallerScope const&) = delete;

private:
	Caller* mBefore;
};

// That of this thread; null at a terminal.
Caller* FindCaller();
// See Caller; null at a terminal.
CalledProgramme const* FindCalledProgramme(std::string const& inPath);
std::shared_ptr<std::string const> FindTimelineText(std::string const& inPath);

// Thrown in place of the end of the process when a caller has asked a command to stop, and its output was cleared away.
struct CommandStopped
{
};

} // namespace SonaroCommand
