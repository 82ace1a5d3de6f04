#include "zorvcore/math/Elementary.h"

#include "Support/Common.h"

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

namespace ElementaryTest
{

using namespace zorvcore::math;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Function
{
	char const* mName;
	double (*mFunction)(double);
	// The C library's, with more bits.
	long double (*mReference)(long double);
	double mLow;
	double mHigh;
	// In units in the last place.
	double mError = 0.52;
};
constexpr Function kFunctions[] = {
	{"sine", &Sin, [](long double x) { return std::sin(x); }, -7.0, 7.0},
	{"sine near 0", &Sin, [](long double x) { return std::sin(x); }, -1e-3, 1e-3},
	{"sine where series end", &Sin, [](long double x) { return std::sin(x); }, 0.1, 0.15},
	{"sine of a quarter", &Sin, [](long double x) { return std::sin(x); }, 0.0, 1.7},
	{"sine, many turns", &Sin, [](long double x) { return std::sin(x); }, -99999.0, 99999.0},
	{"cosine", &Cos, [](long double x) { return std::cos(x); }, -7.0, 7.0},
	{"cosine about a quarter", &Cos, [](long double x) { return std::cos(x); }, 1.4, 1.7},
	{"tangent", &Tan, [](long double x) { return std::tan(x); }, -1.5, 1.5, 3.0},
	{"exp", &Exp, [](long double x) { return std::exp(x); }, -700.0, 700.0},
	{"exp near 0", &Exp, [](long double x) { return std::exp(x); }, -0.01, 0.01},
	{"exp2", &Exp2, [](long double x) { return std::exp2(x); }, -20.0, 20.0},
	{"exp10", &Exp10, [](long double x) { return std::pow(10.0L, x); }, -20.0, 20.0},
	{"exp2 of much", &Exp2, [](long double x) { return std::exp2(x); }, -1021.0, 1023.0},
	{"exp10 of much", &Exp10, [](long double x) { return std::pow(10.0L, x); }, -307.0, 308.0},
	{"log", &Log, [](long double x) { return std::log(x); }, 1e-9, 10.0},
	{"log near 1", &Log, [](long double x) { return std::log(x); }, 0.99, 1.01},
	{"log10", &Log10, [](long double x) { return std::log10(x); }, 1e-9, 10.0},
	{"power", [](double x) { return Pow(x, 2.375); }, [](long double x) { return std::pow(x, 2.375L); }, 1e-9,
		100.0},
	{"power of a number", [](double x) { return Pow(3.25, x); },
		[](long double x) { return std::pow(3.25L, x); }, -500.0, 500.0},
};

double GetUnit(double inValue)
{
	double const size = std::fabs(inValue);
	return std::nextafter(size, kInfinity) - size;
}

TEST(Elementary, ResultsAreWithinTheErrorsThatTheHeaderGives)
{
	// The sine of what is nearest to pi among doubles shows with how many bits of pi the C library works, unless the
	// compiler works it out.
	constexpr long double kSine = 1.2246467991473531772e-16L;
	double const volatile nearPi = 3.141592653589793;
	long double const sine = std::sin(static_cast<long double>(nearPi));
	if (std::numeric_limits<long double>::digits <= std::numeric_limits<double>::digits ||
		std::fabs(sine - kSine) > 1e-15L * kSine)
	{
		GTEST_SKIP() << "The C library has no functions of more bits here.";
	}
	std::mt19937_64 random(7);
	for (Function const& function : kFunctions)
	{
		for (int trial = 0; trial < 20000; ++trial)
		{
			double const part = static_cast<double>(random() >> 11) * 0x1p-53;
			double const x = function.mLow + (function.mHigh - function.mLow) * part;
			double const result = function.mFunction(x);
			auto const error = static_cast<double>(std::fabs(result - function.mReference(x)));
			ASSERT_LE(error, function.mError * GetUnit(result)) << function.mName << " of " << x;
		}
	}
}

// The bound leaves room for halves, which the C library's own roundings decide.
TEST(Elementary, SinglePrecisionIsTheNearest)
{
	std::mt19937 random(9);
	for (int trial = 0; trial < 20000; ++trial)
	{
		float const angle = static_cast<float>(random() >> 8) * 0x1p-22f - 2.0f;
		double const sine = std::sin(static_cast<double>(angle));
		double const cosine = std::cos(static_cast<double>(angle));
		auto const unit = [](float inValue)
		{ return std::nextafter(std::fabs(inValue), 9.0f) - std::fabs(inValue); };
		ASSERT_LE(std::fabs(Sin(angle) - sine), 0.5001 * unit(Sin(angle))) << angle;
		ASSERT_LE(std::fabs(Cos(angle) - cosine), 0.5001 * unit(Cos(angle))) << angle;
	}
}

// A hash that g++ on x86-64 gave; every other compiler and processor has to give it.
TEST(Elementary, BitsAreTheSameEverywhere)
{
	std::mt19937_64 random(8);
	std::uint64_t hash = 0;
	for (Function const& function : kFunctions)
	{
		for (int trial = 0; trial < 5000; ++trial)
		{
			double const part = static_cast<double>(random() >> 11) * 0x1p-53;
			double const result = function.mFunction(function.mLow + (function.mHigh - function.mLow) * part);
			hash = (hash ^ std::bit_cast<std::uint64_t>(result)) * 0x9E3779B97F4A7C15u;
			hash ^= hash >> 32;
		}
	}
	for (int trial = 0; trial < 5000; ++trial)
	{
		float const angle = static_cast<float>(random() >> 40) * 0x1p-22f - 2.0f;
		auto const part = std::bit_cast<std::uint32_t>(Sin(angle)) ^
						  std::uint64_t{std::bit_cast<std::uint32_t>(Cos(angle))} << 32;
		hash = (hash ^ part) * 0x9E3779B97F4A7C15u;
		hash ^= hash >> 32;
	}
	EXPECT_EQ(hash, 0x5F00EBD6FF40BF68u);
}

TEST(Elementary, EdgesAreThoseOfTheCLibrary)
{
	struct Edge
	{
		char const* mName;
		double mResult;
		double mExpected;
	};
	Edge const edges[] = {
		{"sin 0", Sin(0.0), 0.0},
		{"sin -0", Sin(-0.0), -0.0},
		{"sin of pi", Sin(std::numbers::pi), 1.2246467991473532e-16},
		{"cos of half pi", Cos(std::numbers::pi / 2.0), 6.123233995736766e-17},
		{"cos 0", Cos(0.0), 1.0},
		{"sin of infinity", Sin(kInfinity), kNaN},
		{"cos of no number", Cos(kNaN), kNaN},
		{"exp 0", Exp(0.0), 1.0},
		{"exp of much", Exp(710.0), kInfinity},
		{"exp of the least", Exp(-745.0), 5e-324},
		{"exp of less", Exp(-746.0), 0.0},
		{"exp of -infinity", Exp(-kInfinity), 0.0},
		{"exp of no number", Exp(kNaN), kNaN},
		{"exp2 10", Exp2(10.0), 1024.0},
		{"exp2 of the least", Exp2(-1074.0), 5e-324},
		{"exp10 3", Exp10(3.0), 1000.0},
		{"exp10 -1", Exp10(-1.0), 0.1},
		{"exp10 of much", Exp10(309.0), kInfinity},
		{"pow of 0", Pow(0.0, 2.0), 0.0},
		{"pow of 0 downwards", Pow(0.0, -2.0), kInfinity},
		{"pow to 0", Pow(kNaN, 0.0), 1.0},
		{"pow of infinity", Pow(kInfinity, -1.0), 0.0},
		{"pow of less than 0", Pow(-1.0, 2.0), kNaN},
		{"square", Pow(3.0, 2.0), 9.0},
		{"log 1", Log(1.0), 0.0},
		{"log 0", Log(0.0), -kInfinity},
		{"log of -1", Log(-1.0), kNaN},
		{"log of infinity", Log(kInfinity), kInfinity},
		{"log of the least", Log(5e-324), -744.4400719213812},
		{"log10 1000", Log10(1000.0), 3.0},
	};
	for (Edge const& edge : edges)
	{
		if (std::isnan(edge.mExpected))
		{
			EXPECT_TRUE(std::isnan(edge.mResult)) << edge.mName;
		}
		else
		{
			EXPECT_EQ(
				std::bit_cast<std::uint64_t>(edge.mResult), std::bit_cast<std::uint64_t>(edge.mExpected))
				<< edge.mName << ": " << edge.mResult;
		}
	}
}

} // namespace ElementaryTest
