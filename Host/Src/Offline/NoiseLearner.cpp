#include "NoiseLearner.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kFramesInStretch = 4;

// Of amplitudes, full scale being 1: from -160 dB up in steps of a quarter of a decibel. Worked out without a logarithm,
// which could round otherwise elsewhere.
constexpr double kSilence = 1.0e-8;
constexpr int kLevels = 1440;
// 10 to the power of 1/80.
constexpr double kStep = 1.0292005271944286;

// What counts as quiet, and how many steps are averaged.
constexpr std::int64_t kQuietShare = 4;
constexpr int kAveragedSteps = 3;

std::vector<double> MakeSteps()
{
	std::vector<double> steps(kLevels);
	double step = kSilence;
	for (double& value : steps)
	{
		value = step;
		step *= kStep;
	}
	return steps;
}

// Reads a recording as frames that overlap by a half.
class FrameWalk
{
public:
	FrameWalk(
		SpectralGrid const& inGrid, unsigned inChannels, std::int64_t inFirst, FrameReader const& inRead)
		: mSize(inGrid.mSize),
		  mChannels(inChannels),
		  mNext(inFirst),
		  mRead(inRead),
		  mInterleaved(std::size_t{inGrid.mSize} * inChannels),
		  mFrames(mInterleaved.size())
	{
		Append(mSize);
	}

	std::span<float const> Get() const { return mFrames; }
	// To the next one.
	void Advance() { Append(mSize / 2); }

private:
	void Append(unsigned inCount)
	{
		mRead(mInterleaved.data(), mNext, inCount);
		mNext += inCount;
		for (unsigned channel = 0; channel < mChannels; ++channel)
		{
			float* const frame = mFrames.data() + std::size_t{channel} * mSize;
			std::copy(frame + inCount, frame + mSize, frame);
			float* const end = frame + mSize - inCount;
			for (std::size_t i = 0; i < inCount; ++i)
			{
				end[i] = mInterleaved[i * mChannels + channel];
			}
		}
	}

	unsigned mSize;
	unsigned mChannels;
	std::int64_t mNext;
	FrameReader const& mRead;
	std::vector<float> mInterleaved;
	std::vector<float> mFrames;
};

// The mean of sums. A bin of which little was learned by chance is raised to what its neighbours have, so that the noise
// does not sound there.
void SetPower(std::span<double const> inSums, double inFrames, std::span<float> outPower)
{
	std::size_t const last = outPower.size() - 1;
	for (std::size_t bin = 0; bin <= last; ++bin)
	{
		double const below = inSums[bin == 0 ? 1 : bin - 1];
		double const above = inSums[bin == last ? last - 1 : bin + 1];
		double const around = 0.5 * inSums[bin] + 0.25 * (below + above);
		outPower[bin] = static_cast<float>(std::max(inSums[bin], around) / inFrames);
	}
}

} // namespace

void NoiseLearner::Sum::Add(Sum const& inOther)
{
	mFrames += inOther.mFrames;
	mPower.resize(inOther.mPower.size());
	std::ranges::transform(mPower, inOther.mPower, mPower.begin(), std::plus<>());
}

NoiseLearner::NoiseLearner(SpectralGrid const& inGrid, unsigned inChannels, Choice inChoice)
	: mGrid(inGrid),
	  mChannels(inChannels),
	  mChoice(inChoice),
	  mTransform(inGrid),
	  mSpectrum(inGrid.mSize),
	  mPower(inGrid.GetBins()),
	  mSteps(MakeSteps())
{
	mStretch.mPower.resize(std::size_t{inChannels} * inGrid.GetBins());
}

void NoiseLearner::Add(std::span<float const> inFrames)
{
	auto sum = mStretch.mPower.begin();
	for (unsigned channel = 0; channel < mChannels; ++channel)
	{
		mTransform.Analyse(inFrames.subspan(std::size_t{channel} * mGrid.mSize, mGrid.mSize), mSpectrum);
		ComputePower(mSpectrum, mPower);
		for (float const power : mPower)
		{
			*sum++ += static_cast<double>(power);
		}
	}
	if (++mStretch.mFrames == kFramesInStretch)
	{
		FinishStretch();
	}
}

void NoiseLearner::FinishStretch()
{
	int const level = mChoice == Choice::kAll ? 0 : FindLevel();
	if (level >= 0)
	{
		mSums[level].Add(mStretch);
	}
	mStretch.mFrames = 0;
	std::ranges::fill(mStretch.mPower, 0.0);
}

int NoiseLearner::FindLevel() const
{
	// White noise of the power p has p times a quarter of the frame in each bin.
	double const scale = 4.0 / (static_cast<double>(mStretch.mFrames) * mGrid.mSize);
	double sum = 0.0;
	for (double const power : mStretch.mPower)
	{
		sum += std::sqrt(scale * power);
	}
	double const mean = sum / static_cast<double>(mStretch.mPower.size());
	return static_cast<int>(std::ranges::upper_bound(mSteps, mean) - mSteps.begin()) - 1;
}

std::int64_t NoiseLearner::CountFrames(int inLevel) const
{
	std::int64_t frames = 0;
	for (auto place = mSums.lower_bound(inLevel);
		 place != mSums.end() && place->first < inLevel + kAveragedSteps; ++place)
	{
		frames += place->second.mFrames;
	}
	return frames;
}

int NoiseLearner::FindSteadyLevel() const
{
	std::int64_t total = 0;
	for (auto const& [level, sum] : mSums)
	{
		total += sum.mFrames;
	}
	std::vector<std::pair<int, std::int64_t>> counts;
	std::int64_t quieter = 0;
	std::int64_t most = 0;
	for (auto place = mSums.begin(); place != mSums.end() && quieter * kQuietShare < total; ++place)
	{
		quieter += place->second.mFrames;
		counts.emplace_back(place->first, CountFrames(place->first));
		most = std::max(most, counts.back().second);
	}
	auto const found =
		std::ranges::find_if(counts, [most](auto const& inCount) { return 2 * inCount.second >= most; });
	return found != counts.end() ? found->first : 0;
}

NoiseProfile NoiseLearner::Finish()
{
	// The rest of a stretch counts where there is no other.
	if (mStretch.mFrames > 0 && (mSums.empty() || mChoice == Choice::kAll))
	{
		FinishStretch();
	}
	int const steady = FindSteadyLevel();
	Sum sum;
	for (auto const& [level, part] : mSums)
	{
		if (level >= steady && level < steady + kAveragedSteps)
		{
			sum.Add(part);
		}
	}
	NoiseProfile profile(mChannels, mGrid.GetBins());
	for (unsigned channel = 0; !sum.mPower.empty() && channel < mChannels; ++channel)
	{
		auto const power = std::span(sum.mPower).subspan(std::size_t{channel} * mGrid.GetBins());
		SetPower(power, static_cast<double>(sum.mFrames), profile.GetPower(channel));
	}
	return profile;
}

std::shared_ptr<NoiseProfile const> LearnNoise(int inSampleRate, unsigned inChannels,
	Denoise::Span const& inSpan, NoiseLearner::Choice inChoice, FrameReader const& inRead,
	std::function<bool(std::int64_t)> const& inGoesOn)
{
	SpectralGrid const grid(inSampleRate);
	NoiseLearner learner(grid, inChannels, inChoice);
	std::int64_t end = inSpan.mFirst + grid.mSize;
	if (end <= inSpan.mEnd)
	{
		FrameWalk walk(grid, inChannels, inSpan.mFirst, inRead);
		learner.Add(walk.Get());
		for (end += grid.mSize / 2; end <= inSpan.mEnd; end += grid.mSize / 2)
		{
			if (!inGoesOn(end - inSpan.mFirst))
			{
				return nullptr;
			}
			walk.Advance();
			learner.Add(walk.Get());
		}
	}
	return inGoesOn(inSpan.mEnd - inSpan.mFirst) ? std::make_shared<NoiseProfile const>(learner.Finish())
												 : nullptr;
}

} // namespace SonaroHost
