#include "ClipTrack.h"

#include "Sonaro/AudioTrackRenderableItems.h"
#include "Sonaro/SonaroFactory.h"
#include "SonaroHost/AutomationParameter.h"
#include "SonaroHost/ClipRenderJob.h"
#include "SonaroHost/RenderContextScope.h"
#include "SonaroHost/TimeTransforms.h"

#include <cmath>

namespace SonaroHost
{

namespace
{

using Generator = SN::InterfaceRef<SN::IAudioGenerator>;
using Context = SN::InterfaceRef<SN::IAudioRenderContext>;

constexpr double kFaderRampSeconds = 0.005;

SN::InterfaceRef<SN::IAudioTrackRenderableItem> MakeItem(
	Context const& inContext, Generator const& inClip, ClipTrackSettings const& inSettings)
{
	auto const factory = SN::SonaroFactory::CreateClassRef();
	SN::InterfaceRef<SN::IAudioPanProcessor> panner;
	CheckEngineResult(
		factory->CreateNoneAudioPanProcessorRenderer(inContext, inSettings.mLayout, &panner), "a panner");
	Generator generator;
	CheckEngineResult(factory->CreateRealtimeAudioClipTrackItemRenderer(inContext, inSettings.mFrameRate,
						  inClip, {}, panner, inSettings.mSpeed,
						  zorvcore::classref::MakeObject<IdentityTimeTransform>(), SN::kTimeZero, &generator),
		"an item");
	SN::InterfaceRef<SN::IAudioTrackRenderableItem> item = generator;
	item->Init(SN::kTimeZero, SN::TickTime(inSettings.mFrames, inSettings.mFrameRate), SN::kTimeZero,
		inSettings.mFrameRate);
	return item;
}

SN::InterfaceRef<SN::IAudioProcessor> MakeFader(Context const& inContext, ClipTrackSettings const& inSettings)
{
	auto const ramp =
		static_cast<std::int64_t>(std::ceil(inSettings.mFrameRate.GetSamplesPerSecond() * kFaderRampSeconds));
	auto const gain = AutomationParameter<float>::Create(1.0f);
	gain->SetCurve(
		MakeFadeCurve(inSettings.mFades, inSettings.mFrames, ramp + kControlInterval, inSettings.mFrameRate));
	SN::InterfaceRef<SN::IAudioProcessor> fader;
	CheckEngineResult(SN::SonaroFactory::CreateClassRef()->CreateAudioFaderRenderer(inContext,
						  inSettings.mFrameRate, {gain, AutomationParameter<bool>::Create(false)}, &fader),
		"a fader");
	return fader;
}

} // namespace

unsigned ChooseTrackBlock(unsigned inBlockFrames, double inSpeed)
{
	// What is read for a block at the highest speed fits the engine's largest read.
	constexpr unsigned kResampledFrames = 1024;
	return inSpeed == 1.0 ? (inBlockFrames + kControlInterval - 1) / kControlInterval * kControlInterval
						  : kResampledFrames;
}

Generator MakeClipTrack(
	Context const& inContext, Generator const& inClip, ClipTrackSettings const& inSettings)
{
	SN::FrameRate const& frameRate = inSettings.mFrameRate;
	// The list frames the item with silence, as the engine wants it.
	SN::TickTime const margin(kMaxBlockFrames, frameRate);
	auto const item = MakeItem(inContext, inClip, inSettings);
	SN::AudioTrackRenderableItemList const items = {
		SN::CreateSilentAudioTrackRenderableItem(-margin, SN::kTimeZero, frameRate), item,
		SN::CreateSilentAudioTrackRenderableItem(item->GetEndTime(), item->GetEndTime() + margin, frameRate)};

	std::vector<SN::InterfaceRef<SN::IAudioProcessor>> processors;
	if (!inSettings.mFades.IsNone())
	{
		processors.push_back(MakeFader(inContext, inSettings));
	}
	Generator track;
	CheckEngineResult(SN::SonaroFactory::CreateClassRef()->CreateAudioClipTrackRenderer(inContext, frameRate,
						  items, nullptr, nullptr, processors, nullptr, inSettings.mLayout, &track),
		"a track");
	return track;
}

} // namespace SonaroHost
