#include "zorvaudiodsp/AudioBuffer.h"

#include "Support/Buffers.h"
#include "Support/Common.h"
#include "Support/Trials.h"
#include "zorvaudiodsp/AudioBufferChannel.h"
#include "zorvaudiodsp/AudioBufferShell.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"
#include "zorvcore/config/Exceptions.h"

namespace dsp::AudioBufferTest
{

using SN::Testing::Heard;
using SN::Testing::WindowOf;

// Writes values into the front of a channel as a host does: through the pointer, then saying so.
void Write(AudioBuffer& ioBuffer, unsigned long long inChannel, std::vector<float> const& inValues)
{
	std::copy(inValues.begin(), inValues.end(), ioBuffer.GetChannel(inChannel));
	ioBuffer.NoteChannelWrite(inChannel, static_cast<unsigned>(inValues.size()));
}

using Values = std::vector<float>;

TEST(AudioBuffer, BeginsWithZerosInAlignedAndPaddedMemory)
{
	AudioBuffer buffer(3, 21);
	EXPECT_EQ(buffer.GetUseSize(), 21u);
	EXPECT_EQ(buffer.GetCapacity(), 21u);
	EXPECT_FALSE(buffer.IsSilent());
	EXPECT_TRUE(buffer.CanProcessInGroupsOfFour());
	for (unsigned channel = 0; channel < 3; ++channel)
	{
		EXPECT_EQ(Heard(buffer, channel), Values(21, 0.0f));
		EXPECT_FALSE(buffer.IsChannelSilent(channel));
		EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.GetChannel(channel)) % 64, 0u);
	}
	// The last group of four lies in padding of the channel's own.
	std::fill_n(buffer.GetChannel(0) + 21, 3, 9.0f);
	EXPECT_EQ(buffer.GetChannel(1)[0], 0.0f);
	buffer.SetUseSize(100);
	EXPECT_EQ(buffer.GetUseSize(), 21u);
	EXPECT_THROW(AudioBuffer(65, 1), zorvcore::config::zorv_exception);
	EXPECT_THROW(AudioBufferShell().Init(65), zorvcore::config::zorv_exception);
	EXPECT_THROW(AudioSubBuffer().Init(65), zorvcore::config::zorv_exception);
	EXPECT_TRUE(AudioBuffer().IsSilent());
	EXPECT_TRUE(AudioBuffer(0, 8).IsSilent());
}

TEST(AudioBuffer, AbsentChannelsAreSilentAndDropWhatIsWritten)
{
	AudioBuffer buffer(2, 4);
	AudioBuffer const source(3, 4);
	EXPECT_EQ(buffer.GetChannel(2), nullptr);
	EXPECT_TRUE(buffer.IsChannelSilent(2));
	EXPECT_TRUE(buffer.IsChannelSilent(1000));
	EXPECT_EQ(buffer.GetSilenceFlags(), ~SilenceFlags::First(2));
	buffer.MarkChannelSilent(2);
	buffer.ClearSilenceFlags(SilenceFlags::All());
	buffer.NoteChannelWrite(2, 4);
	buffer.ZeroChannel(2, 4, true);
	buffer.CopyChannel(source, 0, 2);
	EXPECT_TRUE(buffer.IsChannelSilent(2));
	EXPECT_FALSE(buffer.IsChannelSilent(0));
}

struct BufferCase
{
	char const* mName;
	std::function<void(AudioBuffer&)> mRun;
	Values mExpected;
};

TEST(AudioBuffer, PartialWritesIntoSilenceLeaveNoStaleSamples)
{
	AudioBuffer source(1, 2);
	Write(source, 0, {5, 6});
	BufferCase const cases[] = {
		{"nothing written", [](AudioBuffer& io) { io.NoteChannelWrite(0, 0); }, {0, 0, 0, 0}},
		{"a counted copy", [&](AudioBuffer& io) { io.CopyFrom(source, 2); }, {5, 6, 0, 0}},
		{"a copy of a channel", [&](AudioBuffer& io) { io.CopyChannel(source, 0, 0); }, {5, 6, 0, 0}},
		{"a mix", [&](AudioBuffer& io) { io.Mix(source); }, {5, 6, 0, 0}},
		{"a scaled copy", [&](AudioBuffer& io) { io.CopyFromScale(source, 2.0f); }, {10, 12, 0, 0}},
		{"a write in the middle",
			[](AudioBuffer& io)
			{
				std::fill_n(io.GetChannel(0) + 1, 2, 7.0f);
				io.NoteBufferWrite(1, 2);
			},
			{0, 7, 7, 0}},
	};
	for (BufferCase const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		AudioBuffer buffer(1, 4);
		Write(buffer, 0, {1, 2, 3, 4});
		buffer.Zero();
		test.mRun(buffer);
		EXPECT_EQ(Heard(buffer), test.mExpected);
	}
}

TEST(AudioBuffer, PartialSilenceLeavesTheRestAudible)
{
	AudioBuffer flagged(1, 2);
	flagged.Zero();
	AudioBuffer sounding(1, 2);
	Write(sounding, 0, {5, 6});
	BufferCase const cases[] = {
		{"zeros that would mark the channel", [](AudioBuffer& io) { io.ZeroChannel(0, 2, true); }, {}},
		{"a copy of silence", [&](AudioBuffer& io) { io.CopyChannel(flagged, 0, 0); }, {}},
		{"a scaled copy of silence", [&](AudioBuffer& io) { io.CopyFromScale(flagged, 2.0f); }, {}},
		{"a copy at gain 0", [&](AudioBuffer& io) { io.CopyFromScale(sounding, 0.0f); }, {}},
	};
	for (BufferCase const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		AudioBuffer buffer(1, 4);
		Write(buffer, 0, {1, 2, 3, 4});
		test.mRun(buffer);
		EXPECT_FALSE(buffer.IsChannelSilent(0));
		EXPECT_EQ(Heard(buffer), Values({0, 0, 3, 4}));
		buffer.Zero();
		test.mRun(buffer);
		EXPECT_TRUE(buffer.IsChannelSilent(0)) << "silence stays silence";
	}
}

TEST(AudioBuffer, CopyFromTakesOverTheLengthUpToTheCapacity)
{
	AudioBuffer source(1, 6);
	Write(source, 0, {1, 2, 3, 4, 5, 6});
	AudioBuffer longer(2, 8);
	longer.CopyFrom(source);
	EXPECT_EQ(longer.GetUseSize(), 6u);
	EXPECT_EQ(Heard(longer, 0), Heard(source, 0));
	EXPECT_TRUE(longer.IsChannelSilent(1)) << "the source lacks it";
	AudioBuffer shorter(1, 4);
	shorter.CopyFrom(source);
	EXPECT_EQ(Heard(shorter, 0), Values({1, 2, 3, 4}));

	// A view takes the length for itself, not for its parent.
	AudioBuffer parent(1, 8);
	auto const window = WindowOf(parent, 5);
	window->CopyFrom(source);
	EXPECT_EQ(parent.GetUseSize(), 8u);
	EXPECT_EQ(Heard(parent, 0), Values({0, 0, 0, 0, 0, 1, 2, 3}));

	window->MarkChannelSilent(0);
	AudioBuffer const copy(*window);
	EXPECT_TRUE(copy.IsSilent());
	EXPECT_EQ(copy.GetUseSize(), 3u);
}

TEST(AudioBuffer, ZerosAndFlagsGoTheirOwnWays)
{
	AudioBuffer buffer(2, 3);
	AudioBuffer other(1, 3);
	Write(buffer, 0, {1, 2, 3});
	Write(other, 0, {10, 20, 30});
	buffer.CopyFromScale(other, 0.0f);
	EXPECT_TRUE(buffer.IsSilent());
	ZeroBufferAccordingToSilenceFlags(buffer);
	EXPECT_TRUE(buffer.IsSilent());
	EXPECT_EQ(buffer.GetChannel(0)[1], 0.0f);
	Write(buffer, 0, {1, 2, 3});
	buffer.ZeroBuffers();
	EXPECT_FALSE(buffer.IsChannelSilent(0)) << "zeros leave the flag alone";
	EXPECT_TRUE(buffer.IsChannelSilent(1));
}

TEST(AudioSubBuffer, AimsWithinWhatTheParentUses)
{
	AudioBuffer parent(2, 10);
	parent.SetUseSize(8);
	AudioSubBuffer window;
	window.Init(3);
	struct Case
	{
		char const* mName;
		unsigned mOffset;
		unsigned mShift;
		unsigned mExpected;
	};
	Case const cases[] = {{"whole", 0, 0, 8}, {"inside", 3, 0, 5}, {"at the end", 8, 0, 0},
		{"after the end", 9, 0, 0}, {"shifted", 3, 2, 3}, {"shifted beyond", 3, 20, 0}};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		window.Assign(parent, test.mOffset);
		window.ShiftOffset(test.mShift);
		EXPECT_EQ(window.GetUseSize(), test.mExpected);
		EXPECT_EQ(window.GetCapacity(), test.mExpected);
		EXPECT_EQ(window.GetChannel(1), parent.GetChannel(1) + 8 - test.mExpected);
		EXPECT_EQ(window.GetChannel(2), nullptr);
		EXPECT_TRUE(window.IsChannelSilent(2));
		EXPECT_FALSE(window.CanProcessInGroupsOfFour());
	}
	window.Assign(parent, 3);
	window.SetUseSize(1);
	window.ShiftOffset(2);
	EXPECT_EQ(window.GetUseSize(), 0u);
	window.SetUseSize(7);
	EXPECT_EQ(window.GetUseSize(), 3u) << "may grow again up to what is left";
}

// What the random model below does not do.
TEST(AudioSubBuffer, AFlagGoesWhenTheWindowIsMovedOrLengthened)
{
	AudioBuffer parent(1, 6);
	Write(parent, 0, {1, 2, 3, 4, 5, 6});
	auto const window = WindowOf(parent, 2, 2);
	window->Zero();
	EXPECT_TRUE(window->IsSilent());
	EXPECT_EQ(Heard(parent), Values({1, 2, 0, 0, 5, 6}));
	window->ShiftOffset(0);
	EXPECT_FALSE(window->IsSilent());
	window->Zero();
	window->SetUseSize(3);
	EXPECT_FALSE(window->IsSilent());
	EXPECT_EQ(Heard(*window), Values({0, 0, 5}));
}

TEST(AudioBufferChannel, TheFlagIsTheParents)
{
	AudioBuffer parent(2, 4);
	AudioBuffer source(1, 4);
	Write(source, 0, {1, 2, 3, 4});
	parent.Zero();
	AudioBufferChannel view;
	view.Assign(parent, 1);
	EXPECT_TRUE(view.CanProcessInGroupsOfFour());
	EXPECT_TRUE(view.IsSilent());
	view.CopyFrom(source, 2);
	EXPECT_EQ(Heard(parent, 1), Values({1, 2, 0, 0}));
	EXPECT_TRUE(parent.IsChannelSilent(0));
	view.Zero();
	EXPECT_TRUE(parent.IsSilent());

	// Over a window, the flag goes on upward; a shorter view leaves silence after itself.
	Write(parent, 0, {5, 5, 5, 5});
	parent.Zero();
	auto const window = WindowOf(parent, 1);
	view.Assign(*window, 0);
	EXPECT_FALSE(view.CanProcessInGroupsOfFour());
	view.SetUseSize(1);
	Write(view, 0, {7});
	EXPECT_EQ(Heard(parent, 0), Values({0, 7, 0, 0}));

	view.Assign(parent, 5);
	view.CopyFrom(source);
	view.Mix(source);
	EXPECT_TRUE(view.IsSilent());
	EXPECT_EQ(view.GetChannel(0), nullptr);
}

TEST(AudioBufferShell, HasFlagsOfItsOwnOverSamplesOfOthers)
{
	AudioBuffer parent(2, 4);
	AudioBufferShell shell;
	shell.Init(1);
	EXPECT_EQ(shell.GetChannel(0), nullptr) << "aims at nothing yet";
	EXPECT_TRUE(shell.IsSilent());
	shell.Assign(parent.GetChannels(), 4);
	EXPECT_TRUE(shell.IsSilent());
	EXPECT_FALSE(parent.IsSilent());
	EXPECT_FALSE(shell.CanProcessInGroupsOfFour());
	shell.SetUseSize(2);
	Write(shell, 0, {1, 2});
	EXPECT_FALSE(shell.IsSilent());
	EXPECT_EQ(Heard(parent, 0), Values({1, 2, 0, 0}));
	shell.Zero();
	EXPECT_EQ(Heard(parent, 0), Values({1, 2, 0, 0})) << "the parent's samples are not the shell's to clear";
}

// What a channel of a buffer or of a window means, in plain words: the root holds audible samples, zeros where
// it is flagged; a window holds where it lies and a flag of its own.
struct Model
{
	bool IsSilent() const { return mFlag || (mParent && mParent->IsSilent()); }
	float* Samples() { return mParent ? mParent->Samples() + mOffset : mAudible.data(); }
	Values Heard() { return IsSilent() ? Values(mUse) : Values(Samples(), Samples() + mUse); }
	// Silence becomes zeros that may be written over. Into an empty window nothing comes, so its flag and its
	// parents' stay.
	void MakeAudible()
	{
		if (mUse > 0 && IsSilent())
		{
			mParent ? mParent->MakeAudible() : void();
			std::fill_n(Samples(), mUse, 0.0f);
			mFlag = false;
		}
	}
	void Silence()
	{
		if (mParent && mParent->IsSilent())
		{
			return;
		}
		mFlag = true;
		bool const coversParent = mParent && mOffset == 0 && mUse == mParent->mUse;
		coversParent ? mParent->Silence() : static_cast<void>(std::fill_n(Samples(), mUse, 0.0f));
	}
	void CopyFrom(Model& ioSource, std::size_t inCount)
	{
		if (ioSource.IsSilent() && inCount == mUse)
		{
			Silence();
		}
		else if (!ioSource.IsSilent() || !IsSilent())
		{
			MakeAudible();
			std::copy_n(ioSource.Heard().begin(), inCount, Samples());
		}
	}
	void Mix(Model& ioSource)
	{
		if (!ioSource.IsSilent())
		{
			MakeAudible();
			std::transform(Samples(), Samples() + std::min(mUse, ioSource.mUse), ioSource.Samples(),
				Samples(), std::plus<>());
		}
	}

	Model* mParent = nullptr;
	std::size_t mOffset = 0;
	std::size_t mUse = 0;
	bool mFlag = false;
	Values mAudible;
};

class RandomBufferTest : public testing::Test
{
protected:
	static constexpr unsigned kSize = 12;
	static constexpr unsigned kChannels = 3;
	// Two buffers, each with a window and a window in that window.
	static constexpr unsigned kBuffers = 2;
	static constexpr unsigned kLevels = 3;
	using Models = std::array<Model, kChannels>;

	RandomBufferTest()
	{
		for (unsigned root = 0; root < kBuffers; ++root)
		{
			mRoots[root].Init(kChannels, kSize);
			for (unsigned channel = 0; channel < kChannels; ++channel)
			{
				mModels[root][0][channel].mUse = kSize;
				mModels[root][0][channel].mAudible.resize(kSize);
				for (unsigned level = 1; level < kLevels; ++level)
				{
					mModels[root][level][channel].mParent = &mModels[root][level - 1][channel];
				}
			}
			mWindows[root][0].Init(kChannels);
			mWindows[root][1].Init(kChannels);
			Aim(root);
		}
	}

	unsigned Random(std::size_t inEnd) { return static_cast<unsigned>(mRandom() % inEnd); }
	AudioBuffer& Buffer(unsigned inRoot, unsigned inLevel)
	{
		return inLevel == 0 ? mRoots[inRoot] : static_cast<AudioBuffer&>(mWindows[inRoot][inLevel - 1]);
	}

	void Aim(unsigned inRoot)
	{
		for (unsigned level = 1; level < kLevels; ++level)
		{
			std::size_t const room = mModels[inRoot][level - 1][0].mUse;
			unsigned const offset = Random(3) == 0 ? 0 : Random(room + 1);
			auto const left = static_cast<unsigned>(room) - offset;
			unsigned const use = Random(3) == 0 ? left : Random(left + 1);
			for (Model& model : mModels[inRoot][level])
			{
				model.mOffset = offset;
				model.mUse = use;
				model.mFlag = false;
			}
			mWindows[inRoot][level - 1].Assign(Buffer(inRoot, level - 1), offset);
			mWindows[inRoot][level - 1].SetUseSize(use);
		}
	}

	// The same step with a buffer and with its model.
	void Step()
	{
		unsigned const root = Random(kBuffers);
		unsigned const level = Random(kLevels);
		unsigned const sourceLevel = Random(kLevels);
		AudioBuffer& buffer = Buffer(root, level);
		AudioBuffer const& source = Buffer(1 - root, sourceLevel);
		Models& models = mModels[root][level];
		Models& sources = mModels[1 - root][sourceLevel];
		unsigned const channel = Random(kChannels);
		auto const count = static_cast<unsigned>(
			std::min<std::size_t>({Random(kSize + 1), models[0].mUse, sources[0].mUse}));
		unsigned const kind = Random(8);
		switch (kind)
		{
		case 0:
			return Aim(root);
		case 1:
			buffer.MarkChannelSilent(channel);
			return models[channel].Silence();
		case 2:
			buffer.Zero();
			break;
		case 3:
			buffer *= 0.5f;
			break;
		case 4:
			buffer.Reverse();
			break;
		case 5:
			buffer.CopyFrom(source, count);
			break;
		case 6:
			buffer.Mix(source);
			break;
		default:
			models[channel].MakeAudible();
			std::generate_n(
				models[channel].Samples(), count, [&] { return static_cast<float>(Random(64)) - 32.0f; });
			std::copy_n(models[channel].Samples(), count, buffer.GetChannel(channel));
			return buffer.NoteChannelWrite(channel, count);
		}
		for (unsigned c = 0; c < kChannels; ++c)
		{
			StepModel(kind, models[c], sources[c], count);
		}
	}
	static void StepModel(unsigned inKind, Model& ioModel, Model& ioSource, unsigned inCount)
	{
		float* const samples = ioModel.Samples();
		std::size_t const audible = ioModel.IsSilent() ? 0 : ioModel.mUse;
		switch (inKind)
		{
		case 2:
			return ioModel.Silence();
		case 3:
			std::for_each(samples, samples + audible, [](float& ioSample) { ioSample *= 0.5f; });
			return;
		case 4:
			return std::reverse(samples, samples + audible);
		case 5:
			return ioModel.CopyFrom(ioSource, inCount);
		default:
			return ioModel.Mix(ioSource);
		}
	}

	std::string FirstDifference()
	{
		for (unsigned i = 0; i < kBuffers * kLevels * kChannels; ++i)
		{
			unsigned const root = i / kChannels / kLevels;
			unsigned const level = i / kChannels % kLevels;
			unsigned const channel = i % kChannels;
			Model& model = mModels[root][level][channel];
			AudioBuffer const& buffer = Buffer(root, level);
			bool const hasFlag = model.mUse == 0 || buffer.IsChannelSilent(channel) == model.IsSilent();
			if (!hasFlag || Heard(buffer, channel) != model.Heard())
			{
				return "buffer " + std::to_string(root) + ", level " + std::to_string(level) + ", channel " +
					   std::to_string(channel) + (hasFlag ? ": samples" : ": flag");
			}
		}
		return {};
	}

	std::mt19937 mRandom;
	std::array<AudioBuffer, kBuffers> mRoots;
	std::array<std::array<AudioSubBuffer, kLevels - 1>, kBuffers> mWindows;
	std::array<std::array<Models, kLevels>, kBuffers> mModels;
};

TEST_F(RandomBufferTest, AnyOrderOfOperationsSoundsLikeThePlainModel)
{
	for (std::size_t step = 0; step < SN::Testing::GetNumTrials(200000); ++step)
	{
		Step();
		ASSERT_EQ(FirstDifference(), "") << "step " << step;
	}
}

} // namespace dsp::AudioBufferTest
