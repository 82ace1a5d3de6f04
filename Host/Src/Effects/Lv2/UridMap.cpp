#include "UridMap.h"

namespace SonaroHost::Effects
{

UridMap& UridMap::Get()
{
	static UridMap sMap;
	return sMap;
}

UridMap::UridMap()
{
	mMap = {this, [](LV2_URID_Map_Handle inThis, char const* inUri)
		{ return static_cast<UridMap*>(inThis)->Map(inUri); }};
	mUnmap = {this, [](LV2_URID_Unmap_Handle inThis, LV2_URID inUrid)
		{ return static_cast<UridMap*>(inThis)->Unmap(inUrid); }};
}

LV2_URID UridMap::Map(char const* inUri)
{
	std::lock_guard const lock(mMutex);
	auto const known = mNumbers.find(inUri);
	if (known != mNumbers.end())
	{
		return known->second;
	}
	mUris.emplace_back(inUri);
	auto const number = static_cast<LV2_URID>(mUris.size());
	mNumbers.emplace(mUris.back(), number);
	return number;
}

char const* UridMap::Unmap(LV2_URID inUrid) const
{
	std::lock_guard const lock(mMutex);
	return inUrid >= 1 && inUrid <= mUris.size() ? mUris[inUrid - 1].c_str() : nullptr;
}

} // namespace SonaroHost::Effects
