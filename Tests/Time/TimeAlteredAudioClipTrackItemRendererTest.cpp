#include "Sonaro/AudioResamplerFactory.h"
#include "Sonaro/IAudioTimeScalerFactory.h"
#include "Support/Engine.h"
#include "Support/Trials.h"

namespace SN::TimeAlteredAudioClipTrackItemRendererTest
{

// Takes one input in every so many, after a lead that its first block reads and drops: exact, so that every sample
// shows where it came from.
class FakeScaler final : public Answers<IAudioTimeScaler>
{
public:
	static constexpr unsigned kLead = 300;

	void Init(double inRatio, FrameRate const&, unsigned inNumChannels, double, unsigned, unsigned) override
	{
		mStep = static_cast<unsigned>(std::lround(1.0 / inRatio));
		mNumChannels = inNumChannels;
		mIsFirst = true;
		mDrops = true;
	}
	void Reset() override { mStep = 0; }
	unsigned GetOutputSampleCount(unsigned inNumInput) override { return inNumInput / mStep; }
	unsigned GetInputSampleCount(unsigned inNumOutput) override
	{
		unsigned const lead = mIsFirst ? kLead : 0;
		mIsFirst = false;
		return inNumOutput * mStep + lead;
	}
	unsigned GetMaxInputSampleCount(unsigned inNumOutput, double) override
	{
		return inNumOutput * mStep + kLead;
	}
	unsigned GetNumChannels() override { return mNumChannels; }
	unsigned Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput,
		unsigned inNumOutput) override
	{
		EXPECT_EQ(inInput.GetSilenceFlags().Test(0), false) << "silence at the input would be left out";
		EXPECT_GE(inInput.GetUseSize(), inNumInput);
		unsigned const first = mDrops ? kLead : 0;
		mDrops = false;
		for (unsigned channel = 0; channel < mNumChannels; ++channel)
		{
			for (unsigned i = 0; i < inNumOutput; ++i)
			{
				outOutput.GetChannel(channel)[i] = inInput.GetChannel(channel)[first + i * mStep];
			}
			outOutput.NoteChannelWrite(channel, inNumOutput);
		}
		return inNumOutput;
	}
	double GetMinRatio() override { return 0.1; }
	double GetMaxRatio() override { return 10.0; }
	double GetRatio() override { return 1.0 / mStep; }
	InterfaceRef<IAudioTimeScaler> GetSelfReference() override
	{
		return InterfaceRef<IAudioTimeScaler>::FromThis(this);
	}

private:
	unsigned mStep = 0;
	unsigned mNumChannels = 0;
	bool mIsFirst = true;
	bool mDrops = true;
};

class FakeScalerFactory final : public Answers<IAudioTimeScalerFactory>
{
public:
	InterfaceRef<IAudioTimeScaler> CreateAudioTimeScaler(RenderQuality) override
	{
		return MakeObject<FakeScaler>();
	}
};

// Puts another factory of scalers in place for a test.
class ScopedScalerFactory
{
public:
	explicit ScopedScalerFactory(InterfaceRef<IAudioTimeScalerFactory> const& inFactory)
	{
		SetAudioTimeScalerFactory(inFactory);
	}
	~ScopedScalerFactory() { SetAudioTimeScalerFactory(mPrevious); }
	ScopedScalerFactory(ScopedScalerFactory const&) = delete;
	ScopedScalerFactory& operator=(ScopedScalerFactory const&) = delete;

private:
	InterfaceRef<IAudioTimeScalerFactory> const mPrevious = GetAudioTimeScalerFactory();
};

// Halves, and records when its parameters are sampled and which blocks it is given.
class StampingProcessor final : public Answers<IAudioProcessor, IParameterOwnerMixin>
{
public:
	InterfaceRef<IAudioProcessor> Clone(FrameRate const&, unsigned, unsigned) override
	{
		return MakeObject<StampingProcessor>();
	}
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, TickTime const& inTime) override
	{
		mCalls.push_back({"Process", inTime, ioBuffer.GetUseSize()});
		ioBuffer *= 0.5f;
	}
	void Preroll(TickTime const&, bool) override {}
	void Reset() override {}
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	TickTime GetDelay() override { return mDelay; }
	TickTime GetNextInterestingTime(TickTime const&) override { return kTimeMax; }
	void UpdateControls(TickTime const& inTime) override { mCalls.push_back({"Update", inTime}); }

	std::vector<Call> mCalls;
	TickTime mDelay;
};

// From 0 to 0.5, and never 0.
float Hash(unsigned long long inChannel, long long inFrame)
{
	auto const mixed = (static_cast<unsigned long long>(inFrame) * 2 + inChannel) * 0x9e3779b97f4a7c15ull;
	return static_cast<float>((mixed >> 40) + 1) / 0x1p25f;
}

constexpr unsigned kMaxBlock = 96;
// Enough for a scaler to give out much more than its lead.
constexpr unsigned kMaxScaledBlock = 4096;
constexpr unsigned kControlInterval = 16;

struct ItemSetup
{
	double mSpeed = 1.0;
	double mScalerSpeed = 1.0;
	bool mMaintainPitch = false;
	bool mReverse = false;
	TickTime mOffset = kTimeZero;
	TickTime mSecondOffset = kTimeZero;
	long long mItemFrames = 0;
	bool mIsStereo = false;
	unsigned mMaxBlock = kMaxBlock;

	TimeAlteredAudioClipTrackItemSettings MakeSettings(
		ScopedContext const& inContext, InterfaceRef<IAudioProcessor> const& inProcessor) const
	{
		return {
			.mContext = inContext,
			.mFrameRate = k48000Hz,
			.mGenerator = MakeObject<FakeGenerator>(1, &Hash),
			.mProcessors = {inProcessor},
			.mPanProcessor =
				mIsStereo ? MakePanner(inContext, kPanMonoToStereo, ConstantParameters({0.0f})) : nullptr,
			.mSpeed = mSpeed,
			.mReverse = mReverse,
			.mMaintainPitch = mMaintainPitch,
			.mTimeOffset = mOffset,
			.mSecondTimeOffset = mSecondOffset,
			.mScalerSpeed = mScalerSpeed,
			.mItemStartTime = At(1000),
			.mItemEndTime = At(1000 + mItemFrames),
		};
	}
};

// What the item is defined to do, on whole vectors of one channel, with converters of its own, of the scalers that are
// in place, and without windows, chains or scratch.
class Model
{
public:
	explicit Model(ItemSetup const& inSetup)
		: mSetup(inSetup),
		  mRelative(inSetup.mSpeed / inSetup.mScalerSpeed)
	{
		if (mSetup.mMaintainPitch)
		{
			mScaler = GetAudioTimeScalerFactory()->CreateAudioTimeScaler(RenderQuality::kHigh);
			mScaler->Init(1.0 / mSetup.mScalerSpeed, k48000Hz, 1, 1.0, 2048, 1);
		}
		if (!mSetup.mMaintainPitch || mSetup.mSpeed != mSetup.mScalerSpeed)
		{
			double const speed = mSetup.mMaintainPitch ? mRelative : mSetup.mSpeed;
			bool const isFast = mSetup.mSpeed > 0.04;
			mResampler = AudioResamplerFactory::CreateAudioResampler(
				isFast ? RenderQuality::kHigh : RenderQuality::kMedium);
			mResampler->Init(FrameRate(static_cast<std::int64_t>(254016000000.0 / (48000.0 * speed))),
				k48000Hz, 1, isFast && mSetup.mSpeed <= 100.0 && !mSetup.mMaintainPitch);
		}
		mSource = mSetup.mReverse ? At(mSetup.mItemFrames) * mRelative : kTimeZero;
		mClip = mSource;
	}

	std::vector<float> Pull(TickTime const& inTime, unsigned inFrames, bool inReverse)
	{
		TickTime const time = inTime + mSetup.mOffset;
		if (time < kTimeZero && mMediaOffset == kTimeZero)
		{
			mMediaOffset = time * mSetup.mSpeed * (mSetup.mReverse ? -1.0 : 1.0);
		}
		unsigned const scaled = mSetup.mMaintainPitch ? mScaler->GetInputSampleCount(inFrames) : inFrames;
		unsigned const fetch = mResampler ? mResampler->GetInputSampleCount(scaled) : scaled;
		auto const moved = static_cast<long long>(fetch / mRelative);
		if (mSetup.mReverse)
		{
			mSource = mSource - At(fetch);
			mClip = mClip - At(moved);
		}
		std::vector<float> audio = Read(fetch);
		if (mSetup.mReverse != inReverse)
		{
			std::reverse(audio.begin(), audio.end());
		}
		Process(audio, inReverse);
		if (!mSetup.mReverse)
		{
			mSource = mSource + At(fetch);
			mClip = mClip + At(moved);
		}
		if (mResampler)
		{
			audio = Convert(*mResampler, audio, scaled, true);
		}
		return mSetup.mMaintainPitch ? Convert(*mScaler, audio, inFrames, false) : audio;
	}

	std::vector<Call> mCalls;

private:
	std::vector<float> Read(unsigned inCount) const
	{
		std::vector<float> audio(inCount);
		bool const beginsBefore = mSetup.mReverse && mSource < kTimeZero;
		long long const from = (beginsBefore ? mSource : mSource + mMediaOffset).ToFrame64(k48000Hz);
		for (unsigned i = 0; i < inCount; ++i)
		{
			audio[i] = beginsBefore && from + i < 0 ? 0.0f : Hash(0, from + i);
		}
		return audio;
	}

	void Process(std::vector<float>& ioAudio, bool inReverse)
	{
		FrameRate const rate(static_cast<std::int64_t>(254016000000.0 / (48000.0 * mRelative)));
		TickTime time = mSetup.mSecondOffset + mClip + mMediaOffset;
		auto left = static_cast<unsigned>(ioAudio.size());
		if (inReverse)
		{
			time.AddFrames(static_cast<long long>(left) - mInBlock, rate);
		}
		while (left > 0)
		{
			if (mInBlock == 0)
			{
				mCalls.push_back({"Update", time});
			}
			unsigned const size = std::min({kControlInterval - mInBlock, mSetup.mMaxBlock, left});
			mCalls.push_back({"Process", time, size});
			time.AddFrames(inReverse ? -static_cast<long long>(size) : size, rate);
			mInBlock = (mInBlock + size) % kControlInterval;
			left -= size;
		}
		for (float& sample : ioAudio)
		{
			sample *= 0.5f;
		}
	}

	template <class Converter>
	static std::vector<float> Convert(
		Converter& ioConverter, std::vector<float> const& inAudio, unsigned inCount, bool inMayBeFlagged)
	{
		auto const read = static_cast<unsigned>(inAudio.size());
		dsp::AudioBuffer input(1, read + 1);
		input.SetUseSize(read);
		std::copy(inAudio.begin(), inAudio.end(), input.GetChannel(0));
		if (inMayBeFlagged && read > 0 && std::count(inAudio.begin(), inAudio.end(), 0.0f) == read)
		{
			// Nothing of the source lies here, and its flag says so.
			input.Zero();
		}
		dsp::AudioBuffer output(1, inCount + 1);
		output.SetUseSize(inCount);
		ioConverter.Process(input, output, read, inCount);
		return output.IsChannelSilent(0)
				   ? std::vector<float>(inCount)
				   : std::vector<float>(output.GetChannel(0), output.GetChannel(0) + inCount);
	}

	ItemSetup mSetup;
	double mRelative;
	InterfaceRef<IAudioTimeScaler> mScaler;
	InterfaceRef<IAudioResampler> mResampler;
	TickTime mSource;
	TickTime mClip;
	TickTime mMediaOffset;
	unsigned mInBlock = 0;
};

// The blocks of one run, from the same seed for the item and for the model.
template <class PullBlock>
void PullBlocks(
	unsigned long inSeed, unsigned inMaxBlock, TickTime inStart, bool inReverse, PullBlock const& inPull)
{
	std::mt19937 random(static_cast<unsigned>(inSeed));
	for (unsigned i = 0; i < 12; ++i)
	{
		unsigned const frames = 1 + static_cast<unsigned>(random() % inMaxBlock);
		inPull(inStart, frames, inReverse);
		inStart.AddFrames(frames, k48000Hz);
	}
}

ItemSetup MakeRandomSetup(std::mt19937& ioRandom)
{
	auto const pick = [&ioRandom](auto const&... inValues)
	{
		std::array const values{inValues...};
		return values[ioRandom() % values.size()];
	};
	ItemSetup setup;
	setup.mMaintainPitch = pick(true, false);
	setup.mScalerSpeed = setup.mMaintainPitch ? pick(1.0, 2.0, 3.0) : 1.0;
	setup.mSpeed = pick(true, false) ? setup.mScalerSpeed : pick(0.03, 0.5, 0.9, 1.25, 2.0, 3.0, 110.0);
	setup.mReverse = pick(true, false);
	setup.mOffset = At(pick(0, 7, -500));
	setup.mSecondOffset = At(pick(0, 31));
	setup.mItemFrames = pick(200, 30000);
	setup.mIsStereo = pick(true, false);
	return setup;
}

// One pull of both. Returns the loudest sample.
float PullBoth(Generator const& inItem, Model& ioModel, ItemSetup const& inSetup, TickTime const& inTime,
	unsigned inFrames, bool inReverse)
{
	dsp::AudioBuffer buffer(inSetup.mIsStereo ? 2 : 1, inFrames);
	inItem->GetAudioData(inTime, buffer, inReverse);
	std::vector<float> const expected = ioModel.Pull(inTime, inFrames, inReverse);
	std::vector<float> heard(inFrames, 0.0f);
	// Stereo is panned hard left.
	if (!buffer.IsChannelSilent(0))
	{
		heard.assign(buffer.GetChannel(0), buffer.GetChannel(0) + inFrames);
	}
	EXPECT_EQ(buffer.GetNumChannels(), inSetup.mIsStereo ? 2u : 1u);
	EXPECT_TRUE(Same({heard}, {expected}));
	return std::abs(*std::max_element(
		heard.begin(), heard.end(), [](float inA, float inB) { return std::abs(inA) < std::abs(inB); }));
}

// An item, the same after a reset, and a clone. Returns the loudest sample of them.
float CompareWithModel(
	ItemSetup const& inSetup, unsigned long inSeed, TickTime const& inStart, bool inReverse)
{
	SCOPED_TRACE(Message() << "speed " << inSetup.mSpeed << " of " << inSetup.mScalerSpeed
						   << (inSetup.mMaintainPitch ? ", pitch kept" : "")
						   << (inSetup.mReverse ? ", backward" : "") << (inReverse ? ", in reverse" : ""));
	ScopedContext const context(inSetup.mMaxBlock);
	auto const processor = MakeObject<StampingProcessor>();
	auto const item =
		GraphFactory().CreateTimeAlteredAudioClipTrackItemRenderer(inSetup.MakeSettings(context, processor));
	float loudest = 0.0f;
	for (Generator const& one : {item, item, item->Clone()})
	{
		processor->mCalls.clear();
		Model model(inSetup);
		one->Preroll(inStart, inReverse);
		PullBlocks(inSeed, inSetup.mMaxBlock, inStart, inReverse,
			[&](TickTime const& inTime, unsigned inFrames, bool inIsReverse)
			{ loudest = std::max(loudest, PullBoth(one, model, inSetup, inTime, inFrames, inIsReverse)); });
		if (one == item)
		{
			EXPECT_EQ(processor->mCalls, model.mCalls);
		}
		one->Reset();
	}
	return loudest;
}

TEST(TimeAlteredAudioClipTrackItemRenderer, AgreesWithItsDefinitionInAllChains)
{
	ScopedScalerFactory const factory(MakeObject<FakeScalerFactory>());
	std::mt19937 random(20);
	for (unsigned trial = 0; trial < GetNumTrials(80) && !testing::Test::HasFailure(); ++trial)
	{
		SCOPED_TRACE(trial);
		ItemSetup const setup = MakeRandomSetup(random);
		bool const reverse = random() % 4 == 0;
		auto const seed = random();
		CompareWithModel(setup, seed, At(random() % 3 == 0 ? -300 : 40), reverse);
	}
}

TEST(TimeAlteredAudioClipTrackItemRenderer, PlaysWhatScalersAndResamplersGiveOutsideOfIt)
{
	std::mt19937 random(21);
	for (unsigned trial = 0; trial < GetNumTrials(20) && !testing::Test::HasFailure(); ++trial)
	{
		SCOPED_TRACE(trial);
		std::uniform_real_distribution<double> octaves(-1.5, 1.5);
		ItemSetup setup = MakeRandomSetup(random);
		setup.mMaintainPitch = true;
		setup.mScalerSpeed = std::exp2(octaves(random));
		setup.mSpeed = setup.mScalerSpeed * (trial % 2 == 0 ? 1.0 : std::exp2(octaves(random) / 3.0));
		setup.mItemFrames = 200000;
		setup.mMaxBlock = kMaxScaledBlock;
		EXPECT_GT(CompareWithModel(setup, random(), At(40), random() % 4 == 0), 0.1f);
	}
}

TEST(TimeAlteredAudioClipTrackItemRenderer, HandsOnDelaysAndSkipsLateProcessorsWhereTheseDoNotCount)
{
	ScopedContext const context(kMaxBlock);
	auto const source = MakeObject<FakeGenerator>(1, &Hash);
	source->mDelay = At(5);
	auto const processor = MakeObject<StampingProcessor>();
	processor->mDelay = At(9);
	auto settings = ItemSetup{.mSpeed = 2.0}.MakeSettings(context, processor);
	settings.mGenerator = source;
	auto const item = GraphFactory().CreateTimeAlteredAudioClipTrackItemRenderer(settings);
	EXPECT_EQ(item->GetDelay(), At(5));
	EXPECT_TRUE(item->HasHistory());
	EXPECT_TRUE(RequestPrefetch(*item, {At(0), At(100)}).mSynchronous.empty());

	item->Preroll(At(3), true);
	item->FillInitialDelay(At(3), At(5), true, false);
	item->FillInitialDelay(At(3), At(5), true, true);
	EXPECT_THAT(source->mCalls, ElementsAre(Call{"Preroll", At(3), 0, true},
									Call{"FillInitialDelay, forced", At(3), At(5).GetTicks(), true}));

	PullWhole(*item, {.mFrames = 10});
	EXPECT_FALSE(processor->mCalls.empty());
	context->SetDelayCompensationDisabled(true);
	EXPECT_EQ(item->GetDelay(), kTimeZero);
	source->mCalls.clear();
	item->FillInitialDelay(At(3), At(5), true, true);
	EXPECT_TRUE(source->mCalls.empty());
	item->Reset();
	processor->mCalls.clear();
	PullWhole(*item, {.mFrames = 10});
	EXPECT_EQ(std::count_if(processor->mCalls.begin(), processor->mCalls.end(),
				  [](Call const& inCall) { return inCall.mName == "Process"; }),
		0);
}

TEST(TimeAlteredAudioClipTrackItemRenderer, ChannelsThatItDoesNotHaveAreSilent)
{
	ScopedContext const context(kMaxBlock);
	for (bool const maintainsPitch : {false, true})
	{
		auto settings = ItemSetup{.mSpeed = 2.0, .mMaintainPitch = maintainsPitch}.MakeSettings(
			context, MakeObject<StampingProcessor>());
		auto const item = GraphFactory().CreateTimeAlteredAudioClipTrackItemRenderer(settings);
		auto buffer = MakeBuffer(2, kMaxBlock, 5.0f);
		item->GetAudioData(At(0), buffer, false);
		EXPECT_TRUE(buffer.IsChannelSilent(1)) << maintainsPitch;
	}
}

TEST(TimeAlteredAudioClipTrackItemRenderer, RefusesWhatItCannotPlay)
{
	ScopedContext const context(kMaxBlock);
	auto const processor = MakeObject<StampingProcessor>();
	auto const make = [&](ItemSetup const& inSetup)
	{ GraphFactory().CreateTimeAlteredAudioClipTrackItemRenderer(inSetup.MakeSettings(context, processor)); };
	double const none = std::numeric_limits<double>::quiet_NaN();
	EXPECT_THROW(make({.mSpeed = none}), zorvcore::config::zorv_exception);
	EXPECT_THROW(make({.mSpeed = 1.0, .mScalerSpeed = 0.0}), zorvcore::config::zorv_exception);
	ScopedScalerFactory const factory({});
	EXPECT_THROW(make({.mMaintainPitch = true}), zorvcore::config::zorv_exception);
	EXPECT_NO_THROW(make({.mSpeed = 1.5}));
}

} // namespace SN::TimeAlteredAudioClipTrackItemRendererTest
