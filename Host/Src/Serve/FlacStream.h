#pragma once

#include "GraphPool.h"
#include "Render/Encoder/AudioEncoder.h"
#include "SonaroHost/Serve/MixFile.h"

#include <memory>
#include <string>

namespace SonaroHost::Serve
{

// A range of a choice of tracks as FLAC. The header states the length, and no digest of the samples, which is known only
// when the header has gone.
class FlacStream final : public MixStream
{
public:
	// inFormat: that of the file, with as many frames as the range.
	FlacStream(std::shared_ptr<GraphPool> inPool, LeftOut inLeftOut, EncoderFormat const& inFormat,
		std::int64_t inFirstFrame);
	~FlacStream() override;

	std::string Read(Clock::time_point inDeadline) override;

private:
	class Target;

	std::shared_ptr<GraphPool> mPool;
	LeftOut mLeftOut;
	std::int64_t mNext;
	std::int64_t mEnd;
	std::unique_ptr<Target> mTarget;
	// Null at the end.
	std::unique_ptr<AudioEncoder> mEncoder;
};

} // namespace SonaroHost::Serve
