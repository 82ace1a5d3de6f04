#pragma once

#include "GraphTools.h"
#include "ItemBuilder.h"
#include "Place.h"
#include "SequenceBuilder.h"
#include "SonaroHost/Sequence/Description.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost::Sequence
{

// The sequences of one graph, each on its level of nesting.
//
// Again    A sequence that stands on a level once more is the engine's clone of the first one, or that one
//          itself, where that gives the same samples. Otherwise it is built anew.
class NestBuilder
{
public:
	// All outlive this object.
	NestBuilder(GraphTools& ioTools, GraphReport& ioReport);

	BuiltSequence BuildOutermost(Description const& inDescription);

private:
	// A part of the report.
	struct ReportRange
	{
		std::size_t mFirstTrack = 0;
		std::size_t mEndTrack = 0;
		std::size_t mFirstItem = 0;
		std::size_t mEndItem = 0;
	};

	// A sequence that was built on a level.
	struct Known
	{
		Identity mIdentity;
		BuiltNest mNest;
		unsigned mInstances = 0;
		std::string mPrefix;
		ReportRange mReport;
	};

	BuiltNest BuildNest(Nest const& inNest, Place const& inPlace);
	void CheckPath(Description const& inDescription, Place const& inPlace) const;
	BuiltNest BuildAnew(Description const& inDescription, std::string const& inPrefix, Known& outKnown);
	BuiltNest CloneKnown(Known& ioKnown, std::string const& inPrefix);
	void RepeatReport(Known const& inKnown, std::string const& inPrefix);

	GraphTools& mTools;
	GraphReport& mReport;
	std::function<BuiltNest(Nest const&, Place const&)> mBuildNest;
	// From the outermost sequence to the one that is being built.
	std::vector<Description const*> mPath;
	std::map<std::pair<Description const*, std::size_t>, Known> mKnown;
	// By level.
	std::vector<unsigned> mInstances;
};

} // namespace SonaroHost::Sequence
