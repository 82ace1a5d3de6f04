#include "TimelineNotes.h"

#include "Console.h"
#include "SonaroHost/HostError.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>

namespace SonaroCommand
{

using namespace SonaroHost::Otio;

namespace
{

constexpr std::size_t kMostLines = 20;

char const* GetName(Note::Kind inKind)
{
	switch (inKind)
	{
	case Note::Kind::eRemark:
		return "remark";
	case Note::Kind::eGuess:
		return "guess";
	case Note::Kind::eLevelNotRead:
		return "level not read";
	case Note::Kind::eIgnored:
		break;
	}
	return "ignored";
}

bool IsUnreadLevel(Note const& inNote)
{
	return inNote.mKind == Note::Kind::eLevelNotRead;
}

std::string Describe(Note const& inNote)
{
	return inNote.mText + (inNote.mPlace.empty() ? "" : " (" + inNote.mPlace + ")");
}

std::string Describe(MissingMedia const& inMissing)
{
	std::string text = "the clip \"" + inMissing.mClip + "\" on \"" + inMissing.mTrack + "\" is silent: ";
	return text + (inMissing.mPath.empty() ? "" : SonaroHost::QuotePath(inMissing.mPath) + " ") +
		   inMissing.mReason;
}

// Missing media are noted, too.
bool TellsOf(Note const& inNote, MissingMedia const& inMissing)
{
	return inNote.mPlace.compare(0, inMissing.mPlace.size(), inMissing.mPlace) == 0 &&
		   inNote.mText.find(inMissing.mReason) != std::string::npos;
}

} // namespace

void WarnOfNotes(std::vector<MissingMedia> const& inMissing, std::vector<Note> const& inNotes)
{
	std::size_t lines = 0;
	auto const warn = [&lines](std::string const& inText)
	{
		if (lines++ < kMostLines)
		{
			PrintWarning(inText);
		}
	};
	for (Note const& note : inNotes)
	{
		if (IsUnreadLevel(note))
		{
			warn("level not read: " + Describe(note));
		}
	}
	for (MissingMedia const& missing : inMissing)
	{
		warn(Describe(missing));
	}
	for (Note const& note : inNotes)
	{
		bool const isTold = std::any_of(inMissing.begin(), inMissing.end(),
			[&note](MissingMedia const& inOne) { return TellsOf(note, inOne); });
		if (note.mKind != Note::Kind::eRemark && !IsUnreadLevel(note) && !isTold)
		{
			warn(Describe(note));
		}
	}
	if (lines > kMostLines)
	{
		PrintWarning(
			"and " + std::to_string(lines - kMostLines) + " more; --report and --json tell them all");
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
				list.push_back({{"kind", GetName(note.mKind)}, {"place", note.mPlace}, {"text", note.mText}});
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
