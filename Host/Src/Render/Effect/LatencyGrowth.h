#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Sequence/GraphReport.h"

#include <algorithm>
#include <exception>

namespace SonaroHost
{

// Ends a pass in which an effect came to state more latency than its graph delays for: the next graph delays for the larger
// one from the start.
class LatencyGrowth final : public std::exception
{
public:
	char const* what() const noexcept override { return "the latency of an effect has grown"; }
};

inline bool HasLateEffect(Sequence::GraphReport const& inReport)
{
	return std::ranges::any_of(inReport.mEffects, [](auto const& inEffect) { return inEffect->IsLate(); });
}

// Runs inPass(bool inSearches) until no latency grows. A latency that was settled after the first time goes on growing, as
// one that a control moves: inSearches is true then, for a pass that nobody hears, to its end, that finds the largest one.
template <class Pass>
auto RunUntilLatenciesStay(Pass const& inPass)
{
	constexpr int kMostPasses = 8;
	for (int pass = 1;; ++pass)
	{
		try
		{
			return inPass(pass > 1);
		}
		catch (LatencyGrowth const&)
		{
			if (pass == kMostPasses)
			{
				throw HostError(HostError::Kind::kInput,
					"the latency of an effect goes on growing from one pass to the next; remove the effect");
			}
		}
	}
}

} // namespace SonaroHost
