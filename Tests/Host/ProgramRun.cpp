#include "ProgramRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace SonaroHost::Testing
{

namespace
{

struct Pipe
{
	Pipe()
	{
		if (pipe2(mEnds.data(), O_CLOEXEC) != 0)
		{
			throw std::runtime_error("no pipe can be had");
		}
	}

	std::array<int, 2> mEnds{};
};

std::string ReadToEnd(int inDescriptor)
{
	std::string text;
	std::array<char, 4096> piece{};
	for (ssize_t count = 0; (count = read(inDescriptor, piece.data(), piece.size())) > 0;)
	{
		text.append(piece.data(), static_cast<std::size_t>(count));
	}
	close(inDescriptor);
	return text;
}

// In the child, between fork and exec: calls that are safe there alone.
[[noreturn]] void BecomeProgram(
	char* const* inArguments, ProgramStart const& inStart, Pipe const& inOutput, Pipe const& inErrors)
{
	// It does not outlive the test.
	prctl(PR_SET_PDEATHSIG, SIGKILL);
	// Tests that outlive their terminal, or run in the background of a script, ignore some of these themselves.
	for (int const stop : {SIGHUP, SIGINT, SIGTERM})
	{
		signal(stop, SIG_DFL);
	}
	bool isReady = inStart.mFolder.empty() || chdir(inStart.mFolder.c_str()) == 0;
	if (!inStart.mInputFile.empty())
	{
		isReady = isReady && dup2(open(inStart.mInputFile.c_str(), O_RDONLY | O_CLOEXEC), STDIN_FILENO) >= 0;
	}
	constexpr int kAppending = O_WRONLY | O_APPEND | O_CLOEXEC;
	int const output =
		inStart.mOutputFile.empty() ? inOutput.mEnds[1] : open(inStart.mOutputFile.c_str(), kAppending);
	isReady = isReady && dup2(output, STDOUT_FILENO) >= 0 && dup2(inErrors.mEnds[1], STDERR_FILENO) >= 0;
	if (inStart.mFileSizeLimit > 0)
	{
		rlimit const limit{inStart.mFileSizeLimit, inStart.mFileSizeLimit};
		isReady = isReady && setrlimit(RLIMIT_FSIZE, &limit) == 0;
	}
	if (isReady)
	{
		execv(inArguments[0], inArguments);
	}
	_exit(127);
}

} // namespace

Words Join(Words inFirst, Words const& inSecond)
{
	inFirst.insert(inFirst.end(), inSecond.begin(), inSecond.end());
	return inFirst;
}

ProgramResult RunProgram(
	std::string const& inProgram, ProgramStart const& inStart, std::function<void(int)> const& inMeanwhile)
{
	Words words = Join({inProgram}, inStart.mArguments);
	std::vector<char*> arguments;
	for (std::string& word : words)
	{
		arguments.push_back(word.data());
	}
	arguments.push_back(nullptr);

	Pipe const output;
	Pipe const errors;
	if (inStart.mClosesOutput)
	{
		close(output.mEnds[0]);
	}
	pid_t const process = fork();
	if (process == 0)
	{
		BecomeProgram(arguments.data(), inStart, output, errors);
	}
	close(output.mEnds[1]);
	close(errors.mEnds[1]);

	ProgramResult result;
	std::thread reader([&] { result.mErrors = ReadToEnd(errors.mEnds[0]); });
	if (inMeanwhile)
	{
		inMeanwhile(process);
	}
	result.mOutput = inStart.mClosesOutput ? std::string() : ReadToEnd(output.mEnds[0]);
	reader.join();
	int status = 0;
	waitpid(process, &status, 0);
	result.mExitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
	result.mSignal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
	return result;
}

ProgramResult ProgramTest::Run(Words const& inArguments, std::function<void(int)> const& inMeanwhile) const
{
	ProgramStart start = mStart;
	start.mArguments = inArguments;
	start.mFolder = mFolder.Get().string();
	return RunProgram(SONARO_COMMAND, start, inMeanwhile);
}

void ProgramTest::ExpectRefusal(Words const& inArguments, int inExitCode, Words const& inTexts) const
{
	SCOPED_TRACE(testing::PrintToString(inArguments));
	ProgramResult const result = Run(inArguments);
	EXPECT_EQ(result.mExitCode, inExitCode);
	EXPECT_EQ(result.mOutput, "");
	EXPECT_THAT(result.mErrors, testing::AllOf(testing::StartsWith("sonaro: "), testing::EndsWith("\n")));
	EXPECT_EQ(std::count(result.mErrors.begin(), result.mErrors.end(), '\n'), 1) << result.mErrors;
	EXPECT_THAT(result.mErrors, testing::Not(testing::HasSubstr(".;")));
	for (std::string const& text : inTexts)
	{
		EXPECT_THAT(result.mErrors, testing::HasSubstr(text));
	}
}

void ProgramTest::ExpectRefusals(std::vector<RefusedWords> const& inCases) const
{
	std::atomic<std::size_t> next = 0;
	auto const work = [&]
	{
		for (std::size_t i = next++; i < inCases.size(); i = next++)
		{
			ExpectRefusal(inCases[i].mWords, inCases[i].mExitCode, inCases[i].mTexts);
		}
	};
	std::array<std::thread, 4> threads;
	std::generate(threads.begin(), threads.end(), [&] { return std::thread(work); });
	std::for_each(threads.begin(), threads.end(), [](std::thread& ioThread) { ioThread.join(); });
}

} // namespace SonaroHost::Testing
