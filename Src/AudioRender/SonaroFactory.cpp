#include "Sonaro/SonaroFactory.h"

#include "AudioRender/Core/AudioRenderContext.h"
#include "AudioRender/Core/NestingLimit.h"
#include "AudioRender/Core/SilentRenderer.h"
#include "AudioRender/Source/AudioClipRenderer.h"
#include "AudioRender/Source/AudioStreamRenderer.h"
#include "zorvcore/config/InitializerRegistrar.h"

#include <mutex>

namespace SN
{

namespace
{

bool StartModule()
{
	ReadMaxNestableSequenceInstances();
	return true;
}

void StopModule()
{
}

zorvcore::config::InitializerRegistrar const sModule("Sonaro", 0, &StartModule, &StopModule);

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
	return std::allocate_shared<SonaroFactory>(zorvcore::allocator::SmallBlockSTLAllocator<SonaroFactory>());
}

SonaroFactory::operator InterfaceRef<UnknownBase>()
{
	return InterfaceRef<UnknownBase>::FromThis(this);
}

void* SonaroFactory::QueryMap(GUID const& inIdentifier)
{
	void* const found =
		zorvcore::classref::QueryInterfaces<ISonaroFactory, SonaroFactory>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

int SonaroFactory::CreateAudioRenderContext(unsigned inMaxBlockSize, bool inPrefetchEnabled,
	bool inContextOption, TickTime const& inRangeStart, TickTime const& inRangeEnd,
	unsigned inControlInterval, TickTime const& inMeterInterval, Prefetcher* inPrefetcher,
	ImmutableString const& inRenderName, bool inFaderParamFlag, bool inPannerParamFlag,
	bool inFilterParamFlag, bool inSendParamFlag, RenderQuality inRenderQuality,
	InterfaceRef<IAudioRenderContext>* outContext) const
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

int SonaroFactory::CreateAudioStreamRenderer(InterfaceRef<IAudioRenderContext> inContext,
	FrameRate const& inFrameRate, InterfaceRef<IAudioSource> inSource, int inChannelIndex,
	double inStreamSpeed, InterfaceRef<UnknownBase> inKey, InterfaceRef<IAudioGenerator>* outGenerator) const
{
	return AudioStreamRenderer::Create(
		inContext, inFrameRate, inSource, inChannelIndex, inStreamSpeed, inKey, outGenerator);
}

int SonaroFactory::CreateNordekAudioStreamRenderer(InterfaceRef<IAudioRenderContext>& inContext,
	FrameRate const& inFrameRate, InterfaceRef<IAudioSource> const& inSource, int inChannelIndex,
	double inStreamSpeed, VX::BinaryData const&, InterfaceRef<IAudioGenerator>* outGenerator) const
{
	return AudioStreamRenderer::Create(
		inContext, inFrameRate, inSource, inChannelIndex, inStreamSpeed, {}, outGenerator);
}

int SonaroFactory::CreateAudioContentRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	FrameRate const&, InterfaceRef<IAudioGenerator> const&, bool, TickTime const&, TickTime const&,
	InterfaceRef<UnknownBase>, InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioContentMulticamRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	FrameRate const&, std::vector<InterfaceRef<IAudioGenerator>> const&,
	std::shared_ptr<zorvcore::threads::AtomicIntegral<int, 0>>, bool, TickTime const&, TickTime const&,
	InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioClipRenderer(InterfaceRef<IAudioRenderContext> inContext,
	FrameRate const& inFrameRate,
	std::map<InterfaceRef<IAudioGenerator>, AudioChannelMap> const& inGenerators,
	AudioChannelLayout const& inChannelLayout, TickTime const& inStartOffset, float inGain, double inSpeed,
	InterfaceRef<IAudioGenerator>* outGenerator) const
{
	return AudioClipRenderer::Create(
		inContext, inFrameRate, inGenerators, inChannelLayout, inStartOffset, inGain, inSpeed, outGenerator);
}

int SonaroFactory::CreateAudioRenderContextForPrefetchThread(
	InterfaceRef<IAudioRenderContext> inSource, InterfaceRef<IAudioRenderContext>& outContext) const
{
	return AudioRenderContext::Create(AudioRenderContext::SettingsForPrefetchThread(inSource), &outContext);
}

int SonaroFactory::CreateTimeStretchedAudioGenerator(InterfaceRef<IAudioGenerator> const&, FrameRate const&,
	double, InterfaceRef<IAudioRenderContext>, InterfaceRef<IAudioRenderContext>,
	InterfaceRef<VX::ITimeTransform>, bool, TickTime const&, TickTime const&, TickTime const&, bool,
	InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioMixRenderer(InterfaceRef<IAudioRenderContext> const&, FrameRate const&,
	InterfaceRef<IAudioGenerator> const&, double, InterfaceRef<IAudioGenerator> const&, double,
	InterfaceRef<IAudioProcessor> const&, InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateRealtimeAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext>,
	FrameRate const&, InterfaceRef<IAudioGenerator> const&, std::vector<InterfaceRef<IAudioProcessor>> const&,
	InterfaceRef<IAudioPanProcessor>, double, InterfaceRef<VX::ITimeTransform>, TickTime const&,
	InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateTimeAlteredAudioClipTrackItemRenderer(InterfaceRef<IAudioRenderContext>,
	FrameRate const&, InterfaceRef<IAudioGenerator> const&, std::vector<InterfaceRef<IAudioProcessor>> const&,
	InterfaceRef<IAudioPanProcessor>, double, bool, bool, InterfaceRef<VX::ITimeTransform>, TickTime const&,
	TickTime const&, double, TickTime const&, TickTime const&, InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioTransitionRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	InterfaceRef<IAudioTransition>, AudioTransitionParameters const&, InterfaceRef<IAudioGenerator> const&,
	InterfaceRef<IAudioGenerator> const&, TickTime const&, TickTime const&, TickTime const&, TickTime const&,
	InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioClipTrackRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	AudioTrackRenderableItemList const&, InterfaceRef<UnknownBase>,
	std::shared_ptr<zorvcore::threads::AtomicIntegral<int>>,
	std::vector<InterfaceRef<IAudioProcessor>> const&, InterfaceRef<IAudioPanProcessor>,
	AudioChannelLayout const&, InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioMixTrackRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	InterfaceRef<IAudioGenerator> const&, InterfaceRef<UnknownBase>,
	std::shared_ptr<zorvcore::threads::AtomicIntegral<int>>,
	std::vector<InterfaceRef<IAudioProcessor>> const&, InterfaceRef<IAudioPanProcessor>,
	AudioChannelLayout const&, InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioTrackInletRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	std::vector<InterfaceRef<UnknownBase>> const&, AudioChannelLayout const&,
	InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioTrackGroupRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	std::vector<InterfaceRef<IAudioGenerator>> const&, std::deque<std::vector<DelayDependency>> const&,
	std::vector<TickTime> const&, AudioChannelLayout const&, InterfaceRef<UnknownBase>,
	InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioTrackGroupRendererViaCloning(InterfaceRef<IAudioRenderContext>,
	FrameRate const&, InterfaceRef<UnknownBase>, InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	PanProcessorType, bool, std::vector<InterfaceRef<IRenderableAudioComponentParam>> const&,
	InterfaceRef<IAudioPanProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateDirectAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	PanProcessorType, int, AudioChannelMatrix const&, bool,
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> const&, InterfaceRef<IAudioPanProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateDefaultMultiChannelAudioPanProcessorRenderer(InterfaceRef<IAudioRenderContext>,
	FrameRate const&, AudioChannelMatrix const&, bool,
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> const&, AudioChannelLayout const&,
	AudioChannelLayout const&, InterfaceRef<IAudioPanProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateChannelMixerAudioPanProcessorRenderer(AudioChannelLayout const&,
	AudioChannelLayout const&, std::vector<std::vector<float>> const&,
	InterfaceRef<IAudioPanProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateNoneAudioPanProcessorRenderer(
	InterfaceRef<IAudioRenderContext>, AudioChannelLayout const&, InterfaceRef<IAudioPanProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioMeterRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	InterfaceRef<IAudioMeterSetter>, InterfaceRef<IAudioProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioFaderRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> const&, InterfaceRef<IAudioProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioFilterRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	InterfaceRef<IAudioFilter>, InterfaceRef<IAudioFilter>, bool,
	std::vector<InterfaceRef<IRenderableAudioComponentParam>> const&, AudioChannelLayout const&,
	InterfaceRef<IAudioProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioSendRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	InterfaceRef<UnknownBase>, std::vector<InterfaceRef<IRenderableAudioComponentParam>> const&,
	InterfaceRef<IAudioPanProcessor>, InterfaceRef<IAudioProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateAudioChannelMatrixRenderer(InterfaceRef<IAudioRenderContext>, FrameRate const&,
	AudioChannelMatrix const&, InterfaceRef<IAudioProcessor>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateSilentRenderer(
	AudioChannelLayout const& inLayout, InterfaceRef<IAudioGenerator>* outGenerator) const
{
	return SilentRenderer::Create(inLayout, outGenerator);
}

int SonaroFactory::CreateAlignToFrameRateAudioGeneratorDecorator(
	InterfaceRef<IAudioGenerator> const&, FrameRate const&, InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

int SonaroFactory::CreateOfflineAudioProcessorAudioGenerator(InterfaceRef<IAudioGenerator> const&,
	InterfaceRef<IAudioPanProcessor> const&, InterfaceRef<IAudioPanProcessor> const&, FrameRate const&,
	TickTime const&, TickTime const&, InterfaceRef<IOfflineAudioProcessor> const&,
	InterfaceRef<IAudioGenerator>*) const
{
	return eNotImplemented;
}

} // namespace SN
