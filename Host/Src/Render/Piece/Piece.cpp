#include "Piece.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

// The least memory for taps that is taken at once, in samples: 1 MiB.
constexpr std::size_t kSmallestChunk = std::size_t{1} << 18;

} // namespace

Piece::Piece(std::size_t inChannels, unsigned inBlockFrames, std::size_t inTapSamples)
	: mChannels(inChannels),
	  mBlockFrames(inBlockFrames),
	  mTapSamples(inTapSamples),
	  mZeros(inBlockFrames)
{
}

void Piece::Clear()
{
	mFailure = nullptr;
	mUsedBlocks = 0;
	mHearings.clear();
	mFirstOfBlock = 0;
	mChunk = 0;
	mUsedOfChunk = 0;
}

void Piece::BeginBlock()
{
	if (mUsedBlocks == mBlocks.size())
	{
		mBlocks.emplace_back(mChannels, mBlockFrames);
	}
	if (mTapSamples == 0)
	{
		return;
	}
	mMostOfBlock = std::max(mMostOfBlock, mHearings.size() - mFirstOfBlock);
	mFirstOfBlock = mHearings.size();
	// Short items, and a block that begins within some, make more of them than the block before.
	constexpr std::size_t kSpare = 256;
	if (std::size_t const wanted = mFirstOfBlock + 2 * mMostOfBlock + kSpare; mHearings.capacity() < wanted)
	{
		mHearings.reserve(std::max(wanted, 2 * mHearings.capacity()));
	}
	ChooseChunk(mTapSamples);
}

void Piece::ChooseChunk(std::size_t inSamples)
{
	for (; mChunk < mChunks.size(); ++mChunk, mUsedOfChunk = 0)
	{
		if (mChunks[mChunk].mSize - mUsedOfChunk >= inSamples)
		{
			return;
		}
	}
	std::size_t const size = std::max(inSamples, kSmallestChunk);
	mChunks.push_back({std::make_unique_for_overwrite<float[]>(size), size});
	mUsedOfChunk = 0;
}

float* Piece::Reserve(std::size_t inSamples)
{
	ChooseChunk(inSamples);
	float* const samples = mChunks[mChunk].mSamples.get() + mUsedOfChunk;
	mUsedOfChunk += inSamples;
	return samples;
}

void Piece::Hear(std::size_t inTap, dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime)
{
	auto const channels = static_cast<unsigned>(inBuffer.GetNumChannels());
	unsigned const frames = inBuffer.GetUseSize();
	dsp::SilenceFlags flags;
	std::size_t heard = 0;
	for (unsigned channel = 0; channel < channels; ++channel)
	{
		bool const isSilent = inBuffer.IsChannelSilent(channel);
		flags.Assign(channel, isSilent);
		heard += isSilent ? 0 : 1;
	}
	float* const samples = heard > 0 ? Reserve(heard * frames) : nullptr;
	float* target = samples;
	for (unsigned channel = 0; channel < channels; ++channel)
	{
		if (!flags.Test(channel))
		{
			target = std::copy_n(inBuffer.GetChannel(channel), frames, target);
		}
	}
	mHearings.push_back({inTap, inTime, flags, channels, frames, samples});
}

void Piece::AddBlock(dsp::AudioBuffer const& inBlock)
{
	mBlocks[mUsedBlocks++].CopyFrom(inBlock);
}

void Piece::TakeBlocks(std::function<void(dsp::AudioBuffer& ioBlock)> const& inTake)
{
	std::for_each(mBlocks.begin(), mBlocks.begin() + static_cast<std::ptrdiff_t>(mUsedBlocks), inTake);
}

std::size_t Piece::CountBytes() const
{
	std::size_t samples = mBlocks.size() * mBlockFrames * mChannels;
	for (Chunk const& chunk : mChunks)
	{
		samples += chunk.mSize;
	}
	return samples * sizeof(float) + mHearings.capacity() * sizeof(Hearing);
}

TapReplay::TapReplay(std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>> inMeters)
	: mMeters(std::move(inMeters)),
	  mShells(dsp::AudioBuffer::kMaxChannels + 1),
	  mChannels(dsp::AudioBuffer::kMaxChannels)
{
}

void TapReplay::Replay(Piece& ioPiece)
{
	for (Piece::Hearing const& hearing : ioPiece.mHearings)
	{
		SN::InterfaceRef<SN::IAudioMeterSetter> const& meter = mMeters[hearing.mTap];
		if (!meter)
		{
			continue;
		}
		float* samples = hearing.mSamples;
		for (unsigned channel = 0; channel < hearing.mChannels; ++channel)
		{
			bool const isSilent = hearing.mFlags.Test(channel);
			mChannels[channel] = isSilent ? ioPiece.mZeros.data() : samples;
			samples += isSilent ? 0 : hearing.mFrames;
		}
		std::unique_ptr<dsp::AudioBufferShell>& shell = mShells[hearing.mChannels];
		if (!shell)
		{
			shell = std::make_unique<dsp::AudioBufferShell>();
			shell->Init(hearing.mChannels);
		}
		shell->Assign(mChannels.data(), hearing.mFrames);
		shell->SetSilenceFlags(hearing.mFlags);
		meter->SetMeterData(*shell, hearing.mTime);
	}
}

} // namespace SonaroHost
