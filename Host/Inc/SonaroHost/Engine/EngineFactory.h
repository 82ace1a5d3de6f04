#pragma once

#include "Sonaro/GraphFactory.h"

namespace SonaroHost
{

// Throws a HostError of the kind kEngine when inResult, what the engine answered to inWhat ("a clip", "a
// context"), is a failure.
void CheckEngineResult(int inResult, char const* inWhat);

// What the engine refuses to make is a HostError.
struct ThrowHostError
{
	void operator()(int inResult, char const* inWhat) const { CheckEngineResult(inResult, inWhat); }
};

// The engine's creators, for a host whose errors are HostErrors.
using EngineFactory = SN::GraphFactory<ThrowHostError>;

} // namespace SonaroHost
