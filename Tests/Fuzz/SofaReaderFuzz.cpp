#include "Binaural/Sofa/EarSpectra.h"
#include "Binaural/Sofa/SofaFile.h"
#include "Fuzzing.h"

#include <cmath>

using namespace SonaroFuzzing;

// All but the fit of filters, which takes long and sees only what is checked here.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	std::filesystem::path const path = WriteInput("ears.sofa", AsText(inData, inSize));
	Try(
		[&path]
		{
			constexpr std::size_t kMostTaps = 100000;
			SonaroHost::EarMeasurements const measurements = SonaroHost::ReadSofaFile(path);
			Require(!measurements.mDirections.empty() && measurements.mNumTaps > 0);
			Require(measurements.mTaps.size() == measurements.mDirections.size() * measurements.mNumTaps *
													 SonaroHost::EarMeasurements::kNumEars);
			if (measurements.mTaps.size() <= kMostTaps)
			{
				SonaroHost::EarSpectra const spectra(measurements);
				Require(!spectra.IsHeard() || std::isfinite(spectra.GetSpread()));
			}
		});
	return 0;
}
