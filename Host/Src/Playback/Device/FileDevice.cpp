#include "SonaroHost/Playback/FileDevice.h"

#include "SonaroHost/Base/ChannelLayouts.h"

#include <exception>
#include <utility>

namespace SonaroHost::Playback
{

namespace
{

// The length is not known at the start, where the kind of header is chosen: that of a WAV up to 4 GB.
constexpr std::int64_t kExpectedFrames = 0;
constexpr std::int64_t kMostWavBytes = 0xffff0000;

} // namespace

FileDevice::FileDevice(std::filesystem::path inPath, double inSpeed)
	: ClockedDevice(inSpeed),
	  mPath(std::move(inPath))
{
}

FileDevice::~FileDevice()
{
	Stop();
	try
	{
		Finish();
	}
	catch (std::exception const&)
	{
		// Nothing is left of the file, and whoever wants to know why calls Finish.
	}
}

void FileDevice::Open(DeviceFormat const& inFormat)
{
	ClockedDevice::Open(inFormat);
	if (mFirstFormat &&
		(mFirstFormat->mSampleRate != inFormat.mSampleRate || mFirstFormat->mChannels != inFormat.mChannels))
	{
		RefuseOutput("cannot go on writing " + QuotePath(mPath) +
					 " with another sample rate or other channels; use another file");
	}
	if (!mFirstFormat)
	{
		mFirstFormat = inFormat;
		mWriter = std::make_unique<AudioFileWriter>(mPath, OutputFormat{}, inFormat.mSampleRate,
			MakeLayoutOfChannels(inFormat.mChannels), kExpectedFrames);
	}
	mBuffer.Init(inFormat.mChannels, inFormat.mBlockFrames);
}

std::optional<std::string> FileDevice::FindLoss() const
{
	std::lock_guard const lock(mMutex);
	return mFailure ? std::optional<std::string>(mFailure->what()) : ClockedDevice::FindLoss();
}

void FileDevice::Finish()
{
	if (mFailure)
	{
		throw HostError(*mFailure);
	}
	if (mWriter)
	{
		mWriter->Finish();
		mWriter.reset();
	}
}

void FileDevice::Take(float const* inSamples, unsigned inFrames)
{
	if (!mWriter)
	{
		return;
	}
	mBuffer.SetUseSize(inFrames);
	unsigned long long const channels = mBuffer.GetNumChannels();
	for (unsigned long long channel = 0; channel < channels; ++channel)
	{
		for (unsigned i = 0; i < inFrames; ++i)
		{
			mBuffer.GetChannel(channel)[i] = inSamples[i * channels + channel];
		}
	}
	mBuffer.NoteBufferWrite(0, inFrames);
	try
	{
		auto const frameBytes = static_cast<std::int64_t>(channels * sizeof(float));
		if ((mWriter->GetFrames() + inFrames) * frameBytes > kMostWavBytes)
		{
			RefuseOutput("cannot write more than 4 GB into " + QuotePath(mPath) + "; use another file");
		}
		mWriter->Write(mBuffer);
	}
	catch (HostError const& error)
	{
		std::lock_guard const lock(mMutex);
		mFailure = error;
		mWriter.reset();
	}
}

} // namespace SonaroHost::Playback
