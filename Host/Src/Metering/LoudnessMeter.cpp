#include "SonaroHost/Metering/LoudnessMeter.h"

#include "MeterLanes.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Metering/LoudnessBank.h"
#include "SonaroHost/Metering/LoudnessSeries.h"
#include "TruePeakTaps.h"
#include "WeightedProgramme.h"
#include "zorvaccelerate/Metering.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace SonaroHost
{

namespace
{

using zorvaccelerate::utility::InterpolationTaps;
using zorvaccelerate::utility::kLargestPlausible;

// The largest block of a meter's own lanes.
constexpr unsigned kOwnFrames = 1024;
// The points that are found at once.
constexpr unsigned kPointStep = 16;
// The points after which no sample is within reach.
constexpr unsigned kPointsAtEnd = 2 * kPointStep;
static_assert(kPointsAtEnd >= 2 * InterpolationTaps::kMaxPairs);
static_assert(kPointStep + zorvaccelerate::utility::kInterpolationReach <= MeterLanes::kHistory);

std::optional<InterpolationTaps> MakeTaps(double inSampleRate)
{
	std::size_t const factor = GetTruePeakFactor(inSampleRate);
	return factor > 1 ? std::optional(GetTruePeakTaps(factor)) : std::nullopt;
}

} // namespace

double ToDecibels(double inAmplitude)
{
	return 20.0 * zorvcore::math::Log10(inAmplitude);
}

struct LoudnessMeter::Measure
{
	Measure(SN::AudioChannelLayout const& inLayout, double inSampleRate, Memory inMemory, Windows inWindows)
		: mProgramme(inLayout, inSampleRate, inMemory, inWindows),
		  mHistory(inLayout.size() * MeterLanes::kHistory),
		  mTaps(MakeTaps(inSampleRate))
	{
	}

	void Add(
		dsp::AudioBuffer const& inBlock, unsigned inFirst, unsigned inFrames, MeterLanes::Tenant& ioTenant);
	bool IsSilentAtRest(dsp::AudioBuffer const& inBlock) const;
	// Counts samples that are not plausible, and returns the largest magnitude of those that are finite.
	float LeaveOut(float const* inSamples, unsigned inCount);
	// The true peak where silence follows.
	float FindPeakAtEnd() const;

	WeightedProgramme mProgramme;
	std::vector<float> mHistory;
	std::optional<InterpolationTaps> mTaps;
	std::shared_ptr<LoudnessBank> mBank;
	std::optional<MeterLanes> mOwnLanes;
	MeterLanes* mLanes = nullptr;
	float mPeak = 0.0f;
	float mTruePeak = 0.0f;
	std::int64_t mLeftOutSamples = 0;
};

// What lies between samples is looked for where all channels' samples do not exceed it already.
void LoudnessMeter::Measure::Add(
	dsp::AudioBuffer const& inBlock, unsigned inFirst, unsigned inFrames, MeterLanes::Tenant& ioTenant)
{
	unsigned const channels = mProgramme.GetNumChannels();
	for (unsigned channel = 0; channel < channels; ++channel)
	{
		float* const lane = mLanes->GetEnd(ioTenant, channel);
		if (inBlock.IsChannelSilent(channel))
		{
			std::fill_n(lane, inFrames, 0.0f);
			continue;
		}
		float const* const samples = inBlock.GetChannel(channel) + inFirst;
		float const largest = zorvaccelerate::utility::CopyPlausible(inFrames, samples, lane);
		// A NaN fails this comparison, too.
		mPeak = std::max(mPeak, largest <= kLargestPlausible ? largest : LeaveOut(samples, inFrames));
	}
	mTruePeak = std::max(mTruePeak, mPeak);
	for (unsigned channel = 0; mTaps && channel < channels; ++channel)
	{
		// Some points may be found a second time, to make whole steps.
		unsigned const points = (inFrames + kPointStep - 1) / kPointStep * kPointStep;
		mTruePeak = zorvaccelerate::utility::FindInterpolatedPeak(
			points, mLanes->GetEnd(ioTenant, channel) + inFrames - points, *mTaps, mTruePeak);
	}
	ioTenant.mFrames += inFrames;
}

float LoudnessMeter::Measure::LeaveOut(float const* inSamples, unsigned inCount)
{
	float largest = 0.0f;
	for (unsigned i = 0; i < inCount; ++i)
	{
		float const magnitude = std::fabs(inSamples[i]);
		largest = std::isfinite(magnitude) ? std::max(largest, magnitude) : largest;
		mLeftOutSamples += magnitude <= kLargestPlausible ? 0 : 1;
	}
	return largest;
}

float LoudnessMeter::Measure::FindPeakAtEnd() const
{
	float peak = mTruePeak;
	std::array<float, MeterLanes::kHistory + kPointsAtEnd> samples{};
	for (unsigned channel = 0; mTaps && channel < mProgramme.GetNumChannels(); ++channel)
	{
		std::copy_n(mHistory.data() + std::size_t{channel} * MeterLanes::kHistory, MeterLanes::kHistory,
			samples.data());
		peak = zorvaccelerate::utility::FindInterpolatedPeak(
			kPointsAtEnd, samples.data() + MeterLanes::kHistory, *mTaps, peak);
	}
	return peak;
}

bool LoudnessMeter::Measure::IsSilentAtRest(dsp::AudioBuffer const& inBlock) const
{
	for (unsigned channel = 0; channel < mProgramme.GetNumChannels(); ++channel)
	{
		if (!inBlock.IsChannelSilent(channel))
		{
			return false;
		}
	}
	return !mLanes->Holds(mProgramme) && mProgramme.IsAtRest() &&
		   std::ranges::all_of(mHistory, [](float inSample) { return inSample == 0.0f; });
}

bool LoudnessMeter::CanMeasure(SN::AudioChannelLayout const& inLayout, double inSampleRate)
{
	constexpr double kLowestRate = 16.0;
	constexpr double kHighestRate = 2822400.0;
	return !inLayout.empty() && inLayout.size() <= dsp::AudioBuffer::kMaxChannels &&
		   inSampleRate >= kLowestRate && inSampleRate <= kHighestRate;
}

LoudnessMeter::LoudnessMeter(SN::AudioChannelLayout const& inLayout, double inSampleRate, Memory inMemory,
	Windows inWindows, std::shared_ptr<LoudnessBank> inBank)
{
	if (!CanMeasure(inLayout, inSampleRate))
	{
		Refuse("the loudness of " + std::to_string(inLayout.size()) + " channels at " +
			   std::to_string(inSampleRate) + " Hz cannot be measured");
	}
	if (inBank && inBank->GetSampleRate() != inSampleRate)
	{
		Refuse("a meter at " + std::to_string(inSampleRate) + " Hz cannot share a bank at " +
			   std::to_string(inBank->GetSampleRate()) + " Hz");
	}
	mMeasure = std::make_unique<Measure>(inLayout, inSampleRate, inMemory, inWindows);
	mMeasure->mBank = std::move(inBank);
	mMeasure->mLanes = mMeasure->mBank ? mMeasure->mBank->mLanes.get()
									   : &mMeasure->mOwnLanes.emplace(inSampleRate, kOwnFrames);
	mMeasure->mLanes->Reserve(inLayout.size());
}

LoudnessMeter::~LoudnessMeter()
{
	if (mMeasure && mMeasure->mBank && mMeasure->mLanes->Holds(mMeasure->mProgramme))
	{
		mMeasure->mLanes->Run();
	}
}

void LoudnessMeter::Add(dsp::AudioBuffer const& inBlock)
{
	unsigned const frames = inBlock.GetUseSize();
	if (mMeasure->IsSilentAtRest(inBlock))
	{
		mMeasure->mProgramme.AdvanceAtRest(frames);
		return;
	}
	for (unsigned first = 0; first < frames;)
	{
		MeterLanes::Tenant& tenant = mMeasure->mLanes->Open(mMeasure->mProgramme, mMeasure->mHistory);
		unsigned const count = std::min(frames - first, mMeasure->mLanes->GetRoom(tenant));
		mMeasure->Add(inBlock, first, count, tenant);
		first += count;
	}
}

LoudnessReading LoudnessMeter::GetReading() const
{
	mMeasure->mLanes->Run();
	WeightedProgramme const& programme = mMeasure->mProgramme;
	LoudnessReading reading;
	reading.mPeak = static_cast<double>(mMeasure->mPeak);
	reading.mTruePeak = static_cast<double>(mMeasure->mTruePeak);
	if (programme.GetFrames() > 0)
	{
		reading.mRMS = std::sqrt(programme.GetSquares() /
								 (static_cast<double>(programme.GetFrames()) * programme.GetNumChannels()));
	}
	if (programme.HasWindows())
	{
		reading.mMomentary = programme.GetMomentary();
		reading.mShortTerm = programme.GetShortTerm();
	}
	reading.mIntegrated = programme.GetIntegrated();
	reading.mLeftOutSamples = mMeasure->mLeftOutSamples;
	if (auto series = programme.GetSeries())
	{
		reading.mSeries = std::make_shared<LoudnessSeries const>(*std::move(series));
	}
	return reading;
}

LoudnessReading LoudnessMeter::GetReadingAtEnd() const
{
	LoudnessReading reading = GetReading();
	reading.mTruePeak = static_cast<double>(mMeasure->FindPeakAtEnd());
	return reading;
}

} // namespace SonaroHost
