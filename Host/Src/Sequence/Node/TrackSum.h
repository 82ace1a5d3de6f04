#pragma once

#include "ReadingNode.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <string>
#include <utility>
#include <vector>

namespace SonaroHost::Sequence
{

// Where a submix or the master receives its tracks: the engine's inlet, but each track is added as soon as it is
// rendered, while the processor's caches still hold it. The sum has the same bits, since the order is the same.
//
// Use      Begin before the tracks of a run are rendered, Add after each in the inlet's order. What is not begun so, or
//          does not fit, is left to the inlet.
// Threads  That of the sequence. Nothing allocates after the constructor.
class TrackSum final : public SN::Implements<TrackSum, ReadingNode>
{
public:
	static constexpr SN::Identifier<TrackSum> kIdentifier{0x5be2094f7c1d4a83ull, 0xa61f30d9c58e7b24ull};

	// inChannels and inFrames: those of the sum, the frames those of the largest block.
	TrackSum(Generator const& inInlet, unsigned long long inChannels, unsigned inFrames);

	SN::InterfaceRef<SN::IAudioGenerator> Clone() override;
	void Preroll(SN::TickTime const& inStartTime, bool inReverse) override
	{
		mInlet->Preroll(inStartTime, inReverse);
	}
	void AccumulatePrefetchRequests(SN::PrefetchRange const& inRange, SN::PrefetchType inType,
		SN::PrefetchRequestAccumulator& inAccumulator) override
	{
		mInlet->AccumulatePrefetchRequests(inRange, inType, inAccumulator);
	}
	void GetAudioData(
		SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;

	// The clone that was made last, once; empty where none was made since.
	SN::InterfaceRef<TrackSum> TakeClone() { return std::exchange(mClone, nullptr); }

	void Begin(unsigned inFrames) SONARO_NONBLOCKING;
	void Add(SN::ICachedAudioGenerator& ioTrack) SONARO_NONBLOCKING
	{
		if (mIsBegun)
		{
			ioTrack.MixCachedAudio(mSum);
		}
	}

	std::u16string GetNodeName() override { return u"TrackSum"; }
	// The inlet's, in the order in which they are added.
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override;

private:
	Generator mInlet;
	dsp::AudioBuffer mSum;
	bool mIsBegun = false;
	SN::InterfaceRef<TrackSum> mClone;
};

} // namespace SonaroHost::Sequence
