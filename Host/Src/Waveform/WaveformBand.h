#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Waveform/PeakColumn.h"

#include <cstdint>
#include <vector>

namespace SonaroHost
{

// The columns of a waveform, filled by what passes a place in a graph, all channels in one.
// Threads: that of the render.
class WaveformBand final : public SN::Implements<WaveformBand, SN::IAudioMeterSetter>
{
public:
	static constexpr SN::Identifier<WaveformBand> kIdentifier{0x7ec93b51d0a8462full, 0xb06fe4d7391a5c82ull};

	// Where the columns lie in the programme, and what arrives in that.
	struct Grid
	{
		// Frames of the programme.
		std::int64_t mFrames = 0;
		std::int64_t mFramesPerColumn = 1;
		SN::FrameRate mFrameRate;
		// The frame of the programme at which frame 0 of what arrives is, and how many one of its frames takes there: below
		// 0 for what arrives backwards.
		double mFirstFrame = 0.0;
		double mStep = 1.0;
	};

	// Called before the render.
	void SetGrid(Grid const& inGrid);
	// Frames outside of the grid are passed over.
	void Add(dsp::AudioBuffer const& inBuffer, std::int64_t inFirstFrame);
	// The values as a Waveform has them. What was not heard is silence.
	std::vector<float> GetValues() const;

	void Init(SN::FrameRate const&, unsigned) override {}
	void SetMeterData(
		dsp::AudioBuffer const& inBuffer, SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void Shutdown() override {}
	void Reset() override {}

private:
	// Adds the frames that fall into one column.
	void AddPiece(dsp::AudioBuffer const& inBuffer, unsigned inFirst, unsigned inEnd, double inPlace);

	Grid mGrid;
	std::vector<PeakColumn> mColumns;
};

} // namespace SonaroHost
