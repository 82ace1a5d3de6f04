#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace SonaroHost
{

// A failure that a person can act on. Its message is one line that names the file, the place, the
// reason and, where there is one, the remedy: "'edit.otio', /tracks/children/0: ends beyond 50 hours; cut it".
class HostError : public std::runtime_error
{
public:
	enum class Kind
	{
		// What was asked for makes no sense, by itself or for this input.
		kRequest,
		kInput,
		kOutput,
		// The input is in order, and nothing in it is heard.
		kNothingHeard,
		// The engine would not do what the host asked of it.
		kEngine,
	};

	// What a message is made of; all but the reason may be empty.
	struct Parts
	{
		// The file as the user named it, or a path of the system.
		std::filesystem::path mFile;
		// The place in the file: a JSON pointer (RFC 6901), or a line and a column. Long ones are shortened in the message.
		std::string mPlace;
		std::string mReason;
		// What to do about it, in the imperative.
		std::string mRemedy;
	};

	HostError(Kind inKind, Parts inParts);
	// One whose message has a reason alone.
	HostError(Kind inKind, std::string const& inReason);

	// What the error is about, which decides the exit code of the command.
	Kind GetKind() const noexcept { return mKind; }
	Parts const& GetParts() const noexcept { return mParts; }

private:
	Kind mKind;
	Parts mParts;
};

// Throws a HostError of the kind kRequest.
[[noreturn]] void Refuse(std::string const& inReason);
// One of the kind kInput that is about a whole file.
[[noreturn]] void RefuseFile(
	std::filesystem::path const& inFile, std::string const& inReason, std::string const& inRemedy = {});
// One of the kind kOutput.
[[noreturn]] void RefuseOutput(std::string const& inReason);

// A path for messages: in quotes, control characters escaped, so that any name stays on one line.
std::string QuotePath(std::filesystem::path const& inPath);

} // namespace SonaroHost
