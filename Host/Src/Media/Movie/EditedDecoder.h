#pragma once

#include "Container/QuickTimeTracks.h"
#include "Media/SoundDecoder.h"
#include "MovieIndex.h"
#include "SonaroHost/Media/MediaDamage.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace SonaroHost
{

class MovieDecoder;

// The streams of a movie through edit lists of several segments, which may lie in any order and repeat. What lies
// between segments, and what a segment has beyond the end of its media, is silence. A segment that lies before the last
// one, of media that cannot be entered anywhere, is decoded from the start of the media on.
class EditedDecoder final : public SoundDecoder
{
public:
	// Throws a HostError when the file cannot be opened any more.
	EditedDecoder(std::filesystem::path inPath, std::shared_ptr<MovieIndex const> inIndex,
		std::shared_ptr<MediaDamage> inDamage);
	~EditedDecoder() override;

	unsigned GetNumChannels() const noexcept override { return mIndex->mChannels; }
	bool IsSeekExact() const noexcept override;
	std::int64_t GetPosition() const noexcept override { return mPosition; }
	std::int64_t Read(float* outSamples, std::int64_t inFrames) override;
	bool SeekTo(std::int64_t inFrame) override;

private:
	// One stream.
	struct Lane;

	void ReadLane(Lane& ioLane, float* outSamples, std::int64_t inFrames);
	// Decodes on to a frame of the media, or enters it there.
	void GoTo(MovieDecoder& ioDecoder, std::int64_t inMedia);
	// A part of the media, silence beyond its end, a frame at every mChannels samples.
	void ReadMedia(Lane& ioLane, std::int64_t inMedia, float* outSamples, std::int64_t inFrames);

	std::filesystem::path mPath;
	std::shared_ptr<MovieIndex const> mIndex;
	std::shared_ptr<MediaDamage> mDamage;
	std::vector<Lane> mLanes;
	std::vector<float> mSamples;
	std::int64_t mPosition = 0;
};

// Adds what is damaged of a stream's media where an edit list presents it between two frames.
void AddEditedDamage(
	MovieIndex::Edited const& inEdited, std::int64_t inFirst, std::int64_t inEnd, MediaDamage& ioDamage);

// Whether the edits of a track are more than one part of its media after an empty time. libavformat presents whole
// packets at the joints of such.
bool HasSeveralSegments(QuickTimeTrack const& inTrack);

// What is presented of a track's media. Segments begin and end at the samples nearest to their times. Throws a
// std::runtime_error for edits that change the speed.
std::vector<MovieIndex::Segment> MakeSegments(
	QuickTimeTrack const& inTrack, int inSampleRate, std::int64_t inMediaFrames);

} // namespace SonaroHost
