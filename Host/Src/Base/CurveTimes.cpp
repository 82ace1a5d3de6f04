#include "SonaroHost/Base/CurveTimes.h"

#include "CurveIntegral.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

namespace SonaroHost
{

namespace
{

using Key = SpeedKey;

std::vector<Ratio> ListBorders(SpeedCurve const& inCurve, Ratio const& inFrom, Ratio const& inTo)
{
	std::vector<Ratio> borders = inCurve.FindTurns();
	std::ranges::transform(inCurve.GetKeys(), std::back_inserter(borders), &Key::mTime);
	std::erase_if(borders, [&](Ratio const& inTime) { return inTime <= inFrom || inTime >= inTo; });
	borders.push_back(inFrom);
	borders.push_back(inTo);
	std::ranges::sort(borders);
	borders.erase(std::unique(borders.begin(), borders.end()), borders.end());
	return borders;
}

} // namespace

CurveTimes::CurveTimes(SpeedCurve const& inCurve, Ratio const& inFrom, Ratio const& inTo)
{
	std::vector<Key> const& keys = inCurve.GetKeys();
	CurveIntegral const& integral = inCurve.GetIntegral();
	std::vector<Ratio> const borders = ListBorders(inCurve, inFrom, inTo);
	for (std::size_t i = 1; i < borders.size(); ++i)
	{
		auto const next = std::ranges::upper_bound(keys, borders[i - 1], {}, &Key::mTime);
		std::size_t const index =
			next == keys.begin() ? 0 : static_cast<std::size_t>(next - keys.begin()) - 1;
		Key const& key = keys[index];
		bool const isBetween = next != keys.begin() && next != keys.end();
		Piece piece{borders[i - 1].ToDouble(), borders[i].ToDouble(), 0.0, 0.0, key.mTime.ToDouble(),
			integral.FindAtKey(index).convert_to<double>(), key.mSpeed.ToDouble(), 0.0, 1.0,
			Interpolation::kHold};
		if (isBetween)
		{
			piece.mRise = (next->mSpeed - key.mSpeed).ToDouble();
			piece.mLength = (next->mTime - key.mTime).ToDouble();
			piece.mInterpolation = key.mInterpolation;
		}
		piece.mFrom = mPieces.empty() ? GetPosition(piece, piece.mStart) : mPieces.back().mTo;
		piece.mTo = GetPosition(piece, piece.mEnd);
		mPieces.push_back(piece);
	}
}

double CurveTimes::GetPosition(Piece const& inPiece, double inTime)
{
	double const passed = inTime - inPiece.mKeyTime;
	double const place = passed / inPiece.mLength;
	double const risen = inPiece.mInterpolation == Interpolation::kLinear ? place / 2.0
						 : inPiece.mInterpolation == Interpolation::kSmooth
							 ? place * place * (1.0 - place / 2.0)
							 : 0.0;
	return inPiece.mKeyPosition + passed * (inPiece.mSpeed + inPiece.mRise * risen);
}

double CurveTimes::FindTime(Piece const& inPiece, double inPosition)
{
	double const sign = inPiece.mTo < inPiece.mFrom ? -1.0 : 1.0;
	double low = inPiece.mStart;
	double high = inPiece.mEnd;
	// Halved until no number lies between.
	for (double middle = (low + high) / 2.0; low < middle && middle < high; middle = (low + high) / 2.0)
	{
		(sign * (GetPosition(inPiece, middle) - inPosition) < 0.0 ? low : high) = middle;
	}
	return high;
}

std::optional<double> CurveTimes::FindIn(Piece const& inPiece, double inPosition)
{
	if (inPosition == inPiece.mFrom)
	{
		return inPiece.mStart;
	}
	bool const isWithin = (inPosition - inPiece.mFrom) * (inPosition - inPiece.mTo) <= 0.0;
	return isWithin ? std::optional(FindTime(inPiece, inPosition)) : std::nullopt;
}

std::optional<double> CurveTimes::FindFirst(double inPosition) const
{
	for (Piece const& piece : mPieces)
	{
		if (auto const time = FindIn(piece, inPosition))
		{
			return time;
		}
	}
	return std::nullopt;
}

std::optional<double> CurveTimes::FindLast(double inPosition) const
{
	for (auto piece = mPieces.rbegin(); piece != mPieces.rend(); ++piece)
	{
		if (auto const time = FindIn(*piece, inPosition))
		{
			return time;
		}
	}
	return std::nullopt;
}

double CurveTimes::GetTotalWay() const
{
	return std::accumulate(mPieces.begin(), mPieces.end(), 0.0,
		[](double inSum, Piece const& inPiece) { return inSum + std::abs(inPiece.mTo - inPiece.mFrom); });
}

std::vector<CurveTimes::Passage> CurveTimes::ListPassages(double inFirst, double inStep) const
{
	std::vector<Passage> passages;
	for (Piece const& piece : mPieces)
	{
		double const from = (piece.mFrom - inFirst) / inStep;
		double const to = (piece.mTo - inFirst) / inStep;
		if (std::ceil(std::min(from, to)) > std::max(from, to))
		{
			continue;
		}
		double const direction = to < from ? -1.0 : 1.0;
		double const count = std::floor(std::max(from, to)) - std::ceil(std::min(from, to)) + 1.0;
		double const first = to < from ? std::floor(from) : std::ceil(from);
		for (double i = 0.0; i < count; i += 1.0)
		{
			double const position = inFirst + (first + direction * i) * inStep;
			bool const isAtStart = position == piece.mFrom;
			// The piece before ended there.
			if (!isAtStart || passages.empty() || passages.back().mPosition != position)
			{
				passages.push_back({isAtStart ? piece.mStart : FindTime(piece, position), position});
			}
		}
	}
	return passages;
}

} // namespace SonaroHost
