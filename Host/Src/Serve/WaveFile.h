#pragma once

#include "FileFrame.h"
#include "GraphPool.h"
#include "SonaroHost/Serve/MixFile.h"

#include <memory>
#include <string>

namespace SonaroHost::Serve
{

// The WAV of a choice of tracks.
class WaveFile final : public MixFile
{
public:
	WaveFile(std::shared_ptr<GraphPool> inPool, LeftOut inLeftOut, EncoderFormat const& inFormat,
		std::string inTag, std::string inWhyInOneRun);

	std::int64_t GetLength() const override { return mFrame.GetLength(); }
	std::string const& GetTag() const override { return mTag; }
	std::string const& GetWhyInOneRun() const override { return mWhyInOneRun; }
	double GetWarmUpSeconds() const override;
	void CheckRange(std::int64_t inOffset, std::int64_t inEnd) const override;
	std::string Read(std::int64_t inOffset, std::int64_t inMost, Clock::time_point inDeadline) const override;

private:
	// Bytes of the samples alone, counted from the first.
	std::string ReadSamples(std::int64_t inFirst, std::int64_t inMost, Clock::time_point inDeadline) const;

	std::shared_ptr<GraphPool> mPool;
	LeftOut mLeftOut;
	EncoderFormat mFormat;
	FileFrame mFrame;
	std::string mTag;
	std::string mWhyInOneRun;
};

} // namespace SonaroHost::Serve
