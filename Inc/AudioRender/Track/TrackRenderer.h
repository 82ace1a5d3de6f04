#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"
#include "AudioRender/Track/ProcessorChain.h"
#include "AudioRender/Track/TrackCache.h"
#include "AudioRender/Track/TrackMute.h"
#include "Sonaro/ICachedAudioGenerator.h"

#include <string_view>

namespace SN
{

// The base of tracks: what comes after their sources, that is processors, pan processor, compensating delays and the
// fade of the mute, and the cache of the block that was rendered last.
class TrackRenderer : public Implements<TrackRenderer, LiveGeneratorWithInputs, ICachedAudioGenerator,
						  CompensatingDelayOwnerMixin>,
					  public AudioRenderContextClient
{
public:
	// Nothing for a track that was not prerolled.
	void Reset() override;

	void GenerateAudio(
		unsigned inNumSamples, TickTime const& inTime, bool inReverse) SONARO_NONBLOCKING override;
	void MixCachedAudio(dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING override { mCache.MixInto(ioBuffer); }

	unsigned GetNumChannels() SONARO_NONBLOCKING override { return static_cast<unsigned>(mChannels.size()); }
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override;
	AudioChannelLayout GetAudioChannelLayout() override { return mChannels; }
	FrameRate GetGeneratorFrameRate() override { return GetFrameRate(); }

protected:
	// inCacheSalt: the name of the class's GenerateAudio; a literal.
	explicit TrackRenderer(std::string_view inCacheSalt)
		: mCacheSalt(inCacheSalt)
	{
	}

	// What the settings of all tracks have. The sources are there already.
	template <class Settings>
	int InitTrack(Settings const& inSettings)
	{
		int const result = AudioRenderContextClient::Init(inSettings.mContext, inSettings.mFrameRate);
		mChannels = inSettings.mChannels;
		mMute.Init(*inSettings.mContext, inSettings.mMute, GetFrameRate());
		mChain.Init(inSettings.mProcessors, inSettings.mPanProcessor);
		MakeBuffers();
		AddCachedGenerator(
			inSettings.mOwner, InterfaceRef<ICachedAudioGenerator>(InterfaceRef<Unknown>::FromThis(this)));
		CompensatingDelayOwnerMixin::Init(mChain.CountSends() + 1, GetMaxBlockSize(), mWidestChannels);
		return result;
	}
	// The same for a clone, whose context is set.
	void CloneTrackFrom(TrackRenderer const& inOther);

	// Measures mWidestChannels and makes the cache and the scratch memory.
	virtual void MakeBuffers() = 0;

	AudioChannelLayout mChannels;
	TrackCache mCache;
	TrackMute mMute;
	ProcessorChain mChain;
	// The width of the widest stage.
	unsigned mWidestChannels = 0;
	bool mPrerolled = false;

private:
	std::string_view mCacheSalt;
};

} // namespace SN
