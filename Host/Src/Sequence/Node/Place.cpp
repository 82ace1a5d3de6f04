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

void Refuse(Place const& inPlace, std::string const& inReason, std::string const& inRemedy)
{
	std::string const item = inPlace.mItemName ? ", item " + Quote(*inPlace.mItemName) : "";
	throw HostError(HostError::Kind::kRequest,
		{{}, inPlace.mOrigin ? *inPlace.mOrigin : std::string(),
			(inPlace.IsOutput() ? inPlace.Describe()
								: std::string(inPlace.mKind) + " " +
									  Quote(ShortenMiddle(inPlace.GetPath(), kLongestPath)) + item) +
				": " + inReason,
			inRemedy});
}

std::string Quote(std::string const& inName)
{
	return QuotePath(inName);
}

} // namespace SonaroHost::Sequence
