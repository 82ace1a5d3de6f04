#include "ReadingNode.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Sequence
{

ReadingNode::ReadingNode(std::vector<Generator> inInputs)
	: mInputs(std::move(inInputs))
{
	std::erase_if(mInputs, [](Generator const& inInput) { return !inInput; });
}

bool ReadingNode::HasHistory()
{
	return std::ranges::any_of(mInputs, [](Generator const& inInput) { return inInput->HasHistory(); });
}

void ReadingNode::Reset()
{
	for (Generator const& input : mInputs)
	{
		input->Reset();
	}
}

void ReadingNode::InitializeAudioFilters()
{
	for (Generator const& input : mInputs)
	{
		input->InitializeAudioFilters();
	}
}

void ReadingNode::ShutdownAudioFilters()
{
	for (Generator const& input : mInputs)
	{
		input->ShutdownAudioFilters();
	}
}

void ReadingNode::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters)
{
	for (Generator const& input : mInputs)
	{
		if (SN::InterfaceRef<SN::ILiveAudioParameterOwner> const owner = input)
		{
			owner->CollectLiveParameters(outParameters);
		}
	}
}

} // namespace SonaroHost::Sequence
