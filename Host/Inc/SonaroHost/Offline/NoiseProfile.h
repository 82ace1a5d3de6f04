#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace SonaroHost
{

// What was learned of a noise: its mean power in each bin of short-time spectra, for each channel; 0 where there is none.
struct NoiseProfile
{
	NoiseProfile(unsigned inChannels, unsigned inBins)
		: mBins(inBins),
		  mPower(std::size_t{inChannels} * inBins)
	{
	}

	std::span<float> GetPower(unsigned inChannel)
	{
		return {mPower.data() + std::size_t{inChannel} * mBins, mBins};
	}
	std::span<float const> GetPower(unsigned inChannel) const
	{
		return {mPower.data() + std::size_t{inChannel} * mBins, mBins};
	}

	bool IsSilent() const;
	// The root mean square in the channel that has most noise.
	double GetLevel() const;

	unsigned mBins;
	// One channel after the other.
	std::vector<float> mPower;
};

// The profile of a recording, which whoever reads it first learns for all.
//
// Threads  Any. While one learns, the others wait.
class SharedNoiseProfile
{
public:
	using Profile = std::shared_ptr<NoiseProfile const>;

	// What inLearn gives when nobody has learned before. When it gives null or throws, the next one learns.
	Profile Get(std::function<Profile()> const& inLearn);
	bool IsLearned() const { return Find() != nullptr; }
	// Null until somebody has learned.
	Profile Find() const;

private:
	mutable std::mutex mMutex;
	Profile mProfile;
};

} // namespace SonaroHost
