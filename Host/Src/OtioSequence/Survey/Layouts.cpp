#include "Layouts.h"

#include "Audibility.h"
#include "Levels.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/LayoutPlan.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SonaroHost::Otio
{

namespace
{

// Copies only what is wider: there are very many clips.
void Widen(SN::AudioChannelLayout const& inLayout, SN::AudioChannelLayout& ioWidth)
{
	if (inLayout.size() > ioWidth.size())
	{
		ioWidth = inLayout;
	}
}

} // namespace

SN::AudioChannelLayout const& Layouts::GetLayout(Clip const& inClip)
{
	return mMedia.Get(inClip).mLayout;
}

SN::AudioChannelLayout const& Layouts::GetInnerWidth(ItemView const& inItem)
{
	if (inItem.mClip)
	{
		return GetLayout(*inItem.mClip);
	}
	auto found = mWidths.find(inItem.mItem);
	if (found == mWidths.end())
	{
		found = mWidths.emplace(inItem.mItem, FindWidth(inItem)).first;
	}
	return found->second;
}

SN::AudioChannelLayout const& Layouts::GetWidth(ItemView const& inItem)
{
	static SN::AudioChannelLayout const stereo = zorvmediatypes::CreateStereoChannelLayout();
	SN::AudioChannelLayout const& inner = GetInnerWidth(inItem);
	return inner.size() == 1 && FindPan(*inItem.mItem) ? stereo : inner;
}

SN::AudioChannelLayout Layouts::FindWidth(ItemView const& inItem)
{
	SN::AudioChannelLayout width;
	if (inItem.mTrack && inItem.mTrack->IsAudio())
	{
		for (Composable const& child : inItem.mTrack->mChildren)
		{
			Item const* const item = child.AsItem();
			if (item && FindSilence(*item).empty())
			{
				Widen(GetWidth(child), width);
			}
		}
	}
	if (inItem.mStack && inItem.mItem->GetSettings().mLayout)
	{
		return *ParseLayout(*inItem.mItem->GetSettings().mLayout);
	}
	if (inItem.mStack)
	{
		auto const silences = FindSilences(*inItem.mStack);
		for (std::size_t index = 0; index < silences.size(); ++index)
		{
			if (silences[index].empty())
			{
				Widen(GetWidth(inItem.mStack->mChildren[index]), width);
			}
		}
		for (Submix const& submix : inItem.mItem->GetSettings().mSubmixes)
		{
			width = submix.mPan && width.size() == 1 ? zorvmediatypes::CreateStereoChannelLayout() : width;
		}
	}
	return width;
}

SN::AudioChannelLayout const& Layouts::Limit(
	SN::AudioChannelLayout const& inLayout, SN::AudioChannelLayout const& inLimit)
{
	return inLayout.empty() || inLayout.size() > inLimit.size() ? inLimit : inLayout;
}

bool Layouts::CanPan(SN::AudioChannelLayout const& inFrom, SN::AudioChannelLayout const& inTo)
{
	constexpr double kMiddle = 0.5;
	LayoutRequest request;
	request.mLayout = inTo;
	request.mPan = kMiddle;
	try
	{
		return LayoutPlan(inFrom, request).GetPanner().has_value();
	}
	catch (HostError const&)
	{
		return false;
	}
}

} // namespace SonaroHost::Otio
