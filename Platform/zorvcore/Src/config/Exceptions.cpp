#include "zorvcore/config/Exceptions.h"

#include "zorvcore/debug/Assert.h"

#include <cstdio>

namespace zorvcore::config
{

namespace
{

std::string CodeText(Result inCode)
{
	char text[16];
	std::snprintf(text, sizeof(text), "0x%08X", static_cast<unsigned>(inCode));
	return text;
}

char const* LevelText(ErrorLevel inLevel)
{
	switch (inLevel)
	{
	case ErrorLevel::kWarning:
		return "Warning";
	case ErrorLevel::kError:
		return "Error";
	case ErrorLevel::kFatal:
		return "Fatal error";
	}
	return "Error";
}

} // namespace

struct zorv_exception::Content
{
	std::string mFile;
	int mLine;
	Result mCode;
	std::string mMessage;
};

zorv_exception::zorv_exception(std::string_view inFile, int inLine, Result inCode, std::string_view inMessage)
{
	Content content{std::string(inFile), inLine, inCode, std::string(inMessage)};
	if (content.mMessage.empty())
	{
		content.mMessage =
			"Error " + CodeText(inCode) + " at " + content.mFile + ":" + std::to_string(inLine);
	}
	mContent = std::make_shared<Content const>(std::move(content));
}

zorv_exception::zorv_exception(zorv_exception const&) noexcept = default;
zorv_exception& zorv_exception::operator=(zorv_exception const&) noexcept = default;
zorv_exception::~zorv_exception() = default;

char const* zorv_exception::what() const noexcept
{
	return mContent->mMessage.c_str();
}

std::string const& zorv_exception::GetFileName() const noexcept
{
	return mContent->mFile;
}

int zorv_exception::GetLine() const noexcept
{
	return mContent->mLine;
}

Result zorv_exception::GetResultCode() const noexcept
{
	return mContent->mCode;
}

NullPtrException::NullPtrException(std::string_view inTypeName)
	: zorv_exception({}, 0, eNullPointer, "Null pointer: " + std::string(inTypeName))
{
}

void DoThrowNullPtrException(std::string const& inTypeName)
{
	throw NullPtrException(inTypeName);
}

void detail::DoThrowError(ErrorLevel inLevel, char const* inFile, int inLine, Result inCode, bool inReport,
	std::initializer_list<std::string> inReplacements)
{
	std::string message = LevelText(inLevel);
	message += ' ';
	message += CodeText(inCode);
	char const* separator = ": ";
	for (std::string const& replacement : inReplacements)
	{
		message += separator;
		message += replacement;
		separator = ", ";
	}
	if (inReport)
	{
		debug::DoSimpleAssert(inFile, inLine, message);
	}
	throw zorv_exception(inFile, inLine, inCode, message);
}

Result ExtractResultFromException(std::exception_ptr const& inException) noexcept
{
	if (!inException)
	{
		return kSuccess;
	}
	try
	{
		std::rethrow_exception(inException);
	}
	catch (zorv_exception const& exception)
	{
		return exception.GetResultCode();
	}
	catch (...)
	{
		return eUnspecifiedFailure;
	}
}

} // namespace zorvcore::config
