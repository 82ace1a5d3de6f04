#pragma once

#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/PanProcessorType.h"
#include "Support/FakeParameter.h"
#include "Support/Fakes.h"
#include "Support/Pull.h"

#include <functional>
#include <vector>

namespace SN::Testing
{

// The factory's ordinary maker at 48000 Hz; throws where it refuses.
InterfaceRef<IAudioPanProcessor> MakePanner(InterfaceRef<IAudioRenderContext> const& inContext,
	PanProcessorType inType, std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams = {});
// And the direct one.
InterfaceRef<IAudioPanProcessor> MakeDirectPanner(InterfaceRef<IAudioRenderContext> const& inContext,
	PanProcessorType inType, int inOutputChannels, AudioChannelMatrix const& inMatrix,
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams = {});

// And whichever of both makes this type, at any rate; it pans to channels 0 and 1 where it has to be told.
InterfaceRef<IAudioPanProcessor> MakeAnyPanner(InterfaceRef<IAudioRenderContext> const& inContext,
	PanProcessorType inType, std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
	FrameRate const& inFrameRate = k48000Hz);
// How many controls a type has.
unsigned GetNumControls(PanProcessorType inType);

struct PanRange
{
	long long mStartFrame = 0;
	unsigned mFrames = 0;
	unsigned mInputs = 1;
	unsigned mOutputs = 2;
	// Samples between two updates of the parameters, counted from the start of the range.
	unsigned mControlInterval = 0x10000;
	FrameRate mFrameRate = k48000Hz;
};

// From frame 0 on, of all channels of a panner.
PanRange RangeOf(IAudioPanProcessor& ioPanner, unsigned inFrames);

// A channel of the input that is flagged at a frame; a block is cut where this changes.
using SilentAt = std::function<bool(unsigned long long inChannel, long long inFrame)>;

// Pushes the range through a panner block by block, as the chain of a track does: parameters are sampled
// on the grid of the control interval, and no block crosses it. Flagged channels hold stale samples, and
// the output begins stale and flagged. Audible samples come out.
Samples RunPanner(IAudioPanProcessor& ioPanner, PanRange const& inRange, BlockSizes const& inBlockSizes,
	SampleFunction const& inInput, SilentAt const& inSilentAt = {});

// One block of a constant 1 on the inputs that the mask does not silence: the gains that a panner stands
// at, by output channel.
std::vector<float> GetGainsAt(
	IAudioPanProcessor& ioPanner, PanRange const& inRange, unsigned long long inSilentInputs = 0);

} // namespace SN::Testing
