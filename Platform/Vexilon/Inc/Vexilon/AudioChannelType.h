#pragma once

#include "zorvcore/Export.h"
#include "zorvmediatypes/AudioChannelDescription.h"

namespace VX
{

// The layouts that tracks and panners are made for.
enum AudioChannelType : int
{
	kAudioChannelTypeMono = 0,
	kAudioChannelTypeStereo = 1,
	kAudioChannelType51 = 2,
	// Any number of channels, without fixed meaning.
	kAudioChannelTypeAdaptive = 3,
	// The type of a stage that takes whatever it is given.
	kAudioChannelTypeAny = -2,
};

// How many channels the adaptive type has where no count is given.
inline constexpr int kAdaptiveChannels = 32;

extern ZORV_API zorvmediatypes::AudioChannelLayout const kAudioChannelLayout_Mono;
extern ZORV_API zorvmediatypes::AudioChannelLayout const kAudioChannelLayout_Stereo;
extern ZORV_API zorvmediatypes::AudioChannelLayout const kAudioChannelLayout_51;
// 32 discrete channels.
extern ZORV_API zorvmediatypes::AudioChannelLayout const kAudioChannelLayout_Multichannel;

// The layout of a type; the adaptive type has 32 channels, any other value none.
ZORV_API zorvmediatypes::AudioChannelLayout CreateAudioChannelLayout(AudioChannelType inType);

// The same, with the channel count of the adaptive type given.
ZORV_API zorvmediatypes::AudioChannelLayout CreateAudioChannelLayout(AudioChannelType inType, int inChannels);

// The size of the layout of a type: 1, 2, 6, 32, and 0 for any other value.
ZORV_API unsigned GetNumChannelsFromType(AudioChannelType inType);

// The type whose layout this is; for a layout of no type the adaptive type, or with
// inAdaptiveForOthers false the type "any".
ZORV_API AudioChannelType CreateAudioChannelTypeOrAny(
	zorvmediatypes::AudioChannelLayout const& inLayout, bool inAdaptiveForOthers);

} // namespace VX
