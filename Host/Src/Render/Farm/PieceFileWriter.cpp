#include "PieceFileWriter.h"

#include "FactsText.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/Digest.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

namespace SonaroHost::Farm
{

static_assert(std::endian::native == std::endian::little, "the files of pieces are those of such machines");

namespace
{

constexpr std::uint32_t kLong = 0xffffffff;
constexpr std::uint16_t kFloats = 3;

class Bytes
{
public:
	template <class T>
	Bytes& Add(T inValue)
	{
		char bytes[sizeof(T)];
		std::memcpy(bytes, &inValue, sizeof(T));
		mText.append(bytes, sizeof(T));
		return *this;
	}
	Bytes& Name(char const* inName)
	{
		mText.append(inName, 4);
		return *this;
	}
	std::string const& Get() const { return mText; }

private:
	std::string mText;
};

// Up to the first sample. The sizes of what is long stand in "ds64".
std::string MakeHeader(
	PieceFacts const& inFacts, std::int64_t inFrames, std::int64_t inHeard, std::int64_t inEnd)
{
	std::uint32_t const frameBytes = inFacts.mChannels * static_cast<std::uint32_t>(sizeof(float));
	auto const rate = static_cast<std::uint32_t>(inFacts.mSampleRate);
	Bytes bytes;
	bytes.Name("RF64").Add(kLong).Name("WAVE");
	bytes.Name("ds64").Add<std::uint32_t>(40).Add(inEnd - 8).Add(inFrames * frameBytes).Add(inFrames);
	bytes.Add<std::uint32_t>(1).Name(kHeardChunk).Add(inHeard);
	bytes.Name("fmt ").Add<std::uint32_t>(16).Add(kFloats).Add(static_cast<std::uint16_t>(inFacts.mChannels));
	bytes.Add(rate).Add(rate * frameBytes).Add(static_cast<std::uint16_t>(frameBytes));
	bytes.Add<std::uint16_t>(8 * sizeof(float));
	bytes.Name("data").Add(kLong);
	return bytes.Get();
}

std::string GetDigest(void const* inBytes, std::size_t inCount)
{
	Digest digest;
	digest.Add(inBytes, inCount);
	return digest.GetText();
}

std::filesystem::path GetHeardPath(std::filesystem::path const& inPath)
{
	return inPath.parent_path() / ("." + inPath.filename().string() + ".tracks");
}

} // namespace

// Appends what a tap hears to the records of the segment.
class PieceFileWriter::HeardWriter final : public SN::Implements<HeardWriter, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<HeardWriter> kIdentifier{0x81f4d60c2b9a37e5ull, 0x5a0e93c7d1b8f264ull};

	HeardWriter(std::uint32_t inTap, std::vector<char>& ioRecords)
		: mTap(inTap),
		  mRecords(ioRecords)
	{
	}

	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime) override
	{
		HeardRecord record{inTime.GetTicks(), 0, mTap, static_cast<std::uint32_t>(inBuffer.GetNumChannels()),
			inBuffer.GetUseSize(), 0};
		for (unsigned channel = 0; channel < record.mChannels; ++channel)
		{
			record.mSilent |= inBuffer.IsChannelSilent(channel) ? std::uint64_t{1} << channel : 0;
		}
		Append(&record, sizeof(record));
		for (unsigned channel = 0; channel < record.mChannels; ++channel)
		{
			if (!inBuffer.IsChannelSilent(channel))
			{
				Append(inBuffer.GetChannel(channel), record.mFrames * sizeof(float));
			}
		}
	}
	void Shutdown() override {}
	void Reset() override {}

private:
	void Append(void const* inBytes, std::size_t inCount)
	{
		auto const* const bytes = static_cast<char const*>(inBytes);
		mRecords.insert(mRecords.end(), bytes, bytes + inCount);
	}

	std::uint32_t mTap;
	std::vector<char>& mRecords;
};

PieceFileWriter::PieceFileWriter(std::filesystem::path const& inPath, PieceFacts inFacts)
	: mFile(inPath),
	  mFacts(std::move(inFacts))
{
	if (!mFacts.mTaps.empty())
	{
		mHeard = std::make_unique<OutputFile>(GetHeardPath(mFile.GetPath()));
	}
	std::vector<SN::InterfaceRef<SN::IAudioMeterSetter>> writers;
	writers.reserve(mFacts.mTaps.size());
	for (std::uint32_t tap = 0; tap < mFacts.mTaps.size(); ++tap)
	{
		writers.push_back(zorvcore::classref::MakeObject<HeardWriter>(tap, mRecords));
	}
	mReplay = std::make_unique<TapReplay>(std::move(writers));
	WriteHeader();
	mFacts.mSamplesStart = mFile.Tell();
}

PieceFileWriter::~PieceFileWriter() = default;

void PieceFileWriter::WriteHeader()
{
	std::string const header = MakeHeader(mFacts, mFrames, mHeardBytes, mFile.GetLength());
	mFile.Write(header.data(), static_cast<std::int64_t>(header.size()));
}

void PieceFileWriter::Take(Piece& ioPiece)
{
	mSamples.clear();
	mRecords.clear();
	ioPiece.TakeBlocks([this](dsp::AudioBuffer const& inBlock) { WriteBlock(inBlock); });
	if (ioPiece.mFailure)
	{
		std::rethrow_exception(ioPiece.mFailure);
	}
	mReplay->Replay(ioPiece);
	std::size_t const bytes = mSamples.size() * sizeof(float);
	mFile.Write(mSamples.data(), static_cast<std::int64_t>(bytes));
	mFile.CheckWritten();
	auto const frames = static_cast<std::int64_t>(mSamples.size() / mFacts.mChannels);
	auto const heard = static_cast<std::int64_t>(mRecords.size());
	mFacts.mSegments.push_back(
		{frames, GetDigest(mSamples.data(), bytes), heard, GetDigest(mRecords.data(), mRecords.size())});
	mFrames += frames;
	mHeardBytes += heard;
	if (mHeard)
	{
		mHeard->Write(mRecords.data(), heard);
		mHeard->CheckWritten();
	}
}

void PieceFileWriter::WriteBlock(dsp::AudioBuffer const& inBlock)
{
	std::size_t const channels = mFacts.mChannels;
	std::size_t const first = mSamples.size();
	mSamples.resize(first + channels * inBlock.GetUseSize());
	for (std::size_t channel = 0; channel < channels; ++channel)
	{
		float* target = mSamples.data() + first + channel;
		float const* const samples = inBlock.GetChannel(channel);
		for (unsigned i = 0; i < inBlock.GetUseSize() && !inBlock.IsChannelSilent(channel); ++i)
		{
			target[i * channels] = samples[i];
		}
	}
}

void PieceFileWriter::WriteHeard()
{
	std::string const head = Bytes().Name(kHeardChunk).Add(kLong).Get();
	mFile.Write(head.data(), static_cast<std::int64_t>(head.size()));
	mFacts.mHeardStart = mFile.Tell();
	if (!mHeard)
	{
		return;
	}
	constexpr std::int64_t kStep = std::int64_t{1} << 20;
	std::vector<char> bytes(kStep);
	mHeard->Seek(0, SEEK_SET);
	for (std::int64_t left = mHeardBytes; left > 0;)
	{
		std::int64_t const count = mHeard->Read(bytes.data(), std::min(left, kStep));
		if (count <= 0)
		{
			RefuseFile(mHeard->GetPath(), "cannot be read again", "render the piece again");
		}
		mFile.Write(bytes.data(), count);
		left -= count;
	}
}

void PieceFileWriter::Commit(
	std::vector<DamagedMedia> inDamaged, std::vector<LearnedNoise> inLearnedNoise, bool inReplaces)
{
	mFacts.mDamaged = std::move(inDamaged);
	mFacts.mLearnedNoise = std::move(inLearnedNoise);
	WriteHeard();
	std::string const facts = ToText(mFacts);
	std::string const head = Bytes().Name(kFactsChunk).Add(static_cast<std::uint32_t>(facts.size())).Get();
	mFile.Write(head.data(), static_cast<std::int64_t>(head.size()));
	mFile.Write(facts.data(), static_cast<std::int64_t>(facts.size()));
	mFile.Seek(0, SEEK_SET);
	WriteHeader();
	mFile.Commit(inReplaces);
}

} // namespace SonaroHost::Farm
