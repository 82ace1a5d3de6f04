#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Render/FarmPlan.h"
#include "SonaroHost/Render/Programme.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace SonaroHost::Farm
{

// About how much work a programme takes at each of its times: a channel of a clip that is only read and mixed costs 1 for
// each second.
//
// Clips      A channel costs as much more as its rate and speed are higher, 6 more where it is resampled, and 40 more
//            where it is stretched or cleaned of noise first.
// Effects    5 for each channel, and 0.2 for any other stage.
// Sequences  What their own contents cost, as often as they are heard, and 6 for each channel at another speed.
// Everywhere A channel of a track or a submix costs 0.1.
class CostProfile
{
public:
	explicit CostProfile(Programme const& inProgramme);

	// Cuts a range of the programme into so many pieces that cost about the same, fewer where it has not as many blocks.
	// Pieces begin at whole blocks from the start of the range on.
	std::vector<FarmPiece> Cut(
		ProgrammeRange const& inRange, unsigned inBlockFrames, std::size_t inPieces) const;

private:
	// From this time on, in seconds, it costs so much more.
	struct Step
	{
		double mSeconds = 0.0;
		double mCost = 0.0;
	};
	using Steps = std::vector<Step>;

	Steps const& Measure(Sequence::Description const& inDescription);
	void Add(Sequence::Item const& inItem, double inTrackChannels, Steps& ioSteps);
	void AddSequence(Sequence::Description const& inDescription, Sequence::Item const& inItem, double inShare,
		Steps& ioSteps);
	double GetClipCost(Sequence::Clip const& inClip, Sequence::Item const& inItem) const;

	int mSampleRate;
	std::int64_t mFirstFrame;
	// In the order of time.
	std::map<Sequence::Description const*, Steps> mDone;
	Steps mSteps;
};

} // namespace SonaroHost::Farm
