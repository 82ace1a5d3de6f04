#pragma once

#include "Media.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace SonaroHost::Testing
{

using Words = std::vector<std::string>;

// The words of the second after those of the first.
Words Join(Words inFirst, Words const& inSecond);

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
	Words mArguments;
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

// A command line that the program refuses.
struct RefusedWords
{
	int mExitCode = 0;
	Words mWords;
	// All that the error output says, among others.
	Words mTexts;
};

// Runs the program "sonaro" in a folder of its own.
class ProgramTest : public testing::Test
{
protected:
	ProgramResult Run(Words const& inArguments, std::function<void(int)> const& inMeanwhile = {}) const;

	// That exit code, one line on the error output with all texts, and nothing on the other.
	void ExpectRefusal(Words const& inArguments, int inExitCode, Words const& inTexts) const;
	// Several at a time: most of what one takes is the start of its process.
	void ExpectRefusals(std::vector<RefusedWords> const& inCases) const;

	TemporaryFolder mFolder;
	ProgramStart mStart;
};

} // namespace SonaroHost::Testing
