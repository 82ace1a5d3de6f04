#pragma once

#include <functional>
#include <string>
#include <vector>

namespace SonaroHost::Testing
{

struct ProgramResult
{
	// Of an exit; -1 when a signal ended the program.
	int mExitCode = -1;
	// 0 when it ended by itself.
	int mSignal = 0;
	std::string mOutput;
	std::string mErrors;
};

// How a program is started.
struct ProgramStart
{
	std::vector<std::string> mArguments;
	// The working folder.
	std::string mFolder;
	// Where the standard output goes at its end, instead of into the result.
	std::string mOutputFile;
	// The standard input; without one, that of the test.
	std::string mInputFile;
	// Nobody reads what it prints.
	bool mClosesOutput = false;
	// The largest file in bytes that it may write; 0 for any.
	unsigned long mFileSizeLimit = 0;
};

// Runs a program to its end. inMeanwhile is called with its process id once it was started.
ProgramResult RunProgram(std::string const& inProgram, ProgramStart const& inStart,
	std::function<void(int)> const& inMeanwhile = {});

} // namespace SonaroHost::Testing
