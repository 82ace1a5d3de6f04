#include "SonaroHost/Media/AudioFileSource.h"

#include "SonaroHost/Media/AudioFileInspection.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <new>
#include <utility>

namespace SonaroHost
{

namespace
{

// One channel out of interleaved frames. Stereo is apart because a stride that is known runs in vectors.
void CopyChannel(float const* inSamples, unsigned inChannels, float* outSamples, unsigned inFrames)
{
	if (inChannels == 1)
	{
		std::copy_n(inSamples, inFrames, outSamples);
	}
	else if (inChannels == 2)
	{
		for (std::size_t i = 0; i < inFrames; ++i)
		{
			outSamples[i] = inSamples[2 * i];
		}
	}
	else
	{
		for (std::size_t i = 0; i < inFrames; ++i)
		{
			outSamples[i] = inSamples[inChannels * i];
		}
	}
}

} // namespace

SN::InterfaceRef<AudioFileSource> AudioFileSource::Open(std::filesystem::path const& inPath,
	std::optional<SN::FrameRate> const& inCountingRate, unsigned inStream)
{
	return Open(InspectAudioFile(inPath, inStream), inCountingRate);
}

SN::InterfaceRef<AudioFileSource> AudioFileSource::Open(
	AudioFileInfo const& inInfo, std::optional<SN::FrameRate> const& inCountingRate)
{
	return zorvcore::classref::MakeObject<AudioFileSource>(
		std::make_unique<AudioFileReader>(inInfo), inCountingRate);
}

AudioFileSource::AudioFileSource(
	std::unique_ptr<AudioFileReader> inReader, std::optional<SN::FrameRate> const& inCountingRate)
	: mReader(std::move(inReader)),
	  mChunks(zorvcore::classref::MakeObject<Chunks>()),
	  mFrameRate(inCountingRate.value_or(SN::FrameRate::FromSamplesPerSecond(GetInfo().mSampleRate))),
	  mName(GetInfo().mPath.filename().string()),
	  mPath(GetInfo().mPath.string())
{
	std::int64_t const chunkFrames = mReader->GetBlockFrames();
	mChunks->Init(static_cast<unsigned long long>((GetInfo().mFrames + chunkFrames - 1) / chunkFrames));
}

std::optional<HostError> AudioFileSource::GetFailure() const
{
	return HasFailed() ? mFailure : std::nullopt;
}

void AudioFileSource::ReadAudio(
	VX::BinaryData const&, dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime, bool)
{
	Part const part = FindPart(inTime, inBuffer.GetUseSize());
	if (part.mFirst == part.mEnd || HasFailed())
	{
		inBuffer.Zero();
		return;
	}
	auto const lock = LockReader();
	try
	{
		for (unsigned done = 0; done < part.mEnd - part.mFirst;)
		{
			Piece const piece = FindPiece(part.mPosition + done, part.mEnd - part.mFirst - done);
			Decode(piece, inBuffer, part.mFirst + done);
			done += piece.mFrames;
		}
	}
	catch (std::exception const& error)
	{
		Fail(error);
		inBuffer.Zero();
		return;
	}
	FinishBuffer(inBuffer, part);
}

void AudioFileSource::PrefetchAudioData(
	unsigned long long const&, SN::TickTime const& inTime, unsigned inNumSamples)
{
	Part const part = FindPart(inTime, inNumSamples);
	for (unsigned done = 0; done < part.mEnd - part.mFirst;)
	{
		Piece const piece = FindPiece(part.mPosition + done, part.mEnd - part.mFirst - done);
		done += piece.mFrames;
		if (mChunks->Touch(static_cast<unsigned long long>(piece.mChunk)))
		{
			continue;
		}
		auto const lock = LockReader();
		if (HasFailed())
		{
			return;
		}
		// What escaped here would be lost, and with it the notice to whoever waits for the batch.
		try
		{
			DecodeChunk(piece.mChunk);
		}
		catch (std::exception const& error)
		{
			Fail(error);
			return;
		}
	}
}

int AudioFileSource::ReadPrefetchedAudio(SN::TickTime const& inTime, dsp::AudioBuffer& inBuffer)
{
	Part const part = FindPart(inTime, inBuffer.GetUseSize());
	unsigned long long const channels =
		std::min<unsigned long long>(GetNumChannels(), inBuffer.GetNumChannels());
	bool isAnyThere = false;
	for (unsigned done = 0; done < part.mEnd - part.mFirst;)
	{
		Piece const piece = FindPiece(part.mPosition + done, part.mEnd - part.mFirst - done);
		unsigned const target = part.mFirst + done;
		auto const copy = [&](VX::AudioMapEntry const& inChunk)
		{
			for (unsigned long long channel = 0; channel < channels; ++channel)
			{
				std::copy_n(inChunk.GetBuffer()->GetChannel(channel) + piece.mOffset, piece.mFrames,
					inBuffer.GetChannel(channel) + target);
			}
		};
		if (mChunks->Read(static_cast<unsigned long long>(piece.mChunk), copy))
		{
			isAnyThere = true;
		}
		else
		{
			for (unsigned long long channel = 0; channel < channels; ++channel)
			{
				std::fill_n(inBuffer.GetChannel(channel) + target, piece.mFrames, 0.0f);
			}
			mMissCount.fetch_add(1, std::memory_order_relaxed);
			mMissedFrames.fetch_add(piece.mFrames, std::memory_order_relaxed);
		}
		done += piece.mFrames;
	}
	if (isAnyThere)
	{
		FinishBuffer(inBuffer, part);
	}
	else
	{
		inBuffer.Zero();
	}
	return SN::kSuccess;
}

AudioFileSource::Part AudioFileSource::FindPart(SN::TickTime const& inTime, std::int64_t inFrames) const
{
	std::int64_t const position = inTime.ToFrame64(mFrameRate) - GetInfo().mFramesBefore;
	std::int64_t const first = std::clamp<std::int64_t>(-position, 0, inFrames);
	std::int64_t const end = std::clamp<std::int64_t>(GetInfo().mFrames - position, first, inFrames);
	return {position + first, static_cast<unsigned>(first), static_cast<unsigned>(end)};
}

AudioFileSource::Piece AudioFileSource::FindPiece(std::int64_t inPosition, std::int64_t inFrames) const
{
	std::int64_t const chunkFrames = mReader->GetBlockFrames();
	std::int64_t const offset = inPosition % chunkFrames;
	return {inPosition / chunkFrames, static_cast<unsigned>(offset),
		static_cast<unsigned>(std::min(inFrames, chunkFrames - offset))};
}

void AudioFileSource::FinishBuffer(dsp::AudioBuffer& ioBuffer, Part const& inPart) const
{
	unsigned const frames = ioBuffer.GetUseSize();
	for (unsigned channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (channel >= GetInfo().GetNumChannels())
		{
			ioBuffer.MarkChannelSilent(channel);
			continue;
		}
		float* const samples = ioBuffer.GetChannel(channel);
		std::fill(samples, samples + inPart.mFirst, 0.0f);
		std::fill(samples + inPart.mEnd, samples + frames, 0.0f);
		ioBuffer.NoteChannelWrite(channel, frames);
	}
}

std::unique_lock<std::mutex> AudioFileSource::LockReader()
{
	std::unique_lock lock(mReading, std::try_to_lock);
	if (!lock.owns_lock())
	{
		lock.lock();
	}
	return lock;
}

void AudioFileSource::Decode(Piece const& inPiece, dsp::AudioBuffer& ioBuffer, unsigned inTarget)
{
	unsigned const fileChannels = GetNumChannels();
	auto const channels =
		static_cast<unsigned>(std::min<unsigned long long>(fileChannels, ioBuffer.GetNumChannels()));
	float const* const block =
		mReader->GetBlock(inPiece.mChunk) + static_cast<std::size_t>(inPiece.mOffset) * fileChannels;
	for (unsigned channel = 0; channel < channels; ++channel)
	{
		CopyChannel(block + GetInfo().mChannelOrder[channel], fileChannels,
			ioBuffer.GetChannel(channel) + inTarget, inPiece.mFrames);
	}
}

void AudioFileSource::DecodeChunk(std::int64_t inChunk)
{
	auto const index = static_cast<unsigned long long>(inChunk);
	// Another thread may have been faster while this one waited.
	if (mChunks->Touch(index))
	{
		return;
	}
	std::int64_t const position = inChunk * mReader->GetBlockFrames();
	Piece const whole = FindPiece(position, GetInfo().mFrames - position);
	auto const buffer = std::make_shared<dsp::AudioBuffer>(GetNumChannels(), whole.mFrames);
	Decode(whole, *buffer, 0);
	mChunks->Store(index, VX::AudioMapEntry(buffer));
}

void AudioFileSource::Fail(std::exception const& inReason)
{
	// The first one is the reason of all that follow, and readers may hold on to it already.
	if (!HasFailed())
	{
		auto const* const known = dynamic_cast<HostError const*>(&inReason);
		bool const lacksMemory = dynamic_cast<std::bad_alloc const*>(&inReason) != nullptr;
		char const* const reason =
			lacksMemory ? "cannot be read: there is not enough memory" : inReason.what();
		mFailure = known ? *known : HostError(HostError::Kind::kInput, {GetInfo().mPath, {}, reason, {}});
		mHasFailed.store(true, std::memory_order_release);
	}
}

} // namespace SonaroHost
