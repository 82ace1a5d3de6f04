#include "MixSettingsReader.h"

#include "CurveReader.h"
#include "MulticamReader.h"
#include "Otio/Json/Fields.h"
#include "SubmixReader.h"

#include "SonaroHost/Base/ChannelLayouts.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace SonaroHost::Otio
{

namespace
{

// More than containers hold.
constexpr unsigned kMaxStream = 1000;

// Two octaves.
constexpr double kMaxSemitones = 24.0;

// From 1 on.
unsigned ReadWholeNumber(Cursor const& inValue, unsigned inLargest)
{
	double const number = ReadNumber(inValue, 1.0, inLargest);
	if (number != std::floor(number))
	{
		inValue.Refuse(Write(number) + " is not a whole number");
	}
	return static_cast<unsigned>(number);
}

std::vector<unsigned> ReadChannels(Cursor const& inValue)
{
	std::vector<unsigned> channels;
	ForEach(inValue, [&channels](Cursor const& inChannel)
		{ channels.push_back(ReadWholeNumber(inChannel, kMaxChannels)); });
	if (!inValue.IsNothing() && (channels.empty() || channels.size() > kMaxChannels))
	{
		inValue.Refuse(std::to_string(channels.size()) + " channels is out of range; use 1 to " +
					   std::to_string(kMaxChannels));
	}
	return channels;
}

unsigned ReadStream(Cursor const& inValue)
{
	return inValue.IsNothing() ? 0 : ReadWholeNumber(inValue, kMaxStream);
}

double ReadSemitones(Cursor const& inValue)
{
	return inValue.IsNothing() ? 0.0 : ReadNumber(inValue, -kMaxSemitones, kMaxSemitones);
}

std::string ReadLayout(Cursor const& inValue)
{
	std::string const layout = inValue.Is(JsonValue::Type::kNumber)
								   ? Write(ReadNumber(inValue, 1.0, kMaxChannels))
								   : ReadText(inValue);
	if (!ParseLayout(layout))
	{
		inValue.Refuse(
			Quote(layout) +
			R"( is not a layout; use "mono", "stereo", "5.1", "ambisonic1" or a number of channels from 1 to )" +
			std::to_string(kMaxChannels));
	}
	return layout;
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

constexpr unsigned kSounding = Owner::kTimeline | Owner::kStack | Owner::kTrack | Owner::kClip;

template <auto kMember, auto kReader>
void Set(Cursor const& inValue, MixSettings& outSettings)
{
	outSettings.*kMember = kReader(inValue);
}

constexpr Setting kSettings[] = {
	{"gain", kSounding, Set<&MixSettings::mGain, ReadGain>},
	{"pan", kSounding, Set<&MixSettings::mPan, ReadPan>},
	{"mute", Owner::kStack | Owner::kTrack | Owner::kClip, Set<&MixSettings::mMute, ReadBool>},
	{"solo", Owner::kStack | Owner::kTrack, Set<&MixSettings::mSolo, ReadBool>},
	{"channels", 0U | Owner::kClip, Set<&MixSettings::mChannels, ReadChannels>},
	{"stream", 0U | Owner::kClip, Set<&MixSettings::mStream, ReadStream>},
	{"pitch", 0U | Owner::kClip, Set<&MixSettings::mSemitones, ReadSemitones>},
	{"speed", Owner::kStack | Owner::kTrack | Owner::kClip, Set<&MixSettings::mSpeed, ReadSpeed>},
	{"keep_pitch", Owner::kClip | Owner::kTimeWarp, Set<&MixSettings::mKeepsPitch, ReadBool>},
	{"fade_in", kSounding, Set<&MixSettings::mFadeIn, ReadFade>},
	{"fade_out", kSounding, Set<&MixSettings::mFadeOut, ReadFade>},
	{"curve", 0U | Owner::kTransition, Set<&MixSettings::mShape, ReadShape>},
	{"layout", Owner::kTimeline | Owner::kStack, Set<&MixSettings::mLayout, ReadLayout>},
	{"submixes", Owner::kTimeline | Owner::kStack, Set<&MixSettings::mSubmixes, ReadSubmixes>},
	{"multicam", 0U | Owner::kStack, Set<&MixSettings::mMulticam, ReadMulticam>},
	{"output", 0U | Owner::kTrack, Set<&MixSettings::mOutput, ReadName>},
	{"sends", 0U | Owner::kTrack, Set<&MixSettings::mSends, ReadSends>},
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
	sonaro.Require(JsonValue::Type::kObject, "an object");
	RepeatedKeys const repeated(sonaro.Get());
	for (JsonMember const& member : sonaro.Get().GetMembers())
	{
		Cursor const value(sonaro, member);
		auto const* const setting = std::ranges::find(kSettings, member.mKey, &Setting::mKey);
		if (setting == std::end(kSettings))
		{
			value.Tell(Note::Kind::kIgnored, "unknown key in metadata.sonaro");
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
	inTimeline.mSpeed = inStack.mSpeed;
	inTimeline.mMulticam = inStack.mMulticam;
	inTimeline.mForeign = inStack.mForeign;
	return inTimeline;
}

} // namespace SonaroHost::Otio
