#include "ProgramRun.h"

#include <array>
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

ProgramResult RunProgram(
	std::string const& inProgram, ProgramStart const& inStart, std::function<void(int)> const& inMeanwhile)
{
	std::vector<std::string> words = inStart.mArguments;
	words.insert(words.begin(), inProgram);
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

} // namespace SonaroHost::Testing
