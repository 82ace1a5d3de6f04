#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "Sonaro/IAudioTransition.h"
#include "Sonaro/TrackSettings.h"

namespace SN
{

// The item on a track where one clip gives way to the next. Both are pulled, and mixed with the gains that the
// transition gives for every sample.
//
// Time      The item's own begins with the transition.
// Progress  In single precision, that of a block's first sample rounded, then added up sample by sample: in
//           blocks of another length the last bits may differ.
// Silence   A flagged side is not multiplied; where both are flagged, the transition is not asked.
// Width     The larger of both clips'.
// Threads   One at a time; AccumulatePrefetchRequests may come from another.
class AudioTransitionRenderer final
	: public Implements<AudioTransitionRenderer, LiveGeneratorWithInputs, AudioTrackRenderableItemMixin>,
	  public AudioRenderContextClient
{
public:
	static constexpr Identifier<AudioTransitionRenderer> kIdentifier{
		0x39dfaff257bd18f2ull, 0xc13ec6ee744312ddull};

	int InitFrom(AudioTransitionSettings const& inSettings);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override;
	// The clip that goes is given the time as it is, unlike everywhere else.
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;
	AudioTransitionParameters const& GetParameters() const { return mSettings.mParameters; }

	unsigned GetNumChannels() SONARO_NONBLOCKING override { return mNumChannels; }
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override { return mNumChannels; }
	AudioChannelLayout GetAudioChannelLayout() override;
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	std::u16string GetNodeName() override { return u"AudioTransitionRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	// The progress of a block's first sample, and by how much each sample adds to it.
	struct Course
	{
		float mStart;
		float mStep;
	};

	// What takes the item's time to a clip's.
	TickTime GetOutgoingOffset() const
	{
		return mSettings.mTransitionStartTime - mSettings.mOutgoingStartTime;
	}
	TickTime GetIncomingOffset() const
	{
		return mSettings.mTransitionStartTime - mSettings.mIncomingStartTime;
	}
	InterfaceRef<IAudioGeneratorPrivate> FindWiderClip() const;
	void Mix(dsp::AudioBuffer const& inOutgoing, dsp::AudioBuffer& ioIncoming, Course const& inCourse) const;
	// Calls inUse(sample, outgoing gain, incoming gain) for so many samples.
	template <class Use>
	void ForEachGain(unsigned inCount, Course const& inCourse, Use const& inUse) const;

	AudioTransitionSettings mSettings;
	unsigned mNumChannels = 0;
};

} // namespace SN
