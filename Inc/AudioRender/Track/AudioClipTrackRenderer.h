#pragma once

#include "AudioRender/Track/DelayedTrackItems.h"
#include "AudioRender/Track/TrackItemCursor.h"
#include "AudioRender/Track/TrackRenderer.h"
#include "Sonaro/IAudioRecordCompletion.h"
#include "Sonaro/TrackSettings.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

namespace SN
{

// A track of clips: the node at which a request is cut along the time line. Each item gives its piece in
// its own time; then processors, pan processor, compensating delay and the fade of the mute follow.
//
// Items    Sorted, and covering all time that is asked for: a request that runs off the list is silent as
//          a whole. A list of exactly two is empty: the host frames the items of a track with a leading and
//          a trailing one.
// Latency  Items after the playhead's first one are filled while playback approaches them; what cannot be
//          hidden so is the track's own delay.
// Mute     Live in a playback at the top level, as it stands elsewhere. It fades over 10 ms, after a
//          jump it stands at once, and while it is complete items are not asked at all.
// Threads  One at a time; AccumulatePrefetchRequests may come from another, but not beside Preroll or Reset.
class AudioClipTrackRenderer final
	: public Implements<AudioClipTrackRenderer, TrackRenderer, IAudioRecordCompletion>
{
public:
	AudioClipTrackRenderer()
		: Implements("AudioClipTrackRenderer::GenerateAudio")
	{
	}

	static int Create(AudioClipTrackSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator);
	int InitFrom(AudioClipTrackSettings const& inSettings);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;
	void Reset() override;

	void GenerateAudio(
		unsigned inNumSamples, TickTime const& inTime, bool inReverse) SONARO_NONBLOCKING override;
	void NotifyRecordComplete(InterfaceRef<UnknownBase> const& inRecording) override
	{
		NotifyInputs(inRecording);
	}

	std::u16string GetNodeName() override { return u"AudioClipTrackRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;
	// An empty track has no cache.
	void MakeBuffers() override;

private:
	// One request on its way through the track.
	struct Request
	{
		TickTime mTime;
		bool mReverse;
		// Where the items write: the scratch memory, or the output itself.
		dsp::AudioBuffer& mItemBuffer;
		dsp::AudioBuffer& mOutput;
		bool mPanAlters;
	};

	static int CreateNew(
		AudioClipTrackSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator);
	static bool IsNeverHeard(AudioClipTrackSettings const& inSettings);

	void SetItems(DelayedTrackItems::Items inItems);
	bool IsReadAheadPlayback() const { return IsPrefetchEnabled() && !IsImmediateRender(); }

	void RenderRequest(Request const& inRequest);
	bool RenderItems(Request const& inRequest, dsp::AudioSubBuffer& ioWindow);
	void RenderChunk(
		TrackItem const& inItem, TickTime const& inTime, bool inReverse, dsp::AudioSubBuffer& ioWindow);
	void RunChain(Request const& inRequest, dsp::AudioSubBuffer& ioWindow);
	void PrerollItems(TickTime const& inStartTime, bool inReverse);

	TrackItemCursor mItems;
	DelayedTrackItems mDelayedItems;
	bool mIsEmpty = false;
	// The width that items and processors need.
	unsigned mNumChannels = 0;
	// What the items of a track with an altering pan processor write into: the pool's, picked up once.
	InterfaceRef<StackAudioBuffer> mScratch;
	TickTime mInitialDelay;
	bool mCachingEnabled = false;
	// The earliest time for which Preroll did its work.
	TickTime mEarliestPreroll;
};

} // namespace SN
