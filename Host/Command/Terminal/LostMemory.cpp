#include "LostMemory.h"

#include "SonaroHost/Files/Temporary.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

namespace SonaroCommand
{

namespace
{

void EndWithoutMemory()
{
	try
	{
		if (std::exception_ptr const exception = std::current_exception())
		{
			std::rethrow_exception(exception);
		}
	}
	catch (std::bad_alloc const&)
	{
		SonaroHost::Temporary::RemoveAll();
		ReportLostMemory();
		std::_Exit(EXIT_FAILURE);
	}
	catch (...)
	{
		// A fault of the program, which a core dump shows.
	}
	std::abort();
}

} // namespace

void ReportLostMemory()
{
	std::fputs("sonaro: not enough memory; end other programs, or give fewer --jobs to a render\n", stderr);
}

void EndInOrderWithoutMemory()
{
	std::set_terminate(&EndWithoutMemory);
}

} // namespace SonaroCommand
