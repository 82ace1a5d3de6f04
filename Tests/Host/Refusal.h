#pragma once

#include "SonaroHost/Base/HostError.h"

#include <gtest/gtest.h>

#include <string>

namespace SonaroHost::Testing
{

// The message with which an action is refused; empty when it is not.
template <class Action>
std::string GetRefusalOf(Action const& inAction, HostError::Kind inKind = HostError::Kind::kInput)
{
	try
	{
		inAction();
	}
	catch (HostError const& error)
	{
		EXPECT_EQ(error.GetKind(), inKind);
		return error.what();
	}
	return {};
}

} // namespace SonaroHost::Testing
