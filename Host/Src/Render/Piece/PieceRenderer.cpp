#include "PieceRenderer.h"

#include "Render/Effect/LatencyGrowth.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

class PieceRenderer::TapRecorder final : public SN::Implements<TapRecorder, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<TapRecorder> kIdentifier{0x2c7fd51b08e3a964ull, 0xb6490d7ef21a385cull};

	TapRecorder(std::size_t inTap, std::shared_ptr<Piece*> inPiece)
		: mTap(inTap),
		  mPiece(std::move(inPiece))
	{
	}

	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime) override
	{
		if (*mPiece)
		{
			(*mPiece)->Hear(mTap, inBuffer, inTime);
		}
	}
	void Shutdown() override {}
	void Reset() override {}

private:
	std::size_t mTap;
	std::shared_ptr<Piece*> mPiece;
};

PieceRenderer::PieceRenderer(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange)
	: mProgramme(inProgramme),
	  mRender(inRender),
	  mRange(inRange),
	  mPiece(std::make_shared<Piece*>(nullptr)),
	  mMedia(inProgramme.mOpenForGraph()),
	  mContext(inRange.mBlockFrames, SN::TickTime(inRange.mFirstFrame + inRange.mFrames, inRange.mFrameRate),
		  SN::ImmutableString("render")),
	  mBlock(inRange.mChannels, inRange.mBlockFrames)
{
	mGraph.emplace(MakeGraph(inProgramme, mContext.Get(), MakeView()));
}

PieceRenderer::~PieceRenderer()
{
	if (mIsRunning)
	{
		mGraph->GetGenerator()->ShutdownAudioFilters();
	}
}

// Taps are numbered in the order of their origins.
Sequence::GraphView PieceRenderer::MakeView()
{
	Sequence::GraphView view;
	view.mLeftOut = mRender.mView.mLeftOut;
	for (auto const& [origin, meter] : mRender.mView.mTaps)
	{
		view.mTaps.emplace(origin, zorvcore::classref::MakeObject<TapRecorder>(view.mTaps.size(), mPiece));
	}
	return view;
}

void PieceRenderer::Render(std::int64_t inFirstFrame, std::int64_t inFrames,
	std::atomic<bool> const& inIsEnding, Piece& outPiece) noexcept
{
	*mPiece = &outPiece;
	try
	{
		RenderBlocks(inFirstFrame, inFrames, inIsEnding, outPiece);
	}
	catch (...)
	{
		outPiece.mFailure = std::current_exception();
		mNext.reset();
	}
	*mPiece = nullptr;
}

void PieceRenderer::Begin(SN::TickTime const& inTime)
{
	SN::IAudioGenerator& generator = *mGraph->GetGenerator();
	if (!mIsRunning)
	{
		generator.InitializeAudioFilters();
		mIsRunning = true;
	}
	generator.Preroll(inTime, false);
}

void PieceRenderer::RenderBlocks(
	std::int64_t inFirstFrame, std::int64_t inFrames, std::atomic<bool> const& inIsEnding, Piece& outPiece)
{
	auto const getTime = [&](std::int64_t inFrame)
	{ return SN::TickTime(mRange.mFirstFrame + inFrame, mRange.mFrameRate); };
	if (mNext != inFirstFrame)
	{
		Begin(getTime(inFirstFrame));
	}
	for (std::int64_t done = 0; done < inFrames && !inIsEnding.load(std::memory_order_relaxed);)
	{
		std::int64_t const count = std::min<std::int64_t>(mRange.mBlockFrames, inFrames - done);
		outPiece.BeginBlock();
		mBlock.SetUseSize(static_cast<unsigned>(count));
		mGraph->GetGenerator()->GetAudioData(getTime(inFirstFrame + done), mBlock, false);
		CheckMedia(mProgramme, *mMedia);
		CheckEffects(mProgramme, mGraph->GetReport(), mRender.mRange.mFirstFrame + inFirstFrame + done);
		if (HasLateEffect(mGraph->GetReport()) && !mProgramme.mSearchesLatency)
		{
			throw LatencyGrowth();
		}
		outPiece.AddBlock(mBlock);
		done += count;
	}
	mNext = inFirstFrame + inFrames;
}

} // namespace SonaroHost
