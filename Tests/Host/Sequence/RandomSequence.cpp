#include "RandomSequence.h"

#include "MemoryMedia.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
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
};

class Generator
{
public:
	explicit Generator(unsigned inSeed)
		: mRandom(inSeed),
		  mOtherRandom(inSeed),
		  mAngleRandom(inSeed),
		  mIsConverted(inSeed % 4 == 0)
	{
		constexpr double kRates[] = {44100.0, 48000.0, 96000.0};
		mSamplesPerSecond = kRates[Below(3)];
		mFrameRate = SN::FrameRate::FromSamplesPerSecond(mSamplesPerSecond);
		mFrames = static_cast<std::int64_t>(mSamplesPerSecond * (0.05 + 0.35 * Unit()));
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
		RandomSequence result{MakeSequence(true).mSequence, mFrameRate, mLedger, {}};
		MakeEdits(*result.mSequence, result.mEdits);
		return result;
	}

private:
	// The distributions of the standard library differ from one to the next. So do compilers in which argument or
	// operand they evaluate first: each statement draws from one stream once, or in an order that the language sets.
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
		bool const isConverted = mIsConverted && mOtherRandom() % 4 == 0;
		double const ratio = mOtherRandom() % 2 == 0 ? 147.0 / 160.0 : 2.0;
		return std::make_shared<MemoryMedia>(
			mSamplesPerSecond * (isConverted ? ratio : 1.0), std::move(samples), mLedger);
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

	NumberParameter MakeNumber(double inLow, double inHigh)
	{
		return Chance(0.5) ? MakeCurve(inLow, inHigh)
						   : AutomationParameter<float>::Create(static_cast<float>(
								 Chance(0.1) ? inHigh : inLow + (inHigh - inLow) * Unit()));
	}

	Fader MakeFader()
	{
		Fader fader;
		if (Chance(0.8))
		{
			fader.mGain = MakeNumber(0.0, 1.0);
		}
		if (Chance(0.2))
		{
			fader.mMute = AutomationParameter<bool>::Create(Chance(0.3));
			if (Chance(0.6))
			{
				SN::TickTime const on = ToRoughTime(Below(mFrames));
				fader.mMute->SetCurve(std::make_shared<AutomationCurve const>(std::vector<AutomationPoint>{
					{SN::kTimeZero, 0.0, Interpolation::kHold}, {on, 1.0, Interpolation::kHold},
					{on + ToTime(1 + Below(mFrames)), 0.0, Interpolation::kHold}}));
			}
		}
		return fader;
	}

	// Where the layouts have a panner.
	NumberParameter MakePan(SN::AudioChannelLayout const& inFrom, SN::AudioChannelLayout const& inTo)
	{
		bool const canPan = inFrom.size() <= 2 && inTo.size() >= 2;
		return canPan && Chance(0.5) ? MakeNumber(0.0, 1.0) : NumberParameter();
	}

	Effect MakeEffect()
	{
		LatentEffect effect;
		effect.mDelayFrames = Chance(0.7) ? PickLength(kMostLatency) : 0;
		effect.mGain = static_cast<float>(1.0 - 0.4 * Unit());
		return {"late by " + std::to_string(effect.mDelayFrames), effect, true};
	}

	Chain MakeItemChain()
	{
		Chain chain;
		while (Chance(0.35))
		{
			chain.mStages.push_back(Chance(0.5) ? Stage(MakeFader()) : Stage(MakeEffect()));
		}
		return chain;
	}

	// Of a track or a submix; inTargets are the submixes that it may feed.
	void MakeRouting(Description const& inSequence, std::vector<std::size_t> const& inTargets,
		SN::AudioChannelLayout const& inLayout, Chain& outChain, MuteSwitch& outMute, Output& outOutput)
	{
		auto const pick = [&]
		{ return inTargets[static_cast<std::size_t>(Below(static_cast<std::int64_t>(inTargets.size())))]; };
		while (Chance(0.55))
		{
			double const choice = Unit();
			if (choice < 0.4 && !inTargets.empty())
			{
				std::size_t const target = pick();
				outChain.mStages.push_back(
					Send{target, MakeFader(), MakePan(inLayout, inSequence.mSubmixes[target].mLayout)});
			}
			else
			{
				outChain.mStages.push_back(choice < 0.7 ? Stage(MakeFader()) : Stage(MakeEffect()));
			}
		}
		if (Chance(0.2))
		{
			outMute = std::make_shared<zorvcore::threads::AtomicIntegral<int>>(Chance(0.5) ? 1 : 0);
		}
		if (!inTargets.empty() && Chance(0.45))
		{
			outOutput = {Output::Kind::kSubmix, pick()};
		}
		else if (Chance(0.08))
		{
			outOutput.mKind = Output::Kind::kNone;
		}
		SN::AudioChannelLayout const& to = outOutput.mKind == Output::Kind::kSubmix
											   ? inSequence.mSubmixes[outOutput.mSubmix].mLayout
											   : inSequence.mLayout;
		if (outOutput.mKind != Output::Kind::kNone)
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
		Convert(outItem);
		if (!mNestable.empty() && ioNests > 0 && Chance(0.5))
		{
			Nestable const& nested =
				mNestable[static_cast<std::size_t>(Below(static_cast<std::int64_t>(mNestable.size())))];
			if (nested.mDepth < kDeepest)
			{
				--ioNests;
				outItem.mContent = Nest{nested.mSequence, ToRoughTime(Chance(0.3) ? 0 : Below(mFrames))};
				MakeMulticam(outItem);
				ioSequence.mDepth = std::max(ioSequence.mDepth, nested.mDepth + 1);
				return nested.mSequence->mLayout;
			}
		}
		Clip const clip = MakeClip();
		outItem.mContent = clip;
		return clip.mChannels.empty()       ? clip.mMedia->mLayout
			   : clip.mChannels.size() == 1 ? zorvmediatypes::CreateMonoChannelLayout()
											: zorvmediatypes::CreateStereoChannelLayout();
	}

	// Makes some of the nested sequences angles beside others. What is random in them leaves all the rest as it is.
	void MakeMulticam(Item& ioItem)
	{
		auto const below = [this](std::int64_t inEnd)
		{ return static_cast<std::int64_t>(mAngleRandom() % static_cast<std::uint64_t>(inEnd)); };
		if (below(2) == 0)
		{
			return;
		}
		auto const nest = std::get<Nest>(ioItem.mContent);
		Multicam multicam;
		multicam.mAngles.push_back(nest.mSequence);
		multicam.mStart = nest.mStart;
		for (std::int64_t count = below(4); count > 0; --count)
		{
			auto angle = std::make_shared<Description>();
			angle->mName = "angle " + std::to_string(count);
			angle->mLayout = nest.mSequence->mLayout;
			Item item;
			item.mStart = ToTime(below(100));
			item.mEnd = item.mStart + ToTime(1 + below(mFrames));
			item.mContent = Clip{mMedia[static_cast<std::size_t>(below(2))], below(200) - 100, {}};
			Track track;
			track.mLayout = angle->mLayout;
			track.mItems = {item};
			LatentEffect const effect{below(3) == 0 ? below(kMostLatency) : 0, 0.75f};
			track.mChain.mStages = {Effect{"late", effect, true}};
			angle->mTracks = {track};
			multicam.mAngles.push_back(angle);
		}
		auto const count = static_cast<std::int64_t>(multicam.mAngles.size());
		multicam.mFirstAngle = static_cast<std::size_t>(below(count));
		std::int64_t frame = below(mFrames / 4) - 200;
		for (std::int64_t left = below(12); left > 0; --left)
		{
			SN::TickTime const time =
				ToTime(frame) + SN::TickTime::FromTicks(mFrameRate.GetTicksPerFrame() / 3);
			std::int64_t const length = below(500);
			Fade const fade{ToTime(below(2) * length), static_cast<FadeShape>(below(3))};
			multicam.mCuts.push_back({time, static_cast<std::size_t>(below(count)), fade});
			std::int64_t const step = below(mFrames / 6);
			frame += below(4) * step;
		}
		ioItem.mContent = std::move(multicam);
	}

	// Other speeds, in some sequences. What is random in them leaves all the rest of a sequence as it is without.
	void Convert(Item& ioItem)
	{
		constexpr double kSpeeds[] = {0.5, 1.5, -0.75, 2.0, -2.0, 3.0, 0.31, -1.0594630943592953};
		auto const below = [this](std::int64_t inEnd)
		{ return static_cast<std::int64_t>(mOtherRandom() % static_cast<std::uint64_t>(inEnd)); };
		if (!mIsConverted)
		{
			return;
		}
		std::int64_t const divisor = 1 + below(4);
		ioItem.mOffset = Ratio(below(9) - 4, divisor);
		ioItem.mResampling = below(3) == 0 ? Resampling::kDraft : Resampling::kExact;
		ioItem.mSpeed = below(3) == 0 ? kSpeeds[below(8)] : ioItem.mSpeed;
		if (below(4) != 0)
		{
			return;
		}
		constexpr std::int64_t kFramesPerSecond = 48000;
		std::vector<SpeedCurve::Key> keys;
		Ratio time(below(mFrames) - mFrames / 4, kFramesPerSecond);
		for (std::int64_t count = 2 + below(3); count > 0; --count)
		{
			keys.push_back({time, Ratio(below(15) - 7, 3), static_cast<Interpolation>(below(3))});
			time += Ratio(1 + below(mFrames), 2 * kFramesPerSecond);
		}
		ioItem.mSpeedCurve = std::make_shared<SpeedCurve const>(std::move(keys));
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
			item.mChain = MakeItemChain();
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
				item.mFadeIn = {ToTime(PickLength(half)), PickShape()};
			}
			isReached = false;
			if (half > 0 && inIsFollowed[index] && inLengths[index + 1] > 1 && Chance(0.6))
			{
				std::int64_t const length = PickLength(std::min(half, inLengths[index + 1] / 2));
				std::int64_t const before = Below(length + 1);
				ioTrack.mCrossfades.push_back(
					{index, ToTime(before), ToTime(length - before), PickShape(), PickShape()});
				isReached = true;
			}
			else if (half > 0 && Chance(0.3))
			{
				item.mFadeOut = {ToTime(PickLength(half)), PickShape()};
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
			MakeRouting(*sequence, targets, track.mLayout, track.mChain, track.mMute, track.mOutput);
			sequence->mTracks.push_back(std::move(track));
		}
		while (!targets.empty())
		{
			Submix& submix = sequence->mSubmixes[targets.front()];
			targets.erase(targets.begin());
			MakeRouting(*sequence, targets, submix.mLayout, submix.mChain, submix.mMute, submix.mOutput);
		}
		while (Chance(0.4))
		{
			sequence->mMaster.mStages.push_back(Chance(0.5) ? Stage(MakeFader()) : Stage(MakeEffect()));
		}
		result.mSequence = sequence;
		return result;
	}

	// One edit of some of the parameters that stand still, and of some mutes.
	void MakeEdits(Description const& inSequence, LiveEdits& outEdits)
	{
		for (Track const& track : inSequence.mTracks)
		{
			EditStrip(track, outEdits);
			// What is not asked for hears its edits later.
			if (!track.mMute || !outEdits.mMutes.contains(track.mMute.get()))
			{
				for (Item const& item : track.mItems)
				{
					EditChain(item.mChain, outEdits);
				}
			}
		}
		for (Submix const& submix : inSequence.mSubmixes)
		{
			EditStrip(submix, outEdits);
		}
		EditChain(inSequence.mMaster, outEdits);
	}

	template <class Strip>
	void EditStrip(Strip const& inStrip, LiveEdits& outEdits)
	{
		EditChain(inStrip.mChain, outEdits);
		if (inStrip.mMute && Chance(0.7))
		{
			int const muted = inStrip.mMute->Get();
			outEdits.mMutes[inStrip.mMute.get()] = {{0, muted}, {1 + Below(mFrames), 1 - muted}};
		}
	}

	void EditChain(Chain const& inChain, LiveEdits& outEdits)
	{
		for (Stage const& stage : inChain.mStages)
		{
			if (auto const* const fader = std::get_if<Fader>(&stage))
			{
				EditFader(*fader, outEdits);
			}
			else if (auto const* const send = std::get_if<Send>(&stage))
			{
				EditFader(send->mLevel, outEdits);
				EditNumber(send->mPan, outEdits);
			}
		}
		EditNumber(inChain.mPan, outEdits);
	}

	void EditFader(Fader const& inFader, LiveEdits& outEdits)
	{
		EditNumber(inFader.mGain, outEdits);
		if (inFader.mMute && inFader.mMute->IsEmpty() && Chance(0.5))
		{
			bool const isMuted = AutomationParameter<bool>::Reading(*inFader.mMute).GetControl();
			outEdits.mSwitches[inFader.mMute.Get()] = {{0, isMuted}, {1 + Below(mFrames), !isMuted}};
		}
	}

	void EditNumber(NumberParameter const& inParameter, LiveEdits& outEdits)
	{
		if (inParameter && inParameter->IsEmpty() && Chance(0.5))
		{
			float const value = AutomationParameter<float>::Reading(*inParameter).GetControl();
			outEdits.mNumbers[inParameter.Get()] = {
				{0, value}, {1 + Below(mFrames), static_cast<float>(Unit())}};
		}
	}

	std::mt19937_64 mRandom;
	// For what is converted, and for multicam items.
	std::mt19937_64 mOtherRandom;
	std::mt19937_64 mAngleRandom;
	bool mIsConverted;
	std::shared_ptr<PrefetchLedger> mLedger = std::make_shared<PrefetchLedger>();
	double mSamplesPerSecond = 0.0;
	SN::FrameRate mFrameRate;
	std::int64_t mFrames = 0;
	std::optional<SN::AudioChannelMix::MixdownType51> mMixdown;
	std::vector<std::shared_ptr<Media const>> mMedia;
	std::vector<Nestable> mNestable;
};

} // namespace

RandomSequence MakeRandomSequence(unsigned inSeed)
{
	return Generator(inSeed).Run();
}

} // namespace SonaroHost::Sequence::Testing
