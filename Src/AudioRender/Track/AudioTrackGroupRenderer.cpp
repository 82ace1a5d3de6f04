#include "AudioRender/Track/AudioTrackGroupRenderer.h"

#include "AudioRender/Core/SilentRenderer.h"
#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"
#include "AudioRender/Track/LoopWrap.h"
#include "AudioRender/Track/RenderAndDiscard.h"
#include "Sonaro/AudioUtilities.h"
#include "Sonaro/PrefetchRange.h"

#include <algorithm>

namespace SN
{

namespace
{

constexpr int kNothingToClone = -1;

} // namespace

int AudioTrackGroupRenderer::InitFrom(AudioTrackGroupSettings const& inSettings)
{
	int const result = Init(inSettings.mContext, inSettings.mFrameRate);
	for (std::size_t i = 0; i < inSettings.mGenerators.size(); ++i)
	{
		InterfaceRef<IAudioGenerator> const& generator = inSettings.mGenerators[i];
		bool const hasDelay = i < inSettings.mGeneratorDelays.size();
		mMembers.push_back({generator, generator, hasDelay ? inSettings.mGeneratorDelays[i] : kTimeZero});
		InterfaceRef<CompensatingDelayOwnerMixin> const delays(generator);
		if (delays && i < inSettings.mDelayDependencies.size())
		{
			delays->SetDelays(inSettings.mDelayDependencies[i]);
		}
	}
	mChannels = inSettings.mChannels;
	if (ResultSucceeded(result))
	{
		InterfaceRef<AudioRenderContext>(inSettings.mContext)
			->AddTrackGroup(inSettings.mOwner, InterfaceRef<IAudioGenerator>::FromThis(this));
	}
	return result;
}

int AudioTrackGroupRenderer::CreateViaCloning(InterfaceRef<IAudioRenderContext> const& inContext,
	InterfaceRef<UnknownBase> const& inOwner, InterfaceRef<IAudioGenerator>* outGenerator)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	InterfaceRef<AudioRenderContext> const context(inContext);
	unsigned long long instances = 0;
	InterfaceRef<AudioTrackGroupRenderer> const group(context->FindTrackGroup(inOwner, instances));
	if (!group || group->GetNestingDepth() != context->GetNestingDepth())
	{
		return kNothingToClone;
	}
	if (!group->HasHistory())
	{
		// Any number of consumers may read it.
		*outGenerator = group;
		return kSuccess;
	}
	if (instances >= GetMaxNestableSequenceInstances())
	{
		return SilentRenderer::Create(group->mChannels, outGenerator);
	}
	*outGenerator = group->Clone();
	context->ClearCloneMap();
	context->AddTrackGroup(inOwner, *outGenerator);
	return kSuccess;
}

InterfaceRef<IAudioGenerator> AudioTrackGroupRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->mChannels = mChannels;
	for (Member const& member : mMembers)
	{
		InterfaceRef<IAudioGenerator> const generator = member.mGenerator->Clone();
		clone->mMembers.push_back({generator, generator, member.mDelay});
	}
	return clone;
}

TickTime AudioTrackGroupRenderer::GetDelay()
{
	if (IsDelayCompensationDisabled() || mMembers.empty())
	{
		return kTimeZero;
	}
	TickTime largest = -kTimeMax;
	for (Member const& member : mMembers)
	{
		largest = std::max(largest, member.mDelay + member.mGenerator->GetDelay());
	}
	return largest;
}

void AudioTrackGroupRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	for (Member const& member : mMembers)
	{
		member.mGenerator->Preroll(inStartTime, inReverse);
	}
	bool const isNested = GetNestingDepth() != 0;
	if (IsPrefetchEnabled() && !IsImmediateRender())
	{
		if (!isNested)
		{
			FillInitialDelay(inStartTime, kTimeZero, inReverse, true);
		}
	}
	else if (isNested)
	{
		WarmUp(inStartTime);
	}
}

void AudioTrackGroupRenderer::WarmUp(TickTime const& inStartTime)
{
	TickTime largest;
	for (Member const& member : mMembers)
	{
		largest = std::max(largest, member.mDelay);
	}
	int const frames = largest.ToFrame32(GetFrameRate());
	if (frames <= 0)
	{
		return;
	}
	TickTime position = inStartTime;
	position.AddFrames(-frames, GetFrameRate());
	dsp::AudioBuffer buffer(GetNumChannels(), GetMaxBlockSize());
	// Forward, whatever the direction of play.
	RenderAndDiscard(*this,
		{.mFrames = static_cast<unsigned>(frames),
			.mFrameRate = GetFrameRate(),
			.mMaxBlockSize = GetMaxBlockSize(),
			.mPrefetches = true},
		position, buffer);
}

void AudioTrackGroupRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	for (Member const& member : mMembers)
	{
		member.mGenerator->FillInitialDelay(inStartTime, inDelayTime, inReverse, inForceCompletion);
	}
}

void AudioTrackGroupRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	for (Member const& member : mMembers)
	{
		member.mGenerator->AccumulatePrefetchRequests(inRange + member.mDelay, inType, inAccumulator);
	}
}

void AudioTrackGroupRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	ioBuffer.Zero();
	if (mMembers.empty())
	{
		return;
	}
	Prefetcher const* const prefetcher = GetPrefetcher();
	bool const loops = prefetcher && prefetcher->mLoopEnabled != 0 && GetNestingDepth() == 0;
	auto const ahead = [&](Member const& inMember)
	{ return inReverse ? inTime - inMember.mDelay : inTime + inMember.mDelay; };
	Member const& output = mMembers.back();
	for (Member const& member : mMembers)
	{
		if (&member != &output)
		{
			// Ahead means later in both directions of a loop.
			TickTime const time = loops ? WrapIntoLoop(inTime + member.mDelay, prefetcher) : ahead(member);
			member.mCached->GenerateAudio(ioBuffer.GetUseSize(), time, inReverse);
		}
	}
	output.mGenerator->GetAudioData(ahead(output), ioBuffer, inReverse);
}

void AudioTrackGroupRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	for (Member const& member : mMembers)
	{
		ioVisitor.Visit(member.mGenerator);
	}
}

} // namespace SN
