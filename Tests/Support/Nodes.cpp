#include "Support/Nodes.h"

#include "Sonaro/SonaroFactory.h"
#include "Support/Panning.h"
#include "Support/SimpleGenerator.h"

#include <gtest/gtest.h>

#include <utility>

namespace SN::Testing
{

namespace
{

// What a maker gives, called with these arguments and a place for its result.
template <class Node, class Create, class... Arguments>
InterfaceRef<Node> Expect(Create inCreate, Arguments const&... inArguments)
{
	InterfaceRef<Node> node;
	EXPECT_EQ((*SonaroFactory::CreateClassRef().*inCreate)(inArguments..., &node), kSuccess);
	return node;
}

template <class Create, class Source>
Generator ExpectTrack(
	Create inCreate, Context const& inContext, Source const& inSource, TrackSettings const& inSettings)
{
	return Expect<IAudioGenerator>(inCreate, inContext, k48000Hz, inSource, inSettings.mOwner,
		inSettings.mMute, inSettings.mProcessors, inSettings.mPanner, inSettings.mLayout);
}

} // namespace

Generator MakeClipTrack(
	Context const& inContext, AudioTrackRenderableItemList const& inItems, TrackSettings const& inSettings)
{
	return ExpectTrack(&ISonaroFactory::CreateAudioClipTrackRenderer, inContext, inItems, inSettings);
}

Generator MakeMixTrack(Context const& inContext, Generator const& inSource, TrackSettings const& inSettings)
{
	return ExpectTrack(&ISonaroFactory::CreateAudioMixTrackRenderer, inContext, inSource, inSettings);
}

Generator MakeItem(Context const& inContext, Generator const& inSource, ItemSettings const& inSettings)
{
	return Expect<IAudioGenerator>(&ISonaroFactory::CreateRealtimeAudioClipTrackItemRenderer, inContext,
		k48000Hz, inSource, inSettings.mProcessors,
		inSettings.mPanner ? inSettings.mPanner : MakePanner(inContext, kPanNoneMono), inSettings.mSpeed,
		zorvcore::classref::MakeObject<ShiftTransform>(inSettings.mShift), inSettings.mOffset);
}

Generator MakeClip(Context const& inContext, std::map<Generator, AudioChannelMap> const& inGenerators,
	ClipSettings const& inSettings)
{
	auto const layout =
		VX::CreateAudioChannelLayout(VX::kAudioChannelTypeAdaptive, static_cast<int>(inSettings.mChannels));
	return Expect<IAudioGenerator>(&ISonaroFactory::CreateAudioClipRenderer, inContext, k48000Hz,
		inGenerators, layout, inSettings.mStartOffset, inSettings.mGain, inSettings.mSpeed);
}

Generator MakeStream(Context const& inContext, InterfaceRef<IAudioSource> const& inSource, int inChannelIndex,
	InterfaceRef<UnknownBase> const& inKey)
{
	return Expect<IAudioGenerator>(&ISonaroFactory::CreateAudioStreamRenderer, inContext, k48000Hz, inSource,
		inChannelIndex, 1.0, inKey);
}

Generator MakeSilence(AudioChannelLayout const& inLayout)
{
	return Expect<IAudioGenerator>(&ISonaroFactory::CreateSilentRenderer, inLayout);
}

Generator MakeJoin(Context const& inContext, Generator const& inFirst, Generator const& inSecond,
	InterfaceRef<IAudioProcessor> const& inProcessor, double inFirstScale, double inSecondScale)
{
	return Expect<IAudioGenerator>(&ISonaroFactory::CreateAudioMixRenderer, inContext, k48000Hz, inFirst,
		inFirstScale, inSecond, inSecondScale, inProcessor);
}

Generator MakeInlet(Context const& inContext, std::vector<InterfaceRef<UnknownBase>> const& inInputs)
{
	return Expect<IAudioGenerator>(&ISonaroFactory::CreateAudioTrackInletRenderer, inContext, k48000Hz,
		inInputs, VX::kAudioChannelLayout_Mono);
}

Generator MakeGroup(Context const& inContext, std::vector<Generator> const& inTracks,
	std::deque<std::vector<DelayDependency>> const& inWaits, std::vector<TickTime> const& inDelays,
	InterfaceRef<UnknownBase> const& inOwner)
{
	return Expect<IAudioGenerator>(&ISonaroFactory::CreateAudioTrackGroupRenderer, inContext, k48000Hz,
		inTracks, inWaits, inDelays, VX::kAudioChannelLayout_Mono, inOwner);
}

InterfaceRef<IAudioProcessor> MakeFader(Context const& inContext, Parameters const& inParameters)
{
	return Expect<IAudioProcessor>(
		&ISonaroFactory::CreateAudioFaderRenderer, inContext, k48000Hz, inParameters);
}

InterfaceRef<IAudioProcessor> MakeSend(Context const& inContext, InterfaceRef<UnknownBase> const& inTarget,
	Parameters const& inParameters, InterfaceRef<IAudioPanProcessor> const& inPanner)
{
	return Expect<IAudioProcessor>(
		&ISonaroFactory::CreateAudioSendRenderer, inContext, k48000Hz, inTarget, inParameters, inPanner);
}

InterfaceRef<IAudioProcessor> MakeMatrix(Context const& inContext, AudioChannelMatrix const& inMatrix)
{
	return Expect<IAudioProcessor>(
		&ISonaroFactory::CreateAudioChannelMatrixRenderer, inContext, k48000Hz, inMatrix);
}

} // namespace SN::Testing
