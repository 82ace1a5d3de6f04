#include "Findings.h"

#include "SonaroHost/Base/NumberText.h"

#include <algorithm>
#include <iterator>

namespace SonaroHost::Otio
{

namespace
{

constexpr std::size_t kListedOfOneText = 20;
// Texts carry names from the file; beyond so many different ones notes are only counted.
constexpr std::size_t kMostTexts = 5000;

} // namespace

bool Findings::Count(Note::Kind inKind, std::string const& inText)
{
	// One text can be a remark here and a guess there.
	std::string key = std::to_string(static_cast<int>(inKind)) + inText;
	auto found = mTallies.find(key);
	if (found == mTallies.end())
	{
		if (mTallies.size() == kMostTexts)
		{
			++mUncounted[static_cast<std::size_t>(inKind)];
			return false;
		}
		found = mTallies.emplace(std::move(key), Tally{inKind, 0}).first;
	}
	return ++found->second.mCount <= kListedOfOneText;
}

std::vector<Note> Findings::TakeNotes()
{
	for (auto const& [text, index] : mOnce)
	{
		mNotes[index].mText += " (" + FormatCount(mNotes[index].mCount, "item") + " in the file)";
	}
	std::vector<Note> rest;
	for (auto const& [key, tally] : mTallies)
	{
		if (tally.mCount > kListedOfOneText)
		{
			std::size_t const more = tally.mCount - kListedOfOneText;
			rest.push_back(
				{tally.mKind, {}, "at " + FormatCount(more, "more place") + ": " + key.substr(1), more});
		}
	}
	std::ranges::sort(rest, {}, &Note::mText);
	std::move(rest.begin(), rest.end(), std::back_inserter(mNotes));
	for (Note::Kind const kind : {Note::Kind::kRemark, Note::Kind::kGuess, Note::Kind::kIgnored,
			 Note::Kind::kLevelNotRead, Note::Kind::kMissingEffect})
	{
		if (std::size_t const count = mUncounted[static_cast<std::size_t>(kind)])
		{
			mNotes.push_back({kind, {},
				FormatCount(count, "further note") + (count == 1 ? " is" : " are") + " not listed", count});
		}
	}
	return std::move(mNotes);
}

} // namespace SonaroHost::Otio
