#include "PluginStart.h"

#include "Effects/EffectParameter.h"
#include "MessageCapture.h"
#include "PluginInstance.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "UridMap.h"
#include "World.h"

#include <lv2/atom/atom.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace SonaroHost::Effects
{

namespace
{

// What a library says of a failure, after what failed.
std::string Explain(std::string const& inMessage)
{
	return inMessage.empty() ? inMessage : ": " + MakePrintable(inMessage);
}

[[noreturn]] void RefuseAt(char const* inPlace, std::string const& inReason, std::string const& inRemedy)
{
	throw HostError(HostError::Kind::kRequest, {{}, inPlace, inReason, inRemedy});
}

template <class T>
std::optional<double> ReadAs(void const* inValue, std::uint32_t inSize)
{
	T value{};
	if (inSize != sizeof(value))
	{
		return std::nullopt;
	}
	std::memcpy(&value, inValue, sizeof(value));
	return static_cast<double>(value);
}

// A value of a port in whatever type of number it was saved as.
std::optional<double> ReadNumber(void const* inValue, std::uint32_t inSize, LV2_URID inType)
{
	char const* const uri = UridMap::Get().Unmap(inType);
	std::string_view const type = uri ? uri : "";
	return type == LV2_ATOM__Float                           ? ReadAs<float>(inValue, inSize)
		   : type == LV2_ATOM__Double                        ? ReadAs<double>(inValue, inSize)
		   : type == LV2_ATOM__Int || type == LV2_ATOM__Bool ? ReadAs<std::int32_t>(inValue, inSize)
		   : type == LV2_ATOM__Long                          ? ReadAs<std::int64_t>(inValue, inSize)
															 : std::nullopt;
}

void SetPortValue(
	char const* inSymbol, void* ioStart, void const* inValue, std::uint32_t inSize, std::uint32_t inType)
{
	auto& start = *static_cast<PluginStart*>(ioStart);
	auto const& controls = start.mData->mDescription.mControls;
	auto const found = std::ranges::find(controls, inSymbol, &Control::mSymbol);
	auto const number = ReadNumber(inValue, inSize, inType);
	bool const isEnabled = start.mData->mEnabled == static_cast<std::size_t>(found - controls.begin());
	if (found != controls.end() && !isEnabled && number && std::isfinite(*number))
	{
		start.mValues[static_cast<std::size_t>(found - controls.begin())] = static_cast<float>(*number);
	}
}

void Take(State inState, PluginStart& ioStart)
{
	lilv_state_emit_port_values(inState.get(), &SetPortValue, &ioStart);
	if (lilv_state_get_num_properties(inState.get()) > 0)
	{
		ioStart.mStates.emplace_back(inState.release(), FreeState());
	}
}

State LoadFromWorld(LilvNode const* inNode)
{
	return State(lilv_state_new_from_world(World::Get().GetLilv(), UridMap::Get().GetMap(), inNode));
}

std::string FindPreset(EffectDescription const& inDescription, std::string const& inName)
{
	auto const& presets = inDescription.mPresets;
	auto found = std::ranges::find(presets, inName, &Preset::mName);
	found = found != presets.end() ? found : std::ranges::find(presets, inName, &Preset::mUri);
	if (found == presets.end())
	{
		RefuseAt("/preset",
			"the plugin " + QuoteName(inDescription.mName) + " has no preset " + QuoteName(inName),
			presets.empty() ? "it has none"
							: "\"sonaro effects " + inDescription.mUri + "\" lists those that it has");
	}
	return found->mUri;
}

void TakePreset(EffectSetup const& inSetup, PluginStart& ioStart)
{
	std::string const uri = FindPreset(ioStart.mData->mDescription, inSetup.mPreset);
	MessageCapture capture;
	State state = LoadFromWorld(World::Get().MakeUri(uri.c_str()).get());
	if (!state)
	{
		RefuseAt("/preset",
			"the preset " + QuoteName(inSetup.mPreset) + " of the plugin " +
				QuoteName(ioStart.mData->mDescription.mName) + " cannot be read" +
				Explain(capture.TakeLast()),
			"reinstall the plugin");
	}
	Take(std::move(state), ioStart);
}

void TakeText(std::string const& inText, PluginStart& ioStart)
{
	MessageCapture capture;
	State state(lilv_state_new_from_string(World::Get().GetLilv(), UridMap::Get().GetMap(), inText.c_str()));
	std::string const& uri = ioStart.mData->mDescription.mUri;
	if (!state || GetUri(lilv_state_get_plugin_uri(state.get())) != uri)
	{
		RefuseAt("/state",
			"the state is not one of the plugin " + QuoteName(ioStart.mData->mDescription.mName) +
				" in Turtle" + Explain(capture.TakeLast()),
			"save it again in the LV2 host that it comes from, or leave it out");
	}
	Take(std::move(state), ioStart);
}

void ReadStates(EffectSetup const& inSetup, PluginStart& ioStart)
{
	World::Lock const lock;
	if (ioStart.mData->mLoadsDefaultState)
	{
		if (State state = LoadFromWorld(lilv_plugin_get_uri(ioStart.mData->mPlugin)))
		{
			Take(std::move(state), ioStart);
		}
	}
	if (!inSetup.mPreset.empty())
	{
		TakePreset(inSetup, ioStart);
	}
	if (!inSetup.mState.empty())
	{
		TakeText(inSetup.mState, ioStart);
	}
}

std::shared_ptr<PluginData const> ReadUsablePlugin(std::string const& inUri)
{
	auto data = ReadPlugin(inUri);
	if (!data)
	{
		World::Lock const lock;
		auto const& problems = World::Get().GetProblems();
		Refuse("the plugin " + QuoteName(inUri) +
			   " is not installed; \"sonaro effects\" lists those that are" +
			   (problems.empty() ? "" : ", and what cannot be read"));
	}
	if (!data->mDescription.mWhyUnusable.empty())
	{
		Refuse("the plugin " + QuoteName(data->mDescription.mName) + " (" + inUri +
			   ") cannot be used: " + data->mDescription.mWhyUnusable);
	}
	return data;
}

std::optional<std::string> FindWhyNotStarting(
	std::shared_ptr<PluginData const> const& inData, double inSampleRate)
{
	try
	{
		constexpr unsigned kFrames = 256;
		PluginInstance const instance(
			inData, {inSampleRate, kFrames, kFrames, false, inData->mNeedsFixedBlocks});
		return std::nullopt;
	}
	catch (HostError const& error)
	{
		return error.what();
	}
}

// Starts one instance of each plugin before anything is made of it: what fails then is as good as not there.
void CheckStarts(std::shared_ptr<PluginData const> const& inData, double inSampleRate)
{
	World::Lock const lock;
	std::string const& uri = inData->mDescription.mUri;
	if (World::Get().Starts(uri, inSampleRate))
	{
		return;
	}
	MessageCapture capture;
	constexpr double kUsualRate = 48000.0;
	auto const problem = FindWhyNotStarting(inData, inSampleRate);
	if (!problem)
	{
		World::Get().NoteStart(uri, inSampleRate);
		return;
	}
	bool const isForRate = !FindWhyNotStarting(inData, kUsualRate);
	std::string const message = Explain(capture.TakeLast());
	Refuse(*problem + (isForRate ? " at " + FormatNumber(inSampleRate) + " Hz" : message) + "; " +
		   (isForRate ? "render at a usual sample rate, such as 48000 Hz" : "reinstall the plugin"));
}

} // namespace

std::shared_ptr<PluginStart> MakeStart(EffectSetup const& inSetup, double inSampleRate)
{
	auto start = std::make_shared<PluginStart>();
	start->mData = ReadUsablePlugin(inSetup.mUri);
	for (Control const& control : start->mData->mDescription.mControls)
	{
		ParameterRange const range = ParameterRange::Make(control, inSampleRate);
		double const scale = control.mCountsInRate ? inSampleRate : 1.0;
		start->mValues.push_back(range.Limit(static_cast<double>(control.mDefault) * scale));
	}
	start->mIsSet.resize(start->mValues.size());
	CheckStarts(start->mData, inSampleRate);
	ReadStates(inSetup, *start);
	return start;
}

} // namespace SonaroHost::Effects
