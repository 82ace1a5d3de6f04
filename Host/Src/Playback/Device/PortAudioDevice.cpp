#include "PortAudioDevice.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"

#include <dlfcn.h>
#include <portaudio.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define SONARO_FINDS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif
#endif

namespace SonaroHost::Playback
{

namespace
{

void IgnoreAlsa(char const*, int, char const*, int, char const*, ...)
{
}

void IgnoreJack(char const*)
{
}

// PortAudio tries each device that a system might have, and what drives them prints a line on the error output for each
// that is not there. These libraries come along with PortAudio, as far as it uses them.
void SilenceDrivers()
{
	if (auto const set = reinterpret_cast<int (*)(decltype(&IgnoreAlsa))>(
			dlsym(RTLD_DEFAULT, "snd_lib_error_set_handler")))
	{
		set(&IgnoreAlsa);
	}
	for (char const* const name : {"jack_set_error_function", "jack_set_info_function"})
	{
		if (auto const set = reinterpret_cast<void (*)(decltype(&IgnoreJack))>(dlsym(RTLD_DEFAULT, name)))
		{
			set(&IgnoreJack);
		}
	}
}

} // namespace

PortAudioLibrary::PortAudioLibrary()
{
#ifdef SONARO_FINDS_LEAKS
	// ALSA unloads modules that it has tried, and with them the only pointers to what they have made for good.
	__lsan::ScopedDisabler const ignore;
#endif
	SilenceDrivers();
	if (PaError const error = Pa_Initialize(); error != paNoError)
	{
		RefuseOutput(std::string("the sound devices cannot be reached: ") + Pa_GetErrorText(error));
	}
}

PortAudioLibrary::~PortAudioLibrary()
{
	Pa_Terminate();
}

// What PortAudio's callbacks reach.
struct PortAudioDevice::Stream
{
	Stream(PortAudioDevice& ioDevice, DeviceFormat const& inFormat)
		: mDevice(ioDevice)
	{
		PaDeviceInfo const* const info = Pa_GetDeviceInfo(mDevice.mDevice.mIndex);
		PaStreamParameters output{};
		output.device = mDevice.mDevice.mIndex;
		output.channelCount = static_cast<int>(inFormat.mChannels);
		output.sampleFormat = paFloat32;
		double const block = static_cast<double>(inFormat.mBlockFrames) / inFormat.mSampleRate;
		output.suggestedLatency = std::max(info ? info->defaultLowOutputLatency : 0.0, block);
		Check(info ? Pa_OpenStream(&mHandle, nullptr, &output, inFormat.mSampleRate, inFormat.mBlockFrames,
						 paNoFlag, &Stream::Fill, this)
				   : paInvalidDevice);
		Pa_SetStreamFinishedCallback(mHandle, &Stream::Finish);
		PaStreamInfo const* const opened = Pa_GetStreamInfo(mHandle);
		double const latency = opened ? opened->outputLatency : output.suggestedLatency;
		mDevice.mBurst.store(
			std::llround(output.suggestedLatency * inFormat.mSampleRate), std::memory_order_relaxed);
		mDevice.mLatency.store(std::llround(latency * inFormat.mSampleRate), std::memory_order_relaxed);
	}
	~Stream()
	{
		if (mHandle)
		{
			Pa_CloseStream(mHandle);
		}
	}
	Stream(Stream const&) = delete;
	Stream& operator=(Stream const&) = delete;

	void Check(PaError inError) const
	{
		if (inError == paNoError)
		{
			return;
		}
		DeviceFormat const& format = mDevice.mFormat;
		RefuseOutput("the sound device " + QuoteName(mDevice.mDevice.mInfo.mName) + " cannot play " +
					 std::to_string(format.mChannels) +
					 (format.mChannels == 1 ? " channel at " : " channels at ") +
					 std::to_string(format.mSampleRate) + " Hz: " + Pa_GetErrorText(inError) +
					 "; choose another device, rate or layout");
	}

	// On the device's thread.
	static int Fill(void const*, void* outSamples, unsigned long inFrames, PaStreamCallbackTimeInfo const*,
		PaStreamCallbackFlags inFlags, void* ioStream)
	{
		Stream const& stream = *static_cast<Stream*>(ioStream);
		stream.mDevice.mWatch.Note(DeviceWatch::GetTime());
		stream.mClient->Fill(static_cast<float*>(outSamples), static_cast<unsigned>(inFrames));
		if ((inFlags & paOutputUnderflow) != 0)
		{
			stream.mDevice.mUnderflows.fetch_add(1, std::memory_order_relaxed);
		}
		return paContinue;
	}
	static void Finish(void* ioStream)
	{
		PortAudioDevice& device = static_cast<Stream*>(ioStream)->mDevice;
		if (!device.mIsStopping.load(std::memory_order_acquire))
		{
			device.mHasEnded.store(true, std::memory_order_release);
		}
	}

	PortAudioDevice& mDevice;
	DeviceClient* mClient = nullptr;
	PaStream* mHandle = nullptr;
};

PortAudioDevice::PortAudioDevice(SystemDevice inDevice)
	: mLibrary(std::make_unique<PortAudioLibrary>()),
	  mDevice(std::move(inDevice))
{
}

PortAudioDevice::~PortAudioDevice()
{
	Close();
}

void PortAudioDevice::Open(DeviceFormat const& inFormat)
{
	Close();
	if (mIsGone)
	{
		RefuseOutput(Say("went with its sound server; start the server, and then this program again"));
	}
	if (mIsLost)
	{
		FindAgain();
	}
	mFormat = inFormat;
	mStream = std::make_unique<Stream>(*this, inFormat);
	mHasEnded.store(false, std::memory_order_release);
}

void PortAudioDevice::FindAgain()
{
	// What drives it is asked anew only when PortAudio begins anew.
	mLibrary.reset();
	mLibrary = std::make_unique<PortAudioLibrary>();
	SoundDeviceInfo const& info = mDevice.mInfo;
	std::vector<SystemDevice> const devices = ListSystemDevices();
	auto const found = std::ranges::find_if(devices, [&info](SystemDevice const& inDevice)
		{ return inDevice.mInfo.mName == info.mName && inDevice.mInfo.mDriver == info.mDriver; });
	if (found == devices.end())
	{
		RefuseOutput("the sound device " + QuoteName(info.mName) +
					 " is not there any more; connect it, or start its sound server, and play again");
	}
	// The names stay: the render thread may read them.
	mDevice.mIndex = found->mIndex;
}

void PortAudioDevice::Start(DeviceClient& ioClient)
{
	Stop();
	mStream->mClient = &ioClient;
	mIsStopping.store(false, std::memory_order_release);
	mWatch.Start(DeviceWatch::GetTime(), static_cast<double>(mFormat.mBlockFrames) / mFormat.mSampleRate);
	mStream->Check(Pa_StartStream(mStream->mHandle));
	mIsStarted.store(true, std::memory_order_release);
	mIsLost.store(false, std::memory_order_release);
}

void PortAudioDevice::Stop()
{
	mIsLost.store(FindLoss().has_value(), std::memory_order_release);
	mIsStopping.store(true, std::memory_order_release);
	bool const wasStarted = mIsStarted.exchange(false, std::memory_order_acq_rel);
	if (wasStarted && HasServerEnded())
	{
		// What is left of it is never asked again.
		static_cast<void>(mStream.release());
		static_cast<void>(mLibrary.release());
		mIsGone = true;
	}
	if (mStream && Pa_IsStreamStopped(mStream->mHandle) == 0)
	{
		Pa_AbortStream(mStream->mHandle);
	}
}

void PortAudioDevice::Close()
{
	Stop();
	mStream.reset();
}

std::optional<std::string> PortAudioDevice::FindLoss() const
{
	if (mHasEnded.load(std::memory_order_acquire))
	{
		return Say("has stopped; it was disconnected, or another program changed it");
	}
	if (mIsLost.load(std::memory_order_acquire))
	{
		return Say("has stopped and could not be started again");
	}
	bool const isStarted = mIsStarted.load(std::memory_order_acquire);
	auto const gap = isStarted ? mWatch.FindGap(DeviceWatch::GetTime()) : std::nullopt;
	return gap ? std::optional(Say("has asked for nothing for " + std::to_string(std::lround(*gap)) +
								   " seconds; the machine slept, or its sound server has stopped"))
			   : std::nullopt;
}

bool PortAudioDevice::HasServerEnded() const
{
	PaDeviceInfo const* const info = mStream ? Pa_GetDeviceInfo(mDevice.mIndex) : nullptr;
	PaHostApiInfo const* const driver = info ? Pa_GetHostApiInfo(info->hostApi) : nullptr;
	return driver && driver->type == paJACK && Pa_IsStreamActive(mStream->mHandle) != 1;
}

std::string PortAudioDevice::Say(std::string const& inWhat) const
{
	return "the sound device " + QuoteName(mDevice.mInfo.mName) + " " + inWhat;
}

} // namespace SonaroHost::Playback
