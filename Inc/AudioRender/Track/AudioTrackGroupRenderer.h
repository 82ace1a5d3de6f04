#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "Sonaro/DelayDependency.h"
#include "Sonaro/IAudioRecordCompletion.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "Sonaro/TrackSettings.h"

#include <deque>
#include <vector>

namespace SN
{

// The tracks of a sequence as one generator. The host has sorted them: each track comes before those that
// it feeds, and the output is the last. All but the last render into their caches, each once for a request,
// and the last mixes what its inlets find there.
//
// Delays   Each track runs ahead of the group's time, in the direction of play, by a delay of its own; a
//          short list of delays reads as 0. The group's delay is the largest sum of a track's and its own.
// Loop     At the top level, what runs ahead of a looping playhead wraps to the loop's other side, save the
//          last.
// Warm-up  Outside of a playback a nested group renders the stretch of its largest delay before the start
//          and drops it, so that processors and delay lines have heard it.
// Empty    Silent without tracks.
// Threads  One at a time; AccumulatePrefetchRequests may come from another.
class AudioTrackGroupRenderer final
	: public Implements<AudioTrackGroupRenderer, LiveGeneratorWithInputs, IAudioRecordCompletion>,
	  public AudioRenderContextClient
{
public:
	static constexpr Identifier<AudioTrackGroupRenderer> kIdentifier{
		0xd37d8b386462c70dull, 0x0ed325fde5aa174cull};

	int InitFrom(AudioTrackGroupSettings const& inSettings);
	// One more instance of the owner's sequence; see ISonaroFactory. -1 where there is none on this level.
	static int CreateViaCloning(InterfaceRef<IAudioRenderContext> const& inContext,
		InterfaceRef<UnknownBase> const& inOwner, InterfaceRef<IAudioGenerator>* outGenerator);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;

	void NotifyRecordComplete(InterfaceRef<UnknownBase> const& inRecording) override
	{
		NotifyInputs(inRecording);
	}

	unsigned GetNumChannels() SONARO_NONBLOCKING override { return static_cast<unsigned>(mChannels.size()); }
	AudioChannelLayout GetAudioChannelLayout() override { return mChannels; }
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	std::u16string GetNodeName() override { return u"AudioTrackGroupRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	// A generator with what it was asked for once.
	struct Member
	{
		InterfaceRef<IAudioGenerator> mGenerator;
		// May be empty in the last alone.
		InterfaceRef<ICachedAudioGenerator> mCached;
		// The time by which it runs ahead.
		TickTime mDelay;
	};

	void WarmUp(TickTime const& inStartTime);

	std::vector<Member> mMembers;
	AudioChannelLayout mChannels;
};

} // namespace SN
