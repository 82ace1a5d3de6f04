#pragma once

#include "ItemTiming.h"
#include "OtioSequence/MakerContext.h"

#include <memory>
#include <optional>

namespace SonaroHost::Otio
{

// How a clip is stretched because it keeps its pitch at its speed, or shifts it; nothing where pitch follows its speed.
// What cannot be kept becomes a note.
std::optional<Stretch> ChooseStretch(MakerContext& ioContext, Clip const& inClip);

// Takes a note of an item that holds others and is to keep its pitch, which only clips can.
void CheckPitchOfNest(MakerContext& ioContext, Item const& inItem);

// The recording that a clip's media become. It is used from a second before the clip on, so that the stretching has begun
// where the clip does. inReach: what of its own time is heard; inMediaStart: when in it the media begin.
std::shared_ptr<Sequence::Media const> GetStretched(MakerContext& ioContext, Stretch const& inStretch,
	ClipMedia const& inMedia, TimeSpan const& inReach, Ratio const& inMediaStart);

} // namespace SonaroHost::Otio
