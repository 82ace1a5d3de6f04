#pragma once

#include "SonaroHost/Sequence/OutermostTime.h"

#include <cstddef>
#include <string>

namespace SonaroHost::Sequence
{

// Where in a description something stands, for messages and reports. It refers to names that outlive it, and
// makes a text of them only when it is asked for one.
struct Place
{
	// "track", "submix" or "sequence".
	char const* mKind = "";
	// What leads to the sequence, as "Dialogue / Scene 4 / "; empty for the outermost one.
	std::string const* mPrefix = nullptr;
	std::string const* mName = nullptr;
	// Null where no item is meant.
	std::string const* mItemName = nullptr;
	// The origin of the item, or of the track; may be null.
	std::string const* mOrigin = nullptr;
	// The time of the sequence, or of the item from its start on.
	OutermostTime mTime = {};
	// The time of what the item plays.
	OutermostTime mInnerTime = {};
	// Among their kind, from 1 on, for those without a name; 0 where they have no number.
	std::size_t mNumber = 0;
	std::size_t mItemNumber = 0;

	// The path in the form "Dialogue / Scene 4 / Boom".
	std::string GetPath() const;
	// In quotes, with the item where one is meant; for people.
	std::string Describe() const;
	// Whether it is the master of the outermost sequence, which people know as the output.
	bool IsOutput() const;
	// What leads to a sequence within the item.
	std::string GetItemPrefix() const;
};

// Throws a HostError of kind kRequest, as "track 'Boom', item 'Scene 4': inReason; inRemedy", or "track 1, item 2: ..."
// without names. Its place is the origin.
[[noreturn]] void Refuse(Place const& inPlace, std::string const& inReason, std::string const& inRemedy = {});

// The name for messages: in quotes, on one line.
std::string Quote(std::string const& inName);

} // namespace SonaroHost::Sequence
