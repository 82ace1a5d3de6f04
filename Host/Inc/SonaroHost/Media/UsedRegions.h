#pragma once

#include <cstdint>
#include <vector>

namespace SonaroHost
{

// What is used of a long recording, in regions between which much is left out.
class UsedRegions
{
public:
	// Frames mFirst to mEnd.
	struct Span
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
	};

	// Spans that are no further apart than inDistance lie in one region.
	explicit UsedRegions(std::int64_t inDistance)
		: mDistance(inDistance)
	{
	}

	// In any order; one may lie in others.
	void Add(Span const& inUsed);
	// The region of a frame that was added.
	Span const& Find(std::int64_t inFrame) const;

private:
	std::int64_t mDistance;
	// In the order of their frames.
	std::vector<Span> mRegions;
};

} // namespace SonaroHost
