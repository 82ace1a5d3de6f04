#pragma once

#include "Effects/AlignedSound.h"
#include "Effects/LateSwitch.h"
#include "PluginInstance.h"
#include "PluginStart.h"
#include "Sonaro/IAudioFilter.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// How a plugin's ports meet the channels of a layout.
enum class ChannelUse
{
	// Port by port.
	kDirect,
	// A plugin of one channel runs for each of them.
	kOneForEach,
	// A stereo plugin hears mono on both sides; the mean of its sides comes out.
	kStereoOnMono,
};

// Throws a HostError of the kind kRequest where they do not fit.
ChannelUse ChooseChannelUse(EffectDescription const& inDescription, unsigned inChannels);

// A plugin as an effect of the engine. Its parameters are the plugin's controls, and after them the host's own bypass.
//
// Latency  What GetLatency gives grows when the plugin comes to state more; what is heard is late by what it was at first.
// History  Every plugin may have one, since none says that it has not.
// Errors   What is not a finite number in the output raises an EffectFault.
class PluginFilter final : public SN::Implements<PluginFilter, SN::IAudioFilter>
{
public:
	struct Terms
	{
		double mSampleRate = 48000.0;
		unsigned mMaxFrames = 0;
		unsigned mChannels = 0;
		bool mIsRealTime = false;

		bool operator==(Terms const&) const = default;
	};

	// Throws a HostError when the plugin does not fit the channels or does not start.
	PluginFilter(std::shared_ptr<PluginStart const> inStart, Terms const& inTerms);

	void SetParameter(unsigned inIndex, float inValue) SONARO_NONBLOCKING override;
	void SetParameterFromMainThread(unsigned inIndex, float inValue) override
	{
		SetParameter(inIndex, inValue);
	}
	float GetParameter(unsigned inIndex) override;
	void GetParameterText(std::u16string& outText, unsigned inIndex) override;
	unsigned GetLatency() SONARO_NONBLOCKING override { return mFoundLatency; }
	void Clone(SN::InterfaceRef<SN::IAudioFilter>& outFilter, bool inRealTime) override;
	bool HasHistory() override { return true; }
	void Initialize(bool inRealTime, unsigned inMaxFrames, SN::FrameRate const& inFrameRate,
		unsigned inChannels) override;
	void Process(dsp::AudioBuffer& ioBuffer, SN::TickTime inTime, bool inFlag) SONARO_NONBLOCKING override;
	void Shutdown() override;
	unsigned GetNumChannels() SONARO_NONBLOCKING override { return mTerms.mChannels; }
	SN::TickTime GetOfflineLatency() override { return SN::kTimeZero; }
	SN::InterfaceRef<SN::IProcessedAudioStream> CreateProcessedStream(
		SN::OfflineAudioReadCallback const&, unsigned, SN::TickTime const&) override
	{
		return {};
	}

private:
	struct Input
	{
		PluginInstance* mInstance = nullptr;
		std::size_t mIndex = 0;
	};

	void MakeInstances();
	std::unique_ptr<PluginInstance> MakeInstance() const;
	unsigned MeasureLatency() const;
	void MakeAligned();
	unsigned GetLongestRun() const;
	void NoteLatency();
	std::size_t GetBypassIndex() const { return mParameters.size() - 1; }
	// The parameters that have changed go to the instances.
	void UpdateControls(bool inAll);
	// Sets the plugin's own bypass for its next run, and returns for how many of the next frames, at most.
	unsigned SetEnabled(unsigned inCount);
	void SetControl(std::size_t inIndex, float inValue);
	void FillSilence(dsp::AudioBuffer& ioBuffer) const;
	void Read(dsp::AudioBuffer& inBuffer, unsigned inFirst, unsigned inCount);
	void Write(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount) const;
	void RunInstances(unsigned inFrames);

	std::shared_ptr<PluginStart const> mStart;
	Terms mTerms;
	ChannelUse mUse;
	// The length of all blocks, for a plugin that needs it; otherwise 0.
	unsigned mFixedFrames;
	std::vector<std::atomic<float>> mParameters;
	std::atomic<bool> mIsEdited{false};
	std::vector<std::unique_ptr<PluginInstance>> mInstances;
	// The inputs and outputs of the instances, one for each channel; two for stereo on mono.
	std::vector<Input> mInputs;
	std::vector<float const*> mOutputs;
	// In frames: what is planned for, what the last run had, the largest one.
	unsigned mLatency = 0;
	unsigned mRunLatency = 0;
	unsigned mFoundLatency = 0;
	// Absent for a plugin that needs neither delays nor fades.
	std::optional<AlignedSound> mAligned;
	// The plugin's own bypass, where the plugin is late.
	std::optional<LateSwitch> mEnabled;
	// How much of a fixed block is filled.
	unsigned mFilled = 0;
};

} // namespace SonaroHost::Effects
