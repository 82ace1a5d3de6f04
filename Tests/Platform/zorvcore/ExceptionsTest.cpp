#include "zorvcore/config/Exceptions.h"

#include "Support/AssertCapture.h"
#include "Support/Common.h"
#include "zorvcore/async/Future.h"
#include "zorvcore/utility/MachineException.h"

namespace ExceptionsTest
{

using namespace zorvcore;
using namespace zorvcore::config;

TEST(Exceptions, ThrowErrorCarriesPlaceCodeAndReplacements)
{
	AssertCapture const capture;
	for (bool const report : {false, true})
	{
		try
		{
			ThrowError(
				ErrorLevel::kError, "Mix.cpp", 42, eInvalidArgument, report, "track", 7, std::string("x"));
		}
		catch (zorv_exception const& exception)
		{
			EXPECT_EQ(exception.GetFileName(), "Mix.cpp");
			EXPECT_EQ(exception.GetLine(), 42);
			EXPECT_EQ(exception.GetResultCode(), eInvalidArgument);
			EXPECT_STREQ(exception.what(), "Error 0xA00F0001: track, 7, x");
		}
	}
	EXPECT_THAT(capture.GetMessages(), testing::ElementsAre("Error 0xA00F0001: track, 7, x"));
}

TEST(Exceptions, EveryCapturedExceptionGivesAResultCode)
{
	struct Case
	{
		char const* mName;
		std::exception_ptr mException;
		Result mExpected;
	};
	Case const cases[] = {
		{"none", nullptr, kSuccess},
		{"of the family", std::make_exception_ptr(zorv_exception("", 0, eInvalidArgument)), eInvalidArgument},
		{"derived", std::make_exception_ptr(NullPtrException("T")), eNullPointer},
		{"not ready", std::make_exception_ptr(async::FutureNotReadyException()), eWaitFailed},
		{"standard", std::make_exception_ptr(std::runtime_error("")), eUnspecifiedFailure},
		{"no exception class", std::make_exception_ptr(3), eUnspecifiedFailure},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		Result const result = ExtractResultFromException(test.mException);
		EXPECT_EQ(result, test.mExpected);
		EXPECT_EQ(ResultSucceeded(result), test.mException == nullptr);
	}
}

TEST(MachineException, IsHandledAndReportedWhenAsked)
{
	using utility::exceptions::InternalHiddenFilterWindowsSEHException;
	AssertCapture const capture;
	for (bool const report : {false, true})
	{
		EXPECT_EQ(InternalHiddenFilterWindowsSEHException(0xC0000005u, report, "Filter.cpp", 9, "Render"),
			utility::exceptions::kExceptionHandled);
	}
	EXPECT_THAT(capture.GetMessages(), testing::ElementsAre("Machine exception 0xC0000005 in Render"));
}

} // namespace ExceptionsTest
