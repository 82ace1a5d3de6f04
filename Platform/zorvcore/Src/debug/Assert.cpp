#include "zorvcore/debug/Assert.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

namespace zorvcore::debug
{

namespace
{

// The handler in use, null for the default. Never destroyed: destructors of statics report too.
struct HandlerSlot
{
	std::mutex mMutex;
	std::shared_ptr<AssertHandler const> mHandler;
};

HandlerSlot& GetHandlerSlot()
{
	static auto& slot = *new HandlerSlot;
	return slot;
}

void WriteReport([[maybe_unused]] AssertReport const& inReport)
{
#ifndef NDEBUG
	std::fprintf(stderr, "%.*s:%d: %.*s\n", static_cast<int>(inReport.mFile.size()), inReport.mFile.data(),
		inReport.mLine, static_cast<int>(inReport.mMessage.size()), inReport.mMessage.data());
#endif
}

std::string_view BaseName(std::string_view inFile)
{
	return inFile.substr(inFile.find_last_of('/') + 1);
}

} // namespace

void DoSimpleAssert(std::string_view inFile, int inLine, std::string_view inMessage) noexcept
{
	AssertReport const report{BaseName(inFile), inLine, inMessage};
	try
	{
		HandlerSlot& slot = GetHandlerSlot();
		std::unique_lock lock(slot.mMutex);
		std::shared_ptr<AssertHandler const> const handler = slot.mHandler;
		lock.unlock();
		handler ? (*handler)(report) : WriteReport(report);
	}
	catch (...)
	{
		// A handler that throws must not turn a report into a failure.
	}
}

AssertHandler SetAssertHandler(AssertHandler inHandler)
{
	std::shared_ptr<AssertHandler const> handler =
		inHandler ? std::make_shared<AssertHandler const>(std::move(inHandler)) : nullptr;
	HandlerSlot& slot = GetHandlerSlot();
	{
		std::lock_guard const lock(slot.mMutex);
		slot.mHandler.swap(handler);
	}
	return handler ? *handler : AssertHandler();
}

} // namespace zorvcore::debug
