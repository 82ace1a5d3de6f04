#include "SonaroHost/HostError.h"

namespace SonaroHost
{

std::string QuotePath(std::filesystem::path const& inPath)
{
	constexpr char kHexDigits[] = "0123456789abcdef";
	std::string quoted = "'";
	for (char const character : inPath.string())
	{
		auto const code = static_cast<unsigned char>(character);
		if (code < 0x20 || code == 0x7f)
		{
			quoted += "\\x";
			quoted += kHexDigits[code / 16];
			quoted += kHexDigits[code % 16];
		}
		else
		{
			quoted += character;
		}
	}
	return quoted + "'";
}

} // namespace SonaroHost
