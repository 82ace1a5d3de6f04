#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// How an item reads its content.
struct ContentWindow
{
	// The content's frame that stands at the item's frame 0.
	std::int64_t mFirstFrame = 0;
	// Of the item, in frames of content.
	std::int64_t mFrames = 0;
	// Frame k of the item is the content's mFirstFrame - k instead of mFirstFrame + k.
	bool mIsBackwards = false;
	// What the item prerolls its source ahead by, and the frames of content that pass in one of the item's.
	SN::TickTime mPrerollLead;
	double mSpeed = 1.0;
	// How far ahead its tracks are asked at most, which it renders itself at a start forward; and so many
	// frames behind that it gives what it would have given from the beginning on.
	std::int64_t mAheadFrames = 0;
	std::int64_t mSettlingFrames = 0;
};

// A nested sequence, as the item around it reads it.
//
// Preroll  An item prerolls its source at its own start and offset, whatever its speed, and then begins to
//          read that offset earlier. The sequence is prerolled at what is read first indeed; without a
//          playback it settles there at once.
// Delay    A playback has the sequence filled for as long as it needs to settle.
// Jumps    Where it is read elsewhere than where the last block has ended, as when a playback comes round to
//          the start of its loop, it settles first: what it needs is rendered and thrown away. A playback
//          that fills the item begins outside of it, and so needs nothing more.
// Once     A sequence is reached in several ways: the group around it hands on to its tracks and to the mix of
//          them, which hands on to the tracks again, and a track to its items and to the transitions between
//          them. What starts, stops, fills or resets the sequence is handed on once, lest the ways multiply
//          with every level.
// Live     Its parameters are no live ones: what is nested does not change while it plays.
// Threads  As for the sequence. Nothing allocates after the constructor.
class NestedContent final : public SN::IAudioGenerator, public SN::IAudioRenderGraphNodeInfo
{
public:
	static constexpr SN::Identifier<NestedContent> kIdentifier{0x3c1f9be07a5d4e26ull, 0x91d7c04ab8e35f12ull};

	NestedContent(SN::InterfaceRef<SN::IAudioGenerator> const& inSequence,
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
		unsigned inChannels, ContentWindow const& inWindow);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	bool HasHistory() override;
	SN::TickTime GetDelay() override;
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) override;
	void Reset() override;
	void InitializeAudioFilters() override;
	void ShutdownAudioFilters() override;

	std::u16string GetNodeName() override { return u"NestedContent"; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override { return {mSequence}; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override { return {}; }

protected:
	void* QueryMap(SN::Guid const& inIdentifier) override;

private:
	// The lowest time, in the sequence, of a run of so many frames of the item.
	SN::TickTime MapRun(std::int64_t inFirstFrame, std::int64_t inCount) const;
	bool MapDirection(bool inReverse) const { return inReverse != mWindow.mIsBackwards; }
	// In a playback, those that the item fills ahead of a start: what is read first. None where the sequence
	// around it has begun long enough ago.
	std::int64_t GetFilledFrames(SN::TickTime const& inStartTime);
	bool NeedsToSettle() const;
	// Whether a block that begins at an item's frame, in reverse ends there, follows what was rendered.
	bool IsInTurn(std::int64_t inFrame, bool inReverse) const;
	// Renders so many of the item's frames before one, in reverse behind it, and throws them away.
	void Settle(std::int64_t inFrame, std::int64_t inCount, bool inReverse);

	SN::InterfaceRef<SN::IAudioGenerator> mSequence;
	SN::InterfaceRef<SN::IAudioRenderContext> mContext;
	SN::FrameRate mFrameRate;
	// Of the item.
	unsigned mNestingDepth;
	ContentWindow mWindow;
	// In which settling renders; without channels where nothing has to settle.
	dsp::AudioBuffer mDiscarded;
	// The item's frame at which the next block begins, or in reverse ends, if it follows; none behind the
	// preroll of a playback.
	std::optional<std::int64_t> mNextFrame;
	// What the sequence has answered; it does not change.
	std::optional<bool> mHasHistory;
	bool mAreFiltersRunning = false;
	// Whether nothing has run since the last reset.
	bool mIsReset = false;
	// Where it was filled from last, since the preroll.
	std::optional<SN::TickTime> mFilledFrom;
};

} // namespace SonaroHost::Sequence
