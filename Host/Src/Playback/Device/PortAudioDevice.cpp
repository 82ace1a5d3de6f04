#include "PortAudioDevice.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"

#include <dlfcn.h>
#include <portaudio.h>

#include <algorithm>
#include <cmath>
#include <utility>

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
		PaDeviceInfo const* const info = Pa_GetDeviceInfo(mDevice.mIndex);
		PaStreamParameters output{};
		output.device = mDevice.mIndex;
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
		RefuseOutput("the sound device " + QuoteName(mDevice.mName) + " cannot play " +
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

PortAudioDevice::PortAudioDevice(int inIndex, std::string inName)
	: mIndex(inIndex),
	  mName(std::move(inName))
{
}

PortAudioDevice::~PortAudioDevice()
{
	Close();
}

void PortAudioDevice::Open(DeviceFormat const& inFormat)
{
	Close();
	mFormat = inFormat;
	mStream = std::make_unique<Stream>(*this, inFormat);
	mHasEnded.store(false, std::memory_order_release);
}

void PortAudioDevice::Start(DeviceClient& ioClient)
{
	Stop();
	mStream->mClient = &ioClient;
	mIsStopping.store(false, std::memory_order_release);
	mStream->Check(Pa_StartStream(mStream->mHandle));
}

void PortAudioDevice::Stop()
{
	mIsStopping.store(true, std::memory_order_release);
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
	return mHasEnded.load(std::memory_order_acquire)
			   ? std::optional("the sound device " + QuoteName(mName) +
							   " has stopped; it was disconnected, or another program changed it")
			   : std::nullopt;
}

} // namespace SonaroHost::Playback
