#include "MeasureBinding.h"

#include "PeakGatherer.h"
#include "Report/LoudnessRows.h"
#include "Samples.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/Metering/LoudnessSeries.h"

#include <optional>
#include <string>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

using namespace SonaroHost;

// A loudness meter that knows what it has heard.
class Meter
{
public:
	Meter(std::string const& inLayout, int inSampleRate)
		: mLayout(ReadLayout(inLayout)),
		  mSampleRate(inSampleRate),
		  mMeter(mLayout, inSampleRate, LoudnessMemory::kGrowing, LoudnessWindows::kSeries)
	{
	}

	void Add(SampleArray const& inSamples)
	{
		if (inSamples.shape(0) != static_cast<py::ssize_t>(mLayout.size()))
		{
			Refuse("the samples have " + std::to_string(inSamples.shape(0)) +
				   " channels, but the layout has " + std::to_string(mLayout.size()));
		}
		ForEachBlock(inSamples, [this](dsp::AudioBuffer const& inBlock) { mMeter.Add(inBlock); });
		mFrames += inSamples.shape(1);
	}

	// As the command lists it, and the series: momentary, short-term.
	py::tuple Read() const
	{
		LoudnessReading const reading = mMeter.GetReadingAtEnd();
		py::array_t<double> series(
			{py::ssize_t{2}, static_cast<py::ssize_t>(reading.mSeries->GetNumSteps())});
		auto values = series.mutable_unchecked<2>();
		for (std::size_t step = 0; step < reading.mSeries->GetNumSteps(); ++step)
		{
			values(0, static_cast<py::ssize_t>(step)) = reading.mSeries->GetMomentary(step);
			values(1, static_cast<py::ssize_t>(step)) = reading.mSeries->GetShortTerm(step);
		}
		std::string const text =
			SonaroCommand::ListLoudnessForMachines({{"samples", mSampleRate, mFrames, mLayout, reading}});
		return py::make_tuple(py::bytes(text), reading.mSeries->GetStepSeconds(), series);
	}

private:
	static SN::AudioChannelLayout ReadLayout(std::string const& inName)
	{
		auto const layout = ParseLayout(inName);
		if (!layout)
		{
			Refuse(
				"layout: '" + inName +
				"' is not a layout; use mono, stereo, 5.1, ambisonic1 or a number of channels from 1 to 64");
		}
		return *layout;
	}

	SN::AudioChannelLayout mLayout;
	int mSampleRate;
	std::int64_t mFrames = 0;
	LoudnessMeter mMeter;
};

// Rate and columns of a sound file or a movie.
py::tuple GatherFile(std::string const& inPath, std::int64_t inSamplesPerColumn)
{
	int rate = 0;
	std::optional<PeakGatherer> peaks;
	{
		py::gil_scoped_release const release;
		AudioFileReader reader{std::filesystem::path(inPath)};
		AudioFileInfo const& info = reader.GetInfo();
		rate = info.mSampleRate;
		peaks.emplace(info.GetNumChannels(), inSamplesPerColumn);
		SignalListener listen;
		std::int64_t const block = reader.GetBlockFrames();
		for (std::int64_t first = 0; first < info.mFrames; first += block)
		{
			peaks->AddInterleaved(reader.GetBlock(first / block), info.mChannelOrder,
				static_cast<unsigned>(std::min(block, info.mFrames - first)));
			listen();
		}
	}
	return py::make_tuple(rate, peaks->Finish());
}

} // namespace

void AddMeasures(py::module_& ioModule)
{
	py::class_<Meter>(ioModule, "LoudnessMeter")
		.def(py::init<std::string const&, int>(), py::arg("layout"), py::arg("rate"))
		.def("add", &Meter::Add, py::arg("samples"))
		.def("read", &Meter::Read);
	py::class_<PeakGatherer>(ioModule, "PeakGatherer")
		.def(py::init<unsigned, std::int64_t>(), py::arg("channels"), py::arg("samples_per_column"))
		.def("add", &PeakGatherer::Add, py::arg("samples"))
		.def("finish", &PeakGatherer::Finish);
	ioModule.def("gather_file", &GatherFile, py::arg("path"), py::arg("samples_per_column"));
}

} // namespace SonaroPython
