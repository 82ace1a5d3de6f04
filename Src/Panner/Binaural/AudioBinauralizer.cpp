#include "Panner/Binaural/AudioBinauralizer.h"

#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>

namespace SN
{

namespace
{

using dsp::ambi::AmbisonicsBinauralizer;

constexpr unsigned kOrder = 1;

unsigned GetStereoChannelCount()
{
	static auto const sCount = static_cast<unsigned>(VX::kAudioChannelLayout_Stereo.size());
	return sCount;
}

void ZeroFrom(dsp::AudioBuffer& ioBuffer, unsigned inFrame)
{
	if (inFrame < ioBuffer.GetUseSize())
	{
		dsp::AudioSubBuffer rest;
		rest.Init(ioBuffer.GetNumChannels());
		rest.Assign(ioBuffer, inFrame);
		rest.Zero();
	}
}

} // namespace

AudioBinauralizer::AudioBinauralizer() = default;

AudioBinauralizer::~AudioBinauralizer()
{
	if (mEngine)
	{
		mEngine->Unload();
	}
}

void AudioBinauralizer::Init(unsigned long long inSampleRate, unsigned inMaxFrames)
{
	if (mEngine && mSetting == inSampleRate && mMaxFrames == inMaxFrames)
	{
		return;
	}
	mSetting = inSampleRate;
	mMaxFrames = inMaxFrames;
	if (mEngine)
	{
		mEngine->Unload();
	}
	mEngine = std::make_unique<AmbisonicsBinauralizer>(
		mSetting, mMaxFrames, kOrder, dsp::ambi::ChannelOrdering::kACN, dsp::ambi::Normalization::kSN3D);
	LoadResponses();
}

void AudioBinauralizer::Reset()
{
	if (mEngine)
	{
		mEngine->Reset(mSetting, mMaxFrames);
	}
}

void AudioBinauralizer::SetOrientation(float const& inPitch, float const& inYaw, float const& inRoll)
{
	mOrientation[0].exchange(inPitch);
	mOrientation[1].exchange(inYaw);
	mOrientation[2].exchange(inRoll);
}

void AudioBinauralizer::GetOrientation(float& outPitch, float& outYaw, float& outRoll)
{
	outPitch = mOrientation[0].load();
	outYaw = mOrientation[1].load();
	outRoll = mOrientation[2].load();
}

void AudioBinauralizer::SetHRIRName(std::string const& inName)
{
	if (&inName != &mHRIRName)
	{
		if (inName == mHRIRName)
		{
			return;
		}
		mHRIRName = inName;
	}
	LoadResponses();
}

void AudioBinauralizer::LoadResponses()
{
	if (!mEngine)
	{
		return;
	}
	if (mHRIRName.empty())
	{
		mHRIR = zorvaudiofilters::ambisonics::binauralizer::GetDefaultHRIR();
	}
	if (mHRIR)
	{
		mEngine->Load(mHRIR->GetDescriptor(), mHRIR->GetLeftData(), mHRIR->GetRightData());
	}
}

AudioChannelMix::MixFunction AudioBinauralizer::GetProcessFunction(
	unsigned long long inInputChannels, unsigned inOutputChannels)
{
	unsigned const stereo = GetStereoChannelCount();
	auto const outputs = static_cast<int>(inOutputChannels);
	mOutputMix = nullptr;
	if (inOutputChannels != stereo)
	{
		mOutputMix = AudioChannelMix::GetMixFunctionByChannels(stereo, outputs);
		mStereoBuffer.Init(stereo, mMaxFrames);
	}
	mFallbackMix = AudioChannelMix::GetMixFunctionByChannels(static_cast<unsigned>(inInputChannels), outputs);
	return [self = GetSharedFromThis()](dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
	{ self->Process(inInput, outOutput); };
}

AudioBinauralizer::ChannelCounts AudioBinauralizer::CountChannels(dsp::AudioBuffer const& inInput) const
{
	ChannelCounts counts;
	counts.mPresent =
		mEngine ? std::min<unsigned long long>(mEngine->GetNumChannels(), inInput.GetNumChannels()) : 0;
	for (unsigned long long channel = 0; channel < counts.mPresent; ++channel)
	{
		counts.mSilent += inInput.IsChannelSilent(channel) ? 1 : 0;
	}
	return counts;
}

void AudioBinauralizer::Process(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING
{
	ChannelCounts const channels = CountChannels(inInput);
	if (channels.mSilent > 0 && channels.mSilent == channels.mPresent)
	{
		outOutput.Zero();
	}
	else if (channels.mSilent > 0 || mBypass.load())
	{
		mFallbackMix(inInput, outOutput);
	}
	else if (mEngine && mHRIR)
	{
		Render(inInput, outOutput);
	}
}

void AudioBinauralizer::Render(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	dsp::AudioBuffer& target = mOutputMix ? mStereoBuffer : outOutput;
	if (target.GetNumChannels() < AmbisonicsBinauralizer::kNumEars)
	{
		// The output has no place for two ears, as GetProcessFunction was to say.
		outOutput.Zero();
		return;
	}
	if (mOutputMix)
	{
		mStereoBuffer.SetUseSize(std::min(outOutput.GetUseSize(), mMaxFrames));
	}
	unsigned const frames = std::min(target.GetUseSize(), inInput.GetUseSize());
	dsp::ambi::EulerAngle const angle{
		0, mOrientation[1].load(), mOrientation[0].load(), mOrientation[2].load(), true};
	mEngine->Process(angle, frames, inInput.GetNumChannels(), outOutput.GetNumChannels(),
		inInput.GetChannels(), target.GetChannels());
	target.ClearSilenceFlags(dsp::SilenceFlags::First(AmbisonicsBinauralizer::kNumEars));
	ZeroFrom(target, frames);
	if (mOutputMix)
	{
		mOutputMix(target, outOutput);
		ZeroFrom(outOutput, target.GetUseSize());
	}
}

InterfaceRef<IAudioBinauralizer> AudioBinauralizer::GetSharedFromThis()
{
	return InterfaceRef<IAudioBinauralizer>::FromThis(this);
}

} // namespace SN
