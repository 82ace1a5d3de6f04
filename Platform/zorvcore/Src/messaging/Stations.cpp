#include "zorvcore/messaging/Stations.h"

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

namespace zorvcore::messaging
{

namespace
{

// Never destroyed.
struct StationList
{
	static StationList& Instance()
	{
		static auto& list = *new StationList;
		return list;
	}

	// Null when there is no such station.
	std::shared_ptr<StationReceiver const> Find(StationID const& inStation)
	{
		std::lock_guard const lock(mMutex);
		auto const found = mStations.find(inStation);
		return found == mStations.end() ? nullptr : found->second;
	}

	std::mutex mMutex;
	std::unordered_map<StationID, std::shared_ptr<StationReceiver const>> mStations;
	unsigned long long mLastNumber = 0;
};

} // namespace

StationID RegisterUniqueStation(StationReceiver inReceiver)
{
	auto receiver = std::make_shared<StationReceiver const>(std::move(inReceiver));
	StationList& list = StationList::Instance();
	std::lock_guard const lock(list.mMutex);
	StationID station("zorv.Station." + std::to_string(++list.mLastNumber));
	list.mStations.emplace(station, std::move(receiver));
	return station;
}

void DisposeStation(StationID const& inStation)
{
	// The receiver goes after the lock: what it holds may dispose of further stations.
	std::shared_ptr<StationReceiver const> receiver;
	StationList& list = StationList::Instance();
	std::lock_guard const lock(list.mMutex);
	auto const found = list.mStations.find(inStation);
	if (found != list.mStations.end())
	{
		receiver = std::move(found->second);
		list.mStations.erase(found);
	}
}

bool IsStationRegistered(StationID const& inStation)
{
	return StationList::Instance().Find(inStation) != nullptr;
}

bool PostToStation(StationID const& inStation, std::string_view inMessage)
{
	auto const receiver = StationList::Instance().Find(inStation);
	if (receiver && *receiver)
	{
		(*receiver)(inMessage);
	}
	return receiver != nullptr;
}

} // namespace zorvcore::messaging
