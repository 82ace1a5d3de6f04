#include "PlaySession.h"

#include "SonaroHost/Base/HostError.h"

#include <utility>

namespace SonaroCommand
{

namespace Playing = SonaroHost::Playback;

PlaySession::PlaySession(
	PlayRequest const& inRequest, std::unique_ptr<Playing::OutputDevice> ioDevice, double inAheadSeconds)
	: mRequest(inRequest),
	  mFirst(std::make_shared<PlayedInput>(inRequest, PlayedInput::Warnings::kPrint)),
	  mInput(mFirst),
	  mChannels(static_cast<unsigned>(mFirst->GetProgramme().GetLayout().size())),
	  mSampleRate(mFirst->GetProgramme().mSampleRate),
	  mPeaks(zorvcore::classref::MakeObject<SonaroHost::PeakMeter>()),
	  mLoudness(zorvcore::classref::MakeObject<SonaroHost::LoudnessMeterSetter>(
		  mFirst->GetProgramme().GetLayout())),
	  mDevice(std::move(ioDevice))
{
	// The device stays open as it is, whatever becomes of the timeline.
	mRequest.mTimeline.mSampleRate = mSampleRate;
	if (!mRequest.mTimeline.mListener)
	{
		mRequest.mTimeline.mLayout = mFirst->GetProgramme().GetLayout();
	}
	auto const mixed = Prepare(*mFirst);
	Adopt(mixed);
	Playing::PlaybackSettings settings;
	settings.mAheadSeconds = inAheadSeconds;
	settings.mMeters = {mPeaks, mLoudness};
	mPlayback = std::make_unique<Playing::Playback>(mixed.GetProgramme(), *mDevice, settings);
}

std::string PlaySession::FormatPlace(std::int64_t inFrame) const
{
	std::lock_guard const lock(mMutex);
	return mInput->FormatPlace(inFrame);
}

Playing::LiveMix::Mixed PlaySession::Prepare(PlayedInput const& inInput) const
{
	mEffects.Prepare(*inInput.GetProgramme().mDescription);
	return mMix.Prepare(inInput.GetProgramme());
}

void PlaySession::Adopt(Playing::LiveMix::Mixed const& inMixed)
{
	mMix.Adopt(inMixed);
	mEffects.Adopt(*inMixed.GetProgramme().mDescription);
}

void PlaySession::Finish()
{
	mPlayback.reset();
	mDevice->Finish();
}

void PlaySession::Reload()
{
	try
	{
		auto const next = std::make_shared<PlayedInput>(mRequest, PlayedInput::Warnings::kNone);
		auto const mixed = Prepare(*next);
		mPlayback->TakeOver(mixed.GetProgramme());
		Adopt(mixed);
		{
			std::lock_guard const lock(mMutex);
			mInput = next;
		}
		NoteEvent(
			{PlayEvent::Kind::kReload, std::string("the timeline was changed and read anew") +
										   (next->IsIncomplete() ? "; media or effects are missing" : "")});
	}
	catch (SonaroHost::HostError const& error)
	{
		NoteEvent({PlayEvent::Kind::kBadReload, error.what()});
	}
}

void PlaySession::NoteEvent(PlayEvent inEvent)
{
	std::lock_guard const lock(mMutex);
	mEvents.push_back(std::move(inEvent));
}

std::vector<PlayEvent> PlaySession::TakeEvents()
{
	for (std::string& warning : mPlayback->TakeWarnings())
	{
		mHasFault = true;
		NoteEvent({PlayEvent::Kind::kFault, std::move(warning)});
	}
	// A latency that moves is not followed with each of its steps.
	auto const now = std::chrono::steady_clock::now();
	if (now >= mNextLatency && mPlayback->MakeUpForLatency())
	{
		mNextLatency = now + std::chrono::seconds(1);
	}
	std::lock_guard const lock(mMutex);
	return std::exchange(mEvents, {});
}

} // namespace SonaroCommand
