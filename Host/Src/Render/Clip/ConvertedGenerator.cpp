#include "ConvertedGenerator.h"

#include "Sonaro/PrefetchRange.h"

namespace SonaroHost
{

ConvertedGenerator::ConvertedGenerator(
	SN::InterfaceRef<SN::IAudioGenerator> const& inSource, ConversionSettings const& inSettings)
	: mSource(inSource),
	  mSettings(inSettings),
	  mConversion(inSettings.mPlan, inSettings.mContext, inSettings.mFrameRate),
	  mBlock(inSettings.mPlan.GetInputLayout().size(), inSettings.mContext->GetMaxBlockSize())
{
}

SN::InterfaceRef<SN::IAudioGenerator> ConvertedGenerator::Clone()
{
	return zorvcore::classref::MakeObject<ConvertedGenerator>(mSource->Clone(), mSettings);
}

void ConvertedGenerator::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	mSource->Preroll(inStartTime, inReverse);
	mConversion.Preroll(inStartTime, inReverse);
}

void ConvertedGenerator::FillInitialDelay(
	SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	mSource->FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
}

void ConvertedGenerator::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	mSource->AccumulatePrefetchRequests(inRange, inType, inAccumulator);
}

void ConvertedGenerator::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	mBlock.SetUseSize(ioBuffer.GetUseSize());
	mBlock.Zero();
	mSource->GetAudioData(inTime, mBlock, inReverse);
	ioBuffer.CopyFrom(mConversion.Convert(mBlock, inTime), ioBuffer.GetUseSize());
}

} // namespace SonaroHost
