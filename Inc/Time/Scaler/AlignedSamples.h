#pragma once

#include <memory>

namespace SN
{

// Floats in memory that vectors are read from fastest, all 0 at first.
class AlignedSamples
{
public:
	AlignedSamples() = default;
	explicit AlignedSamples(unsigned inCount);

	// Makes all of them 0, in new memory where the number changes. Throws std::bad_alloc.
	void Clear(unsigned inCount);

	unsigned GetCount() const { return mCount; }
	float* Get() { return mSamples.get(); }
	float const* Get() const { return mSamples.get(); }

private:
	struct Free
	{
		void operator()(float* inSamples) const;
	};

	std::unique_ptr<float, Free> mSamples;
	unsigned mCount = 0;
};

} // namespace SN
