#include "Sonaro/SonaroFactory.h"

#include "AudioRender/Component/AudioChannelMatrixRenderer.h"
#include "AudioRender/Component/AudioFaderRenderer.h"
#include "AudioRender/Component/AudioFilterRenderer.h"
#include "AudioRender/Component/AudioMeterRenderer.h"
#include "AudioRender/Component/AudioSendRenderer.h"
#include "AudioRender/Core/AudioRenderContext.h"
#include "AudioRender/Core/CreateNode.h"
#include "AudioRender/Core/Module.h"
#include "AudioRender/Core/SilentRenderer.h"
#include "AudioRender/Routing/AudioTransitionRenderer.h"
#include "AudioRender/Source/AlignToFrameRateAudioGeneratorDecorator.h"
#include "AudioRender/Source/AudioClipRenderer.h"
#include "AudioRender/Source/AudioContentMulticamRenderer.h"
#include "AudioRender/Source/AudioMediaContentRenderer.h"
#include "AudioRender/Source/AudioStreamRenderer.h"
#include "AudioRender/Track/AudioClipTrackRenderer.h"
#include "AudioRender/Track/AudioMixRenderer.h"
#include "AudioRender/Track/AudioMixTrackRenderer.h"
#include "AudioRender/Track/AudioTrackGroupRenderer.h"
#include "AudioRender/Track/AudioTrackInletRenderer.h"
#include "AudioRender/Track/RealtimeAudioClipTrackItemRenderer.h"
#include "Panner/AudioPanner51ToAdaptive.h"
#include "Panner/AudioPannerBalance.h"
#include "Panner/AudioPannerChannelMap.h"
#include "Panner/AudioPannerDefaultMultiChannel.h"
#include "Panner/AudioPannerMonoTo51.h"
#include "Panner/AudioPannerMonoTo51Direct.h"
#include "Panner/AudioPannerMonoToAdaptive.h"
#include "Panner/AudioPannerMonoToStereo.h"
#include "Panner/AudioPannerNone.h"
#include "Panner/AudioPannerStereoTo51.h"
#include "Panner/AudioPannerStereoToAdaptive.h"
#include "Panner/AudioPannerStereoToStereo.h"
#include "Panner/ChannelMixerAudioPanProcessor.h"
#include "Panner/FixedMixPanner.h"
#include "Sonaro/PanProcessorType.h"
#include "Time/OfflineAudioProcessorAudioGenerator.h"
#include "Time/Stretch/TimeStretchedAudioGenerator.h"
#include "Time/TimeAlteredAudioClipTrackItemRenderer.h"

#include <mutex>

namespace SN
{

namespace
{

class Factory final : public SonaroFactory
{
public:
	operator InterfaceRef<UnknownBase>() override { return InterfaceRef<UnknownBase>::FromThis(this); }

	int CreateAudioRenderContext(unsigned inMaxBlockSize, bool inPrefetchEnabled, bool inContextOption,
		TickTime const& inRangeStart, TickTime const& inRangeEnd, unsigned inControlInterval,
		TickTime const& inMeterInterval, Prefetcher* inPrefetcher, ImmutableString const& inRenderName,
		bool inFaderParamFlag, bool inPannerParamFlag, bool inFilterParamFlag, bool inSendParamFlag,
		RenderQuality inRenderQuality, InterfaceRef<IAudioRenderContext>* outContext) const override
	{
		return AudioRenderContext::Create(
			{
				.mMaxBlockSize = inMaxBlockSize,
				.mPrefetchEnabled = inPrefetchEnabled,
				.mContextOption = inContextOption,
				.mRangeStart = inRangeStart,
				.mRangeEnd = inRangeEnd,
				.mControlInterval = inControlInterval,
				.mMeterInterval = inMeterInterval,
				.mPrefetcher = inPrefetcher,
				.mRenderName = inRenderName,
				.mFaderParamFlag = inFaderParamFlag,
				.mPannerParamFlag = inPannerParamFlag,
				.mFilterParamFlag = inFilterParamFlag,
				.mSendParamFlag = inSendParamFlag,
				.mRenderQuality = inRenderQuality,
			},
			outContext);
	}

	int CreateAudioStreamRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioSource> inSource, int inChannelIndex, double inStreamSpeed,
		InterfaceRef<UnknownBase> inKey, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AudioStreamRenderer::Create(
			inContext, inFrameRate, inSource, inChannelIndex, inStreamSpeed, inKey, outGenerator);
	}

	int CreateNordekAudioStreamRenderer(InterfaceRef<IAudioRenderContext>& inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioSource> const& inSource, int inChannelIndex,
		double inStreamSpeed, VX::BinaryData const&,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AudioStreamRenderer::Create(
			inContext, inFrameRate, inSource, inChannelIndex, inStreamSpeed, {}, outGenerator);
	}

	int CreateAudioContentRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		FrameRate const& inMediaFrameRate, InterfaceRef<IAudioGenerator> const& inGenerator, bool inHasOffset,
		TickTime const& inOffset, TickTime const& inContentEnd, InterfaceRef<UnknownBase> inKey,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AudioMediaContentRenderer::Create({inContext, inFrameRate, inMediaFrameRate, inGenerator,
													 inHasOffset, inOffset, inContentEnd, inKey},
			outGenerator);
	}

	int CreateAudioContentMulticamRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate,
		std::vector<InterfaceRef<IAudioGenerator>> const& inCameras,
		std::shared_ptr<zorvcore::threads::AtomicIntegral<int, 0>> inSelectedCamera, bool inHasOffset,
		TickTime const& inOffset, TickTime const& inContentEnd,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AudioContentMulticamRenderer::Create(
			{inContext, inFrameRate, inMediaFrameRate, inCameras, inSelectedCamera, inHasOffset, inOffset,
				inContentEnd},
			outGenerator);
	}

	int CreateAudioClipRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		std::map<InterfaceRef<IAudioGenerator>, AudioChannelMap> const& inGenerators,
		AudioChannelLayout const& inChannelLayout, TickTime const& inStartOffset, float inGain,
		double inSpeed, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return CreateNode<AudioClipRenderer>(AudioClipSettings{inContext, inFrameRate, inGenerators,
												 inChannelLayout, inStartOffset, inGain, inSpeed},
			outGenerator);
	}

	int CreateAudioRenderContextForPrefetchThread(InterfaceRef<IAudioRenderContext> inSource,
		InterfaceRef<IAudioRenderContext>& outContext) const override
	{
		return AudioRenderContext::Create(
			AudioRenderContext::SettingsForPrefetchThread(inSource), &outContext);
	}

	int CreateTimeStretchedAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
		FrameRate const& inFrameRate, double inSpeed, InterfaceRef<IAudioRenderContext> inPrefetchContext,
		InterfaceRef<IAudioRenderContext> inRenderContext, InterfaceRef<VX::ITimeTransform> inTimeTransform,
		bool inMaintainPitch, TickTime const& inSourceEndTime, TickTime const& inSourceOffset,
		TickTime const& inEndTime, bool inPreferAccuracy,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return TimeStretchedAudioGenerator::CreateWithPrefetch(
			{inGenerator, inFrameRate, inRenderContext, inTimeTransform, inMaintainPitch, inSourceEndTime,
				inSourceOffset, inPreferAccuracy},
			inSpeed, inPrefetchContext, inEndTime, outGenerator);
	}

	int CreateAudioMixRenderer(InterfaceRef<IAudioRenderContext> const& inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inFirst, double inFirstTimeScale,
		InterfaceRef<IAudioGenerator> const& inSecond, double inSecondTimeScale,
		InterfaceRef<IAudioProcessor> const& inProcessor,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return CreateNode<AudioMixRenderer>(AudioMixSettings{inContext, inFrameRate, inFirst,
												inFirstTimeScale, inSecond, inSecondTimeScale, inProcessor},
			outGenerator);
	}

	int CreateRealtimeAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inSource,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, double inSpeed,
		InterfaceRef<VX::ITimeTransform> inTimeTransform, TickTime const& inTimeOffset,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return CreateNode<RealtimeAudioClipTrackItemRenderer>(
			RealtimeAudioClipTrackItemSettings{inContext, inFrameRate, inSource, inProcessors, inPanProcessor,
				inSpeed, inTimeTransform, inTimeOffset},
			outGenerator);
	}

	int CreateTimeAlteredAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inGenerator,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanner, double inSpeed, bool inReverse, bool inMaintainPitch,
		InterfaceRef<VX::ITimeTransform> inTimeTransform, TickTime const& inTimeOffset,
		TickTime const& inSecondTimeOffset, double inScalerSpeed, TickTime const& inItemStartTime,
		TickTime const& inItemEndTime, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return CreateNode<TimeAlteredAudioClipTrackItemRenderer>(
			TimeAlteredAudioClipTrackItemSettings{inContext, inFrameRate, inGenerator, inProcessors, inPanner,
				inSpeed, inReverse, inMaintainPitch, inTimeTransform, inTimeOffset, inSecondTimeOffset,
				inScalerSpeed, inItemStartTime, inItemEndTime},
			outGenerator);
	}

	int CreateAudioTransitionRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioTransition> inTransition,
		AudioTransitionParameters const& inParameters,
		InterfaceRef<IAudioGenerator> const& inOutgoingGenerator,
		InterfaceRef<IAudioGenerator> const& inIncomingGenerator, TickTime const& inOutgoingStartTime,
		TickTime const& inIncomingStartTime, TickTime const& inTransitionStartTime,
		TickTime const& inTransitionDuration, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return CreateNode<AudioTransitionRenderer>(
			AudioTransitionSettings{inContext, inFrameRate, inTransition, inParameters, inOutgoingGenerator,
				inIncomingGenerator, inOutgoingStartTime, inIncomingStartTime, inTransitionStartTime,
				inTransitionDuration},
			outGenerator);
	}

	int CreateAudioClipTrackRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioTrackRenderableItemList const& inItems,
		InterfaceRef<UnknownBase> inOwner, std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> inMute,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, AudioChannelLayout const& inChannels,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AudioClipTrackRenderer::Create(
			{inContext, inFrameRate, inItems, inOwner, inMute, inProcessors, inPanProcessor, inChannels},
			outGenerator);
	}

	int CreateAudioMixTrackRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioGenerator> const& inSource, InterfaceRef<UnknownBase> inOwner,
		std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> inMute,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, AudioChannelLayout const& inChannels,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return CreateNode<AudioMixTrackRenderer>(
			AudioMixTrackSettings{
				inContext, inFrameRate, inSource, inOwner, inMute, inProcessors, inPanProcessor, inChannels},
			outGenerator);
	}

	int CreateAudioTrackInletRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, std::vector<InterfaceRef<UnknownBase>> const& inInputs,
		AudioChannelLayout const& inChannels, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AudioTrackInletRenderer::Create(inContext, inFrameRate, inInputs, inChannels, outGenerator);
	}

	int CreateAudioTrackGroupRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, std::vector<InterfaceRef<IAudioGenerator>> const& inGenerators,
		std::deque<std::vector<DelayDependency>> const& inDelayDependencies,
		std::vector<TickTime> const& inGeneratorDelays, AudioChannelLayout const& inChannels,
		InterfaceRef<UnknownBase> inOwner, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return CreateNode<AudioTrackGroupRenderer>(
			AudioTrackGroupSettings{inContext, inFrameRate, inGenerators, inDelayDependencies,
				inGeneratorDelays, inChannels, inOwner},
			outGenerator);
	}

	int CreateAudioTrackGroupRendererViaCloning(InterfaceRef<IAudioRenderContext> inContext, FrameRate const&,
		InterfaceRef<UnknownBase> inOwner, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AudioTrackGroupRenderer::CreateViaCloning(inContext, inOwner, outGenerator);
	}

	int CreateAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, PanProcessorType inType, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override
	{
		AutomatedPannerSettings const settings{inContext, inFrameRate, inActionFlag, inParams};
		switch (inType)
		{
		case kPanNoneMono:
		case kPanNoneMonoAlias:
			return AudioPannerNone::Create(outProcessor, inContext, VX::kAudioChannelLayout_Mono);
		case kPanNoneStereo:
			return AudioPannerNone::Create(outProcessor, inContext, VX::kAudioChannelLayout_Stereo);
		case kPanNone51:
			return AudioPannerNone::Create(outProcessor, inContext, VX::kAudioChannelLayout_51);
		case kPanNoneAdaptive:
			return AudioPannerNone::Create(outProcessor, inContext, VX::kAudioChannelLayout_Multichannel);
		case kPanStereoToStereo:
			return AudioPannerStereoToStereo::Create(outProcessor, settings);
		case kPanMonoToStereo:
			return AudioPannerMonoToStereo::Create(outProcessor, settings);
		case kPanStereoToMono:
			return FixedMixPanner::Create(outProcessor, u"AudioPannerStereoToMono",
				VX::kAudioChannelTypeStereo, VX::kAudioChannelTypeMono, inContext, inFrameRate);
		case kPanMonoTo51:
			return AudioPannerMonoTo51::Create(outProcessor, settings);
		case kPanStereoTo51:
			return AudioPannerStereoTo51::Create(outProcessor, settings);
		case kPan51ToMono:
			return FixedMixPanner::Create(outProcessor, u"AudioPanner51ToMono", VX::kAudioChannelType51,
				VX::kAudioChannelTypeMono, inContext, inFrameRate);
		case kPan51ToStereo:
			return FixedMixPanner::Create(outProcessor, u"AudioPanner51ToStereo", VX::kAudioChannelType51,
				VX::kAudioChannelTypeStereo, inContext, inFrameRate);
		case kPanChannelMapMono:
			return AudioPannerChannelMap::Create(
				outProcessor, inContext, inFrameRate, VX::kAudioChannelTypeMono);
		case kPanBalance:
			return AudioPannerBalance::Create(outProcessor, settings, AudioPannerBalance::IdentityTest::kOff);
		case kPanChannelMap51:
			return AudioPannerChannelMap::Create(
				outProcessor, inContext, inFrameRate, VX::kAudioChannelType51);
		case kPanBalanceWithIdentity:
			return AudioPannerBalance::Create(outProcessor, settings, AudioPannerBalance::IdentityTest::kOn);
		default:
			return eInvalidArgument;
		}
	}

	int CreateDirectAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, PanProcessorType inType, int inOutputChannels,
		AudioChannelMatrix const& inMatrix, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override
	{
		AutomatedPannerSettings const settings{inContext, inFrameRate, inActionFlag, inParams};
		switch (inType)
		{
		case kPanMonoTo51:
			return AudioPannerMonoTo51Direct::Create(outProcessor, settings, inMatrix);
		case kPanMonoToAdaptive:
			return AudioPannerMonoToAdaptive::Create(outProcessor, settings, inOutputChannels, inMatrix);
		case kPanStereoToAdaptive:
			return AudioPannerStereoToAdaptive::Create(outProcessor, settings, inOutputChannels, inMatrix);
		case kPan51ToAdaptive:
			return AudioPanner51ToAdaptive::Create(
				outProcessor, inContext, inFrameRate, inOutputChannels, inMatrix);
		default:
			return eInvalidArgument;
		}
	}

	int CreateDefaultMultiChannelAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override
	{
		return AudioPannerDefaultMultiChannel::Create(outProcessor,
			AutomatedPannerSettings{inContext, inFrameRate, inActionFlag, inParams}, inMatrix, inInputLayout,
			inOutputLayout);
	}

	int CreateChannelMixerAudioPanProcessorRenderer(AudioChannelLayout const& inInputLayout,
		AudioChannelLayout const& inOutputLayout, std::vector<std::vector<float>> const& inGains,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override
	{
		return ChannelMixerAudioPanProcessor::Create(outProcessor, inInputLayout, inOutputLayout, inGains);
	}

	int CreateNoneAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		AudioChannelLayout const& inLayout, InterfaceRef<IAudioPanProcessor>* outProcessor) const override
	{
		return AudioPannerNone::Create(outProcessor, inContext, inLayout);
	}

	int CreateAudioMeterRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioMeterSetter> inMeter, InterfaceRef<IAudioProcessor>* outProcessor) const override
	{
		return AudioMeterRenderer::Create(inContext, inFrameRate, inMeter, outProcessor);
	}

	int CreateAudioFaderRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioProcessor>* outProcessor) const override
	{
		return AudioFaderRenderer::Create(inContext, inFrameRate, inParams, outProcessor);
	}

	int CreateAudioFilterRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioFilter> inFilter, InterfaceRef<IAudioFilter> inSecondFilter, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		AudioChannelLayout const& inChannelLayout, InterfaceRef<IAudioProcessor>* outProcessor) const override
	{
		return AudioFilterRenderer::Create(
			{inContext, inFrameRate, inFilter, inSecondFilter, inActionFlag, inParams, inChannelLayout},
			outProcessor);
	}

	int CreateAudioSendRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<UnknownBase> inSendTarget,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor> inPanner, InterfaceRef<IAudioProcessor>* outProcessor) const override
	{
		return AudioSendRenderer::Create(
			inContext, inFrameRate, inSendTarget, inParams, inPanner, outProcessor);
	}

	int CreateAudioChannelMatrixRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix,
		InterfaceRef<IAudioProcessor>* outProcessor) const override
	{
		return AudioChannelMatrixRenderer::Create(inContext, inFrameRate, inMatrix, outProcessor);
	}

	int CreateSilentRenderer(
		AudioChannelLayout const& inLayout, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return SilentRenderer::Create(inLayout, outGenerator);
	}

	int CreateAlignToFrameRateAudioGeneratorDecorator(InterfaceRef<IAudioGenerator> const& inGenerator,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return AlignToFrameRateAudioGeneratorDecorator::Create(inGenerator, inFrameRate, outGenerator);
	}

	int CreateOfflineAudioProcessorAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
		InterfaceRef<IAudioPanProcessor> const& inInputPanner,
		InterfaceRef<IAudioPanProcessor> const& inOutputPanner, FrameRate const& inFrameRate,
		TickTime const& inStartTime, TickTime const& inEndTime,
		InterfaceRef<IOfflineAudioProcessor> const& inProcessor,
		InterfaceRef<IAudioGenerator>* outGenerator) const override
	{
		return OfflineAudioProcessorAudioGenerator::Create(
			{inGenerator, inInputPanner, inOutputPanner, inFrameRate, inStartTime, inEndTime, inProcessor},
			outGenerator);
	}
};

} // namespace

InterfaceRef<SonaroFactory> SonaroFactory::CreateClassRef()
{
	return CreateClassRefInternal(true);
}

InterfaceRef<SonaroFactory> SonaroFactory::CreateClassRefIfSingletonExists()
{
	return CreateClassRefInternal(false);
}

void SonaroFactory::CreateInstanceRef(InterfaceRef<UnknownBase>& outInstance)
{
	outInstance = CreateClassRefInternal(true);
}

InterfaceRef<SonaroFactory> SonaroFactory::CreateClassRefInternal(bool inCreate)
{
	static std::mutex sMutex;
	static std::weak_ptr<SonaroFactory> sWeakSingleton;

	EnsureModule();
	std::lock_guard const lock(sMutex);
	std::shared_ptr<SonaroFactory> factory = sWeakSingleton.lock();
	if (!factory && inCreate)
	{
		factory = AllocateClassInstance();
		sWeakSingleton = factory;
	}
	return InterfaceRef<SonaroFactory>::FromObject(factory);
}

std::shared_ptr<SonaroFactory> SonaroFactory::AllocateClassInstance()
{
	return std::allocate_shared<Factory>(zorvcore::allocator::SmallBlockSTLAllocator<Factory>());
}

} // namespace SN
