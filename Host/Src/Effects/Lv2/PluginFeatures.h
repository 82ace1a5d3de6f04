#pragma once

#include "PluginWorker.h"

#include <lilv/lilv.h>
#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/options/options.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// What the host offers to one instance of a plugin.
class PluginFeatures
{
public:
	struct Settings
	{
		double mSampleRate = 48000.0;
		// The lengths of blocks; fixed where both are equal.
		unsigned mMinFrames = 1;
		unsigned mMaxFrames = 0;
		// For a playback, which has to keep up.
		bool mIsRealTime = false;
		bool mHasFixedBlocks = false;
	};

	explicit PluginFeatures(Settings const& inSettings);
	PluginFeatures(PluginFeatures const&) = delete;
	PluginFeatures& operator=(PluginFeatures const&) = delete;

	// Ends with a null.
	LV2_Feature const* const* Get() const { return mPointers.data(); }
	PluginWorker& GetWorker() { return mWorker; }

	// Whether a plugin that requires it finds it here.
	static bool IsSupported(std::string const& inUri);

private:
	void Add(char const* inUri, void* inData = nullptr) { mFeatures.push_back({inUri, inData}); }
	void AddOption(char const* inUri, char const* inType, std::uint32_t inSize, void const* inValue);

	PluginWorker mWorker;
	LV2_Log_Log mLog;
	float mSampleRate;
	std::int32_t mMinFrames;
	std::int32_t mMaxFrames;
	std::int32_t mSequenceBytes;
	std::vector<LV2_Options_Option> mOptions;
	std::vector<LV2_Feature> mFeatures;
	std::vector<LV2_Feature const*> mPointers;
};

// The room of an atom port that states none.
inline constexpr std::size_t kAtomBytes = 8192;

} // namespace SonaroHost::Effects
