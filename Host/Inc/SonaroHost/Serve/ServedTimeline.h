#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Files/FileState.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Serve/MixFile.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost::Serve
{

class GraphPool;

// What is served, and how.
struct ServeRequest
{
	// The timeline: an .otio, .otioz or .otiod file.
	std::filesystem::path mInput;
	// The JSON of one in memory; see TimelineInput.
	std::shared_ptr<std::string const> mText;
	std::vector<std::filesystem::path> mMediaFolders;
	Otio::TimelineOptions mOptions;
	// Of WAV; FLAC has 24 bits where this has floats.
	OutputFormat mFormat;
	// How many graphs render at once. Each opens all media.
	unsigned mMostGraphs = 2;
	// See MixFile.
	double mWarmUpSeconds = 2.0;
	// The program's, which is part of tags: another one may render otherwise.
	std::string mVersion;
};

// Which of the outermost tracks are heard, by their numbers in the timeline, from 1 on.
struct TrackChoice
{
	auto operator<=>(TrackChoice const&) const = default;

	// Numbers of tracks that are silent.
	std::set<unsigned> mMuted;
	// Where there are any, all others are silent.
	std::set<unsigned> mSoloed;
};

// A timeline as it was when it was opened, of which files can be read at any place.
//
// Lifetime Files and streams may outlive it.
// Threads  Any.
class ServedTimeline
{
public:
	// Throws a HostError.
	explicit ServedTimeline(ServeRequest inRequest);
	~ServedTimeline();
	ServedTimeline(ServedTimeline const&) = delete;
	ServedTimeline& operator=(ServedTimeline const&) = delete;

	ServeRequest const& GetRequest() const { return mRequest; }
	Otio::TimelineSequence const& GetSequence() const;
	Otio::Timeline const& GetTimeline() const;
	// Notes of reading and laying out.
	std::vector<Otio::Note> const& GetNotes() const { return mNotes; }
	// The rows of the outermost tracks, in the order of their numbers. They live as long as this.
	std::vector<Otio::TrackRow const*> const& GetTracks() const { return mTracks; }
	// Letters and digits that differ for any other state of the timeline and its media.
	std::string const& GetTag() const { return mTag; }
	// Whether the timeline and its media are still what they were.
	bool IsCurrent() const;
	// Why something of it could not be rendered, such as an effect that crashed; empty while all could.
	std::string GetProblem() const;

	// Throws a HostError of kind kRequest for a track that does not exist, and those of MixFile.
	std::shared_ptr<MixFile const> OpenWave(
		TrackChoice const& inChoice, MixFile::Clock::time_point inDeadline);
	// The range, at most to the end. Throws the same, and one for a layout that FLAC cannot hold.
	std::unique_ptr<MixStream> OpenFlac(TrackChoice const& inChoice, ProgrammeRange const& inRange);

	// The samples of the range, some at a time. Throws the same.
	void Hear(TrackChoice const& inChoice, ProgrammeRange const& inRange,
		MixFile::Clock::time_point inDeadline,
		std::function<void(dsp::AudioBuffer const& inBlock)> const& inSink);
	// Fills as many frames of each channel as the range has, in the order and with the gains of a WAV of floats; silence
	// where the range lies outside of the programme. inAfterBlock is called now and then. Throws the same, and whatever
	// inAfterBlock throws.
	void Read(TrackChoice const& inChoice, ProgrammeRange const& inRange,
		MixFile::Clock::time_point inDeadline, std::span<float* const> outChannels,
		std::function<void()> const& inAfterBlock = {});

private:
	// The timeline with all that graphs need of it.
	struct Content;

	void ReadStates();
	std::set<std::string> ListLeftOut(TrackChoice const& inChoice) const;

	ServeRequest mRequest;
	// What was there before it was read, by its path; nothing for what was not.
	std::map<std::filesystem::path, std::optional<FileState>> mStates;
	std::shared_ptr<Content> mContent;
	std::shared_ptr<GraphPool> mPool;
	std::vector<Otio::Note> mNotes;
	std::vector<Otio::TrackRow const*> mTracks;
	std::string mTag;
	std::mutex mMutex;
	// Those that were asked for, some of them.
	std::map<TrackChoice, std::shared_ptr<MixFile const>> mFiles;
};

} // namespace SonaroHost::Serve
