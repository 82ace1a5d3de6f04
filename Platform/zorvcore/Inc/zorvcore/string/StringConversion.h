#pragma once

#include "zorvcore/Export.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace zorvcore::string
{

// inLength characters of inText. Bytes beyond ASCII become U+FFFD.
ZORV_API std::u16string AsciiToUTF16(char const* inText, std::size_t inLength);

// Ill-formed input becomes U+FFFD, one for each longest start of a character that breaks off and one for
// each byte that cannot start any. Overlong forms, surrogates and values above U+10FFFF are ill-formed.
ZORV_API std::u16string UTF8to16(std::string_view inText);

// Surrogates without their partner become U+FFFD.
ZORV_API std::string UTF16to8(std::u16string_view inText);

} // namespace zorvcore::string
