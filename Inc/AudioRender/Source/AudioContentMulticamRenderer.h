#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "AudioRender/Source/ContentTime.h"
#include "Sonaro/GeneratorSettings.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace SN
{

// The angles of a multicam clip, of which one is heard: that of an index which the host may change at any time, on any
// thread, in a playback at the top level. Everywhere else, and in clones, the index stays what it was when the node was
// made. It is read once for each block. An index that no angle has is silence.
//
// Latency  the largest of the angles' from the last Preroll; 0 before it.
class AudioContentMulticamRenderer final
	: public Implements<AudioContentMulticamRenderer, GeneratorWithInputs>,
	  public AudioRenderContextClient
{
public:
	// See ISonaroFactory::CreateAudioContentMulticamRenderer.
	static int Create(
		AudioContentMulticamSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator);

	InterfaceRef<IAudioGenerator> Clone() override;
	TickTime GetDelay() SONARO_NONBLOCKING override
	{
		return IsDelayCompensationDisabled() ? kTimeZero : mMaxDelay;
	}
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	// Only in one go: nothing without inForceCompletion.
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	// Asks the angle that is heard, and with the context's multicam option the others too, which may take their time.
	// With an offset the range ends where the media do, wherever the request ended.
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) SONARO_NONBLOCKING override;

	// Those of the first angle; the null-pointer exception where there is none.
	unsigned GetNumChannels() SONARO_NONBLOCKING override { return GetFirstCamera()->GetNumChannels(); }
	AudioChannelLayout GetAudioChannelLayout() override { return GetFirstCamera()->GetAudioChannelLayout(); }
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

	std::u16string GetNodeName() override { return u"AudioContentMulticamRenderer"; }

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	using SelectedCamera = zorvcore::threads::AtomicIntegral<int, 0>;

	int InitFrom(AudioContentMulticamSettings const& inSettings);
	InterfaceRef<IAudioGeneratorPrivate> GetFirstCamera() const;
	// Beyond all angles for an index below 0.
	std::size_t GetSelected() const { return static_cast<std::size_t>(mSelectedCamera->Get()); }

	ContentTime mTime;
	std::vector<InterfaceRef<IAudioGenerator>> mCameras;
	std::shared_ptr<SelectedCamera> mSelectedCamera;
	TickTime mContentEnd;
	bool mPrefetchAllCameras = false;
	TickTime mMaxDelay;
};

} // namespace SN
