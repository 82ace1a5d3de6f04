#include "World.h"

#include "MessageCapture.h"

#include <algorithm>
#include <new>

namespace SonaroHost::Effects
{

std::string GetUri(LilvNode const* inNode)
{
	return inNode && lilv_node_is_uri(inNode) ? lilv_node_as_uri(inNode) : std::string();
}

std::string GetText(LilvNode const* inNode)
{
	return inNode ? lilv_node_as_string(inNode) : std::string();
}

World& World::Get()
{
	static World sWorld;
	return sWorld;
}

World::World()
	: mWorld(lilv_world_new())
{
	if (!mWorld)
	{
		throw std::bad_alloc();
	}
	MessageCapture capture;
	lilv_world_load_all(mWorld);
	AddProblems(capture.Take());
}

void World::AddProblems(std::vector<std::string> const& inProblems)
{
	for (std::string const& problem : inProblems)
	{
		if (std::ranges::find(mProblems, problem) == mProblems.end())
		{
			mProblems.push_back(problem);
		}
	}
}

LilvPlugin const* World::Find(std::string const& inUri) const
{
	if (inUri.find(':') == std::string::npos)
	{
		return nullptr;
	}
	Node const uri = MakeUri(inUri.c_str());
	return uri ? lilv_plugins_get_by_uri(GetPlugins(), uri.get()) : nullptr;
}

std::string World::GetText(LilvNode const* inSubject, char const* inPredicate) const
{
	Node const predicate = MakeUri(inPredicate);
	return TakeText(lilv_world_get(mWorld, inSubject, predicate.get(), nullptr));
}

} // namespace SonaroHost::Effects
