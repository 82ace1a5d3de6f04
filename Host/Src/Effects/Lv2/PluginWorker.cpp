#include "PluginWorker.h"

namespace SonaroHost::Effects
{

namespace
{

constexpr std::size_t kRingBytes = 1 << 16;

} // namespace

PluginWorker::PluginWorker(bool inHasThread)
	: mHasThread(inHasThread),
	  mSchedule{this, [](LV2_Worker_Schedule_Handle inThis, std::uint32_t inSize, void const* inData)
		  { return static_cast<PluginWorker*>(inThis)->Schedule(inSize, inData); }},
	  mRequests(kRingBytes),
	  mResponses(kRingBytes)
{
}

PluginWorker::~PluginWorker()
{
	if (mThread.joinable())
	{
		mIsEnding = true;
		mWaiting.release();
		mThread.join();
	}
}

void PluginWorker::Start(LV2_Handle inPlugin, LV2_Worker_Interface const* inInterface)
{
	mPlugin = inPlugin;
	mInterface = inInterface;
	if (mHasThread && mInterface)
	{
		mThread = std::thread([this] { RunThread(); });
	}
}

void PluginWorker::DeliverResponses()
{
	if (!mInterface)
	{
		return;
	}
	std::uint32_t size = 0;
	while (void const* const data = mResponses.Read(size))
	{
		if (mInterface->work_response)
		{
			mInterface->work_response(mPlugin, size, data);
		}
	}
	if (mInterface->end_run)
	{
		mInterface->end_run(mPlugin);
	}
}

LV2_Worker_Status PluginWorker::Schedule(std::uint32_t inSize, void const* inData)
{
	if (!mInterface)
	{
		return LV2_WORKER_ERR_UNKNOWN;
	}
	if (!mThread.joinable())
	{
		DoWork(inSize, inData);
		return LV2_WORKER_SUCCESS;
	}
	if (!mRequests.Write(inData, inSize))
	{
		return LV2_WORKER_ERR_NO_SPACE;
	}
	mWaiting.release();
	return LV2_WORKER_SUCCESS;
}

LV2_Worker_Status PluginWorker::Respond(std::uint32_t inSize, void const* inData)
{
	return mResponses.Write(inData, inSize) ? LV2_WORKER_SUCCESS : LV2_WORKER_ERR_NO_SPACE;
}

void PluginWorker::DoWork(std::uint32_t inSize, void const* inData)
{
	mInterface->work(
		mPlugin,
		[](LV2_Worker_Respond_Handle inThis, std::uint32_t inResponseSize, void const* inResponse)
		{ return static_cast<PluginWorker*>(inThis)->Respond(inResponseSize, inResponse); },
		this, inSize, inData);
}

void PluginWorker::RunThread()
{
	for (;;)
	{
		mWaiting.acquire();
		if (mIsEnding)
		{
			return;
		}
		std::uint32_t size = 0;
		if (void const* const data = mRequests.Read(size))
		{
			DoWork(size, data);
		}
	}
}

} // namespace SonaroHost::Effects
