#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace SonaroHost
{

// A failure that a person can act on. Its message is one line that names the file, the place, the
// reason and, where there is one, the remedy.
class HostError : public std::runtime_error
{
public:
	enum class Kind
	{
		// What was asked for makes no sense, by itself or for this input.
		eRequest,
		eInput,
		eOutput,
		// The engine would not do what the host asked of it.
		eEngine,
	};

	HostError(Kind inKind, std::string const& inMessage)
		: std::runtime_error(inMessage),
		  mKind(inKind)
	{
	}

	Kind GetKind() const noexcept { return mKind; }

private:
	Kind mKind;
};

// A path for messages: in quotes, control characters escaped, so that any name stays on one line.
std::string QuotePath(std::filesystem::path const& inPath);

} // namespace SonaroHost
