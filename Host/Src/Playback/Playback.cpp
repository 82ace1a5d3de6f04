#include "SonaroHost/Playback/Playback.h"

#include "RenderThread.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"

#include <algorithm>
#include <string>
#include <thread>

namespace SonaroHost::Playback
{

namespace
{

constexpr double kLeastAhead = 0.005;
constexpr double kMostAhead = 1.0;
constexpr unsigned kLargestDeviceBlock = 16384;

std::int64_t CountAhead(Programme const& inProgramme, PlaybackSettings const& inSettings)
{
	double const ahead = inSettings.mAheadSeconds;
	// Written so that what is not a number fails it.
	if (!(ahead >= kLeastAhead && ahead <= kMostAhead))
	{
		Refuse("rendering " + FormatNumber(ahead) + " seconds ahead is out of range; use 0.005 to 1 second");
	}
	if (inSettings.mDeviceBlockFrames > kLargestDeviceBlock)
	{
		Refuse("blocks of " + std::to_string(inSettings.mDeviceBlockFrames) +
			   " samples are out of range; use at most " + std::to_string(kLargestDeviceBlock));
	}
	auto const frames = static_cast<std::int64_t>(ahead * inProgramme.mSampleRate);
	return std::max<std::int64_t>({frames, 2 * std::int64_t{inSettings.mDeviceBlockFrames}, 64});
}

DeviceFormat MakeDeviceFormat(Programme const& inProgramme, PlaybackSettings const& inSettings)
{
	constexpr std::int64_t kBlocksAhead = 4;
	DeviceFormat format;
	format.mSampleRate = inProgramme.mSampleRate;
	format.mChannels = static_cast<unsigned>(inProgramme.GetLayout().size());
	format.mBlockFrames = inSettings.mDeviceBlockFrames;
	if (format.mBlockFrames == 0)
	{
		format.mBlockFrames = static_cast<unsigned>(CountAhead(inProgramme, inSettings) / kBlocksAhead);
	}
	return format;
}

} // namespace

Playback::Playback(Programme const& inProgramme, OutputDevice& ioDevice, PlaybackSettings const& inSettings)
	: mDevice(ioDevice),
	  mFormat(MakeDeviceFormat(inProgramme, inSettings)),
	  mThread(Open(inProgramme, inSettings))
{
	mDevice.Start(mThread->GetFeed());
}

std::unique_ptr<RenderThread> Playback::Open(Programme const& inProgramme, PlaybackSettings const& inSettings)
{
	mDevice.Open(mFormat);
	// Blocks of the render thread are at most a quarter of what is kept filled: with half as much again, all that the device
	// asks for at once is always there.
	std::int64_t const burst = mDevice.GetBurstFrames();
	std::int64_t const block = mFormat.mBlockFrames;
	std::int64_t const ahead =
		std::max(CountAhead(inProgramme, inSettings), burst + std::max(block, burst / 2));
	std::int64_t const open = std::max(ahead / 2, std::min(burst, ahead * 3 / 4));
	return std::make_unique<RenderThread>(inProgramme, mDevice, mFormat,
		TransportSettings{ahead, open, inSettings.mMeters}, inSettings.mIsRealtime);
}

Playback::~Playback()
{
	mDevice.Stop();
}

void Playback::Play()
{
	if (mDevice.FindLoss())
	{
		Reopen();
	}
	mThread->ClearFailure();
	mThread->Post(PlayCommand{});
}

void Playback::Reopen()
{
	using namespace std::chrono_literals;
	constexpr std::chrono::milliseconds kLongestStop = 5000ms;
	mDevice.Stop();
	mThread->Post(StopCommand{});
	WaitUntilFilled(kLongestStop);
	mThread->GetFeed().DropUnheard();
	mDevice.Open(mFormat);
	mDevice.Start(mThread->GetFeed());
}

void Playback::Stop()
{
	mThread->Post(StopCommand{});
}

void Playback::Seek(std::int64_t inFrame)
{
	mThread->Post(SeekCommand{inFrame});
}

void Playback::SetLoop(std::optional<ProgrammeRange> const& inLoop)
{
	std::int64_t const frames = GetState().mFrames;
	if (inLoop && (inLoop->mFrames <= 0 || inLoop->mFirstFrame < 0 || inLoop->mFrames > frames ||
					  inLoop->mFirstFrame > frames - inLoop->mFrames))
	{
		Refuse("the loop has no length, or is not within the programme; choose another range");
	}
	mThread->SetLoop(inLoop);
}

void Playback::SetSpeed(double inSpeed)
{
	mThread->SetSpeed(inSpeed);
}

void Playback::Scrub(std::int64_t inFrame)
{
	mThread->Post(ScrubCommand{std::clamp<std::int64_t>(inFrame, 0, GetState().mFrames)});
}

void Playback::TakeOver(Programme const& inProgramme)
{
	if (inProgramme.mSampleRate != mFormat.mSampleRate || inProgramme.GetLayout().size() != mFormat.mChannels)
	{
		Refuse("cannot go on playing at " + std::to_string(inProgramme.mSampleRate) + " Hz in " +
			   GetLayoutName(inProgramme.GetLayout()) + ", since the device is open at " +
			   std::to_string(mFormat.mSampleRate) + " Hz with " + std::to_string(mFormat.mChannels) +
			   " channels; start the playback again");
	}
	mThread->TakeOver(inProgramme);
}

std::vector<std::string> Playback::TakeWarnings()
{
	return mThread->TakeWarnings();
}

bool Playback::MakeUpForLatency()
{
	return mThread->MakeUpForLatency();
}

PlaybackState Playback::GetState() const
{
	return mThread->GetState();
}

bool Playback::WaitUntilFilled(std::chrono::milliseconds inLongest) const
{
	constexpr std::chrono::microseconds kStep(50);
	auto const end = std::chrono::steady_clock::now() + inLongest;
	while (!mThread->IsFilled())
	{
		if (std::chrono::steady_clock::now() >= end)
		{
			return false;
		}
		std::this_thread::sleep_for(kStep);
	}
	return true;
}

} // namespace SonaroHost::Playback
