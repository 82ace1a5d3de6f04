#pragma once

#include "Sonaro/ISonaroFactory.h"

namespace SN
{

// The one public door to the graph: a process-wide object without state, made at the first call and
// gone with its last reference. Getting it works from any thread.
class SONARO_API SonaroFactory final : public Implements<SonaroFactory, ISonaroFactory>
{
public:
	static constexpr Identifier<SonaroFactory> kIdentifier{0xd7ffcb5c40ea305cull, 0x518f4cd3adbbc8aeull};

	static InterfaceRef<SonaroFactory> CreateClassRef();

	// Empty when no instance lives.
	static InterfaceRef<SonaroFactory> CreateClassRefIfSingletonExists();

	static void CreateInstanceRef(InterfaceRef<UnknownBase>& outInstance);

	int CreateAudioRenderContext(unsigned inMaxBlockSize, bool inPrefetchEnabled, bool inContextOption,
		TickTime const& inRangeStart, TickTime const& inRangeEnd, unsigned inControlInterval,
		TickTime const& inMeterInterval, Prefetcher* inPrefetcher, ImmutableString const& inRenderName,
		bool inFaderParamFlag, bool inPannerParamFlag, bool inFilterParamFlag, bool inSendParamFlag,
		RenderQuality inRenderQuality, InterfaceRef<IAudioRenderContext>* outContext) const override;
	int CreateAudioStreamRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioSource> inSource, int inChannelIndex, double inStreamSpeed,
		InterfaceRef<UnknownBase> inKey, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateNordekAudioStreamRenderer(InterfaceRef<IAudioRenderContext>& inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioSource> const& inSource, int inChannelIndex,
		double inStreamSpeed, VX::BinaryData const& inData,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioContentRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		FrameRate const& inMediaFrameRate, InterfaceRef<IAudioGenerator> const& inGenerator, bool inHasOffset,
		TickTime const& inOffset, TickTime const& inContentEnd, InterfaceRef<UnknownBase> inKey,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioContentMulticamRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate,
		std::vector<InterfaceRef<IAudioGenerator>> const& inCameras,
		std::shared_ptr<zorvcore::threads::AtomicIntegral<int, 0>> inSelectedCamera, bool inHasOffset,
		TickTime const& inOffset, TickTime const& inContentEnd,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioClipRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		std::map<InterfaceRef<IAudioGenerator>, AudioChannelMap> const& inGenerators,
		AudioChannelLayout const& inChannelLayout, TickTime const& inStartOffset, float inGain,
		double inSpeed, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioRenderContextForPrefetchThread(InterfaceRef<IAudioRenderContext> inSource,
		InterfaceRef<IAudioRenderContext>& outContext) const override;
	int CreateTimeStretchedAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
		FrameRate const& inFrameRate, double inSpeed, InterfaceRef<IAudioRenderContext> inPrefetchContext,
		InterfaceRef<IAudioRenderContext> inRenderContext, InterfaceRef<VX::ITimeTransform> inTimeTransform,
		bool inMaintainPitch, TickTime const& inSourceEndTime, TickTime const& inSourceOffset,
		TickTime const& inEndTime, bool inPreferAccuracy,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioMixRenderer(InterfaceRef<IAudioRenderContext> const& inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inFirst, double inFirstTimeScale,
		InterfaceRef<IAudioGenerator> const& inSecond, double inSecondTimeScale,
		InterfaceRef<IAudioProcessor> const& inProcessor,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateRealtimeAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inSource,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, double inSpeed,
		InterfaceRef<VX::ITimeTransform> inTimeTransform, TickTime const& inTimeOffset,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateTimeAlteredAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator> const& inGenerator,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanner, double inSpeed, bool inReverse, bool inMaintainPitch,
		InterfaceRef<VX::ITimeTransform> inTimeTransform, TickTime const& inTimeOffset,
		TickTime const& inSecondTimeOffset, double inScalerSpeed, TickTime const& inItemStartTime,
		TickTime const& inItemEndTime, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioTransitionRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<IAudioTransition> inTransition,
		AudioTransitionParameters const& inParameters,
		InterfaceRef<IAudioGenerator> const& inOutgoingGenerator,
		InterfaceRef<IAudioGenerator> const& inIncomingGenerator, TickTime const& inOutgoingStartTime,
		TickTime const& inIncomingStartTime, TickTime const& inTransitionStartTime,
		TickTime const& inTransitionDuration, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioClipTrackRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioTrackRenderableItemList const& inItems,
		InterfaceRef<UnknownBase> inOwner, std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> inMute,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, AudioChannelLayout const& inChannels,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioMixTrackRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioGenerator> const& inSource, InterfaceRef<UnknownBase> inOwner,
		std::shared_ptr<zorvcore::threads::AtomicIntegral<int>> inMute,
		std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
		InterfaceRef<IAudioPanProcessor> inPanProcessor, AudioChannelLayout const& inChannels,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioTrackInletRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, std::vector<InterfaceRef<UnknownBase>> const& inInputs,
		AudioChannelLayout const& inChannels, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioTrackGroupRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, std::vector<InterfaceRef<IAudioGenerator>> const& inGenerators,
		std::deque<std::vector<DelayDependency>> const& inDelayDependencies,
		std::vector<TickTime> const& inGeneratorDelays, AudioChannelLayout const& inChannels,
		InterfaceRef<UnknownBase> inOwner, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioTrackGroupRendererViaCloning(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, InterfaceRef<UnknownBase> inOwner,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, PanProcessorType inType, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override;
	int CreateDirectAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, PanProcessorType inType, int inOutputChannels,
		AudioChannelMatrix const& inMatrix, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override;
	int CreateDefaultMultiChannelAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override;
	int CreateChannelMixerAudioPanProcessorRenderer(AudioChannelLayout const& inInputLayout,
		AudioChannelLayout const& inOutputLayout, std::vector<std::vector<float>> const& inGains,
		InterfaceRef<IAudioPanProcessor>* outProcessor) const override;
	int CreateNoneAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext> inContext,
		AudioChannelLayout const& inLayout, InterfaceRef<IAudioPanProcessor>* outProcessor) const override;
	int CreateAudioMeterRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioMeterSetter> inMeter, InterfaceRef<IAudioProcessor>* outProcessor) const override;
	int CreateAudioFaderRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioProcessor>* outProcessor) const override;
	int CreateAudioFilterRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioFilter> inFilter, InterfaceRef<IAudioFilter> inSecondFilter, bool inActionFlag,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		AudioChannelLayout const& inChannelLayout,
		InterfaceRef<IAudioProcessor>* outProcessor) const override;
	int CreateAudioSendRenderer(InterfaceRef<IAudioRenderContext> inContext, FrameRate const& inFrameRate,
		InterfaceRef<UnknownBase> inSendTarget,
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> const& inParams,
		InterfaceRef<IAudioPanProcessor> inPanner,
		InterfaceRef<IAudioProcessor>* outProcessor) const override;
	int CreateAudioChannelMatrixRenderer(InterfaceRef<IAudioRenderContext> inContext,
		FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix,
		InterfaceRef<IAudioProcessor>* outProcessor) const override;
	int CreateSilentRenderer(
		AudioChannelLayout const& inLayout, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateAlignToFrameRateAudioGeneratorDecorator(InterfaceRef<IAudioGenerator> const& inGenerator,
		FrameRate const& inFrameRate, InterfaceRef<IAudioGenerator>* outGenerator) const override;
	int CreateOfflineAudioProcessorAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
		InterfaceRef<IAudioPanProcessor> const& inInputPanner,
		InterfaceRef<IAudioPanProcessor> const& inOutputPanner, FrameRate const& inFrameRate,
		TickTime const& inStartTime, TickTime const& inEndTime,
		InterfaceRef<IOfflineAudioProcessor> const& inProcessor,
		InterfaceRef<IAudioGenerator>* outGenerator) const override;

	operator InterfaceRef<UnknownBase>() override;

private:
	static InterfaceRef<SonaroFactory> CreateClassRefInternal(bool inCreate);
	static std::shared_ptr<SonaroFactory> AllocateClassInstance();
};

} // namespace SN
