#include "EditedDecoder.h"

#include "MovieDecoder.h"
#include "Packet/Libav.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kPlainRate = 0x10000;

// Longer than any movie; sums of two such positions do not overflow.
constexpr std::int64_t kLastPosition = std::int64_t{1} << 56;

} // namespace

struct EditedDecoder::Lane
{
	MovieIndex::Edited const* mEdited = nullptr;
	std::unique_ptr<MovieDecoder> mDecoder;
};

EditedDecoder::EditedDecoder(std::filesystem::path inPath, std::shared_ptr<MovieIndex const> inIndex,
	std::shared_ptr<MediaDamage> inDamage)
	: mPath(std::move(inPath)),
	  mIndex(std::move(inIndex)),
	  mDamage(std::move(inDamage))
{
	for (MovieIndex::Edited const& edited : mIndex->mEdited)
	{
		mLanes.push_back({&edited, std::make_unique<MovieDecoder>(mPath, edited.mMedia, edited.mDamage)});
	}
}

EditedDecoder::~EditedDecoder() = default;

bool EditedDecoder::IsSeekExact() const noexcept
{
	return std::ranges::all_of(mLanes, [](Lane const& inLane) { return inLane.mDecoder->IsSeekExact(); });
}

std::int64_t EditedDecoder::Read(float* outSamples, std::int64_t inFrames)
{
	std::int64_t const count = std::clamp<std::int64_t>(mIndex->mFrames - mPosition, 0, inFrames);
	std::fill_n(outSamples, static_cast<std::size_t>(count) * mIndex->mChannels, 0.0f);
	for (Lane& lane : mLanes)
	{
		ReadLane(lane, outSamples + lane.mEdited->mFirstChannel, count);
		AddEditedDamage(*lane.mEdited, mPosition, mPosition + count, *mDamage);
	}
	mPosition += count;
	return count;
}

void EditedDecoder::ReadLane(Lane& ioLane, float* outSamples, std::int64_t inFrames)
{
	std::int64_t const end = mPosition + inFrames;
	auto const& segments = ioLane.mEdited->mSegments;
	auto segment = std::ranges::partition_point(
		segments, [this](MovieIndex::Segment const& inSegment) { return inSegment.mEnd <= mPosition; });
	for (; segment != segments.end() && segment->mFirst < end; ++segment)
	{
		std::int64_t const first = std::max(mPosition, segment->mFirst);
		std::int64_t const frames = std::min(end, segment->mEnd) - first;
		ReadMedia(ioLane, segment->mMedia + first - segment->mFirst,
			outSamples + static_cast<std::size_t>(first - mPosition) * mIndex->mChannels, frames);
	}
}

void EditedDecoder::ReadMedia(Lane& ioLane, std::int64_t inMedia, float* outSamples, std::int64_t inFrames)
{
	MovieIndex const& media = *ioLane.mEdited->mMedia;
	std::int64_t const wanted = std::clamp<std::int64_t>(media.mFrames - inMedia, 0, inFrames);
	if (wanted == 0)
	{
		return;
	}
	mSamples.resize(static_cast<std::size_t>(wanted) * media.mChannels);
	GoTo(*ioLane.mDecoder, inMedia);
	std::int64_t const count = ioLane.mDecoder->Read(mSamples.data(), wanted);
	float const* in = mSamples.data();
	for (std::int64_t frame = 0; frame < count; ++frame, in += media.mChannels)
	{
		std::copy_n(in, media.mChannels, outSamples + static_cast<std::size_t>(frame) * mIndex->mChannels);
	}
}

void EditedDecoder::GoTo(MovieDecoder& ioDecoder, std::int64_t inMedia)
{
	if (ioDecoder.IsSeekExact() || inMedia < ioDecoder.GetPosition())
	{
		ioDecoder.SeekTo(inMedia);
		return;
	}
	std::int64_t const step = static_cast<std::int64_t>(mSamples.size()) / ioDecoder.GetNumChannels();
	while (ioDecoder.GetPosition() < inMedia)
	{
		ioDecoder.Read(mSamples.data(), std::min(step, inMedia - ioDecoder.GetPosition()));
	}
}

bool EditedDecoder::SeekTo(std::int64_t inFrame)
{
	mPosition = inFrame;
	return true;
}

void AddEditedDamage(
	MovieIndex::Edited const& inEdited, std::int64_t inFirst, std::int64_t inEnd, MediaDamage& ioDamage)
{
	for (MediaDamage::Stretch const& stretch : inEdited.mDamage->Get())
	{
		for (MovieIndex::Segment const& segment : inEdited.mSegments)
		{
			std::int64_t const shift = segment.mFirst - segment.mMedia;
			ioDamage.Add({std::max({stretch.mFirst + shift, segment.mFirst, inFirst}),
				std::min({stretch.mEnd + shift, segment.mEnd, inEnd})});
		}
	}
}

bool HasSeveralSegments(QuickTimeTrack const& inTrack)
{
	auto const& edits = inTrack.mEdits;
	auto const first = std::ranges::find_if(
		edits, [](QuickTimeTrack::Edit const& inEdit) { return inEdit.mMediaTime >= 0; });
	return edits.end() - first > 1 && inTrack.mMovieClock > 0 && inTrack.mTrackClock > 0;
}

std::vector<MovieIndex::Segment> MakeSegments(
	QuickTimeTrack const& inTrack, int inSampleRate, std::int64_t inMediaFrames)
{
	std::vector<MovieIndex::Segment> segments;
	std::int64_t time = 0;
	std::int64_t position = 0;
	for (QuickTimeTrack::Edit const& edit : inTrack.mEdits)
	{
		time = av_sat_add64(time, edit.mDuration);
		std::int64_t const first = position;
		position = std::clamp<std::int64_t>(
			Libav().av_rescale(time, inSampleRate, inTrack.mMovieClock), first, kLastPosition);
		if (edit.mMediaTime < 0)
		{
			continue;
		}
		if (edit.mRate != kPlainRate)
		{
			throw std::runtime_error("its edit list changes the speed, which is not supported");
		}
		std::int64_t const media = std::clamp<std::int64_t>(
			Libav().av_rescale(edit.mMediaTime, inSampleRate, inTrack.mTrackClock), 0, kLastPosition);
		// Without a length, the last one goes on to the end of the media.
		bool const isOpen = edit.mDuration == 0 && &edit == &inTrack.mEdits.back();
		position = isOpen ? first + std::max<std::int64_t>(inMediaFrames - media, 0) : position;
		if (position > first)
		{
			segments.push_back({first, position, media});
		}
	}
	return segments;
}

} // namespace SonaroHost
