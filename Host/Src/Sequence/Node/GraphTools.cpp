#include "GraphTools.h"

#include "Engine/MixdownScope.h"
#include "Sequence/Stage/ConversionPanner.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

namespace
{

// An object that serves as an identity and does nothing else.
class BareIdentity final : public SN::Unknown
{
};

} // namespace

GraphTools::GraphTools(SN::InterfaceRef<SN::IAudioRenderContext> const& inContext,
	SN::FrameRate const& inFrameRate, std::shared_ptr<NodeLabels> const& inLabels)
	: mContext(inContext),
	  mFrameRate(inFrameRate),
	  mLabels(inLabels)
{
}

std::int64_t GraphTools::ToFrames(SN::TickTime const& inTime) const
{
	SN::TickTime const half = SN::TickTime::FromTicks(mFrameRate.GetTicksPerFrame() / 2);
	return (inTime + half).ToFrame64(mFrameRate);
}

std::int64_t GraphTools::GetLatency(SN::IAudioProcessor& inProcessor) const
{
	return mContext->IsDelayCompensationDisabled() ? 0 : ToFrames(inProcessor.GetDelay());
}

Generator GraphTools::GetStream(Media const& inMedia)
{
	Generator& stream = mStreams[&inMedia];
	if (!stream)
	{
		stream = mFactory.CreateAudioStreamRenderer({
			.mContext = mContext,
			.mFrameRate = mFrameRate,
			.mSource = inMedia.mOpen(mFrameRate),
			// The key lets the clones of clips go on sharing it.
			.mKey = MakeIdentity(),
		});
	}
	return stream;
}

Panner GraphTools::GetFixedPanner(
	SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput, Mixdown const& inMixdown)
{
	for (FixedPanner const& known : mFixedPanners)
	{
		if (known.mInput == inInput && known.mOutput == inOutput && known.mMixdown == inMixdown)
		{
			return known.mPanner;
		}
	}
	mFixedPanners.push_back({inInput, inOutput, inMixdown, MakeFixedPanner(inInput, inOutput, inMixdown)});
	return mFixedPanners.back().mPanner;
}

Panner GraphTools::MakeFixedPanner(SN::AudioChannelLayout const& inInput,
	SN::AudioChannelLayout const& inOutput, Mixdown const& inMixdown) const
{
	if (inInput != inOutput)
	{
		MixdownScope const mixdown(inMixdown);
		return zorvcore::classref::MakeObject<ConversionPanner>(inInput, inOutput);
	}
	return mFactory.CreateNoneAudioPanProcessorRenderer(mContext, inInput);
}

std::shared_ptr<dsp::AudioBuffer> GraphTools::GetScratch(ScratchUse inUse, std::size_t inChannels)
{
	auto& buffer = mScratch[{inUse, mContext->GetNestingDepth(), inChannels}];
	if (!buffer)
	{
		buffer = std::make_shared<dsp::AudioBuffer>(inChannels, std::max(mContext->GetMaxBlockSize(), 1u));
	}
	return buffer;
}

MuteSwitch GraphTools::GetHeard(MuteSwitch const& inMute) const
{
	return inMute && mContext->IsNotTopLevelPlayback()
			   ? std::make_shared<MuteSwitch::element_type>(inMute->Get())
			   : inMute;
}

void GraphTools::NoteOneRun(std::string const& inWhat)
{
	if (mWhyInOneRun.empty())
	{
		mWhyInOneRun = inWhat;
	}
}

void GraphTools::NoteHistory(std::string const& inWhat)
{
	++mHistories;
	NoteOneRun(inWhat);
}

Identity GraphTools::MakeIdentity()
{
	return zorvcore::classref::MakeObject<BareIdentity>();
}

} // namespace SonaroHost::Sequence
