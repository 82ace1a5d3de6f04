#include "PieceRun.h"

#include "OrderedPieces.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace SonaroHost
{

namespace
{

using Meters = std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>>;

// The taps of each group by their numbers, and in the last group those that stand in none.
std::vector<Meters> SplitTaps(RangeRender const& inRender)
{
	std::size_t const taps = inRender.mView.mTaps.size();
	std::map<std::string, std::size_t> groups;
	for (std::size_t group = 0; group < inRender.mTapGroups.size(); ++group)
	{
		for (std::string const& origin : inRender.mTapGroups[group])
		{
			groups.emplace(origin, group);
		}
	}
	std::vector<Meters> split(inRender.mTapGroups.size() + 1, Meters(taps));
	std::size_t tap = 0;
	for (auto const& [origin, meter] : inRender.mView.mTaps)
	{
		auto const found = groups.find(origin);
		split[found != groups.end() ? found->second : inRender.mTapGroups.size()][tap++] = meter;
	}
	std::erase_if(split,
		[](Meters const& inMeters) {
			return std::ranges::none_of(
				inMeters, [](auto const& inMeter) { return static_cast<bool>(inMeter); });
		});
	return split;
}

// The threads of one render and what they share.
class PiecewiseRun
{
public:
	PiecewiseRun(Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange,
		PiecePlan const& inPlan)
		: mProgramme(inProgramme),
		  mRender(inRender),
		  mRange(inRange),
		  mPieces(
			  {inPlan.mPieces, inPlan.GetWindow(), PiecePlan::kMostBytes}, [this] { return MakePiece(); },
			  MakeConsumers())
	{
	}

	void Run(unsigned inJobs, PieceMaker const& inFirst, std::function<PieceMaker()> const& inMakeMore)
	{
		std::stop_callback const stop(mRender.mStop, [this] { mPieces.End(); });
		{
			std::vector<std::jthread> threads;
			for (unsigned job = 1; job < inJobs; ++job)
			{
				try
				{
					threads.emplace_back([this, &inMakeMore] { Help(inMakeMore); });
				}
				catch (std::exception const&)
				{
					// There are as many threads as the system and the memory allow. Those without makers wait for this one.
					break;
				}
			}
			Work(inFirst);
		}
		if (auto const failure = mPieces.GetFailure())
		{
			std::rethrow_exception(failure);
		}
	}

private:
	std::unique_ptr<Piece> MakePiece() const
	{
		bool const hasTaps = !mRender.mView.mTaps.empty();
		std::uint64_t const channels = hasTaps ? Sequence::CountChannels(*mProgramme.mDescription) : 0;
		return std::make_unique<Piece>(
			mRange.mChannels, mRange.mBlockFrames, std::size_t{mRange.mBlockFrames} * channels);
	}

	std::vector<OrderedPieces::Consumer> MakeConsumers()
	{
		if (mRender.mTakePiece)
		{
			return {mRender.mTakePiece};
		}
		std::vector<OrderedPieces::Consumer> consumers{[this](Piece& ioPiece) { TakeOutput(ioPiece); }};
		for (Meters& meters : SplitTaps(mRender))
		{
			consumers.emplace_back([replay = std::make_shared<TapReplay>(std::move(meters))](Piece& ioPiece)
				{ replay->Replay(ioPiece); });
		}
		return consumers;
	}

	void TakeOutput(Piece& ioPiece)
	{
		ioPiece.TakeBlocks(
			[this](dsp::AudioBuffer& ioBlock)
			{
				if (!mPieces.IsEnding())
				{
					mRender.mSink(ioBlock);
				}
			});
		if (ioPiece.mFailure)
		{
			std::rethrow_exception(ioPiece.mFailure);
		}
	}

	// On a thread of its own.
	void Help(std::function<PieceMaker()> const& inMakeMore)
	{
		PieceMaker maker;
		try
		{
			std::lock_guard const lock(mMaking);
			maker = inMakeMore();
		}
		catch (std::exception const&)
		{
			// Others took the files or the memory. The threads that have makers do its work.
		}
		Work(maker);
	}

	void Work(PieceMaker const& inMake)
	{
		auto const render = [&](std::size_t inPiece, Piece& outPiece)
		{ inMake(inPiece, mPieces.IsEnding(), outPiece); };
		mPieces.Work(inMake ? OrderedPieces::Renderer(render) : OrderedPieces::Renderer());
	}

	Programme const& mProgramme;
	RangeRender const& mRender;
	OfflineRange const& mRange;
	std::mutex mMaking;
	OrderedPieces mPieces;
};

} // namespace

void RunPieces(Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange,
	PiecePlan const& inPlan, PieceMaker const& inFirst, std::function<PieceMaker()> const& inMakeMore)
{
	PiecewiseRun(inProgramme, inRender, inRange, inPlan).Run(inPlan.mJobs, inFirst, inMakeMore);
}

} // namespace SonaroHost
