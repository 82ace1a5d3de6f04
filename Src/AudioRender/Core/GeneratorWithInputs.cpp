#include "AudioRender/Core/GeneratorWithInputs.h"

#include "Sonaro/IAudioRecordCompletion.h"

#include <type_traits>
#include <utility>

namespace SN
{

namespace
{

// Calls a function with each node.
template <class Use>
class NodeUse final : public NodeVisitor
{
public:
	explicit NodeUse(Use inUse)
		: mUse(std::move(inUse))
	{
	}

	void Visit(InterfaceRef<IAudioGenerator> const& inInput, std::shared_ptr<Unknown> const&) override
	{
		mUse(*inInput);
	}
	void Visit(InterfaceRef<IAudioProcessor> const& inProcessor) override { mUse(*inProcessor); }
	void Visit(InterfaceRef<IAudioPanProcessor> const& inPanProcessor) override
	{
		if (inPanProcessor)
		{
			mUse(*inPanProcessor);
		}
	}

private:
	Use mUse;
};

// Keeps the nodes, each kind for itself.
class NodeLists final : public NodeVisitor
{
public:
	using Nodes = std::vector<InterfaceRef<UnknownBase>>;

	void Visit(InterfaceRef<IAudioGenerator> const&, std::shared_ptr<Unknown> const& inIdentity) override
	{
		mInputs.push_back(InterfaceRef<UnknownBase>::FromUnknown(inIdentity));
	}
	void Visit(InterfaceRef<IAudioProcessor> const& inProcessor) override
	{
		mProcessors.emplace_back(inProcessor);
	}
	void Visit(InterfaceRef<IAudioPanProcessor> const& inPanProcessor) override
	{
		mPanProcessors.emplace_back(inPanProcessor);
	}

	Nodes mInputs;
	Nodes mProcessors;
	Nodes mPanProcessors;
};

} // namespace

bool GeneratorWithInputs::HasHistory()
{
	bool hasHistory = false;
	NodeUse use([&](auto& ioNode) { hasHistory = hasHistory || ioNode.HasHistory(); });
	VisitNodes(use);
	return hasHistory;
}

void GeneratorWithInputs::Reset()
{
	NodeUse use([](auto& ioNode) { ioNode.Reset(); });
	VisitNodes(use);
}

void GeneratorWithInputs::InitializeAudioFilters()
{
	struct Start
	{
		void operator()(IAudioGenerator& ioInput) const { ioInput.InitializeAudioFilters(); }
		void operator()(IAudioProcessor& ioProcessor) const { ioProcessor.InitializeAudioFilter(); }
		void operator()(IAudioPanProcessor&) const {}
	};
	NodeUse use(Start{});
	VisitNodes(use);
}

void GeneratorWithInputs::ShutdownAudioFilters()
{
	struct Stop
	{
		void operator()(IAudioGenerator& ioInput) const { ioInput.ShutdownAudioFilters(); }
		void operator()(IAudioProcessor& ioProcessor) const { ioProcessor.ShutdownAudioFilter(); }
		void operator()(IAudioPanProcessor&) const {}
	};
	NodeUse use(Stop{});
	VisitNodes(use);
}

std::vector<InterfaceRef<UnknownBase>> GeneratorWithInputs::GetInputNodes()
{
	NodeLists lists;
	VisitNodes(lists);
	return std::move(lists.mInputs);
}

std::vector<InterfaceRef<UnknownBase>> GeneratorWithInputs::GetProcessorNodes()
{
	NodeLists lists;
	VisitNodes(lists);
	lists.mProcessors.insert(
		lists.mProcessors.end(), lists.mPanProcessors.begin(), lists.mPanProcessors.end());
	return std::move(lists.mProcessors);
}

void LiveGeneratorWithInputs::CollectLiveParameters(LiveAudioParameterMap& outParameters)
{
	NodeLists lists;
	VisitNodes(lists);
	for (NodeLists::Nodes const* const nodes : {&lists.mPanProcessors, &lists.mProcessors, &lists.mInputs})
	{
		for (InterfaceRef<ILiveAudioParameterOwner> const owner : *nodes)
		{
			if (owner)
			{
				owner->CollectLiveParameters(outParameters);
			}
		}
	}
}

void GeneratorWithInputs::NotifyInputs(InterfaceRef<UnknownBase> const& inRecording)
{
	for (InterfaceRef<IAudioRecordCompletion> const listener : GetInputNodes())
	{
		if (listener)
		{
			listener->NotifyRecordComplete(inRecording);
		}
	}
}

} // namespace SN
