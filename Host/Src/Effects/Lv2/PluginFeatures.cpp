#include "PluginFeatures.h"

#include "UridMap.h"

#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/parameters/parameters.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace SonaroHost::Effects
{

namespace
{

// What a plugin prints is not for the person who renders: what failed is said by the host.
int Print(LV2_Log_Handle, LV2_URID, char const*, ...)
{
	return 0;
}

int PrintList(LV2_Log_Handle, LV2_URID, char const*, va_list)
{
	return 0;
}

} // namespace

PluginFeatures::PluginFeatures(Settings const& inSettings)
	: mWorker(inSettings.mIsRealTime),
	  mLog{nullptr, &Print, &PrintList},
	  mSampleRate(static_cast<float>(inSettings.mSampleRate)),
	  mMinFrames(static_cast<std::int32_t>(inSettings.mMinFrames)),
	  mMaxFrames(static_cast<std::int32_t>(inSettings.mMaxFrames)),
	  mSequenceBytes(static_cast<std::int32_t>(kAtomBytes))
{
	AddOption(LV2_PARAMETERS__sampleRate, LV2_ATOM__Float, sizeof(mSampleRate), &mSampleRate);
	AddOption(LV2_BUF_SIZE__minBlockLength, LV2_ATOM__Int, sizeof(mMinFrames), &mMinFrames);
	AddOption(LV2_BUF_SIZE__maxBlockLength, LV2_ATOM__Int, sizeof(mMaxFrames), &mMaxFrames);
	AddOption(LV2_BUF_SIZE__nominalBlockLength, LV2_ATOM__Int, sizeof(mMaxFrames), &mMaxFrames);
	AddOption(LV2_BUF_SIZE__sequenceSize, LV2_ATOM__Int, sizeof(mSequenceBytes), &mSequenceBytes);
	mOptions.push_back({LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr});

	Add(LV2_URID__map, UridMap::Get().GetMap());
	Add(LV2_URID__unmap, UridMap::Get().GetUnmap());
	Add(LV2_OPTIONS__options, mOptions.data());
	Add(LV2_LOG__log, &mLog);
	Add(LV2_WORKER__schedule, mWorker.GetSchedule());
	Add(LV2_BUF_SIZE__boundedBlockLength);
	Add(LV2_STATE__loadDefaultState);
	if (inSettings.mHasFixedBlocks)
	{
		Add(LV2_BUF_SIZE__fixedBlockLength);
		Add(LV2_BUF_SIZE__powerOf2BlockLength);
		Add(LV2_BUF_SIZE__coarseBlockLength);
	}
	if (inSettings.mIsRealTime)
	{
		Add(LV2_CORE__isLive);
	}
	for (LV2_Feature const& feature : mFeatures)
	{
		mPointers.push_back(&feature);
	}
	mPointers.push_back(nullptr);
}

void PluginFeatures::AddOption(
	char const* inUri, char const* inType, std::uint32_t inSize, void const* inValue)
{
	UridMap& map = UridMap::Get();
	mOptions.push_back({LV2_OPTIONS_INSTANCE, 0, map.Map(inUri), inSize, map.Map(inType), inValue});
}

bool PluginFeatures::IsSupported(std::string const& inUri)
{
	// Those without data say what the host does anyway: it never runs a plugin in place, and keeps its promises on blocks.
	static constexpr std::string_view kSupported[] = {LV2_URID__map, LV2_URID__unmap, LV2_OPTIONS__options,
		LV2_LOG__log, LV2_WORKER__schedule, LV2_BUF_SIZE__boundedBlockLength, LV2_BUF_SIZE__fixedBlockLength,
		LV2_BUF_SIZE__powerOf2BlockLength, LV2_BUF_SIZE__coarseBlockLength, LV2_STATE__loadDefaultState,
		LV2_STATE__threadSafeRestore, LV2_STATE__interface, LV2_STATE__mapPath, LV2_STATE__freePath,
		LV2_CORE__inPlaceBroken, LV2_CORE__hardRTCapable, LV2_CORE__isLive};
	return std::find(std::begin(kSupported), std::end(kSupported), inUri) != std::end(kSupported);
}

} // namespace SonaroHost::Effects
