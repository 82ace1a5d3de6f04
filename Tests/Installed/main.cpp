// A stranger's first program: makes a generator through the installed library and pulls a block.
#include <Sonaro/SonaroFactory.h>
#include <zorvaudiodsp/AudioBuffer.h>

#include <cstdio>

int main()
{
	SN::InterfaceRef<SN::IAudioGenerator> silence;
	SN::SonaroFactory::CreateClassRef()->CreateSilentRenderer(VX::kAudioChannelLayout_Stereo, &silence);
	dsp::AudioBuffer buffer(2, 512);
	silence->GetAudioData(SN::kTimeZero, buffer, false);
	std::puts(buffer.IsSilent() ? "silent" : "not silent");
	return buffer.IsSilent() ? 0 : 1;
}
