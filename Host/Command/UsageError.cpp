#include "UsageError.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace SonaroCommand
{

namespace
{

// The fewest letters to put in, take out, change or swap with their neighbour that make one word of the other
// (optimal string alignment).
std::size_t GetDistance(std::string_view inA, std::string_view inB)
{
	std::vector<std::vector<std::size_t>> table(inA.size() + 1, std::vector<std::size_t>(inB.size() + 1));
	for (std::size_t a = 0; a <= inA.size(); ++a)
	{
		for (std::size_t b = 0; b <= inB.size(); ++b)
		{
			if (a == 0 || b == 0)
			{
				table[a][b] = a + b;
				continue;
			}
			std::size_t const change = inA[a - 1] == inB[b - 1] ? 0 : 1;
			table[a][b] = std::min({table[a - 1][b] + 1, table[a][b - 1] + 1, table[a - 1][b - 1] + change});
			if (a > 1 && b > 1 && inA[a - 1] == inB[b - 2] && inA[a - 2] == inB[b - 1])
			{
				table[a][b] = std::min(table[a][b], table[a - 2][b - 2] + 1);
			}
		}
	}
	return table[inA.size()][inB.size()];
}

// Nothing where none is so near that it may have been meant: a third of its letters differ, or more, and the word is
// not its beginning either.
std::optional<std::string> FindNearest(std::string_view inWord, std::vector<std::string> const& inKnown)
{
	std::optional<std::string> nearest;
	std::size_t shortest = 0;
	for (std::string const& known : inKnown)
	{
		// The dashes stand in all of them.
		constexpr std::size_t kShortestStart = 4;
		bool const isStart = inWord.size() >= kShortestStart && known.starts_with(inWord);
		std::size_t const distance = isStart ? 1 : GetDistance(inWord, known);
		std::size_t const letters = known.size() - std::min(known.size(), known.find_first_not_of('-'));
		if (3 * distance <= letters + 1 && (!nearest || distance < shortest))
		{
			nearest = known;
			shortest = distance;
		}
	}
	return nearest;
}

std::string DescribeUnknown(
	char const* inKind, std::string const& inWord, std::vector<std::string> const& inKnown)
{
	auto const nearest = FindNearest(inWord, inKnown);
	return std::string("there is no ") + inKind + " " + SonaroHost::QuotePath(inWord) +
		   (nearest ? "; did you mean " + *nearest + "?" : "");
}

std::vector<std::string> ListOptions(CLI::App const& inParser)
{
	std::vector<std::string> names;
	for (CLI::Option const* const option : inParser.get_options())
	{
		for (std::string const& name : option->get_lnames())
		{
			names.push_back("--" + name);
		}
		for (std::string const& name : option->get_snames())
		{
			names.push_back("-" + name);
		}
	}
	return names;
}

std::vector<std::string> ListCommands(CLI::App const& inProgram)
{
	std::vector<std::string> names;
	for (CLI::App const* const command : inProgram.get_subcommands({}))
	{
		names.push_back(command->get_name());
	}
	return names;
}

// Nothing where all options are known.
std::optional<std::string> FindUnknownOption(CLI::App const& inParser)
{
	for (std::string const& word : inParser.remaining())
	{
		if (word.size() > 1 && word.front() == '-')
		{
			return DescribeUnknown("option", word.substr(0, word.find('=')), ListOptions(inParser));
		}
	}
	return std::nullopt;
}

// Describes what is wrong with a command line without a command.
std::string DescribeNoCommand(CLI::App const& inProgram, CLI::ParseError const& inError)
{
	if (auto unknown = FindUnknownOption(inProgram))
	{
		return std::move(*unknown);
	}
	if (inError.get_exit_code() != static_cast<int>(CLI::ExitCodes::RequiredError))
	{
		return inError.what();
	}
	auto const words = inProgram.remaining();
	return words.empty() ? "give a command"
						 : DescribeUnknown("command", words.front(), ListCommands(inProgram));
}

// The library's own words name the option and leave out what to do.
std::string DescribeWrongValue(CLI::ParseError const& inError)
{
	std::string const text = inError.what();
	std::string const option = text.substr(0, text.find(':'));
	switch (static_cast<CLI::ExitCodes>(inError.get_exit_code()))
	{
	case CLI::ExitCodes::ArgumentMismatch:
		return option + (text.find("At Most") != std::string::npos ? " is given more than once; give it once"
																   : " needs a value");
	case CLI::ExitCodes::ConversionError:
	{
		std::string const pair = text.substr(text.find(':') + 1);
		std::size_t const start = pair.find_first_not_of(' ');
		std::size_t const equals = pair.find(" = ");
		return equals == std::string::npos ? text
										   : pair.substr(start, equals - start) + ": '" +
												 pair.substr(equals + 3) + "' is no number that fits";
	}
	default:
		return text;
	}
}

} // namespace

std::string DescribeUsageError(CLI::App const& inProgram, CLI::ParseError const& inError)
{
	auto const chosen = inProgram.get_subcommands();
	if (chosen.empty())
	{
		return DescribeNoCommand(inProgram, inError) + " (see sonaro --help)";
	}
	auto const unknown = FindUnknownOption(*chosen.front());
	return unknown.value_or(DescribeWrongValue(inError)) + " (see sonaro " + chosen.front()->get_name() +
		   " --help)";
}

} // namespace SonaroCommand
