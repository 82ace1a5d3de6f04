#include "SonaroHost/Binaural/SofaEars.h"

#include "EarFit.h"
#include "SofaFile.h"
#include "SonaroHost/Base/HostError.h"

#include <cmath>
#include <utility>

namespace SonaroHost
{

std::shared_ptr<Ears const> ReadSofaEars(std::filesystem::path const& inPath)
{
	constexpr char const* kRemedy = "choose measurements from all around the listener";
	// As from directions that reach a third of the way down and up from the horizon.
	constexpr double kLeastSpread = 0.02;
	EarMeasurements const measurements = ReadSofaFile(inPath);
	EarSpectra const spectra(measurements);
	if (!spectra.IsHeard())
	{
		RefuseFile(inPath, "is silent", kRemedy);
	}
	if (spectra.GetSpread() < kLeastSpread)
	{
		RefuseFile(inPath,
			"has " + std::to_string(spectra.GetNumDirections()) +
				" directions that do not surround the listener",
			kRemedy);
	}
	std::size_t const taps = EarFit::CountTaps(measurements.mSampleRate);
	return std::make_shared<Ears const>(inPath.filename().string(),
		static_cast<unsigned>(std::lround(measurements.mSampleRate)), static_cast<unsigned>(taps),
		EarFit(spectra).MakeFilters(measurements.mSampleRate, taps));
}

std::string DescribeSofaLibrary()
{
	return "libmysofa " SONARO_MYSOFA_VERSION;
}

} // namespace SonaroHost
