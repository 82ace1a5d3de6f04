#pragma once

#include <lilv/lilv.h>

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost::Effects
{

struct FreeNode
{
	void operator()(LilvNode* inNode) const { lilv_node_free(inNode); }
};
using Node = std::unique_ptr<LilvNode, FreeNode>;

struct FreeNodes
{
	void operator()(LilvNodes* inNodes) const { lilv_nodes_free(inNodes); }
};
using Nodes = std::unique_ptr<LilvNodes, FreeNodes>;

struct FreeState
{
	void operator()(LilvState* inState) const { lilv_state_free(inState); }
};
using State = std::unique_ptr<LilvState, FreeState>;

// The texts of nodes; empty for null.
std::string GetUri(LilvNode const* inNode);
std::string GetText(LilvNode const* inNode);
// The same of a node that is freed.
inline std::string TakeText(LilvNode* inNode)
{
	return GetText(Node(inNode).get());
}

// Everything that lilv knows of the installed plugins, once for the process.
//
// Threads  lilv stands for one at a time: whoever calls it, or lets a plugin be loaded, restored or freed, holds the lock.
class World
{
public:
	// The first call reads the manifests of all plugins.
	static World& Get();
	World(World const&) = delete;
	World& operator=(World const&) = delete;

	class Lock
	{
	public:
		Lock()
			: mLock(Get().mMutex)
		{
		}

	private:
		std::lock_guard<std::recursive_mutex> mLock;
	};

	LilvWorld* GetLilv() const { return mWorld; }
	Node MakeUri(char const* inUri) const { return Node(lilv_new_uri(mWorld, inUri)); }
	LilvPlugins const* GetPlugins() const { return lilv_world_get_all_plugins(mWorld); }
	// Null for one that is not installed.
	LilvPlugin const* Find(std::string const& inUri) const;
	// What is stated of a subject; empty where nothing is.
	std::string GetText(LilvNode const* inSubject, char const* inPredicate) const;

	// What could not be read of the installed plugins, each once.
	std::vector<std::string> const& GetProblems() const { return mProblems; }
	void AddProblems(std::vector<std::string> const& inProblems);
	// Whether a plugin is known to start at a sample rate.
	bool Starts(std::string const& inUri, double inSampleRate) const
	{
		return mStarting.contains({inUri, inSampleRate});
	}
	void NoteStart(std::string const& inUri, double inSampleRate) { mStarting.emplace(inUri, inSampleRate); }

private:
	World();
	~World() { lilv_world_free(mWorld); }

	std::recursive_mutex mMutex;
	LilvWorld* mWorld;
	std::vector<std::string> mProblems;
	std::set<std::pair<std::string, double>> mStarting;
};

} // namespace SonaroHost::Effects
