#pragma once

#include "AudioRender/Track/TrackRenderer.h"
#include "Sonaro/TrackSettings.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

namespace SN
{

// The track of a submix or of the master: one source, mostly an inlet that sums other tracks; then
// processors, pan processor, compensating delay and the fade of the mute.
//
// Reverse  The source delivers in playing order, and nothing here turns it around. Blocks always follow the
//          control interval then, and their times rise, as forward.
// Latency  None of its own is reported, and no fill goes on to the source: what lies behind an inlet has its
//          place in the delays of the group.
// Sends    Hear the track delayed by their lines, save in a request that is cut at the control interval.
// Mute     As that of a clip track. While it is complete the source is not asked, yet the processors run on
//          silence, so that meters and parameters keep in step.
// Threads  One at a time; AccumulatePrefetchRequests may come from another.
class AudioMixTrackRenderer final : public TrackRenderer
{
public:
	AudioMixTrackRenderer()
		: TrackRenderer("AudioMixTrackRenderer::GenerateAudio")
	{
	}

	int InitFrom(AudioMixTrackSettings const& inSettings);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) SONARO_NONBLOCKING override {}
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;

	std::u16string GetNodeName() override { return u"AudioMixTrackRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;
	void MakeBuffers() override;

private:
	void PullSource(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse);
	void RunChain(
		dsp::AudioBuffer& ioSource, dsp::AudioBuffer* outPan, TickTime const& inTime, bool inReverse);

	InterfaceRef<IAudioGenerator> mSource;
};

} // namespace SN
