#pragma once

#include "Sonaro/AudioBinauralizerFactory.h"
#include "Sonaro/GeneratorSettings.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/ProcessorSettings.h"
#include "Sonaro/RenderContextSettings.h"
#include "Sonaro/SonaroFactory.h"
#include "Sonaro/TrackSettings.h"
#include "zorvcore/config/Exceptions.h"

#include <concepts>
#include <string>
#include <utility>
#include <vector>

namespace SN
{

// What GraphFactory does with a refusal unless the host has another wish: it throws the exception of the
// companion libraries, which carries the result code.
struct ThrowRefusal
{
	[[noreturn]] void operator()(int inResult, char const* inWhat) const
	{
		throw zorvcore::config::zorv_exception(
			{}, 0, inResult, std::string("the render engine could not create ") + inWhat);
	}
};

// The maker of every node as a host's code wants it, over ISonaroFactory: each creator takes one struct with
// defaults, or the few arguments that it has anyway, and returns what it has made.
//
//     SN::GraphFactory const factory;
//     auto const context = factory.CreateAudioRenderContext({.mMaxBlockSize = 1024});
//
// Errors   A failure is handed to inRefuse with its code, one of ResultCodes.h, and a word for what was to be
//          made, as in "a clip". What inRefuse throws reaches the caller; where it returns, so does the
//          creator, with an empty reference. Which failures there are stands at ISonaroFactory's creators.
//          Exceptions of the engine pass through.
// Threads  On the thread that owns the context. Copies share the one factory of the process.
// Kinds    What differs from another one in name alone has no creator here.
template <std::invocable<int, char const*> Refuse = ThrowRefusal>
class GraphFactory
{
public:
	explicit GraphFactory(Refuse inRefuse = Refuse(),
		InterfaceRef<ISonaroFactory> const& inFactory = SonaroFactory::CreateClassRef())
		: mRefuse(std::move(inRefuse)),
		  mFactory(inFactory)
	{
	}

	InterfaceRef<IAudioRenderContext> CreateAudioRenderContext(
		RenderContextSettings const& inSettings = {}) const
	{
		return Make<IAudioRenderContext>("a render context", &ISonaroFactory::CreateAudioRenderContext,
			inSettings.mMaxBlockSize, inSettings.mPrefetchEnabled, inSettings.mContextOption,
			inSettings.mRangeStart, inSettings.mRangeEnd, inSettings.mControlInterval,
			inSettings.mMeterInterval, inSettings.mPrefetcher, inSettings.mRenderName,
			inSettings.mFaderParamFlag, inSettings.mPannerParamFlag, inSettings.mFilterParamFlag,
			inSettings.mSendParamFlag, inSettings.mRenderQuality);
	}

	InterfaceRef<IAudioRenderContext> CreateAudioRenderContextForPrefetchThread(
		InterfaceRef<IAudioRenderContext> const& inSource) const
	{
		InterfaceRef<IAudioRenderContext> context;
		Check(mFactory->CreateAudioRenderContextForPrefetchThread(inSource, context), "a render context");
		return context;
	}

	InterfaceRef<IAudioGenerator> CreateAudioStreamRenderer(AudioStreamSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a stream", &ISonaroFactory::CreateAudioStreamRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mSource, inSettings.mChannelIndex,
			inSettings.mStreamSpeed, inSettings.mKey);
	}

	InterfaceRef<IAudioGenerator> CreateAudioClipRenderer(AudioClipSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a clip", &ISonaroFactory::CreateAudioClipRenderer, inSettings.mContext,
			inSettings.mFrameRate, inSettings.mGenerators, inSettings.mChannelLayout, inSettings.mStartOffset,
			inSettings.mGain, inSettings.mSpeed);
	}

	InterfaceRef<IAudioGenerator> CreateAudioContentRenderer(AudioContentSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a piece of media", &ISonaroFactory::CreateAudioContentRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mMediaFrameRate, inSettings.mGenerator,
			inSettings.mHasOffset, inSettings.mOffset, inSettings.mContentEnd, inSettings.mKey);
	}

	InterfaceRef<IAudioGenerator> CreateAudioContentMulticamRenderer(
		AudioContentMulticamSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a multicam clip", &ISonaroFactory::CreateAudioContentMulticamRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mMediaFrameRate, inSettings.mCameras,
			inSettings.mSelectedCamera, inSettings.mHasOffset, inSettings.mOffset, inSettings.mContentEnd);
	}

	InterfaceRef<IAudioGenerator> CreateSilentRenderer(AudioChannelLayout const& inLayout) const
	{
		return Make<IAudioGenerator>("silence", &ISonaroFactory::CreateSilentRenderer, inLayout);
	}

	InterfaceRef<IAudioGenerator> CreateOfflineAudioProcessorAudioGenerator(
		OfflineAudioProcessorSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("an offline process",
			&ISonaroFactory::CreateOfflineAudioProcessorAudioGenerator, inSettings.mGenerator,
			inSettings.mInputPanner, inSettings.mOutputPanner, inSettings.mFrameRate, inSettings.mStartTime,
			inSettings.mEndTime, inSettings.mProcessor);
	}

	InterfaceRef<IAudioGenerator> CreateAlignToFrameRateAudioGeneratorDecorator(
		InterfaceRef<IAudioGenerator> const& inGenerator, FrameRate const& inFrameRate) const
	{
		return Make<IAudioGenerator>("a decorator",
			&ISonaroFactory::CreateAlignToFrameRateAudioGeneratorDecorator, inGenerator, inFrameRate);
	}

	// The item gets its place by IAudioTrackRenderableItem::Init.
	InterfaceRef<IAudioGenerator> CreateRealtimeAudioClipTrackItemRenderer(
		RealtimeAudioClipTrackItemSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("an item", &ISonaroFactory::CreateRealtimeAudioClipTrackItemRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mSource, inSettings.mProcessors,
			GetPanProcessor(inSettings, inSettings.mSource), inSettings.mSpeed, inSettings.mTimeTransform,
			inSettings.mTimeOffset);
	}

	// The item gets its place by IAudioTrackRenderableItem::Init.
	InterfaceRef<IAudioGenerator> CreateTimeAlteredAudioClipTrackItemRenderer(
		TimeAlteredAudioClipTrackItemSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("an item", &ISonaroFactory::CreateTimeAlteredAudioClipTrackItemRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mGenerator, inSettings.mProcessors,
			GetPanProcessor(inSettings, inSettings.mGenerator), inSettings.mSpeed, inSettings.mReverse,
			inSettings.mMaintainPitch, inSettings.mTimeTransform, inSettings.mTimeOffset,
			inSettings.mSecondTimeOffset, inSettings.mScalerSpeed, inSettings.mItemStartTime,
			inSettings.mItemEndTime);
	}

	// As for a plain item: its place comes by IAudioTrackRenderableItem::Init.
	InterfaceRef<IAudioGenerator> CreateAudioMixRenderer(AudioMixSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a mix", &ISonaroFactory::CreateAudioMixRenderer, inSettings.mContext,
			inSettings.mFrameRate, inSettings.mFirst, inSettings.mFirstTimeScale, inSettings.mSecond,
			inSettings.mSecondTimeScale, inSettings.mProcessor);
	}

	// As for a plain item: its place comes by IAudioTrackRenderableItem::Init.
	InterfaceRef<IAudioGenerator> CreateAudioTransitionRenderer(
		AudioTransitionSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a transition", &ISonaroFactory::CreateAudioTransitionRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mTransition, inSettings.mParameters,
			inSettings.mOutgoing, inSettings.mIncoming, inSettings.mOutgoingStartTime,
			inSettings.mIncomingStartTime, inSettings.mTransitionStartTime, inSettings.mTransitionDuration);
	}

	InterfaceRef<IAudioGenerator> CreateAudioClipTrackRenderer(AudioClipTrackSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a track", &ISonaroFactory::CreateAudioClipTrackRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mItems, inSettings.mOwner,
			inSettings.mMute, inSettings.mProcessors, inSettings.mPanProcessor, inSettings.mChannels);
	}

	InterfaceRef<IAudioGenerator> CreateAudioMixTrackRenderer(AudioMixTrackSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a submix", &ISonaroFactory::CreateAudioMixTrackRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mSource, inSettings.mOwner,
			inSettings.mMute, inSettings.mProcessors, inSettings.mPanProcessor, inSettings.mChannels);
	}

	InterfaceRef<IAudioGenerator> CreateAudioTrackInletRenderer(
		InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		std::vector<InterfaceRef<UnknownBase>> const& inInputs, AudioChannelLayout const& inChannels) const
	{
		return Make<IAudioGenerator>("an inlet", &ISonaroFactory::CreateAudioTrackInletRenderer, inContext,
			inFrameRate, inInputs, inChannels);
	}

	InterfaceRef<IAudioGenerator> CreateAudioTrackGroupRenderer(
		AudioTrackGroupSettings const& inSettings) const
	{
		return Make<IAudioGenerator>("a sequence", &ISonaroFactory::CreateAudioTrackGroupRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mGenerators, inSettings.mDelayDependencies,
			inSettings.mGeneratorDelays, inSettings.mChannels, inSettings.mOwner);
	}

	// Where the owner has no group at this depth, the refusal has the code -1.
	InterfaceRef<IAudioGenerator> CreateAudioTrackGroupRendererViaCloning(
		InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		InterfaceRef<UnknownBase> const& inOwner) const
	{
		return Make<IAudioGenerator>("one more instance of a sequence",
			&ISonaroFactory::CreateAudioTrackGroupRendererViaCloning, inContext, inFrameRate, inOwner);
	}

	InterfaceRef<IAudioPanProcessor> CreateAudioPanProcessorRenderer(
		AudioPanProcessorSettings const& inSettings) const
	{
		return Make<IAudioPanProcessor>("a panner", &ISonaroFactory::CreateAudioPanProcessorRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mType, inSettings.mActionFlag,
			inSettings.mParams);
	}

	InterfaceRef<IAudioPanProcessor> CreateDirectAudioPanProcessorRenderer(
		DirectAudioPanProcessorSettings const& inSettings) const
	{
		return Make<IAudioPanProcessor>("a panner", &ISonaroFactory::CreateDirectAudioPanProcessorRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mType, inSettings.mOutputChannels,
			inSettings.mMatrix, inSettings.mActionFlag, inSettings.mParams);
	}

	InterfaceRef<IAudioPanProcessor> CreateDefaultMultiChannelAudioPanProcessorRenderer(
		DefaultMultiChannelAudioPanProcessorSettings const& inSettings) const
	{
		return Make<IAudioPanProcessor>("a panner",
			&ISonaroFactory::CreateDefaultMultiChannelAudioPanProcessorRenderer, inSettings.mContext,
			inSettings.mFrameRate, inSettings.mMatrix, inSettings.mActionFlag, inSettings.mParams,
			inSettings.mInputLayout, inSettings.mOutputLayout);
	}

	InterfaceRef<IAudioPanProcessor> CreateChannelMixerAudioPanProcessorRenderer(
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
		std::vector<std::vector<float>> const& inGains) const
	{
		return Make<IAudioPanProcessor>("a channel mixer",
			&ISonaroFactory::CreateChannelMixerAudioPanProcessorRenderer, inInputLayout, inOutputLayout,
			inGains);
	}

	InterfaceRef<IAudioPanProcessor> CreateNoneAudioPanProcessorRenderer(
		InterfaceRef<IAudioRenderContext> const& inContext, AudioChannelLayout const& inLayout) const
	{
		return Make<IAudioPanProcessor>(
			"a panner", &ISonaroFactory::CreateNoneAudioPanProcessorRenderer, inContext, inLayout);
	}

	InterfaceRef<IAudioProcessor> CreateAudioMeterRenderer(InterfaceRef<IAudioRenderContext> const& inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioMeterSetter> const& inMeter) const
	{
		return Make<IAudioProcessor>(
			"a meter", &ISonaroFactory::CreateAudioMeterRenderer, inContext, inFrameRate, inMeter);
	}

	InterfaceRef<IAudioProcessor> CreateAudioFaderRenderer(InterfaceRef<IAudioRenderContext> const& inContext,
		FrameRate const& inFrameRate, AudioComponentParams const& inParams) const
	{
		return Make<IAudioProcessor>(
			"a fader", &ISonaroFactory::CreateAudioFaderRenderer, inContext, inFrameRate, inParams);
	}

	InterfaceRef<IAudioProcessor> CreateAudioFilterRenderer(AudioFilterSettings const& inSettings) const
	{
		return Make<IAudioProcessor>("an effect", &ISonaroFactory::CreateAudioFilterRenderer,
			inSettings.mContext, inSettings.mFrameRate, inSettings.mFilter, inSettings.mSecondFilter,
			inSettings.mActionFlag, inSettings.mParams, inSettings.mChannelLayout);
	}

	InterfaceRef<IAudioProcessor> CreateAudioSendRenderer(AudioSendSettings const& inSettings) const
	{
		return Make<IAudioProcessor>("a send", &ISonaroFactory::CreateAudioSendRenderer, inSettings.mContext,
			inSettings.mFrameRate, inSettings.mSendTarget, inSettings.mParams, inSettings.mPanner);
	}

	InterfaceRef<IAudioProcessor> CreateAudioChannelMatrixRenderer(
		InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		AudioChannelMatrix const& inMatrix) const
	{
		return Make<IAudioProcessor>("a channel matrix", &ISonaroFactory::CreateAudioChannelMatrixRenderer,
			inContext, inFrameRate, inMatrix);
	}

	// Ready for IAudioBinauralizer::Process. It stands beside the graph and needs no context.
	InterfaceRef<IAudioBinauralizer> CreateAudioBinauralizer(
		AudioBinauralizerSettings const& inSettings = {}) const
	{
		auto const binauralizer = AudioBinauralizerFactory::CreateAudioBinauralizer();
		binauralizer->Init(inSettings.mSampleRate, inSettings.mMaxFrames);
		binauralizer->SetOrientation(inSettings.mPitch, inSettings.mYaw, inSettings.mRoll);
		binauralizer->GetProcessFunction(inSettings.mInputChannels, inSettings.mOutputChannels);
		binauralizer->SetBypass(inSettings.mBypass);
		return binauralizer;
	}

	// For what has no creator here.
	InterfaceRef<ISonaroFactory> const& GetFactory() const { return mFactory; }

private:
	void Check(int inResult, char const* inWhat) const
	{
		if (!ResultSucceeded(inResult))
		{
			mRefuse(inResult, inWhat);
		}
	}

	// The item's own, or one that passes its source's channels on.
	template <class ItemSettings>
	InterfaceRef<IAudioPanProcessor> GetPanProcessor(
		ItemSettings const& inSettings, InterfaceRef<IAudioGeneratorPrivate> const& inSource) const
	{
		return inSettings.mPanProcessor || !inSource || !inSettings.mContext
				   ? inSettings.mPanProcessor
				   : CreateNoneAudioPanProcessorRenderer(
						 inSettings.mContext, inSource->GetAudioChannelLayout());
	}

	template <class Node, class Creator, class... Arguments>
	InterfaceRef<Node> Make(char const* inWhat, Creator inCreator, Arguments const&... inArguments) const
	{
		InterfaceRef<Node> made;
		Check((mFactory.Get()->*inCreator)(inArguments..., &made), inWhat);
		return made;
	}

	Refuse mRefuse;
	InterfaceRef<ISonaroFactory> mFactory;
};

} // namespace SN
