#pragma once

#include "SonaroHost/Base/CurveShape.h"
#include "SonaroHost/Base/FadeShape.h"
#include "SonaroHost/Otio/RationalTime.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// A value over time, as a file tells it.
struct Curve
{
	enum class TimeUnit
	{
		// Times are times.
		eTime,
		// mTime.mValue / mTime.mRate is a fraction of the item's length, from 0 to 1.
		eFractionOfLength,
	};

	struct Keyframe
	{
		// From the start of the item as it is cut, which is time 0 for its parent's ears.
		RationalTime mTime;
		double mValue = 0.0;
		// Up to the next keyframe.
		Interpolation mInterpolation = Interpolation::eLinear;
	};

	bool IsConstant() const { return mKeyframes.empty(); }

	// Without keyframes this holds.
	double mConstant = 0.0;
	// In rising order of time, no two at one time.
	std::vector<Keyframe> mKeyframes;
	// Of a gain: decibels, which may be minus infinity, or a linear factor. Of a pan: always eLinear, from
	// -1 (left) to 1 (right).
	AutomationScale mScale = AutomationScale::eLinear;
	TimeUnit mTimeUnit = TimeUnit::eTime;
};

struct Fade
{
	RationalTime mDuration;
	// Without it the render's own choice.
	std::optional<FadeShape> mShape;
};

struct Send
{
	// A submix of the stack that the track stands in.
	std::string mTo;
	Curve mGain;
	bool mIsPreFader = false;
};

struct Submix
{
	// Not empty, and no other submix of the stack has it.
	std::string mName;
	std::optional<Curve> mGain;
	std::optional<Curve> mPan;
	bool mMute = false;
	// Another submix of the stack; without it the stack's own sum. Outputs form no circle.
	std::optional<std::string> mOutput;
};

// Levels that other programs left behind: in the parameters of an effect, or in the metadata of an item. Gains of
// several effects multiply; of their pans and fades the first one counts.
struct ForeignLevels
{
	bool IsEmpty() const { return !mGain && !mPan && !mMute && !mFadeIn && !mFadeOut && mFirstChannels == 0; }

	std::optional<Curve> mGain;
	std::optional<Curve> mPan;
	// A linear factor: 0 where it is muted, otherwise 1.
	std::optional<Curve> mMute;
	std::optional<Fade> mFadeIn;
	std::optional<Fade> mFadeOut;
	// Of a clip: it has so many channels, which are the first ones of its media in their order. 0 where nothing says so.
	std::size_t mFirstChannels = 0;
};

// How an object is mixed, from its "metadata.sonaro". Which of these it can have depends on its kind;
// Docs/otio-metadata.schema.json tells.
struct MixSettings
{
	// In decibels.
	std::optional<Curve> mGain;
	std::optional<Curve> mPan;
	std::optional<bool> mMute;
	std::optional<bool> mSolo;
	// Of a clip: for each of its channels the one of the media that feeds it, from 1. Empty for all.
	std::vector<unsigned> mChannels;
	std::optional<Fade> mFadeIn;
	std::optional<Fade> mFadeOut;
	// Of a transition.
	std::optional<FadeShape> mShape;
	// As ParseLayout reads it.
	std::optional<std::string> mLayout;
	std::vector<Submix> mSubmixes;
	// A submix of the stack that the track stands in; without it the stack's own sum.
	std::optional<std::string> mOutput;
	std::vector<Send> mSends;
	// What others left in the item's metadata; where the above tells the same, it counts.
	ForeignLevels mForeign;
};

} // namespace SonaroHost::Otio
