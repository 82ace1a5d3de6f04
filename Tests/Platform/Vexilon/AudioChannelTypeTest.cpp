#include "Vexilon/AudioChannelType.h"

#include "Support/Common.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace VX::AudioChannelTypeTest
{

using zorvmediatypes::AudioChannelLayout;

TEST(AudioChannelType, LayoutsAndTypesFindEachOther)
{
	struct Case
	{
		AudioChannelType mType;
		AudioChannelLayout mLayout;
		unsigned mChannels;
	};
	Case const cases[] = {
		{kAudioChannelTypeMono, kAudioChannelLayout_Mono, 1},
		{kAudioChannelTypeStereo, kAudioChannelLayout_Stereo, 2},
		{kAudioChannelType51, kAudioChannelLayout_51, 6},
		{kAudioChannelTypeAdaptive, kAudioChannelLayout_Multichannel, 32},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mType);
		EXPECT_EQ(CreateAudioChannelLayout(test.mType), test.mLayout);
		EXPECT_EQ(GetNumChannelsFromType(test.mType), test.mChannels);
		EXPECT_EQ(test.mLayout.size(), test.mChannels);
		EXPECT_EQ(CreateAudioChannelTypeOrAny(test.mLayout, true), test.mType);
		EXPECT_EQ(std::set(test.mLayout.begin(), test.mLayout.end()).size(), test.mChannels)
			<< "each place stands once";
	}
	// As many channels without the places are adaptive.
	for (int const channels : {0, 1, 2, 6, 7})
	{
		AudioChannelLayout const layout = CreateAudioChannelLayout(kAudioChannelTypeAdaptive, channels);
		EXPECT_EQ(layout.size(), static_cast<std::size_t>(channels));
		EXPECT_EQ(CreateAudioChannelTypeOrAny(layout, true), kAudioChannelTypeAdaptive);
		EXPECT_EQ(CreateAudioChannelTypeOrAny(layout, false), kAudioChannelTypeAny);
	}
	EXPECT_EQ(GetNumChannelsFromType(kAudioChannelTypeAny), 0u);
	EXPECT_TRUE(zorvmediatypes::CreateMultichannelLayout(-3).empty());
}

} // namespace VX::AudioChannelTypeTest
