#pragma once

#include "ItemTiming.h"
#include "OtioSequence/MakerContext.h"

#include <optional>

namespace SonaroHost::Otio
{

// How a clip is stretched because it keeps its pitch at its speed, or shifts it; nothing where pitch follows its speed.
// What cannot be kept becomes a note.
std::optional<Stretch> ChooseStretch(MakerContext& ioContext, Clip const& inClip);

// Takes a note of an item that holds others and is to keep its pitch, which only clips can.
void CheckPitchOfNest(MakerContext& ioContext, Item const& inItem);

// What a clip plays of the recording that its media become, with a second before it, so that the stretching has begun
// where the clip does. inContent: what is heard, in seconds from the first sample of the media.
UsedRegions::Span FindUsed(Stretch const& inStretch, TimeSpan const& inContent, ClipMedia const& inMedia);

} // namespace SonaroHost::Otio
