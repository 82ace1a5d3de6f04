#include "CompositionReader.h"

#include "ItemReader.h"
#include "Otio/Json/Fields.h"
#include "Otio/Json/Schema.h"
#include "Otio/Mix/MulticamReader.h"

#include "SonaroHost/Otio/Limits.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>

namespace SonaroHost::Otio
{

namespace
{

enum class Around
{
	kStack,
	kTrack,
};

void ReadGap(Cursor const& inObject, Gap& outGap)
{
	TellUnknownKeys(inObject, {}, kItemKeys);
	ReadItem(inObject, SettingsOwner::kGap, outGap);
	if (!outGap.mSourceRange)
	{
		inObject.Tell(Note::Kind::kGuess, "the gap has no source_range; assuming a length of 0");
	}
}

// What it is stays unknown, but how long it is can be read.
void ReadUnknown(Cursor const& inObject, Around inAround, Gap& outGap)
{
	outGap.mSchema = GetSchemaLabel(inObject);
	outGap.mPlace = inObject.GetPlace();
	outGap.mName = ReadLabel(Cursor(inObject, "name"));
	outGap.mMetadata = ReadMetadata(inObject);
	std::string const what = outGap.mSchema.empty() ? "an item without OTIO_SCHEMA"
													: "an item of unknown schema " + Quote(outGap.mSchema);
	outGap.mSourceRange = ReadIfThere(Cursor(inObject, "source_range"), ReadRange);
	if (!outGap.mSourceRange && inAround == Around::kTrack)
	{
		inObject.Refuse(what + " has no source_range, so the position of later items cannot be determined; "
							   "remove it or replace it with a Gap");
	}
	inObject.Tell(Note::Kind::kIgnored, what + " is not rendered; its time is silent");
}

// False for what is left out.
bool ReadTransitionOf(Cursor const& inObject, Around inAround, std::vector<Composable>& ioChildren)
{
	if (inAround == Around::kStack)
	{
		inObject.Tell(Note::Kind::kIgnored, "a transition has no effect in a stack; ignored");
		return false;
	}
	if (ioChildren.size() > 1 && ioChildren[ioChildren.size() - 2].As<Transition>() != nullptr)
	{
		inObject.Tell(Note::Kind::kIgnored, "two transitions in a row; the second is ignored");
		return false;
	}
	ReadTransition(inObject, ioChildren.back().mValue.emplace<Transition>());
	return true;
}

void ReadChild(
	Cursor const& inObject, Around inAround, std::size_t inDepth, std::vector<Composable>& ioChildren)
{
	inObject.Require(JsonValue::Type::kObject, "a clip, gap, transition, track or stack");
	auto& value = ioChildren.emplace_back().mValue;
	switch (ReadSchema(inObject))
	{
	case SchemaKind::kClip:
		ReadClip(inObject, value.emplace<Clip>());
		break;
	case SchemaKind::kGap:
		ReadGap(inObject, value.emplace<Gap>());
		break;
	case SchemaKind::kTrack:
		ReadTrack(inObject, inDepth, value.emplace<Track>());
		break;
	case SchemaKind::kStack:
		ReadStack(inObject, inDepth, value.emplace<Stack>());
		break;
	case SchemaKind::kTransition:
		if (!ReadTransitionOf(inObject, inAround, ioChildren))
		{
			ioChildren.pop_back();
		}
		break;
	default:
		ReadUnknown(inObject, inAround, value.emplace<Gap>());
		break;
	}
}

void ReadChildren(
	Cursor const& inObject, Around inAround, std::size_t inDepth, std::vector<Composable>& outChildren)
{
	if (inDepth >= kMaxCompositionDepth)
	{
		inObject.Refuse("stacks and tracks are nested more than " + std::to_string(kMaxCompositionDepth) +
						" levels deep; flatten the timeline");
	}
	Cursor const children(inObject, "children");
	// What is refused at its first child has not taken the memory of all.
	constexpr std::size_t kMostAtOnce = 10000;
	outChildren.reserve(std::min(children.Get().GetElements().size(), kMostAtOnce));
	ForEach(children, [inAround, inDepth, &outChildren](Cursor const& inChild)
		{ ReadChild(inChild, inAround, inDepth + 1, outChildren); });
}

std::string ReadKind(Cursor const& inObject)
{
	Cursor const kind(inObject, "kind");
	if (kind.IsNothing())
	{
		kind.Tell(Note::Kind::kGuess, "the track has no \"kind\"; treating it as Video, which is not "
									  "rendered; set it to \"Audio\" to hear it");
		return "Video";
	}
	std::string name = ReadText(kind);
	if (name != "Audio" && name != "Video")
	{
		kind.Tell(Note::Kind::kIgnored,
			"the track is of kind " + Quote(name) + "; only tracks of kind Audio are heard");
	}
	return name;
}

} // namespace

void ReadStack(Cursor const& inObject, std::size_t inDepth, Stack& outStack)
{
	TellUnknownKeys(inObject, {"children"}, kItemKeys);
	ReadItem(inObject, SettingsOwner::kStack, outStack);
	ReadChildren(inObject, Around::kStack, inDepth, outStack.mChildren);
	CheckAngles(inObject, outStack);
	// The outermost stack has the timeline's submixes too.
	if (inDepth > 0)
	{
		CheckRouting(outStack.mChildren, outStack.GetSettings().mSubmixes);
	}
}

void ReadTrack(Cursor const& inObject, std::size_t inDepth, Track& outTrack)
{
	TellUnknownKeys(inObject, {"kind", "children"}, kItemKeys);
	outTrack.mKind = ReadKind(inObject);
	SilenceScope const scope(inObject.GetFindings(), !outTrack.IsAudio());
	ReadItem(inObject, SettingsOwner::kTrack, outTrack);
	ReadChildren(inObject, Around::kTrack, inDepth, outTrack.mChildren);
	CheckRouting(outTrack.mChildren, {});
}

void CheckRouting(std::vector<Composable> const& inChildren, std::vector<Submix> const& inSubmixes)
{
	std::unordered_set<std::string_view> names;
	for (Submix const& submix : inSubmixes)
	{
		names.insert(submix.mName);
	}
	auto const check = [&names](Track const& inTrack, std::string const& inKey, std::string const& inName)
	{
		if (!names.contains(inName))
		{
			throw Refusal(inTrack.mPlace + "/metadata/sonaro/" + inKey,
				"there is no submix " + Quote(inName) +
					" in the stack that contains the track; use the name of one in its \"submixes\"");
		}
	};
	for (Composable const& child : inChildren)
	{
		auto const* const track = child.As<Track>();
		if (track == nullptr || !track->mSettings)
		{
			continue;
		}
		if (track->mSettings->mOutput)
		{
			check(*track, "output", *track->mSettings->mOutput);
		}
		for (std::size_t i = 0; i < track->mSettings->mSends.size(); ++i)
		{
			check(*track, "sends/" + std::to_string(i) + "/to", track->mSettings->mSends[i].mTo);
		}
	}
}

} // namespace SonaroHost::Otio
