#include "Sonaro/IAudioWaveformGenerator.h"

#include "Vexilon/ITimeTransform.h"

#include <utility>

namespace SN
{

namespace
{

class AudioWaveformGeneratorOffsetDecorator final
	: public Implements<AudioWaveformGeneratorOffsetDecorator, IAudioWaveformGenerator>
{
public:
	AudioWaveformGeneratorOffsetDecorator(
		InterfaceRef<IAudioWaveformGenerator> const& inGenerator, TickTime const& inOffset)
		: mGenerator(inGenerator),
		  mOffset(inOffset)
	{
	}

	int GetWaveformInfo(TickTime& outStart, TickTime& outEnd, unsigned long long& outChannels) override
	{
		return mGenerator->GetWaveformInfo(outStart, outEnd, outChannels);
	}
	int GenerateWaveform(TickTime const& inStartTime, TickTime const& inEndTime,
		unsigned long long inSampleInterval, InterfaceRef<IAudioWaveformBuffer> inBuffer, bool inOption,
		bool inRequestFlag) override
	{
		return mGenerator->GenerateWaveform(inStartTime + mOffset, inEndTime + mOffset, inSampleInterval,
			std::move(inBuffer), inOption, inRequestFlag);
	}
	int GenerateWaveform(TickTime const& inStartTime, TickTime const& inEndTime,
		unsigned long long inSampleInterval, InterfaceRef<IAudioWaveformBuffer> inBuffer,
		std::shared_ptr<zorvcore::threads::Gate> inGate, bool inOption, bool inRequestFlag) override
	{
		return mGenerator->GenerateWaveform(inStartTime + mOffset, inEndTime + mOffset, inSampleInterval,
			std::move(inBuffer), std::move(inGate), inOption, inRequestFlag);
	}
	int GenerateWaveform(TickTime const& inStartTime, TickTime const& inEndTime,
		InterfaceRef<VX::ITimeTransform> const& inTransform, unsigned long long inSampleInterval,
		InterfaceRef<IAudioWaveformBuffer> inBuffer, bool inOption,
		std::shared_ptr<zorvcore::threads::Gate> inGate, bool inRequestFlag) override
	{
		return mGenerator->GenerateWaveform(inStartTime + mOffset, inEndTime + mOffset, inTransform,
			inSampleInterval, std::move(inBuffer), inOption, std::move(inGate), inRequestFlag);
	}
	InterfaceRef<IAudioWaveformGenerator> GetSelfReference() override
	{
		return InterfaceRef<IAudioWaveformGenerator>::FromThis(this);
	}

private:
	InterfaceRef<IAudioWaveformGenerator> const mGenerator;
	TickTime const mOffset;
};

} // namespace

InterfaceRef<IAudioWaveformGenerator> CreateAudioWaveformGeneratorOffsetDecorator(
	InterfaceRef<IAudioWaveformGenerator> const& inGenerator, TickTime inOffset)
{
	return zorvcore::classref::MakeObject<AudioWaveformGeneratorOffsetDecorator>(inGenerator, inOffset);
}

} // namespace SN
