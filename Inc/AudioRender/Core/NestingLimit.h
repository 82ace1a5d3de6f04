#pragma once

namespace SN
{

// Takes the limit of GetMaxNestableSequenceInstances from the debug database, where the default is the
// limit in force. Part of the module's start.
void ReadMaxNestableSequenceInstances();

} // namespace SN
