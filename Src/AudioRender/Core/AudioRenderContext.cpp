#include "AudioRender/Core/AudioRenderContext.h"

namespace SN
{

int AudioRenderContext::Create(
	RenderContextSettings const& inSettings, InterfaceRef<IAudioRenderContext>* outContext)
{
	auto const context = zorvcore::classref::MakeObject<AudioRenderContext>();
	if (inSettings.mPrefetchEnabled && !inSettings.mPrefetcher)
	{
		return eNullPointer;
	}
	if (inSettings.mRangeStart < -kTimeMax || inSettings.mRangeEnd > kTimeMax)
	{
		return eInvalidArgument;
	}
	context->mSettings = inSettings;
	*outContext = context;
	return kSuccess;
}

RenderContextSettings AudioRenderContext::SettingsForPrefetchThread(
	InterfaceRef<IAudioRenderContext> const& inSource)
{
	InterfaceRef<AudioRenderContext> const source(inSource);
	RenderContextSettings settings = source->mSettings;
	settings.mPrefetchEnabled = false;
	settings.mContextOption = false;
	settings.mRangeStart = kTimeZero;
	settings.mRangeEnd = kTimeZero;
	settings.mPrefetcher = nullptr;
	settings.mRenderName = ImmutableString();
	return settings;
}

AudioRenderContext::AudioRenderContext()
	: mGeneratorMap(std::make_shared<CachedGeneratorByKey>()),
	  mTempBufferPool(zorvcore::classref::MakeObject<TempBufferPool>())
{
}

void AudioRenderContext::PushNestingLevel()
{
	mSavedInstanceIndices.push_back(mInstanceIndex);
	mInstanceIndex = 0;
	mSavedGeneratorMaps.push_back(mGeneratorMap);
	mGeneratorMap = std::make_shared<CachedGeneratorByKey>();
	++mNestingDepth;
}

void AudioRenderContext::PopNestingLevel()
{
	mInstanceIndex = mSavedInstanceIndices.back();
	mSavedInstanceIndices.pop_back();
	mGeneratorMap = mSavedGeneratorMaps.back();
	mSavedGeneratorMaps.pop_back();
	--mNestingDepth;
}

void AudioRenderContext::Clear()
{
	mSettings.mRenderName = ImmutableString();
	mGeneratorMap.reset();
	mSavedGeneratorMaps.clear();
	mParameterMap.clear();
	mTrackRendererMap.clear();
	mTrackGroupMap.clear();
	mTrackGroupCounts.clear();
	mStreamRendererMap.clear();
	mContentRendererMap.clear();
	mCloneMap.clear();
}

InterfaceRef<ICachedAudioGenerator> AudioRenderContext::FindCachedGenerator(InterfaceRef<UnknownBase> inKey)
{
	return mGeneratorMap ? Find(*mGeneratorMap, inKey) : InterfaceRef<ICachedAudioGenerator>();
}

InterfaceRef<IAudioGenerator> AudioRenderContext::FindContentRenderer(InterfaceRef<UnknownBase> const& inKey,
	FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate) const
{
	return Find(mContentRendererMap,
		ContentKey(inKey, inFrameRate.GetTicksPerFrame(), inMediaFrameRate.GetTicksPerFrame()));
}

void AudioRenderContext::AddContentRenderer(InterfaceRef<UnknownBase> const& inKey,
	FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate,
	InterfaceRef<IAudioGenerator> const& inRenderer)
{
	mContentRendererMap.emplace(
		ContentKey(inKey, inFrameRate.GetTicksPerFrame(), inMediaFrameRate.GetTicksPerFrame()), inRenderer);
}

void AudioRenderContext::AddCachedGenerator(
	InterfaceRef<UnknownBase> const& inKey, InterfaceRef<ICachedAudioGenerator> const& inGenerator)
{
	if (!mGeneratorMap)
	{
		mGeneratorMap = std::make_shared<CachedGeneratorByKey>();
	}
	mGeneratorMap->emplace(inKey, inGenerator);
}

InterfaceRef<IAudioGenerator> AudioRenderContext::FindTrackGroup(
	InterfaceRef<UnknownBase> const& inKey, unsigned long long& outCount) const
{
	outCount = Find(mTrackGroupCounts, inKey);
	return Find(mTrackGroupMap, inKey);
}

void AudioRenderContext::AddTrackGroup(
	InterfaceRef<UnknownBase> const& inKey, InterfaceRef<IAudioGenerator> const& inGroup)
{
	mTrackGroupMap.emplace(inKey, inGroup);
	++mTrackGroupCounts[inKey];
}

} // namespace SN
