#include "RandomSequence.h"

#include "MemoryMedia.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>
#include <string>

namespace SonaroHost::Sequence::Testing
{

namespace
{

constexpr std::int64_t kMostLatency = 5000;
constexpr unsigned kDeepest = 4;

struct Nestable
{
	std::shared_ptr<Description const> mSequence;
	// Of sequences in one another, itself included.
	unsigned mDepth = 1;
	bool mHasItemLatency = false;
};

class Generator
{
public:
	Generator(unsigned inSeed, RandomTraits const& inTraits)
		: mRandom(inSeed),
		  mTraits(inTraits)
	{
		constexpr double kRates[] = {44100.0, 48000.0, 96000.0};
		mSamplesPerSecond = kRates[Below(3)];
		mFrameRate = SN::FrameRate::FromSamplesPerSecond(mSamplesPerSecond);
		mFrames = static_cast<std::int64_t>(mSamplesPerSecond * (0.05 + 0.35 * Unit()));
		mHasExactFades = !Chance(0.1);
		if (Chance(0.2))
		{
			mMixdown = static_cast<SN::AudioChannelMix::MixdownType51>(1 + Below(4));
		}
	}

	RandomSequence Run()
	{
		for (std::size_t const channels : {1u, 2u, 6u, 1u, 2u})
		{
			mMedia.push_back(MakeMedia(channels));
		}
		for (unsigned count = static_cast<unsigned>(Below(5)); count > 0; --count)
		{
			mNestable.push_back(MakeSequence(false));
		}
		constexpr double kSingle = 1e-6;
		constexpr double kCarriedProgress = 2e-4;
		return {MakeSequence(true).mSequence, mFrameRate, mHasExactFades ? kSingle : kCarriedProgress,
			mHasExactFades};
	}

private:
	// The distributions of the standard library differ from one to the next.
	std::int64_t Below(std::int64_t inEnd)
	{
		return static_cast<std::int64_t>(mRandom() % static_cast<std::uint64_t>(inEnd));
	}
	double Unit() { return static_cast<double>(mRandom() >> 11) * 0x1p-53; }
	bool Chance(double inProbability) { return Unit() < inProbability; }

	std::shared_ptr<Media const> MakeMedia(std::size_t inChannels)
	{
		MemoryMedia::Samples samples(
			inChannels, std::vector<float>(static_cast<std::size_t>(1 + Below(mFrames * 5 / 4))));
		for (std::vector<float>& channel : samples)
		{
			std::generate(
				channel.begin(), channel.end(), [this] { return static_cast<float>(2.0 * Unit() - 1.0); });
		}
		return std::make_shared<MemoryMedia>(mSamplesPerSecond, std::move(samples));
	}

	SN::AudioChannelLayout PickLayout()
	{
		double const choice = Unit();
		return choice < 0.4   ? zorvmediatypes::CreateMonoChannelLayout()
			   : choice < 0.9 ? zorvmediatypes::CreateStereoChannelLayout()
							  : zorvmediatypes::Create51ChannelLayout();
	}

	// Short ones as often as long ones.
	std::int64_t PickLength(std::int64_t inLongest)
	{
		return std::max<std::int64_t>(1, std::llround(std::pow(static_cast<double>(inLongest), Unit())));
	}

	SN::TickTime ToTime(std::int64_t inFrame) const { return {inFrame, mFrameRate}; }

	// Near a frame, but at most times not on it.
	SN::TickTime ToRoughTime(std::int64_t inFrame)
	{
		std::int64_t const largest = mFrameRate.GetTicksPerFrame() / 2 - 1;
		bool const isExact = inFrame == 0 || Chance(0.3);
		return ToTime(inFrame) + SN::TickTime::FromTicks(isExact ? 0 : Below(2 * largest) - largest);
	}

	std::int64_t PickFadeLength(std::int64_t inLongest)
	{
		std::int64_t const length = PickLength(inLongest);
		return mHasExactFades ? static_cast<std::int64_t>(std::bit_floor(static_cast<std::uint64_t>(length)))
							  : length;
	}

	FadeShape PickShape() { return static_cast<FadeShape>(Below(3)); }

	SN::InterfaceRef<AutomationParameter<float>> MakeCurve(double inLow, double inHigh)
	{
		std::vector<AutomationPoint> points;
		for (std::int64_t count = 1 + Below(6); count > 0; --count)
		{
			points.push_back(
				{SN::TickTime::FromSeconds(Unit() * static_cast<double>(mFrames) / mSamplesPerSecond),
					inLow + (inHigh - inLow) * Unit(), static_cast<Interpolation>(Below(3))});
		}
		auto parameter = AutomationParameter<float>::Create(0.5f);
		parameter->SetCurve(std::make_shared<AutomationCurve const>(std::move(points)));
		return parameter;
	}

	NumberParameter MakeConstant(double inLow, double inHigh)
	{
		return AutomationParameter<float>::Create(static_cast<float>(inLow + (inHigh - inLow) * Unit()));
	}

	Fader MakeFader(bool inMayMove)
	{
		Fader fader;
		bool const moves = inMayMove && mTraits.mCurves && Chance(0.6);
		if (Chance(0.8))
		{
			fader.mGain = moves ? MakeCurve(0.0, 1.2) : MakeConstant(Chance(0.1) ? 1.0 : 0.2, 1.0);
		}
		if (Chance(0.2))
		{
			fader.mMute = AutomationParameter<bool>::Create(Chance(0.3));
			if (moves)
			{
				SN::TickTime const on = ToRoughTime(Below(mFrames));
				fader.mMute->SetCurve(std::make_shared<AutomationCurve const>(std::vector<AutomationPoint>{
					{SN::kTimeZero, 0.0, Interpolation::eHold}, {on, 1.0, Interpolation::eHold},
					{on + ToTime(1 + Below(mFrames)), 0.0, Interpolation::eHold}}));
			}
		}
		return fader;
	}

	// Where the layouts have a panner.
	NumberParameter MakePan(SN::AudioChannelLayout const& inFrom, SN::AudioChannelLayout const& inTo)
	{
		bool const canPan = inFrom.size() <= 2 && inTo.size() >= 2;
		return canPan && Chance(0.5) ? MakeConstant(0.0, 1.0) : NumberParameter();
	}

	Effect MakeEffect(bool inMayBeLate)
	{
		LatentEffect effect;
		effect.mDelayFrames = inMayBeLate && Chance(0.7) ? PickLength(kMostLatency) : 0;
		effect.mGain = static_cast<float>(1.0 - 0.4 * Unit());
		return {"late by " + std::to_string(effect.mDelayFrames), effect};
	}

	Chain MakeItemChain(Nestable& ioSequence)
	{
		Chain chain;
		while (Chance(0.3))
		{
			bool const isLate = mTraits.mItemLatency && Chance(0.5);
			ioSequence.mHasItemLatency = ioSequence.mHasItemLatency || isLate;
			chain.mStages.push_back(Chance(0.5) ? Stage(MakeFader(false)) : Stage(MakeEffect(isLate)));
		}
		return chain;
	}

	// Of a track or a submix; inTargets are the submixes that it may feed.
	void MakeRouting(Description const& inSequence, std::vector<std::size_t> const& inTargets,
		bool inIsOutermost, SN::AudioChannelLayout const& inLayout, Chain& outChain, MuteSwitch& outMute,
		Output& outOutput)
	{
		auto const pick = [&]
		{ return inTargets[static_cast<std::size_t>(Below(static_cast<std::int64_t>(inTargets.size())))]; };
		while (Chance(0.55))
		{
			double const choice = Unit();
			if (choice < 0.4 && !inTargets.empty())
			{
				std::size_t const target = pick();
				outChain.mStages.push_back(Send{target, MakeFader(inIsOutermost),
					MakePan(inLayout, inSequence.mSubmixes[target].mLayout)});
			}
			else
			{
				outChain.mStages.push_back(
					choice < 0.7 ? Stage(MakeFader(inIsOutermost)) : Stage(MakeEffect(true)));
			}
		}
		if (Chance(0.2))
		{
			outMute = std::make_shared<zorvcore::threads::AtomicIntegral<int>>(Chance(0.5) ? 1 : 0);
		}
		if (!inTargets.empty() && Chance(0.45))
		{
			outOutput = {Output::Kind::eSubmix, pick()};
		}
		else if (Chance(0.08))
		{
			outOutput.mKind = Output::Kind::eNone;
		}
		SN::AudioChannelLayout const& to = outOutput.mKind == Output::Kind::eSubmix
											   ? inSequence.mSubmixes[outOutput.mSubmix].mLayout
											   : inSequence.mLayout;
		if (outOutput.mKind != Output::Kind::eNone)
		{
			outChain.mPan = MakePan(inLayout, to);
		}
	}

	Clip MakeClip()
	{
		Clip clip;
		clip.mMedia = mMedia[static_cast<std::size_t>(Below(static_cast<std::int64_t>(mMedia.size())))];
		clip.mFirstFrame = Below(clip.mMedia->mFrames + 200) - 100;
		if (clip.mMedia->mLayout.size() > 1 && Chance(0.3))
		{
			auto const count = static_cast<std::int64_t>(clip.mMedia->mLayout.size());
			clip.mChannels.push_back(static_cast<unsigned>(Below(count)));
			if (Chance(0.5))
			{
				clip.mChannels.push_back(static_cast<unsigned>(Below(count)));
			}
		}
		return clip;
	}

	// Returns the layout of the content.
	SN::AudioChannelLayout MakeContent(Nestable& ioSequence, unsigned& ioNests, Item& outItem)
	{
		constexpr double kSpeeds[] = {1.0, 1.0, 1.0, 1.0, -1.0, -1.0, 0.0};
		outItem.mSpeed = kSpeeds[Below(7)];
		if (!mNestable.empty() && ioNests > 0 && Chance(0.5))
		{
			Nestable const& nested =
				mNestable[static_cast<std::size_t>(Below(static_cast<std::int64_t>(mNestable.size())))];
			if (nested.mDepth < kDeepest && !(nested.mHasItemLatency && outItem.mSpeed < 0.0))
			{
				--ioNests;
				outItem.mContent = Nest{nested.mSequence, ToRoughTime(Chance(0.3) ? 0 : Below(mFrames))};
				ioSequence.mDepth = std::max(ioSequence.mDepth, nested.mDepth + 1);
				ioSequence.mHasItemLatency = ioSequence.mHasItemLatency || nested.mHasItemLatency;
				return nested.mSequence->mLayout;
			}
		}
		Clip const clip = MakeClip();
		outItem.mContent = clip;
		return clip.mChannels.empty()       ? clip.mMedia->mLayout
			   : clip.mChannels.size() == 1 ? zorvmediatypes::CreateMonoChannelLayout()
											: zorvmediatypes::CreateStereoChannelLayout();
	}

	void FillTrack(Nestable& ioSequence, unsigned& ioNests, Track& ioTrack)
	{
		// Items' lengths, and whether the next one follows without a gap.
		std::vector<std::int64_t> lengths;
		std::vector<bool> isFollowed;
		std::int64_t frame = Chance(0.5) ? 0 : Below(mFrames);
		SN::TickTime time = ToRoughTime(frame);
		for (std::int64_t count = Below(6); count > 0 && frame < mFrames; --count)
		{
			Item item;
			item.mName = "item " + std::to_string(ioTrack.mItems.size());
			lengths.push_back(PickLength(mFrames));
			item.mStart = time;
			time = ToRoughTime(frame += lengths.back());
			item.mEnd = time;
			SN::AudioChannelLayout const layout = MakeContent(ioSequence, ioNests, item);
			item.mChain = MakeItemChain(ioSequence);
			item.mChain.mPan = MakePan(layout, ioTrack.mLayout);
			ioTrack.mItems.push_back(std::move(item));
			isFollowed.push_back(Chance(0.6) && count > 1 && frame < mFrames);
			if (!isFollowed.back())
			{
				time = ToRoughTime(frame += 1 + Below(mFrames / 4));
			}
		}
		AddFades(lengths, isFollowed, ioTrack);
	}

	// Each takes at most half of an item.
	void AddFades(
		std::vector<std::int64_t> const& inLengths, std::vector<bool> const& inIsFollowed, Track& ioTrack)
	{
		bool isReached = false;
		for (std::size_t index = 0; index < inLengths.size(); ++index)
		{
			Item& item = ioTrack.mItems[index];
			std::int64_t const half = inLengths[index] / 2;
			if (!isReached && half > 0 && Chance(0.3))
			{
				item.mFadeIn = {ToTime(PickFadeLength(half)), PickShape()};
			}
			isReached = false;
			if (half > 0 && inIsFollowed[index] && inLengths[index + 1] > 1 && Chance(0.6))
			{
				std::int64_t const length = PickFadeLength(std::min(half, inLengths[index + 1] / 2));
				std::int64_t const before = Below(length + 1);
				ioTrack.mCrossfades.push_back(
					{index, ToTime(before), ToTime(length - before), PickShape(), PickShape()});
				isReached = true;
			}
			else if (half > 0 && Chance(0.3))
			{
				item.mFadeOut = {ToTime(PickFadeLength(half)), PickShape()};
			}
		}
	}

	Nestable MakeSequence(bool inIsOutermost)
	{
		Nestable result;
		auto sequence = std::make_shared<Description>();
		sequence->mName = inIsOutermost ? "outermost" : "nested " + std::to_string(mNestable.size());
		sequence->mLayout = PickLayout();
		sequence->mMixdown = mMixdown;
		// In an order of their own, each may feed those behind it.
		std::vector<std::size_t> targets(static_cast<std::size_t>(Below(inIsOutermost ? 5 : 3)));
		for (std::size_t index = 0; index < targets.size(); ++index)
		{
			targets[index] = index;
			sequence->mSubmixes.push_back({"submix " + std::to_string(index), PickLayout(), {}, {}, {}, {}});
			std::swap(targets[index],
				targets[static_cast<std::size_t>(Below(static_cast<std::int64_t>(index) + 1))]);
		}
		unsigned nests = inIsOutermost ? 4 : 2;
		for (std::int64_t count = 1 + Below(inIsOutermost ? 8 : 3); count > 0; --count)
		{
			Track track;
			track.mName = "track " + std::to_string(sequence->mTracks.size());
			track.mLayout = PickLayout();
			FillTrack(result, nests, track);
			MakeRouting(
				*sequence, targets, inIsOutermost, track.mLayout, track.mChain, track.mMute, track.mOutput);
			sequence->mTracks.push_back(std::move(track));
		}
		while (!targets.empty())
		{
			Submix& submix = sequence->mSubmixes[targets.front()];
			targets.erase(targets.begin());
			MakeRouting(*sequence, targets, inIsOutermost, submix.mLayout, submix.mChain, submix.mMute,
				submix.mOutput);
		}
		while (Chance(0.4))
		{
			sequence->mMaster.mStages.push_back(
				Chance(0.5) ? Stage(MakeFader(inIsOutermost)) : Stage(MakeEffect(true)));
		}
		result.mSequence = sequence;
		return result;
	}

	std::mt19937_64 mRandom;
	RandomTraits mTraits;
	double mSamplesPerSecond = 0.0;
	SN::FrameRate mFrameRate;
	std::int64_t mFrames = 0;
	bool mHasExactFades = true;
	std::optional<SN::AudioChannelMix::MixdownType51> mMixdown;
	std::vector<std::shared_ptr<Media const>> mMedia;
	std::vector<Nestable> mNestable;
};

} // namespace

RandomSequence MakeRandomSequence(unsigned inSeed, RandomTraits const& inTraits)
{
	return Generator(inSeed, inTraits).Run();
}

} // namespace SonaroHost::Sequence::Testing
