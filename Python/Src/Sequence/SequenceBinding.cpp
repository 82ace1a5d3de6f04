#include "SequenceBinding.h"

#include "Samples.h"
#include "Sequence/OpenSequence.h"
#include "Sequence/SequenceReader.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <string>
#include <utility>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

// ("file", path, stream), ("array", samples, rate, layout, name) or ("function", function, rate, layout, name, frames).
std::shared_ptr<SonaroHost::Sequence::Media const> ReadMedia(py::tuple const& inMedia, SequenceMedia& ioFiles)
{
	auto const kind = inMedia[0].cast<std::string>();
	if (kind == "file")
	{
		std::filesystem::path const path = inMedia[1].cast<std::string>();
		ioFiles.mPaths.push_back(path);
		return ioFiles.mFiles->Get(path, path, inMedia[2].cast<unsigned>());
	}
	MediaFacts facts{
		inMedia[4].cast<std::string>(), inMedia[2].cast<double>(), inMedia[3].cast<std::string>()};
	if (kind == "array")
	{
		auto const samples = inMedia[1].cast<SampleArray>();
		facts.mFrames = samples.shape(1);
		return MakeArrayMedia(samples, facts);
	}
	facts.mFrames = inMedia[5].cast<std::int64_t>();
	return MakeFunctionMedia(inMedia[1].cast<py::function>(), facts, ioFiles.mFailures);
}

std::shared_ptr<OpenSequence> OpenOne(py::list const& inSequences, py::list const& inMedia, int inSampleRate,
	std::optional<std::int64_t> const& inFrames, unsigned inReaders)
{
	SequenceMedia files;
	MediaList media;
	for (py::handle const& entry : inMedia)
	{
		media.push_back(ReadMedia(py::reinterpret_borrow<py::tuple>(entry), files));
	}
	auto description = ReadSequences(inSequences, media, inSampleRate);
	py::gil_scoped_release const release;
	return std::make_shared<OpenSequence>(std::move(description), inSampleRate, inFrames, files, inReaders);
}

// The exception that a function of a media has thrown, or None.
py::object TakeFailure(OpenSequence& ioSequence)
{
	std::exception_ptr const failure = ioSequence.GetFailures().Take();
	if (!failure)
	{
		return py::none();
	}
	try
	{
		std::rethrow_exception(failure);
	}
	catch (py::error_already_set const& error)
	{
		return error.value();
	}
	catch (std::exception const& error)
	{
		return py::module_::import("builtins").attr("ValueError")(error.what());
	}
}

} // namespace

void AddSequence(py::module_& ioModule)
{
	py::class_<OpenSequence, std::shared_ptr<OpenSequence>>(ioModule, "OpenSequence")
		.def(py::init(&OpenOne), py::arg("sequences"), py::arg("media"), py::arg("rate"), py::arg("frames"),
			py::arg("readers"))
		.def_property_readonly("channels", &OpenSequence::GetNumChannels)
		.def_property_readonly("frames", &OpenSequence::GetFrames)
		.def_property_readonly("layout", [](OpenSequence const& inSequence)
			{ return SonaroHost::GetLayoutName(inSequence.GetProgramme().mProgramme.GetLayout()); })
		.def("read", &ReadSamples<OpenSequence>, py::arg("start"), py::arg("frames"), py::arg("track"))
		.def("take_failure", &TakeFailure);
	ioModule.def(
		"count_channels",
		[](std::string const& inLayout)
		{
			auto const layout = SonaroHost::ParseLayout(inLayout);
			return layout ? layout->size() : 0;
		},
		py::arg("layout"));
}

} // namespace SonaroPython
