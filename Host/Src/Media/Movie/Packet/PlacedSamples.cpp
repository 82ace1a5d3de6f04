#include "PlacedSamples.h"

#include <algorithm>

namespace SonaroHost
{

void PlacedSamples::Add(std::int64_t inPosition, float const* inSamples, std::int64_t inFrames)
{
	if (inFrames <= 0)
	{
		return;
	}
	bool const goesOn =
		mFirstPiece < mPieces.size() && mPieces.back().mPosition + mPieces.back().mFrames == inPosition;
	if (goesOn)
	{
		mPieces.back().mFrames += inFrames;
	}
	else
	{
		mPieces.push_back({inPosition, inFrames});
	}
	mSamples.insert(mSamples.end(), inSamples, inSamples + static_cast<std::size_t>(inFrames) * mChannels);
}

void PlacedSamples::Take(
	std::int64_t inPosition, float* outSamples, std::int64_t inFrames, std::size_t inStride)
{
	std::int64_t const end = inPosition + inFrames;
	auto const silence = [&](std::int64_t inFirst, std::int64_t inEnd)
	{
		for (std::int64_t frame = inFirst; frame < inEnd; ++frame)
		{
			std::fill_n(
				outSamples + static_cast<std::size_t>(frame - inPosition) * inStride, mChannels, 0.0f);
		}
	};
	std::int64_t next = inPosition;
	while (mFirstPiece < mPieces.size() && mPieces[mFirstPiece].mPosition < end)
	{
		DropFront(
			std::clamp<std::int64_t>(next - mPieces[mFirstPiece].mPosition, 0, mPieces[mFirstPiece].mFrames));
		if (mFirstPiece == mPieces.size() || mPieces[mFirstPiece].mPosition >= end)
		{
			break;
		}
		Piece const piece = mPieces[mFirstPiece];
		if (piece.mPosition < next)
		{
			continue;
		}
		silence(next, piece.mPosition);
		std::int64_t const count = std::min(piece.mFrames, end - piece.mPosition);
		float const* in = mSamples.data() + mFirstSample;
		float* out = outSamples + static_cast<std::size_t>(piece.mPosition - inPosition) * inStride;
		for (std::int64_t i = 0; i < count; ++i, in += mChannels, out += inStride)
		{
			std::copy_n(in, mChannels, out);
		}
		next = piece.mPosition + count;
		DropFront(count);
	}
	silence(next, end);
	Compact();
}

// Of the first piece.
void PlacedSamples::DropFront(std::int64_t inFrames)
{
	Piece& piece = mPieces[mFirstPiece];
	piece.mPosition += inFrames;
	piece.mFrames -= inFrames;
	mFirstSample += static_cast<std::size_t>(inFrames) * mChannels;
	mFirstPiece += piece.mFrames == 0 ? 1 : 0;
}

// Moves what waits to the front once it is the smaller part.
void PlacedSamples::Compact()
{
	if (mFirstSample >= mSamples.size() - mFirstSample)
	{
		mSamples.erase(mSamples.begin(), mSamples.begin() + static_cast<std::ptrdiff_t>(mFirstSample));
		mFirstSample = 0;
		mPieces.erase(mPieces.begin(), mPieces.begin() + static_cast<std::ptrdiff_t>(mFirstPiece));
		mFirstPiece = 0;
	}
}

void PlacedSamples::Clear()
{
	mPieces.clear();
	mSamples.clear();
	mFirstPiece = 0;
	mFirstSample = 0;
}

} // namespace SonaroHost
