#include "DelayPlan.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <functional>
#include <queue>
#include <utility>

namespace SonaroHost::Sequence
{

DelayPlan::DelayPlan(std::vector<DelayNode> inNodes)
	: mNodes(std::move(inNodes))
{
	FindOrder();
	FindDelays();
}

void DelayPlan::FindOrder()
{
	std::vector<std::size_t> feeders(mNodes.size(), 0);
	for (DelayNode const& node : mNodes)
	{
		for (DelayEdge const& edge : node.mEdges)
		{
			++feeders[edge.mDestination];
		}
	}
	std::priority_queue<std::size_t, std::vector<std::size_t>, std::greater<>> ready;
	auto const take = [&](std::size_t inNode)
	{
		if (feeders[inNode] == 0)
		{
			ready.push(inNode);
		}
	};
	for (std::size_t node = 0; node < mNodes.size(); ++node)
	{
		take(node);
	}
	while (!ready.empty())
	{
		std::size_t const node = ready.top();
		ready.pop();
		mOrder.push_back(node);
		for (DelayEdge const& edge : mNodes[node].mEdges)
		{
			--feeders[edge.mDestination];
			take(edge.mDestination);
		}
	}
	if (mOrder.size() != mNodes.size())
	{
		RefuseCircle(feeders);
	}
}

// A node that still waits for feeders has one that does too: going on from feeder to feeder ends in a circle.
void DelayPlan::RefuseCircle(std::vector<std::size_t> const& inFeeders) const
{
	auto const findFeeder = [&](std::size_t inNode)
	{
		std::size_t feeder = 0;
		auto const leads = [&](DelayEdge const& inEdge) { return inEdge.mDestination == inNode; };
		while (inFeeders[feeder] == 0 || std::ranges::none_of(mNodes[feeder].mEdges, leads))
		{
			++feeder;
		}
		return feeder;
	};
	auto const waits = [](std::size_t inCount) { return inCount > 0; };
	auto node = static_cast<std::size_t>(std::ranges::find_if(inFeeders, waits) - inFeeders.begin());
	for (std::size_t step = 0; step < mNodes.size(); ++step)
	{
		node = findFeeder(node);
	}
	std::size_t const anywhere = node;
	for (std::size_t feeder = findFeeder(anywhere); feeder != anywhere; feeder = findFeeder(feeder))
	{
		node = std::min(node, feeder);
	}
	std::string circle = mNodes[node].mName;
	for (std::size_t feeder = findFeeder(node); feeder != node; feeder = findFeeder(feeder))
	{
		circle = mNodes[feeder].mName + " -> " + circle;
	}
	throw HostError(HostError::Kind::kRequest,
		"sends or outputs form a loop: " + mNodes[node].mName + " -> " + circle + "; remove one of them");
}

void DelayPlan::FindDelays()
{
	mAhead.assign(mNodes.size(), 0);
	for (auto index = mOrder.rbegin(); index != mOrder.rend(); ++index)
	{
		DelayNode& node = mNodes[*index];
		std::int64_t ahead = node.mEdges.empty() ? node.mLatency : 0;
		for (DelayEdge const& edge : node.mEdges)
		{
			ahead = std::max(ahead, mAhead[edge.mDestination] + edge.mLatency);
		}
		for (DelayEdge& edge : node.mEdges)
		{
			edge.mWait = ahead - mAhead[edge.mDestination] - edge.mLatency;
		}
		mAhead[*index] = ahead;
	}
}

} // namespace SonaroHost::Sequence
