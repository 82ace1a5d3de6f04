#include "ParameterReader.h"

#include "Effects/Lv2/UridMap.h"
#include "Effects/Lv2/World.h"

#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/patch/patch.h>
#include <lv2/port-props/port-props.h>
#include <lv2/state/state.h>
#include <lv2/units/units.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace SonaroHost::Effects
{

namespace
{

constexpr char kParameterLabel[] = "http://www.w3.org/2000/01/rdf-schema#label";
constexpr char kParameterRange[] = "http://www.w3.org/2000/01/rdf-schema#range";

bool IsText(std::string_view inType)
{
	return inType == LV2_ATOM__String || inType == LV2_ATOM__Path || inType == LV2_ATOM__URI;
}

bool IsWhole(std::string_view inType)
{
	return inType == LV2_ATOM__Int || inType == LV2_ATOM__Long;
}

bool IsNumber(std::string_view inType)
{
	return IsWhole(inType) || inType == LV2_ATOM__Float || inType == LV2_ATOM__Double ||
		   inType == LV2_ATOM__Bool;
}

std::optional<float> ParseNumber(std::string const& inText)
{
	if (inText == "true" || inText == "false")
	{
		return inText == "true" ? 1.0f : 0.0f;
	}
	double number = 0.0;
	bool const isNumber =
		std::from_chars(inText.data(), inText.data() + inText.size(), number).ec == std::errc();
	return isNumber && std::isfinite(number) ? std::optional(static_cast<float>(number)) : std::nullopt;
}

// One parameter of a plugin.
class Parameter
{
public:
	Parameter(LilvPlugin const* inPlugin, LilvNode const* inNode)
		: mPlugin(inPlugin),
		  mNode(inNode),
		  mUri(GetUri(inNode)),
		  mType(Get(kParameterRange))
	{
	}

	std::string const& GetType() const { return mType; }
	PluginParameter Make() const
	{
		return {UridMap::Get().Map(mUri.c_str()), UridMap::Get().Map(mType.c_str())};
	}

	// Its own, or what follows the last # or / of its URI.
	std::string GetSymbol() const
	{
		std::string const symbol = Get(LV2_CORE__symbol);
		return symbol.empty() ? mUri.substr(mUri.find_last_of("#/:") + 1) : symbol;
	}

	TextParameter ReadText() const
	{
		return {GetSymbol(), Get(kParameterLabel), mUri, mType == LV2_ATOM__Path};
	}

	Control ReadControl() const
	{
		Control control;
		control.mSymbol = GetSymbol();
		control.mName = Get(kParameterLabel);
		control.mParameter = mUri;
		Node const unit(lilv_world_get(
			World::Get().GetLilv(), mNode, World::Get().MakeUri(LV2_UNITS__unit).get(), nullptr));
		control.mUnit = unit ? World::Get().GetText(unit.get(), LV2_UNITS__symbol) : std::string();
		control.mIsToggled = mType == LV2_ATOM__Bool;
		control.mIsInteger = IsWhole(mType);
		control.mIsLogarithmic = Has(LV2_PORT_PROPS__logarithmic);
		SetRange(control);
		return control;
	}

private:
	std::string Get(char const* inPredicate) const { return World::Get().GetText(mNode, inPredicate); }
	bool Has(char const* inProperty) const
	{
		World& world = World::Get();
		return lilv_world_ask(world.GetLilv(), mNode, world.MakeUri(LV2_CORE__portProperty).get(),
			world.MakeUri(inProperty).get());
	}

	// What it states itself, or the state that the plugin begins with.
	std::optional<float> FindDefault() const
	{
		World& world = World::Get();
		auto const stated = ParseNumber(Get(LV2_CORE__default));
		Node const state(lilv_world_get(
			world.GetLilv(), lilv_plugin_get_uri(mPlugin), world.MakeUri(LV2_STATE__state).get(), nullptr));
		return stated || !state ? stated : ParseNumber(world.GetText(state.get(), mUri.c_str()));
	}

	void SetRange(Control& ioControl) const
	{
		constexpr float kInfinity = std::numeric_limits<float>::infinity();
		ioControl.mMinimum =
			ParseNumber(Get(LV2_CORE__minimum)).value_or(ioControl.mIsToggled ? 0.0f : -kInfinity);
		ioControl.mMaximum =
			std::max(ParseNumber(Get(LV2_CORE__maximum)).value_or(ioControl.mIsToggled ? 1.0f : kInfinity),
				ioControl.mMinimum);
		auto const stated = FindDefault();
		ioControl.mHasDefault = stated.has_value();
		ioControl.mDefault = std::clamp(stated.value_or(0.0f), ioControl.mMinimum, ioControl.mMaximum);
	}

	LilvPlugin const* mPlugin;
	LilvNode const* mNode;
	std::string mUri;
	std::string mType;
};

bool TakesMessages(LilvPlugin const* inPlugin, LilvPort const* inPort)
{
	World& world = World::Get();
	return lilv_port_is_a(inPlugin, inPort, world.MakeUri(LV2_CORE__InputPort).get()) &&
		   lilv_port_is_a(inPlugin, inPort, world.MakeUri(LV2_ATOM__AtomPort).get()) &&
		   lilv_port_supports_event(inPlugin, inPort, world.MakeUri(LV2_PATCH__Message).get());
}

// The one for control where there are several.
std::optional<std::size_t> FindParameterPort(LilvPlugin const* inPlugin)
{
	World& world = World::Get();
	LilvPort const* const control = lilv_plugin_get_port_by_designation(
		inPlugin, world.MakeUri(LV2_CORE__InputPort).get(), world.MakeUri(LV2_CORE__control).get());
	if (control && TakesMessages(inPlugin, control))
	{
		return lilv_port_get_index(inPlugin, control);
	}
	for (std::uint32_t index = 0; index < lilv_plugin_get_num_ports(inPlugin); ++index)
	{
		if (TakesMessages(inPlugin, lilv_plugin_get_port_by_index(inPlugin, index)))
		{
			return index;
		}
	}
	return std::nullopt;
}

} // namespace

ParameterList ReadParameters(LilvPlugin const* inPlugin)
{
	ParameterList list;
	list.mPort = FindParameterPort(inPlugin);
	if (!list.mPort)
	{
		return list;
	}
	Nodes const nodes(lilv_plugin_get_value(inPlugin, World::Get().MakeUri(LV2_PATCH__writable).get()));
	std::vector<std::pair<std::string, Parameter>> sorted;
	LILV_FOREACH(nodes, at, nodes.get())
	{
		Parameter const parameter(inPlugin, lilv_nodes_get(nodes.get(), at));
		sorted.emplace_back(parameter.GetSymbol(), parameter);
	}
	std::ranges::stable_sort(sorted, {}, &std::pair<std::string, Parameter>::first);
	for (auto const& [symbol, parameter] : sorted)
	{
		if (IsText(parameter.GetType()))
		{
			list.mTexts.push_back(parameter.ReadText());
			list.mTextParameters.push_back(parameter.Make());
		}
		else if (IsNumber(parameter.GetType()))
		{
			list.mControls.push_back(parameter.ReadControl());
			list.mParameters.push_back(parameter.Make());
		}
	}
	return list;
}

} // namespace SonaroHost::Effects
