#include "ConvertBinding.h"
#include "Errors.h"
#include "MeasureBinding.h"
#include "RunBinding.h"
#include "Sequence/SequenceBinding.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "TimelineBinding.h"

#include <pybind11/pybind11.h>

PYBIND11_MODULE(_sonaro, outModule)
{
	outModule.doc() = "What the package sonaro is made of; use that.";
	outModule.attr("__version__") = SONARO_VERSION;
	SonaroHost::SilenceMovieLibraries();
	SonaroPython::AddErrors(outModule);
	SonaroPython::AddRun(outModule);
	SonaroPython::AddTimeline(outModule);
	SonaroPython::AddSequence(outModule);
	SonaroPython::AddMeasures(outModule);
	SonaroPython::AddConversions(outModule);
}
