#pragma once

#include "zorvcore/debug/Assert.h"

#include <mutex>
#include <string>
#include <vector>

// Collects what is reported through DoSimpleAssert during a scope.
class AssertCapture
{
public:
	AssertCapture()
		: mFormer(zorvcore::debug::SetAssertHandler(
			  [this](zorvcore::debug::AssertReport const& inReport)
			  {
				  std::lock_guard const lock(mMutex);
				  mMessages.emplace_back(inReport.mMessage);
			  }))
	{
	}
	~AssertCapture() { zorvcore::debug::SetAssertHandler(mFormer); }

	std::vector<std::string> GetMessages() const
	{
		std::lock_guard const lock(mMutex);
		return mMessages;
	}

private:
	mutable std::mutex mMutex;
	std::vector<std::string> mMessages;
	zorvcore::debug::AssertHandler mFormer;
};
