#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// What conditional and partial requests ask for (RFC 9110, sections 13 and 14).
namespace SonaroCommand::Serve
{

// What is sent of a file.
struct ByteRange
{
	enum class Kind
	{
		kWhole,
		kPart,
		// No byte of the file is asked for.
		kNone,
	};

	Kind mKind = Kind::kWhole;
	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;

	bool operator==(ByteRange const&) const = default;
};

// inField: the value of the header Range; empty for none. Several ranges, other units and what is not valid mean the whole
// file, as the standard allows.
ByteRange ChooseByteRange(std::string_view inField, std::int64_t inLength);

// The value of ETag. A weak one says that bytes may differ where the sound is the same.
std::string FormatEntityTag(std::string const& inTag, bool inIsWeak);

// Whether If-None-Match names the tag, weakly compared.
bool NamesTag(std::string_view inField, std::string const& inTag);

// Whether a Range counts beside this If-Range, empty for none: only for the same strong tag.
bool AllowsRange(std::string_view inField, std::string const& inEntityTag);

} // namespace SonaroCommand::Serve
