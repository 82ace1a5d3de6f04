#include "SonaroHost/Otio/Reader.h"

#include "CompositionReader.h"
#include "ItemReader.h"
#include "Otio/Json/Cursor.h"
#include "Otio/Json/Fields.h"
#include "Otio/Json/JsonTree.h"
#include "Otio/Json/Schema.h"
#include "Otio/Mix/MixSettingsReader.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

[[noreturn]] void RefuseAt(
	std::filesystem::path const& inPath, std::string const& inPlace, std::string const& inWhy)
{
	throw HostError(HostError::Kind::kInput, {inPath, inPlace, inWhy, {}});
}

// "line 3, column 17", both from 1; columns are bytes.
std::string DescribeOffset(std::string_view inBytes, std::size_t inOffset)
{
	std::string_view const before = inBytes.substr(0, inOffset);
	auto const line = std::ranges::count(before, '\n') + 1;
	std::size_t const lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
	return "line " + std::to_string(line) + ", column " + std::to_string(before.size() - lineStart + 1);
}

void ReadTracks(Cursor const& inTimeline, Stack& outTracks)
{
	Cursor const tracks(inTimeline, "tracks");
	if (tracks.IsNothing())
	{
		tracks.Tell(Note::Kind::kGuess, "the timeline has no \"tracks\"; treating it as empty");
		outTracks.mPlace = tracks.GetPlace();
		return;
	}
	if (!tracks.IsObject() || ReadSchema(tracks) != SchemaKind::kStack)
	{
		tracks.Refuse("is not a Stack; \"tracks\" of a timeline must be one");
	}
	ReadStack(tracks, 0, outTracks);
}

void ReadTimeline(Cursor const& inObject, Timeline& outTimeline)
{
	TellUnknownKeys(inObject, {"name", "global_start_time", "tracks", "metadata"});
	outTimeline.mPlace = inObject.GetPlace();
	outTimeline.mName = ReadLabel(Cursor(inObject, "name"));
	outTimeline.mGlobalStartTime = ReadIfUsable(Cursor(inObject, "global_start_time"), ReadTime);
	outTimeline.mMetadata = ReadMetadata(inObject);
	MixSettings settings = ReadMixSettings(Cursor(inObject, "metadata"), SettingsOwner::kTimeline);
	Stack& tracks = outTimeline.mTracks;
	ReadTracks(inObject, tracks);
	tracks.mSettings = ShareSettings(MergeSettings(std::move(settings), tracks.GetSettings(), inObject));
	CheckRouting(tracks.mChildren, tracks.GetSettings().mSubmixes);
}

// A composition that stands for itself, with a timeline put around it.
void Wrap(Cursor const& inObject, SchemaKind inKind, Document& outDocument)
{
	inObject.Tell(
		Note::Kind::kGuess, inKind == SchemaKind::kStack
								? "the file contains a Stack but no Timeline; treating the Stack as one"
								: "the file contains a Track but no Timeline; treating the Track as one");
	Timeline& timeline = outDocument.mTimelines.emplace_back();
	if (inKind == SchemaKind::kStack)
	{
		ReadStack(inObject, 0, timeline.mTracks);
	}
	else
	{
		ReadTrack(inObject, 1, timeline.mTracks.mChildren.emplace_back().mValue.emplace<Track>());
	}
	timeline.mName =
		inKind == SchemaKind::kStack ? timeline.mTracks.mName : timeline.mTracks.mChildren[0].AsItem()->mName;
	CheckRouting(timeline.mTracks.mChildren, timeline.mTracks.GetSettings().mSubmixes);
}

void ReadCollection(Cursor const& inObject, Document& outDocument)
{
	TellUnknownKeys(inObject, {"name", "children", "metadata"});
	ForEach(Cursor(inObject, "children"),
		[&outDocument](Cursor const& inChild)
		{
			SchemaKind const kind = ReadSchema(inChild);
			if (kind == SchemaKind::kTimeline)
			{
				ReadTimeline(inChild, outDocument.mTimelines.emplace_back());
			}
			else if (kind == SchemaKind::kCollection)
			{
				ReadCollection(inChild, outDocument);
			}
			else
			{
				inChild.Tell(
					Note::Kind::kIgnored, "is not a Timeline; only the timelines of a collection are read");
			}
		});
}

void ReadRoot(Cursor const& inRoot, Document& outDocument)
{
	SchemaKind const kind = ReadSchema(inRoot);
	switch (kind)
	{
	case SchemaKind::kTimeline:
		ReadTimeline(inRoot, outDocument.mTimelines.emplace_back());
		break;
	case SchemaKind::kCollection:
		ReadCollection(inRoot, outDocument);
		break;
	case SchemaKind::kStack:
	case SchemaKind::kTrack:
		Wrap(inRoot, kind, outDocument);
		break;
	case SchemaKind::kNone:
		inRoot.Refuse("has no OTIO_SCHEMA, so this is not an OpenTimelineIO file");
	default:
		inRoot.Refuse("has the schema " + Quote(GetSchemaLabel(inRoot)) +
					  "; expected a Timeline, a SerializableCollection, a Stack or a Track");
	}
	if (outDocument.mTimelines.empty())
	{
		inRoot.Refuse("the collection contains no Timeline; there is nothing to render");
	}
}

// Anything that is no JSON from its first character on gets a plain word, not that of a parser.
void CheckIsJson(std::string_view inBytes, std::filesystem::path const& inPath)
{
	constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
	std::string_view const text =
		inBytes.substr(inBytes.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
	std::size_t const first = text.find_first_not_of(" \t\r\n");
	if (first == std::string_view::npos)
	{
		RefuseFile(inPath, "is empty");
	}
	if (std::string_view("{[\"-0123456789tfn/").find(text[first]) == std::string_view::npos)
	{
		RefuseFile(inPath, "is not an OpenTimelineIO file (expected JSON starting with \"{\")");
	}
}

} // namespace

Document ReadDocument(std::string_view inBytes, std::filesystem::path const& inPath)
{
	if (inBytes.size() > kMaxFileBytes)
	{
		RefuseFile(inPath, "is larger than 1 GiB; split the timeline");
	}
	CheckIsJson(inBytes, inPath);
	try
	{
		JsonTree const tree(inBytes, kMaxJsonDepth);
		Findings findings;
		Document document;
		ReadRoot(Cursor(tree.GetRoot(), findings), document);
		document.mNotes = findings.TakeNotes();
		return document;
	}
	catch (JsonError const& error)
	{
		RefuseAt(inPath, DescribeOffset(inBytes, error.GetOffset()), error.what());
	}
	catch (Refusal const& refusal)
	{
		RefuseAt(inPath, refusal.GetPlace(), refusal.what());
	}
}

Document ReadDocumentFile(std::filesystem::path const& inPath)
{
	std::error_code error;
	if (!std::filesystem::is_regular_file(inPath, error))
	{
		RefuseFile(inPath, std::filesystem::exists(inPath, error) ? "is not a file" : "does not exist");
	}
	std::uintmax_t const size = std::filesystem::file_size(inPath, error);
	if (error || size > kMaxFileBytes)
	{
		RefuseFile(inPath, "is larger than 1 GiB; split the timeline");
	}
	std::string bytes(size, '\0');
	errno = 0;
	std::ifstream file(inPath, std::ios::binary);
	if (!file.read(bytes.data(), static_cast<std::streamsize>(size)))
	{
		RefuseFile(inPath,
			"cannot be read" + (errno != 0 ? ": " + std::generic_category().message(errno) : std::string()));
	}
	return ReadDocument(bytes, inPath);
}

} // namespace SonaroHost::Otio
