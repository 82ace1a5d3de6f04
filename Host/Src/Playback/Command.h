#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "Stream/PlayedGraph.h"
#include "Stream/SpeedStream.h"
#include "zorvcore/threads/Gate.h"

#include <cstdint>
#include <optional>
#include <variant>

namespace SonaroHost::Playback
{

// What a render thread is asked to do, in the order in which it was asked.

struct PlayCommand
{
};

struct StopCommand
{
};

struct SeekCommand
{
	std::int64_t mPlace = 0;
};

struct ScrubCommand
{
	std::int64_t mPlace = 0;
};

struct LoopCommand
{
	std::optional<ProgrammeRange> mLoop;
};

struct SpeedCommand
{
	PlaySpeed mSpeed;
};

// mIsDone opens when nothing is asked of the graph before any more.
struct TakeOverCommand
{
	PlayedGraph* mGraph = nullptr;
	zorvcore::threads::Gate* mIsDone = nullptr;
};

using Command = std::variant<PlayCommand, StopCommand, SeekCommand, ScrubCommand, LoopCommand, SpeedCommand,
	TakeOverCommand>;

} // namespace SonaroHost::Playback
