#include "TimelineBinding.h"

#include "OpenTimeline.h"
#include "Samples.h"

#include <optional>
#include <string>
#include <vector>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

std::shared_ptr<OpenTimeline> Open(std::string const& inPath, std::optional<std::string> const& inText,
	std::vector<std::string> const& inArguments, unsigned inReaders, double inWarmUpSeconds)
{
	auto text = inText ? std::make_shared<std::string const>(*inText) : nullptr;
	py::gil_scoped_release const release;
	return std::make_shared<OpenTimeline>(
		OpenTimeline::Settings{inPath, std::move(text), inArguments, inReaders, inWarmUpSeconds});
}

} // namespace

void AddTimeline(py::module_& ioModule)
{
	py::class_<OpenTimeline, std::shared_ptr<OpenTimeline>>(ioModule, "OpenTimeline")
		.def(py::init(&Open), py::arg("path"), py::arg("text"), py::arg("arguments"), py::arg("readers"),
			py::arg("warm_up"))
		.def_property_readonly("channels", &OpenTimeline::GetNumChannels)
		.def(
			"describe", [](OpenTimeline const& inTimeline) { return py::bytes(inTimeline.DescribeAsJson()); })
		.def("read", &ReadSamples<OpenTimeline>, py::arg("start"), py::arg("frames"), py::arg("track"));
}

} // namespace SonaroPython
