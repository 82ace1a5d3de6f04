#include "Command.h"

#include "Called/ProgrammeRender.h"
#include "Options/DenoiseOptions.h"
#include "Options/EffectOptions.h"
#include "Options/RenderOptions.h"
#include "Options/SharedOptions.h"
#include "Page/PagePictures.h"
#include "Page/ReportPage.h"
#include "PlannedRender.h"
#include "Report/RenderReport.h"
#include "Report/RenderedFileRows.h"
#include "Report/ReportFile.h"
#include "Report/StrictRender.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Render/ClipRenderJob.h"
#include "Terminal/Caller.h"
#include "Terminal/Console.h"
#include "Terminal/OperatingSystem.h"
#include "TimelineRender.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace SonaroCommand
{

namespace
{

using namespace SonaroHost;

// "2,1" to channels from 0 on.
std::vector<unsigned> ParseChannels(std::string_view inText)
{
	std::vector<unsigned> channels;
	for (std::string_view rest = inText;;)
	{
		std::size_t const comma = rest.find(',');
		std::string_view const field = rest.substr(0, comma);
		unsigned channel = 0;
		auto const [end, error] = std::from_chars(field.data(), field.data() + field.size(), channel);
		if (error != std::errc() || end != field.data() + field.size() || channel < 1)
		{
			Refuse("--channels: '" + std::string(inText) +
				   "' is not a list of channels; use numbers from 1, separated by commas, like 2,1");
		}
		channels.push_back(channel - 1);
		if (comma == std::string_view::npos)
		{
			return channels;
		}
		rest.remove_prefix(comma + 1);
	}
}

SN::AudioChannelMix::MixdownType51 GetMixdown(std::string const& inName)
{
	return inName == "front"        ? SN::AudioChannelMix::kMixdownFront
		   : inName == "front-rear" ? SN::AudioChannelMix::kMixdownFrontRear
		   : inName == "front-lfe"  ? SN::AudioChannelMix::kMixdownFrontLFE
									: SN::AudioChannelMix::kMixdownFrontRearLFE;
}

class RenderCommand final : public Command
{
public:
	explicit RenderCommand(CLI::App& ioProgram)
		: Command(ioProgram, "render", "Render sound files, joined end to end, or a timeline"),
		  mTimeline(GetParser(), mOptions)
	{
		AddFileOptions();
		AddSoundOptions();
		mOptions.AddLevels(GetParser());
		AddChannelOptions();
		mOptions.AddTail(GetParser());
		mDenoise.AddOptions(GetParser());
		mEffects.AddOptions(GetParser());
		mTimeline.AddOptions();
		GroupByInput(GetParser(),
			{"--at", "--start", "--duration", "--reverse", "--as-playback", "--speed", "--pitch", "--stream",
				"--channels", "--pan", "--mixdown", "--denoise", "--reduction", "--learn", "--effect",
				"--effect-file", "--set", "--preset"},
			{"--range", "--stems", "--media", "--fades", "--piece"});
		GetParser().footer(
			std::string(kTimesHelp) +
			"\n\n"
			"Examples:\n"
			"  sonaro render interview.flac -o interview.wav\n"
			"  sonaro render music.mp3 -o music.aiff --bits 16 --start 1:02.5 --duration 30\n"
			"  sonaro render stereo.wav -o swapped.wav --channels 2,1 --gain-db -6\n"
			"  sonaro render music.flac -o jingle.wav --duration 12 --fade-in 0.05 --fade-out 3\n"
			"  sonaro render talk.wav -o fast.wav --speed 1.25 --keep-pitch\n"
			"  sonaro render film51.wav -o film.wav --layout stereo --mixdown front-rear\n"
			"  sonaro render voice.wav -o voice51.wav --layout 5.1 --pan 0.3\n"
			"  sonaro render film51.wav -o headphones.wav --binaural --yaw 20\n"
			"  sonaro render music.flac -o music.wav --as-playback\n"
			"  sonaro render intro.wav talk.flac outro.wav -o show.wav --fade-out 5\n"
			"  sonaro render talk.wav jingle.wav -o show.wav --at 0 --at 2.5\n"
			"  sonaro render noisy.wav -o clean.wav --denoise --learn 0.5..2\n"
			"  sonaro render voice.wav -o loud.wav --effect http://lv2plug.in/plugins/eg-amp --set gain=6\n"
			"  sonaro render edit.otio -o mix.wav --normalize -16 --limit-dbtp -1 --report mix.json\n"
			"  sonaro render edit.otio -o mix.wav --report mix.html\n"
			"  sonaro render --piece plan.json#17 -o piece17.wav\n"
			"  sonaro render edit.otio -o stems --stems track --range 01:00:10:00+20");
	}

	// For a timeline whose pieces are rendered already.
	void Join(std::shared_ptr<JoinedPlan const> inJoined) { mOptions.mJoined = std::move(inJoined); }

	int Run() override
	{
		mOptions.mJobs = mOptions.mJobs.value_or(std::min(CountUsableCores(), kMostJobs));
		if (mIsPiece)
		{
			CheckOptionsFitPieces();
			return RenderPiece(mInputs.front(), mOptions, mTimeline.GetMediaFolders());
		}
		if (CalledProgramme const* const programme = FindCalledProgramme(mInputs.front()))
		{
			RenderCalledProgramme(GetParser(), mOptions, mInputs.front(), *programme);
			return kExitSuccess;
		}
		if (mTimeline.IsMeant(mInputs))
		{
			CheckOptionsFitTimelines();
			return mTimeline.Run(mInputs.front());
		}
		RefuseGroup(GetParser(), kForTimelines, "applies only to timelines (.otio, .otioz, .otiod)");
		MakeRoomForOutputs({mOptions.mOutput, mOptions.mReport});
		ClipRenderJob job(MakeRequest());
		CheckReport(mOptions, ReportFolder::kIsThere);
		CheckStrictly(job, WarnOfInputs(job));
		RenderSummary const summary =
			RunStrictly(job, mOptions, [&](std::string const& inReason) { WriteRefusal(job, inReason); });
		FinishAfter(mOptions.mOutput, [&] { Report(job, summary); });
		return kExitSuccess;
	}

private:
	void AddFileOptions()
	{
		Add("INPUT", mInputs, "(required) ...",
			"One or more sound files or movies, joined end to end (WAV, AIFF, FLAC, CAF, Ogg Vorbis, Opus, "
			"MP3, MOV, MP4, MKV, MXF ...), - for the standard input, or a single timeline (.otio, .otioz, "
			".otiod)")
			->required();
		Add("--at", mPositions, "TIME ...",
			"Start of an input, once per input, in order; --speed divides it. Gaps are silent, and where "
			"inputs overlap, the one given later is heard")
			->allow_extra_args(false);
		Add("-o,--output", mOptions.mOutput, "OUTPUT (required)",
			"Output file, replaced if it exists and written only if the command succeeds; - is the standard "
			"output")
			->required();
		mOptions.AddFormat(GetParser());
		AddFlag("--piece", mIsPiece,
			"INPUT is a piece of a plan of \"sonaro plan\", like plan.json#17; the output is an intermediate "
			"file "
			"for \"sonaro join\"");
		AddFlag("--no-overwrite", mOptions.mKeepsOldFile, "Fail if an output file already exists");
	}

	void AddSoundOptions()
	{
		Add("--start", mStart, "TIME", "Where to start in a single input");
		Add("--duration", mDuration, "TIME", "How much of a single input to render, at most to its end");
		AddFlag("--reverse", mIsReverse, "Render in reverse");
		mOptions.AddBlock(GetParser());
		Add("--jobs", mOptions.mJobs, "N",
			"Number of threads, 1 to 256; the output and the report are the same for any number (default: "
			"one for each core that the process may use)")
			->check(CLI::Range(1u, kMostJobs));
		AddFlag("--as-playback", mIsPlayback,
			"Read ahead on another thread, as during playback, and report misses; the output is the same");
		mOptions.mStretch.AddForSoundFiles(GetParser());
		mOptions.mStretch.AddForAll(GetParser());
		mOptions.AddRate(GetParser());
	}

	void AddChannelOptions()
	{
		AddStreamOption(GetParser(), mStream);
		Add("--channels", mChannels, "LIST",
			"Channels of a single input to use, from 1, in their new order, like 2,1");
		mOptions.AddLayout(GetParser());
		Add("--pan", mPan, "X",
			"Pan, 0 (left) to 1 (right), 0.5 is the centre; mono becomes stereo (in timelines: -1 to 1)");
		Add("--mixdown", mMixdown, "NAME",
			"Channels of 5.1 to mix down to mono or stereo: front, front-rear, front-lfe or all (default: "
			"front)")
			->check(CLI::IsMember({"front", "front-rear", "front-lfe", "all"}));
		mOptions.mListener.AddOptions(GetParser());
		AddReportOptions();
	}

	void AddReportOptions()
	{
		Add("--report", mOptions.mReport, "FILE",
			"Write a report of positions, loudness and, for a timeline, its clips, tracks and notes: as "
			"JSON, or, if FILE ends in .html, as a page with the waveform and the loudness over time; the "
			"waveform takes another pass");
		mOptions.AddStrict(GetParser());
		AddFlag("--quiet", mOptions.mIsQuiet, "Print only warnings and errors");
		AddFlag("--json", mOptions.mAsJson, "Print the summary as JSON");
	}

	// Of what is known of them before the render. Whether there was anything to warn of.
	static bool WarnOfInputs(ClipRenderJob const& inJob)
	{
		bool isWarned = !inJob.GetRemarks().empty();
		for (std::string const& remark : inJob.GetRemarks())
		{
			PrintWarning(remark);
		}
		for (PlannedClip const& clip : inJob.GetPlan().GetClips())
		{
			AudioFileInfo const& info = clip.GetInfo();
			if (!info.mStatesLength)
			{
				isWarned = true;
				PrintWarning(QuoteInput(info.mPath) + " states no length in its header; using the " +
							 FormatCount(info.mFrames, "sample") + " that can be read");
			}
			for (std::string const& remark : info.mRemarks)
			{
				isWarned = true;
				PrintWarning(QuoteInput(info.mPath) + ": " + remark);
			}
		}
		return isWarned;
	}

	// Throws a HostError when --strict forbids the render.
	void CheckStrictly(ClipRenderJob const& inJob, bool inIsWarned)
	{
		if (mOptions.IsStrictInAll() && inIsWarned)
		{
			std::string const reason = "parts of the input were guessed or not read";
			WriteRefusal(inJob, reason);
			throw HostError(
				HostError::Kind::kInput, DescribeStrictRefusal(mOptions, reason) + "; see the warnings");
		}
	}

	// The report and the summary for machines, where they are asked for.
	void WriteRefusal(ClipRenderJob const& inJob, std::string const& inReason)
	{
		if (!mOptions.mReport.empty())
		{
			WriteReport(mOptions, DescribeReport(inJob, {}, inReason));
		}
		if (mOptions.mAsJson)
		{
			PrintResult(DescribeRefusalForMachines(mInputs, mOptions.mOutput, inJob, inReason));
		}
	}

	// Throws a HostError for an option that the plan of a piece has, and for several pieces.
	void CheckOptionsFitPieces()
	{
		static std::set<std::string> const sOwn{
			"--output", "--piece", "--jobs", "--media", "--report", "--no-overwrite", "--quiet", "--json"};
		for (CLI::Option const* const option : GetParser().get_options())
		{
			if (option->nonpositional() && option->count() > 0 && !sOwn.contains(option->get_name()))
			{
				Refuse(option->get_name() + " does not apply to a piece, whose plan sets this itself");
			}
		}
		if (mInputs.size() > 1)
		{
			Refuse("--piece takes one piece, like plan.json#17; render each by itself");
		}
	}

	// Throws a HostError for an option that a timeline has no use for.
	void CheckOptionsFitTimelines()
	{
		constexpr char const* kRange = "a timeline sets this itself; use --range to render a part of it";
		for (auto const& [name, remedy] : {std::pair("--start", kRange), std::pair("--duration", kRange),
				 std::pair("--as-playback", "sonaro play reads timelines ahead")})
		{
			if (GetParser().get_option(name)->count() > 0)
			{
				Refuse(std::string(name) + " applies only to sound files; " + remedy);
			}
		}
		RefuseGroup(GetParser(), kForSoundFiles, "applies only to sound files; a timeline sets this itself");
	}

	// The options as the library takes them; throws a HostError for one that makes no sense.
	ClipRenderRequest MakeRequest() const
	{
		ClipRenderRequest request;
		mOptions.Fill(request);
		request.mInputs = MakeInputs();
		request.mContainer = mOptions.ChooseContainer();
		request.mLayout = MakeLayoutRequest();
		request.mDirection = mIsReverse ? RenderDirection::kReverse : RenderDirection::kForward;
		mOptions.mStretch.Fill(request);
		request.mSampleRate = mOptions.mSampleRate;
		request.mResampling = mOptions.ChooseResampling();
		request.mListener = mOptions.mListener.MakeListener();
		request.mAsPlayback = mIsPlayback;
		request.mNoiseReduction = mDenoise.MakeReduction();
		request.mEffects = mEffects.MakeSetups();
		return request;
	}

	std::vector<ClipInput> MakeInputs() const
	{
		if (!mPositions.empty() && mPositions.size() != mInputs.size())
		{
			Refuse("--at is given " + FormatCount(mPositions.size(), "time") + " for " +
				   FormatCount(mInputs.size(), "input") + "; give it once per input, or not at all");
		}
		std::vector<ClipInput> inputs;
		if (mInputs.size() == 1)
		{
			inputs.push_back(MakeOnlyInput());
		}
		else
		{
			if (mStream != 0)
			{
				Refuse("--stream applies only to a single input; render the streams to separate files first");
			}
			for (auto const& [option, text] : {std::pair("--start", &mStart),
					 std::pair("--duration", &mDuration), std::pair("--channels", &mChannels)})
			{
				if (!text->empty())
				{
					Refuse(std::string(option) +
						   " applies only to a single input; render the parts to separate files first");
				}
			}
			for (std::string const& path : mInputs)
			{
				inputs.emplace_back().mPath = path;
			}
		}
		for (std::size_t i = 0; i < mPositions.size(); ++i)
		{
			inputs[i].mPosition = ParseTime("--at", mPositions[i]);
		}
		return inputs;
	}

	ClipInput MakeOnlyInput() const
	{
		ClipInput input;
		input.mPath = mInputs.front();
		input.mStream = mStream;
		input.mStart = ParseTimeIfGiven("--start", mStart).value_or(TimePosition());
		input.mDuration = ParseTimeIfGiven("--duration", mDuration);
		if (!mChannels.empty())
		{
			input.mChannels = ParseChannels(mChannels);
		}
		return input;
	}

	LayoutRequest MakeLayoutRequest() const
	{
		LayoutRequest request;
		request.mLayout = mOptions.ParseLayout();
		request.mPan = mPan;
		if (!mMixdown.empty())
		{
			request.mMixdown = GetMixdown(mMixdown);
		}
		return request;
	}

	// Warnings, and the summary in the form that was asked for.
	void Report(ClipRenderJob const& inJob, RenderSummary const& inSummary)
	{
		WarnOfLevels(inSummary);
		WarnOfDamage(inSummary);
		WarnOfUnlearnedNoise(inSummary);
		if (inSummary.mPlayback)
		{
			WarnOfMisses(*inSummary.mPlayback);
		}
		if (!mOptions.mReport.empty())
		{
			WriteReport(mOptions, DescribeReport(inJob, inSummary, {}));
		}
		if (mOptions.mAsJson || !mOptions.mIsQuiet)
		{
			PrintResult(mOptions.mAsJson ? SummarizeForMachines(mInputs, mOptions.mOutput, inJob, inSummary)
										 : SummarizeForPeople(mInputs, mOptions.mOutput, inJob, inSummary));
		}
	}

	// What --report writes. inRefusal: why the render is refused; empty for one that is not.
	std::string DescribeReport(
		ClipRenderJob const& inJob, RenderSummary const& inSummary, std::string const& inRefusal)
	{
		Json const report = MakeReport(mInputs, inJob, inSummary, mOptions.mLevels, inRefusal);
		if (!mOptions.WantsPage())
		{
			return ToText(report);
		}
		Page::ReportPictures pictures =
			Page::MakePictures(GetParser(), mOptions.mLevels.mNormalizeLoudness, inSummary, {});
		if (inRefusal.empty())
		{
			Page::AddFileWaveform(mOptions.mOutput, mOptions.mIsQuiet, pictures);
		}
		return Page::MakeReportPage(report, pictures);
	}

	void WarnOfMisses(PlaybackSummary const& inPlayback) const
	{
		for (std::size_t i = 0; i < mInputs.size(); ++i)
		{
			if (std::uint64_t const missed = inPlayback.mMissedFramesOfInputs[i]; missed > 0)
			{
				PrintWarning(
					FormatCount(missed, "sample") + " of " + QuotePath(mInputs[i]) +
					(missed == 1 ? " was not read in time and is" : " were not read in time and are") +
					" silent in " + QuotePath(mOptions.mOutput));
			}
		}
	}

	std::vector<std::string> mInputs;
	RenderOptions mOptions;
	TimelineRender mTimeline;
	DenoiseOptions mDenoise;
	EffectOptions mEffects;
	std::vector<std::string> mPositions;
	std::string mStart;
	std::string mDuration;
	unsigned mStream = 0;
	std::string mChannels;
	std::optional<double> mPan;
	std::string mMixdown;
	bool mIsReverse = false;
	bool mIsPiece = false;
	bool mIsPlayback = false;
};

} // namespace

std::unique_ptr<Command> MakeRenderCommand(CLI::App& ioProgram)
{
	return std::make_unique<RenderCommand>(ioProgram);
}

std::unique_ptr<Command> MakeJoiningCommand(CLI::App& ioProgram, std::shared_ptr<JoinedPlan const> inJoined)
{
	auto command = std::make_unique<RenderCommand>(ioProgram);
	command->Join(std::move(inJoined));
	return command;
}

} // namespace SonaroCommand
