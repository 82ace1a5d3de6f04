#include "WaveformRun.h"

#include "Sonaro/AudioWaveformQueue.h"
#include "SonaroHost/Waveform/PeakColumn.h"
#include "Vexilon/ITimeTransform.h"
#include "zorvcore/threads/Gate.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kTransformStep = 64;
constexpr unsigned kValuesPerColumn = 3;
// How long a closed gate keeps a run from seeing that it is not wanted any more.
constexpr auto kGateInterval = std::chrono::milliseconds(20);

// One waveform while it is computed.
class WaveformRun
{
public:
	WaveformRun(GraphWindow& ioWindow, SN::IAudioWaveformBuffer& ioBuffer, WaveformPlan const& inPlan)
		: mWindow(ioWindow),
		  mBuffer(ioBuffer),
		  mPlan(inPlan),
		  mColumns(inPlan.mChannels)
	{
		std::int64_t const frames = mPlan.mFrames.mEnd - mPlan.mFrames.mFirst;
		std::int64_t const columns = frames / mPlan.mInterval + (frames % mPlan.mInterval != 0 ? 1 : 0);
		mBuffer.GetChannels().resize(mPlan.mChannels);
		for (std::vector<float>& channel : mBuffer.GetChannels())
		{
			channel.assign(static_cast<std::size_t>(columns) * kValuesPerColumn, 0.0f);
		}
	}

	bool Compute()
	{
		if (!MayGoOn() || !(mPlan.mTransform ? ComputeTransformed() : ComputeStraight()))
		{
			return false;
		}
		mBuffer.SetSampleCount(mNumWritten);
		mBuffer.SetComplete();
		return true;
	}

private:
	// Waits at the gate; false when the waveform is not wanted any more.
	bool MayGoOn() const
	{
		auto const isWanted = [this]
		{ return mBuffer.IsPending() && !SN::AudioWaveformQueue::IsJobAborted(); };
		while (isWanted())
		{
			if (!mPlan.mGate ||
				mPlan.mGate->PassThroughUntil(std::chrono::steady_clock::now() + kGateInterval))
			{
				return isWanted();
			}
		}
		return false;
	}

	bool ComputeStraight()
	{
		auto const [first, end] = mPlan.mFrames;
		for (std::int64_t position = first; position < end;)
		{
			std::int64_t const columnEnd =
				std::min(end - position, mPlan.mInterval - (position - first) % mPlan.mInterval) + position;
			if (!AddFrames({position, columnEnd}, mColumns))
			{
				return false;
			}
			WriteColumns();
			position = columnEnd;
		}
		return true;
	}

	bool ComputeTransformed()
	{
		std::vector<PeakColumn> passed(mPlan.mChannels);
		auto const [first, end] = mPlan.mFrames;
		for (std::int64_t position = first; position < end;)
		{
			std::int64_t const columnEnd = position + std::min(end - position, mPlan.mInterval);
			while (position < columnEnd)
			{
				std::int64_t const stepEnd = std::min(position + kTransformStep, columnEnd);
				std::fill(passed.begin(), passed.end(), PeakColumn());
				if (!AddFrames(FindPassed(position, stepEnd), passed))
				{
					return false;
				}
				for (unsigned channel = 0; channel < mPlan.mChannels; ++channel)
				{
					mColumns[channel].Add(passed[channel], static_cast<double>(stepEnd - position));
				}
				position = stepEnd;
			}
			WriteColumns();
		}
		return true;
	}

	// Adds all frames to a column of each channel, those outside of the bounds as silence.
	bool AddFrames(GraphWindow::Range const& inFrames, std::vector<PeakColumn>& ioColumns)
	{
		GraphWindow::Range const& bounds = mWindow.GetBounds();
		std::int64_t const first = std::clamp(inFrames.mFirst, bounds.mFirst, bounds.mEnd);
		std::int64_t const end = std::clamp(inFrames.mEnd, first, bounds.mEnd);
		double const outside =
			static_cast<double>(inFrames.mEnd - inFrames.mFirst) - static_cast<double>(end - first);
		for (PeakColumn& column : ioColumns)
		{
			column.AddSilence(outside);
		}
		for (std::int64_t position = first; position < end;)
		{
			if (!mWindow.Holds(position))
			{
				// What is done is shown while the next block is on its way.
				mBuffer.SetSampleCount(mNumWritten);
				if (!MayGoOn())
				{
					return false;
				}
				mWindow.MoveTo(position);
			}
			std::int64_t const pieceEnd = std::min(end, mWindow.GetRange().mEnd);
			for (unsigned channel = 0; channel < mPlan.mChannels; ++channel)
			{
				ioColumns[channel].Add(
					mWindow.GetSamples(channel, position), static_cast<unsigned>(pieceEnd - position));
			}
			position = pieceEnd;
		}
		return true;
	}

	// The frames of the graph that the time from one frame of the range to another passes over.
	GraphWindow::Range FindPassed(std::int64_t inFrom, std::int64_t inTo) const
	{
		auto const getFrame = [this](std::int64_t inFrame)
		{
			SN::TickTime const time(inFrame, mPlan.mFrameRate);
			return mPlan.mTransform->GetTime(time).ToFrame64(mPlan.mFrameRate);
		};
		std::int64_t const from = getFrame(inFrom);
		std::int64_t const to = getFrame(inTo);
		// Backwards, the frame where it begins is passed, and the one where it arrives is not.
		return to < from ? GraphWindow::Range{to + 1, from + 1}
						 : GraphWindow::Range{from, std::max(to, from + 1)};
	}

	void WriteColumns()
	{
		for (unsigned channel = 0; channel < mPlan.mChannels; ++channel)
		{
			float* const values = mBuffer.GetChannels()[channel].data() +
								  static_cast<std::size_t>(mNumWritten) * kValuesPerColumn;
			values[0] = mColumns[channel].GetMinimum();
			values[1] = mColumns[channel].GetMaximum();
			values[2] = mColumns[channel].GetRms();
			mColumns[channel] = PeakColumn();
		}
		++mNumWritten;
	}

	GraphWindow& mWindow;
	SN::IAudioWaveformBuffer& mBuffer;
	WaveformPlan mPlan;
	// The column in the making of each channel.
	std::vector<PeakColumn> mColumns;
	std::uint64_t mNumWritten = 0;
};

} // namespace

bool ComputeWaveform(GraphWindow& ioWindow, SN::IAudioWaveformBuffer& ioBuffer, WaveformPlan const& inPlan)
{
	return WaveformRun(ioWindow, ioBuffer, inPlan).Compute();
}

} // namespace SonaroHost
