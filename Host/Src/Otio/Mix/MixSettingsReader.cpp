#include "MixSettingsReader.h"

#include "Otio/Json/Fields.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Otio/Limits.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Seconds, or a RationalTime.
RationalTime ReadSecondsOrTime(Cursor const& inValue)
{
	if (inValue.Is(JsonValue::Type::kNumber))
	{
		return {ReadNumber(inValue, -kMaxSeconds, kMaxSeconds), 1.0};
	}
	if (!inValue.IsObject())
	{
		inValue.RefuseType("seconds or a RationalTime");
	}
	return ReadTime(inValue);
}

double ReadDecibels(Cursor const& inValue)
{
	bool const isSilence = inValue.Is(JsonValue::Type::kNumber) && inValue.Get().GetNumber() == -kInfinity;
	constexpr double kLowest = std::numeric_limits<double>::lowest();
	return isSilence ? -kInfinity : ReadNumber(inValue, kLowest, kMaxGainDecibels);
}

double ReadPanPosition(Cursor const& inValue)
{
	return ReadNumber(inValue, -1.0, 1.0);
}

Interpolation ReadInterpolation(Cursor const& inValue)
{
	std::string const name = inValue.IsNothing() ? "linear" : ReadText(inValue);
	if (name == "hold")
	{
		return Interpolation::kHold;
	}
	if (name == "smooth")
	{
		return Interpolation::kSmooth;
	}
	if (name != "linear")
	{
		inValue.Refuse(Quote(name) + R"( is not valid; use "hold", "linear" or "smooth")");
	}
	return Interpolation::kLinear;
}

Curve ReadCurve(Cursor const& inValue, AutomationScale inScale, double (*inReadValue)(Cursor const&))
{
	Curve curve;
	curve.mScale = inScale;
	if (!inValue.IsObject())
	{
		curve.mConstant = inReadValue(inValue);
		return curve;
	}
	TellUnknownKeys(inValue, {"keyframes"});
	Cursor const keyframes(inValue, "keyframes");
	ForEach(keyframes,
		[&curve, inReadValue](Cursor const& inKeyframe)
		{
			TellUnknownKeys(inKeyframe, {"time", "value", "interpolation"});
			curve.mKeyframes.push_back(
				{ReadSecondsOrTime(Cursor(inKeyframe, "time")), inReadValue(Cursor(inKeyframe, "value")),
					ReadInterpolation(Cursor(inKeyframe, "interpolation"))});
		});
	if (curve.mKeyframes.empty())
	{
		keyframes.RefuseType("an array of at least one keyframe");
	}
	SortKeyframes(curve, keyframes);
	return curve;
}

Curve ReadGain(Cursor const& inValue)
{
	return ReadCurve(inValue, AutomationScale::kDecibels, ReadDecibels);
}

Curve ReadPan(Cursor const& inValue)
{
	return ReadCurve(inValue, AutomationScale::kLinear, ReadPanPosition);
}

FadeShape ReadShape(Cursor const& inValue)
{
	std::string const name = ReadText(inValue);
	if (name == "equal-power")
	{
		return FadeShape::kEqualPower;
	}
	if (name == "s-curve")
	{
		return FadeShape::kSCurve;
	}
	if (name != "linear")
	{
		inValue.Refuse(Quote(name) + R"( is not valid; use "linear", "equal-power" or "s-curve")");
	}
	return FadeShape::kLinear;
}

void RequireObject(Cursor const& inValue, char const* inWanted)
{
	if (!inValue.IsObject())
	{
		inValue.RefuseType(inWanted);
	}
}

Fade ReadFade(Cursor const& inValue)
{
	RequireObject(inValue, "an object with \"duration\"");
	TellUnknownKeys(inValue, {"duration", "curve"});
	Cursor const duration(inValue, "duration");
	Fade fade;
	fade.mDuration = ReadSecondsOrTime(duration);
	if (fade.mDuration.mValue < 0.0)
	{
		duration.Refuse("the duration is negative; use 0 or more");
	}
	fade.mShape = ReadIfThere(Cursor(inValue, "curve"), ReadShape);
	return fade;
}

std::vector<unsigned> ReadChannels(Cursor const& inValue)
{
	std::vector<unsigned> channels;
	ForEach(inValue,
		[&channels](Cursor const& inChannel)
		{
			double const number = ReadNumber(inChannel, 1.0, kMaxChannels);
			if (number != std::floor(number))
			{
				inChannel.Refuse(Write(number) + " is not a whole number");
			}
			channels.push_back(static_cast<unsigned>(number));
		});
	if (!inValue.IsNothing() && (channels.empty() || channels.size() > kMaxChannels))
	{
		inValue.Refuse(std::to_string(channels.size()) + " channels is out of range; use 1 to " +
					   std::to_string(kMaxChannels));
	}
	return channels;
}

std::string ReadLayout(Cursor const& inValue)
{
	std::string const layout = inValue.Is(JsonValue::Type::kNumber)
								   ? Write(ReadNumber(inValue, 1.0, kMaxChannels))
								   : ReadText(inValue);
	if (!ParseLayout(layout))
	{
		inValue.Refuse(Quote(layout) +
					   R"( is not a layout; use "mono", "stereo", "5.1" or a number of channels from 1 to )" +
					   std::to_string(kMaxChannels));
	}
	return layout;
}

std::string ReadName(Cursor const& inValue)
{
	std::string name = ReadText(inValue);
	if (name.empty())
	{
		inValue.Refuse("the name is empty; use a name of at least one character");
	}
	return name;
}

Send ReadSend(Cursor const& inValue)
{
	RequireObject(inValue, "an object with \"to\", the submix to send to");
	TellUnknownKeys(inValue, {"to", "gain", "pre_fader"});
	Send send;
	send.mTo = ReadName(Cursor(inValue, "to"));
	send.mGain.mScale = AutomationScale::kDecibels;
	if (auto gain = ReadIfThere(Cursor(inValue, "gain"), ReadGain))
	{
		send.mGain = std::move(*gain);
	}
	send.mIsPreFader = ReadIfThere(Cursor(inValue, "pre_fader"), ReadBool).value_or(false);
	return send;
}

Submix ReadSubmix(Cursor const& inValue)
{
	RequireObject(inValue, "an object with \"name\"");
	TellUnknownKeys(inValue, {"name", "gain", "pan", "mute", "output"});
	Submix submix;
	submix.mName = ReadName(Cursor(inValue, "name"));
	submix.mGain = ReadIfThere(Cursor(inValue, "gain"), ReadGain);
	submix.mPan = ReadIfThere(Cursor(inValue, "pan"), ReadPan);
	submix.mMute = ReadIfThere(Cursor(inValue, "mute"), ReadBool).value_or(false);
	submix.mOutput = ReadIfThere(Cursor(inValue, "output"), ReadName);
	return submix;
}

using SubmixIndices = std::unordered_map<std::string, std::size_t>;

void CheckOutputs(Cursor const& inList, std::vector<Submix> const& inSubmixes, SubmixIndices const& inIndices)
{
	constexpr std::size_t kSum = std::numeric_limits<std::size_t>::max();
	std::vector<std::size_t> outputs;
	for (std::size_t i = 0; i < inSubmixes.size(); ++i)
	{
		auto const& output = inSubmixes[i].mOutput;
		auto const found = output ? inIndices.find(*output) : inIndices.end();
		if (output && found == inIndices.end())
		{
			Cursor const submix(inList, i);
			Cursor(submix, "output")
				.Refuse("there is no submix " + Quote(*output) +
						"; use the name of another submix of this list, or null");
		}
		outputs.push_back(found == inIndices.end() ? kSum : found->second);
	}
	for (std::size_t i = 0; i < outputs.size(); ++i)
	{
		std::size_t next = outputs[i];
		for (std::size_t steps = 0; next != kSum; next = outputs[next])
		{
			if (++steps > outputs.size())
			{
				Cursor const submix(inList, i);
				Cursor(submix, "output")
					.Refuse("the submix outputs form a loop; set \"output\" of one of them to null");
			}
		}
	}
}

std::vector<Submix> ReadSubmixes(Cursor const& inList)
{
	std::vector<Submix> submixes;
	SubmixIndices indices;
	ForEach(inList,
		[&submixes, &indices](Cursor const& inValue)
		{
			if (submixes.size() == kMaxSubmixes)
			{
				inValue.Refuse("too many submixes; use at most " + std::to_string(kMaxSubmixes));
			}
			submixes.push_back(ReadSubmix(inValue));
			if (!indices.emplace(submixes.back().mName, submixes.size() - 1).second)
			{
				Cursor(inValue, "name")
					.Refuse("another submix is named " + Quote(submixes.back().mName) +
							" already; use another name");
			}
		});
	CheckOutputs(inList, submixes, indices);
	return submixes;
}

void ReadSends(Cursor const& inList, std::vector<Send>& outSends)
{
	ForEach(inList, [&outSends](Cursor const& inValue) { outSends.push_back(ReadSend(inValue)); });
}

constexpr unsigned operator|(SettingsOwner inA, SettingsOwner inB)
{
	return static_cast<unsigned>(inA) | static_cast<unsigned>(inB);
}

constexpr unsigned operator|(unsigned inA, SettingsOwner inB)
{
	return inA | static_cast<unsigned>(inB);
}

struct Setting
{
	std::string_view mKey;
	unsigned mOwners;
	void (*mRead)(Cursor const& inValue, MixSettings& outSettings);
};

using Owner = SettingsOwner;

constexpr Setting kSettings[] = {
	{"gain", Owner::kTimeline | Owner::kStack | Owner::kTrack | Owner::kClip,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mGain = ReadGain(inValue); }},
	{"pan", Owner::kTimeline | Owner::kStack | Owner::kTrack | Owner::kClip,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mPan = ReadPan(inValue); }},
	{"mute", Owner::kStack | Owner::kTrack | Owner::kClip,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mMute = ReadBool(inValue); }},
	{"solo", Owner::kStack | Owner::kTrack,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mSolo = ReadBool(inValue); }},
	{"channels", 0U | Owner::kClip,
		[](Cursor const& inValue, MixSettings& outSettings)
		{ outSettings.mChannels = ReadChannels(inValue); }},
	{"fade_in", Owner::kTimeline | Owner::kStack | Owner::kTrack | Owner::kClip,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mFadeIn = ReadFade(inValue); }},
	{"fade_out", Owner::kTimeline | Owner::kStack | Owner::kTrack | Owner::kClip,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mFadeOut = ReadFade(inValue); }},
	{"curve", 0U | Owner::kTransition,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mShape = ReadShape(inValue); }},
	{"layout", Owner::kTimeline | Owner::kStack,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mLayout = ReadLayout(inValue); }},
	{"submixes", Owner::kTimeline | Owner::kStack,
		[](Cursor const& inValue, MixSettings& outSettings)
		{ outSettings.mSubmixes = ReadSubmixes(inValue); }},
	{"output", 0U | Owner::kTrack,
		[](Cursor const& inValue, MixSettings& outSettings) { outSettings.mOutput = ReadName(inValue); }},
	{"sends", 0U | Owner::kTrack,
		[](Cursor const& inValue, MixSettings& outSettings) { ReadSends(inValue, outSettings.mSends); }},
};

template <class T>
void Choose(T& ioChosen, T const& inOther, char const* inKey, Cursor const& inPlace)
{
	auto const isThere = [](T const& inValue)
	{
		if constexpr (requires { inValue.has_value(); })
		{
			return inValue.has_value();
		}
		else
		{
			return !inValue.empty();
		}
	};
	if (isThere(ioChosen) && isThere(inOther))
	{
		inPlace.Tell(Note::Kind::kGuess, std::string("the timeline and its stack both set \"") + inKey +
											 "\" in metadata.sonaro; the timeline's is used");
	}
	else if (isThere(inOther))
	{
		ioChosen = inOther;
	}
}

} // namespace

MixSettings ReadMixSettings(Cursor const& inMetadata, SettingsOwner inOwner)
{
	MixSettings settings;
	Cursor const sonaro(inMetadata, "sonaro");
	if (sonaro.IsNothing())
	{
		return settings;
	}
	RequireObject(sonaro, "an object");
	RepeatedKeys const repeated(sonaro.Get());
	for (JsonMember const& member : sonaro.Get().GetMembers())
	{
		Cursor const value(sonaro, member);
		auto const* const setting = std::find_if(std::begin(kSettings), std::end(kSettings),
			[&member](Setting const& inSetting) { return inSetting.mKey == member.mKey; });
		if (setting == std::end(kSettings))
		{
			value.Tell(Note::Kind::kIgnored, "unknown key in metadata.sonaro; ignored");
		}
		else if ((setting->mOwners & static_cast<unsigned>(inOwner)) == 0)
		{
			value.Tell(Note::Kind::kIgnored,
				"this key of metadata.sonaro does not apply to this kind of object; ignored");
		}
		else if (repeated.Has(member))
		{
			value.Tell(Note::Kind::kGuess, "the key appears more than once; the last value is used");
		}
		else if (!value.IsNothing())
		{
			setting->mRead(value, settings);
		}
	}
	return settings;
}

void SortKeyframes(Curve& ioCurve, Cursor const& inPlace)
{
	struct Entry
	{
		Ratio mSeconds;
		Curve::Keyframe mKeyframe;
	};
	std::vector<Entry> entries;
	for (Curve::Keyframe const& keyframe : ioCurve.mKeyframes)
	{
		entries.push_back({ToSeconds(keyframe.mTime), keyframe});
	}
	std::stable_sort(entries.begin(), entries.end(),
		[](Entry const& inA, Entry const& inB) { return inA.mSeconds < inB.mSeconds; });
	ioCurve.mKeyframes.clear();
	for (std::size_t i = 0; i < entries.size(); ++i)
	{
		if (i + 1 < entries.size() && entries[i].mSeconds == entries[i + 1].mSeconds)
		{
			inPlace.Tell(Note::Kind::kGuess, "two keyframes have the same time; the last one is used");
			continue;
		}
		ioCurve.mKeyframes.push_back(entries[i].mKeyframe);
	}
}

MixSettings MergeSettings(MixSettings inTimeline, MixSettings const& inStack, Cursor const& inPlace)
{
	Choose(inTimeline.mGain, inStack.mGain, "gain", inPlace);
	Choose(inTimeline.mPan, inStack.mPan, "pan", inPlace);
	Choose(inTimeline.mMute, inStack.mMute, "mute", inPlace);
	Choose(inTimeline.mSolo, inStack.mSolo, "solo", inPlace);
	Choose(inTimeline.mFadeIn, inStack.mFadeIn, "fade_in", inPlace);
	Choose(inTimeline.mFadeOut, inStack.mFadeOut, "fade_out", inPlace);
	Choose(inTimeline.mLayout, inStack.mLayout, "layout", inPlace);
	Choose(inTimeline.mSubmixes, inStack.mSubmixes, "submixes", inPlace);
	inTimeline.mForeign = inStack.mForeign;
	return inTimeline;
}

} // namespace SonaroHost::Otio
