#include "SonaroHost/Sequence/Description.h"

namespace SonaroHost::Sequence
{

namespace
{

struct SequenceList
{
	void operator()(Clip const&) {}
	void operator()(Nest const& inNest) { Add(inNest.mSequence); }
	void operator()(Multicam const& inMulticam)
	{
		for (auto const& angle : inMulticam.mAngles)
		{
			Add(angle);
		}
	}
	void Add(std::shared_ptr<Description const> const& inSequence)
	{
		if (inSequence)
		{
			mSequences.push_back(inSequence.get());
		}
	}

	std::vector<Description const*> mSequences;
};

} // namespace

std::vector<Description const*> ListSequences(Item const& inItem)
{
	SequenceList list;
	std::visit(list, inItem.mContent);
	return std::move(list.mSequences);
}

SN::TickTime GetSequenceStart(Item const& inItem)
{
	auto const* const nest = std::get_if<Nest>(&inItem.mContent);
	auto const* const multicam = std::get_if<Multicam>(&inItem.mContent);
	return nest ? nest->mStart : multicam ? multicam->mStart : SN::kTimeZero;
}

} // namespace SonaroHost::Sequence
