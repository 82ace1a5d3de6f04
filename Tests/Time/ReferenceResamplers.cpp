#include "ReferenceResamplers.h"

#include <algorithm>
#include <cmath>

namespace SN::Testing
{

namespace
{

float At(Signal const& inSamples, double inIndex)
{
	return inIndex >= 0.0 && inIndex < static_cast<double>(inSamples.size())
			   ? inSamples[static_cast<std::size_t>(inIndex)]
			   : 0.0f;
}

double Bessel(float inY)
{
	float t = 1.0f;
	float sum = 1.0f;
	for (int m = 1; m <= 25; ++m)
	{
		t = t * (inY / 2) / static_cast<float>(m);
		sum = sum + t * t;
		if (t * t < sum * 1e-8)
		{
			break;
		}
	}
	return sum;
}

class ReferenceLinear final : public ReferenceResampler
{
public:
	explicit ReferenceLinear(double inRatio)
		: mIncrement(static_cast<float>(inRatio))
	{
	}
	unsigned CountInput(unsigned inNumOutput) override
	{
		double const last = inNumOutput == 0 ? 4294967295.0 : inNumOutput - 1.0;
		return static_cast<unsigned>(
			std::min(std::floor(last * static_cast<double>(mIncrement) + mPhase + 2.0), 4294967295.0));
	}
	Signal Process(Signal const& inInput, unsigned inNumInput, unsigned inNumOutput) override
	{
		Signal output;
		for (unsigned i = 0; i < inNumOutput; ++i, mPhase += static_cast<double>(mIncrement))
		{
			double const index = std::floor(mPhase);
			float const a = index >= 0.0 ? At(inInput, index) : index == -1.0 ? mRow0 : mRow1;
			float const b = index >= -1.0 ? At(inInput, index + 1.0) : mRow0;
			float const difference = b - a;
			output.push_back(static_cast<float>(
				static_cast<double>(difference) * (mPhase - index) + static_cast<double>(a)));
		}
		mPhase -= inNumInput;
		if (mPhase < 0.0 && inNumInput > 0)
		{
			mRow1 = inNumInput == 1 ? mRow0 : At(inInput, inNumInput - 2.0);
			mRow0 = At(inInput, inNumInput - 1.0);
		}
		return output;
	}

private:
	float mIncrement;
	double mPhase = 0.0;
	float mRow0 = 0.0f;
	float mRow1 = 0.0f;
};

class ReferenceCubic final : public ReferenceResampler
{
public:
	explicit ReferenceCubic(double inRatio)
		: mIncrement(static_cast<float>(inRatio))
	{
	}
	unsigned CountInput(unsigned inNumOutput) override
	{
		return static_cast<unsigned>(
			std::max(std::floor((inNumOutput - 1.0) * static_cast<double>(mIncrement) + mPhase + 3.0), 0.0));
	}
	Signal Process(Signal const& inInput, unsigned inNumInput, unsigned inNumOutput) override
	{
		Signal output;
		for (unsigned i = 0; i < inNumOutput; ++i, mPhase += static_cast<double>(mIncrement))
		{
			double const index = std::floor(mPhase);
			float const x = static_cast<float>(static_cast<int>((mPhase - index) * 1024.0) & 0x3FF) / 1024.0f;
			float const x2 = x * x;
			float const x4 = x2 * x2;
			// Below the start of the block except for -3 to 0 the curve is read as at 0.
			double const first = index >= 1.0 || (index >= -3.0 && index <= -1.0) ? index - 1.0 : -1.0;
			float s[4];
			for (int k = 0; k < 4; ++k)
			{
				double const place = first + k;
				s[k] = place >= 0.0 ? At(inInput, place) : mOld[static_cast<std::size_t>(-1.0 - place)];
			}
			float const c[4] = {x2 - 0.5f * x4 - 0.5f * x, 1.0f - 2.5f * x2 + 1.5f * x4,
				2.0f * x2 + 0.5f * x - 1.5f * x4, 0.5f * x4 - 0.5f * x2};
			output.push_back(s[0] * c[0] + s[1] * c[1] + s[2] * c[2] + s[3] * c[3]);
		}
		mPhase -= inNumInput;
		if (mPhase < 1.0)
		{
			float const old0 = mOld[0];
			float const old1 = inNumInput == 1 ? old0 : mOld[1];
			std::size_t const fresh = std::min(inNumInput, 4u);
			for (std::size_t row = 0; row < 4 && fresh > 0; ++row)
			{
				mOld[row] = row < fresh    ? At(inInput, inNumInput - 1.0 - static_cast<double>(row))
							: row == fresh ? old0
										   : old1;
			}
		}
		return output;
	}

private:
	float mIncrement;
	double mPhase = 0.0;
	float mOld[4] = {};
};

// With one long table, and a ring that is looked up tap by tap.
class ReferenceSinc final : public ReferenceResampler
{
public:
	ReferenceSinc(double inRatio, bool inHighQuality);
	unsigned CountInput(unsigned inNumOutput) override;
	Signal Process(Signal const& inInput, unsigned inNumInput, unsigned inNumOutput) override;

private:
	void Prime(Signal const& inInput, unsigned inNumInput);
	float MakeSample() const;
	void Advance(Signal const& inInput);
	void Step(Signal const& inInput);
	float Table(long inElement) const { return mTable[static_cast<std::size_t>(mHalf + inElement)]; }

	double mRatio;
	long mSteps;
	float mIncrement;
	long mWhole;
	long mLength;
	long mHalf;
	long mHalfTaps;
	long mRingSize = 1;
	Signal mTable;
	Signal mRing;
	Signal mSurplus;
	float mPhase = 0.0f;
	long mIntPhase = 0;
	long mCentre = 0;
	long mWrite = 0;
	long mThreshold = 0;
	long mConsumed = 0;
	long mAvailable = 0;
	std::size_t mCursor = 0;
	bool mIsPriming = true;
	bool mIsFirst = true;
};

} // namespace

ReferenceSinc::ReferenceSinc(double inRatio, bool inHighQuality)
	: mRatio(inRatio),
	  mSteps(inHighQuality ? 2400 : 120),
	  mIncrement(static_cast<float>(static_cast<double>(mSteps) * inRatio)),
	  mWhole(static_cast<long>(mIncrement))
{
	long const divisor = std::max(mWhole, mSteps);
	mLength = static_cast<long>(static_cast<float>(divisor) * (inHighQuality ? 10.0f : 1.0f) * 10.0f + 1.0f);
	mHalf = (mLength - 1) / 2;
	mHalfTaps = (mLength / 2 - mSteps) / mSteps;
	while (mRingSize * 2 <= mHalfTaps * 16)
	{
		mRingSize *= 2;
	}
	mRingSize *= 4;
	mTable.resize(static_cast<std::size_t>(mLength) + 1);
	mRing.resize(static_cast<std::size_t>(mRingSize));
	auto const element = [&](long i) -> float& { return mTable[static_cast<std::size_t>(mHalf + i)]; };
	for (long i = 0; i < mHalf; ++i)
	{
		float const n = static_cast<float>(mLength - 1);
		float const index = static_cast<float>(i);
		double const root = std::sqrt(static_cast<double>(1.0f - 4.0f * index * index / (n * n)));
		element(i) =
			static_cast<float>(Bessel(static_cast<float>(6.8f * root))) / static_cast<float>(Bessel(6.8f));
	}
	double const pi = 3.14159265358979323846f;
	double const d = static_cast<double>(divisor);
	for (long i = 1; i <= mHalf; ++i)
	{
		double const place = static_cast<double>(i);
		element(i) = static_cast<float>(element(i) * (std::sin(pi * place / d) * d / (place * pi)));
		element(-i) = element(i);
	}
	float sum = element(0);
	for (long j = mSteps - 1; j <= mHalf; j += mSteps)
	{
		sum += element(-j) + element(j);
	}
	for (float& value : mTable)
	{
		value *= static_cast<float>(1.0 / static_cast<double>(sum));
	}
	element(mHalf + 1) = 0.0f;
}

unsigned ReferenceSinc::CountInput(unsigned inNumOutput)
{
	long const block = mRingSize / 2;
	long const needed = (static_cast<long>(inNumOutput * mRatio) + block - 1) / block * block;
	if (mIsFirst)
	{
		mIsFirst = false;
		return static_cast<unsigned>((mRingSize - 1 + needed + block) / block * block);
	}
	return mSurplus.size() < inNumOutput ? static_cast<unsigned>(needed) : 0;
}

Signal ReferenceSinc::Process(Signal const& inInput, unsigned inNumInput, unsigned inNumOutput)
{
	mCursor = 0;
	if (mIsPriming)
	{
		Prime(inInput, inNumInput);
	}
	else if (mSurplus.size() > inNumOutput)
	{
		auto const taken = mSurplus.begin() + static_cast<std::ptrdiff_t>(inNumOutput);
		Signal const output(mSurplus.begin(), taken);
		mSurplus.erase(mSurplus.begin(), taken);
		return output;
	}
	else
	{
		mAvailable += inNumInput;
	}
	while (mConsumed < mAvailable)
	{
		mSurplus.push_back(MakeSample());
		Advance(inInput);
	}
	Signal output(mSurplus);
	output.resize(inNumOutput);
	mSurplus.erase(mSurplus.begin(),
		mSurplus.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(inNumOutput, mSurplus.size())));
	return output;
}

void ReferenceSinc::Prime(Signal const& inInput, unsigned inNumInput)
{
	mAvailable = static_cast<long>(inNumInput) - mRingSize / 2;
	for (float& position : mRing)
	{
		position =
			mCursor < static_cast<unsigned>(mAvailable) ? At(inInput, static_cast<double>(mCursor++)) : 0.0f;
	}
	mThreshold = mRingSize;
	mIsPriming = false;
}

float ReferenceSinc::MakeSample() const
{
	double sum = 0.0;
	bool const isWhole = mIncrement == static_cast<float>(mWhole);
	long const whole = isWhole ? mIntPhase : static_cast<long>(mPhase);
	float const fraction = mPhase - static_cast<float>(whole);
	for (long k = 1; k <= 2 * mHalfTaps + 2; ++k)
	{
		long const place = (mCentre - mHalfTaps + k + mRingSize) % mRingSize;
		float const sample = mRing[static_cast<std::size_t>(place)];
		long const element = -(mHalfTaps + 1) * mSteps - whole + k * mSteps;
		if (isWhole)
		{
			float const product = Table(element) * sample;
			sum += static_cast<double>(product);
			continue;
		}
		float const upper = fraction * Table(element + 1);
		double const coefficient = static_cast<double>(upper) + static_cast<double>(Table(element)) *
																	(1.0 - static_cast<double>(fraction));
		sum += coefficient * static_cast<double>(sample);
	}
	return static_cast<float>(sum);
}

void ReferenceSinc::Advance(Signal const& inInput)
{
	if (mIncrement == static_cast<float>(mWhole))
	{
		for (mIntPhase += mWhole; mIntPhase >= mSteps; mIntPhase -= mSteps)
		{
			Step(inInput);
		}
		return;
	}
	for (mPhase += mIncrement; mPhase >= static_cast<float>(mSteps); mPhase -= static_cast<float>(mSteps))
	{
		Step(inInput);
	}
}

void ReferenceSinc::Step(Signal const& inInput)
{
	++mCentre;
	++mConsumed;
	if (mCentre + 1 + mHalfTaps >= mThreshold)
	{
		mThreshold += mRingSize / 2;
		mWrite = mWrite == mRingSize ? 0 : mWrite;
		for (long i = 0; i < mRingSize / 2; ++i)
		{
			mRing[static_cast<std::size_t>(mWrite++)] = At(inInput, static_cast<double>(mCursor++));
		}
	}
	if (mCentre == mRingSize)
	{
		mCentre = 0;
		mThreshold = mRingSize / 2;
	}
}

std::unique_ptr<ReferenceResampler> MakeReference(ResamplerKind inKind, double inRatio)
{
	switch (inKind)
	{
	case ResamplerKind::kLinear:
		return std::make_unique<ReferenceLinear>(inRatio);
	case ResamplerKind::kCubic:
		return std::make_unique<ReferenceCubic>(inRatio);
	default:
		return std::make_unique<ReferenceSinc>(inRatio, inKind == ResamplerKind::kSincHighQuality);
	}
}

} // namespace SN::Testing
