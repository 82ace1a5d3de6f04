#pragma once

#include "Sonaro/DelayDependency.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/IAudioSource.h"
#include "Sonaro/IAudioTrackRenderableItem.h"
#include "Sonaro/IRenderableAudioComponentParam.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <deque>
#include <map>
#include <memory>
#include <vector>

// The makers of the factory, at 48000 Hz and in mono unless they say otherwise; each expects success.
namespace SN::Testing
{

using Context = InterfaceRef<IAudioRenderContext>;
using Generator = InterfaceRef<IAudioGenerator>;
using Processors = std::vector<InterfaceRef<IAudioProcessor>>;
using Parameters = std::vector<InterfaceRef<IRenderableAudioComponentParam>>;
using Mute = zorvcore::threads::AtomicIntegral<int>;

// Of a clip track or a mix track.
struct TrackSettings
{
	Processors mProcessors = {};
	InterfaceRef<IAudioPanProcessor> mPanner = {};
	InterfaceRef<UnknownBase> mOwner = {};
	std::shared_ptr<Mute> mMute = {};
	AudioChannelLayout mLayout = VX::kAudioChannelLayout_Mono;
};
Generator MakeClipTrack(Context const& inContext, AudioTrackRenderableItemList const& inItems,
	TrackSettings const& inSettings = {});
Generator MakeMixTrack(
	Context const& inContext, Generator const& inSource, TrackSettings const& inSettings = {});

// Of a realtime item; the shift of its time transform is in frames.
struct ItemSettings
{
	Processors mProcessors = {};
	// None in mono where there is none.
	InterfaceRef<IAudioPanProcessor> mPanner = {};
	double mSpeed = 1.0;
	long long mShift = 0;
	TickTime mOffset = {};
};
Generator MakeItem(Context const& inContext, Generator const& inSource, ItemSettings const& inSettings = {});

struct ClipSettings
{
	unsigned mChannels = 1;
	TickTime mStartOffset = {};
	float mGain = 1.0f;
	double mSpeed = 1.0;
};
Generator MakeClip(Context const& inContext, std::map<Generator, AudioChannelMap> const& inGenerators,
	ClipSettings const& inSettings = {});

Generator MakeStream(Context const& inContext, InterfaceRef<IAudioSource> const& inSource,
	int inChannelIndex = -1, InterfaceRef<UnknownBase> const& inKey = {});
Generator MakeSilence(AudioChannelLayout const& inLayout = {});
Generator MakeJoin(Context const& inContext, Generator const& inFirst, Generator const& inSecond,
	InterfaceRef<IAudioProcessor> const& inProcessor, double inFirstScale = 1.0, double inSecondScale = 1.0);
Generator MakeInlet(Context const& inContext, std::vector<InterfaceRef<UnknownBase>> const& inInputs);
Generator MakeGroup(Context const& inContext, std::vector<Generator> const& inTracks,
	std::deque<std::vector<DelayDependency>> const& inWaits, std::vector<TickTime> const& inDelays,
	InterfaceRef<UnknownBase> const& inOwner = {});

InterfaceRef<IAudioProcessor> MakeFader(Context const& inContext, Parameters const& inParameters);
InterfaceRef<IAudioProcessor> MakeSend(Context const& inContext, InterfaceRef<UnknownBase> const& inTarget,
	Parameters const& inParameters, InterfaceRef<IAudioPanProcessor> const& inPanner);
InterfaceRef<IAudioProcessor> MakeMatrix(Context const& inContext, AudioChannelMatrix const& inMatrix);

} // namespace SN::Testing
