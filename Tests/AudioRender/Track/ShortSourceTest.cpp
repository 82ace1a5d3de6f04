#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "Sonaro/SonaroFactory.h"
#include "Support/Contexts.h"
#include "Support/Fakes.h"
#include "Support/Panning.h"
#include "Support/SimpleGenerator.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace SN
{
namespace
{

using namespace Testing;
using zorvcore::classref::MakeObject;

constexpr unsigned kFrames = 100;
constexpr unsigned kGiven = 40;

// Has samples for so many frames in playing order and leaves what it likes behind them.
class ShortSource final : public SimpleGenerator, public AudioTrackRenderableItemMixin
{
public:
	explicit ShortSource(unsigned inChannels)
		: SimpleGenerator(inChannels)
	{
		Init(At(0), At(kFrames), At(0), k48000Hz);
	}

	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override
	{
		FillFrom(PositionSample, GetNumChannels(), inTime, k48000Hz, inBuffer);
		if (inReverse)
		{
			inBuffer.Reverse();
		}
		inBuffer.SetUseSize(std::min(inBuffer.GetUseSize(), kGiven));
	}

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found =
			zorvcore::classref::QueryInterfaces<IAudioTrackRenderableItem>(this, inIdentifier);
		return found ? found : SimpleGenerator::QueryMap(inIdentifier);
	}
};

struct Case
{
	char const* mName;
	unsigned mSourceChannels;
	// Whether it has a processor, which is to hear the request whole: effects go on sounding.
	bool mProcesses;
	std::function<InterfaceRef<IAudioGenerator>(InterfaceRef<IAudioRenderContext> const&,
		InterfaceRef<ShortSource> const&, std::vector<InterfaceRef<IAudioProcessor>> const&)>
		mMake;
};

InterfaceRef<IAudioGenerator> MakeItem(InterfaceRef<IAudioRenderContext> const& inContext,
	InterfaceRef<ShortSource> const& inSource, std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
	PanProcessorType inPan)
{
	InterfaceRef<IAudioGenerator> item;
	SonaroFactory::CreateClassRef()->CreateRealtimeAudioClipTrackItemRenderer(inContext, k48000Hz, inSource,
		inProcessors, MakePanner(inContext, inPan), 1.0, MakeObject<ShiftTransform>(), kTimeZero, &item);
	return item;
}

InterfaceRef<IAudioGenerator> MakeSubmix(InterfaceRef<IAudioRenderContext> const& inContext,
	InterfaceRef<ShortSource> const& inSource, std::vector<InterfaceRef<IAudioProcessor>> const& inProcessors,
	PanProcessorType inPan)
{
	InterfaceRef<IAudioGenerator> submix;
	SonaroFactory::CreateClassRef()->CreateAudioMixTrackRenderer(inContext, k48000Hz, inSource, {}, {},
		inProcessors, MakePanner(inContext, inPan), inSource->GetAudioChannelLayout(), &submix);
	return submix;
}

TEST(ShortSource, IsSilentBehindItsEndAndTheRequestGoesOn)
{
	auto const factory = SonaroFactory::CreateClassRef();
	Case const cases[] = {
		{"an item", 1, true,
			[](auto const& inContext, auto const& inSource, auto const& inProcessors)
			{ return MakeItem(inContext, inSource, inProcessors, kPanNoneMono); }},
		{"an item that pans", 2, true,
			[](auto const& inContext, auto const& inSource, auto const& inProcessors)
			{ return MakeItem(inContext, inSource, inProcessors, kPanStereoToMono); }},
		{"a submix", 1, true,
			[](auto const& inContext, auto const& inSource, auto const& inProcessors)
			{ return MakeSubmix(inContext, inSource, inProcessors, kPanNoneMono); }},
		{"a submix that pans", 2, true,
			[](auto const& inContext, auto const& inSource, auto const& inProcessors)
			{ return MakeSubmix(inContext, inSource, inProcessors, kPanStereoToMono); }},
		{"a clip", 1, false,
			[&](auto const& inContext, auto const& inSource, auto const&)
			{
				InterfaceRef<IAudioGenerator> clip;
				factory->CreateAudioClipRenderer(inContext, k48000Hz, {{inSource, {{0, 0}}}},
					VX::kAudioChannelLayout_Mono, kTimeZero, 1.0f, 1.0, &clip);
				return clip;
			}},
		{"a track", 1, true,
			[&](auto const& inContext, auto const& inSource, auto const& inProcessors)
			{
				InterfaceRef<IAudioGenerator> track;
				factory->CreateAudioClipTrackRenderer(inContext, k48000Hz, {inSource}, {}, {}, inProcessors,
					{}, VX::kAudioChannelLayout_Mono, &track);
				return track;
			}},
	};
	for (Case const& test : cases)
	{
		for (bool const reverse : {false, true})
		{
			SCOPED_TRACE(testing::Message() << test.mName << (reverse ? ", in reverse" : ""));
			// The control interval is 16; in reverse, requests are cut.
			ScopedContext const context(kFrames);
			auto const log = MakeObject<FakeProcessor>(1.0f);
			auto const node = test.mMake(context.Get(), MakeObject<ShortSource>(test.mSourceChannels), {log});
			node->Preroll(At(0), reverse);
			log->mCalls.clear();
			dsp::AudioBuffer buffer(1, kFrames);
			buffer.Zero();
			node->GetAudioData(At(0), buffer, reverse);
			ASSERT_EQ(buffer.GetUseSize(), kFrames);
			for (long long i = 0; i < kFrames; ++i)
			{
				long long const frame = reverse ? kFrames - 1 - i : i;
				float const left = PositionSample(0, frame);
				float const sound =
					test.mSourceChannels == 1 ? left : 0.5f * (left + PositionSample(1, frame));
				ASSERT_EQ(buffer.GetChannel(0)[i], i < kGiven ? sound : 0.0f) << i;
			}
			long long processed = 0;
			for (Call const& call : log->mCalls)
			{
				processed += call.mAmount;
			}
			EXPECT_EQ(processed, test.mProcesses ? kFrames : 0);
		}
	}
}

} // namespace
} // namespace SN
