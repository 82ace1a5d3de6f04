#include "zorvcore/messaging/Stations.h"

#include "Support/Common.h"

namespace StationsTest
{

using namespace zorvcore::messaging;

TEST(Stations, MessagesReachTheStationThatTheyNameUntilItIsDisposed)
{
	std::vector<std::string> received;
	StationID const listening =
		RegisterUniqueStation([&received](std::string_view inMessage) { received.emplace_back(inMessage); });
	StationID const silent = RegisterUniqueStation();
	EXPECT_TRUE(PostToStation(listening, "first"));
	EXPECT_TRUE(PostToStation(silent, "dropped"));
	EXPECT_FALSE(PostToStation(StationID("nobody"), "lost"));
	EXPECT_FALSE(PostToStation(StationID(), "lost"));
	DisposeStation(listening);
	DisposeStation(listening);
	EXPECT_FALSE(PostToStation(listening, "late"));
	EXPECT_FALSE(IsStationRegistered(listening));
	EXPECT_TRUE(IsStationRegistered(silent));
	DisposeStation(silent);
	EXPECT_THAT(received, testing::ElementsAre("first"));
}

} // namespace StationsTest
