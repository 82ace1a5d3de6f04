#pragma once

#ifdef __x86_64__
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

namespace zorvcore::utility::exceptions
{

// Rounding, flushing and traps of the thread's arithmetic. A handler of machine exceptions may run with others,
// and a jump out of it keeps those.
class FloatMode
{
public:
#ifdef __x86_64__
	// The two control words; the rest of the environment takes as long to save as ten guards.
	void Save()
	{
		mVectorControl = _mm_getcsr();
		asm volatile("fnstcw %0" : "=m"(mControl));
	}
	void Restore() const
	{
		_mm_setcsr(mVectorControl);
		asm volatile("fldcw %0" : : "m"(mControl));
	}

private:
	unsigned mVectorControl;
	unsigned short mControl;
#else
	void Save()
	{
		std::fegetenv(&mEnvironment);
	}
	void Restore() const
	{
		std::fesetenv(&mEnvironment);
	}

private:
	std::fenv_t mEnvironment;
#endif
};

} // namespace zorvcore::utility::exceptions
