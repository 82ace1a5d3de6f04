// Who gets which piece when.

#include "Render/Piece/OrderedPieces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

namespace SonaroHost::Testing::OrderedPiecesTest
{

namespace
{

// Pieces that hold their index as the first sample, handed out to threads that take different times.
class PieceTrial
{
public:
	PieceTrial(std::size_t inPieces, std::size_t inWindow, std::size_t inBytes, std::size_t inConsumers)
		: mTaken(inConsumers),
		  mPieces(
			  {inPieces, inWindow, inBytes}, [] { return std::make_unique<Piece>(1, 16, 0); },
			  MakeConsumers(inConsumers))
	{
	}

	// inFails: pieces that fail.
	void Run(std::size_t inRenderers, std::size_t inHelpers, std::vector<std::size_t> inFails = {})
	{
		mFails = std::move(inFails);
		std::vector<std::jthread> threads;
		for (std::size_t i = 0; i < inRenderers + inHelpers; ++i)
		{
			threads.emplace_back(
				[this, i, inRenderers]
				{
					mPieces.Work(
						i < inRenderers
							? OrderedPieces::Renderer(
								  [this, random = std::mt19937(static_cast<unsigned>(i))](std::size_t inPiece,
									  Piece& outPiece) mutable { Render(inPiece, random, outPiece); })
							: OrderedPieces::Renderer());
				});
		}
	}

	std::string GetFailure() const
	{
		try
		{
			if (mPieces.GetFailure())
			{
				std::rethrow_exception(mPieces.GetFailure());
			}
		}
		catch (std::exception const& error)
		{
			return error.what();
		}
		return {};
	}

	// What each consumer has got.
	std::vector<std::vector<std::size_t>> mTaken;
	std::size_t mStopsAt = ~std::size_t{0};
	// The most pieces that were rendered but not taken by all.
	std::size_t mMostKept = 0;
	OrderedPieces mPieces;

private:
	std::vector<OrderedPieces::Consumer> MakeConsumers(std::size_t inCount)
	{
		std::vector<OrderedPieces::Consumer> consumers;
		for (std::size_t i = 0; i < inCount; ++i)
		{
			consumers.emplace_back([this, i](Piece& ioPiece) { Take(i, ioPiece); });
		}
		return consumers;
	}

	void Render(std::size_t inPiece, std::mt19937& ioRandom, Piece& outPiece)
	{
		std::this_thread::sleep_for(std::chrono::microseconds(ioRandom() % 200));
		{
			std::lock_guard const lock(mMutex);
			std::size_t const taken = std::accumulate(mTaken.begin(), mTaken.end(), ~std::size_t{0},
				[](std::size_t inLeast, auto const& inTaken) { return std::min(inLeast, inTaken.size()); });
			mMostKept = std::max(mMostKept, inPiece + 1 - std::min(taken, inPiece + 1));
		}
		dsp::AudioBuffer block(1, 1);
		block.GetChannel(0)[0] = static_cast<float>(inPiece);
		block.NoteBufferWrite(0, 1);
		outPiece.BeginBlock();
		outPiece.AddBlock(block);
		if (std::find(mFails.begin(), mFails.end(), inPiece) != mFails.end())
		{
			outPiece.mFailure = std::make_exception_ptr(std::runtime_error(std::to_string(inPiece)));
		}
	}

	void Take(std::size_t inConsumer, Piece& ioPiece)
	{
		std::size_t piece = 0;
		ioPiece.TakeBlocks(
			[&](dsp::AudioBuffer& ioBlock) { piece = static_cast<std::size_t>(ioBlock.GetChannel(0)[0]); });
		if (piece == mStopsAt)
		{
			mPieces.End();
		}
		{
			std::lock_guard const lock(mMutex);
			mTaken[inConsumer].push_back(piece);
		}
		if (inConsumer == 0 && ioPiece.mFailure)
		{
			std::rethrow_exception(ioPiece.mFailure);
		}
	}

	std::vector<std::size_t> mFails;
	std::mutex mMutex;
};

constexpr std::size_t kPieces = 300;
constexpr std::size_t kNoLimit = ~std::size_t{0};

TEST(OrderedPieces, EveryConsumerGetsAllInOrderAndFewAreKept)
{
	struct Case
	{
		char const* mName;
		std::size_t mRenderers;
		std::size_t mHelpers;
		std::size_t mWindow;
		std::size_t mBytes;
		std::size_t mConsumers;
		std::size_t mMostKept;
	};
	constexpr Case kCases[] = {
		{"one thread", 1, 0, 2, kNoLimit, 1, 2},
		{"several", 4, 0, 8, kNoLimit, 3, 8},
		{"one renders, others help", 1, 3, 8, kNoLimit, 4, 8},
		{"a window of one", 4, 0, 1, kNoLimit, 2, 1},
		{"no room for more than is due", 4, 1, 8, 1, 2, 5},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		PieceTrial trial(kPieces, test.mWindow, test.mBytes, test.mConsumers);
		trial.Run(test.mRenderers, test.mHelpers);
		EXPECT_EQ(trial.GetFailure(), "");
		std::vector<std::size_t> all(kPieces);
		std::iota(all.begin(), all.end(), std::size_t{0});
		for (std::vector<std::size_t> const& taken : trial.mTaken)
		{
			EXPECT_EQ(taken, all);
		}
		EXPECT_LE(trial.mMostKept, test.mMostKept);
	}
}

TEST(OrderedPieces, TheFirstFailureByPositionCounts)
{
	for (unsigned run = 0; run < 20; ++run)
	{
		PieceTrial trial(kPieces, 8, kNoLimit, 2);
		trial.Run(4, 0, {40, 41, 42, 45, 200});
		EXPECT_EQ(trial.GetFailure(), "40");
		ASSERT_EQ(trial.mTaken.front().size(), 41u);
		EXPECT_EQ(trial.mTaken.front().back(), 40u);
	}
}

TEST(OrderedPieces, AnEndIsHeardByAllThreads)
{
	PieceTrial trial(kPieces, 8, kNoLimit, 2);
	trial.mStopsAt = 20;
	trial.Run(3, 1);
	EXPECT_TRUE(trial.mPieces.IsEnding());
	EXPECT_EQ(trial.GetFailure(), "");
	EXPECT_LT(trial.mTaken.front().size(), kPieces);
}

} // namespace

} // namespace SonaroHost::Testing::OrderedPiecesTest
