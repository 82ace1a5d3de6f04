#include "SonaroHost/Otio/Model.h"

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

} // namespace SonaroHost::Otio
