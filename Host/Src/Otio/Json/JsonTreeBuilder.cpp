#include "JsonTreeBuilder.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace SonaroHost::Otio
{

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

} // namespace SonaroHost::Otio
