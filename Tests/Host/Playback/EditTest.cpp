// Edits of what plays: what is heard of one is the graph before, a mixture of both for 10 ms, and the next graph.

#include "Deck.h"
#include "Host/Sequence/RandomSequence.h"
#include "Support/Trials.h"
#include "zorvcore/config/InitializerRegistrar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <random>
#include <thread>

namespace SonaroHost::Playback::Testing::EditTest
{
namespace
{

using SN::Testing::GetNumTrials;

class RandomEdits
{
public:
	explicit RandomEdits(unsigned inSeed)
		: mRandom(inSeed)
	{
	}

	std::size_t Below(std::size_t inEnd) { return mRandom() % inEnd; }

	std::shared_ptr<Sequence::Description const> Edit(Sequence::Description const& inDescription)
	{
		auto edited = std::make_shared<Sequence::Description>(inDescription);
		for (std::size_t left = 1 + Below(3); left > 0 && !edited->mTracks.empty(); --left)
		{
			EditTrack(edited->mTracks[Below(edited->mTracks.size())]);
		}
		return edited;
	}

private:
	void EditTrack(Sequence::Track& ioTrack)
	{
		std::size_t const kind = Below(5);
		if (kind == 0)
		{
			auto const gain = static_cast<float>(Below(100)) / 50.0f;
			ioTrack.mChain.mStages.insert(ioTrack.mChain.mStages.begin(),
				Sequence::Fader{AutomationParameter<float>::Create(gain), {}});
		}
		else if (kind == 1 && !ioTrack.mChain.mStages.empty())
		{
			ioTrack.mChain.mStages.pop_back();
		}
		else if (!ioTrack.mItems.empty())
		{
			EditItem(kind, Below(ioTrack.mItems.size()), ioTrack);
		}
	}

	void EditItem(std::size_t inKind, std::size_t inIndex, Sequence::Track& ioTrack)
	{
		Sequence::Item& item = ioTrack.mItems[inIndex];
		auto* const clip = std::get_if<Sequence::Clip>(&item.mContent);
		if (inKind == 2)
		{
			ioTrack.mCrossfades.clear();
			ioTrack.mItems.erase(ioTrack.mItems.begin() + static_cast<std::ptrdiff_t>(inIndex));
		}
		else if (inKind == 3 && clip)
		{
			clip->mFirstFrame += static_cast<std::int64_t>(Below(1000));
		}
		else
		{
			item.mSpeed = -item.mSpeed;
		}
	}

	std::mt19937 mRandom;
};

// Two exports in a loop, and the crossfade from one to the other.
struct Takeover
{
	Frames const& mBefore;
	Frames const& mAfter;
	std::size_t mChannels = 0;
	// The sample that is heard first, and how many there are in a round.
	std::size_t mFirst = 0;
	std::size_t mFade = 0;

	float Get(Frames const& inExport, std::size_t inSample) const
	{
		return inExport[(mFirst + inSample) % inExport.size()];
	}
	float Expect(std::size_t inSample, std::size_t inStart) const
	{
		float const before = Get(mBefore, inSample);
		float const after = Get(mAfter, inSample);
		if (inSample < inStart)
		{
			return before;
		}
		std::size_t const step = inSample / mChannels - inStart / mChannels;
		return step < mFade
				   ? before + (after - before) * (static_cast<float>(step) / static_cast<float>(mFade))
				   : after;
	}
	bool BeginsAt(std::size_t inStart, Frames const& inHeard) const
	{
		for (std::size_t i = inStart; i < inHeard.size(); ++i)
		{
			if (inHeard[i] != Expect(i, inStart))
			{
				return false;
			}
		}
		return true;
	}

	// Whether it is what was heard; it began before sample inLatest.
	bool Is(Frames const& inHeard, std::size_t inLatest) const
	{
		std::size_t same = 0;
		while (same < inHeard.size() && inHeard[same] == Get(mBefore, same))
		{
			++same;
		}
		std::size_t const last = std::min(same / mChannels * mChannels, inLatest);
		std::size_t const length = mFade * mChannels;
		for (std::size_t back = 0; back <= std::min(last, length); back += mChannels)
		{
			if (BeginsAt(last - back, inHeard))
			{
				return true;
			}
		}
		return false;
	}
};

TEST(Playback, AThousandEditsAreMixturesForTenMillisecondsAndThenWhatAnExportWrites)
{
	constexpr unsigned kEdits = 40;
	unsigned edits = 0;
	unsigned changes = 0;
	for (unsigned seed = 1; seed <= GetNumTrials(25); ++seed)
	{
		auto const made = Sequence::Testing::MakeRandomSequence(seed);
		int const rate = static_cast<int>(std::lround(made.mFrameRate.GetSamplesPerSecond()));
		Programme programme = MakeProgramme(made.mSequence, rate);
		std::int64_t const frames = programme.mFrames;
		Frames whole = Export(programme);
		RandomEdits random(seed);
		Deck deck(programme);
		deck->SetLoop(ProgrammeRange{0, frames});
		deck->Play();
		std::size_t at = deck.Pull(1024).size();
		for (unsigned i = 0; i < kEdits; ++i, ++edits)
		{
			SCOPED_TRACE(testing::Message() << "seed " << seed << ", edit " << i);
			Programme const next = MakeProgramme(random.Edit(*made.mSequence), rate, frames);
			Frames const nextWhole = Export(next);
			Frames heard = deck.TakeOver(next);
			std::size_t const latest = heard.size();
			Frames const more = deck.Pull(static_cast<std::int64_t>(128 * (8 + random.Below(8))));
			heard.insert(heard.end(), more.begin(), more.end());
			std::size_t const fade = static_cast<std::size_t>(rate) / 100;
			Takeover const takeover{whole, nextWhole, programme.GetLayout().size(), at, fade};
			ASSERT_TRUE(takeover.Is(heard, latest + 1024 * takeover.mChannels));
			changes += nextWhole != whole ? 1 : 0;
			at = (at + heard.size()) % whole.size();
			whole = nextWhole;
		}
		EXPECT_EQ(deck->GetState().mMisses, 0u);
	}
	EXPECT_GT(changes, edits / 3);
}

// Nothing can be read ahead while the engine's module is stopped: playing begins with an error each time.
TEST(Playback, ATakeoverEndsThoughCommandsBeforeItFail)
{
	constexpr std::int64_t kFrames = 48000;
	Deck deck(MakeCountingProgramme(kFrames));
	deck->Play();
	deck.Pull(1024);
	zorvcore::config::StopRegisteredModules();
	std::atomic<bool> isOver{false};
	std::thread player(
		[&]
		{
			while (!isOver)
			{
				deck->Play();
				std::this_thread::sleep_for(std::chrono::microseconds(100));
			}
		});
	float gain = 1.0f;
	for (int i = 0; i < 20; ++i)
	{
		gain /= 2.0f;
		deck->TakeOver(MakeCountingProgramme(kFrames, gain));
	}
	isOver = true;
	player.join();
	deck.Rest();
	EXPECT_NE(deck->GetState().mFailure, "");
	zorvcore::config::StartRegisteredModules();

	deck->Seek(0);
	deck->Play();
	Frames const whole = Export(MakeCountingProgramme(kFrames, gain));
	EXPECT_EQ(deck.Pull(1024), Frames(whole.begin(), whole.begin() + 1024));
}

} // namespace
} // namespace SonaroHost::Playback::Testing::EditTest
