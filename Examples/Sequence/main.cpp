// Two lines of dialogue, and music that comes in under them. Usage: sequence LINE REPLY MUSIC OUTPUT.wav
#include <SonaroHost/Engine/OfflineRender.h>
#include <SonaroHost/Engine/RenderContextScope.h>
#include <SonaroHost/Render/AudioFileWriter.h>
#include <SonaroHost/Sequence/FileMedia.h>
#include <SonaroHost/Sequence/SequenceGraph.h>

using namespace SonaroHost;

int main(int, char** inPaths)
{
	constexpr unsigned kHertz = 48000, kBlock = 512;
	SN::FrameRate const rate = SN::FrameRate::FromSamplesPerSecond(kHertz);
	auto const at = [&](double inSeconds) { return SN::TickTime(std::int64_t(inSeconds * kHertz), rate); };
	FileMedia files;
	auto const play = [&](char const* inPath, double inStart, double inEnd)
	{
		return Sequence::Item{
			.mStart = at(inStart), .mEnd = at(inEnd), .mContent = Sequence::Clip{files.Get(inPath, inPath)}};
	};

	Sequence::Track dialogue{.mName = "dialogue", .mLayout = VX::kAudioChannelLayout_Mono};
	dialogue.mItems = {play(inPaths[1], 0.0, 5.5), play(inPaths[2], 5.5, 9.0)};
	dialogue.mCrossfades = {{.mOutgoing = 0, .mBefore = at(0.1), .mAfter = at(0.1)}};
	Sequence::Track music{.mName = "music", .mLayout = VX::kAudioChannelLayout_Stereo};
	music.mItems = {play(inPaths[3], 4.0, 9.5)};
	music.mItems[0].mFadeIn = {.mLength = at(1.0)};
	music.mChain.mStages = {Sequence::Fader{.mGain = AutomationParameter<float>::Create(0.25f)}};

	Sequence::Description const sequence{.mLayout = music.mLayout, .mTracks = {dialogue, music}};
	SN::TickTime const length = Sequence::GetLength(sequence);
	RenderContextScope const context(kBlock, length, SN::ImmutableString("example"));
	Sequence::SequenceGraph const graph(sequence, context.Get(), rate);

	OfflineRange const range{length.ToFrame64(rate), rate, 2, kBlock};
	AudioFileWriter output(inPaths[4], OutputFormat(), kHertz, graph.GetLayout(), range.mFrames);
	RenderOffline(graph.GetGenerator(), range, [&](auto& ioBlock, auto&) { output.Write(ioBlock); }, {});
	output.Finish();
}
