#include "PluginData.h"

#include "MessageCapture.h"
#include "Parameter/ParameterReader.h"
#include "PluginFeatures.h"
#include "SonaroHost/Base/PrintableText.h"
#include "World.h"

#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/core/lv2.h>
#include <lv2/port-groups/port-groups.h>
#include <lv2/port-props/port-props.h>
#include <lv2/presets/presets.h>
#include <lv2/resize-port/resize-port.h>
#include <lv2/state/state.h>
#include <lv2/units/units.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

namespace SonaroHost::Effects
{

namespace
{

constexpr char kLabel[] = "http://www.w3.org/2000/01/rdf-schema#label";

using Kind = Port::Kind;

// A port within its plugin.
struct PortView
{
	bool Is(char const* inClass) const
	{
		return lilv_port_is_a(mPlugin, mPort, World::Get().MakeUri(inClass).get());
	}
	bool Has(char const* inProperty) const
	{
		return lilv_port_has_property(mPlugin, mPort, World::Get().MakeUri(inProperty).get());
	}
	Node Get(char const* inPredicate) const
	{
		return Node(lilv_port_get(mPlugin, mPort, World::Get().MakeUri(inPredicate).get()));
	}

	LilvPlugin const* mPlugin;
	LilvPort const* mPort;
};

Kind FindKind(PortView const& inPort)
{
	constexpr std::pair<char const*, Kind> kInputs[] = {{LV2_CORE__AudioPort, Kind::kAudioIn},
		{LV2_CORE__ControlPort, Kind::kControlIn}, {LV2_CORE__CVPort, Kind::kVoltageIn},
		{LV2_ATOM__AtomPort, Kind::kAtomIn}};
	constexpr std::pair<char const*, Kind> kOutputs[] = {{LV2_CORE__AudioPort, Kind::kAudioOut},
		{LV2_CORE__ControlPort, Kind::kControlOut}, {LV2_CORE__CVPort, Kind::kVoltageOut},
		{LV2_ATOM__AtomPort, Kind::kAtomOut}};
	auto const find = [&inPort](auto const& inKinds)
	{
		auto const* const found =
			std::ranges::find_if(inKinds, [&](auto const& inKind) { return inPort.Is(inKind.first); });
		return found != std::end(inKinds) ? found->second : Kind::kOther;
	};
	return inPort.Is(LV2_CORE__InputPort)    ? find(kInputs)
		   : inPort.Is(LV2_CORE__OutputPort) ? find(kOutputs)
											 : Kind::kOther;
}

Port::Role FindRole(PortView const& inPort)
{
	std::string const designation = GetUri(inPort.Get(LV2_CORE__designation).get());
	return designation == LV2_CORE__latency || inPort.Has(LV2_CORE__reportsLatency) ? Port::Role::kLatency
		   : designation == LV2_CORE__freeWheeling ? Port::Role::kFreeWheeling
		   : designation == LV2_CORE__enabled      ? Port::Role::kEnabled
												   : Port::Role::kNone;
}

std::size_t FindBytes(PortView const& inPort)
{
	Node const bytes = inPort.Get(LV2_RESIZE_PORT__minimumSize);
	constexpr int kMost = 1 << 24;
	int const stated = bytes && lilv_node_is_int(bytes.get()) ? lilv_node_as_int(bytes.get()) : 0;
	return std::max<std::size_t>(kAtomBytes, static_cast<std::size_t>(std::clamp(stated, 0, kMost)));
}

std::string FindUnit(PortView const& inPort)
{
	Node const unit = inPort.Get(LV2_UNITS__unit);
	return unit ? World::Get().GetText(unit.get(), LV2_UNITS__symbol) : std::string();
}

std::vector<ScalePoint> ReadScalePoints(PortView const& inPort)
{
	std::vector<ScalePoint> points;
	LilvScalePoints* const list = lilv_port_get_scale_points(inPort.mPlugin, inPort.mPort);
	LILV_FOREACH(scale_points, at, list)
	{
		LilvScalePoint const* const point = lilv_scale_points_get(list, at);
		points.push_back({lilv_node_as_float(lilv_scale_point_get_value(point)),
			GetText(lilv_scale_point_get_label(point))});
	}
	lilv_scale_points_free(list);
	std::ranges::sort(points, {}, &ScalePoint::mValue);
	return points;
}

// The ranges of all ports; not-a-number where there are none.
struct Ranges
{
	explicit Ranges(LilvPlugin const* inPlugin)
		: mMinimum(lilv_plugin_get_num_ports(inPlugin)),
		  mMaximum(mMinimum.size()),
		  mDefault(mMinimum.size())
	{
		lilv_plugin_get_port_ranges_float(inPlugin, mMinimum.data(), mMaximum.data(), mDefault.data());
	}

	std::vector<float> mMinimum;
	std::vector<float> mMaximum;
	std::vector<float> mDefault;
};

void SetRange(Ranges const& inRanges, std::size_t inIndex, Control& ioControl)
{
	constexpr float kInfinity = std::numeric_limits<float>::infinity();
	auto const choose = [](float inValue, float inOther) { return std::isnan(inValue) ? inOther : inValue; };
	float const lowest = ioControl.mIsToggled ? 0.0f : -kInfinity;
	float const highest = ioControl.mIsToggled ? 1.0f : kInfinity;
	ioControl.mMinimum = choose(inRanges.mMinimum[inIndex], lowest);
	ioControl.mMaximum = std::max(choose(inRanges.mMaximum[inIndex], highest), ioControl.mMinimum);
	float const start =
		choose(inRanges.mDefault[inIndex], std::isfinite(ioControl.mMinimum) ? ioControl.mMinimum : 0.0f);
	ioControl.mDefault = std::clamp(start, ioControl.mMinimum, ioControl.mMaximum);
}

Control ReadControl(PortView const& inPort, Ranges const& inRanges, std::size_t inIndex)
{
	Control control;
	control.mSymbol = GetText(lilv_port_get_symbol(inPort.mPlugin, inPort.mPort));
	control.mName = TakeText(lilv_port_get_name(inPort.mPlugin, inPort.mPort));
	control.mUnit = FindUnit(inPort);
	control.mIsToggled = inPort.Has(LV2_CORE__toggled);
	control.mIsInteger = inPort.Has(LV2_CORE__integer);
	control.mIsEnumeration = inPort.Has(LV2_CORE__enumeration);
	control.mIsLogarithmic = inPort.Has(LV2_PORT_PROPS__logarithmic);
	control.mCountsInRate = inPort.Has(LV2_CORE__sampleRate);
	control.mScalePoints = ReadScalePoints(inPort);
	SetRange(inRanges, inIndex, control);
	return control;
}

// Whatever a plugin states of it, it is a switch that is on.
Control ReadEnabled(PortView const& inPort)
{
	Control control;
	control.mSymbol = GetText(lilv_port_get_symbol(inPort.mPlugin, inPort.mPort));
	control.mName = TakeText(lilv_port_get_name(inPort.mPlugin, inPort.mPort));
	control.mMaximum = 1.0f;
	control.mDefault = 1.0f;
	control.mIsToggled = true;
	return control;
}

// Either the port is marked, or the group that it belongs to.
bool IsSideChain(PortView const& inPort)
{
	Node const group = inPort.Get(LV2_PORT_GROUPS__group);
	return inPort.Has(LV2_CORE_PREFIX "isSideChain") ||
		   (group && !World::Get().GetText(group.get(), LV2_PORT_GROUPS__sideChainOf).empty());
}

Port ReadPort(PortView const& inPort, Ranges const& inRanges, std::size_t inIndex)
{
	Port port;
	port.mKind = FindKind(inPort);
	port.mSymbol = GetText(lilv_port_get_symbol(inPort.mPlugin, inPort.mPort));
	port.mIsOptional = inPort.Has(LV2_CORE__connectionOptional);
	port.mIsSideChain = IsSideChain(inPort);
	float const start = inRanges.mDefault[inIndex];
	port.mDefault = std::isnan(start) ? 0.0f : start;
	if (port.mKind == Kind::kControlIn || port.mKind == Kind::kControlOut)
	{
		port.mRole = FindRole(inPort);
	}
	if (port.mKind == Kind::kAtomIn || port.mKind == Kind::kAtomOut)
	{
		port.mBytes = FindBytes(inPort);
	}
	return port;
}

std::vector<Preset> ReadPresets(LilvPlugin const* inPlugin)
{
	World& world = World::Get();
	std::vector<Preset> presets;
	Nodes const nodes(lilv_plugin_get_related(inPlugin, world.MakeUri(LV2_PRESETS__Preset).get()));
	LILV_FOREACH(nodes, at, nodes.get())
	{
		LilvNode const* const node = lilv_nodes_get(nodes.get(), at);
		lilv_world_load_resource(world.GetLilv(), node);
		presets.push_back({GetUri(node), world.GetText(node, kLabel)});
	}
	std::ranges::sort(
		presets, {}, [](Preset const& inPreset) { return std::pair(inPreset.mName, inPreset.mUri); });
	return presets;
}

std::vector<std::string> ReadRequiredFeatures(LilvPlugin const* inPlugin)
{
	std::vector<std::string> features;
	Nodes const nodes(lilv_plugin_get_required_features(inPlugin));
	LILV_FOREACH(nodes, at, nodes.get())
	{
		features.push_back(GetUri(lilv_nodes_get(nodes.get(), at)));
	}
	std::ranges::sort(features);
	return features;
}

unsigned CountPorts(std::vector<Port> const& inPorts, Kind inKind)
{
	return static_cast<unsigned>(std::ranges::count_if(inPorts, [inKind](Port const& inPort)
		{ return inPort.mKind == inKind && !inPort.mIsSideChain && !inPort.mIsOptional; }));
}

std::string FindWhyUnusable(PluginData const& inData)
{
	for (std::string const& feature : inData.mDescription.mRequiredFeatures)
	{
		if (!PluginFeatures::IsSupported(feature))
		{
			return "it requires the feature " + feature + ", which is not supported";
		}
	}
	for (Port const& port : inData.mPorts)
	{
		if (port.mKind == Kind::kOther && !port.mIsOptional)
		{
			return "its port " + QuoteName(port.mSymbol) + " is of a kind that is not supported";
		}
	}
	return inData.mDescription.mInputs == 0    ? "it has no audio input"
		   : inData.mDescription.mOutputs == 0 ? "it has no audio output"
											   : std::string();
}

void ReadPorts(PluginData& ioData)
{
	Ranges const ranges(ioData.mPlugin);
	for (std::size_t index = 0; index < ranges.mDefault.size(); ++index)
	{
		PortView const view{
			ioData.mPlugin, lilv_plugin_get_port_by_index(ioData.mPlugin, static_cast<std::uint32_t>(index))};
		Port port = ReadPort(view, ranges, index);
		bool const isEnabled = port.mRole == Port::Role::kEnabled;
		if (port.mKind == Kind::kControlIn && (port.mRole == Port::Role::kNone || isEnabled))
		{
			port.mControl = ioData.mDescription.mControls.size();
			ioData.mEnabled = isEnabled ? port.mControl : ioData.mEnabled;
			ioData.mDescription.mControls.push_back(
				isEnabled ? ReadEnabled(view) : ReadControl(view, ranges, index));
		}
		ioData.mDescription.mReportsLatency |= port.mRole == Port::Role::kLatency;
		ioData.mPorts.push_back(std::move(port));
	}
	ioData.mDescription.mInputs = CountPorts(ioData.mPorts, Kind::kAudioIn);
	ioData.mDescription.mOutputs = CountPorts(ioData.mPorts, Kind::kAudioOut);
}

// After the controls that are ports.
void AddParameters(PluginData& ioData)
{
	auto list = ReadParameters(ioData.mPlugin);
	auto& controls = ioData.mDescription.mControls;
	ioData.mParameterPort = list.mPort;
	ioData.mParameters.resize(controls.size());
	std::ranges::move(list.mControls, std::back_inserter(controls));
	std::ranges::move(list.mParameters, std::back_inserter(ioData.mParameters));
	ioData.mDescription.mTexts = std::move(list.mTexts);
	ioData.mTexts = std::move(list.mTextParameters);
}

bool Requires(EffectDescription const& inDescription, std::string_view inFeature)
{
	return std::ranges::find(inDescription.mRequiredFeatures, inFeature) !=
		   inDescription.mRequiredFeatures.end();
}

} // namespace

std::shared_ptr<PluginData const> ReadPlugin(std::string const& inUri)
{
	World::Lock const lock;
	LilvPlugin const* const plugin = World::Get().Find(inUri);
	if (!plugin)
	{
		return nullptr;
	}
	MessageCapture capture;
	auto data = std::make_shared<PluginData>();
	data->mPlugin = plugin;
	EffectDescription& description = data->mDescription;
	description.mUri = GetUri(lilv_plugin_get_uri(plugin));
	description.mName = TakeText(lilv_plugin_get_name(plugin));
	description.mClass = GetText(lilv_plugin_class_get_label(lilv_plugin_get_class(plugin)));
	description.mAuthor = TakeText(lilv_plugin_get_author_name(plugin));
	description.mRequiredFeatures = ReadRequiredFeatures(plugin);
	description.mPresets = ReadPresets(plugin);
	ReadPorts(*data);
	AddParameters(*data);
	data->mNeedsFixedBlocks = Requires(description, LV2_BUF_SIZE__fixedBlockLength) ||
							  Requires(description, LV2_BUF_SIZE__powerOf2BlockLength) ||
							  Requires(description, LV2_BUF_SIZE__coarseBlockLength);
	Node const defaultState = World::Get().MakeUri(LV2_STATE__loadDefaultState);
	data->mLoadsDefaultState = lilv_plugin_has_feature(plugin, defaultState.get());
	description.mWhyUnusable = FindWhyUnusable(*data);
	World::Get().AddProblems(capture.Take());
	return data;
}

} // namespace SonaroHost::Effects
