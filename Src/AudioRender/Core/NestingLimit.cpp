#include "AudioRender/Core/NestingLimit.h"

#include "AudioRender/Core/Module.h"
#include "Sonaro/AudioUtilities.h"
#include "zorvcore/debug/DebugDatabase.h"

#include <atomic>
#include <cstdlib>
#include <string>

namespace SN
{

namespace
{

std::atomic<unsigned> sMaxNestableSequenceInstances{200};

} // namespace

void ReadMaxNestableSequenceInstances()
{
	std::string const entry = zorvcore::debug::DebugDatabase::Instance().GetEntry(
		"OQ.Sonaro.ComplexityBeforeRender", std::to_string(sMaxNestableSequenceInstances));
	sMaxNestableSequenceInstances = static_cast<unsigned>(std::strtoul(entry.c_str(), nullptr, 10));
}

unsigned GetMaxNestableSequenceInstances()
{
	EnsureModule();
	return sMaxNestableSequenceInstances;
}

} // namespace SN
