#include "SonaroHost/OtioSequence/TimelineMaker.h"
#include "Support/Trials.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace SonaroHost::Otio::AngleRowsTest
{

namespace
{

constexpr int kRate = 48000;

RationalTime AtFrame(int inFrame)
{
	return {static_cast<double>(inFrame), double{kRate}};
}

// Multicam stacks in each other's angles and side by side with crossfades, trimmed, at speeds of either sign and along
// ramps. All in whole frames of each composition.
class RandomScenes
{
public:
	explicit RandomScenes(unsigned inSeed)
		: mRandom(inSeed)
	{
	}

	Timeline Make()
	{
		Timeline timeline;
		timeline.mTracks.mChildren.push_back({MakeTrack(0)});
		return timeline;
	}

private:
	int Pick(int inLeast, int inMost) { return std::uniform_int_distribution(inLeast, inMost)(mRandom); }
	bool Flip(int inOdds) { return Pick(1, inOdds) == 1; }

	Clip MakeClip(int inFrames)
	{
		Clip clip;
		MediaReference media;
		media.mKind = MediaReference::Kind::kExternal;
		media.mTargetUrl = "a.wav";
		clip.mMediaReferences.push_back(media);
		clip.mSourceRange = TimeRange{AtFrame(0), AtFrame(inFrames)};
		return clip;
	}

	// Not 0, which is silence.
	double PickSpeed() { return Pick(1, 20) * (Flip(2) ? 0.125 : -0.125); }

	Curve MakeSpeed(int inFrames)
	{
		Curve curve;
		curve.mConstant = PickSpeed();
		for (int time = Pick(0, inFrames / 2); Flip(2) || curve.mKeyframes.size() == 1;
			 time += Pick(100, 600))
		{
			curve.mKeyframes.push_back(
				{AtFrame(std::min(time, inFrames)), PickSpeed(), Interpolation{Pick(0, 2)}});
			if (time >= inFrames || curve.mKeyframes.size() == 5)
			{
				break;
			}
		}
		return curve;
	}

	Stack MakeScene(int inDepth, int inFrames)
	{
		Stack stack;
		stack.mPlace = "s" + std::to_string(mScenes++);
		auto multicam = std::make_shared<MulticamSettings>();
		int const angles = Pick(1, 3);
		for (int angle = 1; angle <= angles; ++angle)
		{
			Track track = MakeTrack(inDepth);
			track.mPlace = stack.mPlace + "/" + std::to_string(angle);
			stack.mChildren.push_back({track});
		}
		multicam->mFirst.mNumber = static_cast<std::size_t>(Pick(1, angles));
		for (int time = Pick(-200, 400); time < 2500; time += Pick(1, 700))
		{
			multicam->mCuts.push_back(
				{AtFrame(time), {static_cast<std::size_t>(Pick(1, angles)), {}}, {}, 0});
		}
		auto settings = std::make_shared<MixSettings>();
		settings->mMulticam = multicam;
		settings->mSpeed = Flip(3) ? std::nullopt : std::optional(MakeSpeed(inFrames));
		stack.mSettings = settings;
		// Crossfades stay within the content.
		stack.mSourceRange = TimeRange{AtFrame(Pick(400, 600)), AtFrame(inFrames)};
		return stack;
	}

	Track MakeTrack(int inDepth)
	{
		Track track;
		track.mKind = "Audio";
		for (int i = 0; i < 4; ++i)
		{
			// There is something wherever a stack is heard, since one without sound has no rows.
			bool const isLong = inDepth > 0 && i == 3;
			int const frames = isLong ? 3500 : Pick(400, 1200);
			track.mChildren.push_back(!isLong && inDepth < 3 && Flip(2)
										  ? Composable{MakeScene(inDepth + 1, frames)}
										  : Composable{MakeClip(frames)});
			if (i < 3 && Flip(2))
			{
				Transition transition;
				transition.mInOffset = AtFrame(Pick(0, 150));
				transition.mOutOffset = AtFrame(Pick(0, 150));
				track.mChildren.push_back({transition});
			}
		}
		return track;
	}

	std::mt19937 mRandom;
	int mScenes = 0;
};

// How far a content gets in so many frames. Before the first keyframe and after the last one the speed stays.
double GetWay(Curve const& inSpeed, double inFrames)
{
	auto const& keys = inSpeed.mKeyframes;
	if (keys.empty())
	{
		return inSpeed.mConstant * inFrames;
	}
	auto const upTo = [&keys](double inEnd)
	{
		double way = std::min(inEnd, keys.front().mTime.mValue) * keys.front().mValue;
		for (std::size_t i = 0; i < keys.size(); ++i)
		{
			double const start = keys[i].mTime.mValue;
			double const passed = std::max(inEnd - start, 0.0);
			bool const isLast = i + 1 == keys.size();
			double const length = isLast ? 0.0 : keys[i + 1].mTime.mValue - start;
			double const t = isLast ? passed : std::min(passed, length);
			double const rise = isLast ? 0.0 : keys[i + 1].mValue - keys[i].mValue;
			double const u = length > 0.0 ? t / length : 0.0;
			double const risen = keys[i].mInterpolation == Interpolation::kHold     ? 0.0
								 : keys[i].mInterpolation == Interpolation::kLinear ? u / 2.0
																					: u * u * (1.0 - u / 2.0);
			way += t * (keys[i].mValue + rise * risen);
		}
		return way;
	};
	return upTo(inFrames) - upTo(0.0);
}

// Which angle is heard at a moment, worked out from the top down.
class Model
{
public:
	using Angles = std::map<std::string, std::size_t>;

	Angles Find(Timeline const& inTimeline, double inFrame)
	{
		mAngles.clear();
		Visit(*inTimeline.mTracks.mChildren.front().As<Track>(), inFrame);
		return mAngles;
	}

private:
	void Visit(Track const& inTrack, double inFrame)
	{
		double start = 0.0;
		double before = 0.0;
		for (std::size_t i = 0; i < inTrack.mChildren.size(); ++i)
		{
			Composable const& child = inTrack.mChildren[i];
			if (Transition const* const transition = child.As<Transition>())
			{
				before = transition->mInOffset.mValue;
				continue;
			}
			double const length = child.AsItem()->mSourceRange->mDuration.mValue;
			Transition const* const next =
				i + 1 < inTrack.mChildren.size() ? inTrack.mChildren[i + 1].As<Transition>() : nullptr;
			double const after = next ? next->mOutOffset.mValue : 0.0;
			if (inFrame >= start - before && inFrame < start + length + after && child.As<Stack>())
			{
				Visit(*child.As<Stack>(), inFrame - start, length);
			}
			start += length;
			before = 0.0;
		}
	}

	void Visit(Stack const& inStack, double inFrame, double inLength)
	{
		Curve normal;
		normal.mConstant = 1.0;
		Curve const speed = inStack.mSettings->mSpeed.value_or(normal);
		MulticamSettings const& multicam = *inStack.mSettings->mMulticam;
		double const place = GetWay(speed, inFrame) - FindLowest(inStack.mPlace, speed, inLength);
		std::size_t angle = multicam.mFirst.mNumber;
		for (AngleCut const& cut : multicam.mCuts)
		{
			angle = cut.mTime.mValue <= place ? cut.mAngle.mNumber : angle;
		}
		mAngles.emplace(inStack.mPlace, angle);
		Visit(*inStack.mChildren[angle - 1].As<Track>(), place + inStack.mSourceRange->mStartTime.mValue);
	}

	// Nothing before the start of the range is heard within the item.
	double FindLowest(std::string const& inPlace, Curve const& inSpeed, double inLength)
	{
		auto const [known, isNew] = mLowest.emplace(inPlace, 0.0);
		for (double frame = 0.0; isNew && frame <= inLength; frame += 0.25)
		{
			known->second = std::min(known->second, GetWay(inSpeed, frame));
		}
		return known->second;
	}

	Angles mAngles;
	std::map<std::string, double> mLowest;
};

void ExpectInOrder(std::vector<AngleRow> const& inRows)
{
	std::map<std::string, AngleRow> last;
	std::int64_t first = 0;
	for (AngleRow const& row : inRows)
	{
		EXPECT_LE(first, row.mFirstFrame);
		EXPECT_LT(row.mFirstFrame, row.mEndFrame);
		first = row.mFirstFrame;
		std::string const stack = row.mPlace.substr(0, row.mPlace.find('/'));
		EXPECT_EQ(row.mPlace, stack + "/" + std::to_string(row.mAngle));
		if (auto const before = last.find(stack); before != last.end())
		{
			EXPECT_LE(before->second.mEndFrame, row.mFirstFrame);
			EXPECT_FALSE(before->second.mEndFrame == row.mFirstFrame && before->second.mAngle == row.mAngle)
				<< "not joined at " << row.mFirstFrame;
		}
		last[stack] = row;
	}
}

Model::Angles FindInRows(std::vector<AngleRow> const& inRows, std::int64_t inFrame)
{
	Model::Angles angles;
	for (AngleRow const& row : inRows)
	{
		if (inFrame >= row.mFirstFrame && inFrame < row.mEndFrame)
		{
			angles.emplace(row.mPlace.substr(0, row.mPlace.find('/')), row.mAngle);
		}
	}
	return angles;
}

TEST(AngleRows, AreWhatIsHeardAtEachSample)
{
	constexpr unsigned kTimelines = SN::Testing::GetNumTrials(200);
	std::size_t compared = 0;
	std::size_t nested = 0;
	for (unsigned seed = 1; seed <= kTimelines; ++seed)
	{
		SCOPED_TRACE("seed " + std::to_string(seed));
		Timeline const timeline = RandomScenes(seed).Make();
		FileMedia media;
		TimelineOptions options;
		options.mSampleRate = kRate;
		TimelineSequence const sequence = MakeTimelineSequence(
			timeline, MediaFinder(std::filesystem::path(SONARO_CONFORMANCE) / "otio/media"), media, options);
		ExpectInOrder(sequence.mAngles);
		Model model;
		for (std::int64_t frame = 0; frame < sequence.mFrames; ++frame)
		{
			// Boundaries are rounded to samples, so one that is at the middle of this sample may be on either side.
			double const middle = static_cast<double>(frame) + 0.5;
			auto const expected = model.Find(timeline, middle - 0.01);
			if (expected == model.Find(timeline, middle + 0.01))
			{
				ASSERT_EQ(FindInRows(sequence.mAngles, frame), expected) << "at " << frame;
				++compared;
				nested += expected.size() > 1 ? 1 : 0;
			}
		}
	}
	EXPECT_GT(compared, 2000u * kTimelines);
	EXPECT_GT(nested, 300u * kTimelines);
}

} // namespace

} // namespace SonaroHost::Otio::AngleRowsTest
