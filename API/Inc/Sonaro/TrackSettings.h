#pragma once

#include "Sonaro/DelayDependency.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/IAudioTrackRenderableItem.h"
#include "Sonaro/IAudioTransition.h"
#include "Sonaro/IdentityTimeTransform.h"
#include "Sonaro/Types.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <deque>
#include <memory>
#include <vector>

// What items, tracks and sequences are made with. mContext and mFrameRate, the sample rate of the sequence, have
// no default that would do: an empty context is refused with eNullPointer, an invalid rate with
// eInvalidArgument. Times are those of the sequence unless a member says otherwise.
namespace SN
{

// See ISonaroFactory::CreateRealtimeAudioClipTrackItemRenderer.
struct RealtimeAudioClipTrackItemSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Required.
	InterfaceRef<IAudioGenerator> mSource = {};
	// In the order of processing, on the source's channels and at its speed.
	std::vector<InterfaceRef<IAudioProcessor>> mProcessors = {};
	// From the source's layout to the track's. ISonaroFactory refuses an empty one with eNullPointer; where
	// GraphFactory is given none, the source's channels go on as they are.
	InterfaceRef<IAudioPanProcessor> mPanProcessor = {};
	// The source's samples for each sample of the track; pitch follows. A not-a-number is refused with
	// eInvalidArgument.
	double mSpeed = 1.0;
	// From the item's time to the source's, before mSpeed. Required.
	InterfaceRef<VX::ITimeTransform> mTimeTransform = zorvcore::classref::MakeObject<IdentityTimeTransform>();
	// Added to the item's time, before the transform: by how much the processors delay.
	TickTime mTimeOffset = kTimeZero;
};

// See ISonaroFactory::CreateTimeAlteredAudioClipTrackItemRenderer.
struct TimeAlteredAudioClipTrackItemSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Required.
	InterfaceRef<IAudioGenerator> mGenerator = {};
	// In the order of processing, on the source's channels and at its speed.
	std::vector<InterfaceRef<IAudioProcessor>> mProcessors = {};
	// From the source's layout to the track's. ISonaroFactory wants one; where GraphFactory is given none, the source's
	// channels go on as they are.
	InterfaceRef<IAudioPanProcessor> mPanProcessor = {};
	// The source's samples for each sample of the track, above 0.
	double mSpeed = 1.0;
	// Plays the source from its end to its beginning.
	bool mReverse = false;
	bool mMaintainPitch = false;
	// Kept for hosts that map times themselves: the item plays at one speed, and asks it for nothing.
	InterfaceRef<VX::ITimeTransform> mTimeTransform = zorvcore::classref::MakeObject<IdentityTimeTransform>();
	// Added to the item's time: only where that makes a first request begin before time 0 is it heard, as media that
	// begins earlier.
	TickTime mTimeOffset = kTimeZero;
	// Added to the clip's time at which parameters are sampled.
	TickTime mSecondTimeOffset = kTimeZero;
	// How much of mSpeed the time scaler makes up where the pitch is kept, from 0.1 to 10; a resampler does the rest.
	// 1 where it is not.
	double mScalerSpeed = 1.0;
	// Where the item lies in its sequence: in reverse it begins to read as far into the source as it is long, times
	// mSpeed / mScalerSpeed.
	TickTime mItemStartTime = kTimeZero;
	TickTime mItemEndTime = kTimeZero;
};

// See ISonaroFactory::CreateAudioMixRenderer.
struct AudioMixSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Both generators and the processor are required, or the maker throws AudioMixRendererCreateFailure, a
	// zorv_exception.
	InterfaceRef<IAudioGenerator> mFirst = {};
	// The first generator's time for a unit of the item's.
	double mFirstTimeScale = 1.0;
	InterfaceRef<IAudioGenerator> mSecond = {};
	// The second generator's time for a unit of the item's.
	double mSecondTimeScale = 1.0;
	InterfaceRef<IAudioProcessor> mProcessor = {};
};

// See ISonaroFactory::CreateAudioTransitionRenderer.
struct AudioTransitionSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Required, as are both generators.
	InterfaceRef<IAudioTransition> mTransition = {};
	// Handed to each call of mTransition, which knows what they mean.
	AudioTransitionParameters mParameters = {};
	InterfaceRef<IAudioGenerator> mOutgoing = {};
	InterfaceRef<IAudioGenerator> mIncoming = {};
	// Where each generator's own time is 0.
	TickTime mOutgoingStartTime = kTimeZero;
	TickTime mIncomingStartTime = kTimeZero;
	// The time of the clips at which the transition begins.
	TickTime mTransitionStartTime = kTimeZero;
	// Above 0.
	TickTime mTransitionDuration = kTimeZero;
};

// See ISonaroFactory::CreateAudioClipTrackRenderer.
struct AudioClipTrackSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Sorted and flush, framed by a leading and a trailing item that cover all time which is asked for.
	AudioTrackRenderableItemList mItems = {};
	// The host's object of the track, by which an inlet or a cache finds it in the context; may be empty.
	InterfaceRef<UnknownBase> mOwner = {};
	// Not 0 while muted; null for never. Of a playback at the top level the host may change it at any time, on
	// any thread; elsewhere it counts as it stands.
	std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> mMute = {};
	// In the order of processing, on mChannels.
	std::vector<InterfaceRef<IAudioProcessor>> mProcessors = {};
	// To the layout of what the track feeds; empty where that is mChannels.
	InterfaceRef<IAudioPanProcessor> mPanProcessor = {};
	// Of the track itself.
	AudioChannelLayout mChannels = {};
};

// See ISonaroFactory::CreateAudioMixTrackRenderer. The members that a track of items has too are the same here.
struct AudioMixTrackSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Required; mostly an inlet.
	InterfaceRef<IAudioGenerator> mSource = {};
	InterfaceRef<UnknownBase> mOwner = {};
	std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> mMute = {};
	std::vector<InterfaceRef<IAudioProcessor>> mProcessors = {};
	InterfaceRef<IAudioPanProcessor> mPanProcessor = {};
	AudioChannelLayout mChannels = {};
};

// See ISonaroFactory::CreateAudioTrackGroupRenderer.
struct AudioTrackGroupSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Each track before those that it feeds; the last one is the output. Without any the group is silent.
	std::vector<InterfaceRef<IAudioGenerator>> mGenerators = {};
	// For each track, how long each of its sends waits, and last its output. What is missing does not wait.
	std::deque<std::vector<DelayDependency>> mDelayDependencies = {};
	// How far ahead of the sequence's time each track is asked. What is missing is 0.
	std::vector<TickTime> mGeneratorDelays = {};
	// Of the output.
	AudioChannelLayout mChannels = {};
	// The host's object of the sequence, for CreateAudioTrackGroupRendererViaCloning; may be empty.
	InterfaceRef<UnknownBase> mOwner = {};
};

} // namespace SN
