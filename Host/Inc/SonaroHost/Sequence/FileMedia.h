#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Media/GraphMedia.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SonaroHost/Media/Stretch.h"
#include "SonaroHost/Media/UsedRegions.h"
#include "SonaroHost/Offline/Denoise.h"
#include "SonaroHost/Sequence/Media.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace SonaroHost
{

// Sound files and movies as media of sequences. Each file is one media, whatever the number of clips
// that are cut from it, and each graph opens it once. So is each audio stream of a movie that is read alone.
//
// Errors   A source gives silence where its file cannot be decoded: whoever renders asks FindFailure after each block.
// Threads  Get, OpenForGraph and making graphs: one at a time. FindFailure: the one that made the graphs.
class FileMedia final : public GraphMedia
{
public:
	// A path, and which stream is read.
	using Key = std::pair<std::filesystem::path, unsigned>;

	FileMedia();

	// Looks into the file when it is new. Throws a HostError, the same every time, when it cannot be read.
	// inShownPath: what people call it, as messages do. inStream: see InspectAudioFile.
	std::shared_ptr<Sequence::Media const> Get(
		std::filesystem::path const& inPath, std::filesystem::path const& inShownPath, unsigned inStream = 0);

	// A file that Get has given, its noise reduced; what is learned of it is shared. Throws a HostError for what cannot be
	// learned from, the file called by its path for people.
	std::shared_ptr<Sequence::Media const> GetDenoised(Key const& inFile, Denoise const& inDenoise);

	// A recording that is made by stretching a file which Get or GetDenoised has given: from the file's first frame on, or along a ramp from
	// Stretch::mStart on. What is used of it is decoded in regions, each by itself. inUsed: what a clip plays of it, before any graph is made.
	// inDenoise: as it was given to GetDenoised; nothing for a file as it is.
	std::shared_ptr<Sequence::Media const> GetStretched(Key const& inFile,
		std::optional<Denoise> const& inDenoise, Stretch const& inStretch, UsedRegions::Span const& inUsed);

	// What the file is, by the path that people call it; null for one that is not there or cannot be read.
	// inStream: as it was given to Get; nothing for the lowest.
	AudioFileInfo const* FindInfo(std::filesystem::path const& inShownPath,
		std::optional<unsigned> const& inStream = std::nullopt) const;

	// Of the sources that graphs have opened and still hold.
	std::optional<HostError> FindFailure() const override;

	// Graphs that are made from now on, until this is called again or the result is gone, read media of their own, beside
	// others of such graphs, with which they share what can only be decoded from the start. FindFailure does not know these.
	// This outlives the result.
	std::unique_ptr<GraphMedia> OpenForGraph() const;

	// Of the media that GetDenoised has given.
	std::int64_t CountFramesToLearn() const override;
	bool LearnNoise(
		std::function<void(std::int64_t)> const& inReport, std::stop_token const& inStop) const override;
	std::vector<LearnedNoise> ListLearnedNoise() const override;

	// The files in which damage was found until now, in the order of their paths.
	std::vector<DamagedMedia> ListDamaged() const override;

private:
	// A recording, and its media by the frame of which they were asked for first.
	struct Recording
	{
		std::shared_ptr<UsedRegions> mUsed;
		std::map<std::int64_t, std::shared_ptr<Sequence::Media const>> mMedia;
	};

	struct DenoisedFile
	{
		std::shared_ptr<Sequence::Media const> mMedia;
		AudioFileInfo mInfo;
	};

	struct File
	{
		std::map<Denoise, DenoisedFile> mDenoised;
		std::map<std::pair<std::optional<Denoise>, Stretch>, Recording> mStretched;
		std::shared_ptr<Sequence::Media const> mMedia;
		// Its path is the one for people.
		AudioFileInfo mInfo;
		// Whether it is a movie without sound.
		bool mIsSilent = false;
		// Why there are no media.
		std::optional<HostError> mError;
	};
	class OpenSources;
	class GroupedMedia;

	std::shared_ptr<Sequence::Media const> MakeMedia(AudioFileInfo const& inInfo, bool inIsDenoised) const;
	std::vector<AudioFileInfo const*> ListDenoised() const;
	std::vector<DamagedMedia> ListDamaged(
		std::function<std::vector<MediaDamage::Stretch>(AudioFileInfo const&)> const& inFind) const;
	HostError NameAsShown(HostError const& inError) const;
	// What people call a file; of others the path itself.
	std::filesystem::path const& GetShownPath(std::filesystem::path const& inPath) const;

	std::map<Key, File> mFiles;
	// Files by the path for people.
	std::map<Key, File const*> mShownFiles;
	// Shared with the media, which outlive this where a graph does.
	std::shared_ptr<OpenSources> mSources;
};

} // namespace SonaroHost
