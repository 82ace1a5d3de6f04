#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/ResultCodes.h"

#include <exception>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace zorvcore::config
{

// The exception of the family: where it was raised, a result code, and a message. Copies share their
// content and never throw.
class ZORV_API zorv_exception : public std::exception
{
public:
	// inFile may be empty and inLine 0 where the place is not known. With an empty message, what() gives code and
	// place.
	zorv_exception(std::string_view inFile, int inLine, Result inCode = eUnspecifiedFailure,
		std::string_view inMessage = {});
	zorv_exception(zorv_exception const&) noexcept;
	zorv_exception& operator=(zorv_exception const&) noexcept;
	~zorv_exception() override;

	char const* what() const noexcept override;
	std::string const& GetFileName() const noexcept;
	int GetLine() const noexcept;
	Result GetResultCode() const noexcept;

private:
	struct Content;

	// Never null, which is why there is no move.
	std::shared_ptr<Content const> mContent;
};

// An empty reference was used. Its code is eNullPointer.
class ZORV_API NullPtrException : public zorv_exception
{
public:
	explicit NullPtrException(std::string_view inTypeName);
};

// Raises NullPtrException for a use of an empty reference to inTypeName.
[[noreturn]] ZORV_API void DoThrowNullPtrException(std::string const& inTypeName);

enum class ErrorLevel
{
	kWarning,
	kError,
	kFatal
};

namespace detail
{

[[noreturn]] ZORV_API void DoThrowError(ErrorLevel inLevel, char const* inFile, int inLine, Result inCode,
	bool inReport, std::initializer_list<std::string> inReplacements);

template <class T>
std::string ToReplacement(T const& inValue)
{
	if constexpr (std::is_arithmetic_v<T>)
	{
		return std::to_string(inValue);
	}
	else
	{
		return std::string(std::string_view(inValue));
	}
}

} // namespace detail

// Raises a zorv_exception whose message gives level, code and the replacement values (numbers and strings) in their
// order. With inReport set, the message also goes to DoSimpleAssert.
template <class... Values>
[[noreturn]] void ThrowError(ErrorLevel inLevel, char const* inFile, int inLine, Result inCode, bool inReport,
	Values const&... inReplacements)
{
	detail::DoThrowError(
		inLevel, inFile, inLine, inCode, inReport, {detail::ToReplacement(inReplacements)...});
}

// The result code that a captured exception carries: kSuccess for none, eUnspecifiedFailure for an
// exception from outside the family.
ZORV_API Result ExtractResultFromException(std::exception_ptr const& inException) noexcept;

} // namespace zorvcore::config
