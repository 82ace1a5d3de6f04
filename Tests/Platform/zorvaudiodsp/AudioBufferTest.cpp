#include "zorvaudiodsp/AudioBuffer.h"

#include "zorvaudiodsp/AudioBufferChannel.h"
#include "zorvaudiodsp/AudioBufferShell.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"
#include "zorvcore/config/Exceptions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace dsp
{
namespace
{

// The audible samples of one channel: zeros where it is flagged.
std::vector<float> Heard(AudioBuffer const& inBuffer, unsigned long long inChannel)
{
	std::vector<float> heard(inBuffer.GetUseSize(), 0.0f);
	if (!inBuffer.IsChannelSilent(inChannel))
	{
		std::copy_n(inBuffer.GetChannel(inChannel), heard.size(), heard.begin());
	}
	return heard;
}

// Writes values into the front of a channel as a host does: through the pointer, then telling of it.
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

TEST(AudioBuffer, PartialWritesIntoSilenceLeaveNoStaleSamples)
{
	AudioBuffer buffer(1, 4);
	AudioBuffer source(1, 2);
	Write(source, 0, {5, 6});
	auto const fresh = [&]
	{
		Write(buffer, 0, {1, 2, 3, 4});
		buffer.Zero();
	};
	fresh();
	buffer.NoteChannelWrite(0, 0);
	EXPECT_EQ(Heard(buffer, 0), Values({0, 0, 0, 0}));
	fresh();
	buffer.CopyFrom(source, 2);
	EXPECT_EQ(Heard(buffer, 0), Values({5, 6, 0, 0}));
	fresh();
	buffer.CopyChannel(source, 0, 0);
	EXPECT_EQ(Heard(buffer, 0), Values({5, 6, 0, 0}));
	fresh();
	buffer.Mix(source);
	EXPECT_EQ(Heard(buffer, 0), Values({5, 6, 0, 0}));
	fresh();
	buffer.CopyFromScale(source, 2.0f);
	EXPECT_EQ(Heard(buffer, 0), Values({10, 12, 0, 0}));
	fresh();
	std::fill_n(buffer.GetChannel(0) + 1, 2, 7.0f);
	buffer.NoteBufferWrite(1, 2);
	EXPECT_EQ(Heard(buffer, 0), Values({0, 7, 7, 0}));
}

TEST(AudioBuffer, PartialSilenceLeavesTheRestAudible)
{
	struct Case
	{
		char const* mName;
		std::function<void(AudioBuffer&)> mSilence;
	};
	AudioBuffer flagged(1, 2);
	flagged.Zero();
	AudioBuffer sounding(1, 2);
	Write(sounding, 0, {5, 6});
	Case const cases[] = {
		{"zeros that would mark the channel",
			[](AudioBuffer& ioBuffer) { ioBuffer.ZeroChannel(0, 2, true); }},
		{"a copy of silence", [&](AudioBuffer& ioBuffer) { ioBuffer.CopyChannel(flagged, 0, 0); }},
		{"a scaled copy of silence", [&](AudioBuffer& ioBuffer) { ioBuffer.CopyFromScale(flagged, 2.0f); }},
		{"a copy at gain 0", [&](AudioBuffer& ioBuffer) { ioBuffer.CopyFromScale(sounding, 0.0f); }},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		AudioBuffer buffer(1, 4);
		Write(buffer, 0, {1, 2, 3, 4});
		test.mSilence(buffer);
		EXPECT_FALSE(buffer.IsChannelSilent(0));
		EXPECT_EQ(Heard(buffer, 0), Values({0, 0, 3, 4}));
		buffer.Zero();
		test.mSilence(buffer);
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
	AudioSubBuffer window;
	window.Init(1);
	window.Assign(parent, 5);
	window.CopyFrom(source);
	EXPECT_EQ(parent.GetUseSize(), 8u);
	EXPECT_EQ(Heard(parent, 0), Values({0, 0, 0, 0, 0, 1, 2, 3}));

	window.MarkChannelSilent(0);
	AudioBuffer const copy(window);
	EXPECT_TRUE(copy.IsSilent());
	EXPECT_EQ(copy.GetUseSize(), 3u);
}

TEST(AudioBuffer, ScalingAndMixingLeaveSilenceAlone)
{
	AudioBuffer buffer(3, 3);
	AudioBuffer other(2, 3);
	Write(buffer, 0, {1, 2, 3});
	Write(buffer, 1, {1, 2, 3});
	buffer.MarkChannelSilent(2);
	Write(other, 0, {10, 20, 30});
	other.MarkChannelSilent(1);
	buffer *= 2.0f;
	buffer.Mix(other);
	buffer.Reverse();
	EXPECT_EQ(Heard(buffer, 0), Values({36, 24, 12}));
	EXPECT_EQ(Heard(buffer, 1), Values({6, 4, 2}));
	EXPECT_TRUE(buffer.IsChannelSilent(2));

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
		{"behind the end", 9, 0, 0}, {"shifted", 3, 2, 3}, {"shifted beyond", 3, 20, 0}};
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

TEST(AudioSubBuffer, FlagsAgreeWithAllItsParents)
{
	AudioBuffer parent(1, 6);
	AudioSubBuffer outer;
	outer.Init(1);
	AudioSubBuffer inner;
	inner.Init(1);
	auto const aim = [&]
	{
		outer.Assign(parent, 1);
		outer.SetUseSize(4);
		inner.Assign(outer, 1);
		inner.SetUseSize(2);
	};

	// A write deep inside of silence leaves silence everywhere around.
	Write(parent, 0, {1, 2, 3, 4, 5, 6});
	parent.Zero();
	aim();
	EXPECT_TRUE(inner.IsSilent());
	Write(inner, 0, {8, 9});
	EXPECT_EQ(Heard(parent, 0), Values({0, 0, 8, 9, 0, 0}));
	EXPECT_FALSE(outer.IsSilent());

	// Silence over a part writes zeros and leaves the parent audible.
	Write(parent, 0, {1, 2, 3, 4, 5, 6});
	aim();
	inner.Zero();
	EXPECT_TRUE(inner.IsSilent());
	EXPECT_FALSE(outer.IsSilent());
	EXPECT_EQ(Heard(parent, 0), Values({1, 2, 0, 0, 5, 6}));

	// A window's own flag goes when it is aimed, moved or lengthened.
	inner.ShiftOffset(0);
	EXPECT_FALSE(inner.IsSilent());
	inner.Zero();
	inner.SetUseSize(3);
	EXPECT_FALSE(inner.IsSilent());
	EXPECT_EQ(Heard(inner, 0), Values({0, 0, 5}));

	// Silence over the whole is the parent's own.
	outer.Assign(parent, 0);
	inner.Assign(outer, 0);
	inner.Zero();
	EXPECT_TRUE(parent.IsSilent());
	parent.ClearSilenceFlags(SilenceFlags::All());

	// An empty window has nothing to tell.
	parent.Zero();
	inner.Assign(parent, 6);
	inner.ClearSilenceFlags(SilenceFlags::All());
	EXPECT_TRUE(parent.IsSilent());
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

	// Over a window, the flag goes on upward; a shorter view leaves silence behind itself.
	Write(parent, 0, {5, 5, 5, 5});
	parent.Zero();
	AudioSubBuffer window;
	window.Init(2);
	window.Assign(parent, 1);
	view.Assign(window, 0);
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

// What buffers and windows mean, in plain words: the root holds audible samples, zeros where flagged; a
// window holds where it lies and flags of its own.
struct Model
{
	static constexpr std::size_t kChannels = 3;

	bool IsSilent(std::size_t inChannel) const
	{
		return mOwnFlags[inChannel] || (mParent && mParent->IsSilent(inChannel));
	}
	double Get(std::size_t inChannel, std::size_t inIndex) const
	{
		return mParent ? mParent->Get(inChannel, mOffset + inIndex) : mAudible[inChannel][inIndex];
	}
	double Heard(std::size_t inChannel, std::size_t inIndex) const
	{
		return IsSilent(inChannel) ? 0.0 : Get(inChannel, inIndex);
	}
	void Set(std::size_t inChannel, std::size_t inIndex, double inValue)
	{
		mParent ? mParent->Set(inChannel, mOffset + inIndex, inValue)
				: static_cast<void>(mAudible[inChannel][inIndex] = inValue);
	}
	// Silence becomes zeros that may be written over.
	void MakeAudible(std::size_t inChannel)
	{
		if (IsSilent(inChannel))
		{
			if (mParent)
			{
				mParent->IsSilent(inChannel) ? mParent->MakeAudible(inChannel) : void();
			}
			for (std::size_t i = 0; i < mUse; ++i)
			{
				Set(inChannel, i, 0.0);
			}
			mOwnFlags[inChannel] = false;
		}
	}
	void Silence(std::size_t inChannel)
	{
		if (mParent && mParent->IsSilent(inChannel))
		{
			return;
		}
		mOwnFlags[inChannel] = true;
		if (mParent && mOffset == 0 && mUse == mParent->mUse)
		{
			mParent->Silence(inChannel);
			return;
		}
		for (std::size_t i = 0; i < mUse; ++i)
		{
			Set(inChannel, i, 0.0);
		}
	}

	Model* mParent = nullptr;
	std::size_t mOffset = 0;
	std::size_t mUse = 0;
	std::array<bool, kChannels> mOwnFlags{};
	std::vector<std::vector<double>> mAudible;
};

class RandomBufferTest : public testing::Test
{
protected:
	static constexpr std::size_t kSize = 12;
	// Two buffers, each with a window and a window in that window.
	static constexpr std::size_t kBuffers = 2;
	static constexpr std::size_t kLevels = 3;

	RandomBufferTest()
	{
		for (std::size_t root = 0; root < kBuffers; ++root)
		{
			mRoots[root].Init(Model::kChannels, kSize);
			mModels[root][0].mUse = kSize;
			mModels[root][0].mAudible.assign(Model::kChannels, std::vector<double>(kSize, 0.0));
			for (std::size_t level = 1; level < kLevels; ++level)
			{
				mWindows[root][level - 1].Init(Model::kChannels);
				mModels[root][level].mParent = &mModels[root][level - 1];
			}
			Aim(root);
		}
	}

	std::size_t Random(std::size_t inEnd) { return mRandom() % inEnd; }
	AudioBuffer& Buffer(std::size_t inRoot, std::size_t inLevel)
	{
		return inLevel == 0 ? mRoots[inRoot] : static_cast<AudioBuffer&>(mWindows[inRoot][inLevel - 1]);
	}

	void Aim(std::size_t inRoot)
	{
		for (std::size_t level = 1; level < kLevels; ++level)
		{
			Model& model = mModels[inRoot][level];
			model.mOffset = Random(3) == 0 ? 0 : Random(model.mParent->mUse + 1);
			std::size_t const left = model.mParent->mUse - model.mOffset;
			model.mUse = Random(3) == 0 ? left : Random(left + 1);
			model.mOwnFlags = {};
			mWindows[inRoot][level - 1].Assign(
				Buffer(inRoot, level - 1), static_cast<unsigned>(model.mOffset));
			mWindows[inRoot][level - 1].SetUseSize(static_cast<unsigned>(model.mUse));
		}
	}

	void Step()
	{
		std::size_t const root = Random(kBuffers);
		std::size_t const level = Random(kLevels);
		Model& model = mModels[root][level];
		AudioBuffer& buffer = Buffer(root, level);
		Model const& source = mModels[1 - root][Random(kLevels)];
		AudioBuffer const& sourceBuffer =
			Buffer(1 - root, static_cast<std::size_t>(&source - mModels[1 - root].data()));
		std::size_t const channel = Random(Model::kChannels);
		std::size_t const count = std::min({Random(kSize + 1), model.mUse, source.mUse});
		switch (Random(8))
		{
		case 0:
			Aim(root);
			break;
		case 1:
			buffer.MarkChannelSilent(static_cast<unsigned>(channel));
			model.Silence(channel);
			break;
		case 2:
			buffer.Zero();
			for (std::size_t c = 0; c < Model::kChannels; ++c)
			{
				model.Silence(c);
			}
			break;
		case 3:
			buffer *= 0.5f;
			ForAudible(model, [&](std::size_t c, std::size_t i) { model.Set(c, i, model.Get(c, i) * 0.5); });
			break;
		case 4:
			buffer.Reverse();
			for (std::size_t c = 0; c < Model::kChannels; ++c)
			{
				for (std::size_t i = 0; !model.IsSilent(c) && i < model.mUse / 2; ++i)
				{
					double const front = model.Get(c, i);
					model.Set(c, i, model.Get(c, model.mUse - 1 - i));
					model.Set(c, model.mUse - 1 - i, front);
				}
			}
			break;
		case 5:
			buffer.CopyFrom(sourceBuffer, static_cast<unsigned>(count));
			Copy(model, source, count);
			break;
		case 6:
			buffer.Mix(sourceBuffer);
			for (std::size_t c = 0; c < Model::kChannels; ++c)
			{
				if (!source.IsSilent(c))
				{
					MakeAudible(model, c);
					for (std::size_t i = 0; i < std::min(model.mUse, source.mUse); ++i)
					{
						model.Set(c, i, model.Get(c, i) + source.Get(c, i));
					}
				}
			}
			break;
		default:
			MakeAudible(model, channel);
			for (std::size_t i = 0; i < count; ++i)
			{
				float const value = static_cast<float>(Random(64)) - 32.0f;
				buffer.GetChannel(static_cast<unsigned>(channel))[i] = value;
				model.Set(channel, i, value);
			}
			buffer.NoteChannelWrite(static_cast<unsigned>(channel), static_cast<unsigned>(count));
		}
	}

	// Into an empty window nothing comes, so its flags and its parents' stay.
	static void MakeAudible(Model& ioModel, std::size_t inChannel)
	{
		if (ioModel.mUse > 0)
		{
			ioModel.MakeAudible(inChannel);
		}
	}

	template <class Function>
	static void ForAudible(Model const& inModel, Function const& inFunction)
	{
		for (std::size_t channel = 0; channel < Model::kChannels; ++channel)
		{
			for (std::size_t i = 0; !inModel.IsSilent(channel) && i < inModel.mUse; ++i)
			{
				inFunction(channel, i);
			}
		}
	}

	static void Copy(Model& ioModel, Model const& inSource, std::size_t inCount)
	{
		for (std::size_t c = 0; c < Model::kChannels; ++c)
		{
			if (inSource.IsSilent(c) && inCount == ioModel.mUse)
			{
				ioModel.Silence(c);
			}
			else if (!inSource.IsSilent(c) || !ioModel.IsSilent(c))
			{
				MakeAudible(ioModel, c);
				for (std::size_t i = 0; i < inCount; ++i)
				{
					ioModel.Set(c, i, inSource.Heard(c, i));
				}
			}
		}
	}

	std::string FirstDifference()
	{
		for (std::size_t root = 0; root < kBuffers; ++root)
		{
			for (std::size_t level = 0; level < kLevels; ++level)
			{
				Model const& model = mModels[root][level];
				AudioBuffer const& buffer = Buffer(root, level);
				for (std::size_t channel = 0; channel < Model::kChannels; ++channel)
				{
					std::string const place = "buffer " + std::to_string(root) + ", level " +
											  std::to_string(level) + ", channel " + std::to_string(channel);
					if (model.mUse > 0 &&
						buffer.IsChannelSilent(static_cast<unsigned>(channel)) != model.IsSilent(channel))
					{
						return place + ": flag";
					}
					std::vector<float> const heard = Heard(buffer, static_cast<unsigned>(channel));
					for (std::size_t i = 0; i < model.mUse; ++i)
					{
						if (heard[i] != static_cast<float>(model.Heard(channel, i)))
						{
							return place + ", sample " + std::to_string(i);
						}
					}
				}
			}
		}
		return {};
	}

	std::mt19937 mRandom;
	std::array<AudioBuffer, kBuffers> mRoots;
	std::array<std::array<AudioSubBuffer, kLevels - 1>, kBuffers> mWindows;
	std::array<std::array<Model, kLevels>, kBuffers> mModels;
};

TEST_F(RandomBufferTest, AnyOrderOfOperationsSoundsLikeThePlainModel)
{
	for (std::size_t step = 0; step < 200000; ++step)
	{
		Step();
		ASSERT_EQ(FirstDifference(), "") << "step " << step;
	}
}

} // namespace
} // namespace dsp
