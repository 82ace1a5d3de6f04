#pragma once

#include "KWeighting.h"

#include <cstddef>
#include <vector>

namespace SonaroHost
{

class WeightedProgramme;

// Holds samples of several programmes, a channel in each lane, until a lane is full or none is left, and then filters
// them side by side.
class MeterLanes
{
public:
	// Samples from before, which lie in front of what is written into a lane.
	static constexpr unsigned kHistory = 64;

	// A programme that holds lanes.
	struct Tenant
	{
		WeightedProgramme* mProgramme;
		// kHistory samples of each channel, one channel after the other.
		std::vector<float>* mHistory;
		std::size_t mFirstLane;
		unsigned mFrames;
	};

	// inFrames: the frames that a lane holds.
	MeterLanes(double inSampleRate, unsigned inFrames);

	double GetSampleRate() const { return mSampleRate; }
	// Makes room for programmes of so many channels.
	void Reserve(std::size_t inChannels);

	bool Holds(WeightedProgramme const& inProgramme) const;
	// Gives the programme lanes with room for a frame at least.
	Tenant& Open(WeightedProgramme& ioProgramme, std::vector<float>& ioHistory);
	unsigned GetRoom(Tenant const& inTenant) const { return mFrames - inTenant.mFrames; }
	// Where the next frames of a channel go.
	float* GetEnd(Tenant const& inTenant, unsigned inChannel);
	// Filters all that is held.
	void Run();

private:
	// What is run at once.
	struct Stretch
	{
		unsigned mFirst;
		unsigned mFrames;
	};

	float* GetStart(std::size_t inLane) { return mSamples.data() + inLane * (kHistory + mFrames) + kHistory; }
	Stretch GetStretch(unsigned inFirst) const;
	void RunLanes(std::size_t inFirstLane, Stretch const& inStretch);
	void Release(Tenant const& inTenant);

	double mSampleRate;
	KWeighting mWeighting;
	unsigned mFrames;
	std::vector<float> mSamples;
	std::vector<float> mFiltered;
	std::vector<Tenant> mTenants;
	std::size_t mTaken = 0;
	std::size_t mLanes = 0;
};

} // namespace SonaroHost
