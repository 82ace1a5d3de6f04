#include "Vexilon/AudioChannelType.h"

#include "zorvcore/Early.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace VX
{

using zorvmediatypes::AudioChannelLayout;

ZORV_EARLY AudioChannelLayout const kAudioChannelLayout_Mono = zorvmediatypes::CreateMonoChannelLayout();
ZORV_EARLY AudioChannelLayout const kAudioChannelLayout_Stereo = zorvmediatypes::CreateStereoChannelLayout();
ZORV_EARLY AudioChannelLayout const kAudioChannelLayout_51 = zorvmediatypes::Create51ChannelLayout();
ZORV_EARLY AudioChannelLayout const kAudioChannelLayout_Multichannel =
	zorvmediatypes::CreateMultichannelLayout(kAdaptiveChannels);

AudioChannelLayout CreateAudioChannelLayout(AudioChannelType inType)
{
	return CreateAudioChannelLayout(inType, kAdaptiveChannels);
}

AudioChannelLayout CreateAudioChannelLayout(AudioChannelType inType, int inChannels)
{
	switch (inType)
	{
	case kAudioChannelTypeMono:
		return zorvmediatypes::CreateMonoChannelLayout();
	case kAudioChannelTypeStereo:
		return zorvmediatypes::CreateStereoChannelLayout();
	case kAudioChannelType51:
		return zorvmediatypes::Create51ChannelLayout();
	case kAudioChannelTypeAdaptive:
		return zorvmediatypes::CreateMultichannelLayout(inChannels);
	case kAudioChannelTypeAny:
		break;
	}
	return {};
}

unsigned GetNumChannelsFromType(AudioChannelType inType)
{
	return static_cast<unsigned>(CreateAudioChannelLayout(inType).size());
}

AudioChannelType CreateAudioChannelTypeOrAny(AudioChannelLayout const& inLayout, bool inAdaptiveForOthers)
{
	for (AudioChannelType const type : {kAudioChannelTypeMono, kAudioChannelTypeStereo, kAudioChannelType51})
	{
		if (inLayout == CreateAudioChannelLayout(type))
		{
			return type;
		}
	}
	return inAdaptiveForOthers ? kAudioChannelTypeAdaptive : kAudioChannelTypeAny;
}

} // namespace VX
