#include "NaiveSequence.h"

#include "MemoryMedia.h"
#include "Vexilon/Keyframe.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <stdexcept>

namespace SonaroHost::Sequence::Testing
{

namespace
{

constexpr std::size_t kMono = 1;
constexpr std::size_t kStereo = 2;
constexpr std::size_t kSurround = 6;
constexpr double kQuarterTurn = std::numbers::pi / 2;
constexpr std::int64_t kControlFrames = 64;
// Single precision, which decides where the frames are half a one.
constexpr float kRampSeconds = 0.005f;

template <class T>
double GetValue(SN::InterfaceRef<AutomationParameter<T>> const& inParameter, SN::TickTime const& inTime)
{
	VX::KeyframeCache<VX::Keyframe<T>> cache;
	VX::Keyframe<T> keyframe;
	inParameter->UpdateControl(inTime, &cache, &keyframe);
	return static_cast<double>(keyframe.mValue);
}

double GetLevel(Fader const& inFader, SN::TickTime const& inTime)
{
	bool const isMuted = inFader.mMute && GetValue(inFader.mMute, inTime) != 0.0;
	return isMuted ? 0.0 : inFader.mGain ? GetValue(inFader.mGain, inTime) : 1.0;
}

bool IsOn(MuteSwitch const& inSwitch)
{
	return inSwitch && inSwitch->Get() != 0;
}

// Gains by output and input channel.
using Matrix = std::vector<std::vector<double>>;

// 5.1 as left, right, centre, low frequency, left surround, right surround; with the engine's constants,
// which are cut to a few digits.
Matrix GetMixdownGains(std::size_t inOutputs, SN::AudioChannelMix::MixdownType51 inType)
{
	bool const hasRear = inType == SN::AudioChannelMix::kMixdownFrontRear ||
						 inType == SN::AudioChannelMix::kMixdownFrontRearLFE;
	bool const hasLow = inType == SN::AudioChannelMix::kMixdownFrontLFE ||
						inType == SN::AudioChannelMix::kMixdownFrontRearLFE;
	if (inOutputs == kMono)
	{
		double const whole = hasRear && hasLow ? 0.666666 : hasRear ? 0.75 : hasLow ? 0.85714 : 1.0;
		double const front = whole * 0.333333;
		double const other = whole / 6.0;
		double const rear = hasRear ? other : 0.0;
		return {{front, front, front, hasLow ? other : 0.0, rear, rear}};
	}
	double const whole = hasRear && hasLow ? 0.521739 : hasRear || hasLow ? 0.63157 : 0.8;
	double const other = whole * 0.33;
	double const rear = hasRear ? other : 0.0;
	double const low = hasLow ? other : 0.0;
	return {
		{whole * 0.75, 0.0, whole * 0.5, low, rear, 0.0}, {0.0, whole * 0.75, whole * 0.5, low, 0.0, rear}};
}

// Without a pan. What has no conversion of its own goes by place.
Matrix GetFixedGains(
	std::size_t inInputs, std::size_t inOutputs, SN::AudioChannelMix::MixdownType51 inMixdown)
{
	if (inInputs == kSurround && inOutputs != kSurround)
	{
		return GetMixdownGains(inOutputs, inMixdown);
	}
	if (inInputs == kMono && inOutputs == kStereo)
	{
		return {{1.0}, {1.0}};
	}
	if (inInputs == kStereo && inOutputs == kMono)
	{
		return {{0.5, 0.5}};
	}
	Matrix gains(inOutputs, std::vector<double>(inInputs, 0.0));
	constexpr std::size_t kCentre = 2;
	for (std::size_t channel = 0; channel < inInputs; ++channel)
	{
		gains[inInputs == kMono && inOutputs == kSurround ? kCentre : channel][channel] = 1.0;
	}
	return gains;
}

// A single signal keeps its power, two of them keep the side that is panned to; 5.1 has the front pair alone.
Matrix GetPannedGains(std::size_t inInputs, std::size_t inOutputs, double inPan)
{
	Matrix gains(inOutputs, std::vector<double>(inInputs, 0.0));
	if (inInputs == kMono)
	{
		gains[0][0] = std::cos(kQuarterTurn * inPan);
		gains[1][0] = std::sin(kQuarterTurn * inPan);
	}
	else
	{
		gains[0][0] = std::sin(kQuarterTurn * std::min(1.0, 2.0 * (1.0 - inPan)));
		gains[1][1] = std::sin(kQuarterTurn * std::min(1.0, 2.0 * inPan));
	}
	return gains;
}

Signal Apply(Matrix const& inGains, Signal const& inSound)
{
	Signal result(inGains.size(), std::vector<double>(inSound.front().size(), 0.0));
	for (std::size_t output = 0; output < inGains.size(); ++output)
	{
		for (std::size_t input = 0; input < inSound.size(); ++input)
		{
			double const gain = inGains[output][input];
			for (std::size_t i = 0; gain != 0.0 && i < inSound[input].size(); ++i)
			{
				result[output][i] += gain * inSound[input][i];
			}
		}
	}
	return result;
}

void Scale(Signal& ioSound, std::function<double(std::size_t)> const& inGainAt)
{
	for (std::size_t i = 0; i < ioSound.front().size(); ++i)
	{
		double const gain = inGainAt(i);
		for (std::vector<double>& channel : ioSound)
		{
			channel[i] *= gain;
		}
	}
}

void Add(Signal const& inSound, Signal& ioSum)
{
	for (std::size_t channel = 0; channel < ioSum.size(); ++channel)
	{
		std::transform(inSound[channel].begin(), inSound[channel].end(), ioSum[channel].begin(),
			ioSum[channel].begin(), std::plus<>());
	}
}

double GetRise(FadeShape inShape, double inProgress)
{
	switch (inShape)
	{
	case FadeShape::eEqualPower:
		return std::sin(kQuarterTurn * inProgress);
	case FadeShape::eSCurve:
		return inProgress * inProgress * (3.0 - 2.0 * inProgress);
	default:
		return inProgress;
	}
}

// Where an item is heard, in frames of its track, and how it comes and goes.
struct Extent
{
	std::int64_t mStart = 0;
	std::int64_t mEnd = 0;
	std::int64_t mRise = 0;
	std::int64_t mFall = 0;
	FadeShape mRiseShape = FadeShape::eLinear;
	FadeShape mFallShape = FadeShape::eLinear;

	double GetGain(std::int64_t inFrame) const
	{
		double gain = 1.0;
		if (inFrame < mStart + mRise)
		{
			gain *= GetRise(mRiseShape, static_cast<double>(inFrame - mStart) / static_cast<double>(mRise));
		}
		if (inFrame >= mEnd - mFall)
		{
			gain *= GetRise(mFallShape, static_cast<double>(mEnd - inFrame) / static_cast<double>(mFall));
		}
		return gain;
	}
};

std::int64_t GetLatency(Stage const& inStage)
{
	auto const* const effect = std::get_if<Effect>(&inStage);
	return effect ? effect->mMake.target<LatentEffect>()->mDelayFrames : 0;
}

std::int64_t GetLatency(Chain const& inChain)
{
	std::int64_t sum = 0;
	for (Stage const& stage : inChain.mStages)
	{
		sum += GetLatency(stage);
	}
	return sum;
}

// Submixes are made ahead of time by what lies between them and the output; so are the tracks.
class HeadStarts
{
public:
	explicit HeadStarts(Description const& inSequence)
		: mSequence(inSequence)
	{
	}

	std::int64_t GetAhead(Chain const& inChain, Output const& inOutput) const
	{
		std::int64_t ahead = GetLatency(inChain);
		if (inOutput.mKind != Output::Kind::eNone)
		{
			ahead += inOutput.mKind == Output::Kind::eMaster ? GetLatency(mSequence.mMaster)
															 : GetAhead(inOutput.mSubmix);
		}
		std::int64_t before = 0;
		for (Stage const& stage : inChain.mStages)
		{
			before += GetLatency(stage);
			if (auto const* const send = std::get_if<Send>(&stage))
			{
				ahead = std::max(ahead, before + GetAhead(send->mSubmix));
			}
		}
		return ahead;
	}

private:
	std::int64_t GetAhead(std::size_t inSubmix) const
	{
		return GetAhead(mSequence.mSubmixes[inSubmix].mChain, mSequence.mSubmixes[inSubmix].mOutput);
	}

	Description const& mSequence;
};

class Naive
{
public:
	explicit Naive(NaiveRange const& inRange)
		: mRange(inRange)
	{
	}

	Signal Render(Description const& inSequence, std::int64_t inFrames, bool inIsOutermost)
	{
		return Mix(*this, inSequence, inFrames, inIsOutermost).Run();
	}

private:
	class Mix
	{
	public:
		Mix(Naive& ioNaive, Description const& inSequence, std::int64_t inFrames, bool inIsOutermost)
			: mNaive(ioNaive),
			  mSequence(inSequence),
			  mFrames(inFrames),
			  mIsOutermost(inIsOutermost),
			  mMixdown(inSequence.mMixdown.value_or(SN::AudioChannelMix::kMixdownFront))
		{
		}

		Signal Run()
		{
			mMaster = MakeSilence(mSequence.mLayout.size(), mFrames);
			for (Submix const& submix : mSequence.mSubmixes)
			{
				mBuses.push_back(MakeSilence(submix.mLayout.size(), mFrames));
			}
			for (Track const& track : mSequence.mTracks)
			{
				RunStrip(MakeTrack(track), track.mChain, track.mMute, track.mOutput);
			}
			std::vector<bool> isDone(mBuses.size(), false);
			for (std::size_t next = FindReady(isDone); next < mBuses.size(); next = FindReady(isDone))
			{
				Submix const& submix = mSequence.mSubmixes[next];
				RunStrip(mBuses[next], submix.mChain, submix.mMute, submix.mOutput);
				isDone[next] = true;
			}
			RunStages(mSequence.mMaster, GetLatency(mSequence.mMaster), mMaster);
			return mMaster;
		}

	private:
		static Signal MakeSilence(std::size_t inChannels, std::int64_t inFrames)
		{
			return Signal(inChannels, std::vector<double>(static_cast<std::size_t>(inFrames), 0.0));
		}

		static bool Feeds(Submix const& inFrom, std::size_t inTo)
		{
			bool const isOutput =
				inFrom.mOutput.mKind == Output::Kind::eSubmix && inFrom.mOutput.mSubmix == inTo;
			return isOutput || std::any_of(inFrom.mChain.mStages.begin(), inFrom.mChain.mStages.end(),
								   [inTo](Stage const& inStage)
								   {
									   auto const* const send = std::get_if<Send>(&inStage);
									   return send && send->mSubmix == inTo;
								   });
		}

		// A submix that waits for no other, of those that are not done.
		std::size_t FindReady(std::vector<bool> const& inIsDone) const
		{
			for (std::size_t to = 0; to < inIsDone.size(); ++to)
			{
				bool isReady = !inIsDone[to];
				for (std::size_t from = 0; from < inIsDone.size(); ++from)
				{
					isReady = isReady && (inIsDone[from] || !Feeds(mSequence.mSubmixes[from], to));
				}
				if (isReady)
				{
					return to;
				}
			}
			return inIsDone.size();
		}

		Signal Convert(Signal const& inSound, std::size_t inOutputs, NumberParameter const& inPan) const
		{
			return Apply(inPan ? GetPannedGains(inSound.size(), inOutputs, GetValue(inPan, {}))
							   : GetFixedGains(inSound.size(), inOutputs, mMixdown),
				inSound);
		}

		void RunStrip(Signal ioSound, Chain const& inChain, MuteSwitch const& inMute, Output const& inOutput)
		{
			if (IsOn(inMute))
			{
				ioSound = MakeSilence(ioSound.size(), mFrames);
			}
			RunStages(inChain, HeadStarts(mSequence).GetAhead(inChain, inOutput), ioSound);
			if (inOutput.mKind != Output::Kind::eNone)
			{
				Signal& target = inOutput.mKind == Output::Kind::eMaster ? mMaster : mBuses[inOutput.mSubmix];
				Add(Convert(ioSound, target.size(), inChain.mPan), target);
			}
		}

		void RunStages(Chain const& inChain, std::int64_t inAhead, Signal& ioSound)
		{
			std::int64_t lag = 0;
			for (Stage const& stage : inChain.mStages)
			{
				// The frame of this sound at which the stage begins to work.
				std::int64_t const begin = mNaive.mRange.mFirstPulled + inAhead - lag;
				if (auto const* const fader = std::get_if<Fader>(&stage))
				{
					std::vector<double> const gains = FollowFader(*fader, begin);
					Scale(ioSound, [&](std::size_t inFrame) { return gains[inFrame]; });
				}
				else if (auto const* const send = std::get_if<Send>(&stage))
				{
					Signal sent = Convert(ioSound, mBuses[send->mSubmix].size(), send->mPan);
					Scale(sent, [&](std::size_t inFrame)
						{ return LevelAtBlock(send->mLevel, begin, static_cast<std::int64_t>(inFrame)); });
					Add(sent, mBuses[send->mSubmix]);
				}
				else if (auto const* const effect = std::get_if<Effect>(&stage))
				{
					double const gain = effect->mMake.target<LatentEffect>()->mGain;
					Scale(ioSound, [gain](std::size_t) { return gain; });
				}
				lag += GetLatency(stage);
			}
		}

		// As it was sampled at the first frame of the control block that holds the frame.
		double LevelAtBlock(Fader const& inFader, std::int64_t inBegin, std::int64_t inFrame) const
		{
			std::int64_t const block = std::max<std::int64_t>(inFrame - inBegin, 0) / kControlFrames;
			std::int64_t const frame = mIsOutermost ? inBegin + block * kControlFrames : 0;
			return GetLevel(inFader, SN::TickTime(frame, mNaive.mRange.mFrameRate));
		}

		// Each new level is reached in a straight line, which begins where the one before has got to.
		std::vector<double> FollowFader(Fader const& inFader, std::int64_t inBegin) const
		{
			double const rate = mNaive.mRange.mFrameRate.GetSamplesPerSecond();
			auto const length =
				std::max<std::int64_t>(1, std::llround(rate * static_cast<double>(kRampSeconds)));
			double from = LevelAtBlock(inFader, inBegin, inBegin);
			double target = from;
			std::int64_t done = length;
			std::vector<double> gains(static_cast<std::size_t>(mFrames), target);
			auto const getGain = [&]
			{
				return done >= length
						   ? target
						   : from + (target - from) * static_cast<double>(done) / static_cast<double>(length);
			};
			for (std::int64_t frame = inBegin; mIsOutermost && frame < mFrames; ++frame, ++done)
			{
				bool const isBlockStart = (frame - inBegin) % kControlFrames == 0;
				double const level = isBlockStart ? LevelAtBlock(inFader, inBegin, frame) : target;
				if (level != target)
				{
					from = getGain();
					target = level;
					done = 0;
				}
				if (frame >= 0)
				{
					gains[static_cast<std::size_t>(frame)] = getGain();
				}
			}
			return gains;
		}

		Signal MakeTrack(Track const& inTrack)
		{
			Signal sound = MakeSilence(inTrack.mLayout.size(), mFrames);
			for (std::size_t index = 0; index < inTrack.mItems.size(); ++index)
			{
				AddItem(inTrack, index, sound);
			}
			return sound;
		}

		std::int64_t ToFrame(SN::TickTime const& inTime) const
		{
			return GetNearestFrame(inTime, mNaive.mRange.mFrameRate);
		}

		Extent GetExtent(Track const& inTrack, std::size_t inIndex) const
		{
			Item const& item = inTrack.mItems[inIndex];
			Extent extent{ToFrame(item.mStart), ToFrame(item.mEnd), ToFrame(item.mFadeIn.mLength),
				ToFrame(item.mFadeOut.mLength), item.mFadeIn.mShape, item.mFadeOut.mShape};
			for (Crossfade const& crossfade : inTrack.mCrossfades)
			{
				std::int64_t const before = ToFrame(crossfade.mBefore);
				std::int64_t const after = ToFrame(crossfade.mAfter);
				if (crossfade.mOutgoing == inIndex)
				{
					extent.mEnd += after;
					extent.mFall = before + after;
					extent.mFallShape = crossfade.mOutgoingShape;
				}
				if (crossfade.mOutgoing + 1 == inIndex)
				{
					extent.mStart -= before;
					extent.mRise = before + after;
					extent.mRiseShape = crossfade.mIncomingShape;
				}
			}
			return extent;
		}

		void AddItem(Track const& inTrack, std::size_t inIndex, Signal& ioTrack)
		{
			Item const& item = inTrack.mItems[inIndex];
			Extent const extent = GetExtent(inTrack, inIndex);
			if (extent.mEnd <= extent.mStart)
			{
				return;
			}
			// Where frame 0 of the track stands in what the item plays.
			std::int64_t const shift = extent.mStart;
			Signal sound = Read(item, shift - ToFrame(item.mStart), extent.mEnd - extent.mStart);
			for (Stage const& stage : item.mChain.mStages)
			{
				auto const* const fader = std::get_if<Fader>(&stage);
				double const gain = fader ? GetLevel(*fader, {})
										  : std::get<Effect>(stage).mMake.target<LatentEffect>()->mGain;
				Scale(sound, [gain](std::size_t) { return gain; });
			}
			sound = Convert(sound, ioTrack.size(), item.mChain.mPan);
			Scale(sound, [&](std::size_t inFrame)
				{ return extent.GetGain(shift + static_cast<std::int64_t>(inFrame)); });
			for (std::size_t channel = 0; channel < ioTrack.size(); ++channel)
			{
				for (std::int64_t frame = std::max<std::int64_t>(0, shift);
					 frame < std::min(extent.mEnd, mFrames); ++frame)
				{
					ioTrack[channel][static_cast<std::size_t>(frame)] +=
						sound[channel][static_cast<std::size_t>(frame - shift)];
				}
			}
		}

		// Of the item's content so many frames, from one on that is told from the item's start.
		Signal Read(Item const& inItem, std::int64_t inFirst, std::int64_t inFrames)
		{
			auto const step = static_cast<std::int64_t>(inItem.mSpeed);
			auto const read = [&](auto const& inSamples, std::vector<unsigned> const& inChannels,
								  std::int64_t inContentFirst)
			{
				Signal result = MakeSilence(inChannels.size(), inFrames);
				auto const end = static_cast<std::int64_t>(inSamples.front().size());
				for (std::size_t channel = 0; step != 0 && channel < inChannels.size(); ++channel)
				{
					for (std::int64_t i = 0; i < inFrames; ++i)
					{
						std::int64_t const frame = inContentFirst + step * (inFirst + i);
						bool const isInside = frame >= 0 && frame < end;
						result[channel][static_cast<std::size_t>(i)] =
							isInside ? static_cast<double>(
										   inSamples[inChannels[channel]][static_cast<std::size_t>(frame)])
									 : 0.0;
					}
				}
				return result;
			};
			auto const listChannels = [](std::size_t inCount)
			{
				std::vector<unsigned> channels(inCount);
				for (unsigned channel = 0; channel < inCount; ++channel)
				{
					channels[channel] = channel;
				}
				return channels;
			};
			if (auto const* const clip = std::get_if<Clip>(&inItem.mContent))
			{
				auto const& samples = *static_cast<MemoryMedia const&>(*clip->mMedia).mSamples;
				return read(samples, clip->mChannels.empty() ? listChannels(samples.size()) : clip->mChannels,
					clip->mFirstFrame);
			}
			auto const& nest = std::get<Nest>(inItem.mContent);
			Signal const& samples = mNaive.GetNested(*nest.mSequence);
			return read(samples, listChannels(samples.size()), ToFrame(nest.mStart));
		}

		Naive& mNaive;
		Description const& mSequence;
		std::int64_t mFrames;
		bool mIsOutermost;
		SN::AudioChannelMix::MixdownType51 mMixdown;
		Signal mMaster;
		std::vector<Signal> mBuses;
	};

	Signal const& GetNested(Description const& inSequence)
	{
		auto const found = mNested.find(&inSequence);
		if (found != mNested.end())
		{
			return found->second;
		}
		std::int64_t frames = 0;
		for (Track const& track : inSequence.mTracks)
		{
			for (Item const& item : track.mItems)
			{
				frames = std::max(frames, GetNearestFrame(item.mEnd, mRange.mFrameRate));
			}
		}
		return mNested.emplace(&inSequence, Render(inSequence, frames, false)).first->second;
	}

	NaiveRange mRange;
	std::map<Description const*, Signal> mNested;
};

} // namespace

Signal RenderNaively(Description const& inSequence, NaiveRange const& inRange)
{
	return Naive(inRange).Render(inSequence, inRange.mFrames, true);
}

std::int64_t GetNearestFrame(SN::TickTime const& inTime, SN::FrameRate const& inFrameRate)
{
	std::int64_t const ticks = inFrameRate.GetTicksPerFrame();
	return (SN::TickTime::FromTicks(inTime.GetTicks() + ticks / 2)).ToFrame64(inFrameRate);
}

} // namespace SonaroHost::Sequence::Testing
