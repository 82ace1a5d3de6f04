#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SonaroHost
{

// Decoded samples that wait to be read, with silence between them. Its memory grows to what waits at a time.
class PlacedSamples
{
public:
	explicit PlacedSamples(unsigned inChannels)
		: mChannels(inChannels)
	{
	}

	// Interleaved frames that do not lie before any that were added.
	void Add(std::int64_t inPosition, float const* inSamples, std::int64_t inFrames);
	// Writes frames, silence where there are none, a frame at every inStride samples. What lies before their end is gone
	// then.
	void Take(std::int64_t inPosition, float* outSamples, std::int64_t inFrames, std::size_t inStride);
	void Clear();

	// Samples that wait.
	std::size_t GetSize() const { return mSamples.size() - mFirstSample; }

private:
	struct Piece
	{
		std::int64_t mPosition = 0;
		std::int64_t mFrames = 0;
	};

	void DropFront(std::int64_t inFrames);
	void Compact();

	unsigned mChannels;
	// The pieces from mFirstPiece on, and their samples from mFirstSample on.
	std::vector<Piece> mPieces;
	std::vector<float> mSamples;
	std::size_t mFirstPiece = 0;
	std::size_t mFirstSample = 0;
};

} // namespace SonaroHost
