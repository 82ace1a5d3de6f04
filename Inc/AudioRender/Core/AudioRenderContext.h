#pragma once

#include "AudioRender/Core/TempBufferPool.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Prefetcher.h"
#include "Sonaro/RenderContextSettings.h"

#include <map>
#include <memory>
#include <tuple>
#include <vector>

namespace SN
{

class IRenderableAudioComponentParam;

// The one context class. Beyond the interface it serves its nodes, which reach it by querying for the
// class: the scratch pool, and the maps by which a graph reuses nodes. Keys are compared by the identity
// of their object. Each Find gives an empty reference when the key is absent; each Add keeps an entry
// that is there already, except AddTrackRenderer, which overwrites.
class AudioRenderContext final : public Implements<AudioRenderContext, IAudioRenderContext>
{
public:
	static constexpr Identifier<AudioRenderContext> kIdentifier{0x567de40dcdb58b3cull, 0x56f929f93f18a083ull};

	// See ISonaroFactory::CreateAudioRenderContext.
	static int Create(RenderContextSettings const& inSettings, InterfaceRef<IAudioRenderContext>* outContext);
	// The settings for background work that stands beside inSource; see the factory.
	static RenderContextSettings SettingsForPrefetchThread(InterfaceRef<IAudioRenderContext> const& inSource);

	AudioRenderContext();

	void PushNestingLevel() override;
	void PopNestingLevel() override;
	void IncrementInstanceIndex() override { ++mInstanceIndex; }
	void DecrementInstanceIndex() override { --mInstanceIndex; }
	void Clear() override;
	bool IsPrefetchEnabled() SONARO_NONBLOCKING override { return mSettings.mPrefetchEnabled; }
	bool GetFilterRenderFlag() SONARO_NONBLOCKING override { return mFilterRenderFlag; }
	void SetFilterRenderFlag(bool inFlag) override { mFilterRenderFlag = inFlag; }
	bool IsImmediateRender() SONARO_NONBLOCKING override { return mImmediateRender; }
	void SetImmediateRender(bool inImmediate) override { mImmediateRender = inImmediate; }
	bool IsDelayCompensationDisabled() SONARO_NONBLOCKING override { return mDelayCompensationDisabled; }
	void SetDelayCompensationDisabled(bool inDisabled) override { mDelayCompensationDisabled = inDisabled; }
	bool IsNotTopLevelPlayback() SONARO_NONBLOCKING override
	{
		return !IsPrefetchEnabled() || GetNestingDepth() != 0;
	}
	bool GetContextOption() override { return mSettings.mContextOption; }
	TickTime GetRangeStart() override { return mSettings.mRangeStart; }
	TickTime GetRangeEnd() override { return mSettings.mRangeEnd; }
	ImmutableString GetRenderName() override { return mSettings.mRenderName; }
	bool IsTrackCacheEnabled() override { return mTrackCacheEnabled; }
	void SetTrackCacheEnabled(bool inEnabled) override { mTrackCacheEnabled = inEnabled; }
	bool GetMulticamOption() override { return mMulticamOption; }
	void SetMulticamOption(bool inOption) override { mMulticamOption = inOption; }
	RenderQuality GetRenderQuality() override { return mSettings.mRenderQuality; }
	unsigned GetMaxBlockSize() SONARO_NONBLOCKING override { return mSettings.mMaxBlockSize; }
	unsigned GetNestingDepth() SONARO_NONBLOCKING override { return mNestingDepth; }
	InterfaceRef<ICachedAudioGenerator> FindCachedGenerator(InterfaceRef<UnknownBase> inKey) override;
	InterfaceRef<IAudioGenerator> FindTrackRenderer(InterfaceRef<UnknownBase> inKey) override
	{
		return Find(mTrackRendererMap, inKey);
	}

	unsigned GetControlInterval() const { return mSettings.mControlInterval; }
	TickTime GetMeterInterval() const { return mSettings.mMeterInterval; }
	unsigned GetInstanceIndex() const { return mInstanceIndex; }
	Prefetcher* GetPrefetcher() const { return mSettings.mPrefetcher; }
	bool GetFaderParamFlag() const { return mSettings.mFaderParamFlag; }
	bool GetPannerParamFlag() const { return mSettings.mPannerParamFlag; }
	bool GetFilterParamFlag() const { return mSettings.mFilterParamFlag; }
	bool GetSendParamFlag() const { return mSettings.mSendParamFlag; }
	TempBufferPool& GetTempBufferPool() const { return *mTempBufferPool; }

	// Finds a parameter's detached copy.
	InterfaceRef<IRenderableAudioComponentParam> FindParameter(InterfaceRef<UnknownBase> const& inKey) const
	{
		return Find(mParameterMap, inKey);
	}
	void AddParameter(InterfaceRef<UnknownBase> const& inKey,
		InterfaceRef<IRenderableAudioComponentParam> const& inParameter)
	{
		mParameterMap.emplace(inKey, inParameter);
	}
	InterfaceRef<IAudioGenerator> FindStreamRenderer(InterfaceRef<UnknownBase> const& inKey) const
	{
		return Find(mStreamRendererMap, inKey);
	}
	void AddStreamRenderer(
		InterfaceRef<UnknownBase> const& inKey, InterfaceRef<IAudioGenerator> const& inRenderer)
	{
		mStreamRendererMap.emplace(inKey, inRenderer);
	}
	InterfaceRef<IAudioGenerator> FindContentRenderer(InterfaceRef<UnknownBase> const& inKey,
		FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate) const;
	void AddContentRenderer(InterfaceRef<UnknownBase> const& inKey, FrameRate const& inFrameRate,
		FrameRate const& inMediaFrameRate, InterfaceRef<IAudioGenerator> const& inRenderer);
	// Finds a node's clone.
	InterfaceRef<UnknownBase> FindClone(InterfaceRef<UnknownBase> const& inNode) const
	{
		return Find(mCloneMap, inNode);
	}
	void AddClone(InterfaceRef<UnknownBase> const& inNode, InterfaceRef<UnknownBase> const& inClone)
	{
		mCloneMap.emplace(inNode, inClone);
	}
	void ClearCloneMap() { mCloneMap.clear(); }
	void AddTrackRenderer(
		InterfaceRef<UnknownBase> const& inKey, InterfaceRef<IAudioGenerator> const& inRenderer)
	{
		mTrackRendererMap[inKey] = inRenderer;
	}
	void AddCachedGenerator(
		InterfaceRef<UnknownBase> const& inKey, InterfaceRef<ICachedAudioGenerator> const& inGenerator);
	// The group, and how many instances were added under its key.
	InterfaceRef<IAudioGenerator> FindTrackGroup(
		InterfaceRef<UnknownBase> const& inKey, unsigned long long& outCount) const;
	void AddTrackGroup(InterfaceRef<UnknownBase> const& inKey, InterfaceRef<IAudioGenerator> const& inGroup);

private:
	// The object, and the ticks per frame of the output and of the media.
	using ContentKey = std::tuple<InterfaceRef<UnknownBase>, std::int64_t, std::int64_t>;
	using GeneratorByKey = std::map<InterfaceRef<UnknownBase>, InterfaceRef<IAudioGenerator>>;
	using CachedGeneratorByKey = std::map<InterfaceRef<UnknownBase>, InterfaceRef<ICachedAudioGenerator>>;

	template <class Map, class Key>
	static typename Map::mapped_type Find(Map const& inMap, Key const& inKey)
	{
		auto const found = inMap.find(inKey);
		return found == inMap.end() ? typename Map::mapped_type() : found->second;
	}

	RenderContextSettings mSettings;
	bool mFilterRenderFlag = false;
	bool mTrackCacheEnabled = false;
	bool mMulticamOption = false;
	bool mImmediateRender = false;
	bool mDelayCompensationDisabled = false;
	unsigned mNestingDepth = 0;
	unsigned mInstanceIndex = 0;
	// The outer nesting levels, the innermost at the end.
	std::vector<unsigned> mSavedInstanceIndices;
	std::vector<std::shared_ptr<CachedGeneratorByKey>> mSavedGeneratorMaps;
	// The map of the current level; null after Clear, until something is added.
	std::shared_ptr<CachedGeneratorByKey> mGeneratorMap;
	std::map<InterfaceRef<UnknownBase>, InterfaceRef<IRenderableAudioComponentParam>> mParameterMap;
	GeneratorByKey mTrackRendererMap;
	GeneratorByKey mTrackGroupMap;
	std::map<InterfaceRef<UnknownBase>, unsigned long long> mTrackGroupCounts;
	GeneratorByKey mStreamRendererMap;
	std::map<ContentKey, InterfaceRef<IAudioGenerator>> mContentRendererMap;
	std::map<InterfaceRef<UnknownBase>, InterfaceRef<UnknownBase>> mCloneMap;
	InterfaceRef<TempBufferPool> mTempBufferPool;
};

} // namespace SN
