#include "ClipTrack.h"

#include "ConvertedGenerator.h"
#include "ProgrammeFader.h"
#include "RemappedGenerator.h"
#include "Sonaro/AudioTrackRenderableItems.h"
#include "SonaroHost/Engine/EngineFactory.h"

#include <vector>

namespace SonaroHost
{

namespace
{

using Generator = SN::InterfaceRef<SN::IAudioGenerator>;
using Context = SN::InterfaceRef<SN::IAudioRenderContext>;

// The media of a clip, from the first frame to be heard on, at its own rate.
Generator MakeMedia(Context const& inContext, PlannedClip const& inClip, float inGain)
{
	EngineFactory const factory;
	SN::FrameRate const frameRate = inClip.mSource->GetFrameRate();
	Generator const stream = factory.CreateAudioStreamRenderer(
		{.mContext = inContext, .mFrameRate = frameRate, .mSource = inClip.mSource});
	SN::AudioChannelMap channels;
	for (std::size_t i = 0; i < inClip.mChannels.size(); ++i)
	{
		channels[i] = inClip.mChannels[i];
	}
	return factory.CreateAudioClipRenderer({
		.mContext = inContext,
		.mFrameRate = frameRate,
		.mGenerators = {{stream, channels}},
		.mChannelLayout = inClip.mLayout.GetInputLayout(),
		.mStartOffset = SN::TickTime(inClip.mFirstFrame, frameRate),
		.mGain = inGain,
	});
}

// The clip as the track takes it: in the programme's layout and direction, its frames counted at the
// programme's rate.
Generator MakeClip(Context const& inContext, PlannedClip const& inClip, ProgrammePlan const& inPlan)
{
	SN::FrameRate const frameRate = inPlan.GetFrameRate();
	Generator clip =
		zorvcore::classref::MakeObject<RemappedGenerator>(MakeMedia(inContext, inClip, inPlan.GetGain()),
			FrameMap{inClip.mSourceFrames, inClip.mSource->GetFrameRate(), frameRate, inPlan.IsReversed()});
	if (!inClip.mLayout.PassesThrough())
	{
		clip = zorvcore::classref::MakeObject<ConvertedGenerator>(
			clip, ConversionSettings{inClip.mLayout, inContext, frameRate});
	}
	return clip;
}

SN::InterfaceRef<SN::IAudioTrackRenderableItem> MakeItem(
	Context const& inContext, PlannedClip const& inClip, ProgrammePlan const& inPlan)
{
	EngineFactory const factory;
	SN::FrameRate const frameRate = inPlan.GetFrameRate();
	SN::InterfaceRef<SN::IAudioTrackRenderableItem> const item =
		factory.CreateRealtimeAudioClipTrackItemRenderer({
			.mContext = inContext,
			.mFrameRate = frameRate,
			.mSource = MakeClip(inContext, inClip, inPlan),
			.mPanProcessor = factory.CreateNoneAudioPanProcessorRenderer(inContext, inPlan.GetLayout()),
			.mSpeed = inClip.mReadingSpeed,
		});
	SN::TickTime const start(inClip.mPosition, frameRate);
	item->Init(start, SN::TickTime(inClip.mPosition + inClip.mFrames, frameRate), start, frameRate);
	return item;
}

// All items, over silence that reaches beyond the programme on both sides.
SN::AudioTrackRenderableItemList LayItems(Context const& inContext, ProgrammePlan const& inPlan)
{
	SN::FrameRate const frameRate = inPlan.GetFrameRate();
	SN::TickTime const margin(kMaxBlockFrames, frameRate);
	SN::TickTime const end = SN::TickTime(inPlan.GetFrames(), frameRate) + margin;
	SN::AudioTrackRenderableItemList items = {
		SN::CreateSilentAudioTrackRenderableItem(-margin, end, frameRate)};
	for (PlannedClip const& clip : inPlan.GetClips())
	{
		SN::MergeAudioTrackRenderableItems({MakeItem(inContext, clip, inPlan)}, items, frameRate);
	}
	return items;
}

} // namespace

unsigned ChooseTrackBlock(unsigned inBlockFrames, ProgrammePlan const& inPlan)
{
	// What is read for a block at the highest speed fits the engine's largest read.
	constexpr unsigned kResampledFrames = 1024;
	if (inPlan.IsResampled())
	{
		return kResampledFrames;
	}
	return inBlockFrames;
}

Generator MakeClipTrack(Context const& inContext, ProgrammePlan const& inPlan)
{
	SN::FrameRate const frameRate = inPlan.GetFrameRate();
	std::vector<SN::InterfaceRef<SN::IAudioProcessor>> processors;
	if (!inPlan.GetFades().IsNone())
	{
		processors.push_back(zorvcore::classref::MakeObject<ProgrammeFader>(
			MakeFadeCurve(inPlan.GetFades(), {0, inPlan.GetFrames()}, frameRate), frameRate));
	}
	return EngineFactory().CreateAudioClipTrackRenderer({
		.mContext = inContext,
		.mFrameRate = frameRate,
		.mItems = LayItems(inContext, inPlan),
		.mProcessors = processors,
		.mChannels = inPlan.GetLayout(),
	});
}

} // namespace SonaroHost
