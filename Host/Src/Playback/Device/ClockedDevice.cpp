#include "SonaroHost/Playback/ClockedDevice.h"

#include "zorvcore/threads/CurrentThread.h"

#include <algorithm>
#include <chrono>

namespace SonaroHost::Playback
{

using Clock = std::chrono::steady_clock;

ClockedDevice::ClockedDevice(double inSpeed)
	: mSpeed(inSpeed)
{
}

ClockedDevice::~ClockedDevice() = default;

void ClockedDevice::Open(DeviceFormat const& inFormat)
{
	Stop();
	mFormat = inFormat;
	mBlock.assign(static_cast<std::size_t>(inFormat.mBlockFrames) * inFormat.mChannels, 0.0f);
	mIsLost.store(false, std::memory_order_release);
}

void ClockedDevice::Start(DeviceClient& ioClient)
{
	Stop();
	mClient = &ioClient;
	mIsStopping = false;
	if (mSpeed > 0.0)
	{
		mThread = std::thread([this] { Run(); });
	}
}

void ClockedDevice::Stop()
{
	{
		std::lock_guard const lock(mMutex);
		mIsStopping = true;
	}
	mStopping.notify_all();
	if (mThread.joinable())
	{
		mThread.join();
	}
	mClient = nullptr;
}

std::optional<std::string> ClockedDevice::FindLoss() const
{
	return mIsLost.load(std::memory_order_acquire) ? std::optional<std::string>("the device was disconnected")
												   : std::nullopt;
}

void ClockedDevice::Advance(std::int64_t inFrames)
{
	for (std::int64_t left = inFrames; left > 0 && mClient && !mIsLost.load(std::memory_order_acquire);)
	{
		auto const count = static_cast<unsigned>(std::min<std::int64_t>(left, mFormat.mBlockFrames));
		Pull(count);
		left -= count;
	}
}

void ClockedDevice::Run()
{
	// As devices' threads are: one that is late would ask for several blocks at once.
	constexpr int kRealtimePriority = 10;
	if (mSpeed > 1.0 || !zorvcore::threads::SetCurrentThreadRealtime(kRealtimePriority))
	{
		zorvcore::threads::SetCurrentThreadPriority(zorvcore::threads::ThreadPriority::kUrgent);
	}
	std::chrono::duration<double> const step(mFormat.mBlockFrames / (mFormat.mSampleRate * mSpeed));
	auto const period = std::chrono::duration_cast<Clock::duration>(step);
	Clock::time_point due = Clock::now();
	while (!mIsLost.load(std::memory_order_acquire))
	{
		Pull(mFormat.mBlockFrames);
		due = std::max(due + period, Clock::now() - std::chrono::seconds(1));
		if (!WaitUntil(due))
		{
			return;
		}
	}
}

void ClockedDevice::Pull(unsigned inFrames)
{
	mClient->Fill(mBlock.data(), inFrames);
	Take(mBlock.data(), inFrames);
}

bool ClockedDevice::WaitUntil(Clock::time_point inTime)
{
	std::unique_lock lock(mMutex);
	return !mStopping.wait_until(lock, inTime, [this] { return mIsStopping; });
}

} // namespace SonaroHost::Playback
