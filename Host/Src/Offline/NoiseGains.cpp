#include "NoiseGains.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kPartFrames = 64;
constexpr std::int64_t kRunUpFrames = 16;

// How much of the estimate comes from the frame before.
constexpr float kSmoothing = 0.98f;
// Beyond 60 dB the gain is 1 anyway.
constexpr float kLargestRatio = 1.0e6f;

// By how much the noise counts for more than it is, so that its peaks do not sound (musical noise).
constexpr float kCaution = 1.6f;

// 0 for silence, also where there is no noise.
float GetRatio(float inPower, float inNoise)
{
	float const noise = kCaution * inNoise;
	float const ratio = inPower < noise * kLargestRatio ? inPower / noise : kLargestRatio;
	return inPower > 0.0f ? ratio : 0.0f;
}

float GetWienerGain(float inRatio)
{
	return inRatio / (1.0f + inRatio);
}

// Carries the memory on, and returns the gain.
float Step(float inRatio, float& ioMemory)
{
	float const estimate = kSmoothing * ioMemory + (1.0f - kSmoothing) * std::max(inRatio - 1.0f, 0.0f);
	float const first = GetWienerGain(estimate);
	ioMemory = first * first * inRatio;
	return GetWienerGain(ioMemory);
}

void RunUp(std::span<float const> inPower, std::span<float const> inNoise, float* ioMemory)
{
	for (std::size_t bin = 0; bin < inPower.size(); ++bin)
	{
		Step(GetRatio(inPower[bin], inNoise[bin]), ioMemory[bin]);
	}
}

// Raises gains to what a channel asks for. What has no noise stays exactly as it is.
void Raise(
	std::span<float const> inPower, std::span<float const> inNoise, float* ioMemory, std::span<float> ioGains)
{
	for (std::size_t bin = 0; bin < inPower.size(); ++bin)
	{
		float const gain = Step(GetRatio(inPower[bin], inNoise[bin]), ioMemory[bin]);
		float const wanted = inPower[bin] > 0.0f && inNoise[bin] <= 0.0f ? 1.0f : gain;
		ioGains[bin] = std::max(ioGains[bin], wanted);
	}
}

std::int64_t GetPart(std::int64_t inFrame)
{
	return inFrame >= 0 ? inFrame / kPartFrames : -((-inFrame + kPartFrames - 1) / kPartFrames);
}

} // namespace

NoiseGains::NoiseGains(std::shared_ptr<NoiseProfile const> inProfile, unsigned inChannels, float inFloor)
	: mProfile(std::move(inProfile)),
	  mChannels(inChannels),
	  mFloor(inFloor),
	  mMemory(mProfile->mPower.size()),
	  mNextMemory(mMemory.size())
{
}

std::int64_t NoiseGains::FindFirstFrame(std::int64_t inFrame)
{
	return GetPart(inFrame) * kPartFrames - kRunUpFrames;
}

void NoiseGains::Start(std::int64_t inFrame)
{
	mNextFrame = inFrame;
	std::ranges::fill(mMemory, 0.0f);
}

void NoiseGains::Decide(std::span<float const> inPower, std::span<float> outGains)
{
	std::int64_t const frameInPart = mNextFrame - GetPart(mNextFrame) * kPartFrames;
	++mNextFrame;
	if (frameInPart == 0)
	{
		std::swap(mMemory, mNextMemory);
	}
	else if (frameInPart == kPartFrames - kRunUpFrames)
	{
		std::ranges::fill(mNextMemory, 0.0f);
	}
	std::ranges::fill(outGains, mFloor);
	for (unsigned channel = 0; channel < mChannels; ++channel)
	{
		std::size_t const first = std::size_t{channel} * mProfile->mBins;
		std::span<float const> const power = inPower.subspan(first, mProfile->mBins);
		if (frameInPart >= kPartFrames - kRunUpFrames)
		{
			RunUp(power, mProfile->GetPower(channel), mNextMemory.data() + first);
		}
		Raise(power, mProfile->GetPower(channel), mMemory.data() + first, outGains);
	}
}

} // namespace SonaroHost
