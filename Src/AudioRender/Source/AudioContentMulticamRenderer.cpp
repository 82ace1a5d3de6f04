#include "AudioRender/Source/AudioContentMulticamRenderer.h"

#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SN
{

int AudioContentMulticamRenderer::Create(
	AudioContentMulticamSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator)
{
	bool const prefetchesAll = inSettings.mContext->GetMulticamOption();
	if (!inSettings.mSelectedCamera)
	{
		return eNullPointer;
	}
	auto const node = zorvcore::classref::MakeObject<AudioContentMulticamRenderer>();
	node->mPrefetchAllCameras = prefetchesAll;
	int const result = node->InitFrom(inSettings);
	if (ResultSucceeded(result))
	{
		*outGenerator = node;
	}
	return result;
}

int AudioContentMulticamRenderer::InitFrom(AudioContentMulticamSettings const& inSettings)
{
	int const result = Init(inSettings.mContext, inSettings.mFrameRate);
	mTime = ContentTime(
		inSettings.mFrameRate, inSettings.mMediaFrameRate, inSettings.mHasOffset, inSettings.mOffset);
	mCameras = inSettings.mCameras;
	bool const isLive = IsPrefetchEnabled() && GetNestingDepth() == 0;
	mSelectedCamera = isLive ? inSettings.mSelectedCamera
							 : std::make_shared<SelectedCamera>(inSettings.mSelectedCamera->Get());
	mContentEnd = inSettings.mContentEnd;
	ReserveStackAudioSubBuffer(static_cast<unsigned>(GetAudioChannelLayout().size()));
	return result;
}

InterfaceRef<IAudioGeneratorPrivate> AudioContentMulticamRenderer::GetFirstCamera() const
{
	return mCameras.empty() ? InterfaceRef<IAudioGeneratorPrivate>()
							: InterfaceRef<IAudioGeneratorPrivate>(mCameras.front());
}

InterfaceRef<IAudioGenerator> AudioContentMulticamRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->mTime = mTime;
	clone->mContentEnd = mContentEnd;
	clone->mPrefetchAllCameras = mPrefetchAllCameras;
	clone->mSelectedCamera = std::make_shared<SelectedCamera>(mSelectedCamera->Get());
	for (InterfaceRef<IAudioGenerator> const& camera : mCameras)
	{
		clone->mCameras.push_back(camera->Clone());
	}
	return clone;
}

void AudioContentMulticamRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	mMaxDelay = kTimeZero;
	for (InterfaceRef<IAudioGenerator> const& camera : mCameras)
	{
		camera->Preroll(inStartTime, inReverse);
		mMaxDelay = std::max(mMaxDelay, camera->GetDelay());
	}
}

void AudioContentMulticamRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	if (!inForceCompletion)
	{
		return;
	}
	for (InterfaceRef<IAudioGenerator> const& camera : mCameras)
	{
		camera->FillInitialDelay(inStartTime, inDelayTime, inReverse, true);
	}
}

void AudioContentMulticamRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	PrefetchRange range = mTime.Map(inRange);
	if (mTime.HasOffset())
	{
		range.mEnd = range.mStart + (mContentEnd - mTime.GetOffset());
	}
	std::size_t const selected = GetSelected();
	if (selected < mCameras.size())
	{
		mCameras[selected]->AccumulatePrefetchRequests(range, inType, inAccumulator);
	}
	for (std::size_t camera = 0; mPrefetchAllCameras && camera < mCameras.size(); ++camera)
	{
		if (camera != selected)
		{
			mCameras[camera]->AccumulatePrefetchRequests(range, AsynchronousPrefetch, inAccumulator);
		}
	}
}

void AudioContentMulticamRenderer::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	std::size_t const selected = GetSelected();
	if (selected >= mCameras.size())
	{
		inBuffer.Zero();
		return;
	}
	TickTime const time = mTime.Map(inTime);
	if (time >= kTimeZero)
	{
		mCameras[selected]->GetAudioData(time, inBuffer, inReverse);
		return;
	}
	TickTime const end = time + TickTime(inBuffer.GetUseSize(), GetFrameRate());
	inBuffer.Zero();
	if (end < kTimeZero)
	{
		return;
	}
	// Its own, since the scratch window belongs to whichever renderer of this width is further in.
	dsp::AudioSubBuffer window;
	window.Init(inBuffer.GetNumChannels());
	window.Assign(inBuffer, static_cast<unsigned>(-time.ToFrame32(GetFrameRate())));
	mCameras[selected]->GetAudioData(kTimeZero, window, inReverse);
}

void AudioContentMulticamRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	for (InterfaceRef<IAudioGenerator> const& camera : mCameras)
	{
		ioVisitor.Visit(camera);
	}
}

} // namespace SN
