#pragma once

#include "KWeighting.h"
#include "LoudnessGate.h"
#include "LoudnessRecorder.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Metering/LoudnessOptions.h"
#include "zorvaccelerate/Metering.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace SonaroHost
{

// The weighted powers of a programme, from filters that run elsewhere, on lanes beside those of other programmes.
//
// Sums  Samples are added in single precision and carried on to double precision at places of the programme, so any
//       cut gives the same.
class WeightedProgramme
{
public:
	WeightedProgramme(SN::AudioChannelLayout const& inLayout, double inSampleRate, LoudnessMemory inMemory,
		LoudnessWindows inWindows);

	// The longest run of the filters at once. Sums of so many squares are exact to 0.0003 dB in single precision.
	static constexpr unsigned kStepFrames = 1024;

	unsigned GetNumChannels() const { return static_cast<unsigned>(mChannels.size()); }
	bool HasWindows() const { return !mWindow.empty(); }
	// No filter would answer to silence.
	bool IsAtRest() const;

	// So many frames may follow before the next Advance.
	unsigned GetFramesToStep() const;
	// A channel's filter onto a lane and back.
	void Load(unsigned inChannel, unsigned inLane, zorvaccelerate::utility::LaneStates& outStates) const;
	void Store(unsigned inChannel, unsigned inLane, zorvaccelerate::utility::LaneStates const& inStates);
	// Only with windows: takes what comes out of a channel's filter, inStride apart. The first channel's comes first.
	void TakeFiltered(unsigned inChannel, unsigned inFrames, float const* inFiltered, std::size_t inStride);
	// inFrames: at most GetFramesToStep.
	void Advance(unsigned inFrames);
	// Any number of frames of silence, at rest.
	void AdvanceAtRest(std::int64_t inFrames);

	double GetSquares() const;
	std::int64_t GetFrames() const { return mFrames; }
	double GetIntegrated() const { return mGate.GetLoudness(); }
	// The loudness of the last 400 ms or 3 s; only with windows.
	double GetMomentary() const { return GetRecent(kStretchesOfMoment); }
	double GetShortTerm() const { return GetRecent(kStretchesOfWindow); }
	// Nothing where none is kept.
	std::optional<LoudnessSeries> GetSeries() const;

private:
	static constexpr unsigned kStretchesOfMoment = 4;
	static constexpr unsigned kStretchesOfWindow = 30;

	struct Channel
	{
		// The filter's, as in LaneStates; the squares since the last step at the end.
		std::array<float, 2> mSums{};
		std::array<float, 2> mDifferences{};
		float mRecentSquares = 0.0f;
		float mRecentFilteredSquares = 0.0f;
		double mSquares = 0.0;
		// The sum over this stretch.
		double mFilteredSquares = 0.0;
		// The channel's weight in BS.1770.
		double mWeight = 1.0;
	};

	void CarryOn(Channel& ioChannel);
	void FinishStretch();
	double GetRecent(unsigned inStretches) const;

	KWeighting mWeighting;
	std::vector<Channel> mChannels;
	LoudnessGate mGate;
	// Frames of 100 ms.
	unsigned mStretchFrames;
	unsigned mFramesInStretch = 0;
	std::int64_t mFrames = 0;
	// The weighted powers of the frames of the last 3 s, in a ring.
	std::vector<float> mWindow;
	std::size_t mNextInWindow = 0;
	std::optional<LoudnessRecorder> mRecorder;
};

} // namespace SonaroHost
