#include "Place.h"

#include "SonaroHost/HostError.h"

namespace SonaroHost::Sequence
{

std::string Place::GetPath() const
{
	return (mPrefix ? *mPrefix : std::string()) + *mName;
}

void Refuse(Place const& inPlace, std::string const& inReason)
{
	std::string const item = inPlace.mItemName ? ", item " + Quote(*inPlace.mItemName) : "";
	throw HostError(HostError::Kind::eRequest,
		std::string(inPlace.mKind) + " " + Quote(inPlace.GetPath()) + item + ": " + inReason);
}

std::string Quote(std::string const& inName)
{
	return QuotePath(inName);
}

} // namespace SonaroHost::Sequence
