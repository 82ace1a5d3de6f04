#pragma once

#include "Otio/Json/Cursor.h"
#include "Otio/Mix/MixSettingsReader.h"

#include "SonaroHost/Otio/Model.h"

#include <memory>
#include <optional>
#include <string_view>

namespace SonaroHost::Otio
{

// The keys that every item has besides those of its kind.
inline constexpr std::string_view kItemKeys[] = {
	"name", "source_range", "enabled", "effects", "markers", "metadata", "color"};

// What all items share. inMediaRange: what is shown without a source_range, where that is known.
void ReadItem(Cursor const& inObject, SettingsOwner inOwner, Item& outItem,
	std::optional<TimeRange> const& inMediaRange = std::nullopt);

void ReadClip(Cursor const& inObject, Clip& outClip);
void ReadTransition(Cursor const& inObject, Transition& outTransition);

// Null when there is nothing in them.
std::shared_ptr<MixSettings const> ShareSettings(MixSettings inSettings);

} // namespace SonaroHost::Otio
