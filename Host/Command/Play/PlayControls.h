#pragma once

#include "EffectKnob.h"
#include "PlaySession.h"

#include <cstddef>
#include <optional>
#include <string>

namespace SonaroCommand
{

// What a key of the screen asks for.
enum class PlayAction
{
	kToggle,
	kBack,
	kForward,
	kFarBack,
	kFarForward,
	kHome,
	kLoopIn,
	kLoopOut,
	kClearLoop,
	kPlayBackwards,
	kStop,
	kPlayForwards,
	kPreviousTrack,
	kNextTrack,
	kMute,
	kSolo,
	kLouder,
	kSofter,
	kTurnLeft,
	kTurnRight,
	kTurnUp,
	kTurnDown,
	kTiltLeft,
	kTiltRight,
	kFaceFront,
	kNextControl,
	kPreviousControl,
	kRaiseControl,
	kLowerControl,
	kReleaseControl,
	kToggleBypass,
};

// What the keys of the screen do to a session, and which track is selected.
class PlayControls
{
public:
	explicit PlayControls(PlaySession& ioSession)
		: mSession(ioSession),
		  mKnob(ioSession.GetEffects())
	{
	}

	// What cannot be done is a message.
	void Do(PlayAction inAction);

	std::size_t GetSelectedTrack() const { return mTrack; }
	std::string const& GetMessage() const { return mMessage; }
	void SetMessage(std::string const& inMessage) { mMessage = inMessage; }

private:
	void Move(double inSeconds);
	void SetLoopEnd(bool inIsEnd);
	// Plays in that direction, twice as fast each time it plays so already, up to 4.
	void Shuttle(double inDirection);
	void DoWithTrack(PlayAction inAction);
	void ChangeGain(double inDecibels);
	// Nothing for actions of other kinds.
	bool DoWithHead(PlayAction inAction);
	// Its message says which control of an effect is chosen, and what it is.
	void DoWithEffect(PlayAction inAction);

	PlaySession& mSession;
	EffectKnob mKnob;
	std::size_t mTrack = 0;
	// The loop's first place while it has no last one.
	std::optional<std::int64_t> mLoopFirst;
	std::string mMessage;
};

} // namespace SonaroCommand
