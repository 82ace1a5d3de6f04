#include "AudioRender/Track/TrackRenderer.h"

namespace SN
{

void TrackRenderer::Reset()
{
	if (mPrerolled)
	{
		GeneratorWithInputs::Reset();
		mCache.Forget();
		mPrerolled = false;
	}
}

void TrackRenderer::GenerateAudio(unsigned inNumSamples, TickTime const& inTime, bool inReverse)
{
	mCache.Generate(mCacheSalt, inNumSamples, inTime, inReverse,
		[&](dsp::AudioBuffer& ioBuffer) { GetAudioData(inTime, ioBuffer, inReverse); });
}

unsigned TrackRenderer::GetNumOutputChannels()
{
	InterfaceRef<IAudioPanProcessor> const& panner = mChain.GetPanProcessor();
	return panner ? panner->GetNumOutputChannels() : GetNumChannels();
}

void TrackRenderer::CloneTrackFrom(TrackRenderer const& inOther)
{
	mChannels = inOther.mChannels;
	mMute.CloneFrom(inOther.mMute, GetFrameRate());
	mChain.CloneFrom(inOther.mChain, inOther);
	MakeBuffers();
	CopyDimensions(inOther);
}

} // namespace SN
