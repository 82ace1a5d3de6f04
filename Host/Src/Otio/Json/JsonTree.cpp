#include "JsonTree.h"

#include "JsonTreeBuilder.h"

#include <vector>

namespace SonaroHost::Otio
{

namespace
{

// The offset of the bracket that opens one more level than inMaxDepth.
std::size_t FindTooDeep(std::string_view inText, std::size_t inMaxDepth)
{
	std::size_t depth = 0;
	bool isInString = false;
	for (std::size_t offset = 0; offset < inText.size(); ++offset)
	{
		char const character = inText[offset];
		if (isInString)
		{
			isInString = character != '"';
			offset += character == '\\' ? 1 : 0;
			continue;
		}
		isInString = character == '"';
		bool const opens = character == '{' || character == '[';
		bool const closes = character == '}' || character == ']';
		if (opens && ++depth > inMaxDepth)
		{
			return offset;
		}
		depth -= closes ? 1 : 0;
	}
	return 0;
}

} // namespace

JsonTree::JsonTree(std::string_view inText, std::size_t inMaxDepth)
{
	std::vector<JsonLiteral> const literals = FindLiterals(inText);
	std::string const replaced = literals.empty() ? std::string() : ReplaceLiterals(inText, literals);
	std::string_view const text = literals.empty() ? inText : replaced;

	JsonTreeBuilder builder(mMemory, mRoot, literals, inMaxDepth);
	if (nlohmann::json::sax_parse(text.data(), text.data() + text.size(), &builder))
	{
		return;
	}
	if (builder.IsTooDeep())
	{
		throw JsonError(FindTooDeep(text, inMaxDepth),
			"objects and arrays are nested more than " + std::to_string(inMaxDepth) + " levels deep");
	}
	throw JsonError(builder.GetErrorOffset(), builder.GetError());
}

} // namespace SonaroHost::Otio
