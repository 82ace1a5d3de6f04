#include "Command.h"

#include "Options/ListenerOptions.h"
#include "Options/RenderOptions.h"
#include "Options/SharedOptions.h"
#include "Report/TimelineNotes.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Graph/GraphDrawing.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "Terminal/Console.h"
#include "Terminal/StopSignals.h"

#include <charconv>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace SonaroCommand
{

namespace
{

using namespace SonaroHost;

// More than any timeline has.
constexpr int kMostDepth = 1000000;

GraphFormat ChooseGraphFormat(std::string const& inFormat, std::string const& inOutput)
{
	if (inFormat.empty() && IsStandardStream(inOutput))
	{
		Refuse("the standard output needs --format, since it has no name to choose by");
	}
	std::string const ending = std::filesystem::path(inOutput).extension().string();
	std::string const name = inFormat.empty() ? ending : "." + inFormat;
	if (name != ".dot" && name != ".svg" && name != ".png")
	{
		Refuse("cannot choose a format from the name " + QuotePath(inOutput) +
			   "; end it in .svg, .png or .dot, or use --format");
	}
	return name == ".dot" ? GraphFormat::kDot : name == ".svg" ? GraphFormat::kSvg : GraphFormat::kPng;
}

GraphDrawing Draw(Programme const& inProgramme, Sequence::GraphView inView, GraphDrawingOptions inOptions)
{
	constexpr unsigned kBlockFrames = 2048;
	RenderContextScope const context(
		ChooseBlock(inProgramme, kBlockFrames), SN::kTimeMax, SN::ImmutableString("drawing"));
	inView.mLabels = std::make_shared<Sequence::NodeLabels>();
	inOptions.mLabels = inView.mLabels.get();
	Sequence::SequenceGraph const graph = MakeGraph(inProgramme, context.Get(), inView);
	return GraphDrawing(graph.GetGenerator(), inProgramme.GetFrameRate(), inOptions);
}

// A track's place among the children of the timeline's stack, by its name or by its number, counted from 1.
std::size_t FindTrack(Otio::Stack const& inStack, std::string const& inName)
{
	std::vector<std::size_t> places;
	std::string list;
	for (std::size_t index = 0; index < inStack.mChildren.size(); ++index)
	{
		// A stack has no transitions.
		std::string const& name = inStack.mChildren[index].AsItem()->mName;
		std::string const number = std::to_string(index + 1);
		if (name == inName)
		{
			places.push_back(index);
		}
		list += (list.empty() ? "" : ", ") + number + (name.empty() ? "" : " (" + name + ")");
	}
	std::size_t number = 0;
	auto const parsed = std::from_chars(inName.data(), inName.data() + inName.size(), number);
	bool const isNumber = parsed.ec == std::errc() && parsed.ptr == inName.data() + inName.size();
	if (places.empty() && isNumber && number >= 1 && number <= inStack.mChildren.size())
	{
		return number - 1;
	}
	if (places.size() != 1)
	{
		Refuse((places.empty() ? "there is no track '" + inName + "'"
							   : "several tracks are named '" + inName + "'; choose one by its number") +
			   "; the timeline has " + list);
	}
	return places.front();
}

// The row of an outermost track. Throws a HostError for one that is not heard, and so is not in the graph.
Otio::TrackRow const& FindHeard(
	std::size_t inTrack, std::string const& inName, Otio::TimelineSequence const& inSequence)
{
	auto const found = std::ranges::find_if(inSequence.mTracks,
		[inTrack](Otio::TrackRow const& inRow) { return inRow.mDepth == 0 && inRow.mIndex == inTrack; });
	if (found == inSequence.mTracks.end() || !found->mIsHeard)
	{
		Refuse("--track: '" + inName + "' is not heard: " +
			   (found == inSequence.mTracks.end() ? "it holds no sound" : found->mReason));
	}
	return *found;
}

// Leaves out all outermost tracks but one, with what is missing on them.
Sequence::GraphView DropOthers(Otio::TrackRow const& inTrack, Otio::TimelineSequence& ioSequence)
{
	Sequence::GraphView view;
	for (Otio::TrackRow const& row : ioSequence.mTracks)
	{
		if (row.mDepth == 0 && row.mIndex != inTrack.mIndex)
		{
			view.mLeftOut.insert(row.mPlace);
		}
	}
	std::erase_if(ioSequence.mMissing, [&](Otio::MissingMedia const& inMedia)
		{ return inMedia.mPlace != inTrack.mPlace && !inMedia.mPlace.starts_with(inTrack.mPlace + "/"); });
	std::erase_if(ioSequence.mNotes,
		[&](Otio::Note const& inNote) { return !inNote.mPlace.starts_with(inTrack.mPlace + "/"); });
	return view;
}

void CheckNodes(GraphDrawing const& inDrawing, GraphFormat inFormat)
{
	if (inFormat != GraphFormat::kDot && inDrawing.GetNumNodes() > GraphDrawing::kMaxPictureNodes)
	{
		RefuseOutput("the graph has " + std::to_string(inDrawing.GetNumNodes()) +
					 " nodes, and laying out more than " + std::to_string(GraphDrawing::kMaxPictureNodes) +
					 " would take very long; use --depth to draw fewer levels of nesting, --track for a "
					 "single track, or write .dot, which needs no layout");
	}
}

class GraphCommand final : public Command
{
public:
	explicit GraphCommand(CLI::App& ioProgram)
		: Command(ioProgram, "graph", "Draw the graph that renders a timeline, with latencies")
	{
		Add("INPUT", mInput, "(required)", "Timeline (.otio, .otioz, .otiod)")->required();
		Add("-o,--output", mOutput, "OUTPUT (required)",
			"Output file, replaced if it exists and written only if the command succeeds; - is the standard "
			"output, with --format")
			->required();
		Add("--format", mFormat, "NAME", "Output format: svg, png or dot (default: by the ending of OUTPUT)")
			->check(CLI::IsMember({"svg", "png", "dot"}));
		AddFlag("--no-overwrite", mKeepsOldFile, "Fail if the output file already exists");
		Add("--rate", mSampleRate, "HZ", "Sample rate of the render in Hz");
		Add("--layout", mLayout, "NAME",
			"Layout of the mix: mono, stereo, 5.1, ambisonic1 or a number of channels");
		Add("--depth", mDepth, "COUNT",
			"Levels of nesting to draw, from 0; deeper ones become single nodes (default: all)")
			->check(CLI::Range(0, kMostDepth));
		Add("--track", mTrack, "NAME",
			"Draw only this track: its name, or its number from 1, counting tracks of all kinds");
		AddFlag("--all", mShowsAll, "Also draw silence between items and panners that change nothing");
		mStretch.AddForAll(GetParser());
		mListener.AddOptions(GetParser());
		AddTimelineOptions(GetParser(), mMediaFolders, mFades);
		AddFlag("--quiet", mIsQuiet, "Print only warnings and errors");
		GetParser().footer("Solid lines carry sound between nodes; dashed lines come from the processors of "
						   "a node. Nodes have the\n"
						   "names of the timeline, with the engine's classes in small below; lines show "
						   "latencies and waits.\n\n"
						   "Examples:\n"
						   "  sonaro graph edit.otio -o graph.svg\n"
						   "  sonaro graph edit.otio -o graph.dot --media /mnt/sound\n"
						   "  sonaro graph film.otio -o dialogue.svg --track Dialogue --depth 1");
	}

	int Run() override
	{
		if (!Otio::IsTimelinePath(mInput))
		{
			std::error_code error;
			char const* const reason = IsStandardStream(mInput)                 ? "is the standard input"
									   : std::filesystem::exists(mInput, error) ? "is not named as a timeline"
																				: "does not exist";
			RefuseFile(mInput, reason, DescribeInputs());
		}
		MakeRoomForOutputs({mOutput});
		GraphFormat const format = ChooseGraphFormat(mFormat, mOutput);
		RenderOptions layout;
		layout.mLayout = mLayout;
		Otio::TimelineOptions options;
		options.mSampleRate = mSampleRate;
		options.mLayout = layout.ParseLayout();
		options.mFadeShape = ParseFades(mFades);
		mStretch.Fill(options);
		options.mListener = mListener.MakeListener();
		Otio::TimelineInput input(mInput, {mMediaFolders.begin(), mMediaFolders.end()});
		OutputPlan{{mOutput}, {}, mListener.AddFile({mInput}), input.ListMedia(), !mKeepsOldFile}.Check();
		Otio::TimelineSequence sequence = input.MakeSequence(options);
		Otio::CheckHasSound(sequence);
		Sequence::GraphView view;
		if (!mTrack.empty())
		{
			std::size_t const track = FindTrack(input.GetTimeline().mTracks, mTrack);
			view = DropOthers(FindHeard(track, mTrack, sequence), sequence);
		}
		std::vector<Otio::Note> const effects = Otio::ListMissingEffects(sequence.mNotes);
		WarnOfNotes(sequence.mMissing, effects);
		GraphDrawing const drawing =
			Draw(Otio::MakeProgramme(sequence, input.GetMedia()), view, {mDepth, mShowsAll, nullptr});
		CheckNodes(drawing, format);
		std::string const picture = DrawGraph(drawing.ToDot(input.GetTimeline().mName), format);
		// The file is made after the drawing, which may take long and may be stopped.
		OutputFile file(mOutput);
		file.Write(picture.data(), static_cast<std::int64_t>(picture.size()));
		// Drawing cannot be stopped; what comes of it can.
		if (StopSignals::GetToken().stop_requested())
		{
			StopSignals::EndProcess();
		}
		file.Commit(!mKeepsOldFile);
		if (!mIsQuiet)
		{
			std::string const text =
				ShowOutput(mOutput) + ": " + FormatCount(drawing.GetNumNodes(), "node") + "\n";
			FinishAfter(mOutput, [&text] { PrintResult(text); });
		}
		return sequence.mMissing.empty() && effects.empty() ? kExitSuccess : kExitMissing;
	}

	std::string DescribeInputs() const override { return "graph draws timelines (.otio, .otioz, .otiod)"; }

private:
	std::string mInput;
	std::string mOutput;
	std::string mFormat;
	std::string mLayout;
	std::optional<int> mSampleRate;
	std::optional<std::size_t> mDepth;
	std::string mTrack;
	StretchOptions mStretch;
	ListenerOptions mListener;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	bool mShowsAll = false;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
};

} // namespace

std::unique_ptr<Command> MakeGraphCommand(CLI::App& ioProgram)
{
	return std::make_unique<GraphCommand>(ioProgram);
}

} // namespace SonaroCommand
