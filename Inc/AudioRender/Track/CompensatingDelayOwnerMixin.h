#pragma once

#include "AudioRender/Track/CompensatingDelayLine.h"
#include "Sonaro/DelayDependency.h"
#include "Sonaro/Types.h"

#include <vector>

namespace SN
{

// The delays by which a track waits for others of larger latency: a line for each of its sends, in their
// order, and last the line of its output. Only the last one changes the buffer that it is given: a send
// hears delayed audio while the track's own path goes on undelayed until its line.
class CompensatingDelayOwnerMixin : public Implements<CompensatingDelayOwnerMixin>
{
public:
	static constexpr Identifier<CompensatingDelayOwnerMixin> kIdentifier{
		0x0fa46b92d7c84e31ull, 0xbe5a1d08f3647c29ull};

	// So many inactive lines.
	int Init(unsigned inLineCount, unsigned inMaxSamples, unsigned inNumChannels);
	// Makes as many lines of the same dimensions, inactive.
	void CopyDimensions(CompensatingDelayOwnerMixin const& inOther);

	// One record for each line; lines without one stay inactive. Allocates.
	void SetDelays(std::vector<DelayDependency> const& inDependencies);

	CompensatingDelayLine& GetLine(unsigned inIndex) { return mDelayLines[inIndex]; }
	CompensatingDelayLine& GetLastLine() { return mDelayLines.back(); }

private:
	std::vector<CompensatingDelayLine> mDelayLines;
};

} // namespace SN
