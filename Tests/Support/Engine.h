#pragma once

// What the tests of the engine share: the factory, contexts, fakes, buffers, and the names that they use.

#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Sonaro/SonaroFactory.h"
#include "Support/Buffers.h"
#include "Support/Common.h"
#include "Support/Contexts.h"
#include "Support/FakeItem.h"
#include "Support/Nodes.h"
#include "Support/Panning.h"
#include "Support/SameBits.h"
#include "Support/SimpleGenerator.h"
#include "Support/Threads.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvcore/config/Exceptions.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

using namespace Testing;
using ::testing::ElementsAre;
using ::testing::Message;
using zorvcore::classref::MakeObject;

} // namespace SN
