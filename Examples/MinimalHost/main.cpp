// A host in a hundred lines: two clips on two tracks, mixed by a master, rendered into a WAV file of 32-bit
// floats. Usage: minimal_host OUTPUT.wav
#include <Sonaro/AudioTrackRenderableItems.h>
#include <Sonaro/GraphFactory.h>
#include <zorvaudiodsp/AudioBuffer.h>

#include <cmath>
#include <fstream>
#include <vector>

using namespace SN;

constexpr unsigned kHertz = 48000, kChannels = 2, kBlock = 512, kLength = 2 * kHertz;
FrameRate const kRate = FrameRate::FromSamplesPerSecond(kHertz);
AudioChannelLayout const& kStereo = VX::kAudioChannelLayout_Stereo;

// Media: a tone. A real host decodes a file here.
struct Tone final : Implements<Tone, IAudioSource>
{
	FrameRate GetFrameRate() override { return kRate; }
	TickTime GetLength() override { return TickTime(kLength, kRate); }
	unsigned GetNumChannels() override { return kChannels; }
	AudioChannelLayout GetAudioChannelLayout() override { return kStereo; }
	ImmutableString GetName() override { return ImmutableString("tone"); }
	void ReadAudio(VX::BinaryData const&, dsp::AudioBuffer& ioBuffer, TickTime const& inTime, bool) override
	{
		for (unsigned i = 0; i < ioBuffer.GetUseSize(); ++i)
		{
			double const seconds = static_cast<double>(inTime.ToFrame64(kRate) + i) / kHertz;
			double const sample = 0.25 * std::sin(6.283185307179586 * mHertz * seconds);
			ioBuffer.GetChannel(0)[i] = ioBuffer.GetChannel(1)[i] = static_cast<float>(sample);
		}
		// Written behind the buffer's back: the silence flags go.
		ioBuffer.NoteBufferWrite(0, ioBuffer.GetUseSize());
	}
	double mHertz = 440.0;
};

int main(int, char** inArguments)
{
	GraphFactory const factory;
	auto const context = factory.CreateAudioRenderContext({.mMaxBlockSize = kBlock});

	// A clip of a second on each track, framed by silence; the second begins half a second later.
	std::vector<InterfaceRef<IAudioGenerator>> tracks;
	for (unsigned i = 0; i < 2; ++i)
	{
		auto const tone = zorvcore::classref::MakeObject<Tone>();
		tone->mHertz *= i + 1;
		TickTime const start(i * kHertz / 2, kRate), end = start + TickTime(kHertz, kRate);
		auto const stream =
			factory.CreateAudioStreamRenderer({.mContext = context, .mFrameRate = kRate, .mSource = tone});
		auto const clip = factory.CreateAudioClipRenderer({.mContext = context,
			.mFrameRate = kRate,
			.mGenerators = {{stream, {{0, 0}, {1, 1}}}},
			.mChannelLayout = kStereo});
		InterfaceRef<IAudioTrackRenderableItem> const item = factory.CreateRealtimeAudioClipTrackItemRenderer(
			{.mContext = context, .mFrameRate = kRate, .mSource = clip});
		item->Init(start, end, start, kRate);
		tracks.push_back(factory.CreateAudioClipTrackRenderer({.mContext = context,
			.mFrameRate = kRate,
			.mItems = {CreateSilentAudioTrackRenderableItem(-kTimeMax, start, kRate), item,
				CreateSilentAudioTrackRenderableItem(end, kTimeMax, kRate)},
			.mOwner = tone,
			.mChannels = kStereo}));
	}

	// The master sums what the tracks before it in the group have rendered.
	auto const inlet =
		factory.CreateAudioTrackInletRenderer(context, kRate, {tracks.begin(), tracks.end()}, kStereo);
	tracks.push_back(factory.CreateAudioMixTrackRenderer(
		{.mContext = context, .mFrameRate = kRate, .mSource = inlet, .mChannels = kStereo}));
	auto const sequence = factory.CreateAudioTrackGroupRenderer(
		{.mContext = context, .mFrameRate = kRate, .mGenerators = tracks, .mChannels = kStereo});

	std::vector<float> samples(kLength * kChannels);
	dsp::AudioBuffer block(kChannels, kBlock);
	sequence->Preroll(kTimeZero, false);
	for (unsigned frame = 0; frame < kLength; ++frame)
	{
		if (frame % kBlock == 0)
		{
			sequence->GetAudioData(TickTime(frame, kRate), block, false);
		}
		for (unsigned channel = 0; channel < kChannels; ++channel)
		{
			// A channel whose silence flag is set counts as zeros, whatever its samples hold.
			bool const isSilent = block.IsChannelSilent(channel);
			samples[frame * kChannels + channel] = isSilent ? 0 : block.GetChannel(channel)[frame % kBlock];
		}
	}
	context->Clear();

	auto const bytes = static_cast<unsigned>(samples.size() * sizeof(float));
	unsigned const header[] = {0x46464952, 36 + bytes, 0x45564157, 0x20746d66, 16, 3 | kChannels << 16,
		kHertz, kHertz * kChannels * 4, kChannels * 4 | 32 << 16, 0x61746164, bytes};
	std::ofstream output(inArguments[1], std::ios::binary);
	output.write(reinterpret_cast<char const*>(header), sizeof(header));
	output.write(reinterpret_cast<char const*>(samples.data()), bytes);
	return output.good() ? 0 : 1;
}
