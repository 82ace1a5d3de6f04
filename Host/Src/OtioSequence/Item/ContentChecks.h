#pragma once

#include "ItemTiming.h"
#include "OtioSequence/MakerContext.h"

#include <string>

namespace SonaroHost::Otio
{

// What there is to be heard, in the item's own time.
struct Content
{
	TimeSpan mSpan;
	// The rate in which notes give what is missing.
	Ratio mRate;
	char const* mName;
	bool mIsMedia;
};

// Whether an item's content is there for all that it is asked for. What is not, becomes notes.
class ContentChecks
{
public:
	// Outlives this object.
	explicit ContentChecks(MakerContext& ioContext)
		: mContext(ioContext)
	{
	}

	// Whether it hears nothing of its content, transitions and all.
	static bool IsOutside(ItemTiming const& inTiming, TimeSpan const& inContent);
	// Takes notes of the parts that its content lacks.
	void CheckReach(Item const& inItem, Placement const& inPlacement, ItemTiming const& inTiming,
		Content const& inContent);
	// Why its speed makes it silent; empty where it does not.
	// inRates: the factor by which the speed is multiplied where rates differ.
	std::string CheckSpeed(Item const& inItem, ItemTiming const& inTiming, Ratio const& inRates);

private:
	MakerContext& mContext;
};

} // namespace SonaroHost::Otio
