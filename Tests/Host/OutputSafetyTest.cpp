// Throws outputs at what they must not touch.

#include "Media.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Render/ClipRenderJob.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "SonaroHost/Render/TimelineWaveformJob.h"
#include "TimelineJson.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace SonaroHost::Testing::OutputSafetyTest
{

// One run: an input, and outputs of which any may be where it must not.
struct Throw
{
	enum class Kind
	{
		kMix,
		kStems,
		kPicture,
		kSound,
	};

	Kind mKind = Kind::kMix;
	std::string mInput;
	std::string mOutput;
	// Of a mix or stems.
	std::string mReport;
	bool mIsAttack = false;
};

void PrintTo(Throw const& inThrow, std::ostream* ioStream)
{
	*ioStream << static_cast<int>(inThrow.mKind) << " '" << inThrow.mInput << "' -o '" << inThrow.mOutput
			  << "' --report '" << inThrow.mReport << "'" << (inThrow.mIsAttack ? ", to be refused" : "");
}

class OutputSafetyTest : public testing::Test
{
protected:
	void SetUp() override
	{
		for (char const* const folder : {"media", "edit.otiod/media", "links", "out"})
		{
			std::filesystem::create_directories(mFolder / folder);
		}
		auto const clip = [](std::string const& inMedia) { return Clip(inMedia, inMedia, 0.0, 0.04); };
		Json const timeline =
			Timeline({Track("A1", {clip("media/a.wav"), clip("media/b.wav"), clip("media/gone.wav")}),
				With(Track("V1", {clip("media/film.mov")}), {{"kind", "Video"}})});
		for (std::string const& base : {std::string(), std::string("edit.otiod/")})
		{
			WriteBytes(mFolder / (base.empty() ? "edit.otio" : base + "content.otio"), timeline.dump());
			WriteBytes(mFolder / (base + "media/film.mov"), "pictures");
			for (int channels : {1, 2})
			{
				std::string const name = base + (channels == 1 ? "media/a.wav" : "media/b.wav");
				WriteSound(mFolder / name, SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(channels, 48000, 2400));
			}
		}
		mBefore = ReadNeeded();
	}

	// What must stay as it is.
	std::map<std::string, std::string> ReadNeeded() const
	{
		std::map<std::string, std::string> files;
		for (std::string const& base : {std::string(), std::string("edit.otiod/")})
		{
			for (char const* const name : {"media/a.wav", "media/b.wav", "media/film.mov", "media/gone.wav",
					 "media/Gone.WAV", "media/film.wav", "edit.otio", "content.otio"})
			{
				bool const isThere = std::filesystem::exists(mFolder / (base + name));
				files[base + name] = isThere ? ReadBytes(mFolder / (base + name)) : "none";
			}
		}
		return files;
	}

	std::set<std::string> ListAll() const
	{
		std::set<std::string> names;
		for (auto const& entry : std::filesystem::recursive_directory_iterator(mFolder.Get()))
		{
			names.insert(entry.path().string());
		}
		return names;
	}

	unsigned Pick(std::size_t inCount) { return static_cast<unsigned>(mRandom() % inCount); }

	std::string MakeName(char const* inEnding) { return std::to_string(mNames++) + inEnding; }

	std::string GetPath(std::string const& inName) const { return (mFolder / inName).string(); }

	// Another path to the same file, to be there or not. A hard link to what the run does not read is a file of its own,
	// which may be replaced.
	std::string Disguise(std::string const& inName, bool inIsRead = false)
	{
		std::filesystem::path const path = mFolder / inName;
		std::filesystem::path const link = mFolder / "links" / MakeName(".wav");
		switch (Pick(6))
		{
		case 0:
			return GetPath("media/../links/../" + inName);
		case 1:
			std::filesystem::create_symlink(path, link);
			return link.string();
		case 2:
			std::filesystem::create_symlink(std::filesystem::relative(path, link.parent_path()), link);
			std::filesystem::create_symlink(link, link.string() + ".again");
			return link.string() + ".again";
		case 3:
			std::filesystem::create_symlink(path.parent_path(), link);
			return (link / path.filename()).string();
		case 4:
			if (inIsRead && std::filesystem::is_regular_file(path))
			{
				std::filesystem::create_hard_link(path, link);
				return link.string();
			}
			break;
		default:
			break;
		}
		return path.string();
	}

	std::string ChooseTarget(Throw const& inThrow, bool inIsBundle)
	{
		if (inThrow.mKind == Throw::Kind::kSound)
		{
			return inIsBundle ? "edit.otiod/media/a.wav" : "media/a.wav";
		}
		std::vector<std::string> targets = {"edit.otio", "edit.otiod/content.otio",
			"edit.otiod/" + MakeName(".new"), "edit.otiod/media/a.wav", "edit.otiod/media/gone.wav"};
		if (!inIsBundle)
		{
			targets.insert(targets.end(), {"media/a.wav", "media/b.wav", "media/film.mov", "media/gone.wav",
											  "media/Gone.WAV", "media/film.wav"});
		}
		return targets[Pick(targets.size())];
	}

	static bool IsRead(std::string const& inTarget, bool inIsBundle)
	{
		return inTarget.starts_with("edit.otiod/") == inIsBundle;
	}

	// A place where nobody is in the way: a new one, or one whose name differs in case alone.
	std::string ChooseFreePlace(char const* inEnding)
	{
		return Pick(4) == 0 ? GetPath("media/" + std::string(Pick(2) == 0 ? "A.WAV" : "New.wav"))
							: Disguise("out/" + MakeName(inEnding));
	}

	Throw MakeThrow()
	{
		Throw thrown;
		thrown.mKind = static_cast<Throw::Kind>(Pick(4));
		bool const isSound = thrown.mKind == Throw::Kind::kSound;
		bool const isBundle = Pick(2) == 0;
		thrown.mInput = isSound    ? GetPath(ChooseTarget(thrown, isBundle))
						: isBundle ? GetPath("edit.otiod")
								   : Disguise("edit.otio");
		// A link of another name is no timeline by its name.
		thrown.mInput =
			isSound || isBundle || thrown.mInput.ends_with(".otio") ? thrown.mInput : GetPath("edit.otio");
		bool const isStems = thrown.mKind == Throw::Kind::kStems;
		bool const attacksOutput = Pick(2) == 0;
		thrown.mIsAttack = attacksOutput;
		std::string const target = ChooseTarget(thrown, isBundle);
		thrown.mOutput = !attacksOutput
							 ? (isStems ? GetPath("out/" + MakeName("") + "/stems") : ChooseFreePlace(".wav"))
						 : isStems ? GetPath("edit.otiod/" + std::string(Pick(2) == 0 ? "media" : "stems"))
								   : Disguise(target, IsRead(target, isBundle));
		if (isStems || thrown.mKind == Throw::Kind::kMix)
		{
			bool const attacksReport = Pick(2) == 0;
			thrown.mIsAttack = thrown.mIsAttack || attacksReport;
			std::string const reportTarget = ChooseTarget(thrown, isBundle);
			thrown.mReport = !attacksReport ? GetPath("out/" + MakeName(".json"))
							 : Pick(3) == 0 ? thrown.mOutput + (isStems ? "/01 A1.wav" : "")
											: Disguise(reportTarget, IsRead(reportTarget, isBundle));
		}
		return thrown;
	}

	// With the jobs of the library. Throws a HostError.
	static void RunJob(Throw const& inThrow)
	{
		if (inThrow.mKind == Throw::Kind::kSound)
		{
			ClipRenderRequest request;
			request.mInputs.push_back({.mPath = inThrow.mInput});
			request.mOutput = inThrow.mOutput;
			ClipRenderJob(request).Run();
			return;
		}
		if (inThrow.mKind == Throw::Kind::kPicture)
		{
			TimelineWaveformRequest request;
			request.mInput = inThrow.mInput;
			request.mOutput = inThrow.mOutput;
			request.mWidth = 10;
			TimelineWaveformJob(request).Run();
			return;
		}
		Otio::TimelineRenderRequest request;
		request.mInput = inThrow.mInput;
		request.mOutput = inThrow.mOutput;
		request.mStems = inThrow.mKind == Throw::Kind::kStems ? Otio::Stems::kTracks : Otio::Stems::kNone;
		request.mOtherOutputs = {inThrow.mReport};
		Otio::TimelineRenderJob(request).Run();
		OutputFile(inThrow.mReport).Commit();
	}

	// Whether it was done.
	static bool RunByJob(Throw const& inThrow)
	{
		try
		{
			RunJob(inThrow);
			return true;
		}
		catch (HostError const&)
		{
			return false;
		}
	}

	void ThrowMany(int inCount)
	{
		unsigned const seed = std::random_device()();
		SCOPED_TRACE("seed " + std::to_string(seed));
		mRandom.seed(seed);
		for (int i = 0; i < inCount && !HasFailure(); ++i)
		{
			Throw const thrown = MakeThrow();
			SCOPED_TRACE(testing::PrintToString(thrown));
			std::set<std::string> const before = ListAll();
			bool const isDone = RunByJob(thrown);
			EXPECT_EQ(isDone, !thrown.mIsAttack);
			EXPECT_EQ(ReadNeeded(), mBefore);
			std::set<std::string> const after = ListAll();
			EXPECT_TRUE(isDone || after == before);
			EXPECT_TRUE(std::none_of(after.begin(), after.end(),
				[](std::string const& inName) { return inName.find(".sonaro-") != std::string::npos; }));
		}
	}

	TemporaryFolder mFolder;
	std::map<std::string, std::string> mBefore;
	std::mt19937 mRandom;
	int mNames = 0;
};

TEST_F(OutputSafetyTest, RandomOutputsOfJobsLeaveWhatIsNeededAsItIs)
{
	ThrowMany(300);
}

} // namespace SonaroHost::Testing::OutputSafetyTest
