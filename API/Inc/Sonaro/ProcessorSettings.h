#pragma once

#include "Sonaro/IAudioFilter.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/IRenderableAudioComponentParam.h"
#include "Sonaro/PanProcessorType.h"
#include "Sonaro/Types.h"

#include <vector>

// What panners, effects and sends are made with. mContext and mFrameRate, the sample rate of the audio that they are
// given, have no default that would do: an empty context is refused with eNullPointer, an invalid rate with
// eInvalidArgument.
namespace SN
{

using AudioComponentParams = std::vector<InterfaceRef<IRenderableAudioComponentParam>>;

// See ISonaroFactory::CreateAudioPanProcessorRenderer.
struct AudioPanProcessorSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	PanProcessorType mType = kPanStereoToStereo;
	// Reported with each of the controls by ILiveAudioParameterOwner; its meaning is the host's.
	bool mActionFlag = false;
	// The controls, in the order of the type.
	AudioComponentParams mParams = {};
};

// See ISonaroFactory::CreateDirectAudioPanProcessorRenderer.
struct DirectAudioPanProcessorSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	PanProcessorType mType = kPanMonoToAdaptive;
	// Of the adaptive types, up to 64; kPanMonoTo51 has six.
	int mOutputChannels = 2;
	// Which output channels each input channel may reach.
	AudioChannelMatrix mMatrix = {};
	// Reported with each of the controls by ILiveAudioParameterOwner; its meaning is the host's.
	bool mActionFlag = false;
	AudioComponentParams mParams = {};
};

// See ISonaroFactory::CreateDefaultMultiChannelAudioPanProcessorRenderer.
struct DefaultMultiChannelAudioPanProcessorSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Counts when it has an entry for each channel of the smaller layout; otherwise channels go by position.
	AudioChannelMatrix mMatrix = {};
	// Reported with each of the controls by ILiveAudioParameterOwner; its meaning is the host's.
	bool mActionFlag = false;
	AudioComponentParams mParams = {};
	AudioChannelLayout mInputLayout = {};
	AudioChannelLayout mOutputLayout = {};
};

// See ISonaroFactory::CreateAudioFilterRenderer.
struct AudioFilterSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// Required: an empty one raises the null-pointer exception.
	InterfaceRef<IAudioFilter> mFilter = {};
	// Kept initialized beside the first, and asked where the effect processes whole stretches; may be empty.
	InterfaceRef<IAudioFilter> mSecondFilter = {};
	// Reported with each of the controls by ILiveAudioParameterOwner; its meaning is the host's.
	bool mActionFlag = false;
	// The bypass, then the effect's parameters in its order.
	AudioComponentParams mParams = {};
	// Of what passes. Required: an empty one is refused with eInvalidArgument.
	AudioChannelLayout mChannelLayout = {};
};

// See ISonaroFactory::CreateAudioSendRenderer.
struct AudioSendSettings
{
	InterfaceRef<IAudioRenderContext> mContext = {};
	FrameRate mFrameRate = {};
	// The host's object under which the context keeps the send, for others to find; may be empty.
	InterfaceRef<UnknownBase> mSendTarget = {};
	// The gain, and whether the send is off.
	AudioComponentParams mParams = {};
	// From the track's layout to that of the destination. Required: an empty one raises the null-pointer
	// exception.
	InterfaceRef<IAudioPanProcessor> mPanner = {};
};

// See IAudioBinauralizer.
struct AudioBinauralizerSettings
{
	// In hertz.
	unsigned long long mSampleRate = 48000;
	// The largest block.
	unsigned mMaxFrames = 512;
	unsigned long long mInputChannels = 4;
	unsigned mOutputChannels = 2;
	// Where the listener's head is turned, in degrees.
	float mPitch = 0.0f;
	float mYaw = 0.0f;
	float mRoll = 0.0f;
	bool mBypass = false;
};

} // namespace SN
