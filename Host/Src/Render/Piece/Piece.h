#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioBufferShell.h"

#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <vector>

namespace SonaroHost
{

// What a stretch of a programme came to: its blocks, and what the taps of the graph heard of it, in their order. It keeps
// its memory from one stretch to the next.
//
// Taps     Channels that are flagged silent take no memory for samples.
// Threads  One at a time while it is filled; then any number may replay taps while one takes the blocks.
class Piece
{
public:
	// inTapSamples: how many samples taps hear of a block as a rule; room for as many is made before each block. Only where
	// they hear more, as of instances of a nested sequence that overlap, is memory taken within one.
	Piece(std::size_t inChannels, unsigned inBlockFrames, std::size_t inTapSamples);

	// Forgets what it holds.
	void Clear();
	// Makes room for the next block and what taps hear of it.
	void BeginBlock();
	void Hear(std::size_t inTap, dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime);
	void AddBlock(dsp::AudioBuffer const& inBlock);

	void TakeBlocks(std::function<void(dsp::AudioBuffer& ioBlock)> const& inTake);
	// The bytes that it holds for good.
	std::size_t CountBytes() const;

	// What ended the piece after its last block.
	std::exception_ptr mFailure;

private:
	friend class TapReplay;

	// What a tap heard at once.
	struct Hearing
	{
		std::size_t mTap = 0;
		SN::TickTime mTime;
		dsp::SilenceFlags mFlags;
		unsigned mChannels = 0;
		unsigned mFrames = 0;
		// Of the channels that are not flagged, one after the other.
		float* mSamples = nullptr;
	};
	struct Chunk
	{
		std::unique_ptr<float[]> mSamples;
		std::size_t mSize = 0;
	};

	// Room for so many samples of one hearing.
	float* Reserve(std::size_t inSamples);
	void ChooseChunk(std::size_t inSamples);

	std::size_t mChannels;
	unsigned mBlockFrames;
	std::size_t mTapSamples;
	std::deque<dsp::AudioBuffer> mBlocks;
	std::size_t mUsedBlocks = 0;
	std::vector<Hearing> mHearings;
	// Where the hearings of the block begin, and how many one block had at most.
	std::size_t mFirstOfBlock = 0;
	std::size_t mMostOfBlock = 0;
	std::vector<Chunk> mChunks;
	std::size_t mChunk = 0;
	std::size_t mUsedOfChunk = 0;
	// What stands for the samples of silent channels.
	std::vector<float> mZeros;
};

// Hands what taps heard on to their meters.
class TapReplay
{
public:
	// The meter of each tap, null for those that are handed on elsewhere.
	explicit TapReplay(std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>> inMeters);

	void Replay(Piece& ioPiece);

private:
	std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>> mMeters;
	// By the number of channels.
	std::vector<std::unique_ptr<dsp::AudioBufferShell>> mShells;
	// Those of the shell in use.
	std::vector<float*> mChannels;
};

} // namespace SonaroHost
