#pragma once

#include "Sonaro/Nonblocking.h"
#include "Vexilon/AudioChannelType.h"
#include "zorvcore/Export.h"
#include "zorvcore/ResultCodes.h"
#include "zorvcore/allocator/MemoryRecycler.h"
#include "zorvcore/classref/Implements.h"
#include "zorvcore/classref/InterfaceRef.h"
#include "zorvcore/classref/Unknown.h"
#include "zorvcore/utility/ImmutableString.h"
#include "zorvmediatypes/AudioChannelDescription.h"
#include "zorvmediatypes/FrameRate.h"
#include "zorvmediatypes/RenderQuality.h"
#include "zorvmediatypes/TickTime.h"

#include <map>
#include <set>

// Marks what libsonaro offers to hosts.
#define SONARO_API ZORV_API

// What every node hands on; those who look into one include zorvaudiodsp/AudioBuffer.h.
namespace dsp
{
class AudioBuffer;
}

// The vocabulary of the companion libraries, under the names that the engine uses.
namespace SN
{

using zorvcore::classref::Identifier;
using zorvcore::classref::Implements;
using zorvcore::classref::InterfaceRef;
using zorvcore::classref::Unknown;
using zorvcore::classref::UnknownBase;
using zorvcore::utility::Guid;
using zorvcore::utility::ImmutableString;

using zorvcore::eFailure;
using zorvcore::eInvalidArgument;
using zorvcore::eNotImplemented;
using zorvcore::eNullPointer;
using zorvcore::kSuccess;
using zorvcore::ResultSucceeded;

using zorvmediatypes::AudioChannelDescription;
using zorvmediatypes::AudioChannelLayout;
using zorvmediatypes::FrameRate;
using zorvmediatypes::kTime_Invalid;
using zorvmediatypes::kTimeMax;
using zorvmediatypes::kTimeNotATime;
using zorvmediatypes::kTimeZero;
using zorvmediatypes::RenderQuality;
using zorvmediatypes::TickTime;

using VX::AudioChannelType;

// Which channel of a generator feeds which channel of a clip: from the channel in the clip's output to
// the channel of the generator.
using AudioChannelMap = std::map<unsigned long long, unsigned long long>;

// Routing between channels: from an input channel to the output channels that it feeds.
using AudioChannelMatrix = std::map<unsigned long long, std::set<unsigned long long>>;

} // namespace SN
