#include "Markup.h"

#include "Report/Levels.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"

#include <cstdint>

namespace SonaroCommand::Page
{

using SonaroHost::EscapeMarkup;

std::string MakeTable(std::string const& inCaption, std::vector<Column> const& inColumns, Json const& inRows,
	std::string const& inSentenceForNone)
{
	if (inRows.empty())
	{
		return MakeParagraph(inSentenceForNone);
	}
	std::string const caption = EscapeMarkup(inCaption);
	// What is wider than a phone scrolls by itself, by keyboard as well.
	std::string text = "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"" + caption +
					   "\"><table><caption>" + caption + "</caption>\n<thead><tr>";
	for (Column const& column : inColumns)
	{
		text += std::string("<th scope=\"col\"") + (column.mIsNumber ? " class=\"number\">" : ">") +
				EscapeMarkup(column.mTitle) + "</th>";
	}
	text += "</tr></thead>\n<tbody>\n";
	for (Json const& row : inRows)
	{
		text += "<tr>";
		for (std::size_t i = 0; i < inColumns.size(); ++i)
		{
			char const* const name = i == 0 ? "th" : "td";
			std::string const cell = inColumns[i].mGetText(row);
			text +=
				std::string("<") + name + (i == 0 ? " scope=\"row\"" : "") +
				(inColumns[i].mIsNumber ? " class=\"number\">" + EscapeMarkup(cell) : ">" + Isolate(cell)) +
				"</" + name + ">";
		}
		text += "</tr>\n";
	}
	return text + "</tbody></table></div>\n";
}

std::string Isolate(std::string const& inText)
{
	return inText.empty() ? "" : "<bdi>" + EscapeMarkup(inText) + "</bdi>";
}

std::string MakeFigure(std::string const& inId, std::string const& inPicture, std::string const& inCaption)
{
	return "<figure tabindex=\"0\" aria-labelledby=\"" + inId + "\">\n" + inPicture + "<figcaption id=\"" +
		   inId + "\">" + inCaption + "</figcaption>\n</figure>\n";
}

std::string MakeSection(std::string const& inId, std::string const& inHeading, std::string const& inContent)
{
	return "<section aria-labelledby=\"" + inId + "\">\n<h2 id=\"" + inId + "\">" + EscapeMarkup(inHeading) +
		   "</h2>\n" + inContent + "</section>\n";
}

std::string MakeParagraph(std::string const& inText)
{
	return "<p>" + EscapeMarkup(inText) + "</p>\n";
}

std::string GetText(Json const& inObject, char const* inKey)
{
	auto const found = inObject.find(inKey);
	return found == inObject.end() ? "" : found->is_string() ? found->get<std::string>() : found->dump();
}

std::string GetFixed(Json const& inObject, char const* inKey, int inDigits)
{
	auto const found = inObject.find(inKey);
	return found != inObject.end() && found->is_number() ? FormatFixed(found->get<double>(), inDigits)
														 : GetText(inObject, inKey);
}

Column TextColumn(char const* inTitle, char const* inKey)
{
	return {inTitle, [inKey](Json const& inRow) { return GetText(inRow, inKey); }};
}

Column FixedColumn(char const* inTitle, char const* inKey, int inDigits)
{
	return {inTitle, [inKey, inDigits](Json const& inRow) { return GetFixed(inRow, inKey, inDigits); }, true};
}

Column TimeColumn(char const* inTitle, char const* inKey, int inSampleRate)
{
	auto const get = [inKey, inSampleRate](Json const& inRow)
	{
		auto const found = inRow.find(inKey);
		return found == inRow.end() ? std::string()
									: SonaroHost::FormatTime(found->get<std::int64_t>(), inSampleRate);
	};
	return {inTitle, get, true};
}

} // namespace SonaroCommand::Page
