#pragma once

namespace zorvcore
{

// The outcome of an operation: 32 bits, negative on failure.
using Result = int;

constexpr Result kSuccess = 0;
// A failure without a nearer reason; a node's wrong number of parameters.
constexpr Result eFailure = static_cast<Result>(0x80000000u);
constexpr Result eInvalidArgument = static_cast<Result>(0xA00F0001u);
// What was waited for did not come: too late, or abandoned.
constexpr Result eWaitFailed = static_cast<Result>(0xA00F000Bu);
constexpr Result eNotImplemented = static_cast<Result>(0xA00F000Cu);
constexpr Result eNullPointer = static_cast<Result>(0xA00F000Du);
// A failure that an exception reports without a code of its own.
constexpr Result eUnspecifiedFailure = static_cast<Result>(0xF865001Eu);

constexpr bool ResultSucceeded(Result inResult)
{
	return inResult >= 0;
}

} // namespace zorvcore
