#include "ConvertBinding.h"

#include "Samples.h"
#include "SonaroHost/Render/StretchSamples.h"

#include <string>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

using namespace SonaroHost;

// Numerators and denominators of the rates.
SampleArray Resample(
	SampleArray const& inSamples, std::int64_t inNumerator, std::int64_t inDenominator, bool inIsDraft)
{
	std::vector<float const*> const channels = GetChannels(inSamples);
	std::vector<std::vector<float>> samples;
	{
		py::gil_scoped_release const release;
		samples = ResampleSamples(channels, inSamples.shape(1), Ratio(inNumerator, inDenominator),
			inIsDraft ? RateQuality::kDraft : RateQuality::kFull, SignalListener());
	}
	return ToArray(samples);
}

SampleArray Stretch(SampleArray const& inSamples, int inSampleRate, StretchWish const& inWish)
{
	std::vector<float const*> const channels = GetChannels(inSamples);
	std::vector<std::vector<float>> samples;
	{
		py::gil_scoped_release const release;
		samples = StretchSamples(channels, inSamples.shape(1), inSampleRate, inWish, SignalListener());
	}
	return ToArray(samples);
}

} // namespace

void AddConversions(py::module_& ioModule)
{
	ioModule.def("resample", &Resample, py::arg("samples"), py::arg("numerator"), py::arg("denominator"),
		py::arg("is_draft"));
	ioModule.def(
		"stretch",
		[](SampleArray const& inSamples, int inSampleRate, double inSpeed, bool inKeepsPitch,
			double inSemitones, std::string const& inEngine)
		{
			StretchEngine const engine = inEngine == "scaler"       ? StretchEngine::kScaler
										 : inEngine == "rubberband" ? StretchEngine::kRubberBand
																	: StretchEngine::kOmega;
			return Stretch(inSamples, inSampleRate, {inSpeed, inKeepsPitch, inSemitones, engine});
		},
		py::arg("samples"), py::arg("rate"), py::arg("speed"), py::arg("keep_pitch"), py::arg("semitones"),
		py::arg("engine"));
}

} // namespace SonaroPython
