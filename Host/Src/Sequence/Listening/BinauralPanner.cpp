#include "BinauralPanner.h"

#include "Sonaro/AudioBinauralizerFactory.h"
#include "zorvaccelerate/ChannelMixing.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvaudiofilters/ambisonics/binauralizer/HRIR.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace SonaroHost::Sequence
{

namespace
{

using dsp::ambi::AmbisonicsBinauralizer;

constexpr unsigned kTransformFrames = AmbisonicsBinauralizer::kTransformFrames;

unsigned GetWholeRate(SN::FrameRate const& inFrameRate)
{
	return static_cast<unsigned>(std::lround(inFrameRate.GetSamplesPerSecond()));
}

} // namespace

BinauralPanner::BinauralPanner(SN::AudioChannelLayout const& inInput, Listener const& inListener,
	StageClock const& inClock, unsigned inMaxBlockSize)
	: Implements(inInput, zorvmediatypes::CreateStereoChannelLayout()),
	  mListener(inListener),
	  mClock(inClock),
	  mMaxBlockSize(std::max(inMaxBlockSize, kTransformFrames)),
	  mField(Ears::kNumComponents, mMaxBlockSize),
	  mDiscarded(Ears::kNumEars, kTransformFrames),
	  mZeros(mMaxBlockSize)
{
	for (std::vector<float> const& row : FindField(inInput))
	{
		Sum& sum = mSums.emplace_back();
		for (std::size_t channel = 0; channel < row.size(); ++channel)
		{
			if (row[channel] != 0.0f)
			{
				sum.mChannels.push_back(channel);
				sum.mGains.push_back(row[channel]);
			}
		}
	}
	MakeRenderer();
}

void BinauralPanner::MakeRenderer()
{
	unsigned const rate = GetWholeRate(mClock.GetFrameRate());
	if (auto const& ears = mListener.mEars)
	{
		mOther = std::make_unique<AmbisonicsBinauralizer>(
			rate, mMaxBlockSize, 1, dsp::ambi::ChannelOrdering::kACN, dsp::ambi::Normalization::kSN3D);
		mOther->Load(ears->GetDescriptor(), ears->GetLeftData(), ears->GetRightData());
		return;
	}
	mBuiltIn = SN::AudioBinauralizerFactory::CreateAudioBinauralizer();
	mBuiltIn->Init(rate, mMaxBlockSize);
	mBuiltIn->GetProcessFunction(Ears::kNumComponents, Ears::kNumEars);
	mBuiltIn->SetBypass(false);
}

std::int64_t BinauralPanner::GetSettlingFrames(Listener const& inListener, SN::FrameRate const& inFrameRate)
{
	return AmbisonicsBinauralizer::GetSettlingFrames(
		inListener.mEars ? inListener.mEars->GetDescriptor()
						 : zorvaudiofilters::ambisonics::binauralizer::GetDefaultHRIR()->GetDescriptor(),
		GetWholeRate(inFrameRate));
}

SN::InterfaceRef<SN::IAudioPanProcessor> BinauralPanner::Clone(SN::FrameRate const&, unsigned)
{
	return zorvcore::classref::MakeObject<BinauralPanner>(mInput, mListener, mClock.Clone(), mMaxBlockSize);
}

void BinauralPanner::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, SN::TickTime const&)
{
	dsp::AudioSubBuffer ears;
	ears.Init(std::min<unsigned long long>(Ears::kNumEars, outOutput.GetNumChannels()));
	mClock.Take(std::min(inInput.GetUseSize(), outOutput.GetUseSize()),
		[&](FrameRun const& inRun, unsigned inOffset)
		{
			bool const follows = mNext == inRun.mFirst && mStep == inRun.mStep;
			if (!mNext || (!follows && mClock.IsJumping()))
			{
				Begin(inRun);
			}
			auto const count = static_cast<unsigned>(inRun.mCount);
			Encode(inInput, inOffset, count);
			ears.Assign(outOutput, inOffset);
			ears.SetUseSize(count);
			Render(ears);
			mNext = inRun.GetFrame(inRun.mCount);
			mStep = inRun.mStep;
		});
}

// Silence up to where a run begins in its block of transforms lets them begin where those of the whole do.
void BinauralPanner::Begin(FrameRun const& inRun)
{
	if (mOther)
	{
		mOther->Reset(GetWholeRate(mClock.GetFrameRate()), mMaxBlockSize);
	}
	else
	{
		mBuiltIn->Reset();
	}
	constexpr std::int64_t kBlock = kTransformFrames;
	std::int64_t const place = inRun.mFirst * inRun.mStep % kBlock;
	mField.SetUseSize(static_cast<unsigned>((place + kBlock) % kBlock));
	mDiscarded.SetUseSize(mField.GetUseSize());
	if (mField.GetUseSize() > 0)
	{
		mField.ZeroBuffers();
		mField.ClearSilenceFlags(dsp::SilenceFlags::First(Ears::kNumComponents));
		Render(mDiscarded);
	}
}

void BinauralPanner::Encode(dsp::AudioBuffer const& inInput, unsigned inOffset, unsigned inCount)
{
	mField.SetUseSize(inCount);
	// A field is one of all components, none of which counts as silent.
	mField.ClearSilenceFlags(dsp::SilenceFlags::First(Ears::kNumComponents));
	for (unsigned component = 0; component < Ears::kNumComponents; ++component)
	{
		Sum const& sum = mSums[component];
		std::array<float const*, dsp::AudioBuffer::kMaxChannels> inputs;
		for (std::size_t i = 0; i < sum.mChannels.size(); ++i)
		{
			bool const isSilent = inInput.IsChannelSilent(sum.mChannels[i]);
			inputs[i] = isSilent ? mZeros.data() : inInput.GetChannel(sum.mChannels[i]) + inOffset;
		}
		zorvaccelerate::utility::WeightedSum(inCount, static_cast<unsigned>(sum.mChannels.size()),
			inputs.data(), sum.mGains.data(), mField.GetChannel(component));
	}
}

void BinauralPanner::Render(dsp::AudioBuffer& outEars)
{
	if (outEars.GetNumChannels() < Ears::kNumEars)
	{
		return;
	}
	HeadAngles const angles = mListener.GetAngles();
	if (mOther)
	{
		mOther->Process({0, angles.mYaw, angles.mPitch, angles.mRoll, true}, mField.GetUseSize(),
			mField.GetNumChannels(), outEars.GetNumChannels(), mField.GetChannels(), outEars.GetChannels());
		outEars.ClearSilenceFlags(dsp::SilenceFlags::First(Ears::kNumEars));
		return;
	}
	mBuiltIn->SetOrientation(angles.mPitch, angles.mYaw, angles.mRoll);
	mBuiltIn->Process(mField, outEars);
}

} // namespace SonaroHost::Sequence
