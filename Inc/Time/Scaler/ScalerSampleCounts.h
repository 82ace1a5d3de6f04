#pragma once

namespace SN
{

// How many samples a time scaler takes and gives, whose inputs come in steps of 512.
namespace ScalerSampleCounts
{

// inRatio: output over input. In the first block, what has to be heard before anything can come out is counted too.
unsigned CountOutput(unsigned inNumInput, double inRatio, bool inIsFirstBlock);
// inSurplus: outputs that wait.
unsigned CountInput(unsigned inNumOutput, double inRatio, bool inIsFirstBlock, unsigned inSurplus);
// The largest count for a block. With a ratio of 0, what the first block takes more.
unsigned CountMostInput(unsigned inNumOutput, double inRatio);

} // namespace ScalerSampleCounts

} // namespace SN
