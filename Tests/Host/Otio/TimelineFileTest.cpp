#include "SonaroHost/Otio/TimelineFile.h"
#include "Host/Media.h"
#include "Host/Refusal.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/MediaFinder.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/OtioSequence/TimelineMaker.h"
#include "SonaroHost/Sequence/FileMedia.h"
#include "Vexilon/BinaryData.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zip.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost::Otio::TimelineFileTest
{

namespace
{

using std::filesystem::path;
using testing::HasSubstr;
using namespace SonaroHost::Testing;

path const kConformance = path(SONARO_CONFORMANCE) / "otio";

void WriteFile(path const& inPath, std::string const& inBytes)
{
	std::filesystem::create_directories(inPath.parent_path());
	WriteBytes(inPath, inBytes);
}

using Entries = std::vector<std::pair<std::string, std::string>>;

void WriteZip(path const& inPath, Entries const& inEntries)
{
	zip_t* const archive = zip_open(inPath.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
	for (auto const& [name, bytes] : inEntries)
	{
		zip_source_t* const source = zip_source_buffer(archive, bytes.data(), bytes.size(), 0);
		ASSERT_GE(zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8), 0);
	}
	ASSERT_EQ(zip_close(archive), 0);
}

std::string GetRefusal(path const& inPath)
{
	return GetRefusalOf([&] { TimelineFile const file(inPath); });
}

// How media that were found are reported.
enum class Reported
{
	kSilently,
	kAsElsewhere,
	kAsGuess,
};

class OtioFiles : public testing::Test
{
protected:
	OtioFiles()
	{
		std::filesystem::create_directories(mFolder / "temporary");
		setenv("TMPDIR", (mFolder / "temporary").c_str(), 1);
	}
	~OtioFiles() override { unsetenv("TMPDIR"); }

	bool IsTemporaryEmpty() const { return std::filesystem::is_empty(mFolder / "temporary"); }

	// Where a URL or a path leads; empty for nowhere.
	void ExpectFound(MediaFinder const& inFinder, std::string const& inUrl, std::string const& inFile,
		Reported inReported) const
	{
		SCOPED_TRACE(inUrl);
		FoundMedia const found = inFinder.Find(inUrl);
		EXPECT_EQ(found.IsFound(), !inFile.empty()) << found.mPath << found.mWhyMissing;
		EXPECT_EQ(found.mRemark.empty(), inReported == Reported::kSilently);
		EXPECT_EQ(found.mIsGuess, inReported == Reported::kAsGuess);
		if (found.IsFound() && !inFile.empty())
		{
			EXPECT_TRUE(std::filesystem::equivalent(found.mPath, mFolder / inFile)) << found.mPath;
		}
	}

	SonaroHost::Testing::TemporaryFolder const mFolder;
};

TEST_F(OtioFiles, UrlsAndPathsLeadToTheirFiles)
{
	for (char const* const name :
		{"edit/media/a b.wav", "edit/media/100%25.wav", "edit/media/100%.wav", "edit/x:y.wav", "out/äö.wav",
			"extra/Audio/deep.wav", "extra/flat.wav", "more/flat.wav", "extra/#1.wav",
			// Composed, and decomposed beside another case.
			"extra/\u00dcber.wav", "extra/e\u0301t\u00e9.wav", "extra/\u00c9t\u00e9.wav"})
	{
		WriteFile(mFolder / name, "x");
	}
	std::string const root = mFolder.Get().string();
	struct Case
	{
		std::string mUrl;
		// Empty for missing.
		std::string mFile;
		Reported mReported = Reported::kSilently;
	};
	auto const eElsewhere = Reported::kAsElsewhere;
	auto const eGuess = Reported::kAsGuess;
	Case const cases[] = {
		{"media/a b.wav", "edit/media/a b.wav"},
		{"media/a%20b.wav", "edit/media/a b.wav"},
		{"./media/../media/a%20b.wav", "edit/media/a b.wav"},
		{"media\\a b.wav", "edit/media/a b.wav"},
		// As it stands before it is decoded; and only what is two digits is decoded.
		{"media/100%25.wav", "edit/media/100%25.wav"},
		{"media/100%.wav", "edit/media/100%.wav"},
		{"file:media/100%25.wav", "edit/media/100%.wav"},
		{"x:y.wav", "edit/x:y.wav"},
		{"../out/%C3%A4%c3%b6.wav", "out/äö.wav"},
		{root + "/out/äö.wav", "out/äö.wav"},
		{"file://" + root + "/edit/media/a%20b.wav", "edit/media/a b.wav"},
		{"file://" + root + "/edit/media/a b.wav", "edit/media/a b.wav"},
		{"file://localhost" + root + "/edit/media/a%20b.wav", "edit/media/a b.wav"},
		{"FILE:" + root + "/edit/media/a%20b.wav", "edit/media/a b.wav"},
		// Ever shorter ends in the media folders, the first folder first.
		{"/Volumes/Disk/Project/Audio/deep.wav", "extra/Audio/deep.wav", eElsewhere},
		{"file:///C:/Project/Audio/deep.wav", "extra/Audio/deep.wav", eElsewhere},
		{"file:///C%3A/Project/Audio/deep.wav", "extra/Audio/deep.wav", eElsewhere},
		{"C:\\Project\\Audio\\deep.wav", "extra/Audio/deep.wav", eElsewhere},
		{"\\\\server\\share\\flat.wav", "extra/flat.wav", eElsewhere},
		{"file://server/share/flat.wav", "extra/flat.wav", eElsewhere},
		{"../../flat.wav", "extra/flat.wav", eElsewhere},
		{"deep.wav", ""},
		{"media", ""},
		{"", ""},
		{"%00", ""},
		// Addresses of other schemes likewise.
		{"s3://bucket/Audio/deep.wav", "extra/Audio/deep.wav", eElsewhere},
		{"s3://bucket/%231.wav", "extra/#1.wav", eElsewhere},
		{"s3://bucket/#1.wav", "extra/#1.wav", eElsewhere},
		{"https://example.org/flat.wav?key=a%2Fb#c", "extra/flat.wav", eElsewhere},
		{"s3://bucket/none.wav", ""},
		{"https://", ""},
		// Another case and another form of Unicode, in place and in the media folders; what is nearer goes first.
		{"Media/A B.WAV", "edit/media/a b.wav", eGuess},
		{"FLAT.wav", "extra/flat.wav", eGuess},
		{"s3://bucket/AUDIO/Deep.wav", "extra/Audio/deep.wav", eGuess},
		{"U\u0308ber.wav", "extra/\u00dcber.wav", eGuess},
		{"u\u0308BER.wav", "extra/\u00dcber.wav", eGuess},
		{"\u00e9t\u00e9.wav", "extra/e\u0301t\u00e9.wav", eGuess},
		{"\xff.wav", ""},
		{"other.otioz", ""},
	};
	MediaFinder const finder(mFolder / "edit", {mFolder / "extra", mFolder / "more"});
	for (Case const& test : cases)
	{
		ExpectFound(finder, test.mUrl, test.mFile, test.mReported);
	}
}

TEST_F(OtioFiles, WhereMediaWereLookedForIsKnown)
{
	std::filesystem::create_directories(mFolder / "extra");
	MediaFinder const finder(mFolder.Get(), {mFolder / "extra"});
	FoundMedia const found = finder.Find("Audio/none.wav");
	EXPECT_EQ(found.mLookedFor, (std::vector<path>{mFolder / "Audio/none.wav",
									mFolder / "extra/Audio/none.wav", mFolder / "extra/none.wav"}));
	WriteFile(mFolder / "file", "x");
	for (char const* const name : {"none", "file"})
	{
		EXPECT_THROW(MediaFinder(mFolder.Get(), {mFolder / "extra", mFolder / name}), HostError) << name;
	}
}

TEST_F(OtioFiles, OfMoviesTheSoundBesideThemOrInMediaFoldersIsTaken)
{
	std::string const movie("\0\0\0\x14"
							"ftypqt  ",
		12);
	std::string const soundAlone("\0\0\0\x14"
								 "ftypM4A ",
		12);
	std::string const matroska = "\x1a\x45\xdf\xa3";
	std::string const sound = ReadBytes(kConformance / "media/a.wav");
	std::filesystem::create_directories(mFolder / "extra");
	for (auto const& [name, bytes] :
		Entries{{"alone.mov", movie}, {"content", movie}, {"song.m4a", soundAlone}, {"noise.wav", "noise"},
			{"beside.MKV", matroska}, {"beside.wav", sound}, {"film.mxf", "?"}, {"extra/film.WAV", sound},
			{"extra/gone.wav", sound}, {"broken.mp4", movie}, {"broken.wav", "?"}, {"honest.mov", sound}})
	{
		WriteFile(mFolder / name, bytes);
	}
	struct Case
	{
		std::string mUrl;
		// Empty for missing.
		std::string mFile;
		std::string mNote;
	};
	bool const readsMovies = !DescribeMovieLibraries().empty();
	std::string const isMovie =
		readsMovies ? "is truncated or damaged" : "is a movie, and this program was built without";
	std::string const isUnknown = readsMovies ? isMovie : "cannot be read as sound: ";
	Case const cases[] = {
		{"alone.mov", "", isMovie},
		{"content", "", isMovie},
		{"broken.mp4", "", isMovie},
		{"missing.mov", "", "does not exist; the clip is silent"},
		{"missing.wav", "", "does not exist; the clip is silent"},
		{"song.m4a", "", isUnknown},
		{"noise.wav", "", "cannot be read as sound: "},
		{"beside.MKV", "beside.wav", "; using '"},
		{"file:///C:/Cut/film.mxf", "extra/film.WAV", "; using '"},
		{"s3://bucket/gone.mov", "extra/gone.wav", "; using '"},
		// What can be read is no movie, whatever its name.
		{"honest.mov", "honest.mov", ""},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mUrl);
		TimelineFile const file(kConformance / "cases/source-range.otio");
		Timeline timeline = file.GetDocument().mTimelines.front();
		auto& track = std::get<Track>(timeline.mTracks.mChildren.front().mValue);
		std::get<Clip>(track.mChildren.front().mValue).mMediaReferences.front().mTargetUrl = test.mUrl;
		FileMedia media;
		TimelineSequence const sequence =
			MakeTimelineSequence(timeline, MediaFinder(mFolder.Get(), {mFolder / "extra"}), media);
		EXPECT_EQ(sequence.mMissing.empty(), !test.mFile.empty());
		EXPECT_EQ(HasGuesses(sequence.mNotes), !test.mNote.empty());
		std::string const note = sequence.mNotes.empty() ? "" : sequence.mNotes.front().mText;
		EXPECT_THAT(note, HasSubstr(test.mNote));
		if (!test.mFile.empty())
		{
			EXPECT_TRUE(std::filesystem::equivalent(sequence.mClips.front().mMedia, mFolder / test.mFile));
		}
	}
}

TEST_F(OtioFiles, BundlesHoldTheirMediaAndLeaveNothingBehind)
{
	std::string content = ReadBytes(kConformance / "cases/source-range.otio");
	content.replace(content.find("../media"), 8, "media");
	std::string const sound = ReadBytes(kConformance / "media/a.wav");
	WriteFile(mFolder / "edit.otiod/content.otio", content);
	WriteFile(mFolder / "edit.otiod/media/a.wav", sound);
	WriteZip(mFolder / "edit.otioz",
		{{"version.txt", "1.0"}, {"content.otio", content}, {"media/", ""}, {"media/a.wav", sound}});
	for (char const* const name : {"edit.otiod", "edit.otioz"})
	{
		SCOPED_TRACE(name);
		TimelineInput input(mFolder / name);
		TimelineSequence const sequence = input.MakeSequence();
		EXPECT_TRUE(sequence.mMissing.empty());
		EXPECT_EQ(sequence.mFrames, 2000);
		ASSERT_EQ(sequence.mClips.size(), 1u);
		EXPECT_EQ(sequence.mClips[0].mFirstMediaSample, 1000);
		// And not by the place that they were unpacked to.
		EXPECT_EQ(sequence.mClips[0].mMedia, mFolder / name / "media/a.wav");
		ASSERT_TRUE(input.GetMedia().FindInfo(mFolder / name / "media/a.wav"));
	}
	WriteZip(mFolder / "edit.otioz", {{"content.otio", content}, {"media/a.wav", "no sound"}});
	{
		TimelineInput input(mFolder / "edit.otioz");
		TimelineSequence const sequence = input.MakeSequence();
		ASSERT_EQ(sequence.mMissing.size(), 1u);
		EXPECT_EQ(sequence.mMissing[0].mPath, mFolder / "edit.otioz/media/a.wav");
		ASSERT_FALSE(sequence.mNotes.empty());
		EXPECT_THAT(sequence.mNotes[0].mText, HasSubstr("edit.otioz/media/a.wav' cannot be read as sound"));
	}
	EXPECT_TRUE(IsTemporaryEmpty());
}

TEST_F(OtioFiles, WhatAKilledProcessUnpackedGoesWithTheNextBundleAndNothingElse)
{
	std::string const content = ReadBytes(kConformance / "cases/source-range.otio");
	WriteZip(mFolder / "edit.otioz", {{"content.otio", content}, {"media/a.wav", "no sound"}});
	path const temporary = mFolder / "temporary";
	for (char const* const name : {"sonaro-killed/media", "sonaro-notes", "other"})
	{
		std::filesystem::create_directories(temporary / name);
	}
	WriteFile(temporary / "sonaro-killed/in-use", "");
	WriteFile(temporary / "sonaro-killed/media/a.wav", "no sound");
	WriteFile(temporary / "other/in-use", "");
	TimelineFile const first(mFolder / "edit.otioz");
	TimelineFile const second(mFolder / "edit.otioz");
	EXPECT_FALSE(std::filesystem::exists(temporary / "sonaro-killed"));
	EXPECT_TRUE(std::filesystem::exists(temporary / "sonaro-notes"));
	EXPECT_TRUE(std::filesystem::exists(temporary / "other/in-use"));
	EXPECT_TRUE(std::filesystem::exists(first.GetFolder() / "media/a.wav"));
}

TEST_F(OtioFiles, BundlesThatAreNotToBeTrustedAreRefused)
{
	std::string const content = ReadBytes(kConformance / "cases/source-range.otio");
	std::pair<Entries, char const*> const cases[] = {
		{{{"content.otio", content}, {"../escaped.wav", "x"}}, "points outside the bundle"},
		{{{"content.otio", content}, {"media/../../escaped.wav", "x"}}, "points outside the bundle"},
		{{{"content.otio", content}, {"/escaped.wav", "x"}}, "points outside the bundle"},
		{{{"content.otio", content}, {"media/..\\..\\escaped.wav", "x"}}, "points outside the bundle"},
		{{{"content.otio", content}, {"media/a", "x"}, {"media/a/b", "x"}}, "conflicts with another"},
		{{{"content.otio", content}, {"media/a", "x"}, {"media/./a", "x"}}, "conflicts with another"},
		{{{"media/a.wav", "x"}}, "has no \"content.otio\""},
		{{{"content.otio", "{"}}, "line 1"},
	};
	for (auto const& [entries, reason] : cases)
	{
		SCOPED_TRACE(entries.back().first);
		WriteZip(mFolder / "edit.otioz", entries);
		std::string const refusal = GetRefusal(mFolder / "edit.otioz");
		EXPECT_THAT(refusal, HasSubstr("edit.otioz"));
		EXPECT_THAT(refusal, HasSubstr(reason));
		EXPECT_FALSE(std::filesystem::exists(mFolder / "escaped.wav"));
		EXPECT_FALSE(std::filesystem::exists(mFolder / "temporary/escaped.wav"));
	}
	EXPECT_TRUE(IsTemporaryEmpty());
}

TEST_F(OtioFiles, DamagedArchivesAreReadOrRefusedByName)
{
	path const archive = mFolder / "edit.otioz";
	WriteZip(archive, {{"content.otio", ReadBytes(kConformance / "cases/source-range.otio")},
						  {"media/a.wav", std::string(300, 'x')}});
	std::string const whole = ReadBytes(archive);
	std::size_t refused = 0;
	for (std::size_t i = 0; i < whole.size(); ++i)
	{
		std::string damaged = whole;
		damaged[i] = static_cast<char>(damaged[i] ^ 0xff);
		WriteFile(archive, i % 2 == 0 ? damaged : whole.substr(0, i));
		std::string const refusal = GetRefusal(archive);
		refused += refusal.empty() ? 0 : 1;
		EXPECT_TRUE(refusal.empty() || refusal.find("edit.otioz") != std::string::npos) << refusal;
	}
	EXPECT_GT(refused, whole.size() / 2);
	EXPECT_TRUE(IsTemporaryEmpty());
}

TEST_F(OtioFiles, SourcesCountByTheRateTheyAreGivenAndReportWhenTheyFail)
{
	path const file = mFolder / "a44.wav";
	std::string const whole = ReadBytes(kConformance / "media/a44.wav");
	WriteFile(file, whole);
	FileMedia media;
	auto const recording = media.Get(file, file);
	EXPECT_EQ(media.Get(file, file), recording);
	EXPECT_EQ(recording->mSampleRate, 44100.0);
	SN::FrameRate const rate = SN::FrameRate::FromSamplesPerSecond(48000);
	auto const source = recording->mOpen(rate);
	EXPECT_EQ(source->GetFrameRate(), rate);
	EXPECT_EQ(source->GetLength(), SN::TickTime(4410, rate));
	dsp::AudioBuffer buffer(1, 4);
	for (long long const frame : {0ll, 1000ll, 4406ll})
	{
		source->ReadAudio({}, buffer, SN::TickTime(frame, rate), false);
		EXPECT_EQ(buffer.GetChannel(0)[0], static_cast<float>(frame + 1) / 32768.0f);
	}
	EXPECT_EQ(media.FindFailure(), std::nullopt);

	auto const failing = recording->mOpen(rate);
	WriteFile(file, whole.substr(0, 1000));
	failing->ReadAudio({}, buffer, SN::TickTime(4000, rate), false);
	ASSERT_TRUE(media.FindFailure());
	EXPECT_THAT(std::string(media.FindFailure()->what()), HasSubstr("a44.wav"));
}

} // namespace

} // namespace SonaroHost::Otio::TimelineFileTest
