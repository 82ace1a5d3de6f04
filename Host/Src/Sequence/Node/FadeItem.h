#pragma once

#include "ReadingNode.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioTrackRenderableItem.h"
#include "SonaroHost/Base/FadeShape.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace SonaroHost::Sequence
{

// A fade over some frames, from the one of its rise that comes first in a buffer, in steps of 1 or -1.
struct FadeRun
{
	FadeShape mShape = FadeShape::kLinear;
	std::int64_t mFrames = 0;
	std::int64_t mFirst = 0;
	std::int64_t mStep = 1;
};

// Scales each frame by its place in the fade, so that it is the same in any cut.
void ApplyFade(FadeRun const& inFade, dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING;

// What stands on a track where one item goes over into another one, or into silence. The gains are worked out for
// each frame by its place in the fade, so that they are the same in any cut; the engine's own transition carries a
// progress in single precision along each block.
class FadeItem final
	: public SN::Implements<FadeItem, ReadingNode, SN::IAudioTrackRenderableItem, SN::IAudioGeneratorPrivate>
{
public:
	struct Side
	{
		// Empty for silence.
		Generator mItem;
		// The track's frame at which the item's time begins.
		std::int64_t mItemStart = 0;
		FadeShape mShape = FadeShape::kLinear;
	};
	struct Settings
	{
		Side mOutgoing;
		Side mIncoming;
		// The track's frame at which the fade begins.
		std::int64_t mFirstFrame = 0;
		std::int64_t mFrames = 0;
		SN::AudioChannelLayout mLayout;
		SN::FrameRate mFrameRate;
		// A buffer of the layout's channels.
		std::shared_ptr<dsp::AudioBuffer> mScratch;
	};

	explicit FadeItem(Settings const& inSettings);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;

	void Init(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
		SN::TickTime const& inTrackItemStartTime, SN::FrameRate const& inFrameRate) override;
	SN::TickTime GetStartTime() SONARO_NONBLOCKING override { return mStart; }
	SN::TickTime GetEndTime() SONARO_NONBLOCKING override { return mEnd; }
	SN::TickTime GetTrackItemStartTime() SONARO_NONBLOCKING override { return mTrackItemStart; }

	unsigned GetNumChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mSettings.mLayout.size());
	}
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override { return GetNumChannels(); }
	SN::AudioChannelLayout GetAudioChannelLayout() override { return mSettings.mLayout; }
	SN::FrameRate GetGeneratorFrameRate() override { return mSettings.mFrameRate; }

	std::u16string GetNodeName() override { return u"FadeItem"; }

private:
	// Each side that is an item, with what its time is ahead of the fade's.
	template <class Use>
	void ForEachItem(Use const& inUse);
	SN::TickTime GetShift(Side const& inSide) const;
	// Reads a side and scales it, inFrame being the frame of the fade at the block's first sample.
	void Read(Side const& inSide, bool inIsIncoming, SN::TickTime const& inTime, bool inReverse,
		dsp::AudioBuffer& outBuffer);

	Settings mSettings;
	SN::TickTime mStart;
	SN::TickTime mEnd;
	SN::TickTime mTrackItemStart;
};

} // namespace SonaroHost::Sequence
