#include "TimelineNotes.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Otio/Labels.h"
#include "Terminal/Console.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

namespace
{

constexpr std::size_t kMostLines = 20;
// The longest labels and places in bytes; deeply nested things have long ones.
constexpr std::size_t kLongestTrack = 200;
constexpr std::size_t kLongestPlace = 400;

char const* GetKindName(Note::Kind inKind)
{
	// In the order of Note::Kind.
	constexpr char const* kKindNames[] = {"remark", "guess", "ignored", "level not read", "missing effect"};
	return kKindNames[static_cast<std::size_t>(inKind)];
}

bool IsUnreadLevel(Note const& inNote)
{
	return inNote.mKind == Note::Kind::kLevelNotRead;
}

// Which clip and which track, as far as they are known.
std::string DescribeWhere(std::string const& inClip, std::string const& inTrack)
{
	std::string const track = inTrack.empty() ? "" : QuoteName(ShortenMiddle(inTrack, kLongestTrack));
	return inClip.empty() ? (track.empty() ? "" : "track " + track)
						  : "clip " + QuoteName(inClip) + (track.empty() ? "" : " on " + track);
}

std::string DescribePlace(std::string const& inPlace)
{
	return inPlace.empty() ? "" : " (" + ShortenMiddle(inPlace, kLongestPlace) + ")";
}

// What to do about missing media whose reason leaves it open; nothing for other reasons.
char const* DescribeRemedy(std::string const& inReason)
{
	return inReason == "does not exist" ? "; pass its folder with --media DIR"
		   : inReason.starts_with("covers ")
			   ? "; correct the source_range of the clip or the available_range of its media"
			   : "";
}

// The clip that is named stands for all of them.
std::string Describe(MissingFile const& inFile)
{
	MissingMedia const& first = *inFile.mFirst;
	std::string const where = DescribeWhere(GetClipLabel(first), first.mTrack);
	std::string const clips =
		inFile.mClips == 1 ? where + " is silent"
						   : std::to_string(inFile.mClips) + " clips are silent, the first one " + where;
	return clips + ": " + DescribeReason(first) + DescribePlace(first.mPlace) + DescribeRemedy(first.mReason);
}

std::string Describe(Note const& inNote)
{
	std::string const where = DescribeWhere(inNote.mClip, inNote.mTrack);
	return where + (where.empty() ? "" : ": ") + inNote.mText + DescribePlace(inNote.mPlace);
}

// " (and 2 more places)"; nothing for none.
std::string DescribeMore(std::size_t inPlaces)
{
	return inPlaces == 0 ? "" : " (and " + FormatCount(inPlaces, "more place") + ")";
}

// A guess that is the same in several places, such as one about a file that many clips use, gets one line, with the
// first of them.
std::vector<std::string> DescribeEachOnce(std::vector<Note const*> const& inNotes)
{
	std::map<std::string, std::size_t> counts;
	for (Note const* const note : inNotes)
	{
		++counts[note->mText];
	}
	std::vector<std::string> texts;
	for (Note const* const note : inNotes)
	{
		bool const isGuess = note->mKind == Note::Kind::kGuess;
		if (std::size_t const count = isGuess ? std::exchange(counts[note->mText], 0) : 1; count > 0)
		{
			texts.push_back(
				std::string(GetKindName(note->mKind)) + ": " + Describe(*note) + DescribeMore(count - 1));
		}
	}
	return texts;
}

Json MakeJson(Note const& inNote)
{
	Json json{{"kind", GetKindName(inNote.mKind)}, {"place", inNote.mPlace}, {"text", inNote.mText}};
	if (!inNote.mClip.empty())
	{
		json["clip"] = inNote.mClip;
	}
	if (!inNote.mTrack.empty())
	{
		json["track"] = inNote.mTrack;
	}
	return json;
}

// Missing media are noted, too.
bool TellsOf(Note const& inNote, MissingMedia const& inMissing)
{
	return inNote.mPlace.compare(0, inMissing.mPlace.size(), inMissing.mPlace) == 0 &&
		   inNote.mText.find(inMissing.mReason) != std::string::npos;
}

} // namespace

std::vector<MissingFile> GroupByFile(std::vector<MissingMedia> const& inMissing)
{
	std::vector<MissingFile> files;
	std::map<std::pair<std::filesystem::path, std::string>, std::size_t> indices;
	for (MissingMedia const& missing : inMissing)
	{
		auto const [place, isNew] = indices.try_emplace({missing.mPath, missing.mReason}, files.size());
		if (isNew)
		{
			files.push_back({&missing, 0});
		}
		++files[place->second].mClips;
	}
	return files;
}

std::string GetClipLabel(MissingMedia const& inMissing)
{
	return MakeLabel(inMissing.mClip, "clip", inMissing.mPlace);
}

std::string DescribeReason(MissingMedia const& inMissing)
{
	return (inMissing.mPath.empty() ? "" : QuotePath(inMissing.mPath) + " ") +
		   MakePrintable(inMissing.mReason);
}

void WarnOfNotes(std::vector<MissingMedia> const& inMissing, std::vector<Note> const& inNotes)
{
	std::vector<Note const*> unread;
	std::vector<Note const*> others;
	for (Note const& note : inNotes)
	{
		bool const isTold = std::ranges::any_of(
			inMissing, [&note](MissingMedia const& inOne) { return TellsOf(note, inOne); });
		if (IsUnreadLevel(note))
		{
			unread.push_back(&note);
		}
		else if (note.mKind != Note::Kind::kRemark && !isTold)
		{
			others.push_back(&note);
		}
	}
	std::vector<std::string> texts = DescribeEachOnce(unread);
	for (MissingFile const& file : GroupByFile(inMissing))
	{
		texts.push_back(Describe(file));
	}
	for (std::string& text : DescribeEachOnce(others))
	{
		texts.push_back(std::move(text));
	}
	for (std::size_t line = 0; line < std::min(texts.size(), kMostLines); ++line)
	{
		PrintWarning(texts[line]);
	}
	if (texts.size() > kMostLines)
	{
		std::size_t const rest = texts.size() - kMostLines;
		PrintWarning(FormatCount(rest, "more warning") + (rest == 1 ? " is" : " are") +
					 " not shown; use --report or --json to list all");
	}
}

Json ListMissing(std::vector<MissingMedia> const& inMissing)
{
	Json list = Json::array();
	for (MissingMedia const& missing : inMissing)
	{
		list.push_back({{"clip", missing.mClip}, {"track", missing.mTrack}, {"place", missing.mPlace},
			{"path", missing.mPath.string()}, {"reason", missing.mReason}});
	}
	return list;
}

Json ListNotes(std::vector<Note> const& inNotes)
{
	Json list = Json::array();
	for (bool const areLevels : {true, false})
	{
		for (Note const& note : inNotes)
		{
			if (IsUnreadLevel(note) == areLevels)
			{
				list.push_back(MakeJson(note));
			}
		}
	}
	return list;
}

std::size_t CountUnreadLevels(std::vector<Note> const& inNotes)
{
	return std::accumulate(inNotes.begin(), inNotes.end(), std::size_t{0},
		[](std::size_t inCount, Note const& inNote)
		{ return inCount + (IsUnreadLevel(inNote) ? inNote.mCount : 0); });
}

} // namespace SonaroCommand
