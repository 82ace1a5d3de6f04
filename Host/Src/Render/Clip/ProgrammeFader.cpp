#include "ProgrammeFader.h"

#include "Sequence/Stage/FrameGains.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

// Gains are worked out for so many frames at once.
constexpr unsigned kPiece = 256;

} // namespace

ProgrammeFader::ProgrammeFader(
	std::shared_ptr<AutomationCurve const> inCurve, SN::FrameRate const& inFrameRate)
	: mCurve(std::move(inCurve)),
	  mFrameRate(inFrameRate)
{
}

SN::InterfaceRef<SN::IAudioProcessor> ProgrammeFader::Clone(
	SN::FrameRate const& inFrameRate, unsigned, unsigned)
{
	return zorvcore::classref::MakeObject<ProgrammeFader>(mCurve, inFrameRate);
}

void ProgrammeFader::ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const& inTime)
{
	unsigned const frames = ioBuffer.GetUseSize();
	for (unsigned done = 0; done < frames; done += kPiece)
	{
		unsigned const count = std::min(kPiece, frames - done);
		SN::TickTime const first = inTime + SN::TickTime(done, mFrameRate);
		float const gain = static_cast<float>(mCurve->GetRampedValue(first));
		bool const isConstant = mCurve->IsConstant(first, first + SN::TickTime(count, mFrameRate));
		if (isConstant && gain == 1.0f)
		{
			continue;
		}
		float gains[kPiece];
		for (unsigned i = 0; i < count; ++i)
		{
			gains[i] = isConstant
						   ? gain
						   : static_cast<float>(mCurve->GetRampedValue(first + SN::TickTime(i, mFrameRate)));
		}
		ApplyGains(ioBuffer, done, count, gains);
	}
}

} // namespace SonaroHost
