#include "Support/Engine.h"

namespace SN::ShortSourceTest
{

constexpr unsigned kFrames = 100;
constexpr unsigned kGiven = 40;

// Has samples for so many frames in playing order and leaves what it likes after them.
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
		FillFrom(PositionSample, GetNumChannels(), inTime, k48000Hz, inBuffer, inReverse);
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

struct ShortSourceCase
{
	char const* mName;
	unsigned mSourceChannels;
	// Whether it has a processor, which is to hear the request whole: effects go on sounding.
	bool mProcesses;
	Generator (*mMake)(
		Context const& inContext, InterfaceRef<ShortSource> const& inSource, Processors const& inProcessors);
};
ShortSourceCase const kShortSourceCases[] = {
	{"an item", 1, true,
		[](auto const& inContext, auto const& inSource, auto const& inProcessors)
		{ return MakeItem(inContext, inSource, {.mProcessors = inProcessors}); }},
	{"an item that pans", 2, true,
		[](auto const& inContext, auto const& inSource, auto const& inProcessors)
		{
			return MakeItem(inContext, inSource,
				{.mProcessors = inProcessors, .mPanner = MakePanner(inContext, kPanStereoToMono)});
		}},
	{"a submix", 1, true,
		[](auto const& inContext, auto const& inSource, auto const& inProcessors)
		{ return MakeMixTrack(inContext, inSource, {.mProcessors = inProcessors}); }},
	{"a submix that pans", 2, true,
		[](auto const& inContext, auto const& inSource, auto const& inProcessors)
		{
			return MakeMixTrack(inContext, inSource,
				{.mProcessors = inProcessors,
					.mPanner = MakePanner(inContext, kPanStereoToMono),
					.mLayout = VX::kAudioChannelLayout_Stereo});
		}},
	{"a clip", 1, false,
		[](auto const& inContext, auto const& inSource, auto const&) {
			return MakeClip(inContext, {{inSource, {{0, 0}}}});
		}},
	{"a track", 1, true,
		[](auto const& inContext, auto const& inSource, auto const& inProcessors)
		{ return MakeClipTrack(inContext, {inSource}, {.mProcessors = inProcessors}); }},
};

TEST(ShortSource, IsSilentAfterItsEndAndTheRequestGoesOn)
{
	for (ShortSourceCase const& test : kShortSourceCases)
	{
		for (bool const reverse : {false, true})
		{
			SCOPED_TRACE(Message() << test.mName << (reverse ? ", in reverse" : ""));
			// The control interval is 16; in reverse, requests are cut.
			ScopedContext const context(kFrames);
			auto const log = MakeObject<FakeProcessor>(1.0f);
			auto const node = test.mMake(context, MakeObject<ShortSource>(test.mSourceChannels), {log});
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

} // namespace SN::ShortSourceTest
