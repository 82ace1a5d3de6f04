#include "AudioRender/Track/AudioClipTrackRenderer.h"

#include "AudioRender/Component/AudioFaderRenderer.h"
#include "AudioRender/Component/AudioSendRenderer.h"
#include "AudioRender/Core/CreateNode.h"
#include "AudioRender/Core/FillUp.h"
#include "AudioRender/Core/SilentRenderer.h"
#include "AudioRender/Core/StackAudioBufferTags.h"
#include "AudioRender/Track/FirstBlock.h"
#include "Sonaro/AudioTrackRenderableItems.h"
#include "Sonaro/IMuteAwareItem.h"

#include <algorithm>
#include <utility>

namespace SN
{

namespace
{

// A track of the two items that frame every list.
constexpr std::size_t kNumFramingItems = 2;

} // namespace

int AudioClipTrackRenderer::Create(
	AudioClipTrackSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator)
{
	if (!inSettings.mContext)
	{
		return eNullPointer;
	}
	InterfaceRef<AudioRenderContext> const context(inSettings.mContext);
	if (context->IsTrackCacheEnabled())
	{
		InterfaceRef<IAudioGenerator> const known = context->FindTrackRenderer(inSettings.mOwner);
		if (known && !known->HasHistory())
		{
			*outGenerator = known;
			return kSuccess;
		}
	}
	int const result = CreateNew(inSettings, outGenerator);
	if (ResultSucceeded(result) && context->IsTrackCacheEnabled())
	{
		context->AddTrackRenderer(inSettings.mOwner, *outGenerator);
	}
	return result;
}

int AudioClipTrackRenderer::CreateNew(
	AudioClipTrackSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator)
{
	// Asks neighbours that lie end to end, so that a null one among them is found here.
	GetAudioTrackRenderableItemListContinuity(inSettings.mItems);
	if (inSettings.mContext->IsNotTopLevelPlayback() && IsNeverHeard(inSettings))
	{
		return SilentRenderer::Create(inSettings.mChannels, outGenerator);
	}
	return CreateNode<AudioClipTrackRenderer>(inSettings, outGenerator);
}

// A fader that is always closed, and no send, which may tap the audio before it.
bool AudioClipTrackRenderer::IsNeverHeard(AudioClipTrackSettings const& inSettings)
{
	bool isMuted = false;
	bool hasSend = false;
	for (InterfaceRef<IAudioProcessor> const& processor : inSettings.mProcessors)
	{
		InterfaceRef<AudioFaderRenderer> const fader =
			isMuted ? nullptr : InterfaceRef<AudioFaderRenderer>(processor);
		if (fader)
		{
			isMuted = fader->IsMuted();
		}
		else
		{
			hasSend = hasSend || InterfaceRef<AudioSendRenderer>(processor).IsValid();
		}
	}
	return isMuted && !hasSend;
}

int AudioClipTrackRenderer::InitFrom(AudioClipTrackSettings const& inSettings)
{
	mCachingEnabled = inSettings.mContext->IsTrackCacheEnabled();
	DelayedTrackItems::Items items;
	for (auto const& item : inSettings.mItems)
	{
		items.push_back({item, item});
	}
	SetItems(std::move(items));
	return InitTrack(inSettings);
}

void AudioClipTrackRenderer::SetItems(DelayedTrackItems::Items inItems)
{
	// The count decides, whatever the items are.
	mIsEmpty = inItems.size() == kNumFramingItems;
	mItems.SetItems(std::move(inItems));
	mDelayedItems.Clear();
}

void AudioClipTrackRenderer::MakeBuffers()
{
	InterfaceRef<IAudioPanProcessor> const& panner = mChain.GetPanProcessor();
	mNumChannels = panner ? panner->GetNumInputChannels() : 0;
	for (TrackItem const& item : mItems)
	{
		if (InterfaceRef<IAudioGeneratorPrivate> const generator = item.mGenerator)
		{
			mNumChannels = std::max(mNumChannels, generator->GetNumChannels());
		}
	}
	mWidestChannels = std::max(mNumChannels, panner ? panner->GetNumOutputChannels() : 0);
	if (!mIsEmpty)
	{
		mCache.Init(mWidestChannels, GetMaxBlockSize());
		ReserveStackAudioBuffer(
			mNumChannels, GetMaxBlockSize(), StackAudioBufferTags::kAudioClipTrackRenderer);
		ReserveStackAudioSubBuffer(mNumChannels);
		mScratch = GetStackAudioBuffer(mNumChannels, StackAudioBufferTags::kAudioClipTrackRenderer);
	}
}

InterfaceRef<IAudioGenerator> AudioClipTrackRenderer::Clone()
{
	auto const self = InterfaceRef<IAudioGenerator>::FromThis(this);
	if (InterfaceRef<IAudioGenerator> const known = FindClone(self))
	{
		return known;
	}
	auto const clone = StartClone(*this);
	AddClone(self, clone);
	clone->mCachingEnabled = mCachingEnabled;
	DelayedTrackItems::Items items;
	for (TrackItem const& item : mItems)
	{
		InterfaceRef<IAudioGenerator> const generator = item.mGenerator->Clone();
		items.push_back({generator, generator});
	}
	clone->SetItems(std::move(items));
	clone->CloneTrackFrom(*this);
	return clone;
}

TickTime AudioClipTrackRenderer::GetDelay()
{
	return IsDelayCompensationDisabled() ? kTimeZero : mInitialDelay;
}

void AudioClipTrackRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	mItems.ReturnFromEnd();
	// A shared track is prerolled by all who use it, and only the first or the earliest call counts.
	if (!mPrerolled || (mCachingEnabled && inStartTime < mEarliestPreroll))
	{
		PrerollItems(inStartTime, inReverse);
		mPrerolled = true;
	}
	// A preroll never fades.
	mMute.StartOver(GetFrameRate());
}

void AudioClipTrackRenderer::PrerollItems(TickTime const& inStartTime, bool inReverse)
{
	mEarliestPreroll = inStartTime;
	if (IsReadAheadPlayback())
	{
		mDelayedItems.Clear();
	}
	for (TrackItem const& item : mItems)
	{
		TickTime const itemTime = inStartTime - item.mItem->GetTrackItemStartTime();
		item.mGenerator->Preroll(std::max(itemTime, kTimeZero), inReverse);
	}
	mChain.Preroll(inStartTime, inReverse);
	if (!IsReadAheadPlayback())
	{
		return;
	}
	TrackStart const start{inStartTime, inReverse, GetNestingDepth()};
	for (TrackItem const& item : mDelayedItems.Classify(mItems.GetItems(), start))
	{
		item.mGenerator->FillInitialDelay(
			DelayedTrackItems::GetFillTarget(item, inReverse), kTimeZero, inReverse, true);
	}
	mInitialDelay = mDelayedItems.GetInitialDelay(start);
}

void AudioClipTrackRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	if (!IsDelayCompensationDisabled())
	{
		mDelayedItems.FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
	}
}

void AudioClipTrackRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	if (mIsEmpty)
	{
		return;
	}
	Prefetcher const* const prefetcher = GetPrefetcher();
	if (IsReadAheadPlayback() && prefetcher && prefetcher->mReverse == 0)
	{
		mDelayedItems.AccumulatePrefetchRequests(inRange, inType, inAccumulator);
	}
	mItems.ForEachWithin(inRange,
		[&](TrackItem const& inItem, PrefetchRange const& inPart)
		{
			inItem.mGenerator->AccumulatePrefetchRequests(
				inPart - inItem.mItem->GetTrackItemStartTime(), inType, inAccumulator);
		});
}

void AudioClipTrackRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	if (mIsEmpty || mItems.IsAtEnd())
	{
		ioBuffer.Zero();
		return;
	}
	unsigned const frames = ioBuffer.GetUseSize();
	if (frames > GetMaxBlockSize())
	{
		RenderFirstBlock(*this, inTime, ioBuffer, inReverse);
		return;
	}
	if (IsReadAheadPlayback())
	{
		// Filling keeps pace with playing.
		FillInitialDelay(inTime, TickTime(frames, GetFrameRate()), inReverse, false);
	}
	// What nothing writes is silent.
	ioBuffer.Zero();
	InterfaceRef<IAudioPanProcessor> const& panner = mChain.GetPanProcessor();
	if (panner && !panner->DoesNotAlterAudio())
	{
		ScopedBufferUse const use(*mScratch);
		dsp::AudioBuffer& itemBuffer = mScratch->mBuffer;
		itemBuffer.SetUseSize(frames);
		itemBuffer.Zero();
		RenderRequest({inTime, inReverse, itemBuffer, ioBuffer, true});
	}
	else
	{
		RenderRequest({inTime, inReverse, ioBuffer, ioBuffer, false});
	}
}

void AudioClipTrackRenderer::RenderRequest(Request const& inRequest)
{
	// A window takes more memory than the rest of the track, and is cheap to make.
	dsp::AudioSubBuffer window;
	window.Init(std::min<unsigned long long>(mNumChannels, inRequest.mItemBuffer.GetNumChannels()));
	if (!mItems.MoveTo(inRequest.mTime) || !RenderItems(inRequest, window))
	{
		// A request is played whole or not at all.
		inRequest.mOutput.Zero();
		return;
	}
	if (inRequest.mReverse)
	{
		// From here on samples stand in playing order.
		inRequest.mItemBuffer.Reverse();
	}
	RunChain(inRequest, window);
	GetLastLine().Process(inRequest.mOutput);
	mMute.Process(inRequest.mOutput);
}

// Fills the items' buffer in ascending time; false when the list ends within the request.
bool AudioClipTrackRenderer::RenderItems(Request const& inRequest, dsp::AudioSubBuffer& ioWindow)
{
	unsigned const total = inRequest.mItemBuffer.GetUseSize();
	TickTime time = inRequest.mTime;
	for (unsigned done = 0; done < total;)
	{
		TrackItem const& item = mItems.GetCurrent();
		long long const frames = (item.mItem->GetEndTime() - time).ToFrame64(GetFrameRate());
		if (frames <= 0)
		{
			if (!mItems.MoveOn())
			{
				return false;
			}
			continue;
		}
		auto const chunk = static_cast<unsigned>(std::min<long long>(frames, total - done));
		ioWindow.Assign(inRequest.mItemBuffer, done);
		ioWindow.SetUseSize(chunk);
		RenderChunk(item, time, inRequest.mReverse, ioWindow);
		done += chunk;
		time.AddFrames(chunk, GetFrameRate());
	}
	return true;
}

void AudioClipTrackRenderer::RenderChunk(
	TrackItem const& inItem, TickTime const& inTime, bool inReverse, dsp::AudioSubBuffer& ioWindow)
{
	mMute.Update();
	TickTime const itemTime = inTime - inItem.mItem->GetTrackItemStartTime();
	unsigned const frames = ioWindow.GetUseSize();
	if (mMute.IsComplete())
	{
		if (InterfaceRef<IMuteAwareItem>(inItem.mItem))
		{
			inItem.mGenerator->GetAudioData(itemTime, ioWindow, inReverse);
			FillUp(ioWindow, frames);
		}
		ioWindow.Zero();
		return;
	}
	inItem.mGenerator->GetAudioData(itemTime, ioWindow, inReverse);
	FillUp(ioWindow, frames);
	if (inReverse)
	{
		ioWindow.Reverse();
	}
}

void AudioClipTrackRenderer::RunChain(Request const& inRequest, dsp::AudioSubBuffer& ioWindow)
{
	// Where one item fills the request, the window covers it already.
	unsigned const frames = inRequest.mItemBuffer.GetUseSize();
	if (frames == 0 || ioWindow.GetCapacity() != frames || ioWindow.GetUseSize() != frames)
	{
		ioWindow.Assign(inRequest.mItemBuffer, 0);
	}
	dsp::AudioSubBuffer panOutput;
	if (inRequest.mPanAlters)
	{
		panOutput.Init(std::min<unsigned long long>(mWidestChannels, inRequest.mOutput.GetNumChannels()));
		panOutput.Assign(inRequest.mOutput, 0);
	}
	mChain.Run({ioWindow, inRequest.mPanAlters ? &panOutput : nullptr, inRequest.mTime, GetFrameRate(),
				   inRequest.mReverse},
		*this, {.mDelayOwner = this});
}

void AudioClipTrackRenderer::Reset()
{
	mItems.ReturnFromEnd();
	TrackRenderer::Reset();
}

void AudioClipTrackRenderer::GenerateAudio(unsigned inNumSamples, TickTime const& inTime, bool inReverse)
{
	if (mIsEmpty)
	{
		mChain.UpdateControls(inTime);
		return;
	}
	TrackRenderer::GenerateAudio(inNumSamples, inTime, inReverse);
}

void AudioClipTrackRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	for (TrackItem const& item : mItems)
	{
		ioVisitor.Visit(item.mGenerator, item.mItem.GetUnknown());
	}
	mChain.VisitNodes(ioVisitor);
}

} // namespace SN
