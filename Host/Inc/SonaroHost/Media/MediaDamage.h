#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace SonaroHost
{

// Where a file could not be decoded and silence stands in its place, as far as it was read.
//
// Threads  Any.
class MediaDamage
{
public:
	// Frames mFirst to mEnd of the file.
	struct Stretch
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;

		bool operator==(Stretch const&) const = default;
	};

	// Several readers may find the same one. Empty ones are left out.
	void Add(Stretch const& inStretch);

	// In the order of the file; those that meet are one.
	std::vector<Stretch> Get() const;
	// The same, and forgets them.
	std::vector<Stretch> Take();

private:
	mutable std::mutex mMutex;
	std::vector<Stretch> mStretches;
};

// A file of which parts could not be decoded; silence stands in their place.
struct DamagedMedia
{
	// What people call it.
	std::filesystem::path mPath;
	int mSampleRate = 0;
	std::vector<MediaDamage::Stretch> mStretches;
};

// "is damaged: silence from 0:01.000 to 0:01.021"; the first stretches of many.
std::string DescribeDamage(DamagedMedia const& inMedia);

} // namespace SonaroHost
