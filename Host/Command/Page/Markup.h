#pragma once

#include "Report/Json.h"

#include <functional>
#include <string>
#include <vector>

namespace SonaroCommand::Page
{

// A column of a table: its title, and the text of its cells, which is escaped later.
struct Column
{
	std::string mTitle;
	std::function<std::string(Json const&)> mGetText;
	// Numbers stand to the right.
	bool mIsNumber = false;
};

// A table with a caption and a row for each element of an array; a sentence where it has none.
std::string MakeTable(std::string const& inCaption, std::vector<Column> const& inColumns, Json const& inRows,
	std::string const& inSentenceForNone);

// A text of its own direction, whatever stands around it, such as a name in a script from right to left.
std::string Isolate(std::string const& inText);

// A picture with its caption, which keys can reach and which is read out by its caption. Both are markup.
std::string MakeFigure(std::string const& inId, std::string const& inPicture, std::string const& inCaption);

// A section with its heading, which links can lead to. inContent: markup.
std::string MakeSection(std::string const& inId, std::string const& inHeading, std::string const& inContent);

// A paragraph, whose text is escaped.
std::string MakeParagraph(std::string const& inText);

// What a key holds as a text: "" where there is no such key, numbers as whole ones.
std::string GetText(Json const& inObject, char const* inKey);
// A number with so many digits; "-inf" for silence, "" where there is none.
std::string GetFixed(Json const& inObject, char const* inKey, int inDigits);

// Columns that show a key so.
Column TextColumn(char const* inTitle, char const* inKey);
Column FixedColumn(char const* inTitle, char const* inKey, int inDigits);
// A count of samples as a time.
Column TimeColumn(char const* inTitle, char const* inKey, int inSampleRate);

} // namespace SonaroCommand::Page
