#pragma once

#include "JsonLiterals.h"
#include "JsonValue.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <nlohmann/json.hpp>

namespace SonaroHost::Otio
{

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

} // namespace SonaroHost::Otio
