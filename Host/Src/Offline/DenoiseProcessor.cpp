#include "SonaroHost/Offline/DenoiseProcessor.h"

#include "NoiseLearner.h"
#include "NoiseReducer.h"
#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <condition_variable>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

namespace SonaroHost
{

namespace
{

using Chunk = std::shared_ptr<dsp::AudioBuffer>;
using ChunkPromise = zorvcore::async::Promise<Chunk>;

constexpr std::int64_t kChunkFrames = 8192;

// Frames of a callback that reads one channel.
FrameReader MakeReader(SN::OfflineAudioReadCallback inCallback, unsigned inChannels)
{
	return
		[read = std::move(inCallback), inChannels](float* outSamples, std::int64_t inFirst, unsigned inFrames)
	{ read(&outSamples, inFirst * inChannels, static_cast<int>(inFrames * inChannels)); };
}

// Gives the samples as they are.
void ReadPlain(FrameReader const& inRead, std::int64_t inFirst, dsp::AudioBuffer& outBuffer)
{
	std::size_t const channels = outBuffer.GetNumChannels();
	std::vector<float> samples(outBuffer.GetUseSize() * channels);
	inRead(samples.data(), inFirst, outBuffer.GetUseSize());
	for (std::size_t channel = 0; channel < channels; ++channel)
	{
		float* const out = outBuffer.GetChannel(channel);
		for (std::size_t i = 0; i < outBuffer.GetUseSize(); ++i)
		{
			out[i] = samples[i * channels + channel];
		}
	}
	outBuffer.NoteBufferWrite(0, outBuffer.GetUseSize());
}

} // namespace

class DenoiseProcessor::Stream final : public SN::Implements<Stream, SN::IProcessedAudioStream>
{
public:
	Stream(Settings const& inSettings, std::shared_ptr<Failure> inFailure, FrameReader inRead,
		std::int64_t inFrames)
		: mSettings(inSettings),
		  mFailure(std::move(inFailure)),
		  mRead(std::move(inRead)),
		  mNextFrame(inSettings.mFirstFrame),
		  mEndFrame(inSettings.mFirstFrame + inFrames)
	{
		mSettings.mFrames = mSettings.mFrames > 0 ? mSettings.mFrames : mEndFrame;
		mWorker = std::jthread([this](std::stop_token const& inStop) { Run(inStop); });
	}

	zorvcore::async::Future<Chunk> GetNextBuffer() override
	{
		ChunkPromise promise;
		auto const future = promise.GetFuture();
		{
			std::lock_guard const lock(mMutex);
			mWanted.emplace(std::move(promise));
		}
		mChanged.notify_one();
		return future;
	}

private:
	void Run(std::stop_token const& inStop)
	{
		std::unique_lock lock(mMutex);
		while (mChanged.wait(lock, inStop, [this] { return mWanted.has_value(); }))
		{
			ChunkPromise promise = std::move(*mWanted);
			mWanted.reset();
			lock.unlock();
			Fulfil(promise, inStop);
			lock.lock();
		}
	}

	// Leaves a promise alone that is cancelled: it goes without an outcome.
	void Fulfil(ChunkPromise& ioPromise, std::stop_token const& inStop)
	{
		try
		{
			if (mRethrow)
			{
				std::rethrow_exception(mRethrow);
			}
			if (Prepare(ioPromise, inStop))
			{
				ioPromise.SetValue(MakeChunk());
			}
		}
		catch (...)
		{
			mRethrow = std::current_exception();
			mFailure->Set(mRethrow);
			ioPromise.SetException(mRethrow);
		}
	}

	// False when cancelled.
	bool Prepare(ChunkPromise const& inPromise, std::stop_token const& inStop)
	{
		if (mIsPrepared || mSettings.mDenoise.mReduction <= Denoise::kLeastReduction)
		{
			return true;
		}
		auto const learn = [&] { return Learn(inPromise, inStop); };
		auto const profile = mSettings.mProfile ? mSettings.mProfile->Get(learn) : learn();
		if (!profile)
		{
			return false;
		}
		if (!profile->IsSilent())
		{
			mReducer = std::make_unique<NoiseReducer>(profile, mSettings.mDenoise.mReduction,
				NoiseReducer::Recording{mSettings.mSampleRate, mSettings.mChannels, mSettings.mFrames},
				mNextFrame, mRead);
		}
		mIsPrepared = true;
		return true;
	}

	std::shared_ptr<NoiseProfile const> Learn(ChunkPromise const& inPromise, std::stop_token const& inStop)
	{
		auto const& wanted = mSettings.mDenoise.mLearn;
		auto const goesOn = [&](std::int64_t inFrames)
		{
			if (mSettings.mReport)
			{
				mSettings.mReport(inFrames);
			}
			return !inPromise.IsCancelled() && !inStop.stop_requested();
		};
		auto profile = LearnNoise(mSettings.mSampleRate, mSettings.mChannels,
			wanted.value_or(Denoise::Span{0, mSettings.mFrames}),
			wanted ? NoiseLearner::Choice::kAll : NoiseLearner::Choice::kQuietest, mRead, goesOn);
		if (profile && wanted && profile->IsSilent())
		{
			throw HostError(HostError::Kind::kInput,
				{{}, {}, "there is only silence to learn the noise from", "choose another range"});
		}
		return profile;
	}

	Chunk MakeChunk()
	{
		std::int64_t const count = std::min(kChunkFrames, mEndFrame - mNextFrame);
		if (count <= 0)
		{
			throw zorvcore::config::zorv_exception(
				{}, 0, zorvcore::eUnspecifiedFailure, "the stream has ended");
		}
		auto chunk = std::make_shared<dsp::AudioBuffer>(mSettings.mChannels, static_cast<unsigned>(count));
		if (mReducer)
		{
			mReducer->Read(*chunk);
		}
		else
		{
			ReadPlain(mRead, mNextFrame, *chunk);
		}
		mNextFrame += count;
		return chunk;
	}

	Settings mSettings;
	std::shared_ptr<Failure> mFailure;
	FrameReader mRead;
	std::int64_t mNextFrame;
	std::int64_t mEndFrame;
	// Once the noise is known.
	bool mIsPrepared = false;
	// Null where nothing is reduced.
	std::unique_ptr<NoiseReducer> mReducer;
	std::exception_ptr mRethrow;

	std::mutex mMutex;
	std::condition_variable_any mChanged;
	std::optional<ChunkPromise> mWanted;
	// The last member: it ends before all that it uses.
	std::jthread mWorker;
};

void DenoiseProcessor::Failure::Set(std::exception_ptr const& inException)
{
	std::lock_guard const lock(mMutex);
	mException = mException ? mException : inException;
}

std::exception_ptr DenoiseProcessor::Failure::Get() const
{
	std::lock_guard const lock(mMutex);
	return mException;
}

DenoiseProcessor::DenoiseProcessor(Settings const& inSettings)
	: mSettings(inSettings)
{
}

SN::InterfaceRef<SN::IProcessedAudioStream> DenoiseProcessor::CreateProcessedStream(
	SN::OfflineAudioReadCallback const& inCallback, unsigned, SN::TickTime const& inDuration)
{
	auto const rate = SN::FrameRate::FromSamplesPerSecond(mSettings.mSampleRate);
	return zorvcore::classref::MakeObject<Stream>(
		mSettings, mFailure, MakeReader(inCallback, mSettings.mChannels), inDuration.ToFrame64(rate));
}

} // namespace SonaroHost
