#include "SubmixReader.h"

#include "CurveReader.h"
#include "Otio/Json/Fields.h"
#include "PluginReader.h"

#include <limits>
#include <memory>
#include <unordered_map>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

Send ReadSend(Cursor const& inValue)
{
	inValue.Require(JsonValue::Type::kObject, "an object with \"to\", the submix to send to");
	CheckKeys(inValue, {"to"}, {"gain", "pre_fader"});
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
	inValue.Require(JsonValue::Type::kObject, "an object with \"name\"");
	CheckKeys(inValue, {"name"}, {"gain", "pan", "effects", "mute", "output"});
	Submix submix;
	submix.mName = ReadName(Cursor(inValue, "name"));
	submix.mGain = ReadIfThere(Cursor(inValue, "gain"), ReadGain);
	submix.mPan = ReadIfThere(Cursor(inValue, "pan"), ReadPan);
	ForEach(Cursor(inValue, "effects"), [&submix](Cursor const& inEffect)
		{ submix.mEffects.push_back(std::make_shared<PluginEffect const>(ReadPluginEffect(inEffect))); });
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

} // namespace

std::string ReadName(Cursor const& inValue)
{
	std::string name = ReadText(inValue);
	if (name.empty())
	{
		inValue.Refuse("the name is empty; use a name of at least one character");
	}
	return name;
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

std::vector<Send> ReadSends(Cursor const& inList)
{
	std::vector<Send> sends;
	ForEach(inList, [&sends](Cursor const& inValue) { sends.push_back(ReadSend(inValue)); });
	return sends;
}

} // namespace SonaroHost::Otio
