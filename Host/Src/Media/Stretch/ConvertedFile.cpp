#include "ConvertedFile.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SonaroHost
{

namespace
{

// What is decoded at a time.
constexpr std::int64_t kDecodedFrames = 2048;

} // namespace

ConvertedFile::ConvertedFile(
	std::unique_ptr<SoundDecoder> inDecoder, std::int64_t inFrames, Ratio const& inStart, Ratio const& inStep)
	: mDecoder(std::move(inDecoder)),
	  mFrames(inFrames),
	  mChannels(mDecoder->GetNumChannels()),
	  mDecoded(static_cast<std::size_t>(kDecodedFrames) * mDecoder->GetNumChannels()),
	  mPlaces(mDecoder->GetNumChannels())
{
	std::int64_t const first = inStart.Floor();
	if (inStep != Ratio(1) || inStart != Ratio(first))
	{
		mConverter.emplace(inStep, RateConverter::Position{first, inStart - Ratio(first)});
	}
	else
	{
		mNextOutput = first;
	}
	mStart = mConverter ? mConverter->GetInput(0, 1).mFirst : first;
	// Nothing is heard before the start.
	for (std::vector<float>& channel : mChannels)
	{
		channel.resize(static_cast<std::size_t>(first - mStart));
	}
	Skip(first);
}

void ConvertedFile::Skip(std::int64_t inFrames)
{
	if (mDecoder->IsSeekExact() && inFrames > mDecoder->GetPrerollFrames())
	{
		mDecoder->SeekTo(inFrames - mDecoder->GetPrerollFrames());
	}
	while (mDecoder->GetPosition() < std::min(inFrames, mFrames))
	{
		Decode(inFrames - mDecoder->GetPosition());
	}
}

std::int64_t ConvertedFile::Decode(std::int64_t inFrames)
{
	std::int64_t const position = mDecoder->GetPosition();
	std::int64_t const wanted =
		std::clamp<std::int64_t>(mFrames - position, 0, std::min(inFrames, kDecodedFrames));
	std::int64_t const count = wanted > 0 ? mDecoder->Read(mDecoded.data(), wanted) : 0;
	if (count < wanted)
	{
		mFrames = position + count;
	}
	return count;
}

void ConvertedFile::Read(dsp::AudioBuffer& outBuffer)
{
	unsigned const count = outBuffer.GetUseSize();
	if (count == 0)
	{
		return;
	}
	RateConverter::Span const span = mConverter ? mConverter->GetInput(mNextOutput, count)
												: RateConverter::Span{mNextOutput, mNextOutput + count};
	MoveTo(span);
	for (std::size_t channel = 0; channel < mChannels.size(); ++channel)
	{
		mPlaces[channel] = {mChannels[channel].data(), outBuffer.GetChannel(channel)};
	}
	if (mConverter)
	{
		mConverter->Convert(mNextOutput, count, mPlaces);
	}
	else
	{
		for (RateConverter::Channel const& place : mPlaces)
		{
			std::copy_n(place.mInput, count, place.mOutput);
		}
	}
	mNextOutput += count;
	outBuffer.NoteBufferWrite(0, count);
}

void ConvertedFile::MoveTo(RateConverter::Span const& inSpan)
{
	auto const held = static_cast<std::int64_t>(mChannels.front().size());
	std::int64_t const passed = std::clamp<std::int64_t>(inSpan.mFirst - mStart, 0, held);
	for (std::vector<float>& channel : mChannels)
	{
		channel.erase(channel.begin(), channel.begin() + passed);
	}
	mStart += passed;
	for (std::int64_t lacking = inSpan.mEnd - mStart - held + passed; lacking > 0; lacking -= kDecodedFrames)
	{
		Append(static_cast<std::size_t>(std::min(lacking, kDecodedFrames)));
	}
}

void ConvertedFile::Append(std::size_t inFrames)
{
	auto const read = static_cast<std::size_t>(Decode(static_cast<std::int64_t>(inFrames)));
	for (std::size_t channel = 0; channel < mChannels.size(); ++channel)
	{
		std::vector<float>& samples = mChannels[channel];
		std::size_t const held = samples.size();
		samples.resize(held + inFrames);
		for (std::size_t i = 0; i < read; ++i)
		{
			float const sample = mDecoded[i * mChannels.size() + channel];
			samples[held + i] = std::isfinite(sample) ? sample : 0.0f;
		}
	}
}

} // namespace SonaroHost
