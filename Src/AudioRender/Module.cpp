#include "AudioRender/Core/Module.h"

#include "Prefetch/AudioPrefetchModule.h"
#include "Sonaro/AudioUtilities.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "Time/Scaler/AudioTimeScalerFactory.h"
#include "zorvcore/config/InitializerRegistrar.h"
#include "zorvcore/debug/DebugDatabase.h"

#include <atomic>
#include <cstdlib>
#include <string>

namespace SN
{

namespace
{

std::atomic<unsigned> sMaxNestableSequenceInstances{200};

// Takes the limit from the debug database, where the default is the limit in force.
void ReadMaxNestableSequenceInstances()
{
	std::string const entry = zorvcore::debug::DebugDatabase::Instance().GetEntry(
		"OQ.Sonaro.ComplexityBeforeRender", std::to_string(sMaxNestableSequenceInstances));
	sMaxNestableSequenceInstances = static_cast<unsigned>(std::strtoul(entry.c_str(), nullptr, 10));
}

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

unsigned GetMaxNestableSequenceInstances()
{
	EnsureModule();
	return sMaxNestableSequenceInstances;
}

} // namespace SN
