#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Media/MediaFinder.h"
#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Otio/Note.h"
#include "SonaroHost/Sequence/FileMedia.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace SonaroHost::Otio
{

// What a clip is cut from, if from anything.
struct ClipMedia
{
	// Null for silence.
	std::shared_ptr<Sequence::Media const> mMedia;
	std::filesystem::path mPath;
	// Where FileMedia has it.
	FileMedia::Key mFile;
	// How the noise of the file is reduced.
	std::optional<Denoise> mDenoise;
	// When the media begin by their own file, in seconds; nothing where that does not say so.
	std::optional<Ratio> mStart;
	// The start for people, as the file has it.
	std::string mStartText;
	// Channels of the media, counted from 0; empty for all.
	std::vector<unsigned> mChannels;
	// Of these channels; empty for silence.
	SN::AudioChannelLayout mLayout;
	// Why it is silent, and whether against the timeline's will.
	std::string mWhySilent;
	bool mIsMissing = false;
};

// Looks up the media of clips, each once, and takes notes of what it finds.
class ClipMediaTable
{
public:
	// All outlive this object.
	ClipMediaTable(MediaFinder const& inFinder, FileMedia& ioFiles, std::vector<Note>& ioNotes)
		: mFinder(inFinder),
		  mFiles(ioFiles),
		  mNotes(ioNotes)
	{
	}

	// Before the first of so many clips, which is faster.
	void Reserve(std::size_t inClips) { mClips.reserve(inClips); }

	// Valid as long as this object.
	ClipMedia const& Get(Clip const& inClip);

	// The recording that is made of a clip's media by stretching them. inUsed: what the clip plays of it.
	std::shared_ptr<Sequence::Media const> GetStretched(
		ClipMedia const& inMedia, Stretch const& inStretch, UsedRegions::Span const& inUsed)
	{
		return mFiles.GetStretched(inMedia.mFile, inMedia.mDenoise, inStretch, inUsed);
	}

private:
	// A URL's file, and what is cut from it; null where it is missing.
	struct File
	{
		FoundMedia mFound;
		// Which of a movie's audio streams is read; 0 for all.
		unsigned mStream = 0;
		std::shared_ptr<Sequence::Media const> mMedia;
		// Null without media.
		AudioFileInfo const* mInfo = nullptr;
		// Whether it is a movie that has no sound.
		bool mIsSilent = false;
		// What clips have of it that want nothing else: it is the same for very many.
		std::shared_ptr<ClipMedia const> mWhole;
	};

	std::shared_ptr<ClipMedia const> Resolve(Clip const& inClip);
	// Puts the file without its noise in the place of the file.
	void ReduceNoise(Clip const& inClip, ClipMedia& ioMedia);
	void ChooseChannels(Clip const& inClip, ClipMedia& ioMedia);
	std::shared_ptr<ClipMedia const> ResolveFile(Clip const& inClip, MediaReference const& inReference);

	File Open(std::string const& inUrl, unsigned inStream);
	// Where the file is a movie, in whose place a sound file may lie.
	void TakeSound(std::string const& inUrl, File& ioFile);
	// Sets why the file cannot be read where that fails.
	void Read(File& ioFile);
	static ClipMedia TakeWhole(File const& inFile);
	// What the file says of itself becomes notes.
	void TellOfFile(File const& inFile, std::string const& inPlace);

	MediaFinder const& mFinder;
	FileMedia& mFiles;
	std::vector<Note>& mNotes;
	std::unordered_map<Clip const*, std::shared_ptr<ClipMedia const>> mClips;
	// By their URLs and streams.
	std::map<std::string, std::map<unsigned, File>> mOpened;
};

} // namespace SonaroHost::Otio
