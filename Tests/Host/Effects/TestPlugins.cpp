// Plugins that do what real ones do seldom, in one binary. TestPlugins.lv2 says what each is for.

#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/core/lv2.h>
#include <lv2/options/options.h>
#include <lv2/patch/patch.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr std::size_t kMostPorts = 6;

struct Plugin
{
	virtual ~Plugin() = default;
	virtual bool Start(LV2_Feature const* const*) { return true; }
	virtual void Activate() {}
	virtual void Run(std::uint32_t inFrames) = 0;

	std::array<float*, kMostPorts> mPorts{};
};

void const* FindFeature(LV2_Feature const* const* inFeatures, char const* inUri)
{
	for (; *inFeatures; ++inFeatures)
	{
		if (std::strcmp((*inFeatures)->URI, inUri) == 0)
		{
			return (*inFeatures)->data;
		}
	}
	return nullptr;
}

// Late by the port 2, which it states at the port 3.
struct Late : Plugin
{
	// Who was never activated cannot be freed, which is no rarity.
	~Late() override
	{
		if (mLine.empty())
		{
			*mNowhere = 1;
		}
	}
	void Activate() override { mLine.assign(20000, 0.0f); }
	void Process(std::uint32_t inFrames, float inGain)
	{
		auto const frames = static_cast<std::size_t>(*mPorts[2]);
		for (std::uint32_t i = 0; i < inFrames; ++i, ++mPosition)
		{
			mLine[mPosition % mLine.size()] = mPorts[0][i];
			mPorts[1][i] = inGain * mLine[(mPosition + mLine.size() - frames) % mLine.size()];
		}
		*mPorts[3] = *mPorts[2];
	}

	std::vector<float> mLine;
	std::size_t mPosition = 0;
	int volatile* volatile mNowhere = nullptr;
};

struct Delay final : Late
{
	void Run(std::uint32_t inFrames) override { Process(inFrames, 1.0f); }
};

struct Double final : Late
{
	void Run(std::uint32_t inFrames) override { Process(inFrames, 2.0f); }
};

struct Switch final : Late
{
	void Run(std::uint32_t inFrames) override { Process(inFrames, *mPorts[4] > 0.0f ? 2.0f : 1.0f); }
};

struct Fault final : Plugin
{
	void Run(std::uint32_t inFrames) override
	{
		for (std::uint32_t i = 0; i < inFrames; ++i)
		{
			float const in = mPorts[0][i];
			if (in >= 1.0f)
			{
				*mNowhere = 1;
			}
			float& oldest = mLine[mPosition++ % mLine.size()];
			mPorts[1][i] = in <= -1.0f ? std::numeric_limits<float>::quiet_NaN() : oldest;
			oldest = in;
		}
		*mPorts[2] = static_cast<float>(mLine.size());
	}

	std::array<float, 64> mLine{};
	std::size_t mPosition = 0;
	int volatile* volatile mNowhere = nullptr;
};

struct Blocks final : Plugin
{
	bool Start(LV2_Feature const* const* inFeatures) override
	{
		auto const* const map = static_cast<LV2_URID_Map const*>(FindFeature(inFeatures, LV2_URID__map));
		auto const* option =
			static_cast<LV2_Options_Option const*>(FindFeature(inFeatures, LV2_OPTIONS__options));
		LV2_URID const longest = map->map(map->handle, LV2_BUF_SIZE__maxBlockLength);
		for (; option->key != 0; ++option)
		{
			if (option->key == longest)
			{
				mFrames = static_cast<std::uint32_t>(*static_cast<std::int32_t const*>(option->value));
			}
		}
		return mFrames > 0;
	}
	void Run(std::uint32_t inFrames) override
	{
		for (std::uint32_t i = 0; i < inFrames; ++i)
		{
			mPorts[1][i] = inFrames == mFrames ? 2.0f * mPorts[0][i] : 0.0f;
		}
	}

	std::uint32_t mFrames = 0;
};

struct Controls final : Plugin
{
	void Run(std::uint32_t inFrames) override
	{
		std::fill_n(mPorts[2], inFrames, *mPorts[4]);
		std::fill_n(mPorts[3], inFrames, *mPorts[5]);
	}
};

struct Worker final : Plugin
{
	bool Start(LV2_Feature const* const* inFeatures) override
	{
		mSchedule = static_cast<LV2_Worker_Schedule const*>(FindFeature(inFeatures, LV2_WORKER__schedule));
		return mSchedule != nullptr;
	}
	void Run(std::uint32_t inFrames) override
	{
		std::transform(
			mPorts[0], mPorts[0] + inFrames, mPorts[1], [this](float inIn) { return mGain * inIn; });
		mSchedule->schedule_work(mSchedule->handle, sizeof(mGain), &mGain);
	}

	LV2_Worker_Schedule const* mSchedule = nullptr;
	float mGain = 1.0f;
};

// Each sample is the sum of what messages have set until then: "level", ten times "whole", a hundred times "flag", and a
// thousand times the length of "name" and the first byte of "file".
struct Parameters final : Plugin
{
	bool Start(LV2_Feature const* const* inFeatures) override
	{
		auto const* const map = static_cast<LV2_URID_Map const*>(FindFeature(inFeatures, LV2_URID__map));
		auto const find = [map](std::string const& inUri) { return map->map(map->handle, inUri.c_str()); };
		std::string const base = "urn:sonaro-test:parameters#";
		mProperty = find(LV2_PATCH__property);
		mValue = find(LV2_PATCH__value);
		mTaken = {{{find(base + "level"), find(LV2_ATOM__Float)}, {find(base + "whole"), find(LV2_ATOM__Int)},
			{find(base + "flag"), find(LV2_ATOM__Bool)}, {find(base + "name"), find(LV2_ATOM__String)},
			{find(base + "file"), find(LV2_ATOM__Path)}}};
		return true;
	}
	void Run(std::uint32_t inFrames) override
	{
		std::uint32_t done = 0;
		LV2_ATOM_SEQUENCE_FOREACH(reinterpret_cast<LV2_Atom_Sequence const*>(mPorts[2]), event)
		{
			auto const frame = static_cast<std::uint32_t>(event->time.frames);
			std::fill(mPorts[1] + done, mPorts[1] + frame, GetSum());
			done = frame;
			Take(reinterpret_cast<LV2_Atom_Object const*>(&event->body));
		}
		std::fill(mPorts[1] + done, mPorts[1] + inFrames, GetSum());
	}
	void Take(LV2_Atom_Object const* inSet)
	{
		LV2_Atom_URID const* property = nullptr;
		LV2_Atom const* value = nullptr;
		lv2_atom_object_get(inSet, mProperty, &property, mValue, &value, 0);
		void const* const body = value + 1;
		auto const is = [&](std::size_t inIndex)
		{ return mTaken[inIndex] == std::pair(property->body, value->type); };
		mLevel = is(0) ? *static_cast<float const*>(body) : mLevel;
		mWhole = is(1) ? *static_cast<std::int32_t const*>(body) : mWhole;
		mFlag = is(2) ? *static_cast<std::int32_t const*>(body) : mFlag;
		mLetters = is(3) ? static_cast<int>(std::strlen(static_cast<char const*>(body))) : mLetters;
		if (is(4))
		{
			mByte = std::ifstream(static_cast<char const*>(body)).get();
		}
	}
	float GetSum() const
	{
		return mLevel + static_cast<float>(10 * mWhole + 100 * mFlag + 1000 * (mLetters + mByte));
	}

	LV2_URID mProperty = 0;
	LV2_URID mValue = 0;
	std::array<std::pair<LV2_URID, LV2_URID>, 5> mTaken{};
	float mLevel = 0.5f;
	std::int32_t mWhole = 0;
	std::int32_t mFlag = 0;
	int mLetters = 0;
	int mByte = 0;
};

struct Sides final : Plugin
{
	void Run(std::uint32_t inFrames) override
	{
		for (std::uint32_t i = 0; i < inFrames; ++i)
		{
			mPorts[2][i] = 3.0f * mPorts[0][i];
			mPorts[3][i] = mPorts[1][i];
		}
	}
};

template <class T>
LV2_Handle Make(LV2_Descriptor const*, double, char const*, LV2_Feature const* const* inFeatures)
{
	Plugin* const plugin = new T;
	if (!plugin->Start(inFeatures))
	{
		delete plugin;
		return nullptr;
	}
	return plugin;
}

Plugin& Get(LV2_Handle inPlugin)
{
	return *static_cast<Plugin*>(inPlugin);
}

LV2_Worker_Status Work(LV2_Handle, LV2_Worker_Respond_Function inRespond, LV2_Worker_Respond_Handle inHandle,
	std::uint32_t, void const* inGain)
{
	float const gain = 2.0f * *static_cast<float const*>(inGain);
	return inRespond(inHandle, sizeof(gain), &gain);
}

LV2_Worker_Status TakeResponse(LV2_Handle inPlugin, std::uint32_t, void const* inGain)
{
	static_cast<Worker&>(Get(inPlugin)).mGain = *static_cast<float const*>(inGain);
	return LV2_WORKER_SUCCESS;
}

void const* FindExtension(char const* inUri)
{
	static constexpr LV2_Worker_Interface kWorker{&Work, &TakeResponse, nullptr};
	return std::strcmp(inUri, LV2_WORKER__interface) == 0 ? &kWorker : nullptr;
}

using Instantiate = LV2_Handle (*)(LV2_Descriptor const*, double, char const*, LV2_Feature const* const*);

constexpr LV2_Descriptor Describe(char const* inUri, Instantiate inMake, bool inHasWork = false)
{
	return {inUri, inMake,
		[](LV2_Handle inPlugin, std::uint32_t inPort, void* inData)
		{ Get(inPlugin).mPorts.at(inPort) = static_cast<float*>(inData); },
		[](LV2_Handle inPlugin) { Get(inPlugin).Activate(); },
		[](LV2_Handle inPlugin, std::uint32_t inFrames) { Get(inPlugin).Run(inFrames); }, nullptr,
		[](LV2_Handle inPlugin) { delete &Get(inPlugin); }, inHasWork ? &FindExtension : nullptr};
}

} // namespace

LV2_SYMBOL_EXPORT LV2_Descriptor const* lv2_descriptor(std::uint32_t inIndex)
{
	static constexpr LV2_Descriptor kPlugins[] = {
		Describe("urn:sonaro-test:delay", &Make<Delay>),
		Describe("urn:sonaro-test:double", &Make<Double>),
		Describe("urn:sonaro-test:fault", &Make<Fault>),
		Describe("urn:sonaro-test:blocks", &Make<Blocks>),
		Describe("urn:sonaro-test:controls", &Make<Controls>),
		Describe("urn:sonaro-test:worker", &Make<Worker>, true),
		Describe("urn:sonaro-test:parameters", &Make<Parameters>),
		Describe("urn:sonaro-test:parameters-in-blocks", &Make<Parameters>),
		Describe("urn:sonaro-test:sides", &Make<Sides>),
		Describe("urn:sonaro-test:switch", &Make<Switch>),
		Describe("urn:sonaro-test:demanding", &Make<Sides>),
	};
	return inIndex < std::size(kPlugins) ? &kPlugins[inIndex] : nullptr;
}
