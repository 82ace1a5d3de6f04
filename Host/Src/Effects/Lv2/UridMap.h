#pragma once

#include <lv2/core/lv2.h>
#include <lv2/urid/urid.h>

#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace SonaroHost::Effects
{

// The numbers that stand for URIs between this process and its plugins.
//
// Threads  Any. Numbers stay for as long as the process runs, and so do the texts that Unmap gives.
class UridMap
{
public:
	static UridMap& Get();

	LV2_URID Map(char const* inUri);
	// Null for a number that stands for nothing.
	char const* Unmap(LV2_URID inUrid) const;

	LV2_URID_Map* GetMap() { return &mMap; }
	LV2_URID_Unmap* GetUnmap() { return &mUnmap; }

private:
	UridMap();

	mutable std::mutex mMutex;
	// The number 1 stands for the first.
	std::deque<std::string> mUris;
	std::unordered_map<std::string_view, LV2_URID> mNumbers;
	LV2_URID_Map mMap{};
	LV2_URID_Unmap mUnmap{};
};

} // namespace SonaroHost::Effects
