#pragma once

#include <cstddef>
#include <string>

namespace SonaroHost::Otio
{

// Something about a file that its author should know.
struct Note
{
	enum class Kind
	{
		// Noted for completeness; the sound is as the file says.
		kRemark,
		// The file leaves the meaning open; this one was taken.
		kGuess,
		// Something that may have been meant to be heard has no effect.
		kIgnored,
		// A gain, pan, fade, mute, solo or choice of channels of another program, in a form that is not known: what
		// is heard may be louder, softer or elsewhere than it was made.
		kLevelNotRead,
		// An effect that is not heard, since its plugin is not there or cannot do what is asked of it.
		kMissingEffect,
	};

	Kind mKind = Kind::kRemark;
	// A JSON pointer such as "/tracks/children/0/effects/2"; empty for the file as a whole.
	std::string mPlace;
	std::string mText;
	// How many places of the file it stands for.
	std::size_t mCount = 1;
	// Where the place lies for people: the clip's name, if in one, and the tracks and stacks as "Dialogue / Scene 4".
	std::string mClip = {};
	std::string mTrack = {};
};

} // namespace SonaroHost::Otio
