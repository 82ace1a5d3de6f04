#include "AudioRender/Source/AudioGeneratorDecorator.h"

#include "zorvcore/classref/AsyncDestruction.h"

namespace SN
{

void AudioGeneratorDecorator::Init(InterfaceRef<IAudioGenerator> const& inGenerator)
{
	mGenerator = inGenerator;
	mGeneratorPrivate = inGenerator;
}

InterfaceRef<IAudioGenerator> AudioGeneratorDecorator::Clone()
{
	auto const clone = zorvcore::classref::MakeAsyncDestroyedObject<AudioGeneratorDecorator>();
	clone->Init(mGenerator->Clone());
	return clone;
}

} // namespace SN
