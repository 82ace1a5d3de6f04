#pragma once

#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Base/EffectFacts.h"
#include "SonaroHost/Base/LiveControl.h"
#include "SonaroHost/Effects/EffectSetup.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Effects
{

struct Control;
struct PluginStart;

// An effect whose setup was checked against its plugin, ready to be made for any number of graphs.
//
// Channels  A plugin works on as many channels as it has ports. One with a single input and output runs once for each
//           channel of a layout, all at the same settings; a stereo one hears mono on both sides, and the mean of its
//           sides is what comes out.
// Latency   What the plugin reports once it has run at its settings, and the block that plugins which want blocks of a
//           fixed length are buffered for. The sound stays in its place when the plugin later reports less. Where it
//           reports more, the processor's GetDelay grows, and the processors that are made from then on have that latency
//           from the start.
// Bypass    By the plugin's own port where it has one; otherwise by a fade to what goes in, as late as the plugin is.
// Threads   Any.
class PreparedEffect
{
public:
	// inSampleRate: of the graphs, for ranges that depend on it. Throws a HostError of the kind kRequest that names what
	// is not there: the plugin, a control, a preset; or a feature that the plugin requires and this host lacks. Its place is
	// that within the setup, as "/state".
	PreparedEffect(EffectSetup const& inSetup, double inSampleRate);

	// The plugin's name.
	std::string const& GetName() const { return mName; }
	// What was changed of the setup, as values that were out of range.
	std::vector<std::string> const& GetRemarks() const { return mRemarks; }
	// The times of all points of the setup, at which parameters may jump.
	std::vector<SN::TickTime> const& GetJumps() const { return mJumps; }
	std::shared_ptr<EffectFacts const> const& GetFacts() const { return mFacts; }
	// The plugin's controls, and the host's bypass for one that has none of its own. They move the processors of all
	// playbacks.
	std::vector<std::shared_ptr<LiveControl>> const& GetControls() const { return mControls; }

	// Throws a HostError of the kind kRequest when the plugin does not fit so many channels.
	void CheckChannels(std::size_t inChannels) const;

	// The processor for one graph, in blocks of up to the context's largest. Throws a HostError when the plugin does not
	// fit the layout or does not start.
	SN::InterfaceRef<SN::IAudioProcessor> Make(SN::InterfaceRef<SN::IAudioRenderContext> const& inContext,
		SN::FrameRate const& inFrameRate, SN::AudioChannelLayout const& inLayout) const;

private:
	struct Plan;

	// Keeps the course of a setting; gives its first value.
	float Take(ControlSetting const& inSetting, Control const& inControl, std::size_t inIndex, Plan& ioPlan);
	void TakeBypass(EffectSetup const& inSetup, PluginStart& ioStart, Plan& ioPlan);
	void MakeLiveControls(PluginStart const& inStart, Plan const& inPlan);
	// With the host's bypass where a graph may need it.
	std::shared_ptr<PluginStart const> ChooseStart(bool inIsLive) const;

	std::string mName;
	std::vector<std::string> mRemarks;
	std::vector<SN::TickTime> mJumps;
	std::shared_ptr<EffectFacts const> mFacts;
	std::vector<std::shared_ptr<LiveControl>> mControls;
	std::shared_ptr<Plan const> mPlan;
};

} // namespace SonaroHost::Effects
