// What the graph of a sequence does beside its sound, and the sound where no naive renderer follows: items that are
// resampled, live edits, effects whose parameters are stepped. RandomSequenceTest.cpp has all the rest.

#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Host/Refusal.h"
#include "MemoryMedia.h"
#include "SequenceShrinking.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/Prefetcher.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Graph/GraphDrawing.h"
#include "SonaroHost/Sequence/GraphView.h"
#include "SonaroHost/Sequence/NodeLabels.h"
#include "Support/Answers.h"
#include "Support/Pull.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost::Sequence::Testing::SequenceGraphTest
{
namespace
{

using SN::Testing::At;
using SN::Testing::k48000Hz;
using SN::Testing::Samples;
using SonaroHost::Testing::GetRefusalOf;

// How a sequence is rendered.
struct Rendering
{
	std::int64_t mFirstFrame = 0;
	unsigned mFrames = 0;
	bool mIsPlayback = false;
	SN::Testing::BlockSizes mBlocks = SN::Testing::BlocksOf(256);
};

Samples Render(Description const& inDescription, Rendering const& inRendering)
{
	SN::Prefetcher prefetcher;
	SN::Prefetcher* const playback = inRendering.mIsPlayback ? &prefetcher : nullptr;
	RenderContextScope const context(256, SN::kTimeMax, SN::ImmutableString("test"), playback);
	SequenceGraph const graph(inDescription, context.Get(), k48000Hz, playback);
	SN::IAudioGenerator& generator = *graph.GetGenerator();
	generator.InitializeAudioFilters();
	generator.Preroll(At(inRendering.mFirstFrame), false);
	Samples const result = SN::Testing::Pull(generator,
		{inRendering.mFirstFrame, inRendering.mFrames, static_cast<unsigned>(graph.GetLayout().size())},
		inRendering.mBlocks);
	generator.ShutdownAudioFilters();
	return result;
}

constexpr std::int64_t kMediaFrames = 20000;

// Never 0 within the recording.
float Noise(std::int64_t inFrame)
{
	bool const isInside = inFrame >= 0 && inFrame < kMediaFrames;
	return isInside ? static_cast<float>((inFrame * 7919 + 13) % 1009 + 1) : 0.0f;
}

// At so many samples a second.
std::shared_ptr<Media const> MakeMedia(double inSampleRate, float (*inSample)(std::int64_t))
{
	MemoryMedia::Samples samples(1);
	for (std::int64_t frame = 0; frame < kMediaFrames; ++frame)
	{
		samples[0].push_back(inSample(frame));
	}
	return std::make_shared<MemoryMedia const>(inSampleRate, samples);
}

Effect Late(std::int64_t inFrames)
{
	return {"late", LatentEffect{inFrames}};
}

Item MakeClip(std::int64_t inFirst, std::int64_t inEnd, std::int64_t inMediaFrame, std::int64_t inLatency = 0)
{
	Item item;
	item.mName = "clip";
	item.mStart = At(inFirst);
	item.mEnd = At(inEnd);
	static auto const sNoise = MakeMedia(48000, &Noise);
	item.mContent = Clip{sNoise, inMediaFrame, {}};
	if (inLatency > 0)
	{
		item.mChain.mStages.emplace_back(Late(inLatency));
	}
	return item;
}

Track MakeTrack(std::vector<Item> inItems, std::vector<Stage> inStages = {}, Output const& inOutput = {})
{
	Track track;
	track.mName = "track";
	track.mLayout = zorvmediatypes::CreateMonoChannelLayout();
	track.mItems = std::move(inItems);
	track.mChain.mStages = std::move(inStages);
	track.mOutput = inOutput;
	return track;
}

Submix MakeSubmix(std::vector<Stage> inStages, Output const& inOutput = {})
{
	Submix submix;
	submix.mName = "submix";
	submix.mLayout = zorvmediatypes::CreateMonoChannelLayout();
	submix.mChain.mStages = std::move(inStages);
	submix.mOutput = inOutput;
	return submix;
}

Output ToSubmix(std::size_t inSubmix)
{
	return {Output::Kind::kSubmix, inSubmix};
}

Stage SendTo(std::size_t inSubmix)
{
	return Send{inSubmix, {}, {}};
}

Description MakeSequence(
	std::vector<Track> inTracks, std::vector<Submix> inSubmixes = {}, std::vector<Stage> inMaster = {})
{
	Description description;
	description.mName = "sequence";
	description.mLayout = zorvmediatypes::CreateMonoChannelLayout();
	description.mTracks = std::move(inTracks);
	description.mSubmixes = std::move(inSubmixes);
	description.mMaster.mStages = std::move(inMaster);
	return description;
}

Item MakeNest(std::shared_ptr<Description const> const& inSequence, std::int64_t inFirst, std::int64_t inEnd,
	std::int64_t inStart, std::int64_t inLatency = 0)
{
	Item item = MakeClip(inFirst, inEnd, 0, inLatency);
	item.mName = "nest";
	item.mContent = Nest{inSequence, At(inStart)};
	return item;
}

// The samples of the recordings are their own frames, so that what is heard tells where it was read.
TEST(SequenceGraph, ResampledItemsAreReadWhereTheyShould)
{
	struct Case
	{
		double mSampleRate;
		double mSpeed;
		std::int64_t mLatency;
		bool mIsNested;
		Resampling mResampling = Resampling::kExact;
		Ratio mOffset = {};
	};
	// So many frames after a start, the engine's resampler has heard nothing but the recording.
	constexpr std::int64_t kTransient = 100;
	for (Case const& test : {Case{48000, 0.5, 0, false}, {48000, 1.7, 0, false}, {48000, 0.3, 51, false},
			 {48000, 3.0, 50, false}, {44100, 1.0, 0, false}, {96000, 1.0, 33, false},
			 {48000, -1.0, 0, false}, {48000, -1.0, 20, false}, {44100, -1.3, 0, false},
			 {48000, -0.4, 31, false}, {48000, 0.5, 0, true}, {48000, 1.5, 20, true}, {48000, -1.0, 0, true},
			 {48000, -2.0, 7, true}, {44100, 1.0, 0, false, Resampling::kExact, {1, 3}},
			 {48000, -1.7, 13, true, Resampling::kExact, {-2, 7}},
			 {96000, 1.0, 0, false, Resampling::kDraft, {1, 2}}, {48000, 0.3, 51, false, Resampling::kEngine},
			 {44100, -1.3, 0, false, Resampling::kEngine}, {48000, 1.5, 20, true, Resampling::kEngine}})
	{
		SCOPED_TRACE(testing::Message() << test.mSampleRate << " Hz at " << test.mSpeed << ", latency "
										<< test.mLatency << (test.mIsNested ? ", nested" : ""));
		auto const ramp =
			MakeMedia(test.mSampleRate, [](std::int64_t inFrame) { return static_cast<float>(inFrame); });
		Item item = MakeClip(1000, 3000, 0, test.mLatency);
		item.mSpeed = test.mSpeed;
		item.mOffset = test.mOffset;
		item.mResampling = test.mResampling;
		item.mContent = Clip{ramp, 9000, {}};
		bool const isEngines = test.mResampling == Resampling::kEngine;
		if (test.mIsNested)
		{
			// Items have no reverse.
			Item whole = MakeClip(0, kMediaFrames, 0, test.mSpeed > 0 ? 11 : 0);
			whole.mContent = Clip{ramp, 0, {}};
			auto const nested = std::make_shared<Description const>(
				MakeSequence({MakeTrack({whole}, {Late(200)}), MakeTrack({}, {Late(300)})}));
			item.mContent = Nest{nested, At(9000)};
		}
		double const step = test.mSpeed * test.mSampleRate / 48000;
		for (bool const isPlayback : {false, true})
		{
			Samples const samples = Render(MakeSequence({MakeTrack({item})}), {0, 4000, isPlayback});
			EXPECT_EQ(samples[0][999], 0.0f);
			EXPECT_EQ(samples[0][3000], 0.0f);
			double largest = 0.0;
			for (std::int64_t frame = isEngines ? kTransient : 0; frame < 2000; ++frame)
			{
				double const expected = 9000 + test.mOffset.ToDouble() + static_cast<double>(frame) * step;
				largest = std::max(
					largest, std::abs(samples[0][static_cast<std::size_t>(1000 + frame)] - expected));
			}
			// With the engine's, a latency is a whole number of the item's frames, each of which counts so much of
			// the content. Floats are apart by 0.001 here, and the draft is as close as its noise lets it.
			EXPECT_LT(largest, !isEngines ? 0.01 : test.mLatency > 0 ? 1.01 : 0.05);
		}
	}
}

// As long as the filter covers nothing but silence.
TEST(SequenceGraph, ResampledSilenceIsFlagged)
{
	Item item = MakeClip(0, 8000, -1000);
	item.mSpeed = 0.5;
	// The recording begins here, and half of the filter before.
	constexpr std::int64_t kBegin = 2000;
	constexpr std::int64_t kHalf = 224;
	RenderContextScope const context(256, SN::kTimeMax, SN::ImmutableString("test"));
	SequenceGraph const graph(MakeSequence({MakeTrack({item})}), context.Get(), k48000Hz);
	graph.GetGenerator()->Preroll(At(0), false);
	dsp::AudioBuffer block(1, 250);
	for (std::int64_t frame = 0; frame < 4000; frame += 250)
	{
		block.ClearSilenceFlags(dsp::SilenceFlags::All());
		graph.GetGenerator()->GetAudioData(At(frame), block, false);
		EXPECT_EQ(block.IsSilent(), frame + 250 <= kBegin - kHalf) << frame;
	}
}

// A playback of a sequence, block by block.
class Playback
{
public:
	explicit Playback(Description const& inDescription)
		: mContext(256, SN::kTimeMax, SN::ImmutableString("test"), &mPrefetcher),
		  mGraph(inDescription, mContext.Get(), k48000Hz, &mPrefetcher)
	{
		mGraph.GetGenerator()->InitializeAudioFilters();
		mGraph.GetGenerator()->Preroll(SN::kTimeZero, false);
	}
	~Playback() { mGraph.GetGenerator()->ShutdownAudioFilters(); }
	Playback(Playback const&) = delete;
	Playback& operator=(Playback const&) = delete;

	// The next frames of the first channel.
	std::vector<float> Play(unsigned inFrames)
	{
		dsp::AudioBuffer block(mGraph.GetLayout().size(), inFrames);
		mGraph.GetGenerator()->GetAudioData(At(mFrame), block, false);
		mFrame += inFrames;
		return block.IsChannelSilent(0)
				   ? std::vector<float>(inFrames)
				   : std::vector<float>(block.GetChannel(0), block.GetChannel(0) + inFrames);
	}

	SN::LiveAudioParameterMap Collect()
	{
		SN::LiveAudioParameterMap parameters;
		SN::InterfaceRef<SN::ILiveAudioParameterOwner>(mGraph.GetGenerator())
			->CollectLiveParameters(parameters);
		return parameters;
	}

	GraphReport const& GetReport() const { return mGraph.GetReport(); }

private:
	SN::Prefetcher mPrefetcher;
	RenderContextScope mContext;
	SequenceGraph mGraph;
	std::int64_t mFrame = 0;
};

// Of the recording's 1 everywhere.
Item MakeSteadyClip()
{
	static auto const sOnes = MakeMedia(48000, [](std::int64_t) { return 1.0f; });
	Item item = MakeClip(0, kMediaFrames, 0);
	item.mContent = Clip{sOnes, 0, {}};
	return item;
}

TEST(SequenceGraph, EditsOnAnyLevelReachTheHostAndAreHeardAtOnce)
{
	auto const gain = AutomationParameter<float>::Create(1.0f);
	Item item = MakeSteadyClip();
	item.mChain.mStages = {Fader{gain, {}}};
	auto const inner = std::make_shared<Description const>(MakeSequence({MakeTrack({item})}));
	Item back = MakeNest(inner, 0, kMediaFrames, kMediaFrames - 1);
	back.mSpeed = -1.0;
	auto const outer = std::make_shared<Description const>(MakeSequence({MakeTrack({back})}));
	Playback playback(MakeSequence({MakeTrack({MakeNest(outer, 0, kMediaFrames, 0)})}));
	EXPECT_EQ(playback.Play(256)[255], 1.0f);
	EXPECT_TRUE(playback.Collect().empty());

	boost::static_pointer_cast<VX::ParamValue<float>>(gain->GetStartValue())->SetValue(0.0f);
	SN::LiveAudioParameterMap const collected = playback.Collect();
	ASSERT_EQ(collected.size(), 1u);
	EXPECT_EQ(
		collected.begin()->second.mParameter, SN::InterfaceRef<SN::IRenderableAudioComponentParam>(gain));
	std::vector<float> const ramp = playback.Play(256);
	EXPECT_EQ(ramp[0], 1.0f);
	EXPECT_FLOAT_EQ(ramp[120], 0.5f);
	EXPECT_EQ(ramp[240], 0.0f);
	EXPECT_TRUE(playback.Collect().empty());
}

TEST(SequenceGraph, AMuteRampsSendsAndLeavesNoStaleSound)
{
	auto const mute = std::make_shared<zorvcore::threads::AtomicIntegral<int>>(0);
	// The send alone, and the way to the master alone.
	for (bool const isSent : {true, false})
	{
		Item item = isSent ? MakeSteadyClip() : MakeClip(0, kMediaFrames, 0, 1000);
		Track track = MakeTrack({item}, {}, {isSent ? Output::Kind::kNone : Output::Kind::kMaster, 0});
		if (isSent)
		{
			track.mChain.mStages = {SendTo(0)};
		}
		track.mMute = mute;
		mute->Set(0);
		Playback playback(MakeSequence({track}, {MakeSubmix({})}));
		playback.Play(256);
		mute->Set(1);
		std::vector<float> falling = playback.Play(256);
		std::vector<float> const rest = playback.Play(256);
		falling.insert(falling.end(), rest.begin(), rest.end());
		for (unsigned i = 0; i + 1 < falling.size() && isSent; ++i)
		{
			EXPECT_LE(std::abs(falling[i + 1] - falling[i]), 0.01f) << i;
		}
		EXPECT_EQ(falling.back(), 0.0f);
		playback.Play(256);
		mute->Set(0);
		std::vector<float> const rising = playback.Play(256);
		std::vector<float> const risen = playback.Play(256);
		std::vector<float> const after = playback.Play(256);
		EXPECT_LE(rising[1], 0.01f * (isSent ? 1.0f : 1009.0f));
		EXPECT_EQ(after[0], isSent ? 1.0f : Noise(6 * 256));
		EXPECT_LT(risen[0], isSent ? 1.0f : 1009.0f);
	}
}

TEST(SequenceGraph, InstancesBeyondTheLimitAreSilentAndReported)
{
	auto const nested = std::make_shared<Description const>(MakeSequence({MakeTrack({MakeSteadyClip()})}));
	std::vector<Item> nests;
	for (std::int64_t index = 0; index < 202; ++index)
	{
		nests.push_back(MakeNest(nested, index * 10, index * 10 + 10, 0));
	}
	Description const description = MakeSequence({MakeTrack(nests)});
	Samples const samples = Render(description, {1990, 30});
	EXPECT_EQ(samples[0][9], 1.0f);
	EXPECT_EQ(samples[0][10], 0.0f);
	EXPECT_EQ(samples[0][29], 0.0f);
	EXPECT_EQ(Playback(description).GetReport().mOmittedNests,
		(std::vector<std::string>{"track / nest", "track / nest"}));
}

// Notes when its parameters were sampled for the frames that it hears.
class SteppedEffect final : public SN::Testing::Answers<SN::IAudioProcessor, SN::IParameterOwnerMixin>
{
public:
	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override
	{
		return zorvcore::classref::MakeObject<SteppedEffect>();
	}
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const&) override
	{
		std::fill_n(ioBuffer.GetChannel(0), ioBuffer.GetUseSize(), mSampled);
		ioBuffer.NoteBufferWrite(0, ioBuffer.GetUseSize());
	}
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override {}
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	SN::TickTime GetDelay() override { return SN::kTimeZero; }
	SN::TickTime GetNextInterestingTime(SN::TickTime const& inTime) override { return inTime; }
	void UpdateControls(SN::TickTime const& inTime) override
	{
		mSampled = static_cast<float>(inTime.ToFrame64(k48000Hz));
	}

private:
	float mSampled = 0.0f;
};

TEST(SequenceGraph, ParametersOfEffectsAreSampledAtTheSameFramesInAnyCut)
{
	Effect const stepped{"stepped", [](auto const&, auto const&, auto const&)
		{ return SN::InterfaceRef<SN::IAudioProcessor>(zorvcore::classref::MakeObject<SteppedEffect>()); }};
	Description const description =
		MakeSequence({MakeTrack({MakeSteadyClip()}, {Late(100), stepped, Late(37)})});
	for (std::int64_t const first : {0, 1003})
	{
		Samples const samples = Render(description, {first, 2000, false, SN::Testing::RandomBlocks(7, 256)});
		for (std::int64_t i = 0; i < 2000; ++i)
		{
			ASSERT_EQ(samples[0][static_cast<std::size_t>(i)], static_cast<float>((first + i) / 64 * 64))
				<< first + i;
		}
	}
}

// Counts what it hears.
class CountingMeter final : public SN::Testing::Answers<SN::IAudioMeterSetter>
{
public:
	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const&) override
	{
		mFrames += inBuffer.GetUseSize();
	}
	void Shutdown() override {}
	void Reset() override {}

	std::int64_t mFrames = 0;
};

TEST(SequenceGraph, MetersOnAnyLevelHearNothingOfWhatOnlySettles)
{
	auto const outer = zorvcore::classref::MakeObject<CountingMeter>();
	auto const inner = zorvcore::classref::MakeObject<CountingMeter>();
	auto const nested = std::make_shared<Description const>(
		MakeSequence({MakeTrack({MakeSteadyClip()}, {Late(300), Meter{inner}})}, {}, {Late(70)}));
	Item const nest = MakeNest(nested, 0, kMediaFrames, 0, 50);
	Render(MakeSequence({MakeTrack({nest}, {Late(500), Meter{outer}})}, {}, {Late(900)}), {5000, 1000});
	EXPECT_EQ(outer->mFrames, 1000);
	EXPECT_EQ(inner->mFrames, 1000);
}

TEST(SequenceGraph, RefusesWhatContradictsItselfByName)
{
	auto const name = [](auto inNamed, char const* inName)
	{
		inNamed.mName = inName;
		return inNamed;
	};
	auto const clip = name(MakeClip(0, 100, 0), "take 1");
	Track crossfaded = MakeTrack({clip, MakeClip(100, 200, 0)});
	Track faded = crossfaded;
	crossfaded.mCrossfades = {{0, At(101), At(0)}};
	faded.mCrossfades = {{0, At(10), At(10)}};
	faded.mItems[0].mFadeOut.mLength = At(5);
	Item fast = clip;
	fast.mSpeed = 2000;
	Item fastInEngine = fast;
	fastInEngine.mResampling = Resampling::kEngine;
	auto const own = std::make_shared<Description>(MakeSequence({}));
	own->mName = "loop";
	own->mTracks = {MakeTrack({name(MakeNest(own, 0, 100, 0), "itself")})};
	Track const nameless = name(MakeTrack({clip, name(clip, "")}), "");
	auto const inner = std::make_shared<Description const>(MakeSequence({nameless}));
	std::vector<Submix> const circle = {name(MakeSubmix({}, ToSubmix(1)), "hall"),
		name(MakeSubmix({SendTo(2)}), "plate"), name(MakeSubmix({}, ToSubmix(0)), "drums"),
		MakeSubmix({}, ToSubmix(2))};
	std::pair<Description, std::string> const cases[] = {
		{MakeSequence({}, circle),
			"sends or outputs form a loop: hall -> plate -> drums -> hall; remove one"},
		{MakeSequence({}, {MakeSubmix({SendTo(0)})}),
			"sends or outputs form a loop: submix -> submix; remove one"},
		{MakeSequence({MakeTrack({}, {SendTo(1)})}, {MakeSubmix({})}),
			"track 'track': it sends to submix index 1, but there are 1, counted"},
		{MakeSequence({MakeTrack({clip, clip})}), "track 'track', item 'take 1': it begins before the end"},
		{MakeSequence({MakeTrack({}), nameless}), "track 2, item 2: it begins before the end"},
		{MakeSequence({name(MakeTrack({name(MakeNest(inner, 0, 100, 0), "")}), "")}),
			"track 'track 1 / item 1 / track 1', item 2: it begins before the end"},
		{MakeSequence({crossfaded}), "track 'track', item 'take 1': the crossfade at its end extends"},
		{MakeSequence({faded}), "track 'track', item 'take 1': a fade and a crossfade are at the same end"},
		{MakeSequence({MakeTrack({fast})}),
			"track 'track', item 'take 1': its speed takes more than 1000 samples for each output sample"},
		{MakeSequence({MakeTrack({fastInEngine})}),
			"track 'track', item 'take 1': at its speed, its blocks would be"},
		{MakeSequence({MakeTrack({name(MakeNest(own, 0, 100, 0), "inner")})}),
			"track 'track / inner / track', item 'itself': the sequence 'loop' is nested in itself"},
	};
	for (auto const& test : cases)
	{
		std::string const refusal = GetRefusalOf(
			[&] {
				Render(test.first, {0, 1});
			},
			HostError::Kind::kRequest);
		EXPECT_EQ(refusal.substr(0, test.second.size()), test.second);
	}
	// It holds itself.
	own->mTracks.clear();
}

TEST(SequenceGraph, ReportsWhereEverythingStands)
{
	auto const nested = std::make_shared<Description const>(
		MakeSequence({MakeTrack({MakeClip(10, 20, 0, 4)}, {Late(30)}), MakeTrack({MakeClip(0, 5, 0)})}));
	std::vector<Item> const nests = {MakeNest(nested, 100, 200, 0), MakeNest(nested, 200, 300, 0)};
	Description const description =
		MakeSequence({MakeTrack(nests, {Late(7), SendTo(0)})}, {MakeSubmix({Late(5)})}, {Late(2)});
	RenderContextScope const context(256, SN::kTimeMax, SN::ImmutableString("test"));
	SequenceGraph const graph(description, context.Get(), SN::Testing::k48000Hz);
	EXPECT_EQ(Describe(graph.GetReport()), R"(track ahead 14 late 7 waits 5
submix ahead 7 late 5 waits 0
master ahead 2 late 2 waits 0
track / nest / track ahead 30 late 30 waits 0
track / nest / track ahead 0 late 0 waits 0
track / nest / master ahead 0 late 0 waits 0
track / nest / track ahead 30 late 30 waits 0
track / nest / track ahead 0 late 0 waits 0
track / nest / master ahead 0 late 0 waits 0
3 clip 10 to 20 late 4
4 clip 0 to 5 late 0
0 nest 100 to 200 late 0
6 clip 10 to 20 late 4
7 clip 0 to 5 late 0
0 nest 200 to 300 late 0
)");
}

TEST(SequenceGraph, LinesOfADrawingSayWhatIsLateAndWhatWaits)
{
	Description const description = MakeSequence(
		{MakeTrack({MakeClip(0, 100, 0, 480)}, {Late(960), SendTo(0)}), MakeTrack({MakeClip(0, 5, 0)})},
		{MakeSubmix({Late(48)})});
	RenderContextScope const context(256, SN::kTimeMax, SN::ImmutableString("test"));
	GraphView view;
	view.mLabels = std::make_shared<NodeLabels>();
	SequenceGraph const graph(description, context.Get(), k48000Hz, nullptr, view);
	std::string const dot = GraphDrawing(
		graph.GetGenerator(), k48000Hz, {.mMaxDepth = {}, .mShowsAll = false, .mLabels = view.mLabels.get()})
								.ToDot("");
	std::vector<std::string> delays;
	for (std::size_t place = 0; (place = dot.find("label=\"", place)) != std::string::npos;)
	{
		place += std::string("label=\"").size();
		std::string const label = dot.substr(place, dot.find('"', place) - place);
		if (!label.empty())
		{
			delays.push_back(label);
		}
	}
	// Effects and the processors in them say the same, and the track's wait stands on the lines to both that it feeds. The
	// other track is asked for later instead of waiting.
	EXPECT_THAT(
		delays, testing::UnorderedElementsAre("latency 480 frames, 10 ms", "latency 480 frames, 10 ms",
					"latency 960 frames, 20 ms", "latency 960 frames, 20 ms", "latency 48 frames, 1 ms",
					"latency 48 frames, 1 ms", "waits 48 frames, 1 ms", "waits 48 frames, 1 ms"));
}

} // namespace
} // namespace SonaroHost::Sequence::Testing::SequenceGraphTest
