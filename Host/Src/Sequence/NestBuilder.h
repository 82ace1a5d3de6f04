#pragma once

#include "ItemBuilder.h"
#include "Sequence/Node/GraphTools.h"
#include "Sequence/Node/Place.h"
#include "SequenceBuilder.h"
#include "SonaroHost/Sequence/Description.h"
#include "SonaroHost/Sequence/GraphReport.h"
#include "SonaroHost/Sequence/GraphView.h"

#include <map>
#include <vector>

namespace SonaroHost::Sequence
{

// The sequences of one graph, each on its level of nesting.
//
// Scratch  Sequences on one level share their scratch memory: they render one after the other. One that stands in
//          several places has its own.
// Again    A sequence that stands in several items is built for each one, up to the engine's limit of instances
//          (OQ.Sonaro.ComplexityBeforeRender). What goes beyond it is silent and reported.
class NestBuilder
{
public:
	// All outlive this object.
	NestBuilder(GraphTools& ioTools, GraphReport& ioReport, GraphView const& inView);

	// inPrefetcher: the prefetcher of a playback, or null.
	Generator BuildOutermost(Description const& inDescription, SN::Prefetcher const* inPrefetcher);

private:
	Generator BuildNest(Nest const& inNest, Place const& inPlace);
	void CountUses(Description const& inDescription);
	// Gives the number by which its scratch memory is distinguished.
	unsigned ChooseInstance(Description const& inDescription);
	void CheckPath(Description const& inDescription, Place const& inPlace) const;

	GraphTools& mTools;
	GraphReport& mReport;
	GraphView const& mView;
	NestMaker mBuildNest;
	// The sequences from the outermost to the one that is being built.
	std::vector<Description const*> mPath;
	// How often each one was built.
	std::map<Description const*, unsigned> mBuilt;
	// How many places each one stands in.
	std::map<Description const*, unsigned> mUses;
	// How many instances have scratch memory of their own, by level.
	std::vector<unsigned> mInstances;
};

} // namespace SonaroHost::Sequence
