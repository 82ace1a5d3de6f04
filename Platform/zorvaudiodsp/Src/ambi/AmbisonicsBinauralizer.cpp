#include "zorvaudiodsp/ambi/AmbisonicsBinauralizer.h"

#include "ambi/EarConvolver.h"
#include "ambi/ResponseFilters.h"
#include "zorvaccelerate/ChannelMixing.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvcore/config/Exceptions.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace dsp::ambi
{

namespace
{

using namespace zorvaccelerate::utility;

constexpr unsigned long long kLowestRate = 1000;
constexpr unsigned long long kHighestRate = 768000;

alignas(64) constexpr float kZeros[EarConvolver::kPartition] = {};

struct CosineSine
{
	double mCosine;
	double mSine;
};

// What is no finite number counts as 0, so that it is not heard for ever after.
CosineSine GetCosineSine(float inAngle, bool inDegrees)
{
	double const finite = std::isfinite(inAngle) ? inAngle : 0.0;
	double const angle = inDegrees ? finite * (std::numbers::pi / 180.0) : finite;
	return {zorvcore::math::Cos(angle), zorvcore::math::Sin(angle)};
}

} // namespace

AmbisonicsBinauralizer::AmbisonicsBinauralizer(unsigned long long inSampleRate, unsigned, unsigned inOrder,
	ChannelOrdering inOrdering, Normalization inNormalization)
	: mSampleRate(inSampleRate)
{
	if (inOrder != 1 || inOrdering != ChannelOrdering::kACN || inNormalization != Normalization::kSN3D)
	{
		zorvcore::config::ThrowError(zorvcore::config::ErrorLevel::kError, __FILE__, __LINE__,
			zorvcore::eInvalidArgument, false,
			"ambisonic sound for two ears is of order 1, in the order ACN and with the scale SN3D");
	}
}

AmbisonicsBinauralizer::~AmbisonicsBinauralizer() = default;

void AmbisonicsBinauralizer::Load(
	ResponseDescriptor const& inDescriptor, float const* inLeft, float const* inRight)
{
	Unload();
	if (mSampleRate < kLowestRate || mSampleRate > kHighestRate)
	{
		return;
	}
	auto const filters =
		MakeResponseFilters(inDescriptor, {inLeft, inRight}, static_cast<unsigned>(mSampleRate));
	if (!filters[0][0].empty())
	{
		mConvolver = std::make_unique<EarConvolver>(filters);
	}
}

// Each transform spans the partition that follows and the one before it.
unsigned AmbisonicsBinauralizer::GetSettlingFrames(
	ResponseDescriptor const& inDescriptor, unsigned inSampleRate)
{
	static_assert(kTransformFrames == EarConvolver::kPartition);
	unsigned const taps = std::max(CountTaps(inDescriptor, inSampleRate), 1u);
	return kTransformFrames * ((taps - 1) / kTransformFrames + 2);
}

void AmbisonicsBinauralizer::Unload()
{
	mConvolver.reset();
	mHasMatrix = false;
}

void AmbisonicsBinauralizer::Reset(unsigned long long inSampleRate, unsigned)
{
	mHasMatrix = false;
	if (inSampleRate != mSampleRate)
	{
		Unload();
		mSampleRate = inSampleRate;
	}
	else if (mConvolver)
	{
		mConvolver->Reset();
	}
}

// The columns of Rz(yaw) Ry(-pitch) Rx(roll) are where the head's front, left and top point in the room; the transpose
// takes the room's directions to those of the head, and the components of the first order turn as directions do.
AmbisonicsBinauralizer::Matrix AmbisonicsBinauralizer::GetMatrix(EulerAngle const& inOrientation)
{
	auto const [cosYaw, sinYaw] = GetCosineSine(inOrientation.mYaw, inOrientation.mDegrees);
	auto const [cosPitch, sinPitch] = GetCosineSine(inOrientation.mPitch, inOrientation.mDegrees);
	auto const [cosRoll, sinRoll] = GetCosineSine(inOrientation.mRoll, inOrientation.mDegrees);
	double const front[] = {sinYaw * cosPitch, sinPitch, cosYaw * cosPitch};
	double const left[] = {cosYaw * cosRoll - sinYaw * sinPitch * sinRoll, cosPitch * sinRoll,
		-sinYaw * cosRoll - cosYaw * sinPitch * sinRoll};
	double const up[] = {-cosYaw * sinRoll - sinYaw * sinPitch * cosRoll, cosPitch * cosRoll,
		sinYaw * sinRoll - cosYaw * sinPitch * cosRoll};
	Matrix matrix;
	for (unsigned k = 0; k < 3; ++k)
	{
		matrix.mRows[0][k] = static_cast<float>(left[k]);
		matrix.mRows[1][k] = static_cast<float>(up[k]);
		matrix.mRows[2][k] = static_cast<float>(front[k]);
	}
	return matrix;
}

void AmbisonicsBinauralizer::Process(EulerAngle const& inOrientation, unsigned inFrames,
	unsigned long long inNumInputs, unsigned long long, float const* const* inInputs,
	float* const* outOutputs)
{
	if (!mConvolver)
	{
		Zero(inFrames, outOutputs[0]);
		Zero(inFrames, outOutputs[1]);
		return;
	}
	Matrix const target = GetMatrix(inOrientation);
	mMatrix = mHasMatrix ? mMatrix : target;
	mHasMatrix = true;
	unsigned count = 0;
	for (unsigned done = 0; done < inFrames; done += count)
	{
		count = std::min(inFrames - done, mConvolver->GetRoom());
		float const* components[kNumComponents];
		for (unsigned k = 0; k < kNumComponents; ++k)
		{
			components[k] = k < inNumInputs ? inInputs[k] + done : kZeros;
		}
		Copy(count, components[0], mConvolver->GetInput(0));
		Turn(target, done, count, inFrames, components + 1);
		float* const ears[] = {outOutputs[0] + done, outOutputs[1] + done};
		mConvolver->Process(count, ears);
	}
	mMatrix = inFrames > 0 ? target : mMatrix;
}

void AmbisonicsBinauralizer::Turn(Matrix const& inTarget, unsigned inFirst, unsigned inCount,
	unsigned inFrames, float const* const* inComponents)
{
	for (unsigned row = 0; row < 3; ++row)
	{
		float* const turned = mConvolver->GetInput(row + 1);
		float const* const from = mMatrix.mRows[row];
		float const* const to = inTarget.mRows[row];
		if (mMatrix == inTarget)
		{
			WeightedSum(inCount, 3, inComponents, to, turned);
			continue;
		}
		Zero(inCount, turned);
		for (unsigned k = 0; k < 3; ++k)
		{
			float part[EarConvolver::kPartition];
			MulRamp(inCount, inComponents[k], {from[k], to[k] - from[k], static_cast<float>(inFrames)},
				inFirst + 1, part);
			Add(inCount, turned, part, turned);
		}
	}
}

} // namespace dsp::ambi
