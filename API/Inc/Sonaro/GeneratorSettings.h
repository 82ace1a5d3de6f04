#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/IAudioSource.h"
#include "Sonaro/IOfflineAudioProcessor.h"
#include "Sonaro/Types.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <map>
#include <memory>
#include <vector>

// What the nodes that bring in audio are made with. mContext and mFrameRate, the sample rate of the node's
// output, have no default that would do: an empty context is refused with eNullPointer, an invalid rate with
// eInvalidArgument.
namespace SN
{

// See ISonaroFactory::CreateAudioStreamRenderer.
struct AudioStreamSettings
{
	// Stands for all channels of a source.
	static constexpr int kAllChannels = -1;

	InterfaceRef<IAudioRenderContext> mContext = {};
	// That of the source.
	FrameRate mFrameRate = {};
	// Required.
	InterfaceRef<IAudioSource> mSource = {};
	// Counted from 0, or kAllChannels.
	int mChannelIndex = kAllChannels;
	// Kept for the host; the stream always runs at the source's own speed.
	double mStreamSpeed = 1.0;
	// The host's object under which the context keeps the stream, so that a second request for it gives the
	// same node; empty for a stream of its own.
	InterfaceRef<UnknownBase> mKey = {};
};

// See ISonaroFactory::CreateAudioClipRenderer.
struct AudioClipSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Each generator with the channels that it feeds. Empty references are skipped.
	std::map<InterfaceRef<IAudioGenerator>, AudioChannelMap> mGenerators = {};
	// Of the clip.
	AudioChannelLayout mChannelLayout = {};
	// How far into the generators the clip begins, before it is multiplied by mSpeed.
	TickTime mStartOffset = kTimeZero;
	// A linear amplitude for the whole clip.
	float mGain = 1.0f;
	// Scales mStartOffset alone; what plays at another speed is the item around the clip. At 1, the ratio of
	// the generators' rate to mFrameRate takes its place.
	double mSpeed = 1.0;
};

// See ISonaroFactory::CreateAudioContentRenderer.
struct AudioContentSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// That of the media.
	FrameRate mMediaFrameRate = {};
	// The media; required.
	InterfaceRef<IAudioGenerator> mGenerator = {};
	// Whether mOffset counts.
	bool mHasOffset = false;
	// The media's time at time 0.
	TickTime mOffset = kTimeZero;
	// Where the media end; kept for the host.
	TickTime mContentEnd = kTimeMax;
	// The host's object under which the context keeps the node, one for each pair of rates; empty for a node of its
	// own.
	InterfaceRef<UnknownBase> mKey = {};
};

// See ISonaroFactory::CreateAudioContentMulticamRenderer.
struct AudioContentMulticamSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// That of the media.
	FrameRate mMediaFrameRate = {};
	// One for each angle, at least one.
	std::vector<InterfaceRef<IAudioGenerator>> mCameras = {};
	// The index of the angle that is heard.
	std::shared_ptr<zorvcore::threads::AtomicIntegral<int, 0>> mSelectedCamera =
		std::make_shared<zorvcore::threads::AtomicIntegral<int, 0>>();
	// Whether mOffset counts.
	bool mHasOffset = false;
	// The media's time at time 0.
	TickTime mOffset = kTimeZero;
	// Where the media end, in their time: with an offset, the end of all that is read ahead.
	TickTime mContentEnd = kTimeMax;
};

// See ISonaroFactory::CreateOfflineAudioProcessorAudioGenerator. The references are required: a call that needs an empty
// one raises the null-pointer exception.
struct OfflineAudioProcessorSettings
{
	InterfaceRef<IAudioGenerator> mGenerator = {};
	// From the source's layout to one whose first channel is processed.
	InterfaceRef<IAudioPanProcessor> mInputPanner = {};
	// From the layout of what the process gives to that of the generator.
	InterfaceRef<IAudioPanProcessor> mOutputPanner = {};
	FrameRate mFrameRate = {};
	// The process is given the time between them as its duration.
	TickTime mStartTime = kTimeZero;
	TickTime mEndTime = kTimeZero;
	InterfaceRef<IOfflineAudioProcessor> mProcessor = {};
};

} // namespace SN
