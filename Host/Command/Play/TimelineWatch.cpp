#include "TimelineWatch.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace SonaroCommand
{

using SonaroHost::FileState;

TimelineWatch::TimelineWatch(std::filesystem::path inPath, std::function<void()> inOnChange)
	: mPath(std::move(inPath)),
	  mOnChange(std::move(inOnChange)),
	  mThread([this](std::stop_token const& inStop) { Run(inStop); })
{
}

void TimelineWatch::Run(std::stop_token const& inStop)
{
	using namespace std::chrono_literals;
	std::optional<FileState> known = SonaroHost::ReadFileState(mPath);
	std::optional<FileState> last = known;
	std::mutex mutex;
	std::condition_variable_any stopped;
	std::unique_lock lock(mutex);
	while (!stopped.wait_for(lock, inStop, 500ms, [&inStop] { return inStop.stop_requested(); }))
	{
		std::optional<FileState> const state = SonaroHost::ReadFileState(mPath);
		if (state && state == last && state != known)
		{
			known = state;
			mOnChange();
		}
		last = state;
	}
}

} // namespace SonaroCommand
