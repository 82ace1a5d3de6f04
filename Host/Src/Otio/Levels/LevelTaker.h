#pragma once

#include "LevelShapes.h"
#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

#include <optional>
#include <utility>

namespace SonaroHost::Otio
{

// Reads levels that have been found, and puts them where they belong. The first of several of one kind counts.
class LevelTaker
{
public:
	// inRange: what the item shows of its own time, where that is known.
	explicit LevelTaker(std::optional<TimeRange> const& inRange)
		: mRange(inRange)
	{
	}

	// inShape: null for a shape that is not known.
	void Take(LevelName const& inName, LevelShape const* inShape, Cursor const& inLevel);

	// Whether a note said of one that it is not read.
	bool HasUnreadLevel() const { return mHasUnreadLevel; }
	ForeignLevels TakeLevels() { return std::move(mLevels); }

private:
	void Read(LevelName const& inName, LevelShape const& inShape, Cursor const& inLevel);
	void TellNotRead(Cursor const& inLevel, LevelName const& inName, char const* inWhy);

	std::optional<TimeRange> const& mRange;
	ForeignLevels mLevels;
	bool mHasUnreadLevel = false;
};

} // namespace SonaroHost::Otio
