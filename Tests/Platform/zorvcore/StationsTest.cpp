#include "zorvcore/messaging/Stations.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace
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

TEST(Stations, AReceiverMayDisposeOfItsStation)
{
	StationID station;
	int received = 0;
	station = RegisterUniqueStation(
		[&](std::string_view)
		{
			++received;
			DisposeStation(station);
		});
	EXPECT_TRUE(PostToStation(station, ""));
	EXPECT_FALSE(PostToStation(station, ""));
	EXPECT_EQ(received, 1);
}

TEST(Stations, NamesAreNeverGivenTwice)
{
	constexpr unsigned kThreads = 4;
	constexpr unsigned kStations = 500;
	std::vector<StationID> stations[kThreads];
	std::vector<std::thread> threads;
	for (auto& own : stations)
	{
		threads.emplace_back(
			[&own]
			{
				for (unsigned i = 0; i < kStations; ++i)
				{
					own.push_back(RegisterUniqueStation());
					DisposeStation(own.back());
				}
			});
	}
	for (std::thread& thread : threads)
	{
		thread.join();
	}
	std::set<StationID> names;
	for (auto const& own : stations)
	{
		names.insert(own.begin(), own.end());
	}
	EXPECT_EQ(names.size(), kThreads * kStations);
}

} // namespace
