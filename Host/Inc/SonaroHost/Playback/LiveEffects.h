#pragma once

#include "SonaroHost/Base/LiveControl.h"
#include "SonaroHost/Sequence/Description.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace SonaroHost::Playback
{

// An effect of a programme, with what a listener may move of it.
struct LiveEffect
{
	// What it was made from, a JSON pointer, or else where it stands in the description, as
	// "/tracks/1/items/0/effects/2". Several have the same one where a nested sequence is built several times.
	std::string mId;
	// For people: the output, track "Dialogue", clip "Take 3".
	std::string mPlace;
	std::string mName;
	std::vector<std::shared_ptr<LiveControl>> mControls;

	// Null for a symbol that it does not have.
	LiveControl* FindControl(std::string const& inSymbol) const;
	// The control that bypasses it: the host's or its own. Null for none.
	std::shared_ptr<LiveControl> FindBypass() const;
	// As it is held, or else as it was set up; at the start, where it has a curve.
	bool IsBypassed() const;
};

// The effects of a programme whose controls are moved while it plays, on its clips, tracks, submixes and output, nested
// sequences included. What is held goes over to the next programme, to the effect of the same identity and name.
//
// Threads  Any.
class LiveEffects
{
public:
	// Effects with controls: those of the output first, then those of each track, after those of its clips.
	static std::vector<LiveEffect> Collect(Sequence::Description const& inDescription);

	// A programme that is about to play: what is held of the one before is held of it, too.
	void Prepare(Sequence::Description const& inDescription) const;
	// It plays from now on. What was held meanwhile counts.
	void Adopt(Sequence::Description const& inDescription);

	std::vector<LiveEffect> List() const;

	// Holds a control of all effects of that identity. Throws a HostError where there is none.
	void Hold(std::string const& inId, std::string const& inSymbol, float inValue);
	void Release(std::string const& inId, std::string const& inSymbol);
	// Bypasses all effects of that identity, or has them heard, from the next block on: in a straight line over 5 ms, or as
	// those do it that have a bypass of their own. Their latency stays. Release, of the control that bypasses, ends it.
	void SetBypass(std::string const& inId, bool inIsBypassed);

private:
	std::vector<std::shared_ptr<LiveControl>> Find(
		std::string const& inId, std::string const& inSymbol) const;

	mutable std::mutex mMutex;
	std::vector<LiveEffect> mEffects;
};

} // namespace SonaroHost::Playback
