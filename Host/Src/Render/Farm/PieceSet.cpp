#include "PieceSet.h"

#include "Files/SystemFiles.h"
#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <map>
#include <set>
#include <system_error>
#include <utility>

namespace SonaroHost::Farm
{

namespace
{

constexpr std::size_t kMostNames = 8;

std::vector<std::filesystem::path> ListFiles(std::vector<std::filesystem::path> const& inPaths)
{
	std::vector<std::filesystem::path> files;
	for (std::filesystem::path const& path : inPaths)
	{
		std::error_code error;
		if (!std::filesystem::is_directory(path, error))
		{
			files.push_back(path);
			continue;
		}
		std::set<std::filesystem::path> found;
		std::error_code listError;
		std::vector<std::string> const names = ListNames(path, listError);
		if (listError)
		{
			RefuseFile(path, "cannot be searched for pieces: " + listError.message(), "make it readable");
		}
		for (std::string const& name : names)
		{
			if (std::filesystem::is_regular_file(path / name, error))
			{
				found.insert(path / name);
			}
		}
		files.insert(files.end(), found.begin(), found.end());
	}
	return files;
}

// "pieces 3, 7 to 9 and 12 of 16".
std::string NamePieces(std::vector<std::size_t> const& inNumbers, std::size_t inCount)
{
	std::vector<std::string> spans;
	for (std::size_t i = 0; i < inNumbers.size();)
	{
		std::size_t end = i + 1;
		while (end < inNumbers.size() && inNumbers[end] == inNumbers[end - 1] + 1)
		{
			++end;
		}
		spans.push_back(std::to_string(inNumbers[i]) +
						(end - i > 1 ? " to " + std::to_string(inNumbers[end - 1]) : std::string()));
		i = end;
	}
	std::string text = inNumbers.size() == 1 ? "piece " : "pieces ";
	for (std::size_t i = 0; i < spans.size(); ++i)
	{
		text += i == 0 ? "" : i + 1 == spans.size() ? " and " : ", ";
		text += spans[i];
	}
	return text + " of " + std::to_string(inCount);
}

// The files of a plan's pieces, and what stands in the way of those that are not among them.
class PieceSearch
{
public:
	explicit PieceSearch(FarmPlan const& inPlan)
		: mPlan(inPlan),
		  mIdentity(GetIdentity(inPlan))
	{
	}

	void Look(std::filesystem::path const& inPath, bool inIsNamed)
	{
		try
		{
			auto const file = PieceFile::Open(inPath);
			if (file && file->GetFacts().mPlan == mIdentity)
			{
				mPaths.push_back(inPath);
				Keep(*file);
			}
			else if (file || inIsNamed)
			{
				Note(QuotePath(inPath) + (file ? " is a piece of another plan" : " is not a piece"));
			}
		}
		catch (HostError const& error)
		{
			Note(error.what());
		}
	}

	std::vector<std::filesystem::path> const& GetPaths() const { return mPaths; }

	// Throws a HostError that names what is missing.
	std::vector<PieceFile> Take()
	{
		std::vector<std::size_t> missing;
		std::vector<PieceFile> files;
		for (std::size_t number = 1; number <= mPlan.mPieces.size(); ++number)
		{
			auto const found = mFound.find(number);
			found == mFound.end() ? missing.push_back(number) : files.push_back(found->second);
		}
		if (!missing.empty())
		{
			std::string const what = NamePieces(missing, mPlan.mPieces.size());
			throw HostError(HostError::Kind::kInput,
				{{}, {}, what + (missing.size() == 1 ? " is missing" : " are missing") + mNotes,
					"render with sonaro render --piece what is missing, and join again"});
		}
		return files;
	}

private:
	// Of several files of one piece the first that is undamaged counts. Damage of samples shows only when they are read.
	void Keep(PieceFile const& inFile)
	{
		auto const [known, isNew] = mFound.try_emplace(inFile.GetFacts().mNumber, inFile);
		if (!isNew && !known->second.IsUndamaged())
		{
			known->second = inFile;
		}
	}

	void Note(std::string const& inText)
	{
		++mNumNotes;
		mNotes += mNumNotes <= kMostNames ? "; " + inText : std::string();
	}

	FarmPlan const& mPlan;
	std::string mIdentity;
	std::map<std::size_t, PieceFile> mFound;
	std::vector<std::filesystem::path> mPaths;
	std::string mNotes;
	std::size_t mNumNotes = 0;
};

void CheckPiece(PieceFile const& inFile, FarmPlan const& inPlan)
{
	PieceFacts const& facts = inFile.GetFacts();
	ProgrammeRange const& range = inPlan.mPieces[facts.mNumber - 1].mRange;
	std::int64_t frames = 0;
	for (PieceFacts::Segment const& segment : facts.mSegments)
	{
		frames += segment.mFrames;
	}
	bool const fits = facts.mRange.mFirstFrame == range.mFirstFrame && frames == range.mFrames &&
					  facts.mChannels == inPlan.mChannels && facts.mBlockFrames == inPlan.mBlockFrames;
	if (!fits)
	{
		RefuseFile(inFile.GetPath(), "is a piece that is not what its plan says", "render it again");
	}
}

} // namespace

PieceSet::PieceSet(FarmPlan const& inPlan, std::vector<std::filesystem::path> const& inPaths)
	: mRange(inPlan.mRange)
{
	PieceSearch search(inPlan);
	for (std::filesystem::path const& path : ListFiles(inPaths))
	{
		search.Look(path, std::ranges::find(inPaths, path) != inPaths.end());
	}
	mFiles = search.Take();
	mPaths = search.GetPaths();
	for (std::size_t file = 0; file < mFiles.size(); ++file)
	{
		CheckPiece(mFiles[file], inPlan);
		for (std::size_t segment = 0; segment < mFiles[file].GetFacts().mSegments.size(); ++segment)
		{
			mSegments.push_back({file, segment});
		}
	}
}

void PieceSet::Read(std::size_t inSegment, std::vector<std::size_t> const& inTaps, Piece& outPiece) const
{
	Place const& place = mSegments[inSegment];
	mFiles[place.mFile].Read(place.mSegment, inTaps, outPiece);
}

std::int64_t PieceSet::GetMostFrames() const
{
	std::int64_t most = 0;
	for (Place const& place : mSegments)
	{
		most = std::max(most, mFiles[place.mFile].GetFacts().mSegments[place.mSegment].mFrames);
	}
	return most;
}

std::vector<DamagedMedia> PieceSet::ListDamaged() const
{
	std::map<std::filesystem::path, std::pair<int, MediaDamage>> all;
	for (PieceFile const& file : mFiles)
	{
		for (DamagedMedia const& media : file.GetFacts().mDamaged)
		{
			auto& [rate, damage] = all[media.mPath];
			rate = media.mSampleRate;
			for (MediaDamage::Stretch const& stretch : media.mStretches)
			{
				damage.Add(stretch);
			}
		}
	}
	std::vector<DamagedMedia> list;
	list.reserve(all.size());
	for (auto const& [path, found] : all)
	{
		list.push_back({path, found.first, found.second.Get()});
	}
	return list;
}

} // namespace SonaroHost::Farm
