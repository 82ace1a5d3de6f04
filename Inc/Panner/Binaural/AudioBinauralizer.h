#pragma once

#include "Sonaro/IAudioBinauralizer.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/ambi/AmbisonicsBinauralizer.h"
#include "zorvaudiofilters/ambisonics/binauralizer/HRIR.h"

#include <atomic>
#include <memory>
#include <string>

namespace SN
{

// Decides when sound is rendered for two ears and when it is mixed instead, and how the ears reach other layouts; the
// renderer is dsp::ambi::AmbisonicsBinauralizer. Orientation and bypass are read once for each block.
class AudioBinauralizer final : public Implements<AudioBinauralizer, IAudioBinauralizer>
{
public:
	AudioBinauralizer();
	~AudioBinauralizer() override;

	void Init(unsigned long long inSampleRate, unsigned inMaxFrames) override;
	void Reset() override;
	void SetOrientation(float const& inPitch, float const& inYaw, float const& inRoll) override;
	void GetOrientation(float& outPitch, float& outYaw, float& outRoll) override;
	void SetHRIRName(std::string const& inName) override;
	std::string GetHRIRName() override { return mHRIRName; }
	AudioChannelMix::MixFunction GetProcessFunction(
		unsigned long long inInputChannels, unsigned inOutputChannels) override;
	void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING override;
	void SetBypass(bool inBypass) override { mBypass.exchange(inBypass); }
	bool GetBypass() override { return mBypass.load(); }
	InterfaceRef<IAudioBinauralizer> GetSharedFromThis() override;

private:
	void LoadResponses();
	// How many of the channels that the engine hears there are, and how many of them are silent.
	struct ChannelCounts
	{
		unsigned long long mPresent = 0;
		unsigned long long mSilent = 0;
	};
	ChannelCounts CountChannels(dsp::AudioBuffer const& inInput) const;
	void Render(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput);

	unsigned long long mSetting = 0;
	unsigned mMaxFrames = 0;
	std::unique_ptr<dsp::ambi::AmbisonicsBinauralizer> mEngine;
	boost::shared_ptr<zorvaudiofilters::ambisonics::binauralizer::HRIR> mHRIR;
	// From the two ears to the output's layout; empty where that has two channels.
	AudioChannelMix::MixFunction mOutputMix;
	// From the input's layout to the output's.
	AudioChannelMix::MixFunction mFallbackMix;
	// The two ears where there is mOutputMix.
	dsp::AudioBuffer mStereoBuffer;
	// Pitch, yaw and roll, in degrees.
	std::atomic<float> mOrientation[3] = {0.0f, 0.0f, 0.0f};
	std::string mHRIRName;
	std::atomic<bool> mBypass{true};
};

} // namespace SN
