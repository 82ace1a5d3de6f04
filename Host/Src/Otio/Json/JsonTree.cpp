#include "JsonTree.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <unordered_set>
#include <vector>

#include <nlohmann/json.hpp>

namespace SonaroHost::Otio
{

namespace
{

// A number that JSON has no word for and programs write all the same.
struct JsonLiteral
{
	// Where it stands among the strings of the document, keys among them, from 0.
	std::size_t mString = 0;
	// The offset of its first byte.
	std::size_t mOffset = 0;
	double mValue = 0.0;
};

struct Word
{
	std::string_view mText;
	double mValue;
};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
// Longer ones before those that they begin with.
constexpr Word kLiterals[] = {{"NaN", kNotANumber}, {"-NaN", kNotANumber}, {"Infinity", kInfinity},
	{"-Infinity", -kInfinity}, {"Inf", kInfinity}, {"-Inf", -kInfinity}};

Word const* FindWord(std::string_view inText)
{
	for (Word const& word : kLiterals)
	{
		if (inText.starts_with(word.mText))
		{
			return &word;
		}
	}
	return nullptr;
}

// The offset just past a string whose opening quote is at inQuote.
std::size_t SkipString(std::string_view inText, std::size_t inQuote)
{
	std::size_t offset = inQuote + 1;
	while (offset < inText.size() && inText[offset] != '"')
	{
		offset += inText[offset] == '\\' ? 2 : 1;
	}
	return offset + 1;
}

// Finds NaN, Infinity and Inf, with or without a minus sign, outside of strings.
std::vector<JsonLiteral> FindLiterals(std::string_view inText)
{
	std::vector<JsonLiteral> literals;
	// Nearly every file ends here.
	if (inText.find("NaN") == std::string_view::npos && inText.find("Inf") == std::string_view::npos)
	{
		return literals;
	}
	std::size_t strings = 0;
	for (std::size_t offset = 0; offset < inText.size();)
	{
		if (inText[offset] == '"')
		{
			++strings;
			offset = SkipString(inText, offset);
		}
		else if (Word const* const word = FindWord(inText.substr(offset)))
		{
			literals.push_back({strings, offset, word->mValue});
			++strings;
			offset += word->mText.size();
		}
		else
		{
			++offset;
		}
	}
	return literals;
}

// The text with a string of the same width in the place of each literal, so that it is plain JSON and
// every other byte stays where it was. Which strings are stand-ins is known by their number.
std::string ReplaceLiterals(std::string_view inText, std::vector<JsonLiteral> const& inLiterals)
{
	std::string text(inText);
	for (JsonLiteral const& literal : inLiterals)
	{
		std::size_t const width = FindWord(inText.substr(literal.mOffset))->mText.size();
		std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(literal.mOffset), width, '-');
		text[literal.mOffset] = '"';
		text[literal.mOffset + width - 1] = '"';
	}
	return text;
}

// Takes the parser's events and builds the tree in the memory given. Every value waits on one stack until the
// object or array around it ends.
class JsonTreeBuilder final : public nlohmann::json_sax<nlohmann::json>
{
public:
	// Both outlive this object, and what ioMemory holds outlives outRoot.
	JsonTreeBuilder(std::pmr::memory_resource& ioMemory, JsonValue& outRoot,
		std::vector<JsonLiteral> const& inLiterals, std::size_t inMaxDepth)
		: mMemory(ioMemory),
		  mRoot(outRoot),
		  mLiterals(inLiterals),
		  mMaxDepth(inMaxDepth)
	{
	}

	bool IsTooDeep() const { return mFrames.size() > mMaxDepth; }
	// An error that the parser found: the byte, counted from 0, and the reason in the parser's words.
	std::size_t GetErrorOffset() const { return mErrorOffset; }
	std::string const& GetError() const { return mError; }

	bool null() override { return Add(JsonValue()); }
	bool boolean(bool inValue) override { return Add(JsonValue(inValue)); }
	bool number_integer(std::int64_t inValue) override
	{
		return Add(JsonValue(static_cast<double>(inValue)));
	}
	bool number_unsigned(std::uint64_t inValue) override
	{
		return Add(JsonValue(static_cast<double>(inValue)));
	}
	bool number_float(double inValue, std::string const&) override { return Add(JsonValue(inValue)); }
	bool string(std::string& inText) override;
	bool binary(nlohmann::json::binary_t&) override { return false; }
	bool start_object(std::size_t) override { return Open(); }
	bool key(std::string& inKey) override;
	bool end_object() override;
	bool start_array(std::size_t) override { return Open(); }
	bool end_array() override;
	bool parse_error(std::size_t inPosition, std::string const& inLastToken,
		nlohmann::json::exception const& inException) override;

private:
	// An object or array that has begun: where its values begin on the stack, and its key in the one
	// around it.
	struct Frame
	{
		std::size_t mFirst = 0;
		std::string_view mKey;
	};

	bool Open();
	// Makes the children that wait into one value, each by inMake(JsonMember).
	template <class Child, class Make>
	bool Close(Make const& inMake);
	bool Add(JsonValue inValue);
	// The literal that the string of this turn stands for, or null.
	JsonLiteral const* TakeString();
	std::string_view Keep(std::string_view inText);

	std::pmr::memory_resource& mMemory;
	JsonValue& mRoot;
	std::vector<JsonLiteral> const& mLiterals;
	std::size_t mMaxDepth;
	std::vector<JsonMember> mStack;
	std::vector<Frame> mFrames;
	std::unordered_set<std::string_view> mKeys;
	// The key of the value that comes next.
	std::string_view mKey;
	std::size_t mStrings = 0;
	std::size_t mNextLiteral = 0;
	std::size_t mErrorOffset = 0;
	std::string mError;
};

bool JsonTreeBuilder::string(std::string& inText)
{
	if (JsonLiteral const* const literal = TakeString())
	{
		return Add(JsonValue(literal->mValue));
	}
	return Add(JsonValue(Keep(inText)));
}

bool JsonTreeBuilder::key(std::string& inKey)
{
	if (JsonLiteral const* const literal = TakeString())
	{
		mErrorOffset = literal->mOffset;
		mError = "found a number where a key is expected";
		return false;
	}
	// The same few keys come again and again.
	auto const found = mKeys.find(inKey);
	mKey = found != mKeys.end() ? *found : *mKeys.insert(Keep(inKey)).first;
	return true;
}

template <class Child, class Make>
bool JsonTreeBuilder::Close(Make const& inMake)
{
	auto const first = mStack.begin() + static_cast<std::ptrdiff_t>(mFrames.back().mFirst);
	auto const count = static_cast<std::size_t>(mStack.end() - first);
	auto* const children = std::pmr::polymorphic_allocator<Child>(&mMemory).allocate(count);
	std::transform(first, mStack.end(), children, inMake);
	mStack.resize(mFrames.back().mFirst);
	mKey = mFrames.back().mKey;
	mFrames.pop_back();
	return Add(JsonValue(std::span<Child const>(children, count)));
}

bool JsonTreeBuilder::end_object()
{
	return Close<JsonMember>([](JsonMember const& inMember) { return inMember; });
}

bool JsonTreeBuilder::end_array()
{
	return Close<JsonValue>([](JsonMember const& inMember) { return inMember.mValue; });
}

bool JsonTreeBuilder::parse_error(
	std::size_t inPosition, std::string const&, nlohmann::json::exception const& inException)
{
	mErrorOffset = inPosition == 0 ? 0 : inPosition - 1;
	// The parser's sentence begins with its own name and the place.
	std::string_view reason = inException.what();
	for (std::string_view const opening : {"] ", ": "})
	{
		std::size_t const found = reason.find(opening);
		bool const hasPlace = opening == "] " || reason.starts_with("parse error at ");
		if (found != std::string_view::npos && hasPlace)
		{
			reason.remove_prefix(found + opening.size());
		}
	}
	mError = reason;
	// The number itself can be as long as the file.
	if (mError.starts_with("number overflow"))
	{
		mError = "number overflow: numbers go up to 1.8e308";
	}
	// What was read last can be as long as the file, and hold a stand-in for a literal.
	if (std::size_t const token = mError.find("; last read: "); token != std::string::npos)
	{
		std::size_t const expected = mError.rfind("; expected ");
		bool const isBehind = expected != std::string::npos && expected > token;
		mError.erase(token, isBehind ? expected - token : std::string::npos);
	}
	return false;
}

bool JsonTreeBuilder::Open()
{
	mFrames.push_back({mStack.size(), mKey});
	return !IsTooDeep();
}

bool JsonTreeBuilder::Add(JsonValue inValue)
{
	if (mFrames.empty())
	{
		mRoot = inValue;
	}
	else
	{
		mStack.push_back({mKey, inValue});
	}
	return true;
}

JsonLiteral const* JsonTreeBuilder::TakeString()
{
	std::size_t const number = mStrings++;
	if (mNextLiteral < mLiterals.size() && mLiterals[mNextLiteral].mString == number)
	{
		return &mLiterals[mNextLiteral++];
	}
	return nullptr;
}

std::string_view JsonTreeBuilder::Keep(std::string_view inText)
{
	if (inText.empty())
	{
		return "";
	}
	auto* const bytes = std::pmr::polymorphic_allocator<char>(&mMemory).allocate(inText.size());
	std::memcpy(bytes, inText.data(), inText.size());
	return {bytes, inText.size()};
}

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
