#pragma once

#include "Parameter/ParameterPort.h"
#include "PluginData.h"
#include "PluginFeatures.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// A plugin at work, connected to memory of its own.
//
// Threads  One at a time; the constructor and Restore under the lock of the World. Run neither allocates nor locks, but
//          for what the plugin does.
class PluginInstance
{
public:
	// Throws a HostError when the plugin does not start.
	PluginInstance(std::shared_ptr<PluginData const> inData, PluginFeatures::Settings const& inSettings);
	// An instance that was left in the middle of a run, as after a crash, is never touched again: it stays in memory.
	~PluginInstance();
	PluginInstance(PluginInstance const&) = delete;
	PluginInstance& operator=(PluginInstance const&) = delete;

	// These throw a HostError when the plugin crashes.

	// What a state holds besides values of ports. Before Activate.
	void Restore(LilvState const* inState);
	// By the index of the control in the description. A parameter that has another value now gets it by a message at that
	// frame of the next run, which is not before those of former calls.
	void SetControl(std::size_t inControl, float inValue, std::uint32_t inFrame = 0);
	// Lets a parameter get its value whatever it was.
	void ForgetParameter(std::size_t inControl);
	// By the index of the text, by a message in the next run.
	void SetText(std::size_t inText, std::string const& inValue);
	// Forgets what was heard before.
	void Activate();
	void Deactivate();
	// A run without frames, so that what came with messages is there from the first one on.
	void TakeMessages();
	// A run over silence, after which the latency is known.
	void Probe(std::uint32_t inFrames);

	// The audio ports that count, in their order, with room for the longest block.
	float* GetInput(std::size_t inIndex) { return mInputs[inIndex].mMemory; }
	// Lets the plugin hear somebody else's samples from the next run on.
	void ConnectInput(std::size_t inIndex, float* inSamples);
	float const* GetOutput(std::size_t inIndex) const { return mOutputs[inIndex]; }

	// Processes the first so many frames of the inputs into the outputs. What the plugin does wrong is the caller's to
	// catch.
	void Run(std::uint32_t inFrames);
	// In frames, as the plugin reported it in the last run; 0 for one that reports none.
	unsigned GetLatency() const;

private:
	struct FreeInstance
	{
		void operator()(LilvInstance* inInstance) const { lilv_instance_free(inInstance); }
	};
	// The memory of an atom port, in units that are aligned as atoms have to be.
	struct AtomPort
	{
		std::size_t mPort = 0;
		bool mIsInput = false;
		std::vector<std::uint64_t> mMemory;
	};

	struct Input
	{
		std::uint32_t mPort = 0;
		float* mMemory = nullptr;
		float* mConnected = nullptr;
	};

	// Calls the plugin, and survives it.
	template <class Call>
	void Guard(Call const& inCall);
	// The memory of a port; null for one that stays unconnected.
	void* MakeMemory(std::size_t inPort);
	void* MakeAtoms(std::size_t inPort);
	float* MakeSamples(std::size_t inPort);
	float* MakeValue(std::size_t inPort);
	void ResetAtoms();
	void Free();
	// After a run, when the messages are read.
	void ResetParameters();

	std::shared_ptr<PluginData const> mData;
	PluginFeatures::Settings mSettings;
	std::unique_ptr<PluginFeatures> mFeatures;
	// One for each port of the plugin; those of control ports are connected.
	std::vector<float> mValues;
	// The index of the port of each control.
	std::vector<std::size_t> mControlPorts;
	std::vector<AtomPort> mAtoms;
	// What ports at the rate of samples are connected to.
	std::vector<std::vector<float>> mSamples;
	std::vector<Input> mInputs;
	std::vector<float*> mOutputs;
	float const* mLatency = nullptr;
	// What a parameter is to be, and what its last message said, by its control; not-a-number for nothing.
	std::vector<float> mWanted;
	std::vector<float> mSent;
	std::optional<ParameterPort> mParameterPort;
	LV2_URID mSequenceType;
	LV2_URID mChunkType;
	bool mIsActive = false;
	bool mWasActive = false;
	bool mIsInRun = false;
	std::unique_ptr<LilvInstance, FreeInstance> mInstance;
};

} // namespace SonaroHost::Effects
