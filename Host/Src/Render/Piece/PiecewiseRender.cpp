#include "PiecewiseRender.h"

#include "OrderedPieces.h"
#include "PiecePlan.h"
#include "PieceRenderer.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <stop_token>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

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
		PiecePlan const& inPlan, std::unique_ptr<PieceRenderer> inFirst)
		: mProgramme(inProgramme),
		  mRender(inRender),
		  mRange(inRange),
		  mPlan(inPlan),
		  mRenderers(inPlan.mJobs),
		  mPieces(
			  {inPlan.mPieces, inPlan.GetWindow(), PiecePlan::kMostBytes}, [this] { return MakePiece(); },
			  MakeConsumers())
	{
		mRenderers.front() = std::move(inFirst);
	}

	void Run()
	{
		std::stop_callback const stop(mRender.mStop, [this] { mPieces.End(); });
		{
			std::vector<std::jthread> threads;
			for (std::size_t job = 1; job < mRenderers.size(); ++job)
			{
				try
				{
					threads.emplace_back([this, job] { Help(job); });
				}
				catch (std::system_error const&)
				{
					// There are as many threads as the system allows.
					break;
				}
			}
			Work(0);
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

	// On a thread of its own: makes its graph where several are of use.
	void Help(std::size_t inJob)
	{
		if (mRenderers.front()->GetReport().mWhyInOneRun.empty())
		{
			std::lock_guard const lock(mMaking);
			try
			{
				mRenderers[inJob] = std::make_unique<PieceRenderer>(mProgramme, mRender, mRange);
			}
			catch (std::exception const&)
			{
				// Others took the files or the memory. The graphs that there are do its work.
			}
		}
		Work(inJob);
	}

	void Work(std::size_t inJob)
	{
		PieceRenderer* const renderer = mRenderers[inJob].get();
		auto const render = [this, renderer](std::size_t inPiece, Piece& outPiece)
		{
			std::int64_t const first = static_cast<std::int64_t>(inPiece) * mPlan.mPieceFrames;
			renderer->Render(
				first, std::min(mPlan.mPieceFrames, mRange.mFrames - first), mPieces.IsEnding(), outPiece);
		};
		mPieces.Work(renderer ? OrderedPieces::Renderer(render) : OrderedPieces::Renderer());
	}

	Programme const& mProgramme;
	RangeRender const& mRender;
	OfflineRange const& mRange;
	PiecePlan mPlan;
	// One for each thread, or null; that of the calling one is the first.
	std::vector<std::unique_ptr<PieceRenderer>> mRenderers;
	std::mutex mMaking;
	OrderedPieces mPieces;
};

} // namespace

PiecewiseReport RenderPieces(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange)
{
	auto first = std::make_unique<PieceRenderer>(inProgramme, inRender, inRange);
	CheckMedia(inProgramme, *inProgramme.mMedia);
	PiecewiseReport report;
	PiecePlan const plan = PlanPieces(inProgramme, inRender, inRange.mBlockFrames, first->GetReport());
	if (plan.mJobs == 1)
	{
		return report;
	}
	report.mIsRendered = true;
	report.mGraph = first->GetReport();
	PiecewiseRun(inProgramme, inRender, inRange, plan, std::move(first)).Run();
	report.mIsComplete = !inRender.mStop.stop_requested();
	return report;
}

} // namespace SonaroHost
