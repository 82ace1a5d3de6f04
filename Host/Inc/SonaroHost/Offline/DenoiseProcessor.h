#pragma once

#include "Sonaro/IOfflineAudioProcessor.h"
#include "Sonaro/IProcessedAudioStream.h"
#include "SonaroHost/Offline/Denoise.h"
#include "SonaroHost/Offline/NoiseProfile.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>

namespace SonaroHost
{

// The reduction of noise as a process for the engine's OfflineAudioProcessorAudioGenerator.
//
// Source    A process reads one channel, so a recording with several comes interleaved: sample n of the callback is channel
//           n % mChannels of frame n / mChannels. What the streams give has a channel for each.
// Streams   Each has a worker of its own, which works while a buffer is awaited: it learns the noise first unless it is
//           known, and then subtracts it. Two streams of any places give the same samples where they overlap.
// Latency   0.
// Errors    Those of the callback fail the future, and all later ones. So does silence that was to be learned from, with
//           a HostError of kind kInput.
// Cancel    A future that is cancelled, or a stream that goes, ends the learning within a frame. What was learned until
//           then is forgotten; the next buffer would begin anew.
// Threads   Any.
class DenoiseProcessor final : public SN::Implements<DenoiseProcessor, SN::IOfflineAudioProcessor>
{
public:
	static constexpr SN::Identifier<DenoiseProcessor> kIdentifier{
		0x6a0b1f7c52e94d3eull, 0x91c5d8a7403bf26cull};

	// What is processed, and how.
	struct Settings
	{
		Denoise mDenoise;
		// In Hz.
		int mSampleRate = 48000;
		unsigned mChannels = 1;
		// Frames of the recording; nothing is read beyond them. 0 for as many as a stream lasts.
		std::int64_t mFrames = 0;
		// The frame with which the streams begin.
		std::int64_t mFirstFrame = 0;
		// What others may have learned, or will use; null where each stream learns for itself.
		std::shared_ptr<SharedNoiseProfile> mProfile;
		// Called by the worker now and then while it learns, with the frames that are done.
		std::function<void(std::int64_t)> mReport;
	};

	explicit DenoiseProcessor(Settings const& inSettings);

	SN::TickTime GetOfflineLatency() override { return SN::kTimeZero; }
	SN::InterfaceRef<SN::IProcessedAudioStream> CreateProcessedStream(
		SN::OfflineAudioReadCallback const& inCallback, unsigned inFlags,
		SN::TickTime const& inDuration) override;

	// What failed a stream, which the engine's generator keeps to itself; null while nothing has.
	std::exception_ptr GetFailure() const { return mFailure->Get(); }

private:
	class Stream;

	class Failure
	{
	public:
		void Set(std::exception_ptr const& inException);
		std::exception_ptr Get() const;

	private:
		mutable std::mutex mMutex;
		std::exception_ptr mException;
	};

	Settings mSettings;
	std::shared_ptr<Failure> mFailure = std::make_shared<Failure>();
};

} // namespace SonaroHost
