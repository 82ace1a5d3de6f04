#include "FixedPolynomial.h"

namespace SonaroHost
{

namespace
{

__extension__ using UnsignedWide = unsigned __int128;

constexpr unsigned kPartBits = 64;
constexpr unsigned kFractionBits = 192;

} // namespace

FixedPolynomial::FixedPolynomial(std::array<Exact, kCoefficients> const& inCoefficients)
{
	for (std::size_t k = 0; k < kCoefficients; ++k)
	{
		mCoefficients[k] = MakeNumber(inCoefficients[k]);
		mDegree = mCoefficients[k] != Number{} ? k : mDegree;
	}
}

FixedPolynomial::Number FixedPolynomial::MakeNumber(Exact const& inNumber)
{
	using boost::multiprecision::cpp_int;
	cpp_int const numerator = boost::multiprecision::numerator(inNumber) << kFractionBits;
	cpp_int bits = numerator / boost::multiprecision::denominator(inNumber);
	cpp_int const modulus = cpp_int(1) << (4 * kPartBits);
	bits = bits < 0 ? cpp_int(bits + modulus) : bits;
	Number number{};
	for (std::uint64_t& part : number)
	{
		part = static_cast<std::uint64_t>(cpp_int(bits & cpp_int(UINT64_MAX)));
		bits >>= kPartBits;
	}
	return number;
}

// A * x + B, of which what is beyond 256 bits is lost.
FixedPolynomial::Number FixedPolynomial::MultiplyAdd(Number const& inA, std::int64_t inX, Number const& inB)
{
	auto const x = static_cast<std::uint64_t>(inX);
	Number sum{};
	UnsignedWide carry = 0;
	for (std::size_t part = 0; part < sum.size(); ++part)
	{
		carry += UnsignedWide{inA[part]} * x + inB[part];
		sum[part] = static_cast<std::uint64_t>(carry);
		carry >>= kPartBits;
	}
	if (inX >= 0)
	{
		return sum;
	}
	// Taken as a number without a sign, x is too large by 2^64.
	UnsignedWide borrow = 0;
	for (std::size_t part = 1; part < sum.size(); ++part)
	{
		UnsignedWide const difference = UnsignedWide{sum[part]} - inA[part - 1] - borrow;
		sum[part] = static_cast<std::uint64_t>(difference);
		borrow = (difference >> kPartBits) != 0 ? 1 : 0;
	}
	return sum;
}

FixedPolynomial::Value FixedPolynomial::operator()(std::int64_t inX) const
{
	Number sum = mCoefficients[mDegree];
	for (std::size_t k = mDegree; k > 0; --k)
	{
		sum = MultiplyAdd(sum, inX, mCoefficients[k - 1]);
	}
	return {static_cast<std::int64_t>(sum[3]), sum[2]};
}

} // namespace SonaroHost
