#include "SonaroHost/Render/ProgrammePlan.h"

#include "Media/Denoise/DenoisedInfo.h"
#include "Media/Stretch/StretchedInfo.h"
#include "Render/StretchChoice.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Media/AudioFileInspection.h"
#include "SonaroHost/Media/RateConverter.h"
#include "SonaroHost/Render/JobChecks.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <string>

namespace SonaroHost
{

namespace
{

// Empty for all channels in their order.
std::vector<unsigned> ChooseChannels(AudioFileInfo const& inInfo, std::vector<unsigned> const& inWanted)
{
	if (inWanted.size() > kMaxChannels)
	{
		Refuse("at most " + std::to_string(kMaxChannels) + " channels can be selected, not " +
			   std::to_string(inWanted.size()));
	}
	for (unsigned const channel : inWanted)
	{
		if (channel >= inInfo.GetNumChannels())
		{
			Refuse(QuotePath(inInfo.mPath) + " has no channel " + std::to_string(channel + 1) +
				   "; use 1 to " + std::to_string(inInfo.GetNumChannels()));
		}
	}
	std::vector<unsigned> all(inInfo.GetNumChannels());
	std::iota(all.begin(), all.end(), 0u);
	return inWanted == all ? std::vector<unsigned>() : inWanted;
}

AudioFileInfo ReduceNoise(AudioFileInfo const& inInfo, NoiseReduction const& inReduction)
{
	Denoise denoise{inReduction.mReduction, {}};
	if (auto const& range = inReduction.mLearn)
	{
		denoise.mLearn = {
			range->mStart.ToSamples(inInfo.mSampleRate), range->mEnd.ToSamples(inInfo.mSampleRate)};
	}
	return MakeDenoised(inInfo, denoise);
}

PlannedClip OpenClip(ClipInput const& inInput, std::optional<NoiseReduction> const& inReduction,
	std::optional<Stretch> const& inStretch)
{
	AudioFileInfo info = InspectAudioFile(inInput.mPath, inInput.mStream);
	if (inReduction)
	{
		info = ReduceNoise(info, *inReduction);
	}
	FrameRange const range = ChooseRange(info, inInput.mStart, inInput.mDuration);
	PlannedClip clip;
	clip.mSource = AudioFileSource::Open(inStretch ? MakeStretched(info, *inStretch) : info);
	clip.mFirstFrame = range.mFirst;
	clip.mSourceFrames = range.mFrames;
	clip.mChannels = ChooseChannels(clip.GetInfo(), inInput.mChannels);
	return clip;
}

// All channels in their order keep the places that the file gives them.
SN::AudioChannelLayout GetSourceLayout(PlannedClip const& inClip)
{
	return inClip.mChannels.empty() ? inClip.GetInfo().mLayout
									: MakeLayoutOfChannels(static_cast<unsigned>(inClip.mChannels.size()));
}

// Throws a HostError that names the input.
LayoutPlan MakeLayoutPlan(PlannedClip const& inClip, LayoutRequest const& inRequest)
{
	try
	{
		return {GetSourceLayout(inClip), inRequest};
	}
	catch (HostError const& error)
	{
		HostError::Parts const& parts = error.GetParts();
		throw HostError(error.GetKind(), {inClip.GetInfo().mPath, {}, parts.mReason, parts.mRemedy});
	}
}

// Throws a HostError that names the first input that makes the mix what it is.
void CheckCanListenTo(
	std::vector<PlannedClip> const& inClips, LayoutRequest const& inRequest, int inSampleRate)
{
	SN::AudioChannelLayout const& mix = inClips.front().mLayout.GetOutputLayout();
	try
	{
		CheckCanListen(mix, inSampleRate);
	}
	catch (HostError const& error)
	{
		auto const widest = std::ranges::find(inClips, mix, GetSourceLayout);
		if (inRequest.mLayout || !FindField(mix).empty() || widest == inClips.end())
		{
			throw;
		}
		HostError::Parts const& parts = error.GetParts();
		throw HostError(error.GetKind(), {widest->GetInfo().mPath, {}, parts.mReason, parts.mRemedy});
	}
}

} // namespace

std::int64_t PlannedClip::GetFirstFrameOfSource() const
{
	auto const& stretch = GetInfo().mStretch;
	return stretch ? stretch->CountFrames(mFirstFrame) : mFirstFrame;
}

std::int64_t PlannedClip::GetFramesOfSource() const
{
	auto const& stretch = GetInfo().mStretch;
	return stretch ? stretch->CountFrames(mFirstFrame + mSourceFrames) - GetFirstFrameOfSource()
				   : mSourceFrames;
}

namespace
{

// The files that a person has made for renders: of listeners, and of effects.
void AddSettings(ClipRenderRequest const& inRequest, std::vector<std::filesystem::path>& ioFiles)
{
	if (inRequest.mListener && !inRequest.mListener->mFile.empty())
	{
		ioFiles.push_back(inRequest.mListener->mFile);
	}
	for (Effects::EffectSetup const& setup : inRequest.mEffects)
	{
		if (!setup.mFile.empty())
		{
			ioFiles.push_back(setup.mFile);
		}
	}
}

} // namespace

ProgrammePlan::ProgrammePlan(ClipRenderRequest const& inRequest)
	: mGain(inRequest.mGain),
	  mSpeed(inRequest.mSpeed),
	  mKeepsPitch(inRequest.mKeepsPitch),
	  mSemitones(inRequest.mSemitones),
	  mResampling(inRequest.mResampling),
	  mIsReversed(inRequest.mDirection == RenderDirection::kReverse),
	  mListener(inRequest.mListener)
{
	if (inRequest.mInputs.empty())
	{
		Refuse("no input given");
	}
	auto const& reduction = inRequest.mNoiseReduction;
	if (reduction && reduction->mLearn && inRequest.mInputs.size() > 1)
	{
		Refuse(
			"noise can be learned from a range of a single input only; render the inputs to separate files "
			"first");
	}
	auto const stretch = ChooseStretch(
		inRequest.mSpeed, inRequest.mKeepsPitch, inRequest.mSemitones, inRequest.mStretchEngine);
	OutputPlan outputs;
	outputs.mFiles = inRequest.mOtherOutputs;
	if (!inRequest.mOutput.empty())
	{
		outputs.mFiles.push_back(inRequest.mOutput);
	}
	outputs.mReplaces = inRequest.mReplace;
	for (ClipInput const& input : inRequest.mInputs)
	{
		mClips.push_back(OpenClip(input, inRequest.mNoiseReduction, stretch));
		outputs.mInputs.push_back(input.mPath);
	}
	AddSettings(inRequest, outputs.mInputs);
	outputs.Check();
	ChooseSampleRate(inRequest);
	ChooseLayouts(inRequest.mLayout);
	if (mListener)
	{
		CheckCanListenTo(mClips, inRequest.mLayout, mSampleRate);
	}
	PlaceClips(inRequest);
	mFades = ChooseFades(inRequest.mFadeIn, inRequest.mFadeOut, mFrames, mSampleRate);
}

bool ProgrammePlan::IsResampled() const
{
	return std::ranges::any_of(mClips, &PlannedClip::IsResampled);
}

bool ProgrammePlan::KeepsSamples() const
{
	return mGain == 1.0f && !mListener && mFades.IsNone() && !IsResampled() &&
		   std::ranges::all_of(
			   mClips, [](PlannedClip const& inClip) { return inClip.mLayout.KeepsSamples(); });
}

void ProgrammePlan::ChooseSampleRate(ClipRenderRequest const& inRequest)
{
	int const own = mClips.front().GetInfo().mSampleRate;
	mSampleRate = inRequest.mSampleRate.value_or(own);
	if (mSampleRate != own && (mSampleRate < kLowestSampleRate || mSampleRate > kHighestSampleRate))
	{
		Refuse("a sample rate of " + std::to_string(mSampleRate) + " Hz is out of range; use 1000 to 768000");
	}
	for (PlannedClip& clip : mClips)
	{
		ChooseReadingSpeed(clip, inRequest.mSpeed);
		clip.mSource->SetCountingRate(GetFrameRate());
	}
}

void ProgrammePlan::ChooseReadingSpeed(PlannedClip& ioClip, double inSpeed) const
{
	AudioFileInfo const& info = ioClip.GetInfo();
	double const wholeSpeed = inSpeed * info.mSampleRate / mSampleRate;
	double const speed = info.mStretch ? static_cast<double>(info.mSampleRate) / mSampleRate : wholeSpeed;
	bool const isEngine = mResampling == Sequence::Resampling::kEngine;
	double const lowest = isEngine ? kLowestSpeed : 0.0;
	double const highest = isEngine ? kHighestSpeed : static_cast<double>(RateConverter::kLargestStep);
	if (speed < lowest || speed > highest)
	{
		Refuse(QuotePath(info.mPath) + ": converting " + std::to_string(info.mSampleRate) + " Hz to " +
			   std::to_string(mSampleRate) +
			   " Hz at this speed is out of range; use a speed closer to 1 or a rate closer to the input's");
	}
	ioClip.mReadingSpeed = speed;
	ioClip.mFrames = std::llround(static_cast<double>(ioClip.mSourceFrames) / wholeSpeed);
	if (ioClip.mFrames < 1)
	{
		Refuse(QuotePath(info.mPath) +
			   ": at this speed the output is shorter than one sample; there is nothing to render");
	}
}

void ProgrammePlan::ChooseLayouts(LayoutRequest const& inRequest)
{
	PlannedClip const& widest =
		*std::ranges::max_element(mClips, [](PlannedClip const& inA, PlannedClip const& inB)
			{ return GetSourceLayout(inA).size() < GetSourceLayout(inB).size(); });
	LayoutRequest request = inRequest;
	request.mMixdown = std::nullopt;
	request.mLayout = MakeLayoutPlan(widest, request).GetOutputLayout();
	// Where no input has 5.1, the first one finds the mixdown wrong.
	auto const isSurround = [](PlannedClip const& inClip)
	{ return GetSourceLayout(inClip) == zorvmediatypes::Create51ChannelLayout(); };
	bool const hasSurround = std::ranges::any_of(mClips, isSurround);
	for (PlannedClip& clip : mClips)
	{
		bool const isMixedDown = !hasSurround || isSurround(clip);
		request.mMixdown = isMixedDown ? inRequest.mMixdown : std::nullopt;
		clip.mLayout = MakeLayoutPlan(clip, request);
	}
}

void ProgrammePlan::PlaceClips(ClipRenderRequest const& inRequest)
{
	std::int64_t end = 0;
	for (std::size_t i = 0; i < mClips.size(); ++i)
	{
		PlannedClip& clip = mClips[i];
		clip.mPosition = end;
		if (auto const& position = inRequest.mInputs[i].mPosition)
		{
			clip.mPosition =
				std::llround(static_cast<double>(position->ToSamples(mSampleRate)) / inRequest.mSpeed);
		}
		end = clip.mPosition + clip.mFrames;
		if (end > std::int64_t{kMostHours} * 3600 * mSampleRate)
		{
			Refuse(QuotePath(clip.GetInfo().mPath) + " would end beyond the limit of outputs, " +
				   std::to_string(kMostHours) + " hours");
		}
		mFrames = std::max(mFrames, end);
	}
	if (mIsReversed)
	{
		for (PlannedClip& clip : mClips)
		{
			clip.mPosition = mFrames - clip.mPosition - clip.mFrames;
		}
	}
}

} // namespace SonaroHost
