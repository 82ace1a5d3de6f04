#include "RenderOptions.h"

#include "SharedOptions.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "zorvcore/math/Elementary.h"

#include <cmath>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

// More than any recording needs in either direction.
constexpr double kLargestGainDecibels = 200.0;

std::optional<OutputSamples> FindSamples(std::string const& inBits)
{
	if (inBits.empty())
	{
		return std::nullopt;
	}
	return inBits == "16"   ? OutputSamples::kInteger16
		   : inBits == "24" ? OutputSamples::kInteger24
							: OutputSamples::kFloat32;
}

std::optional<Dither> FindDither(std::string const& inDither)
{
	if (inDither.empty())
	{
		return std::nullopt;
	}
	return inDither == "tpdf" ? Dither::kTriangular : Dither::kNone;
}

float ToGain(double inDecibels)
{
	// Written so that what is not a number fails it.
	if (!(std::abs(inDecibels) <= kLargestGainDecibels))
	{
		Refuse("--gain-db: " + FormatNumber(inDecibels) + " is out of range; use -200 to 200");
	}
	return inDecibels == 0.0 ? 1.0f : static_cast<float>(zorvcore::math::Exp10(inDecibels / 20.0));
}

// Gives the reason against it. A flag without a value comes as "true".
std::string CheckStrictness(std::string const& inValue)
{
	bool const isKnown = inValue == "true" || inValue == "all" || inValue == RenderOptions::kStrictInMedia;
	return isKnown ? "" : "'" + inValue + "' is not valid; use --strict=media or --strict=all";
}

} // namespace

void RenderOptions::AddFormat(CLI::App& ioParser)
{
	ioParser
		.add_option(
			"--format", mFormat, "Output format: wav, aiff, flac or caf (default: by the ending of OUTPUT)")
		->option_text("NAME")
		->check(CLI::IsMember({"wav", "aiff", "flac", "caf"}, CLI::ignore_case));
	ioParser.add_option("--bits", mBits, "Sample format: 16, 24 or 32f (float) (default: 32f; for FLAC 24)")
		->option_text("BITS")
		->check(CLI::IsMember({"16", "24", "32f"}));
	ioParser
		.add_option("--dither", mDither,
			"Dither: tpdf or none (default: tpdf if samples are rounded to 16 bits, else none)")
		->option_text("KIND")
		->check(CLI::IsMember({"tpdf", "none"}));
}

void RenderOptions::AddBlock(CLI::App& ioParser)
{
	ioParser.add_option("--block", mBlockFrames, "Block size in samples, 1 to 262144 (default: 4096)")
		->option_text("SAMPLES")
		->check(CLI::Range(1u, kMaxBlockFrames));
}

void RenderOptions::AddRate(CLI::App& ioParser)
{
	ioParser
		.add_option("--rate", mSampleRate,
			"Output sample rate in Hz, 1000 to 768000, timelines from 1 (default: that of the first input; "
			"of a timeline, that of most clips)")
		->option_text("HZ");
	ioParser
		.add_option("--resampling", mResampling,
			"How other sample rates and speeds are converted: exact, draft (faster, -100 dB of noise instead "
			"of -140) or engine (the interpolation of the real-time engine) (default: exact)")
		->option_text("NAME")
		->check(CLI::IsMember({"exact", "draft", "engine"}));
}

void RenderOptions::AddLevels(CLI::App& ioParser)
{
	ioParser
		.add_option(
			"--gain-db", mGainDecibels, "Gain in dB, -200 to 200; cannot be combined with --normalize")
		->option_text("DB");
	ioParser
		.add_option("--normalize", mLevels.mNormalizeLoudness,
			"Target integrated loudness in LUFS, -70 to 0, such as -16; with stems, that of the mix")
		->option_text("LUFS");
	ioParser
		.add_option("--limit-dbtp", mLevels.mLimitDecibels,
			"Limit true peaks of each file, in dBTP, -60 to 20, such as -1 (default: no limit)")
		->option_text("DB");
	ioParser.add_option("--fade-in", mFadeIn, "Fade in at the start of each file, linear in amplitude")
		->option_text("TIME");
	ioParser
		.add_option("--fade-out", mFadeOut,
			"Fade out at the end of each file, linear in amplitude; the last sample is silent")
		->option_text("TIME");
}

void RenderOptions::AddLayout(CLI::App& ioParser)
{
	ioParser
		.add_option("--layout", mLayout,
			"Output layout: mono, stereo, 5.1, ambisonic1 (a sound field of the first order), or a number of "
			"channels without speaker positions, in order; with --binaural, that of the mix (default: the "
			"widest layout of the inputs; of a timeline, its own, or stereo)")
		->option_text("NAME");
}

void RenderOptions::AddTail(CLI::App& ioParser)
{
	ioParser
		.add_option("--tail", mTail,
			"Go on after the end for this time, or with auto until effects are below -90 dBFS, at most 30 "
			"seconds, which takes another pass (default: end at once)")
		->option_text("TIME");
}

void RenderOptions::AddStrict(CLI::App& ioParser)
{
	ioParser
		.add_flag("--strict", mStrict,
			"Fail with exit code 1, and write only the report, if media of a timeline are missing "
			"(--strict=media), or also if media are damaged or anything was guessed, ignored or not "
			"read (--strict or --strict=all). Without it, missing media are rendered as silence, with "
			"exit code 3, and damaged ones with a warning")
		->check(CheckStrictness);
}

OutputContainer RenderOptions::ChooseContainer() const
{
	if (mFormat.empty() && IsStandardStream(mOutput))
	{
		return OutputContainer::kWav;
	}
	auto const container = mFormat.empty() ? FindContainerByEnding(mOutput) : FindContainer(mFormat);
	if (!container)
	{
		Refuse("cannot choose a format from the name " + QuotePath(mOutput) +
			   "; end it in .wav, .aiff, .flac or .caf, or " + (mJoined ? "plan with" : "use") + " --format");
	}
	return *container;
}

std::optional<SN::AudioChannelLayout> RenderOptions::ParseLayout() const
{
	if (mLayout.empty())
	{
		return std::nullopt;
	}
	auto const layout = SonaroHost::ParseLayout(mLayout);
	if (!layout)
	{
		Refuse("--layout: '" + mLayout +
			   "' is not a layout; use mono, stereo, 5.1, ambisonic1 or a number of channels from 1 to " +
			   std::to_string(kMaxChannels) + ", for 7.1 with --binaural 8");
	}
	return layout;
}

Sequence::Resampling RenderOptions::ChooseResampling() const
{
	return mResampling == "draft"    ? Sequence::Resampling::kDraft
		   : mResampling == "engine" ? Sequence::Resampling::kEngine
									 : Sequence::Resampling::kExact;
}

bool RenderOptions::WantsPage() const
{
	std::string const ending = GetLowerEnding(mReport);
	return ending == ".html" || ending == ".htm";
}

void RenderOptions::Fill(OutputRequest& outRequest) const
{
	outRequest.mOutput = mOutput;
	if (!mReport.empty())
	{
		outRequest.mOtherOutputs.emplace_back(mReport);
	}
	outRequest.mReplace = !mKeepsOldFile;
	outRequest.mSamples = FindSamples(mBits);
	outRequest.mDither = FindDither(mDither);
	outRequest.mGain = ToGain(mGainDecibels);
	outRequest.mFadeIn = ParseTimeIfGiven("--fade-in", mFadeIn);
	outRequest.mFadeOut = ParseTimeIfGiven("--fade-out", mFadeOut);
	if (!mTail.empty())
	{
		outRequest.mTail = {mTail == "auto" ? std::nullopt : ParseTimeIfGiven("--tail", mTail)};
	}
	outRequest.mLevels = mLevels;
	outRequest.mMeasuring = !mReport.empty()       ? Measuring::kTracks
							: mAsJson || !mIsQuiet ? Measuring::kOutput
												   : Measuring::kNothing;
	outRequest.mKeepsSeries = WantsPage();
	outRequest.mJobs = mJobs.value_or(outRequest.mJobs);
	outRequest.mRefusesDamage = IsStrictInAll();
	outRequest.mBlockFrames = mBlockFrames.value_or(outRequest.mBlockFrames);
}

} // namespace SonaroCommand
