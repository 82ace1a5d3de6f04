#include "PlaceNames.h"

#include "SonaroHost/Otio/Labels.h"

#include <algorithm>
#include <cstddef>
#include <variant>

namespace SonaroHost::Otio
{

namespace
{

bool IsWithin(std::string_view inPlace, std::string_view inAround)
{
	return inPlace.starts_with(inAround) &&
		   (inPlace.size() == inAround.size() || inPlace[inAround.size()] == '/');
}

std::string const& GetPlace(Composable const& inChild)
{
	return std::visit(
		[](auto const& inValue) -> std::string const& { return inValue.mPlace; }, inChild.mValue);
}

// The children in which the place may lie; null for none.
std::vector<Composable> const* FindChildren(Composable const& inAround)
{
	if (Track const* const track = inAround.As<Track>())
	{
		return &track->mChildren;
	}
	Stack const* const stack = inAround.As<Stack>();
	return stack ? &stack->mChildren : nullptr;
}

// Children stand in the order of the file, and each has its number in its place; but a stack leaves some out.
Composable const* FindChild(
	std::vector<Composable> const& inChildren, std::string_view inAround, std::string_view inPlace)
{
	constexpr std::string_view kChildren = "/children/";
	std::string_view const rest = inPlace.substr(inAround.size());
	if (!rest.starts_with(kChildren))
	{
		return nullptr;
	}
	std::size_t index = 0;
	for (char const digit : rest.substr(kChildren.size()))
	{
		if (digit < '0' || digit > '9' || index > inChildren.size())
		{
			break;
		}
		index = 10 * index + static_cast<std::size_t>(digit - '0');
	}
	for (std::size_t i = std::min(index + 1, inChildren.size()); i-- > 0;)
	{
		if (IsWithin(inPlace, GetPlace(inChildren[i])))
		{
			return &inChildren[i];
		}
	}
	return nullptr;
}

void Name(Note& ioNote, Timeline const& inTimeline)
{
	std::string_view around = inTimeline.mTracks.mPlace;
	auto const* children = IsWithin(ioNote.mPlace, around) ? &inTimeline.mTracks.mChildren : nullptr;
	while (children)
	{
		Composable const* const child = FindChild(*children, around, ioNote.mPlace);
		if (!child)
		{
			return;
		}
		if (Clip const* const clip = child->As<Clip>())
		{
			ioNote.mClip = GetLabel(*clip);
		}
		else if (Track const* const track = child->As<Track>())
		{
			ioNote.mTrack = AppendLabel(ioNote.mTrack, GetLabel(*track));
		}
		else if (Stack const* const stack = child->As<Stack>())
		{
			ioNote.mTrack = AppendLabel(ioNote.mTrack, GetLabel(*stack));
		}
		around = GetPlace(*child);
		children = FindChildren(*child);
	}
}

} // namespace

void NamePlaces(Timeline const& inTimeline, std::vector<Note>& ioNotes)
{
	for (Note& note : ioNotes)
	{
		if (note.mClip.empty() && note.mTrack.empty() && !note.mPlace.empty())
		{
			Name(note, inTimeline);
		}
	}
}

} // namespace SonaroHost::Otio
