#include "Audibility.h"

#include "Ranges.h"

#include <algorithm>

namespace SonaroHost::Otio
{

namespace
{

bool IsSolo(Composable const& inChild)
{
	Item const* const item = inChild.AsItem();
	return item && item->mIsEnabled && item->GetSettings().mSolo.value_or(false);
}

} // namespace

std::string FindSilence(Item const& inItem)
{
	if (!inItem.mIsEnabled)
	{
		return "it is disabled";
	}
	if (inItem.GetSettings().mMute.value_or(false))
	{
		return "it is muted";
	}
	return GetSpeed(inItem).mIsFrozen ? "it is a freeze frame" : "";
}

std::vector<std::string> FindSilences(Stack const& inStack)
{
	bool const hasSolo = std::ranges::any_of(inStack.mChildren, IsSolo);
	std::vector<std::string> silences;
	for (Composable const& child : inStack.mChildren)
	{
		Item const* const item = child.AsItem();
		Track const* const track = child.As<Track>();
		std::string reason = item ? FindSilence(*item) : "it is a transition";
		if (track && !track->IsAudio())
		{
			reason = "its kind is " + (track->mKind.empty() ? "unknown" : track->mKind);
		}
		else if (hasSolo && !IsSolo(child) && reason.empty())
		{
			reason = "others are soloed";
		}
		silences.push_back(reason);
	}
	return silences;
}

} // namespace SonaroHost::Otio
