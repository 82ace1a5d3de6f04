#pragma once

#include "SonaroHost/Base/CurveShape.h"
#include "SonaroHost/Base/FadeShape.h"
#include "SonaroHost/Otio/RationalTime.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

struct PluginEffect;

// A value over time, as a file states it.
struct Curve
{
	enum class TimeUnit
	{
		// Times are times.
		kTime,
		// mTime.mValue / mTime.mRate is a fraction of the item's length, from 0 to 1.
		kFractionOfLength,
	};

	// A point of the curve.
	struct Keyframe
	{
		// Time from the start of the item as it is cut, which is time 0 for its parent's ears.
		RationalTime mTime;
		// In the curve's scale.
		double mValue = 0.0;
		// How the curve runs up to the next keyframe.
		Interpolation mInterpolation = Interpolation::kLinear;
	};

	bool IsConstant() const { return mKeyframes.empty(); }

	// The value where there are no keyframes.
	double mConstant = 0.0;
	// The keyframes in rising order of time, no two at one time.
	std::vector<Keyframe> mKeyframes;
	// A gain is in decibels, which may be minus infinity, or a linear factor. A pan is always kLinear, from
	// -1 (left) to 1 (right).
	AutomationScale mScale = AutomationScale::kLinear;
	TimeUnit mTimeUnit = TimeUnit::kTime;
};

// A fade from silence at an item's start, or to silence at its end.
struct Fade
{
	RationalTime mDuration;
	// The shape; without one the render chooses.
	std::optional<FadeShape> mShape;
};

// A copy of a track's sound.
struct Send
{
	// A submix of the stack that the track stands in.
	std::string mTo;
	Curve mGain;
	// Whether it is taken before the track's gain, rather than between the gain and the pan.
	bool mIsPreFader = false;
};

// A sum of tracks and sends of a stack.
struct Submix
{
	// Not empty, and no other submix of the stack has it.
	std::string mName;
	std::optional<Curve> mGain;
	std::optional<Curve> mPan;
	// What it runs through before its gain, in their order.
	std::vector<std::shared_ptr<PluginEffect const>> mEffects;
	bool mMute = false;
	// Another submix of the stack; without it the stack's own sum. Outputs form no circle.
	std::optional<std::string> mOutput;
};

// Levels that other programs left: in the parameters of an effect, or in the metadata of an item. Gains of
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
	// How many channels a clip has, which are the first ones of its media in their order. 0 where nothing says so.
	std::size_t mFirstChannels = 0;
};

// An angle of a multicam stack, as a file calls it.
struct AngleName
{
	// Its number, from 1 on; 0 where mName is its name.
	std::size_t mNumber = 0;
	std::string mName;
};

// Where another angle begins to be heard.
struct AngleCut
{
	// From the start of the stack as it is cut, in the time of its content.
	RationalTime mTime;
	AngleName mAngle;
	// Instead of that of all cuts.
	std::optional<RationalTime> mFade;
	// Where it stands in the file's list.
	std::size_t mIndex = 0;
};

// Which of a stack's angles is heard when.
struct MulticamSettings
{
	// Before the first cut.
	AngleName mFirst;
	// In the order of time, no two at one.
	std::vector<AngleCut> mCuts;
	// How long a cut crossfades from its time on; 0 for hard cuts.
	RationalTime mFade;
	// The shape; without one the render chooses.
	std::optional<FadeShape> mShape;
};

// How an object is mixed, from its "metadata.sonaro". Which of these it can have depends on its kind;
// Docs/otio-metadata.schema.json says which.
struct MixSettings
{
	// The gain in decibels.
	std::optional<Curve> mGain;
	// From -1 (left) to 1 (right).
	std::optional<Curve> mPan;
	std::optional<bool> mMute;
	std::optional<bool> mSolo;
	// A clip's channels: for each the channel of the media that feeds it, from 1. Empty for all.
	std::vector<unsigned> mChannels;
	// Which audio stream of a clip's movie is heard, from 1; 0 for all, one after the other.
	unsigned mStream = 0;
	// By how many semitones a clip's pitch is shifted.
	double mSemitones = 0.0;
	// A factor of the speed, below 0 backwards: of an item, from -1000 to 1000.
	std::optional<Curve> mSpeed;
	// Whether a time warp, or the speed above of a clip, keeps the pitch.
	std::optional<bool> mKeepsPitch;
	std::optional<Fade> mFadeIn;
	std::optional<Fade> mFadeOut;
	// The shape of a transition.
	std::optional<FadeShape> mShape;
	// A layout as ParseLayout reads it.
	std::optional<std::string> mLayout;
	std::vector<Submix> mSubmixes;
	// Null for a stack whose children are heard together.
	std::shared_ptr<MulticamSettings const> mMulticam;
	// A submix of the stack that the track stands in; without it the stack's own sum.
	std::optional<std::string> mOutput;
	std::vector<Send> mSends;
	// What others left in the item's metadata; the settings above go before it.
	ForeignLevels mForeign;
};

} // namespace SonaroHost::Otio
