#pragma once

#include "ConvertedContent.h"
#include "NestNode.h"
#include "ReadingNode.h"
#include "Sequence/Stage/Playhead.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// What an item plays: its content, a clip or a nested sequence, through the item's chain, in frames of the content.
// The engine's item around it does no more than play it at its speed.
//
// Settling  Effects hear the content ahead by their latency, in playing order, so that the sound comes in its place
//           in both directions. Wherever the item is read out of turn, at its start, after a seek, a loop's jump or a
//           mute, it first renders as much as they are late and throws it away. So an item whose effects are late
//           renders that much more in its first block.
// Playing   Effects of an item that is read backwards, and all within a nested sequence that is, hear the sound
//           turned round.
// Threads   As for the sequence. Nothing allocates after the constructor.
class ItemContent final : public SN::Implements<ItemContent, ReadingNode>
{
public:
	struct Settings
	{
		Generator mContent;
		// The content's frame that stands at the item's frame 0.
		std::int64_t mFirstFrame = 0;
		// Frame k of the item is the content's mFirstFrame - k instead of mFirstFrame + k.
		bool mIsBackwards = false;
		std::vector<Processor> mProcessors;
		Panner mPanner;
		// The latency of the processors, in frames.
		std::int64_t mLatency = 0;
		std::shared_ptr<Playhead> mPlayhead;
		// The playhead of the sequence around the item.
		std::shared_ptr<Playhead const> mOuter;
		// How often the track around it has jumped. It changes even when the next request for this item looks as though it
		// followed the last one.
		std::shared_ptr<std::uint64_t const> mJumps;
		SN::FrameRate mFrameRate;
		// What the content is read into: of its channels and at least one sample.
		std::shared_ptr<dsp::AudioBuffer> mScratch;
	};

	explicit ItemContent(Settings const& inSettings);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	bool HasHistory() override;
	// Takes effect once for each run: an item is reached by its own way and by those of its fades.
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override;
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;
	void Reset() override;
	void InitializeAudioFilters() override;
	void ShutdownAudioFilters() override;
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override;

	std::u16string GetNodeName() override { return u"ItemContent"; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override;

private:
	bool MapDirection(bool inReverse) const { return inReverse != mSettings.mIsBackwards; }
	// The content does not go on where it was read last.
	void Interrupt();
	// The lowest time, in the content, of so many frames of the item.
	SN::TickTime MapRun(std::int64_t inFrame, std::int64_t inCount) const;
	// So many frames of the item from its lowest one on, into a buffer or nowhere.
	void Render(std::int64_t inFrame, std::int64_t inCount, bool inReverse, dsp::AudioBuffer* outBuffer);
	void Settle(std::int64_t inBegin, bool inReverse);
	// Whether what the content gives can be read into a buffer for the item's sound at once.
	bool CanReadInto(dsp::AudioBuffer const& inBuffer) const;

	Settings mSettings;
	// Empty where the content has the rate of the graph and the speed 1 or -1.
	SN::InterfaceRef<ConvertedContent> mConverted;
	// Empty for a clip.
	SN::InterfaceRef<NestNode> mNest;
	std::optional<bool> mHasHistory;
	bool mIsPrerolled = false;
	bool mAreFiltersRunning = false;
	// Where the next request begins, in reverse ends, if it follows, and how it is played.
	std::optional<std::int64_t> mNext;
	std::uint64_t mJumps = 0;
	bool mIsReverse = false;
};

} // namespace SonaroHost::Sequence
