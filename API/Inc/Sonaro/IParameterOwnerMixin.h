#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A node whose automated parameters are sampled from outside: the chain that holds it cuts its blocks
// where the parameters change. On the thread that pulls the graph.
class SONARO_API IParameterOwnerMixin : public virtual Unknown
{
public:
	static constexpr Identifier<IParameterOwnerMixin> kIdentifier{
		0x41d09b6e2c7f4a18ull, 0xa5c3e8127bd4f096ull};

	// The earliest time from inTime on at which a parameter has to be sampled again; kTimeMax for never.
	virtual TickTime GetNextInterestingTime(TickTime const& inTime) SONARO_NONBLOCKING = 0;

	// Samples all parameters at inTime. The node's blocks use these values until the next call.
	virtual void UpdateControls(TickTime const& inTime) SONARO_NONBLOCKING = 0;

	~IParameterOwnerMixin() override = default;
};

} // namespace SN
