#include "SofaFile.h"

#include "Files/NameForms.h"
#include "SonaroHost/Base/HostError.h"

#include <mysofa.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>
#include <numbers>
#include <string>
#include <system_error>

namespace SonaroHost
{

namespace
{

constexpr char const* kSofaRemedy = "choose a SOFA file of the convention SimpleFreeFieldHRIR";
constexpr double kLowestSofaRate = 8000.0;
constexpr double kHighestSofaRate = 384000.0;
constexpr unsigned kMostTaps = 65536;
constexpr unsigned kMostDirections = 65536;

struct FreeSofa
{
	void operator()(MYSOFA_HRTF* inFile) const { mysofa_free(inFile); }
};
using SofaHandle = std::unique_ptr<MYSOFA_HRTF, FreeSofa>;

void CheckIsReadable(std::filesystem::path const& inPath)
{
	std::error_code error;
	if (!std::filesystem::exists(inPath, error))
	{
		RefuseFile(inPath, DescribeMissing(inPath));
	}
	if (!std::filesystem::is_regular_file(inPath, error) || !std::ifstream(inPath, std::ios::binary))
	{
		RefuseFile(inPath, "cannot be opened as a file");
	}
}

// What libmysofa says by a number.
std::string DescribeSofaError(int inError)
{
	switch (inError)
	{
	case MYSOFA_NO_MEMORY:
		return "needs more memory than there is";
	case MYSOFA_READ_ERROR:
		return "is truncated or damaged";
	case MYSOFA_INVALID_ATTRIBUTES:
	case MYSOFA_INVALID_FORMAT:
	case MYSOFA_UNSUPPORTED_FORMAT:
		return "is not a SOFA file, or is damaged";
	case MYSOFA_INVALID_DIMENSIONS:
	case MYSOFA_INVALID_DIMENSION_LIST:
		return "has variables whose dimensions are not valid";
	case MYSOFA_INVALID_COORDINATE_TYPE:
		return "has coordinates of an unknown type";
	case MYSOFA_ONLY_DELAYS_WITH_IR_OR_MR_SUPPORTED:
		return "has delays in a form that is not supported";
	case MYSOFA_ONLY_THE_SAME_SAMPLING_RATE_SUPPORTED:
		return "has several sample rates, which is not supported";
	case MYSOFA_INVALID_RECEIVER_POSITIONS:
	case MYSOFA_RECEIVERS_WITH_RCI_SUPPORTED:
	case MYSOFA_RECEIVERS_WITH_CARTESIAN_SUPPORTED:
		return "has receivers that are not two ears";
	case MYSOFA_ONLY_EMITTER_WITH_ECI_SUPPORTED:
	case MYSOFA_ONLY_SOURCES_WITH_MC_SUPPORTED:
		return "has sources in a form that is not supported";
	default:
		return "cannot be read as SOFA (error " + std::to_string(inError) + " of libmysofa)";
	}
}

std::string GetAttribute(MYSOFA_HRTF const& inFile, std::string inName)
{
	char const* const value = mysofa_getAttribute(inFile.attributes, inName.data());
	return value ? value : "";
}

void CheckConvention(std::filesystem::path const& inPath, MYSOFA_HRTF& ioFile)
{
	if (GetAttribute(ioFile, "Conventions") != "SOFA")
	{
		RefuseFile(inPath, "is not a SOFA file", kSofaRemedy);
	}
	std::string const convention = GetAttribute(ioFile, "SOFAConventions");
	if (convention != "SimpleFreeFieldHRIR")
	{
		RefuseFile(
			inPath, "has the SOFA convention " + (convention.empty() ? "(none)" : convention), kSofaRemedy);
	}
	if (int const error = mysofa_check(&ioFile); error != MYSOFA_OK)
	{
		RefuseFile(inPath, DescribeSofaError(error), kSofaRemedy);
	}
}

bool AreFinite(MYSOFA_ARRAY const& inArray)
{
	return std::all_of(inArray.values, inArray.values + inArray.elements,
		[](float inValue) { return std::isfinite(inValue); });
}

void CheckValues(std::filesystem::path const& inPath, MYSOFA_HRTF const& inFile)
{
	std::uint64_t const directions = inFile.M;
	bool const isShaped = inFile.R == EarMeasurements::kNumEars && inFile.C == 3 && inFile.N > 0 &&
						  directions > 0 && inFile.N <= kMostTaps && directions <= kMostDirections &&
						  inFile.DataIR.elements == directions * EarMeasurements::kNumEars * inFile.N &&
						  inFile.SourcePosition.elements == directions * 3 &&
						  inFile.DataSamplingRate.elements >= 1;
	if (!isShaped)
	{
		RefuseFile(inPath, "has variables whose dimensions are not valid", kSofaRemedy);
	}
	if (!AreFinite(inFile.DataIR) || !AreFinite(inFile.SourcePosition) || !AreFinite(inFile.DataDelay))
	{
		RefuseFile(inPath, "has values that are no numbers", kSofaRemedy);
	}
	double const rate = static_cast<double>(inFile.DataSamplingRate.values[0]);
	// Written so that what is not a number fails it.
	if (!(rate >= kLowestSofaRate && rate <= kHighestSofaRate))
	{
		RefuseFile(inPath, "has a sample rate out of range; 8000 to 384000 Hz are supported", kSofaRemedy);
	}
}

// The delays are those of all directions, or of each one.
double GetDelay(MYSOFA_HRTF const& inFile, std::size_t inDirection, std::size_t inEar)
{
	constexpr std::size_t kEars = EarMeasurements::kNumEars;
	bool const isForEach = inFile.DataDelay.elements == inFile.M * kEars;
	std::size_t const index = isForEach ? inDirection * kEars + inEar : inEar;
	return index < inFile.DataDelay.elements ? static_cast<double>(inFile.DataDelay.values[index]) : 0.0;
}

} // namespace

EarMeasurements ReadSofaFile(std::filesystem::path const& inPath)
{
	CheckIsReadable(inPath);
	int error = MYSOFA_OK;
	SofaHandle const file(mysofa_load(inPath.c_str(), &error));
	if (!file || error != MYSOFA_OK)
	{
		RefuseFile(inPath, DescribeSofaError(file || error != MYSOFA_OK ? error : MYSOFA_INVALID_FORMAT),
			kSofaRemedy);
	}
	CheckConvention(inPath, *file);
	CheckValues(inPath, *file);
	mysofa_tospherical(file.get());
	EarMeasurements measurements{static_cast<double>(file->DataSamplingRate.values[0]), file->N, {},
		{file->DataIR.values, file->DataIR.values + file->DataIR.elements}};
	for (std::size_t i = 0; i < file->M; ++i)
	{
		constexpr double kDegree = std::numbers::pi / 180.0;
		float const* const position = file->SourcePosition.values + 3 * i;
		measurements.mDirections.push_back({static_cast<double>(position[0]) * kDegree,
			static_cast<double>(position[1]) * kDegree, {GetDelay(*file, i, 0), GetDelay(*file, i, 1)}});
	}
	return measurements;
}

} // namespace SonaroHost
