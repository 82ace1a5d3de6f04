#include "MulticamContent.h"

#include "FadeItem.h"
#include "Sonaro/PrefetchRange.h"
#include "Sonaro/Prefetcher.h"
#include "SonaroHost/Engine/EngineFactory.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

// The engine's node with its context and its integer.
struct MulticamContent::Player
{
	explicit Player(Settings const& inSettings)
		: mContext(
			  inSettings.mScratch->GetCapacity(), SN::kTimeMax, SN::ImmutableString("multicam"), &mPrefetcher)
	{
		std::vector<Generator> cameras;
		for (Angle const& angle : inSettings.mAngles)
		{
			cameras.push_back(angle.mGenerator);
			mNests.emplace_back(angle.mGenerator);
		}
		mNode = EngineFactory().CreateAudioContentMulticamRenderer({
			.mContext = mContext.Get(),
			.mFrameRate = inSettings.mFrameRate,
			.mMediaFrameRate = inSettings.mFrameRate,
			.mCameras = cameras,
			.mSelectedCamera = mSelected,
		});
	}

	SN::Prefetcher mPrefetcher;
	RenderContextScope mContext;
	AngleSwitch mSelected = std::make_shared<AngleSwitch::element_type>();
	// Empty for an angle that is left silent.
	std::vector<SN::InterfaceRef<NestNode>> mNests;
	Generator mNode;
};

MulticamContent::MulticamContent(Settings const& inSettings)
	: MulticamContent(inSettings, std::make_shared<Player>(inSettings))
{
}

MulticamContent::MulticamContent(Settings const& inSettings, std::shared_ptr<Player> const& inPlayer)
	: Implements(std::vector{inPlayer->mNode}, inSettings.mLayout, inSettings.mFrameRate),
	  mSettings(inSettings),
	  mPlayer(inPlayer)
{
}

SN::InterfaceRef<SN::IAudioGenerator> MulticamContent::Clone()
{
	Settings settings = mSettings;
	settings.mScratch = MakeAlike(*mSettings.mScratch);
	for (Angle& angle : settings.mAngles)
	{
		angle.mGenerator = angle.mGenerator->Clone();
	}
	if (settings.mSwitch)
	{
		settings.mSwitch = std::make_shared<AngleSwitch::element_type>(settings.mSwitch->Get());
	}
	return zorvcore::classref::MakeObject<MulticamContent>(settings);
}

void MulticamContent::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	mPlayer->mNode->Preroll(inStartTime, inReverse);
}

void MulticamContent::Interrupt()
{
	for (SN::InterfaceRef<NestNode> const& nest : mPlayer->mNests)
	{
		if (nest)
		{
			nest->Interrupt();
		}
	}
}

void MulticamContent::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	SN::FrameRate const& rate = mSettings.mFrameRate;
	int const switched = GetSwitched();
	std::int64_t const end = inRange.mEnd.ToFrame64(rate) + 1;
	for (std::int64_t frame = inRange.mStart.ToFrame64(rate); frame < end;)
	{
		AngleCuts::Run const run = FindRun(frame, switched);
		SN::PrefetchRange const range(std::max(inRange.mStart, SN::TickTime(frame, rate)),
			run.mEnd < end ? SN::TickTime(run.mEnd, rate) : inRange.mEnd);
		ReadAhead(run.mAngle, range, inType, inAccumulator);
		ReadAhead(run.mOutgoing, range, inType, inAccumulator);
		for (int angle = 0; angle < static_cast<int>(mSettings.mAngles.size()); ++angle)
		{
			bool const isHeard = angle == run.mAngle || angle == run.mOutgoing;
			if (!isHeard &&
				(mSettings.mReadsAll || mSettings.mAngles[static_cast<std::size_t>(angle)].mRunsOn))
			{
				ReadAhead(angle, range, SN::AsynchronousPrefetch, inAccumulator);
			}
		}
		frame = run.mEnd;
	}
}

void MulticamContent::ReadAhead(int inAngle, SN::PrefetchRange const& inRange, SN::PrefetchType inType,
	SN::PrefetchRequestAccumulator& inAccumulator)
{
	auto const index = static_cast<std::size_t>(inAngle);
	if (index >= mSettings.mAngles.size() || !inRange.IsValid())
	{
		return;
	}
	if (mPlayer->mNests[index])
	{
		mPlayer->mNests[index]->SetPrefetchDirection(mIsPrefetchedInReverse);
	}
	mSettings.mAngles[index].mGenerator->AccumulatePrefetchRequests(inRange, inType, inAccumulator);
}

void MulticamContent::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	std::int64_t const frame = inTime.ToFrame64(mSettings.mFrameRate);
	std::int64_t const frames = ioBuffer.GetUseSize();
	int const switched = GetSwitched();
	dsp::AudioSubBuffer window;
	window.Init(ioBuffer.GetNumChannels());
	// In the order in which it is played.
	for (std::int64_t done = 0; done < frames;)
	{
		std::int64_t const begin = inReverse ? frame + frames - 1 - done : frame + done;
		AngleCuts::Run const run = FindRun(begin, switched);
		std::int64_t const left = inReverse ? begin - run.mFirst + 1 : run.mEnd - begin;
		std::int64_t const count =
			std::min({frames - done, left, std::int64_t{mSettings.mScratch->GetCapacity()}});
		window.Assign(ioBuffer, static_cast<unsigned>(done));
		window.SetUseSize(static_cast<unsigned>(count));
		RenderRun(run, inReverse ? begin - count + 1 : begin, inReverse, window);
		done += count;
	}
}

void MulticamContent::RenderRun(
	AngleCuts::Run const& inRun, std::int64_t inFrame, bool inReverse, dsp::AudioBuffer& outBuffer)
{
	Request const request{inFrame, inReverse, mIsUnheard};
	if (inRun.mAngle == AngleCuts::kNoAngle)
	{
		outBuffer.Zero();
		return;
	}
	if (inRun.mOutgoing != AngleCuts::kNoAngle)
	{
		RenderFade(inRun, request, outBuffer);
	}
	else
	{
		RenderAngle(inRun.mAngle, request, outBuffer);
	}
	RunOthers(inRun, request, outBuffer.GetUseSize());
}

void MulticamContent::RenderFade(
	AngleCuts::Run const& inRun, Request const& inRequest, dsp::AudioBuffer& outBuffer)
{
	std::int64_t const count = outBuffer.GetUseSize();
	std::int64_t const frames = inRun.mEnd - inRun.mFirst;
	std::int64_t const first = inRequest.mFrame - inRun.mFirst;
	FadeRun fade{inRun.mShape, frames, inRequest.mIsReverse ? first + count - 1 : first,
		inRequest.mIsReverse ? -1 : 1};
	mSettings.mScratch->SetUseSize(static_cast<unsigned>(count));
	dsp::AudioSubBuffer incoming;
	incoming.Init(mSettings.mScratch->GetNumChannels());
	incoming.Assign(*mSettings.mScratch, 0);
	RenderAngle(inRun.mAngle, inRequest, incoming);
	ApplyFade(fade, incoming);
	RenderAngle(inRun.mOutgoing, inRequest, outBuffer);
	ApplyFade({fade.mShape, frames, frames - fade.mFirst, -fade.mStep}, outBuffer);
	outBuffer.Mix(incoming);
}

void MulticamContent::RenderAngle(int inAngle, Request const& inRequest, dsp::AudioBuffer& outBuffer)
{
	auto const index = static_cast<std::size_t>(inAngle);
	if (index < mPlayer->mNests.size() && mPlayer->mNests[index])
	{
		mPlayer->mNests[index]->SetUnheard(inRequest.mIsUnheard);
	}
	mPlayer->mSelected->Set(inAngle);
	outBuffer.Zero();
	mPlayer->mNode->GetAudioData(
		SN::TickTime(inRequest.mFrame, mSettings.mFrameRate), outBuffer, inRequest.mIsReverse);
}

void MulticamContent::RunOthers(AngleCuts::Run const& inRun, Request inRequest, unsigned inCount)
{
	inRequest.mIsUnheard = true;
	for (std::size_t index = 0; index < mSettings.mAngles.size(); ++index)
	{
		int const angle = static_cast<int>(index);
		if (mSettings.mAngles[index].mRunsOn && angle != inRun.mAngle && angle != inRun.mOutgoing)
		{
			mSettings.mScratch->SetUseSize(inCount);
			dsp::AudioSubBuffer discarded;
			discarded.Init(mSettings.mScratch->GetNumChannels());
			discarded.Assign(*mSettings.mScratch, 0);
			RenderAngle(angle, inRequest, discarded);
		}
	}
}

} // namespace SonaroHost::Sequence
