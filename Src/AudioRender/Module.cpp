#include "AudioRender/Core/Module.h"

#include "AudioRender/Core/NestingLimit.h"
#include "Prefetch/AudioPrefetchModule.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "Time/Scaler/AudioTimeScalerFactory.h"
#include "zorvcore/config/InitializerRegistrar.h"

namespace SN
{

namespace
{

bool StartModule()
{
	ReadMaxNestableSequenceInstances();
	AudioPrefetch::Startup();
	AudioTimeScalerFactory::InstallDefault();
	return true;
}

void StopModule()
{
	// Prefetch ends first: while it ends, it may put a request to the waveform queue, and make it anew.
	AudioPrefetch::Shutdown();
	AudioWaveformQueue::Shutdown();
	AudioTimeScalerFactory::Uninstall();
}

[[maybe_unused]] bool const sIsStartedWithTheLibrary = (EnsureModule(), true);

} // namespace

void EnsureModule()
{
	static zorvcore::config::InitializerRegistrar const sModule("Sonaro", 0, &StartModule, &StopModule);
}

} // namespace SN
