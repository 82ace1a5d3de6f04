#pragma once

#include "SonaroHost/Otio/Note.h"

#include <array>
#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace SonaroHost::Otio
{

// Why a part of a file cannot be used. Either the part is optional and a note reports it, or the whole file is
// refused.
class Refusal : public std::runtime_error
{
public:
	Refusal(std::string inPlace, std::string const& inWhy)
		: std::runtime_error(inWhy),
		  mPlace(std::move(inPlace))
	{
	}

	std::string const& GetPlace() const { return mPlace; }

private:
	std::string mPlace;
};

// The notes that are taken while a file is read.
class Findings
{
public:
	// inPlace() gives the place; it is asked only when the note is kept.
	template <class Place>
	void Tell(Note::Kind inKind, std::string inText, Place const& inPlace)
	{
		Note::Kind const kind = mIsSilent ? Note::Kind::kRemark : inKind;
		if (Count(kind, inText))
		{
			mNotes.push_back({kind, inPlace(), std::move(inText), 1});
		}
	}

	// A note for the whole file: it stands at the first of its places and says how many there are. It is not taken in
	// parts that are not heard anyway.
	template <class Place>
	void TellOnce(Note::Kind inKind, std::string const& inText, Place const& inPlace)
	{
		if (mIsSilent)
		{
			return;
		}
		auto const [found, isNew] = mOnce.try_emplace(inText, mNotes.size());
		if (isNew)
		{
			mNotes.push_back({inKind, inPlace(), inText, 0});
		}
		++mNotes[found->second].mCount;
	}

	// In parts that are not heard anyway every note is a remark.
	bool IsSilent() const { return mIsSilent; }
	void SetSilent(bool inIsSilent) { mIsSilent = inIsSilent; }

	// All notes, and how often those came that were left out. Called once, at the end.
	std::vector<Note> TakeNotes();

private:
	struct Tally
	{
		Note::Kind mKind = Note::Kind::kRemark;
		std::size_t mCount = 0;
	};

	// Whether the note is one of the first of its text.
	bool Count(Note::Kind inKind, std::string const& inText);

	bool mIsSilent = false;
	std::vector<Note> mNotes;
	std::unordered_map<std::string, Tally> mTallies;
	// The indices of the notes that TellOnce adds, by their text.
	std::map<std::string, std::size_t> mOnce;
	// The notes of each kind that are only counted.
	std::array<std::size_t, 5> mUncounted{};
};

// Silences the notes of a scope.
class SilenceScope
{
public:
	SilenceScope(Findings& ioFindings, bool inIsSilent)
		: mFindings(ioFindings),
		  mWasSilent(ioFindings.IsSilent())
	{
		mFindings.SetSilent(mWasSilent || inIsSilent);
	}
	~SilenceScope() { mFindings.SetSilent(mWasSilent); }
	SilenceScope(SilenceScope const&) = delete;
	SilenceScope& operator=(SilenceScope const&) = delete;

private:
	Findings& mFindings;
	bool mWasSilent;
};

} // namespace SonaroHost::Otio
