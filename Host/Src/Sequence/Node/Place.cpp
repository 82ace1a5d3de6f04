#include "Place.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"

#include <cstddef>
#include <string_view>

namespace SonaroHost::Sequence
{

namespace
{

// The longest path in bytes; deeply nested sequences have very long ones.
constexpr std::size_t kLongestPath = 300;

std::string GetNameOrNumber(std::string const& inName, char const* inKind, std::size_t inNumber)
{
	return inName.empty() && inNumber != 0 ? inKind + (" " + std::to_string(inNumber)) : inName;
}

// "track 'Boom'", or "track 1".
std::string DescribeOne(
	char const* inKind, std::string const& inPrefix, std::string const& inName, std::size_t inNumber)
{
	std::string const name = GetNameOrNumber(inName, inKind, inNumber);
	bool const isNumber = inPrefix.empty() && name != inName;
	return isNumber ? name : inKind + (" " + Quote(ShortenMiddle(inPrefix + name, kLongestPath)));
}

std::string DescribeForRefusal(Place const& inPlace)
{
	if (inPlace.IsOutput())
	{
		return inPlace.Describe();
	}
	std::string const prefix = inPlace.mPrefix ? *inPlace.mPrefix : std::string();
	std::string const item =
		inPlace.mItemName ? ", " + DescribeOne("item", {}, *inPlace.mItemName, inPlace.mItemNumber) : "";
	return DescribeOne(inPlace.mKind, prefix, *inPlace.mName, inPlace.mNumber) + item;
}

} // namespace

std::string Place::GetPath() const
{
	return (mPrefix ? *mPrefix : std::string()) + *mName;
}

bool Place::IsOutput() const
{
	return std::string_view(mKind) == "sequence" && !mItemName && (!mPrefix || mPrefix->empty());
}

std::string Place::Describe() const
{
	if (IsOutput())
	{
		return "the output";
	}
	std::string const path = GetPath();
	std::string const track = path.empty() ? "" : Quote(ShortenMiddle(path, kLongestPath));
	std::string const join = path.empty() ? "" : " on ";
	return mItemName ? Quote(*mItemName) + join + track : track;
}

std::string Place::GetItemPrefix() const
{
	return (mPrefix ? *mPrefix : std::string()) + GetNameOrNumber(*mName, mKind, mNumber) + " / " +
		   GetNameOrNumber(*mItemName, "item", mItemNumber) + " / ";
}

void Refuse(Place const& inPlace, std::string const& inReason, std::string const& inRemedy)
{
	std::string const origin = inPlace.mOrigin ? *inPlace.mOrigin : std::string();
	std::string const place = DescribeForRefusal(inPlace);
	throw HostError(HostError::Kind::kRequest,
		{{}, origin, place == origin ? inReason : place + ": " + inReason, inRemedy});
}

std::string Quote(std::string const& inName)
{
	return QuotePath(inName);
}

} // namespace SonaroHost::Sequence
