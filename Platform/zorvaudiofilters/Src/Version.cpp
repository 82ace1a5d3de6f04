#include "zorvaudiofilters/Version.h"

namespace zorvaudiofilters
{

char const* GetVersion()
{
	return ZORV_VERSION;
}

} // namespace zorvaudiofilters
