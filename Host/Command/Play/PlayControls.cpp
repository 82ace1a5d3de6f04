#include "PlayControls.h"

#include "SonaroHost/Base/HostError.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>

namespace SonaroCommand
{

namespace
{

constexpr double kStepSeconds = 1.0;
constexpr double kFarStepSeconds = 10.0;
constexpr double kGainStepDecibels = 1.0;
constexpr double kFastestShuttle = 4.0;
constexpr float kLargestGain = 16.0f;
constexpr float kHeadStepDegrees = 10.0f;

// By how much an action turns a head; nothing for those of other kinds.
std::optional<SonaroHost::HeadAngles> FindTurn(PlayAction inAction)
{
	switch (inAction)
	{
	case PlayAction::kTurnLeft:
		return SonaroHost::HeadAngles{kHeadStepDegrees, 0.0f, 0.0f};
	case PlayAction::kTurnRight:
		return SonaroHost::HeadAngles{-kHeadStepDegrees, 0.0f, 0.0f};
	case PlayAction::kTurnUp:
		return SonaroHost::HeadAngles{0.0f, kHeadStepDegrees, 0.0f};
	case PlayAction::kTurnDown:
		return SonaroHost::HeadAngles{0.0f, -kHeadStepDegrees, 0.0f};
	case PlayAction::kTiltLeft:
		return SonaroHost::HeadAngles{0.0f, 0.0f, -kHeadStepDegrees};
	case PlayAction::kTiltRight:
		return SonaroHost::HeadAngles{0.0f, 0.0f, kHeadStepDegrees};
	default:
		return std::nullopt;
	}
}

// The same angle, from -180 to 180.
float Wrap(float inDegrees)
{
	return std::remainder(inDegrees, 360.0f);
}

} // namespace

void PlayControls::Do(PlayAction inAction)
{
	SonaroHost::Playback::Playback& playback = mSession.GetPlayback();
	mMessage.clear();
	try
	{
		switch (inAction)
		{
		case PlayAction::kToggle:
			playback.GetState().mIsPlaying ? playback.Stop() : playback.Play();
			break;
		case PlayAction::kBack:
			return Move(-kStepSeconds);
		case PlayAction::kForward:
			return Move(kStepSeconds);
		case PlayAction::kFarBack:
			return Move(-kFarStepSeconds);
		case PlayAction::kFarForward:
			return Move(kFarStepSeconds);
		case PlayAction::kHome:
			playback.Seek(0);
			break;
		case PlayAction::kLoopIn:
			return SetLoopEnd(false);
		case PlayAction::kLoopOut:
			return SetLoopEnd(true);
		case PlayAction::kClearLoop:
			mLoopFirst.reset();
			playback.SetLoop(std::nullopt);
			break;
		case PlayAction::kPlayBackwards:
			return Shuttle(-1.0);
		case PlayAction::kStop:
			playback.Stop();
			playback.SetSpeed(1.0);
			break;
		case PlayAction::kPlayForwards:
			return Shuttle(1.0);
		case PlayAction::kNextControl:
		case PlayAction::kPreviousControl:
		case PlayAction::kRaiseControl:
		case PlayAction::kLowerControl:
		case PlayAction::kReleaseControl:
		case PlayAction::kToggleBypass:
			return DoWithEffect(inAction);
		default:
			if (!DoWithHead(inAction))
			{
				DoWithTrack(inAction);
			}
		}
	}
	catch (SonaroHost::HostError const& error)
	{
		mMessage = error.what();
	}
}

void PlayControls::Move(double inSeconds)
{
	std::int64_t const frame = mSession.GetPlayback().GetState().mFrame;
	mSession.GetPlayback().Seek(frame + std::llround(inSeconds * mSession.GetSampleRate()));
}

void PlayControls::SetLoopEnd(bool inIsEnd)
{
	SonaroHost::Playback::Playback& playback = mSession.GetPlayback();
	SonaroHost::Playback::PlaybackState const state = playback.GetState();
	std::int64_t const first = state.mLoop ? state.mLoop->mFirstFrame : mLoopFirst.value_or(0);
	std::int64_t const end = state.mLoop ? first + state.mLoop->mFrames : state.mFrames;
	mLoopFirst = inIsEnd ? first : state.mFrame;
	std::int64_t const last = inIsEnd ? state.mFrame : end;
	if (inIsEnd || (state.mLoop && *mLoopFirst < last))
	{
		playback.SetLoop(SonaroHost::ProgrammeRange{*mLoopFirst, last - *mLoopFirst});
		// What is heard now is the end already.
		if (inIsEnd && state.mSpeed > 0.0)
		{
			playback.Seek(*mLoopFirst);
		}
	}
}

void PlayControls::Shuttle(double inDirection)
{
	SonaroHost::Playback::Playback& playback = mSession.GetPlayback();
	SonaroHost::Playback::PlaybackState const state = playback.GetState();
	bool const isGoing = state.mIsPlaying && state.mSpeed * inDirection > 0.0;
	double const speed =
		isGoing ? std::clamp(2.0 * state.mSpeed, -kFastestShuttle, kFastestShuttle) : inDirection;
	if (speed != state.mSpeed)
	{
		playback.SetSpeed(speed);
	}
	playback.Play();
}

void PlayControls::DoWithTrack(PlayAction inAction)
{
	SonaroHost::Playback::LiveMix& mix = mSession.GetMix();
	std::size_t const tracks = mix.CountTracks();
	if (tracks == 0)
	{
		return;
	}
	mTrack = std::min(mTrack, tracks - 1);
	switch (inAction)
	{
	case PlayAction::kPreviousTrack:
		mTrack -= mTrack > 0 ? 1 : 0;
		break;
	case PlayAction::kNextTrack:
		mTrack = std::min(mTrack + 1, tracks - 1);
		break;
	case PlayAction::kMute:
		mix.SetMute(mTrack, !mix.IsMuted(mTrack));
		break;
	case PlayAction::kSolo:
		mix.SetSolo(mTrack, !mix.IsSolo(mTrack));
		break;
	default:
		ChangeGain(inAction == PlayAction::kLouder ? kGainStepDecibels : -kGainStepDecibels);
	}
}

bool PlayControls::DoWithHead(PlayAction inAction)
{
	auto const turn = FindTurn(inAction);
	if (!turn && inAction != PlayAction::kFaceFront)
	{
		return false;
	}
	SonaroHost::HeadOrientation* const head = mSession.FindHead();
	if (!head)
	{
		mMessage = "the head turns only with --binaural";
		return true;
	}
	SonaroHost::HeadAngles const now = turn ? head->Get() : SonaroHost::HeadAngles();
	SonaroHost::HeadAngles const by = turn.value_or(SonaroHost::HeadAngles());
	head->Set({Wrap(now.mYaw + by.mYaw), Wrap(now.mPitch + by.mPitch), Wrap(now.mRoll + by.mRoll)});
	return true;
}

void PlayControls::DoWithEffect(PlayAction inAction)
{
	switch (inAction)
	{
	case PlayAction::kNextControl:
	case PlayAction::kPreviousControl:
		mKnob.Choose(inAction == PlayAction::kNextControl);
		break;
	case PlayAction::kReleaseControl:
		mKnob.Release();
		break;
	case PlayAction::kToggleBypass:
		mKnob.ToggleBypass();
		break;
	default:
		mKnob.Turn(inAction == PlayAction::kRaiseControl);
	}
	mMessage = mKnob.Describe();
}

void PlayControls::ChangeGain(double inDecibels)
{
	constexpr double kDecibelsPerDecade = 20.0;
	auto const factor = static_cast<float>(zorvcore::math::Exp10(inDecibels / kDecibelsPerDecade));
	SonaroHost::Playback::LiveMix& mix = mSession.GetMix();
	mix.SetGain(mTrack, std::min(mix.GetGain(mTrack) * factor, kLargestGain));
}

} // namespace SonaroCommand
