#include "TextTable.h"

#include <algorithm>
#include <cstddef>

namespace SonaroCommand
{

namespace
{

// Characters of UTF-8, for which one column of a terminal is taken.
std::size_t CountCharacters(std::string const& inText)
{
	return static_cast<std::size_t>(std::ranges::count_if(
		inText, [](char inByte) { return (static_cast<unsigned char>(inByte) & 0xc0) != 0x80; }));
}

struct Column
{
	std::size_t mWidth = 0;
	bool mHasNumbers = true;
};

} // namespace

std::string FormatTable(std::vector<std::vector<std::string>> const& inRows)
{
	std::vector<Column> columns(inRows.front().size());
	for (std::size_t row = 0; row < inRows.size(); ++row)
	{
		for (std::size_t i = 0; i < columns.size(); ++i)
		{
			std::string const& cell = inRows[row][i];
			bool const isNumber = cell.find_first_not_of("0123456789:.-") == std::string::npos;
			columns[i].mWidth = std::max(columns[i].mWidth, CountCharacters(cell));
			columns[i].mHasNumbers = columns[i].mHasNumbers && (row == 0 || isNumber);
		}
	}
	std::string text;
	for (std::vector<std::string> const& row : inRows)
	{
		for (std::size_t i = 0; i < columns.size(); ++i)
		{
			bool const isLast = i + 1 == columns.size();
			std::string const padding(columns[i].mWidth - CountCharacters(row[i]), ' ');
			text += "  ";
			text += columns[i].mHasNumbers && !isLast ? padding + row[i] : row[i] + (isLast ? "" : padding);
		}
		text += "\n";
	}
	return text;
}

} // namespace SonaroCommand
