#include "Libav.h"

#include <array>
#include <atomic>
#include <dlfcn.h>
#include <type_traits>

namespace SonaroHost
{

namespace
{

#define SONARO_LIBAV_FILE(name, version) "lib" #name ".so." AV_STRINGIFY(version)

// Of the versions that this was compiled for: others have other structures.
constexpr std::array kLibavFiles = {
	SONARO_LIBAV_FILE(avutil, LIBAVUTIL_VERSION_MAJOR),
	SONARO_LIBAV_FILE(swresample, LIBSWRESAMPLE_VERSION_MAJOR),
	SONARO_LIBAV_FILE(avcodec, LIBAVCODEC_VERSION_MAJOR),
	SONARO_LIBAV_FILE(avformat, LIBAVFORMAT_VERSION_MAJOR),
};

std::atomic<bool> sIsLibavSilent = false;

// Loaded once, and kept until the process ends.
struct LoadedLibav
{
	LoadedLibav();

	LibavFunctions mFunctions;
	std::string mFault;
};

LoadedLibav::LoadedLibav()
{
	void* last = nullptr;
	for (char const* const file : kLibavFiles)
	{
		last = dlopen(file, RTLD_NOW | RTLD_LOCAL);
		if (!last)
		{
			mFault = dlerror();
			return;
		}
	}
	// The last one stands on the others, where its names are looked for, too.
	auto const find = [&](char const* inName, auto& outFunction)
	{
		outFunction = reinterpret_cast<std::remove_reference_t<decltype(outFunction)>>(dlsym(last, inName));
		if (!outFunction && mFault.empty())
		{
			mFault = std::string(kLibavFiles.back()) + " has no function " + inName;
		}
	};
#define SONARO_LIBAV_FIND(name) find(#name, mFunctions.name);
	SONARO_LIBAV_FUNCTIONS(SONARO_LIBAV_FIND)
#undef SONARO_LIBAV_FIND
	if (mFault.empty() && sIsLibavSilent)
	{
		mFunctions.av_log_set_level(AV_LOG_QUIET);
	}
}

LoadedLibav const& LoadLibav()
{
	static LoadedLibav const sLibav;
	return sLibav;
}

} // namespace

std::string const& FindLibavFault()
{
	return LoadLibav().mFault;
}

LibavFunctions const& Libav()
{
	return LoadLibav().mFunctions;
}

void SilenceLibav()
{
	sIsLibavSilent = true;
}

} // namespace SonaroHost
