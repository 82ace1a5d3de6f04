#pragma once

#include <cstdint>
#include <functional>

namespace SonaroHost
{

// How far a job has come.
struct RenderProgress
{
	// Frames of all passes that were rendered.
	std::int64_t mFramesDone = 0;
	// Frames of all passes that are known to come; it may grow.
	std::int64_t mFramesTotal = 0;
};

// Called now and then, on the thread that runs the job. One that was asked to use several threads calls it on any of
// them, one call at a time.
using ProgressCallback = std::function<void(RenderProgress const&)>;

} // namespace SonaroHost
