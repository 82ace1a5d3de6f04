#include "MediaCheck.h"

namespace SonaroHost
{

namespace
{

template <class FindFailure, class ListDamaged>
void CheckEach(bool inRefusesDamage, FindFailure const& inFindFailure, ListDamaged const& inListDamaged)
{
	if (auto const failure = inFindFailure())
	{
		throw *failure;
	}
	if (!inRefusesDamage)
	{
		return;
	}
	if (auto const damaged = inListDamaged(); !damaged.empty())
	{
		RefuseFile(damaged.front().mPath, DescribeDamage(damaged.front()), "get a complete copy");
	}
}

} // namespace

void CheckMedia(Programme const& inProgramme)
{
	CheckEach(inProgramme.mRefusesDamage, inProgramme.mFindFailure, inProgramme.mListDamaged);
}

void CheckMedia(Programme const& inProgramme, GraphMedia const& inMedia)
{
	CheckEach(
		inProgramme.mRefusesDamage, [&] { return inMedia.FindFailure(); },
		[&] { return inMedia.ListDamaged(); });
}

} // namespace SonaroHost
