#include "Caller.h"

#include <utility>

namespace SonaroCommand
{

namespace
{

thread_local Caller* sCaller = nullptr;

} // namespace

CallerScope::CallerScope(Caller& ioCaller)
	: mBefore(std::exchange(sCaller, &ioCaller))
{
}

CallerScope::~CallerScope()
{
	sCaller = mBefore;
}

Caller* FindCaller()
{
	return sCaller;
}

CalledProgramme const* FindCalledProgramme(std::string const& inPath)
{
	return sCaller ? sCaller->FindProgramme(inPath) : nullptr;
}

std::shared_ptr<std::string const> FindTimelineText(std::string const& inPath)
{
	return sCaller ? sCaller->FindTimelineText(inPath) : nullptr;
}

} // namespace SonaroCommand
