#include "AudioRender/Track/ProcessorChain.h"

#include "AudioRender/Component/AudioSendRenderer.h"
#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"

#include <algorithm>

namespace SN
{

void ProcessorChain::Init(
	Processors const& inProcessors, InterfaceRef<IAudioPanProcessor> const& inPanProcessor)
{
	mPanProcessor = inPanProcessor;
	mPanOwner = inPanProcessor;
	mBlockPosition = 0;
	mLinks.clear();
	for (InterfaceRef<IAudioProcessor> const& processor : inProcessors)
	{
		mLinks.push_back({processor, processor, InterfaceRef<AudioSendRenderer>(processor).IsValid()});
	}
}

void ProcessorChain::CloneFrom(ProcessorChain const& inOther, AudioRenderContextClient const& inClient)
{
	Processors clones;
	for (Link const& link : inOther.mLinks)
	{
		clones.push_back(link.mProcessor->Clone(
			inClient.GetFrameRate(), inClient.GetMaxBlockSize(), inClient.GetControlInterval()));
	}
	InterfaceRef<IAudioPanProcessor> panner;
	if (inOther.mPanProcessor)
	{
		panner = inOther.mPanProcessor->Clone(inClient.GetFrameRate(), inClient.GetControlInterval());
	}
	Init(clones, panner);
	mBlockPosition = inOther.mBlockPosition;
}

unsigned ProcessorChain::CountSends() const
{
	return static_cast<unsigned>(
		std::count_if(mLinks.begin(), mLinks.end(), [](Link const& inLink) { return inLink.mIsSend; }));
}

void ProcessorChain::VisitNodes(NodeVisitor& ioVisitor) const
{
	for (Link const& link : mLinks)
	{
		ioVisitor.Visit(link.mProcessor);
	}
	ioVisitor.Visit(mPanProcessor);
}

void ProcessorChain::Preroll(TickTime const& inTime, bool inReverse) const
{
	for (Link const& link : mLinks)
	{
		link.mProcessor->Preroll(inTime, inReverse);
	}
	if (mPanProcessor)
	{
		mPanProcessor->Preroll(inTime, inReverse);
	}
}

void ProcessorChain::UpdateControls(TickTime const& inTime, bool inWithPan) const
{
	for (Link const& link : mLinks)
	{
		if (link.mOwner)
		{
			link.mOwner->UpdateControls(inTime);
		}
	}
	if (inWithPan && mPanOwner)
	{
		mPanOwner->UpdateControls(inTime);
	}
}

TickTime ProcessorChain::FindNextChange(TickTime const& inTime, bool inWithPan) const
{
	TickTime next = kTimeMax;
	for (Link const& link : mLinks)
	{
		if (link.mOwner)
		{
			next = std::min(next, link.mOwner->GetNextInterestingTime(inTime));
		}
	}
	return inWithPan && mPanOwner ? std::min(next, mPanOwner->GetNextInterestingTime(inTime)) : next;
}

void ProcessorChain::Run(
	ChainRequest const& inRequest, AudioRenderContextClient const& inClient, Policy const& inPolicy)
{
	if (mLinks.empty() && !inRequest.mPanOutput && !inPolicy.mAlwaysCuts)
	{
		return;
	}
	unsigned const frames = inRequest.mWindow.GetUseSize();
	TickTime time = inRequest.mTime;
	if (inRequest.mReverse && !inPolicy.mTimesAlwaysRise)
	{
		// Playing order begins at the top, less what is done of the block there.
		time.AddFrames(static_cast<long long>(frames) - mBlockPosition, inRequest.mFrameRate);
	}
	bool const withPan = inRequest.mPanOutput || !inPolicy.mIdlePanRests;
	TickTime const change = inRequest.mReverse || inPolicy.mAlwaysCuts ? time : FindNextChange(time, withPan);
	TickTime end = time;
	end.AddFrames(frames, inRequest.mFrameRate);
	if (end >= change)
	{
		// An interval of 0 means all that is left.
		unsigned const interval = inClient.GetControlInterval();
		Policy blockPolicy = inPolicy;
		blockPolicy.mDelayOwner = inPolicy.mBlocksSkipSendDelays ? nullptr : inPolicy.mDelayOwner;
		RunBlocks(inRequest, time, interval == 0 ? frames : interval, blockPolicy);
	}
	else
	{
		UpdateControls(time, withPan);
		Apply(inRequest, time, inPolicy);
		mBlockPosition = 0;
	}
}

void ProcessorChain::RunBlocks(
	ChainRequest const& inRequest, TickTime const& inTime, unsigned inInterval, Policy const& inPolicy)
{
	bool const withPan = inRequest.mPanOutput || !inPolicy.mIdlePanRests;
	bool const timesFall = inRequest.mReverse && !inPolicy.mTimesAlwaysRise;
	TickTime time = inTime;
	for (unsigned remaining = inRequest.mWindow.GetUseSize(); remaining > 0;)
	{
		if (mBlockPosition == 0)
		{
			UpdateControls(time, withPan);
		}
		unsigned const size =
			std::min({remaining, inInterval - std::min(mBlockPosition, inInterval - 1), inPolicy.mMaxPiece});
		inRequest.mWindow.SetUseSize(size);
		if (inRequest.mPanOutput)
		{
			inRequest.mPanOutput->SetUseSize(size);
		}
		Apply(inRequest, time, inPolicy);
		if (inRequest.mPanOutput)
		{
			inRequest.mPanOutput->ShiftOffset(size);
		}
		inRequest.mWindow.ShiftOffset(size);
		auto const step = static_cast<long long>(size);
		time.AddFrames(timesFall ? -step : step, inRequest.mFrameRate);
		mBlockPosition += size;
		mBlockPosition = mBlockPosition >= inInterval ? 0 : mBlockPosition;
		remaining -= size;
	}
}

void ProcessorChain::Apply(
	ChainRequest const& inRequest, TickTime const& inTime, Policy const& inPolicy) const
{
	dsp::AudioBuffer& buffer = inRequest.mWindow;
	unsigned send = 0;
	for (Link const& link : mLinks)
	{
		if (inPolicy.mSkipsLatentProcessors && link.mProcessor->GetDelay() != kTimeZero)
		{
			continue;
		}
		if (link.mIsSend && inPolicy.mDelayOwner)
		{
			// The send hears the audio delayed while the main path is not.
			link.mProcessor->ProcessAudioData(inPolicy.mDelayOwner->GetLine(send).Process(buffer), inTime);
			++send;
		}
		else
		{
			link.mProcessor->ProcessAudioData(buffer, inTime);
		}
	}
	if (inRequest.mPanOutput)
	{
		mPanProcessor->ProcessAudioData(buffer, *inRequest.mPanOutput, inTime);
	}
}

} // namespace SN
