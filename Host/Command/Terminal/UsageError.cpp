#include "UsageError.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>
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

// "wav, aiff or caf".
std::string JoinWords(std::vector<std::string> const& inWords)
{
	std::string text;
	for (std::size_t index = 0; index < inWords.size(); ++index)
	{
		text += index == 0 ? "" : index + 1 == inWords.size() ? " or " : ", ";
		text += inWords[index];
	}
	return text;
}

std::string DescribeUnknown(
	char const* inKind, std::string const& inWord, std::vector<std::string> const& inKnown)
{
	auto const nearest = FindNearest(inWord, inKnown);
	return std::string("unknown ") + inKind + " " + SonaroHost::QuotePath(inWord) +
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
		// Whatever follows is an input.
		if (word == "--")
		{
			break;
		}
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
	auto const code = static_cast<CLI::ExitCodes>(inError.get_exit_code());
	if (code != CLI::ExitCodes::RequiredError && code != CLI::ExitCodes::ExtrasError)
	{
		return inError.what();
	}
	auto const words = inProgram.remaining();
	return words.empty() ? "no command given; use " + JoinWords(ListCommands(inProgram))
						 : DescribeUnknown("command", words.front(), ListCommands(inProgram));
}

// "16,24,32f" to words.
std::vector<std::string> SplitWords(std::string const& inList, char inSeparator = ',')
{
	std::vector<std::string> words;
	for (std::size_t start = 0; start <= inList.size();)
	{
		std::size_t const end = std::min(inList.find(inSeparator, start), inList.size());
		words.push_back(inList.substr(start, end - start));
		start = end + 1;
	}
	return words;
}

bool IsWholeNumber(std::string_view inText)
{
	std::string_view const digits = inText.substr(inText.starts_with('-') || inText.starts_with('+') ? 1 : 0);
	return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsNumber(std::string const& inText)
{
	double number = 0.0;
	auto const [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), number);
	return error == std::errc() && end == inText.data() + inText.size();
}

// "0 to 60.5" for "0.000000 to 60.500000".
std::string DropZeros(std::string const& inText)
{
	std::string text;
	for (std::string const& word : SplitWords(inText, ' '))
	{
		bool const isFraction = word.find('.') != std::string::npos;
		std::size_t const last = isFraction ? word.find_last_not_of('0') : word.size() - 1;
		text += (text.empty() ? "" : " ") + word.substr(0, word[last] == '.' ? last : last + 1);
	}
	return text;
}

// Describes a value that a check of the option refuses. The library writes "--bits: 12 not in {16,24,32f}" and
// "--block: Value 0 not in range 1 to 262144".
std::string DescribeRefusedValue(std::string const& inText)
{
	constexpr std::string_view kRange = " not in range ";
	constexpr std::string_view kSet = " not in {";
	constexpr std::string_view kValue = "Value ";
	std::size_t const colon = inText.find(": ");
	std::size_t const range = inText.rfind(kRange);
	std::size_t const set = inText.rfind(kSet);
	if (colon == std::string::npos || (range == std::string::npos && set == std::string::npos))
	{
		return inText;
	}
	std::string const option = inText.substr(0, colon + 2);
	if (range != std::string::npos)
	{
		std::size_t const start = colon + 2 + kValue.size();
		std::string const value = inText.substr(start, range - start);
		std::string const limits = inText.substr(range + kRange.size());
		bool const isWhole = limits.find('.') == std::string::npos;
		bool const isNumber = isWhole ? IsWholeNumber(value) : IsNumber(value);
		char const* const kind = isWhole ? "' is not a whole number" : "' is not a number";
		return option + (isNumber ? value + " is out of range" : "'" + value + kind) + "; use " +
			   DropZeros(limits);
	}
	std::string const value = inText.substr(colon + 2, set - colon - 2);
	std::string const list = inText.substr(set + kSet.size(), inText.rfind('}') - set - kSet.size());
	return option + "'" + value + "' is not valid; use " + JoinWords(SplitWords(list));
}

// The library's own words name the option and leave out what to do.
std::string DescribeWrongValue(CLI::App const& inParser, CLI::ParseError const& inError)
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
		if (equals == std::string::npos)
		{
			return text;
		}
		std::string const name = pair.substr(start, equals - start);
		CLI::Option const* const converted = inParser.get_option_no_throw(name);
		bool const isWhole = converted && converted->get_type_name().find("FLOAT") == std::string::npos;
		return name + ": '" + pair.substr(equals + 3) + "' is not a " + (isWhole ? "whole number" : "number");
	}
	case CLI::ExitCodes::ValidationError:
		return DescribeRefusedValue(text);
	case CLI::ExitCodes::ExtrasError:
		return "unexpected argument: " + text.substr(std::min(text.find(": "), text.size() - 2) + 2);
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
	return DescribeOptionError(*chosen.front(), inError) + " (see sonaro " + chosen.front()->get_name() +
		   " --help)";
}

std::string DescribeOptionError(CLI::App const& inParser, CLI::ParseError const& inError)
{
	return FindUnknownOption(inParser).value_or(DescribeWrongValue(inParser, inError));
}

} // namespace SonaroCommand
