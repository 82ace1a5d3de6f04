#pragma once

#include "SonaroHost/Files/FileState.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <thread>

namespace SonaroCommand
{

// Looks at a file twice a second, on a thread of its own, and calls back there when it was changed and has stayed the same
// since the last look, so that nothing half-written is read.
class TimelineWatch
{
public:
	TimelineWatch(std::filesystem::path inPath, std::function<void()> inOnChange);

private:
	void Run(std::stop_token const& inStop);

	std::filesystem::path mPath;
	std::function<void()> mOnChange;
	std::jthread mThread;
};

} // namespace SonaroCommand
