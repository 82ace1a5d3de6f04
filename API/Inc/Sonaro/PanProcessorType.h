#pragma once

namespace SN
{

// The kind of a pan processor. CreateAudioPanProcessorRenderer takes the values below 20 except those
// marked; CreateDirectAudioPanProcessorRenderer takes kPanMonoTo51 and the three marked direct.
enum PanProcessorType : unsigned
{
	kPanNoneMono = 0,
	kPanNoneStereo = 1,
	kPanNone51 = 2,
	kPanNoneAdaptive = 3,
	kPanStereoToStereo = 4,
	kPanMonoToStereo = 5,
	kPanStereoToMono = 6,
	kPanMonoTo51 = 7,
	kPanStereoTo51 = 8,
	kPan51ToMono = 9,
	kPan51ToStereo = 10,
	kPanMonoToAdaptive = 11,   // direct only
	kPanStereoToAdaptive = 12, // direct only
	kPan51ToAdaptive = 13,     // direct only
	kPanChannelMapMono = 14,
	kPanBalance = 15,
	kPanChannelMap51 = 16,
	kPanBalanceWithIdentity = 17,
	kPanNotDefined18 = 18, // makes nothing
	kPanNoneMonoAlias = 19,
};

} // namespace SN
