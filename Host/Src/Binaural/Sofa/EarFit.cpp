#include "EarFit.h"

#include <Eigen/Cholesky>
#include <Eigen/QR>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace SonaroHost
{

namespace
{

// Below this, loudspeakers give too little to measure; the factors are continued from there.
constexpr double kLowestFrequency = 150.0;
// The ends of fades from 1 to 0, in hertz: the weight of times, and the response at the end of hearing.
constexpr double kTimeFade[] = {600.0, 1500.0};
constexpr double kTopFade[] = {19000.0, 22000.0};
// Times count in samples at this rate; decibels of powers are taken above a floor.
constexpr double kReferenceRate = 44100.0;
constexpr double kPowerFloor = 1e-3;
constexpr std::size_t kTapsAtReference = 128;
// When a plane wave that comes at 0 reaches the middle of the head, in seconds.
constexpr double kCentre = 28.0 / kReferenceRate;

double GetFadeOut(double inFrequency, double const (&inEnds)[2])
{
	double const position = std::clamp((inFrequency - inEnds[0]) / (inEnds[1] - inEnds[0]), 0.0, 1.0);
	return 0.5 + 0.5 * std::cos(std::numbers::pi * position);
}

double ToDecibels(std::complex<double> const& inValue)
{
	return 10.0 * std::log10(std::norm(inValue) + kPowerFloor);
}

} // namespace

// All errors are linear in four numbers for a direction, the real and imaginary parts of what both ears get, once their
// derivatives are known.
class EarFit::Problem
{
public:
	Problem(EarSpectra const& inSpectra, std::size_t inBin, Parameters const* inBefore)
		: mSpectra(inSpectra),
		  mBin(inBin),
		  mFrequency(static_cast<double>(inBin) * inSpectra.GetSpacing()),
		  mTimeShare(GetFadeOut(mFrequency, kTimeFade))
	{
		for (std::size_t ear = 0; ear < Ears::kNumEars; ++ear)
		{
			mTargets[ear].resize(inSpectra.GetNumDirections());
			for (std::size_t direction = 0; direction < mTargets[ear].size(); ++direction)
			{
				Complex const wanted = inSpectra.Get(ear, inBin, direction);
				Complex const phase =
					inBefore ? mTimeShare * wanted + (1.0 - mTimeShare) * Hear(*inBefore, ear, direction)
							 : wanted;
				mTargets[ear][direction] = std::polar(std::abs(wanted), std::arg(phase));
			}
		}
	}

	using Curvature = Eigen::Matrix<double, kNumParameters, kNumParameters>;

	// The sum of the squares of all errors, half its derivatives, and the curvature of Gauss and Newton. The last two may be
	// null.
	double Evaluate(Parameters const& inFactors, Parameters* outSlope, Curvature* outCurvature) const
	{
		double sum = 0.0;
		for (std::size_t direction = 0; direction < mSpectra.GetNumDirections(); ++direction)
		{
			Errors const errors = GetErrors(inFactors, direction);
			sum += mSpectra.GetArea(direction) * errors.mValues.squaredNorm();
			if (outSlope)
			{
				Add(errors, direction, *outSlope, *outCurvature);
			}
		}
		return sum;
	}

private:
	static constexpr int kNumErrors = 8;
	// By the real and imaginary parts of both ears.
	struct Errors
	{
		Eigen::Matrix<double, kNumErrors, 1> mValues;
		Eigen::Matrix<double, kNumErrors, 4> mDerivatives = Eigen::Matrix<double, kNumErrors, 4>::Zero();
	};

	Complex Hear(Parameters const& inFactors, std::size_t inEar, std::size_t inDirection) const
	{
		EarSpectra::Components const& field = mSpectra.GetField(inDirection);
		auto const first = static_cast<Eigen::Index>(8 * inEar);
		return {inFactors.segment<4>(first).dot(field), inFactors.segment<4>(first + 4).dot(field)};
	}

	// Waveforms, with the weight of both ears together, levels, the level between the ears, and the time between them.
	Errors GetErrors(Parameters const& inFactors, std::size_t inDirection) const
	{
		double const wave = 2.0 * std::sqrt(0.5);
		double const level = 0.5 * std::sqrt(0.5);
		Errors errors;
		Complex between = 1.0;
		for (int ear = 0; ear < 2; ++ear)
		{
			auto const index = static_cast<std::size_t>(ear);
			Complex const heard = Hear(inFactors, index, inDirection);
			Complex const wanted = mSpectra.Get(index, mBin, inDirection);
			Complex const difference = heard - mTargets[index][inDirection];
			double const sign = ear == 0 ? 1.0 : -1.0;
			double const decibels = ToDecibels(heard) - ToDecibels(wanted);
			double const slope = 20.0 / std::numbers::ln10 / (std::norm(heard) + kPowerFloor);
			double const power = std::max(std::norm(heard), 1e-12);
			double const time = sign * mTimeShare * GetSamplesPerRadian();
			int const real = 2 * ear;
			errors.mValues[real] = wave * difference.real();
			errors.mValues[real + 1] = wave * difference.imag();
			errors.mValues[4 + ear] = level * decibels;
			errors.mValues[6] = ear == 0 ? decibels : errors.mValues[6] - decibels;
			errors.mDerivatives(real, real) = wave;
			errors.mDerivatives(real + 1, real + 1) = wave;
			Eigen::Vector2d const rise(slope * heard.real(), slope * heard.imag());
			errors.mDerivatives.block<1, 2>(4 + ear, real) = level * rise.transpose();
			errors.mDerivatives.block<1, 2>(6, real) = sign * rise.transpose();
			errors.mDerivatives(7, real) = -time * heard.imag() / power;
			errors.mDerivatives(7, real + 1) = time * heard.real() / power;
			between *= ear == 0 ? heard * std::conj(wanted) : std::conj(heard) * wanted;
		}
		errors.mValues[7] = mTimeShare * GetSamplesPerRadian() * std::arg(between);
		return errors;
	}

	double GetSamplesPerRadian() const { return kReferenceRate / (2.0 * std::numbers::pi * mFrequency); }

	void Add(
		Errors const& inErrors, std::size_t inDirection, Parameters& ioSlope, Curvature& ioCurvature) const
	{
		double const area = mSpectra.GetArea(inDirection);
		EarSpectra::Components const& field = mSpectra.GetField(inDirection);
		Eigen::Vector4d const slope = area * inErrors.mDerivatives.transpose() * inErrors.mValues;
		Eigen::Matrix4d const curvature = area * inErrors.mDerivatives.transpose() * inErrors.mDerivatives;
		Eigen::Matrix4d const fields = field * field.transpose();
		for (int row = 0; row < 4; ++row)
		{
			ioSlope.segment<4>(4 * row) += slope[row] * field;
			for (int column = 0; column < 4; ++column)
			{
				ioCurvature.block<4, 4>(4 * row, 4 * column) += curvature(row, column) * fields;
			}
		}
	}

	EarSpectra const& mSpectra;
	std::size_t mBin;
	double mFrequency;
	double mTimeShare;
	std::array<std::vector<Complex>, Ears::kNumEars> mTargets;
};

EarFit::EarFit(EarSpectra const& inSpectra)
	: mSpectra(inSpectra),
	  mFactors(inSpectra.GetNumBins(), Parameters::Zero())
{
	double const spacing = inSpectra.GetSpacing();
	auto const first = static_cast<std::size_t>(std::ceil(kLowestFrequency / spacing));
	Parameters const* before = nullptr;
	for (std::size_t bin = first; bin < mFactors.size(); ++bin)
	{
		double const fade = GetFadeOut(static_cast<double>(bin) * spacing, kTopFade);
		if (fade == 0.0)
		{
			break;
		}
		mFactors[bin] = FitBin(bin, before);
		before = &mFactors[bin];
	}
	for (std::size_t bin = first; bin < mFactors.size(); ++bin)
	{
		mFactors[bin] *= GetFadeOut(static_cast<double>(bin) * spacing, kTopFade);
	}
	for (std::size_t bin = 0; bin < first; ++bin)
	{
		mFactors[bin] = mFactors[first];
		for (Eigen::Index const imaginary : {4, 12})
		{
			mFactors[bin].segment<4>(imaginary) *= static_cast<double>(bin) / static_cast<double>(first);
		}
	}
}

EarFit::Parameters EarFit::FitPlain(std::size_t inBin) const
{
	Eigen::Matrix4d moments = Eigen::Matrix4d::Identity() * 1e-9;
	Eigen::Matrix4d wanted = Eigen::Matrix4d::Zero();
	for (std::size_t direction = 0; direction < mSpectra.GetNumDirections(); ++direction)
	{
		EarSpectra::Components const& field = mSpectra.GetField(direction);
		Complex const left = mSpectra.Get(0, inBin, direction);
		Complex const right = mSpectra.Get(1, inBin, direction);
		double const area = mSpectra.GetArea(direction);
		moments += area * field * field.transpose();
		wanted += area * field * Eigen::RowVector4d(left.real(), left.imag(), right.real(), right.imag());
	}
	Eigen::Matrix4d const factors = moments.ldlt().solve(wanted);
	return Eigen::Map<Parameters const>(factors.data());
}

EarFit::Parameters EarFit::FitBin(std::size_t inBin, Parameters const* inBefore) const
{
	constexpr int kMostSteps = 40;
	constexpr double kEnough = 1e-7;
	Problem const problem(mSpectra, inBin, inBefore);
	Parameters factors = inBefore ? *inBefore : FitPlain(inBin);
	double damping = 1e-3;
	double best = problem.Evaluate(factors, nullptr, nullptr);
	for (int step = 0; step < kMostSteps; ++step)
	{
		Parameters slope = Parameters::Zero();
		Problem::Curvature curvature = Problem::Curvature::Zero();
		best = problem.Evaluate(factors, &slope, &curvature);
		double next = best;
		Parameters tried = factors;
		// Short enough steps go down.
		for (int attempt = 0; attempt < 10 && !(next < best); ++attempt)
		{
			Problem::Curvature damped = curvature;
			damped.diagonal() *= 1.0 + damping;
			damped.diagonal().array() += 1e-12;
			tried = factors - damped.ldlt().solve(slope);
			next = problem.Evaluate(tried, nullptr, nullptr);
			damping = next < best ? damping / 10.0 : damping * 10.0;
		}
		if (!(next < best))
		{
			break;
		}
		factors = tried;
		if (best - next < kEnough * best)
		{
			break;
		}
	}
	return factors;
}

std::size_t EarFit::CountTaps(double inSampleRate)
{
	double const factor = inSampleRate / kReferenceRate;
	// The usual rates come in pairs, 44.1 and 48 kHz and their multiples, of which both have as many.
	return factor >= 1.0 ? kTapsAtReference * static_cast<std::size_t>(factor)
						 : static_cast<std::size_t>(std::ceil(kTapsAtReference * factor));
}

Ears::Taps EarFit::MakeFilters(double inSampleRate, std::size_t inNumTaps) const
{
	auto const bins = static_cast<Eigen::Index>(mFactors.size());
	auto const taps = static_cast<Eigen::Index>(inNumTaps);
	Eigen::MatrixXd waves(2 * bins, taps);
	Eigen::MatrixXd wanted(2 * bins, static_cast<Eigen::Index>(Ears::kNumEars * Ears::kNumComponents));
	for (Eigen::Index bin = 0; bin < bins; ++bin)
	{
		double const frequency = static_cast<double>(bin) * mSpectra.GetSpacing();
		double const weight = 1.0 / std::sqrt(frequency + 2.0 * mSpectra.GetSpacing());
		for (Eigen::Index tap = 0; tap < taps; ++tap)
		{
			double const angle =
				-2.0 * std::numbers::pi * frequency * (static_cast<double>(tap) / inSampleRate - kCentre);
			waves(bin, tap) = weight * std::cos(angle);
			waves(bins + bin, tap) = weight * std::sin(angle);
		}
		Parameters const& factors = mFactors[static_cast<std::size_t>(bin)];
		wanted.row(bin) << weight * factors.segment<4>(0).transpose(),
			weight * factors.segment<4>(8).transpose();
		wanted.row(bins + bin) << weight * factors.segment<4>(4).transpose(),
			weight * factors.segment<4>(12).transpose();
	}
	Eigen::MatrixXf const filters = waves.colPivHouseholderQr().solve(wanted).cast<float>();
	Ears::Taps result;
	for (Eigen::Index column = 0; column < filters.cols(); ++column)
	{
		std::vector<float>& ear = result[static_cast<std::size_t>(column) / Ears::kNumComponents];
		ear.insert(ear.end(), filters.col(column).begin(), filters.col(column).end());
	}
	return result;
}

} // namespace SonaroHost
