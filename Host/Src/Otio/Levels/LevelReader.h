#pragma once

#include "LevelShapes.h"
#include "LooseNumber.h"
#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

#include <cstddef>
#include <optional>

namespace SonaroHost::Otio
{

// Reads one level of another program in one of the known shapes. Where a meaning is likely but not sure a note reports
// the guess; where there is none a note says why, and nothing is given.
class LevelReader
{
public:
	// inRange: what the item shows of its own time, where that is known.
	LevelReader(LevelName inName, LevelShape const& inShape, std::optional<TimeRange> const& inRange)
		: mName(inName),
		  mShape(inShape),
		  mRange(inRange)
	{
	}

	// One of the two is called, and once. Gives nothing also for a level that states no value, which is at its
	// default.
	std::optional<Curve> ReadCurve(Cursor const& inLevel);
	std::optional<Fade> ReadFade(Cursor const& inLevel);

	// Whether a note said that it is not read.
	bool HasFailed() const { return mHasFailed; }

private:
	enum class Outcome
	{
		kRead,
		kUnstated,
		kNotRead,
	};

	Outcome Read(Cursor const& inLevel);
	Outcome ReadObject(Cursor const& inLevel);
	bool ReadConstant(Cursor const& inValue);
	bool ReadKeyframes(Cursor const& inKeyframes);
	bool ReadKeyframe(Cursor const& inKeyframe);
	bool ReadFrame(Cursor const& inKeyframes, JsonMember const& inFrame);
	bool AddKeyframe(std::optional<RationalTime> const& inTime, Cursor const& inValue);
	std::optional<RationalTime> ReadKeyframeTime(Cursor const& inTime, bool inIsSeconds);
	std::optional<RationalTime> MakeFrameTime(double inFrame);
	void CountFromItem(Cursor const& inLevel);

	std::optional<LooseNumber> ParseValue(JsonValue const& inValue) const;
	void TellNotRead(Cursor const& inLevel, char const* inWhy);

	LevelName mName;
	LevelShape const& mShape;
	std::optional<TimeRange> const& mRange;
	Curve mCurve;
	std::size_t mRelativeTimes = 0;
	// Keyframes whose times are rational.
	std::size_t mRationalTimes = 0;
	// Values are written as "1/2".
	bool mAreFractions = false;
	bool mLacksRate = false;
	bool mHasFailed = false;
};

} // namespace SonaroHost::Otio
