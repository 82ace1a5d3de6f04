#include "SonaroHost/Playback/LiveMix.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <utility>

namespace SonaroHost::Playback
{

namespace
{

// After the last effect, so that effects hear the level that they were set for.
std::vector<Sequence::Stage>::iterator FindFaderPlace(Sequence::Chain& ioChain)
{
	auto const last = std::find_if(ioChain.mStages.rbegin(), ioChain.mStages.rend(),
		[](Sequence::Stage const& inStage) { return std::holds_alternative<Sequence::Effect>(inStage); });
	return last.base();
}

} // namespace

LiveMix::Mixed LiveMix::Prepare(Programme const& inProgramme) const
{
	auto description = std::make_shared<Sequence::Description>(*inProgramme.mDescription);
	Mixed mixed;
	mixed.mProgramme = inProgramme;
	std::lock_guard const lock(mMutex);
	for (Sequence::Track& track : description->mTracks)
	{
		mixed.mTracks.push_back(MakeTrack(track, FindBefore(track.mOrigin, mixed.mTracks.size())));
		Attach(mixed.mTracks.back(), track);
	}
	mixed.mProgramme.mDescription = std::move(description);
	return mixed;
}

void LiveMix::Adopt(Mixed const& inMixed)
{
	std::lock_guard const lock(mMutex);
	std::vector<Track> tracks = inMixed.mTracks;
	for (std::size_t index = 0; index < tracks.size(); ++index)
	{
		if (Track const* const before = FindBefore(tracks[index].mOrigin, index))
		{
			tracks[index].mIsMuted = before->mIsMuted;
			tracks[index].mIsSolo = before->mIsSolo;
			tracks[index].mPanValue = before->mPanValue;
			ApplyPan(tracks[index]);
		}
	}
	mTracks = std::move(tracks);
	ApplyMutes();
}

LiveMix::Track LiveMix::MakeTrack(Sequence::Track const& inTrack, Track const* inBefore)
{
	Track track;
	if (inBefore)
	{
		track = *inBefore;
	}
	else
	{
		track.mGain = boost::make_shared<VX::ParamValue<float>>(1.0f);
		track.mSwitch = std::make_shared<Sequence::MuteSwitch::element_type>();
		track.mMeter = zorvcore::classref::MakeObject<PeakMeter>();
		track.mIsMuted = inTrack.mMute && inTrack.mMute->Get() != 0;
	}
	track.mOrigin = inTrack.mOrigin;
	track.mName = inTrack.mName;
	track.mPan = inTrack.mChain.mPan ? inTrack.mChain.mPan->Detach() : Sequence::NumberParameter();
	ApplyPan(track);
	return track;
}

LiveMix::Track const* LiveMix::FindBefore(std::string const& inOrigin, std::size_t inIndex) const
{
	if (inOrigin.empty())
	{
		bool const isThere = inIndex < mTracks.size() && mTracks[inIndex].mOrigin.empty();
		return isThere ? &mTracks[inIndex] : nullptr;
	}
	auto const found = std::find_if(
		mTracks.begin(), mTracks.end(), [&](Track const& inTrack) { return inTrack.mOrigin == inOrigin; });
	return found != mTracks.end() ? &*found : nullptr;
}

void LiveMix::Attach(Track const& inHandles, Sequence::Track& ioTrack)
{
	Sequence::Chain& chain = ioTrack.mChain;
	chain.mStages.insert(FindFaderPlace(chain),
		Sequence::Fader{zorvcore::classref::MakeObject<AutomationParameter<float>>(inHandles.mGain), {}});
	chain.mStages.emplace_back(Sequence::Meter{inHandles.mMeter});
	chain.mPan = inHandles.mPan;
	ioTrack.mMute = inHandles.mSwitch;
}

void LiveMix::ApplyPan(Track& ioTrack)
{
	if (ioTrack.mPan && ioTrack.mPanValue)
	{
		ioTrack.mPan->ReplaceControl(boost::make_shared<VX::ParamValue<float>>(*ioTrack.mPanValue), false);
		ioTrack.mPan->SetCurve({});
	}
}

void LiveMix::ApplyMutes()
{
	bool const isAnySolo =
		std::any_of(mTracks.begin(), mTracks.end(), [](Track const& inTrack) { return inTrack.mIsSolo; });
	for (Track const& track : mTracks)
	{
		track.mSwitch->Set(track.mIsMuted || (isAnySolo && !track.mIsSolo) ? 1 : 0);
	}
}

std::size_t LiveMix::CountTracks() const
{
	std::lock_guard const lock(mMutex);
	return mTracks.size();
}

std::string LiveMix::GetName(std::size_t inTrack) const
{
	std::lock_guard const lock(mMutex);
	return mTracks.at(inTrack).mName;
}

void LiveMix::SetGain(std::size_t inTrack, float inGain)
{
	std::lock_guard const lock(mMutex);
	mTracks.at(inTrack).mGain->SetValue(inGain);
}

float LiveMix::GetGain(std::size_t inTrack) const
{
	std::lock_guard const lock(mMutex);
	return mTracks.at(inTrack).mGain->GetValue();
}

void LiveMix::SetMute(std::size_t inTrack, bool inIsMuted)
{
	std::lock_guard const lock(mMutex);
	mTracks.at(inTrack).mIsMuted = inIsMuted;
	ApplyMutes();
}

bool LiveMix::IsMuted(std::size_t inTrack) const
{
	std::lock_guard const lock(mMutex);
	return mTracks.at(inTrack).mIsMuted;
}

void LiveMix::SetSolo(std::size_t inTrack, bool inIsSolo)
{
	std::lock_guard const lock(mMutex);
	mTracks.at(inTrack).mIsSolo = inIsSolo;
	ApplyMutes();
}

bool LiveMix::IsSolo(std::size_t inTrack) const
{
	std::lock_guard const lock(mMutex);
	return mTracks.at(inTrack).mIsSolo;
}

bool LiveMix::CanPan(std::size_t inTrack) const
{
	std::lock_guard const lock(mMutex);
	return static_cast<bool>(mTracks.at(inTrack).mPan);
}

void LiveMix::SetPan(std::size_t inTrack, float inPan)
{
	std::lock_guard const lock(mMutex);
	Track& track = mTracks.at(inTrack);
	track.mPanValue = inPan;
	ApplyPan(track);
}

float LiveMix::TakePeak(std::size_t inTrack)
{
	std::lock_guard const lock(mMutex);
	return mTracks.at(inTrack).mMeter->TakePeak();
}

} // namespace SonaroHost::Playback
