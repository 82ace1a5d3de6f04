#pragma once

namespace zorvcore::threads
{

// How urgent a thread's work is, from 0 to 7. Each step is worth 5 steps of the system's nice value, with
// kNormal at the nice value of the process itself. Raising above that needs a privilege; without it
// the thread runs as kNormal.
enum class ThreadPriority : int
{
	kIdle = 0,
	kBackground = 2,
	kNormal = 4,
	kAboveNormal = 5,
	kUrgent = 7
};

} // namespace zorvcore::threads
