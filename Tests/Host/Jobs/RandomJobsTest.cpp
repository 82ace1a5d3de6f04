// Random sequences, rendered by several threads in pieces of any length: what the output and the taps get is what one
// thread gives.

#include "Host/Sequence/RandomSequence.h"
#include "Render/Piece/PieceRenderer.h"
#include "Render/RangeRender.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "Support/Trials.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace SonaroHost::Testing::RandomJobsTest
{

namespace
{

using Sequence::Description;

// Samples of each channel by their bits, all zeros alike.
using Heard = std::vector<std::vector<std::uint32_t>>;

void Append(dsp::AudioBuffer const& inBuffer, Heard& ioHeard)
{
	ioHeard.resize(std::max<std::size_t>(ioHeard.size(), inBuffer.GetNumChannels()));
	for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
	{
		for (unsigned i = 0; i < inBuffer.GetUseSize(); ++i)
		{
			float const sample = inBuffer.IsChannelSilent(channel) ? 0.0f : inBuffer.GetChannel(channel)[i];
			ioHeard[channel].push_back(std::bit_cast<std::uint32_t>(sample + 0.0f));
		}
	}
}

// Notes what it hears; one call at a time.
class Listener final : public SN::Implements<Listener, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<Listener> kIdentifier{0x6e0b3c92f7d1a584ull, 0x1d85a7f30c6be249ull};

	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const&) override
	{
		EXPECT_FALSE(mIsHearing.exchange(true));
		Append(inBuffer, mHeard);
		mIsHearing = false;
	}
	void Shutdown() override {}
	void Reset() override {}

	Heard mHeard;

private:
	std::atomic<bool> mIsHearing{false};
};

// Copies of sequences whose tracks all have an origin of their own.
class Tagger
{
public:
	std::shared_ptr<Description const> Tag(std::shared_ptr<Description const> const& inDescription)
	{
		auto& copy = mCopies[inDescription.get()];
		if (!copy)
		{
			auto tagged = std::make_shared<Description>(*inDescription);
			for (Sequence::Track& track : tagged->mTracks)
			{
				track.mOrigin = "/" + std::to_string(mOrigins.size());
				mOrigins.push_back(track.mOrigin);
				for (Sequence::Item& item : track.mItems)
				{
					if (auto* const nest = std::get_if<Sequence::Nest>(&item.mContent))
					{
						nest->mSequence = Tag(nest->mSequence);
					}
				}
			}
			copy = tagged;
		}
		return copy;
	}

	std::vector<std::string> const& GetOrigins() const { return mOrigins; }

private:
	std::map<Description const*, std::shared_ptr<Description const>> mCopies;
	std::vector<std::string> mOrigins;
};

// Media that are in memory.
class SoundMedia final : public GraphMedia
{
public:
	std::optional<HostError> FindFailure() const override { return std::nullopt; }
	std::vector<DamagedMedia> ListDamaged() const override { return {}; }
};

Programme MakeProgramme(std::shared_ptr<Description const> const& inDescription, int inSampleRate)
{
	Programme programme;
	programme.mDescription = inDescription;
	programme.mSampleRate = inSampleRate;
	programme.mFrames = GetLength(*inDescription).ToFrame64(programme.GetFrameRate()) + 500;
	programme.mMedia = std::make_shared<SoundMedia>();
	programme.mOpenForGraph = [] { return std::make_unique<SoundMedia>(); };
	return programme;
}

struct Rendering
{
	Heard mMix;
	std::map<std::string, Heard> mTracks;

	bool operator==(Rendering const&) const = default;
};

Rendering Render(
	Programme const& inProgramme, std::vector<std::string> const& inOrigins, RangeRender inRender)
{
	Rendering rendering;
	std::map<std::string, SN::InterfaceRef<Listener>> listeners;
	for (std::string const& origin : inOrigins)
	{
		listeners[origin] = zorvcore::classref::MakeObject<Listener>();
		inRender.mView.mTaps.emplace(origin, listeners[origin]);
	}
	inRender.mSink = [&rendering](dsp::AudioBuffer& ioBlock)
	{
		Append(ioBlock, rendering.mMix);
		// What the sink leaves in the block is nobody's business.
		ioBlock.Zero();
	};
	auto const report = RenderRange(inProgramme, inRender);
	EXPECT_TRUE(report);
	EXPECT_EQ(report ? report->mGraph.mWhyInOneRun : "", "");
	for (auto const& [origin, listener] : listeners)
	{
		rendering.mTracks[origin] = listener->mHeard;
	}
	return rendering;
}

// Half of the taps in two groups, the rest in none.
std::vector<std::vector<std::string>> GroupTaps(std::vector<std::string> const& inOrigins)
{
	std::vector<std::vector<std::string>> groups(2);
	for (std::size_t i = 0; i < inOrigins.size() / 2; ++i)
	{
		groups[i % 2].push_back(inOrigins[i]);
	}
	return groups;
}

// More of them by hand: the number in the environment.
unsigned CountSeeds()
{
	char const* const text = std::getenv("SONARO_JOBS_SEEDS");
	return text ? static_cast<unsigned>(std::stoul(text)) : SN::Testing::GetNumTrials(24);
}

TEST(RandomJobs, AnyNumberOfThreadsAndAnyCutGiveTheSameSamplesToOutputAndTaps)
{
	bool hasSound = false;
	for (unsigned seed = 1; seed <= CountSeeds(); ++seed)
	{
		SCOPED_TRACE("seed " + std::to_string(seed));
		std::mt19937 random(seed);
		auto const made = Sequence::Testing::MakeRandomSequence(seed);
		Tagger tagger;
		Programme const programme = MakeProgramme(
			tagger.Tag(made.mSequence), static_cast<int>(std::lround(made.mFrameRate.GetSamplesPerSecond())));
		RangeRender render;
		std::int64_t const first = seed % 3 == 0 ? programme.mFrames / 5 : 0;
		render.mRange = {first, programme.mFrames - first};
		render.mBlockFrames = 32u << random() % 7;
		Rendering const whole = Render(programme, tagger.GetOrigins(), render);
		for (unsigned const jobs : {2u, 3u, 7u})
		{
			render.mJobs = jobs;
			auto const longest = static_cast<unsigned>(render.mRange.mFrames / 3 + 1);
			render.mPieceFrames = 1 + static_cast<std::int64_t>(random() % longest);
			render.mTapGroups = GroupTaps(tagger.GetOrigins());
			SCOPED_TRACE(testing::Message() << jobs << " threads, pieces of " << render.mPieceFrames
											<< ", blocks of " << render.mBlockFrames);
			Rendering const shared = Render(programme, tagger.GetOrigins(), render);
			ASSERT_TRUE(shared.mMix == whole.mMix);
			for (std::string const& origin : tagger.GetOrigins())
			{
				ASSERT_TRUE(shared.mTracks.at(origin) == whole.mTracks.at(origin)) << "track " << origin;
			}
		}
		for (std::vector<std::uint32_t> const& channel : whole.mMix)
		{
			hasSound = hasSound || std::any_of(channel.begin(), channel.end(),
									   [](std::uint32_t inBits) { return inBits != 0; });
		}
	}
	EXPECT_TRUE(hasSound);
}

// Which thread gets which piece depends on the machine; here it is drawn.
TEST(RandomJobs, GraphsThatTakePiecesInAnyTurnGiveTheSame)
{
	for (unsigned seed = 1; seed <= CountSeeds(); ++seed)
	{
		SCOPED_TRACE("seed " + std::to_string(seed));
		std::mt19937 random(seed);
		auto const made = Sequence::Testing::MakeRandomSequence(seed);
		Tagger tagger;
		Programme const programme = MakeProgramme(
			tagger.Tag(made.mSequence), static_cast<int>(std::lround(made.mFrameRate.GetSamplesPerSecond())));
		RangeRender render;
		render.mRange = {0, programme.mFrames};
		render.mBlockFrames = 32u << random() % 7;
		Rendering const whole = Render(programme, tagger.GetOrigins(), render);

		Rendering shared;
		std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>> meters;
		std::vector<SN::InterfaceRef<Listener>> listeners;
		std::map<std::string, std::size_t> taps;
		for (std::string const& origin : tagger.GetOrigins())
		{
			render.mView.mTaps[origin] = zorvcore::classref::MakeObject<Listener>();
		}
		for (auto const& [origin, tap] : render.mView.mTaps)
		{
			meters.push_back(tap);
			listeners.emplace_back(tap);
			taps[origin] = listeners.size() - 1;
		}
		OfflineRange const range{programme.mFrames, programme.GetFrameRate(),
			static_cast<unsigned>(programme.GetLayout().size()), render.mBlockFrames};
		PieceRenderer first(programme, render, range);
		PieceRenderer second(programme, render, range);
		TapReplay replay(meters);
		Piece piece(range.mChannels, range.mBlockFrames, 100);
		std::atomic<bool> const isEnding = false;
		std::int64_t const frames =
			std::int64_t{render.mBlockFrames} * (1 + static_cast<std::int64_t>(random() % 4));
		for (std::int64_t done = 0; done < programme.mFrames; done += frames)
		{
			piece.Clear();
			(random() % 2 == 0 ? first : second)
				.Render(done, std::min(frames, programme.mFrames - done), isEnding, piece);
			ASSERT_FALSE(piece.mFailure);
			piece.TakeBlocks([&](dsp::AudioBuffer& ioBlock) { Append(ioBlock, shared.mMix); });
			replay.Replay(piece);
		}
		ASSERT_TRUE(shared.mMix == whole.mMix);
		for (auto const& [origin, tap] : taps)
		{
			Heard const& expected = whole.mTracks.at(origin);
			Heard const& heard = listeners[tap]->mHeard;
			ASSERT_EQ(heard.size(), expected.size()) << "track " << origin;
			for (std::size_t channel = 0; channel < heard.size(); ++channel)
			{
				ASSERT_EQ(heard[channel].size(), expected[channel].size()) << "track " << origin;
				auto const [at, other] =
					std::mismatch(heard[channel].begin(), heard[channel].end(), expected[channel].begin());
				ASSERT_TRUE(at == heard[channel].end())
					<< "track " << origin << " differs at " << at - heard[channel].begin() << ": "
					<< std::bit_cast<float>(*at) << " and " << std::bit_cast<float>(*other);
			}
		}
	}
}

// Adds to each sample half of what it gave before.
class Echo final : public SN::Implements<Echo, SN::IAudioProcessor>
{
public:
	static constexpr SN::Identifier<Echo> kIdentifier{0x90c4d7b1e52f386aull, 0x47f1b09c6ad8e325ull};

	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override
	{
		return zorvcore::classref::MakeObject<Echo>();
	}
	bool HasHistory() override { return true; }
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const&) override
	{
		bool const isSilent = ioBuffer.IsChannelSilent(0);
		for (unsigned i = 0; i < ioBuffer.GetUseSize(); ++i)
		{
			mLast = (isSilent ? 0.0f : ioBuffer.GetChannel(0)[i]) + 0.5f * mLast;
			ioBuffer.GetChannel(0)[i] = mLast;
		}
		ioBuffer.NoteBufferWrite(0, ioBuffer.GetUseSize());
	}
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override { mLast = 0.0f; }
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	SN::TickTime GetDelay() override { return SN::kTimeZero; }

private:
	float mLast = 0.0f;
};

TEST(RandomJobs, AnEffectThatRemembersIsRenderedInOneRunAndNamed)
{
	auto const description = std::make_shared<Description>();
	description->mLayout = MakeLayoutOfChannels(1);
	Sequence::Track& track = description->mTracks.emplace_back();
	track.mName = "Voice";
	track.mOrigin = "/0";
	track.mLayout = description->mLayout;
	std::vector<float> samples(20000);
	std::generate(samples.begin(), samples.end(),
		[random = std::mt19937(5)]() mutable { return static_cast<float>(random() % 1000) / 1000.0f; });
	Sequence::Item& item = track.mItems.emplace_back();
	item.mEnd = SN::TickTime(20000, SN::FrameRate::FromSamplesPerSecond(48000));
	item.mContent = Sequence::Clip{std::make_shared<Sequence::Testing::MemoryMedia>(
									   48000.0, Sequence::Testing::MemoryMedia::Samples{samples}),
		0, {}};
	std::atomic<int> made = 0;
	track.mChain.mStages.emplace_back(
		Sequence::Effect{"Reverb", [&made](auto const&, auto const&, auto const&)
			{
				++made;
				return SN::InterfaceRef<SN::IAudioProcessor>(zorvcore::classref::MakeObject<Echo>());
			}});
	Programme const programme = MakeProgramme(description, 48000);
	Heard heard[2];
	for (unsigned const jobs : {1u, 3u})
	{
		auto const listener = zorvcore::classref::MakeObject<Listener>();
		RangeRender render;
		render.mRange = {0, programme.mFrames};
		render.mBlockFrames = 100;
		render.mPieceFrames = 700;
		render.mJobs = jobs;
		render.mView.mTaps.emplace("/0", listener);
		render.mSink = [&](dsp::AudioBuffer& ioBlock) { Append(ioBlock, heard[jobs / 2]); };
		auto const report = RenderRange(programme, render);
		ASSERT_TRUE(report);
		EXPECT_EQ(
			report->mGraph.mWhyInOneRun, "the effect 'Reverb' of 'Voice' may depend on all that came before");
		EXPECT_TRUE(listener->mHeard == heard[jobs / 2]);
	}
	EXPECT_TRUE(heard[0] == heard[1]);
	EXPECT_EQ(made, 2) << "one graph each";
}

} // namespace

} // namespace SonaroHost::Testing::RandomJobsTest
