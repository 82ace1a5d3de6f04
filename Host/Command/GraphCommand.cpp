#include "GraphCommand.h"

#include "Console.h"
#include "RenderOptions.h"
#include "SonaroHost/GraphDrawing.h"
#include "SonaroHost/HostError.h"
#include "SonaroHost/Otio/TimelineGraph.h"
#include "SonaroHost/Otio/TimelineInput.h"
#include "SonaroHost/OutputFile.h"
#include "SonaroHost/OutputPlan.h"
#include "SonaroHost/RenderContextScope.h"
#include "TimelineNotes.h"
#include "TimelineOptions.h"

#include <filesystem>

namespace SonaroCommand
{

namespace
{

using namespace SonaroHost;

GraphFormat ChooseFormat(std::string const& inFormat, std::string const& inOutput)
{
	std::string const ending = std::filesystem::path(inOutput).extension().string();
	std::string const name = inFormat.empty() ? ending : "." + inFormat;
	if (name != ".dot" && name != ".svg" && name != ".png")
	{
		throw HostError(HostError::Kind::eRequest,
			"the ending of " + QuotePath(inOutput) +
				" names no format of graphs; end it in .svg, .png or .dot, or give --format");
	}
	return name == ".dot" ? GraphFormat::eDot : name == ".svg" ? GraphFormat::eSvg : GraphFormat::ePng;
}

GraphDrawing Draw(Otio::TimelineSequence const& inSequence)
{
	constexpr unsigned kBlockFrames = 2048;
	auto const rate = SN::FrameRate::FromSamplesPerSecond(inSequence.mSampleRate);
	RenderContextScope const context(kBlockFrames, SN::kTimeMax, SN::ImmutableString("drawing"));
	Sequence::SequenceGraph const graph = Otio::MakeTimelineGraph(inSequence, context.Get());
	return GraphDrawing(graph.GetGenerator(), rate);
}

} // namespace

GraphCommand::GraphCommand(CLI::App& ioProgram)
	: Command(ioProgram, "graph", "Draw the graph that renders a timeline, with latencies")
{
	GetParser()
		.add_option("INPUT", mInput, "The timeline: .otio, .otioz, .otiod")
		->option_text("(required)")
		->required();
	GetParser()
		.add_option(
			"-o,--output", mOutput, "The file to write, complete or not at all; an older one is replaced")
		->option_text("OUTPUT (required)")
		->required();
	GetParser()
		.add_option("--format", mFormat, "svg, png or dot, instead of what OUTPUT ends in")
		->option_text("NAME")
		->check(CLI::IsMember({"svg", "png", "dot"}));
	GetParser().add_flag("--no-overwrite", mKeepsOldFile, "Refuse to replace an older file");
	GetParser().add_option("--rate", mSampleRate, "Samples a second of the render")->option_text("HZ");
	GetParser()
		.add_option(
			"--layout", mLayout, "What the timeline is mixed to: mono, stereo, 5.1 or a count of channels")
		->option_text("NAME");
	AddTimelineOptions(GetParser(), mMediaFolders, mFades);
	GetParser().add_flag("--quiet", mIsQuiet, "Tell nothing but warnings and errors");
	GetParser().footer(
		"Solid lines are sound on its way, dashed ones lead from what works on it within a node.\n\n"
		"Examples:\n"
		"  sonaro graph edit.otio -o graph.svg\n"
		"  sonaro graph edit.otio -o graph.dot --media /mnt/sound");
}

int GraphCommand::Run()
{
	GraphFormat const format = ChooseFormat(mFormat, mOutput);
	RenderOptions layout;
	layout.mLayout = mLayout;
	Otio::TimelineOptions options;
	options.mSampleRate = mSampleRate;
	options.mLayout = layout.ParseLayout();
	options.mFadeShape = ParseFades(mFades);
	Otio::TimelineInput input(mInput, {mMediaFolders.begin(), mMediaFolders.end()});
	OutputPlan{{mOutput}, {}, {mInput}, input.ListMedia(), !mKeepsOldFile}.Check();
	Otio::TimelineSequence const sequence = input.MakeSequence(options);
	Otio::CheckHasLength(sequence);
	WarnOfNotes(sequence.mMissing, {});
	GraphDrawing const drawing = Draw(sequence);
	std::string const picture = DrawGraph(drawing.ToDot(input.GetTimeline().mName), format);
	// Not before the drawing, which may take long and may be stopped.
	OutputFile file(mOutput);
	file.Write(picture.data(), static_cast<std::int64_t>(picture.size()));
	file.Commit();
	if (!mIsQuiet)
	{
		PrintResult(mOutput + ": " + std::to_string(drawing.GetNumNodes()) + " nodes\n");
	}
	return sequence.mMissing.empty() ? kExitSuccess : kExitMissing;
}

} // namespace SonaroCommand
