#pragma once

#include "MessageRing.h"

#include <lv2/core/lv2.h>
#include <lv2/worker/worker.h>

#include <atomic>
#include <cstdint>
#include <semaphore>
#include <thread>

namespace SonaroHost::Effects
{

// Does the work that one instance of a plugin must not do while it processes, such as reading a file.
//
// At once  In an export the work is done within the request, so that what is heard does not depend on how fast it is.
// Thread   In a playback a thread of its own does it.
// Threads  DeliverResponses and the plugin's requests: the one that runs the instance.
class PluginWorker
{
public:
	explicit PluginWorker(bool inHasThread);
	// Waits for the work that goes on.
	~PluginWorker();
	PluginWorker(PluginWorker const&) = delete;
	PluginWorker& operator=(PluginWorker const&) = delete;

	// What the feature of the name LV2_WORKER__schedule offers.
	LV2_Worker_Schedule* GetSchedule() { return &mSchedule; }
	// After the instance was made. inInterface: null for a plugin without work.
	void Start(LV2_Handle inPlugin, LV2_Worker_Interface const* inInterface);
	// To be called after each run of the instance: hands it what its work gave.
	void DeliverResponses();

private:
	LV2_Worker_Status Schedule(std::uint32_t inSize, void const* inData);
	LV2_Worker_Status Respond(std::uint32_t inSize, void const* inData);
	void DoWork(std::uint32_t inSize, void const* inData);
	void RunThread();

	bool mHasThread;
	LV2_Worker_Schedule mSchedule;
	LV2_Handle mPlugin = nullptr;
	LV2_Worker_Interface const* mInterface = nullptr;
	MessageRing mRequests;
	MessageRing mResponses;
	std::counting_semaphore<> mWaiting{0};
	std::atomic<bool> mIsEnding{false};
	std::thread mThread;
};

} // namespace SonaroHost::Effects
