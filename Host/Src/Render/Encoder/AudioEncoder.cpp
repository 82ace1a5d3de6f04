#include "AudioEncoder.h"

#include "SonaroHost/Base/HostError.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <numbers>
#include <string>

namespace SonaroHost
{

namespace
{

// Frames that are interleaved and handed on at a time.
constexpr unsigned kPieceFrames = 4096;

// The length fields of WAV and AIFF have 32 bits; this leaves room for their headers.
constexpr std::int64_t kLargestData = 0xffff0000;

[[noreturn]] void RefuseToWrite(std::filesystem::path const& inPath, std::string const& inReason)
{
	Refuse("cannot write " + QuotePath(inPath) + ": " + inReason);
}

int GetSampleFormat(OutputSamples inSamples)
{
	return inSamples == OutputSamples::kInteger16   ? SF_FORMAT_PCM_16
		   : inSamples == OutputSamples::kInteger24 ? SF_FORMAT_PCM_24
													: SF_FORMAT_FLOAT;
}

bool IsSoundField(zorvmediatypes::AudioChannelLayout const& inLayout)
{
	return inLayout == zorvmediatypes::CreateAmbisonic1ChannelLayout();
}

int GetContainerFormat(OutputContainer inContainer, bool inIsLarge, bool inIsMarked)
{
	if (inContainer == OutputContainer::kWav)
	{
		return inIsLarge ? SF_FORMAT_RF64 : inIsMarked ? SF_FORMAT_WAVEX : SF_FORMAT_WAV;
	}
	return inContainer == OutputContainer::kAiff   ? SF_FORMAT_AIFF
		   : inContainer == OutputContainer::kFlac ? SF_FORMAT_FLAC
												   : SF_FORMAT_CAF;
}

SF_INFO MakeFormat(std::filesystem::path const& inPath, EncoderFormat const& inEncoded)
{
	OutputFormat const& format = inEncoded.mFormat;
	auto const channels = static_cast<std::int64_t>(inEncoded.mLayout.size());
	bool const isLarge = inEncoded.mFrames * channels * GetSampleSize(format.mSamples) > kLargestData;
	if (format.mContainer == OutputContainer::kFlac && format.mSamples == OutputSamples::kFloat32)
	{
		RefuseToWrite(inPath, "FLAC cannot hold floats; choose 16 or 24 bits, or WAV");
	}
	if (format.mContainer == OutputContainer::kFlac && channels > 8)
	{
		RefuseToWrite(
			inPath, "FLAC holds at most 8 channels, not " + std::to_string(channels) + "; choose WAV or CAF");
	}
	if (format.mContainer == OutputContainer::kAiff && isLarge)
	{
		RefuseToWrite(inPath, "AIFF holds at most 4 GB; choose WAV or CAF");
	}
	SF_INFO info{};
	info.samplerate = inEncoded.mSampleRate;
	info.channels = static_cast<int>(channels);
	bool const isMarked =
		inEncoded.mLayout == zorvmediatypes::Create51ChannelLayout() || IsSoundField(inEncoded.mLayout);
	info.format = GetSampleFormat(format.mSamples) | GetContainerFormat(format.mContainer, isLarge, isMarked);
	if (sf_format_check(&info) == SF_FALSE)
	{
		RefuseToWrite(inPath, GetName(format.mContainer) + " cannot hold " + std::to_string(channels) +
								  " channels of " + GetName(format.mSamples) + " at " +
								  std::to_string(inEncoded.mSampleRate) + " Hz; choose another format");
	}
	return info;
}

SF_VIRTUAL_IO GetCallbacks()
{
	SF_VIRTUAL_IO callbacks{};
	callbacks.get_filelen = [](void* inFile) -> sf_count_t
	{ return static_cast<EncoderTarget*>(inFile)->GetLength(); };
	callbacks.seek = [](sf_count_t inOffset, int inOrigin, void* inFile) -> sf_count_t
	{ return static_cast<EncoderTarget*>(inFile)->Seek(inOffset, inOrigin); };
	callbacks.read = [](void* outBytes, sf_count_t inCount, void* inFile) -> sf_count_t
	{ return static_cast<EncoderTarget*>(inFile)->Read(outBytes, inCount); };
	callbacks.write = [](void const* inBytes, sf_count_t inCount, void* inFile) -> sf_count_t
	{ return static_cast<EncoderTarget*>(inFile)->Write(inBytes, inCount); };
	callbacks.tell = [](void* inFile) -> sf_count_t { return static_cast<EncoderTarget*>(inFile)->Tell(); };
	return callbacks;
}

// The extension as EBU Tech 3285 lays it out, version 1, everything empty but the time reference. libsndfile's own
// way to make it would add its name and version.
void AddBroadcastExtension(SNDFILE* ioFile, std::int64_t inTimeReference)
{
	constexpr std::size_t kReferenceOffset = 338;
	constexpr std::size_t kReferenceBytes = 8;
	constexpr std::size_t kVersionOffset = kReferenceOffset + kReferenceBytes;
	std::array<unsigned char, 602> bytes{};
	for (std::size_t i = 0; i < kReferenceBytes; ++i)
	{
		bytes[kReferenceOffset + i] =
			static_cast<unsigned char>(static_cast<std::uint64_t>(inTimeReference) >> (8 * i));
	}
	bytes[kVersionOffset] = 1;
	SF_CHUNK_INFO chunk{};
	std::copy_n("bext", 4, chunk.id);
	chunk.id_size = 4;
	chunk.datalen = static_cast<unsigned>(bytes.size());
	chunk.data = bytes.data();
	sf_set_chunk(ioFile, &chunk);
}

} // namespace

void CheckFormat(std::filesystem::path const& inPath, EncoderFormat const& inFormat)
{
	MakeFormat(inPath, inFormat);
}

FramePlaces FindFramePlaces(EncoderFormat const& inFormat)
{
	if (!IsSoundField(inFormat.mLayout) || inFormat.mFormat.mContainer != OutputContainer::kWav)
	{
		return {};
	}
	return {{0, 3, 1, 2}, {std::numbers::sqrt2_v<float> / 2.0f, 1.0f, 1.0f, 1.0f}};
}

// libsndfile's handle.
struct AudioEncoder::Handle
{
	struct Closer
	{
		void operator()(SNDFILE* inFile) const { sf_close(inFile); }
	};

	std::unique_ptr<SNDFILE, Closer> mFile;
};

AudioEncoder::AudioEncoder(
	EncoderTarget& ioTarget, std::filesystem::path const& inPath, EncoderFormat const& inFormat)
	: mTarget(ioTarget),
	  mPath(inPath),
	  mChannels(static_cast<unsigned>(inFormat.mLayout.size())),
	  mHandle(std::make_unique<Handle>()),
	  mPlaces(FindFramePlaces(inFormat))
{
	SF_INFO info = MakeFormat(inPath, inFormat);
	SF_VIRTUAL_IO callbacks = GetCallbacks();
	SNDFILE* const file = sf_open_virtual(&callbacks, SFM_WRITE, &info, &mTarget);
	mHandle->mFile.reset(file);
	mTarget.CheckWritten();
	if (!file)
	{
		RefuseToWrite(inPath, sf_strerror(nullptr));
	}
	// The chunk of peaks holds the time of writing.
	sf_command(file, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
	if (inFormat.mLayout == zorvmediatypes::Create51ChannelLayout())
	{
		std::array<int, 6> map{SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER,
			SF_CHANNEL_MAP_LFE, SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT};
		sf_command(file, SFC_SET_CHANNEL_MAP_INFO, map.data(), sizeof map);
	}

	if (!mPlaces.mOrder.empty())
	{
		sf_command(file, SFC_WAVEX_SET_AMBISONIC, nullptr, SF_AMBISONIC_B_FORMAT);
	}

	if (inFormat.mTimeReference && inFormat.mFormat.mContainer == OutputContainer::kWav)
	{
		AddBroadcastExtension(file, *inFormat.mTimeReference);
	}

	std::size_t const pieceSamples = std::size_t{kPieceFrames} * mChannels;
	if (int const bits = GetIntegerBits(inFormat.mFormat.mSamples); bits > 0)
	{
		for (unsigned channel = 0; channel < mChannels; ++channel)
		{
			mQuantizers.emplace_back(bits, inFormat.mFormat.mDither, channel).SkipTo(inFormat.mFirstFrame);
		}
		mIntegerShift = 32 - bits;
		mIntegers.resize(pieceSamples);
	}
	else
	{
		mFloats.resize(pieceSamples);
	}
}

AudioEncoder::~AudioEncoder() = default;

void AudioEncoder::WriteHeader()
{
	sf_command(mHandle->mFile.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
	mTarget.CheckWritten();
}

void AudioEncoder::Write(dsp::AudioBuffer const& inBuffer)
{
	for (unsigned first = 0; first < inBuffer.GetUseSize(); first += kPieceFrames)
	{
		WritePiece(inBuffer, first, std::min(kPieceFrames, inBuffer.GetUseSize() - first));
	}
	mTarget.CheckWritten();
}

void AudioEncoder::WritePiece(dsp::AudioBuffer const& inBuffer, unsigned inFirst, unsigned inFrames)
{
	for (unsigned channel = 0; channel < mChannels; ++channel)
	{
		unsigned const source = mPlaces.GetChannel(channel);
		float const gain = mPlaces.GetGain(channel);
		bool const isSilent = inBuffer.IsChannelSilent(source);
		float const* const samples = isSilent ? nullptr : inBuffer.GetChannel(source) + inFirst;
		std::size_t out = channel;
		for (unsigned i = 0; i < inFrames; ++i, out += mChannels)
		{
			float const sample = samples ? samples[i] * gain : 0.0f;
			if (mQuantizers.empty())
			{
				mFloats[out] = sample;
			}
			else
			{
				// libsndfile takes the upper bits of an integer.
				mIntegers[out] = mQuantizers[channel].Quantize(sample) * (1 << mIntegerShift);
			}
		}
	}
	SNDFILE* const file = mHandle->mFile.get();
	sf_count_t const written = mQuantizers.empty() ? sf_writef_float(file, mFloats.data(), inFrames)
												   : sf_writef_int(file, mIntegers.data(), inFrames);
	mTarget.CheckWritten();
	if (written != static_cast<sf_count_t>(inFrames))
	{
		RefuseFailure("cannot write ", sf_strerror(file));
	}
	mFrames += inFrames;
}

void AudioEncoder::WriteBytes(void const* inBytes, std::int64_t inCount)
{
	SNDFILE* const file = mHandle->mFile.get();
	sf_count_t const written = sf_write_raw(file, inBytes, inCount);
	mTarget.CheckWritten();
	if (written != inCount)
	{
		RefuseFailure("cannot write ", sf_strerror(file));
	}
}

void AudioEncoder::Complete()
{
	// Closing writes the header and what the encoder still holds.
	int const result = sf_close(mHandle->mFile.release());
	mTarget.CheckWritten();
	if (result != 0)
	{
		RefuseFailure("cannot finish ", sf_error_number(result));
	}
}

std::int64_t AudioEncoder::GetClippedSamples() const
{
	std::int64_t count = 0;
	for (SampleQuantizer const& quantizer : mQuantizers)
	{
		count += quantizer.GetClippedSamples();
	}
	return count;
}

void AudioEncoder::RefuseFailure(char const* inWhat, char const* inReason) const
{
	RefuseOutput(inWhat + QuotePath(mPath) + ": " + inReason);
}

} // namespace SonaroHost
