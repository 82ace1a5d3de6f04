// Sixty-four instances of a plugin as effects of the engine, beside a bare loop that runs as many. Both get their input
// copied into memory of each instance.

#include "SonaroHost/Effects/EffectLibrary.h"
#include "SonaroHost/Effects/PreparedEffect.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <benchmark/benchmark.h>
#include <lilv/lilv.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace SonaroHost;

constexpr std::size_t kInstances = 64;
constexpr unsigned kFrames = 1024;
constexpr double kRate = 48000.0;
constexpr char const* kPlugins[] = {"http://drobilla.net/plugins/mda/Ambience",
	"http://drobilla.net/plugins/mda/Dynamics", "http://drobilla.net/plugins/mda/Overdrive"};

std::vector<float> const& GetInput()
{
	static std::vector<float> const sInput = []
	{
		std::vector<float> samples(kFrames);
		for (unsigned i = 0; i < kFrames; ++i)
		{
			samples[i] = static_cast<float>(i * 2654435761u % 65536u) / 131072.0f - 0.25f;
		}
		return samples;
	}();
	return sInput;
}

// What a host cannot do without: connected ports, a call for each block.
class BareInstance
{
public:
	BareInstance(LilvPlugin const* inPlugin, LilvWorld* inWorld)
		: mInstance(lilv_plugin_instantiate(inPlugin, kRate, nullptr)),
		  mValues(lilv_plugin_get_num_ports(inPlugin))
	{
		lilv_plugin_get_port_ranges_float(inPlugin, nullptr, nullptr, mValues.data());
		LilvNode* const audio = lilv_new_uri(inWorld, LILV_URI_AUDIO_PORT);
		LilvNode* const input = lilv_new_uri(inWorld, LILV_URI_INPUT_PORT);
		for (std::uint32_t port = 0; port < mValues.size(); ++port)
		{
			LilvPort const* const view = lilv_plugin_get_port_by_index(inPlugin, port);
			bool const isAudio = lilv_port_is_a(inPlugin, view, audio);
			float* const samples = mSamples.emplace_back(isAudio ? kFrames : 0).data();
			lilv_instance_connect_port(mInstance, port, isAudio ? samples : &mValues[port]);
			if (isAudio && lilv_port_is_a(inPlugin, view, input))
			{
				mInputs.push_back(samples);
			}
		}
		lilv_node_free(audio);
		lilv_node_free(input);
		lilv_instance_activate(mInstance);
	}
	~BareInstance() { lilv_instance_free(mInstance); }
	BareInstance(BareInstance const&) = delete;
	BareInstance& operator=(BareInstance const&) = delete;

	void Run()
	{
		for (float* const input : mInputs)
		{
			std::copy(GetInput().begin(), GetInput().end(), input);
		}
		lilv_instance_run(mInstance, kFrames);
	}

private:
	LilvInstance* mInstance;
	std::vector<float> mValues;
	std::vector<std::vector<float>> mSamples;
	std::vector<float*> mInputs;
};

void RunBare(benchmark::State& ioState)
{
	std::string const uri = kPlugins[ioState.range(0)];
	LilvWorld* const world = lilv_world_new();
	lilv_world_load_all(world);
	LilvNode* const node = lilv_new_uri(world, uri.c_str());
	LilvPlugin const* const plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world), node);
	std::vector<std::unique_ptr<BareInstance>> instances;
	for (std::size_t i = 0; i < kInstances && plugin; ++i)
	{
		instances.push_back(std::make_unique<BareInstance>(plugin, world));
	}
	for (auto _ : ioState)
	{
		for (auto const& instance : instances)
		{
			instance->Run();
		}
	}
	ioState.SetLabel(plugin ? uri : uri + " is not installed");
	instances.clear();
	lilv_node_free(node);
	lilv_world_free(world);
}

void RunEffects(benchmark::State& ioState)
{
	std::string const uri = kPlugins[ioState.range(0)];
	if (!Effects::FindEffect(uri))
	{
		ioState.SkipWithError("it is not installed");
		return;
	}
	SN::FrameRate const rate = SN::FrameRate::FromSamplesPerSecond(kRate);
	RenderContextScope const context(kFrames, SN::kTimeMax, SN::ImmutableString("benchmark"));
	Effects::PreparedEffect const prepared({uri}, kRate);
	std::vector<SN::InterfaceRef<SN::IAudioProcessor>> effects;
	std::vector<std::unique_ptr<dsp::AudioBuffer>> blocks;
	for (std::size_t i = 0; i < kInstances; ++i)
	{
		effects.push_back(prepared.Make(context.Get(), rate, zorvmediatypes::CreateStereoChannelLayout()));
		effects.back()->InitializeAudioFilter();
		effects.back()->Preroll(SN::kTimeZero, false);
		blocks.push_back(std::make_unique<dsp::AudioBuffer>(2, kFrames));
	}
	for (auto _ : ioState)
	{
		for (std::size_t i = 0; i < kInstances; ++i)
		{
			for (unsigned channel = 0; channel < 2; ++channel)
			{
				std::copy(GetInput().begin(), GetInput().end(), blocks[i]->GetChannel(channel));
			}
			effects[i]->ProcessAudioData(*blocks[i], SN::kTimeZero);
		}
	}
	ioState.SetLabel(uri);
}

BENCHMARK(RunBare)->DenseRange(0, 2);
BENCHMARK(RunEffects)->DenseRange(0, 2);

} // namespace
