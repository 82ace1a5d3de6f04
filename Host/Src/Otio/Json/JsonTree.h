#pragma once

#include "JsonValue.h"

#include <cstddef>
#include <memory_resource>
#include <stdexcept>
#include <string>
#include <string_view>

namespace SonaroHost::Otio
{

// Why a text is no JSON.
class JsonError : public std::runtime_error
{
public:
	// inOffset: the byte where it showed, counted from 0.
	JsonError(std::size_t inOffset, std::string const& inReason)
		: std::runtime_error(inReason),
		  mOffset(inOffset)
	{
	}

	std::size_t GetOffset() const { return mOffset; }

private:
	std::size_t mOffset;
};

// A whole JSON document, with the numbers NaN and Infinity as Python writes them. Reading does not recurse,
// and all memory goes at once.
class JsonTree
{
public:
	// Throws a JsonError. Objects and arrays nest no deeper than inMaxDepth.
	JsonTree(std::string_view inText, std::size_t inMaxDepth);

	JsonValue const& GetRoot() const { return mRoot; }

private:
	std::pmr::monotonic_buffer_resource mMemory{1 << 16};
	JsonValue mRoot;
};

} // namespace SonaroHost::Otio
