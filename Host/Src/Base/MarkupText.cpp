#include "SonaroHost/Base/MarkupText.h"

#include "SonaroHost/Base/PrintableText.h"

namespace SonaroHost
{

std::string EscapeMarkup(std::string_view inText)
{
	std::string text;
	for (char const character : MakePrintable(inText))
	{
		switch (character)
		{
		case '&':
			text += "&amp;";
			break;
		case '<':
			text += "&lt;";
			break;
		case '>':
			text += "&gt;";
			break;
		case '"':
			text += "&quot;";
			break;
		case '\'':
			text += "&#39;";
			break;
		default:
			text += character;
		}
	}
	return text;
}

} // namespace SonaroHost
