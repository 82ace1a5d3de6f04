#include "TrackSum.h"

namespace SonaroHost::Sequence
{

TrackSum::TrackSum(Generator const& inInlet, unsigned long long inChannels, unsigned inFrames)
	: Implements({inInlet}),
	  mInlet(inInlet),
	  mSum(inChannels, inFrames)
{
}

SN::InterfaceRef<SN::IAudioGenerator> TrackSum::Clone()
{
	mClone =
		zorvcore::classref::MakeObject<TrackSum>(mInlet->Clone(), mSum.GetNumChannels(), mSum.GetCapacity());
	return mClone;
}

void TrackSum::Begin(unsigned inFrames)
{
	mIsBegun = inFrames <= mSum.GetCapacity();
	if (mIsBegun)
	{
		mSum.SetUseSize(inFrames);
		mSum.Zero();
	}
}

void TrackSum::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	if (mIsBegun && ioBuffer.GetNumChannels() == mSum.GetNumChannels() &&
		ioBuffer.GetUseSize() == mSum.GetUseSize())
	{
		ioBuffer.Mix(mSum);
		return;
	}
	mInlet->GetAudioData(inTime, ioBuffer, inReverse);
}

std::vector<SN::InterfaceRef<SN::UnknownBase>> TrackSum::GetInputNodes()
{
	return SN::InterfaceRef<SN::IAudioRenderGraphNodeInfo>(mInlet)->GetInputNodes();
}

} // namespace SonaroHost::Sequence
