#include "RenderCommand.h"

#include "Console.h"
#include "OptionGroups.h"
#include "RenderReport.h"
#include "RenderedFileRows.h"
#include "ReportFile.h"
#include "RunJob.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "TimeOption.h"

#include <charconv>
#include <string_view>

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
				   "' is no list of channels; give numbers from 1 on with commas between, like 2,1");
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

} // namespace

RenderCommand::RenderCommand(CLI::App& ioProgram)
	: Command(ioProgram, "render", "Render sound files, one after the other, or a timeline"),
	  mTimeline(GetParser(), mOptions)
{
	AddFileOptions();
	AddFormatOptions();
	AddRangeOptions();
	AddTrackOptions();
	AddLevelOptions();
	AddChannelOptions();
	AddReportOptions();
	mTimeline.AddOptions();
	GroupOptions();
	GetParser().footer(
		std::string(kTimesHelp) +
		"\n\n"
		"Examples:\n"
		"  sonaro render interview.flac -o interview.wav\n"
		"  sonaro render music.mp3 -o music.aiff --bits 16 --start 1:02.5 --duration 30\n"
		"  sonaro render stereo.wav -o swapped.wav --channels 2,1 --gain-db -6\n"
		"  sonaro render music.flac -o jingle.wav --duration 12 --fade-in 0.05 --fade-out 3\n"
		"  sonaro render film51.wav -o film.wav --layout stereo --mixdown front-rear\n"
		"  sonaro render voice.wav -o voice51.wav --layout 5.1 --pan 0.3\n"
		"  sonaro render music.flac -o music.wav --as-playback\n"
		"  sonaro render intro.wav talk.flac outro.wav -o show.wav --fade-out 5\n"
		"  sonaro render talk.wav jingle.wav -o show.wav --at 0 --at 2.5\n"
		"  sonaro render edit.otio -o mix.wav --normalize -16 --limit-dbtp -1 --report mix.json\n"
		"  sonaro render edit.otio -o stems --stems track --range 01:00:10:00+20");
}

void RenderCommand::AddFileOptions()
{
	GetParser()
		.add_option("INPUT", mInputs,
			"Sound files, each one where the one before ends: WAV, AIFF, FLAC, CAF, Ogg Vorbis, Opus, MP3 "
			"...; - is the standard input; or a timeline: .otio, .otioz, .otiod")
		->option_text("(required) ...")
		->required();
	GetParser()
		.add_option("--at", mPositions,
			"Where an input begins, once for each in their order; gaps are silent, and where inputs overlap, "
			"the one given later is heard")
		->option_text("TIME ...")
		->allow_extra_args(false);
	GetParser()
		.add_option("-o,--output", mOptions.mOutput,
			"The file to write, complete or not at all; an older one is replaced; - is the standard output")
		->option_text("OUTPUT (required)")
		->required();
}

void RenderCommand::AddFormatOptions()
{
	GetParser()
		.add_option("--format", mOptions.mFormat, "wav, aiff, flac or caf, instead of what OUTPUT ends in")
		->option_text("NAME")
		->check(CLI::IsMember({"wav", "aiff", "flac", "caf"}, CLI::ignore_case));
	GetParser()
		.add_option(
			"--bits", mOptions.mBits, "16, 24 or 32f, which is 32-bit float (default: 32f, for FLAC 24)")
		->option_text("BITS")
		->check(CLI::IsMember({"16", "24", "32f"}));
	GetParser()
		.add_option("--dither", mOptions.mDither,
			"tpdf or none (default: tpdf where 16 bits round the input's samples, else none)")
		->option_text("KIND")
		->check(CLI::IsMember({"tpdf", "none"}));
	GetParser().add_flag("--no-overwrite", mOptions.mKeepsOldFile, "Refuse to replace an older file");
}

void RenderCommand::AddRangeOptions()
{
	GetParser().add_option("--start", mStart, "Where in the only input to begin")->option_text("TIME");
	GetParser()
		.add_option("--duration", mDuration, "How much of the only input to render, at most to its end")
		->option_text("TIME");
	GetParser().add_flag("--reverse", mIsReverse, "The whole from the end to the start");
	GetParser()
		.add_option(
			"--block", mOptions.mBlockFrames, "Samples rendered at a time, 1 to 262144 (default: 4096)")
		->option_text("SAMPLES")
		->check(CLI::Range(1u, kMaxBlockFrames));
	GetParser().add_flag("--as-playback", mIsPlayback,
		"Read ahead on another thread as a player does, with the same result, and tell how that went");
}

void RenderCommand::AddTrackOptions()
{
	GetParser()
		.add_option("--speed", mSpeed,
			"How fast it plays, 0.01 to 100, resampled, so that pitch follows: at 2 an octave up, half as "
			"long")
		->option_text("S");
	GetParser()
		.add_option("--rate", mOptions.mSampleRate,
			"Samples a second of the output, resampled (default: those of the first input, of a timeline "
			"those of "
			"most of its clips)")
		->option_text("HZ");
}

void RenderCommand::AddLevelOptions()
{
	GetParser()
		.add_option("--gain-db", mOptions.mGainDecibels,
			"Decibels to make it louder, or below 0 softer; not together with --normalize")
		->option_text("DB");
	GetParser()
		.add_option("--normalize", mOptions.mLevels.mNormalizeLoudness,
			"The loudness that the output gets, such as -16; of a timeline, the mix")
		->option_text("LUFS");
	GetParser()
		.add_option("--limit-dbtp", mOptions.mLevels.mLimitDecibels,
			"The highest true peak of the output, such as -1 (default: no limit)")
		->option_text("DB");
	GetParser()
		.add_option("--fade-in", mOptions.mFadeIn,
			"Rise from silence at the start of each file, in a straight line of amplitude")
		->option_text("TIME");
	GetParser()
		.add_option("--fade-out", mOptions.mFadeOut,
			"Fall to silence at the end of each file; the last sample is silent")
		->option_text("TIME");
}

void RenderCommand::AddChannelOptions()
{
	GetParser()
		.add_option(
			"--channels", mChannels, "Channels of the only input from 1 on, in their new order, like 2,1")
		->option_text("LIST");
	GetParser()
		.add_option("--layout", mOptions.mLayout,
			"What the channels become: mono, stereo, 5.1, or so many channels without places, by position "
			"(default: the widest layout of the inputs, the one that a timeline names, or stereo)")
		->option_text("NAME");
	GetParser()
		.add_option("--pan", mPan,
			"Where the sound stands, from 0 (left) over 0.5 (middle) to 1 (right); mono becomes stereo")
		->option_text("X");
	GetParser()
		.add_option("--mixdown", mMixdown,
			"What of 5.1 is heard in mono and stereo: front, front-rear, front-lfe or all (default: front)")
		->option_text("NAME")
		->check(CLI::IsMember({"front", "front-rear", "front-lfe", "all"}));
}

void RenderCommand::AddReportOptions()
{
	GetParser()
		.add_option("--report", mOptions.mReport,
			"Write as JSON what lies where, how loud it is, and what became of a timeline's parts")
		->option_text("FILE");
	GetParser().add_flag("--quiet", mOptions.mIsQuiet, "Tell nothing but warnings and errors");
	GetParser().add_flag("--json", mOptions.mAsJson, "Print the summary as JSON on the standard output");
}

std::string RenderCommand::DescribeInputs() const
{
	return "render takes sound files (such as WAV, AIFF, FLAC, Ogg and MP3) and timelines (.otio, .otioz, "
		   ".otiod)";
}

int RenderCommand::Run()
{
	if (mTimeline.IsMeant(mInputs))
	{
		CheckOptionsFitTimelines();
		return mTimeline.Run(mInputs.front());
	}
	RefuseGroup(GetParser(), kForTimelines, "is for timelines (.otio, .otioz, .otiod)");
	MakeRoomForOutputs({mOptions.mOutput, mOptions.mReport});
	ClipRenderJob job(MakeRequest());
	CheckReport(mOptions, ReportFolder::eIsThere);
	for (PlannedClip const& clip : job.GetPlan().GetClips())
	{
		if (!clip.GetInfo().mStatesLength)
		{
			PrintWarning(QuoteInput(clip.GetInfo().mPath) + " states no length; it has the " +
						 std::to_string(clip.GetInfo().mFrames) + " samples that can be read");
		}
	}
	Report(job, Render(job));
	return kExitSuccess;
}

void RenderCommand::GroupOptions()
{
	GroupByInput(GetParser(),
		{"--at", "--start", "--duration", "--reverse", "--as-playback", "--speed", "--channels", "--pan",
			"--mixdown"},
		{"--range", "--stems", "--media", "--fades", "--strict"});
}

void RenderCommand::CheckOptionsFitTimelines()
{
	constexpr char const* kWhy = "is for sound files; a timeline says itself what becomes of them";
	for (char const* const name : {"--start", "--duration"})
	{
		if (GetParser().get_option(name)->count() > 0)
		{
			Refuse(std::string(name) + " " + kWhy + " (--range renders a part of it)");
		}
	}
	RefuseGroup(GetParser(), kForSoundFiles, kWhy);
}

ClipRenderRequest RenderCommand::MakeRequest() const
{
	ClipRenderRequest request;
	mOptions.Fill(request);
	request.mInputs = MakeInputs();
	request.mContainer = mOptions.ChooseContainer();
	request.mLayout = MakeLayoutRequest();
	request.mDirection = mIsReverse ? RenderDirection::eReverse : RenderDirection::eForward;
	request.mSpeed = mSpeed;
	request.mSampleRate = mOptions.mSampleRate;
	request.mAsPlayback = mIsPlayback;
	return request;
}

std::vector<ClipInput> RenderCommand::MakeInputs() const
{
	if (!mPositions.empty() && mPositions.size() != mInputs.size())
	{
		Refuse("--at was given " + std::to_string(mPositions.size()) + " times for " +
			   std::to_string(mInputs.size()) + " inputs; give it once for each, or not at all");
	}
	std::vector<ClipInput> inputs;
	if (mInputs.size() == 1)
	{
		inputs.push_back(MakeOnlyInput());
	}
	else
	{
		for (auto const& [option, text] : {std::pair("--start", &mStart), std::pair("--duration", &mDuration),
				 std::pair("--channels", &mChannels)})
		{
			if (!text->empty())
			{
				Refuse(
					std::string(option) + " is for a single input; render the parts to files of their own");
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

ClipInput RenderCommand::MakeOnlyInput() const
{
	ClipInput input;
	input.mPath = mInputs.front();
	if (!mStart.empty())
	{
		input.mStart = ParseTime("--start", mStart);
	}
	if (!mDuration.empty())
	{
		input.mDuration = ParseTime("--duration", mDuration);
	}
	if (!mChannels.empty())
	{
		input.mChannels = ParseChannels(mChannels);
	}
	return input;
}

LayoutRequest RenderCommand::MakeLayoutRequest() const
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

RenderSummary RenderCommand::Render(ClipRenderJob& ioJob) const
{
	return RunJob(ioJob, ioJob.GetSampleRate(), mOptions.mIsQuiet);
}

void RenderCommand::Report(ClipRenderJob const& inJob, RenderSummary const& inSummary) const
{
	WarnOfLevels(inSummary);
	if (inSummary.mPlayback)
	{
		WarnOfMisses(*inSummary.mPlayback);
	}
	if (!mOptions.mReport.empty())
	{
		WriteReport(mOptions, ReportForMachines(mInputs, inJob, inSummary, mOptions.mLevels));
	}
	if (mOptions.mAsJson)
	{
		PrintResult(DescribeForMachines(mInputs, mOptions.mOutput, inJob, inSummary));
	}
	else if (!mOptions.mIsQuiet)
	{
		PrintResult(DescribeForPeople(mInputs, mOptions.mOutput, inJob, inSummary));
	}
}

void RenderCommand::WarnOfMisses(PlaybackSummary const& inPlayback) const
{
	for (std::size_t i = 0; i < mInputs.size(); ++i)
	{
		if (std::uint64_t const missed = inPlayback.mMissedFramesOfInputs[i]; missed > 0)
		{
			PrintWarning(std::to_string(missed) + " samples of " + QuotePath(mInputs[i]) +
						 " were not there when they were due and are silent in " +
						 QuotePath(mOptions.mOutput));
		}
	}
}

} // namespace SonaroCommand
