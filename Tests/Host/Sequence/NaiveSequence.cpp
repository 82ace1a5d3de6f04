#include "NaiveSequence.h"

#include "Media/RampConverter.h"
#include "MemoryMedia.h"
#include "SonaroHost/Media/RateConverter.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <numeric>
#include <type_traits>

namespace SonaroHost::Sequence::Testing
{

namespace
{

constexpr std::size_t kMono = 1;
constexpr std::size_t kStereo = 2;
constexpr std::size_t kSurround = 6;
constexpr double kQuarterTurn = std::numbers::pi / 2;
// Of a mute that has been prerolled.
constexpr double kMuteSeconds = 0.01;

LatentEffect GetEffect(Stage const& inStage)
{
	auto const* const effect = std::get_if<Effect>(&inStage);
	return effect ? *effect->mMake.target<LatentEffect>() : LatentEffect();
}

std::int64_t GetLatency(Chain const& inChain)
{
	return std::accumulate(inChain.mStages.begin(), inChain.mStages.end(), std::int64_t{0},
		[](std::int64_t inSum, Stage const& inStage) { return inSum + GetEffect(inStage).mDelayFrames; });
}

// Gains by output and input channel.
using Matrix = std::vector<std::vector<double>>;

// 5.1 as left, right, centre, low frequency, left surround, right surround; with the engine's constants,
// which are cut to a few digits.
Matrix GetMixdownGains(std::size_t inOutputs, unsigned inType)
{
	bool const isMono = inOutputs == kMono;
	bool const hasRear = inType == SN::AudioChannelMix::kMixdownFrontRear ||
						 inType == SN::AudioChannelMix::kMixdownFrontRearLFE;
	bool const hasLow = inType == SN::AudioChannelMix::kMixdownFrontLFE ||
						inType == SN::AudioChannelMix::kMixdownFrontRearLFE;
	double const whole = hasRear && hasLow ? (isMono ? 0.666666 : 0.521739)
						 : hasRear         ? (isMono ? 0.75 : 0.63157)
						 : hasLow          ? (isMono ? 0.85714 : 0.63157)
										   : (isMono ? 1.0 : 0.8);
	double const side = whole * (isMono ? 0.333333 : 0.75);
	double const centre = whole * (isMono ? 0.333333 : 0.5);
	double const other = whole * (isMono ? 1.0 / 6.0 : 0.33);
	double const low = hasLow ? other : 0.0;
	double const rear = hasRear ? other : 0.0;
	return isMono ? Matrix{{side, side, centre, low, rear, rear}}
				  : Matrix{{side, 0.0, centre, low, rear, 0.0}, {0.0, side, centre, low, 0.0, rear}};
}

// Without a pan. What has no conversion of its own goes by place.
Matrix GetFixedGains(std::size_t inInputs, std::size_t inOutputs, unsigned inMixdown)
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
	bool const isSingle = inInputs == kMono;
	double const reach = isSingle ? 1.0 : 2.0;
	gains[0][0] = std::sin(kQuarterTurn * std::min(1.0, reach * (1.0 - inPan)));
	gains[1][isSingle ? 0 : 1] = std::sin(kQuarterTurn * std::min(1.0, reach * inPan));
	return gains;
}

Signal MakeSilence(std::size_t inChannels, std::int64_t inFrames)
{
	return Signal(inChannels, std::vector<double>(static_cast<std::size_t>(inFrames), 0.0));
}

// inPanAt: of a frame; empty without a pan.
Signal Convert(Signal const& inSound, std::size_t inOutputs,
	std::function<double(std::int64_t)> const& inPanAt, unsigned inMixdown)
{
	Matrix gains = GetFixedGains(inSound.size(), inOutputs, inMixdown);
	Signal result(inOutputs, std::vector<double>(inSound.front().size(), 0.0));
	double pan = -1.0;
	for (std::size_t i = 0; i < inSound.front().size(); ++i)
	{
		if (double const next = inPanAt ? inPanAt(static_cast<std::int64_t>(i)) : pan; next != pan)
		{
			pan = next;
			gains = GetPannedGains(inSound.size(), inOutputs, pan);
		}
		for (std::size_t output = 0; output < inOutputs; ++output)
		{
			for (std::size_t input = 0; input < inSound.size(); ++input)
			{
				result[output][i] += gains[output][input] * inSound[input][i];
			}
		}
	}
	return result;
}

template <class GainAt>
void Scale(Signal& ioSound, GainAt const& inGainAt)
{
	for (std::size_t i = 0; i < ioSound.front().size(); ++i)
	{
		double const gain = inGainAt(static_cast<std::int64_t>(i));
		for (std::vector<double>& channel : ioSound)
		{
			channel[i] *= gain;
		}
	}
}

// Frame 0 of the sound falls on that frame of the sum; what lies beyond it is lost.
void Add(Signal const& inSound, std::int64_t inFirst, Signal& ioSum)
{
	auto const frames = static_cast<std::int64_t>(ioSum.front().size());
	auto const end = std::min(frames, inFirst + static_cast<std::int64_t>(inSound.front().size()));
	for (std::size_t channel = 0; channel < ioSum.size(); ++channel)
	{
		for (std::int64_t frame = std::max<std::int64_t>(0, inFirst); frame < end; ++frame)
		{
			ioSum[channel][static_cast<std::size_t>(frame)] +=
				inSound[channel][static_cast<std::size_t>(frame - inFirst)];
		}
	}
}

double GetRise(FadeShape inShape, std::int64_t inFrame, std::int64_t inFrames)
{
	double const progress = static_cast<double>(inFrame) / static_cast<double>(inFrames);
	return inShape == FadeShape::kEqualPower ? std::sin(kQuarterTurn * progress)
		   : inShape == FadeShape::kSCurve   ? progress * progress * (3.0 - 2.0 * progress)
											 : progress;
}

// Where an item is heard, in frames of its track, and how it comes and goes.
struct Extent
{
	double GetGain(std::int64_t inFrame) const
	{
		std::int64_t const done = inFrame - mStart;
		std::int64_t const left = mEnd - inFrame;
		return (done < mRise ? GetRise(mRiseShape, done, mRise) : 1.0) *
			   (left <= mFall ? GetRise(mFallShape, left, mFall) : 1.0);
	}

	std::int64_t mStart = 0;
	std::int64_t mEnd = 0;
	std::int64_t mRise = 0;
	std::int64_t mFall = 0;
	FadeShape mRiseShape = FadeShape::kLinear;
	FadeShape mFallShape = FadeShape::kLinear;
};

// What all sequences of a render share.
struct Naive
{
	std::int64_t ToFrame(SN::TickTime const& inTime) const
	{
		return GetNearestFrame(inTime, mRange.mFrameRate);
	}
	Signal const& GetNested(Description const& inSequence);

	template <class T>
	NaiveParameter<T> Follow(
		SN::InterfaceRef<AutomationParameter<T>> const& inParameter, NaivePlace const& inPlace) const
	{
		auto const find = [&](auto const& inEdits) -> decltype(&inEdits.begin()->second)
		{
			auto const found = inEdits.find(inParameter.Get());
			return found == inEdits.end() ? nullptr : &found->second;
		};
		if constexpr (std::is_same_v<T, bool>)
		{
			auto const* const edits = mRange.mEdits ? find(mRange.mEdits->mSwitches) : nullptr;
			return {inParameter, mRange.mFrameRate, edits, inPlace};
		}
		else
		{
			auto const* const edits = mRange.mEdits ? find(mRange.mEdits->mNumbers) : nullptr;
			return {inParameter, mRange.mFrameRate, edits, inPlace};
		}
	}

	// Multiplies by a fader. inShift: what its frames are more than the curve's.
	void Fade(Fader const& inFader, NaivePlace const& inPlace, std::int64_t inShift, Signal& ioSound) const
	{
		if (inFader.mGain)
		{
			auto const gain = Follow(inFader.mGain, inPlace);
			Scale(ioSound, [&](std::int64_t inFrame) { return gain.GetValue(inFrame, inShift); });
		}
		if (inFader.mMute)
		{
			auto const mute = Follow(inFader.mMute, inPlace);
			Scale(ioSound, [&](std::int64_t inFrame) { return 1.0 - mute.GetValue(inFrame, inShift); });
		}
	}

	// As above, with a pan, which may be empty.
	Signal Pan(Signal const& inSound, std::size_t inOutputs, NumberParameter const& inPan,
		NaivePlace const& inPlace, std::int64_t inShift, unsigned inMixdown) const
	{
		if (!inPan)
		{
			return Convert(inSound, inOutputs, {}, inMixdown);
		}
		auto const pan = Follow(inPan, inPlace);
		return Convert(
			inSound, inOutputs, [&](std::int64_t inFrame) { return pan.GetValue(inFrame, inShift); },
			inMixdown);
	}

	// What is left of a track or a submix, 0 to 1, at a frame of the playhead.
	double GetAudible(MuteSwitch const& inMute, std::int64_t inPlayhead, double inRampSeconds) const
	{
		if (!inMute)
		{
			return 1.0;
		}
		if (mRange.mEdits)
		{
			auto const found = mRange.mEdits->mMutes.find(inMute.get());
			if (found != mRange.mEdits->mMutes.end())
			{
				double const frames = mRange.mFrameRate.GetSamplesPerSecond() * inRampSeconds;
				return 1.0 - FollowEdits(found->second, inPlayhead, std::llround(frames));
			}
		}
		return inMute->Get() == 0 ? 1.0 : 0.0;
	}

	NaiveRange mRange;
	std::map<Description const*, Signal> mNested;
};

// The items of one track, in one array.
class NaiveTrack
{
public:
	// inAhead: in frames, of the track.
	NaiveTrack(Naive& ioNaive, Track const& inTrack, unsigned inMixdown, std::int64_t inAhead)
		: mNaive(ioNaive),
		  mTrack(inTrack),
		  mMixdown(inMixdown),
		  mAhead(inAhead)
	{
	}

	Signal Render(std::int64_t inFrames)
	{
		Signal sound = MakeSilence(mTrack.mLayout.size(), inFrames);
		for (std::size_t index = 0; index < mTrack.mItems.size(); ++index)
		{
			Extent const extent = GetExtent(index);
			if (extent.mEnd > extent.mStart)
			{
				Add(MakeItem(mTrack.mItems[index], extent), extent.mStart, sound);
			}
		}
		return sound;
	}

private:
	Extent GetExtent(std::size_t inIndex) const
	{
		Item const& item = mTrack.mItems[inIndex];
		Extent extent{mNaive.ToFrame(item.mStart), mNaive.ToFrame(item.mEnd),
			mNaive.ToFrame(item.mFadeIn.mLength), mNaive.ToFrame(item.mFadeOut.mLength), item.mFadeIn.mShape,
			item.mFadeOut.mShape};
		for (Crossfade const& crossfade : mTrack.mCrossfades)
		{
			std::int64_t const before = mNaive.ToFrame(crossfade.mBefore);
			std::int64_t const after = mNaive.ToFrame(crossfade.mAfter);
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

	Signal MakeItem(Item const& inItem, Extent const& inExtent)
	{
		Signal sound =
			Read(inItem, inExtent.mStart - mNaive.ToFrame(inItem.mStart), inExtent.mEnd - inExtent.mStart);
		// Frames of this sound count from where the item is heard first, its curves' from its own start.
		std::int64_t const shift = mNaive.ToFrame(inItem.mStart) - inExtent.mStart;
		NaivePlace place{mAhead - inExtent.mStart + GetLatency(inItem.mChain), inExtent.mStart - mAhead};
		for (Stage const& stage : inItem.mChain.mStages)
		{
			if (auto const* const fader = std::get_if<Fader>(&stage))
			{
				mNaive.Fade(*fader, place, shift, sound);
			}
			LatentEffect const effect = GetEffect(stage);
			Scale(sound, [&](std::int64_t) { return static_cast<double>(effect.mGain); });
			place.mAhead -= effect.mDelayFrames;
		}
		sound = mNaive.Pan(sound, mTrack.mLayout.size(), inItem.mChain.mPan, place, shift, mMixdown);
		Scale(sound, [&](std::int64_t inFrame) { return inExtent.GetGain(inExtent.mStart + inFrame); });
		return sound;
	}

	// Of the item's content so many frames, from one on that is counted from the item's start.
	Signal Read(Item const& inItem, std::int64_t inFirst, std::int64_t inFrames)
	{
		auto const* const clip = std::get_if<Clip>(&inItem.mContent);
		double const graphRate = mNaive.mRange.mFrameRate.GetSamplesPerSecond();
		Ratio const step =
			Ratio::FromExactDouble(inItem.mSpeed) *
			(clip ? Ratio::FromDouble(clip->mMedia->mSampleRate) / Ratio(std::llround(graphRate)) : Ratio(1));
		auto const read = [&](auto const& inSamples, std::vector<unsigned> inChannels, std::int64_t inStart)
		{
			if (inChannels.empty())
			{
				inChannels.resize(inSamples.size());
				std::iota(inChannels.begin(), inChannels.end(), 0u);
			}
			Signal result = MakeSilence(inChannels.size(), inFrames);
			bool const isHeard = inItem.mSpeedCurve || step != Ratio();
			for (std::size_t channel = 0; isHeard && channel < inChannels.size(); ++channel)
			{
				auto const& samples = inSamples[inChannels[channel]];
				auto const getSample = [&](std::int64_t inFrame)
				{
					bool const isInside = inFrame >= 0 && inFrame < static_cast<std::int64_t>(samples.size());
					return isInside ? static_cast<float>(samples[static_cast<std::size_t>(inFrame)]) : 0.0f;
				};
				RateQuality const quality =
					inItem.mResampling == Resampling::kDraft ? RateQuality::kDraft : RateQuality::kFull;
				if (inItem.mSpeedCurve)
				{
					Ratio const rate(std::llround(graphRate));
					RampConverter const converter(*inItem.mSpeedCurve,
						{rate, clip ? Ratio::FromDouble(clip->mMedia->mSampleRate) : rate, 0, inStart,
							inItem.mOffset},
						quality);
					result[channel] = Resample(converter, inFirst, inFrames, getSample);
					continue;
				}
				if (step != Ratio(1) && step != Ratio(-1))
				{
					RateConverter const converter(step, {inStart, inItem.mOffset}, quality);
					result[channel] = Resample(converter, inFirst, inFrames, getSample);
					continue;
				}
				for (std::int64_t i = 0; i < inFrames; ++i)
				{
					result[channel][static_cast<std::size_t>(i)] =
						static_cast<double>(getSample(inStart + step.GetNumerator() * (inFirst + i)));
				}
			}
			return result;
		};
		if (clip)
		{
			auto const& media = static_cast<MemoryMedia const&>(*clip->mMedia);
			return read(*media.mSamples, clip->mChannels, clip->mFirstFrame);
		}
		if (auto const* const multicam = std::get_if<Multicam>(&inItem.mContent))
		{
			return read(MixAngles(*multicam), {}, mNaive.ToFrame(multicam->mStart));
		}
		auto const& nest = std::get<Nest>(inItem.mContent);
		return read(mNaive.GetNested(*nest.mSequence), {}, mNaive.ToFrame(nest.mStart));
	}

	// What the cuts leave of all angles.
	Signal MixAngles(Multicam const& inMulticam)
	{
		std::vector<Signal const*> angles;
		std::size_t frames = 0;
		for (auto const& angle : inMulticam.mAngles)
		{
			angles.push_back(&mNaive.GetNested(*angle));
			frames = std::max(frames, angles.back()->front().size());
		}
		if (!inMulticam.mCuts.empty())
		{
			// Also those beyond all angles shorten the fades before them.
			auto const last = mNaive.ToFrame(inMulticam.mCuts.back().mTime);
			frames = std::max(frames, static_cast<std::size_t>(std::max<std::int64_t>(last, 0)) + 1);
		}
		auto const getSample = [&](std::size_t inAngle, std::size_t inChannel, std::size_t inFrame)
		{
			std::vector<double> const& samples = (*angles[inAngle])[inChannel];
			return inFrame < samples.size() ? samples[inFrame] : 0.0;
		};
		std::vector<Multicam::Cut const*> cuts(frames, nullptr);
		for (Multicam::Cut const& cut : inMulticam.mCuts)
		{
			auto const frame = static_cast<std::size_t>(std::max<std::int64_t>(mNaive.ToFrame(cut.mTime), 0));
			std::fill(cuts.begin() + static_cast<std::ptrdiff_t>(std::min(frame, frames)), cuts.end(), &cut);
		}
		auto const getAngle = [&](std::size_t inFrame)
		{ return cuts[inFrame] ? cuts[inFrame]->mAngle : inMulticam.mFirstAngle; };
		Signal result(angles.front()->size(), std::vector<double>(frames));
		for (std::size_t first = 0, end = 0; first < frames; first = end)
		{
			while (end < frames && getAngle(end) == getAngle(first))
			{
				++end;
			}
			// Past the end it would go on.
			std::int64_t const most =
				end < frames ? static_cast<std::int64_t>(end - first) : mNaive.ToFrame(SN::kTimeMax);
			std::int64_t const fade =
				first > 0 ? std::min(mNaive.ToFrame(cuts[first]->mFade.mLength), most) : 0;
			for (std::size_t frame = first; frame < end; ++frame)
			{
				auto const done = static_cast<std::int64_t>(frame - first);
				for (std::size_t channel = 0; channel < result.size(); ++channel)
				{
					double const sample = getSample(getAngle(frame), channel, frame);
					result[channel][frame] =
						done >= fade ? sample
									 : sample * GetRise(cuts[first]->mFade.mShape, done, fade) +
										   getSample(getAngle(first - 1), channel, frame) *
											   GetRise(cuts[first]->mFade.mShape, fade - done, fade);
				}
			}
		}
		return result;
	}

	// All at once. The converter itself has tests of its own.
	template <class GetSample>
	static std::vector<double> Resample(SampleConverter const& inConverter, std::int64_t inFirst,
		std::int64_t inFrames, GetSample const& inGetSample)
	{
		auto const [first, end] = inConverter.GetInput(inFirst, inFrames);
		std::vector<float> input;
		for (std::int64_t frame = first; frame < end; ++frame)
		{
			input.push_back(inGetSample(frame));
		}
		std::vector<float> output(static_cast<std::size_t>(inFrames));
		RateConverter::Channel const channel{input.data(), output.data()};
		inConverter.Convert(inFirst, static_cast<unsigned>(inFrames), {&channel, 1});
		return {output.begin(), output.end()};
	}

	Naive& mNaive;
	Track const& mTrack;
	unsigned mMixdown;
	std::int64_t mAhead;
};

// One sequence: what its tracks and submixes add up to.
class NaiveMix
{
public:
	NaiveMix(Naive& ioNaive, Description const& inSequence, std::int64_t inFrames)
		: mNaive(ioNaive),
		  mSequence(inSequence),
		  mFrames(inFrames),
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
			RunStrip(NaiveTrack(mNaive, track, mMixdown, GetAhead(track)).Render(mFrames), track);
		}
		std::vector<bool> isDone(mBuses.size(), false);
		for (std::size_t next = FindReady(isDone); next < mBuses.size(); next = FindReady(isDone))
		{
			RunStrip(mBuses[next], mSequence.mSubmixes[next]);
			isDone[next] = true;
		}
		RunStages(mSequence.mMaster, GetLatency(mSequence.mMaster), {}, mMaster);
		return std::move(mMaster);
	}

private:
	static bool Feeds(Submix const& inFrom, std::size_t inTo)
	{
		auto const isSendThere = [inTo](Stage const& inStage)
		{
			auto const* const send = std::get_if<Send>(&inStage);
			return send && send->mSubmix == inTo;
		};
		return (inFrom.mOutput.mKind == Output::Kind::kSubmix && inFrom.mOutput.mSubmix == inTo) ||
			   std::any_of(inFrom.mChain.mStages.begin(), inFrom.mChain.mStages.end(), isSendThere);
	}

	// Of the submixes that are not done, one that waits for none of them.
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

	// By how much a track or a submix runs ahead of time: by the longest way from it to the output.
	template <class Strip>
	std::int64_t GetAhead(Strip const& inStrip) const
	{
		std::int64_t ahead = 0;
		std::int64_t before = 0;
		bool hasSends = false;
		for (Stage const& stage : inStrip.mChain.mStages)
		{
			before += GetEffect(stage).mDelayFrames;
			if (auto const* const send = std::get_if<Send>(&stage))
			{
				ahead = std::max(ahead, before + GetAhead(mSequence.mSubmixes[send->mSubmix]));
				hasSends = true;
			}
		}
		if (inStrip.mOutput.mKind == Output::Kind::kNone)
		{
			return hasSends ? ahead : before;
		}
		bool const isMaster = inStrip.mOutput.mKind == Output::Kind::kMaster;
		return std::max(ahead, before + (isMaster ? GetLatency(mSequence.mMaster)
												  : GetAhead(mSequence.mSubmixes[inStrip.mOutput.mSubmix])));
	}

	template <class Strip>
	void RunStrip(Signal ioSound, Strip const& inStrip)
	{
		std::int64_t const ahead = GetAhead(inStrip);
		// Whoever is muted hears nothing from where the ramp has ended.
		Scale(ioSound,
			[&](std::int64_t inFrame)
			{
				// The first frame of a ramp that rises is as silent as what is not asked for.
				std::int64_t const playhead = inFrame - ahead;
				return std::max(mNaive.GetAudible(inStrip.mMute, playhead, kMuteSeconds),
						   mNaive.GetAudible(inStrip.mMute, playhead + 1, kMuteSeconds)) > 0.0
						   ? 1.0
						   : 0.0;
			});
		RunStages(inStrip.mChain, ahead, inStrip.mMute, ioSound);
		if (inStrip.mOutput.mKind != Output::Kind::kNone)
		{
			bool const isMaster = inStrip.mOutput.mKind == Output::Kind::kMaster;
			Signal& target = isMaster ? mMaster : mBuses[inStrip.mOutput.mSubmix];
			std::int64_t const targetAhead = isMaster
												 ? GetLatency(mSequence.mMaster)
												 : GetAhead(mSequence.mSubmixes[inStrip.mOutput.mSubmix]);
			Signal sound = mNaive.Pan(ioSound, target.size(), inStrip.mChain.mPan,
				{ahead - GetLatency(inStrip.mChain)}, 0, mMixdown);
			Scale(sound, [&](std::int64_t inFrame)
				{ return mNaive.GetAudible(inStrip.mMute, inFrame - targetAhead, kMuteSeconds); });
			Add(sound, 0, target);
		}
	}

	void RunStages(Chain const& inChain, std::int64_t inAhead, MuteSwitch const& inMute, Signal& ioSound)
	{
		std::int64_t ahead = inAhead;
		for (Stage const& stage : inChain.mStages)
		{
			if (auto const* const fader = std::get_if<Fader>(&stage))
			{
				mNaive.Fade(*fader, {ahead}, 0, ioSound);
			}
			else if (auto const* const send = std::get_if<Send>(&stage))
			{
				Signal& target = mBuses[send->mSubmix];
				Signal sent = mNaive.Pan(ioSound, target.size(), send->mPan, {ahead}, 0, mMixdown);
				mNaive.Fade(send->mLevel, {ahead}, 0, sent);
				Scale(sent, [&](std::int64_t inFrame)
					{ return mNaive.GetAudible(inMute, inFrame - ahead, kMuteSeconds); });
				Add(sent, 0, target);
			}
			else
			{
				Scale(ioSound, [&](std::int64_t) { return static_cast<double>(GetEffect(stage).mGain); });
			}
			ahead -= GetEffect(stage).mDelayFrames;
		}
	}

	Naive& mNaive;
	Description const& mSequence;
	std::int64_t mFrames;
	unsigned mMixdown;
	Signal mMaster;
	std::vector<Signal> mBuses;
};

Signal const& Naive::GetNested(Description const& inSequence)
{
	auto const found = mNested.find(&inSequence);
	if (found != mNested.end())
	{
		return found->second;
	}
	std::int64_t frames = 0;
	for (Track const& track : inSequence.mTracks)
	{
		frames = track.mItems.empty() ? frames : std::max(frames, ToFrame(track.mItems.back().mEnd));
	}
	return mNested.emplace(&inSequence, NaiveMix(*this, inSequence, frames).Run()).first->second;
}

} // namespace

Signal RenderNaively(Description const& inSequence, NaiveRange const& inRange)
{
	Naive naive{inRange, {}};
	return NaiveMix(naive, inSequence, inRange.mFrames).Run();
}

std::int64_t GetNearestFrame(SN::TickTime const& inTime, SN::FrameRate const& inFrameRate)
{
	SN::TickTime const half = SN::TickTime::FromTicks(inFrameRate.GetTicksPerFrame() / 2);
	return (inTime + half).ToFrame64(inFrameRate);
}

} // namespace SonaroHost::Sequence::Testing
