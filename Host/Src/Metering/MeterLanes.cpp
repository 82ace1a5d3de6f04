#include "MeterLanes.h"

#include "WeightedProgramme.h"

#include <algorithm>
#include <array>

namespace SonaroHost
{

namespace
{

using zorvaccelerate::utility::kFilterLanes;
using zorvaccelerate::utility::LaneStates;

} // namespace

MeterLanes::MeterLanes(double inSampleRate, unsigned inFrames)
	: mSampleRate(inSampleRate),
	  mWeighting(inSampleRate),
	  mFrames(inFrames)
{
}

void MeterLanes::Reserve(std::size_t inChannels)
{
	if (inChannels <= mLanes)
	{
		return;
	}
	Run();
	mLanes = inChannels;
	mSamples.assign(mLanes * (kHistory + mFrames), 0.0f);
	mFiltered.resize(std::size_t{WeightedProgramme::kStepFrames} * kFilterLanes);
	mTenants.reserve(mLanes);
}

bool MeterLanes::Holds(WeightedProgramme const& inProgramme) const
{
	return std::ranges::any_of(
		mTenants, [&](Tenant const& inTenant) { return inTenant.mProgramme == &inProgramme; });
}

MeterLanes::Tenant& MeterLanes::Open(WeightedProgramme& ioProgramme, std::vector<float>& ioHistory)
{
	auto const found = std::ranges::find_if(
		mTenants, [&](Tenant const& inTenant) { return inTenant.mProgramme == &ioProgramme; });
	if (found != mTenants.end() && GetRoom(*found) > 0)
	{
		return *found;
	}
	if (found != mTenants.end() || mTaken + ioProgramme.GetNumChannels() > mLanes)
	{
		Run();
	}
	Tenant const& tenant = mTenants.emplace_back(Tenant{&ioProgramme, &ioHistory, mTaken, 0});
	mTaken += ioProgramme.GetNumChannels();
	for (unsigned channel = 0; channel < ioProgramme.GetNumChannels(); ++channel)
	{
		std::copy_n(ioHistory.data() + std::size_t{channel} * kHistory, kHistory,
			GetStart(tenant.mFirstLane + channel) - kHistory);
	}
	return mTenants.back();
}

float* MeterLanes::GetEnd(Tenant const& inTenant, unsigned inChannel)
{
	return GetStart(inTenant.mFirstLane + inChannel) + inTenant.mFrames;
}

void MeterLanes::Run()
{
	for (Stretch stretch = GetStretch(0); stretch.mFrames > 0;
		 stretch = GetStretch(stretch.mFirst + stretch.mFrames))
	{
		for (std::size_t lane = 0; lane < mTaken; lane += kFilterLanes)
		{
			RunLanes(lane, stretch);
		}
		for (Tenant const& tenant : mTenants)
		{
			if (tenant.mFrames > stretch.mFirst)
			{
				tenant.mProgramme->Advance(stretch.mFrames);
			}
		}
	}
	std::ranges::for_each(mTenants, [this](Tenant const& inTenant) { Release(inTenant); });
	mTenants.clear();
	mTaken = 0;
}

MeterLanes::Stretch MeterLanes::GetStretch(unsigned inFirst) const
{
	Stretch stretch{inFirst, 0};
	for (Tenant const& tenant : mTenants)
	{
		if (tenant.mFrames > inFirst)
		{
			unsigned const frames = std::min(tenant.mFrames - inFirst, tenant.mProgramme->GetFramesToStep());
			stretch.mFrames = stretch.mFrames == 0 ? frames : std::min(stretch.mFrames, frames);
		}
	}
	return stretch;
}

void MeterLanes::RunLanes(std::size_t inFirstLane, Stretch const& inStretch)
{
	// Lanes that nobody has, or whose programme holds no more, run along for nothing.
	std::array<float const*, kFilterLanes> inputs;
	inputs.fill(GetStart(inFirstLane) + inStretch.mFirst);
	LaneStates states{};
	unsigned lanes = 0;
	bool hasWindows = false;
	auto const forEach = [&](auto const& inWork)
	{
		for (Tenant const& tenant : mTenants)
		{
			for (unsigned channel = 0; channel < tenant.mProgramme->GetNumChannels(); ++channel)
			{
				std::size_t const lane = tenant.mFirstLane + channel;
				if (tenant.mFrames > inStretch.mFirst && lane >= inFirstLane &&
					lane < inFirstLane + kFilterLanes)
				{
					inWork(*tenant.mProgramme, channel, static_cast<unsigned>(lane - inFirstLane));
				}
			}
		}
	};
	forEach(
		[&](WeightedProgramme const& inProgramme, unsigned inChannel, unsigned inLane)
		{
			inProgramme.Load(inChannel, inLane, states);
			inputs[inLane] = GetStart(inFirstLane + inLane) + inStretch.mFirst;
			lanes = std::max(lanes, inLane + 1);
			hasWindows = hasWindows || inProgramme.HasWindows();
		});
	zorvaccelerate::utility::FilterLanes(inStretch.mFrames, lanes, inputs.data(), mWeighting.mFilter, states,
		hasWindows ? mFiltered.data() : nullptr);
	forEach(
		[&](WeightedProgramme& ioProgramme, unsigned inChannel, unsigned inLane)
		{
			ioProgramme.Store(inChannel, inLane, states);
			if (ioProgramme.HasWindows())
			{
				ioProgramme.TakeFiltered(
					inChannel, inStretch.mFrames, mFiltered.data() + inLane, kFilterLanes);
			}
		});
}

void MeterLanes::Release(Tenant const& inTenant)
{
	for (unsigned channel = 0; channel < inTenant.mProgramme->GetNumChannels(); ++channel)
	{
		std::copy_n(GetEnd(inTenant, channel) - kHistory, kHistory,
			inTenant.mHistory->data() + std::size_t{channel} * kHistory);
	}
}

} // namespace SonaroHost
