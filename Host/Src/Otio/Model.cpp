#include "SonaroHost/Otio/Model.h"

#include "Files/NameForms.h"

#include <algorithm>
#include <type_traits>

namespace SonaroHost::Otio
{

namespace
{

MixSettings const& Resolve(std::shared_ptr<MixSettings const> const& inSettings)
{
	static MixSettings const sNone;
	return inSettings ? *inSettings : sNone;
}

} // namespace

MixSettings const& Item::GetSettings() const
{
	return Resolve(mSettings);
}

MixSettings const& Transition::GetSettings() const
{
	return Resolve(mSettings);
}

MediaReference const* Clip::FindActiveMedia() const
{
	auto const found = std::ranges::find(mMediaReferences, mActiveMediaKey, &MediaReference::mKey);
	return found == mMediaReferences.end() ? nullptr : &*found;
}

Item const* Composable::AsItem() const
{
	return std::visit(
		[](auto const& inValue) -> Item const*
		{
			if constexpr (std::is_base_of_v<Item, std::decay_t<decltype(inValue)>>)
			{
				return &inValue;
			}
			else
			{
				return nullptr;
			}
		},
		mValue);
}

std::vector<Composable const*> ListAngles(Stack const& inStack)
{
	std::vector<Composable const*> angles;
	for (Composable const& child : inStack.mChildren)
	{
		auto const* const track = child.As<Track>();
		if (child.AsItem() && (!track || track->IsAudio()))
		{
			angles.push_back(&child);
		}
	}
	return angles;
}

std::optional<std::size_t> FindAngle(Stack const& inStack, AngleName const& inName)
{
	auto const angles = ListAngles(inStack);
	auto const getName = [](Composable const* inAngle) { return inAngle->AsItem()->mName; };
	auto named = std::ranges::find(angles, inName.mName, getName);
	if (named == angles.end() && inName.mNumber == 0)
	{
		// The same letters may be written in either form of Unicode.
		named = std::ranges::find(angles, ComposeName(inName.mName),
			[&](Composable const* inAngle) { return ComposeName(getName(inAngle)); });
	}
	std::size_t const index =
		inName.mNumber > 0 ? inName.mNumber - 1 : static_cast<std::size_t>(named - angles.begin());
	return index < angles.size() ? std::optional(index) : std::nullopt;
}

} // namespace SonaroHost::Otio
