#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/utility/ImmutableString.h"

#include <functional>
#include <string_view>

// Stations are places by name that messages can be posted to, so that those who report a change and those who show it
// need not know each other. All functions: any thread.
namespace zorvcore::messaging
{

using StationID = utility::ImmutableString;

// Called on the posting thread, with no lock held.
using StationReceiver = std::function<void(std::string_view inMessage)>;

// Registers a station under a new name that no other station of the process has had. Without a receiver
// its messages are dropped.
ZORV_API StationID RegisterUniqueStation(StationReceiver inReceiver = {});

// Takes the station down. A message that is under way on another thread may still arrive.
ZORV_API void DisposeStation(StationID const& inStation);

ZORV_API bool IsStationRegistered(StationID const& inStation);

// Whether there was a station to take the message.
ZORV_API bool PostToStation(StationID const& inStation, std::string_view inMessage);

} // namespace zorvcore::messaging
