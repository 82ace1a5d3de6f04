#include "StemName.h"

#include <algorithm>
#include <string_view>

namespace SonaroHost::Otio
{

namespace
{

constexpr std::size_t kMostBytes = 120;

bool ContinuesCharacter(char inByte)
{
	return (static_cast<unsigned char>(inByte) & 0xc0) == 0x80;
}

} // namespace

std::filesystem::path MakeStemName(
	std::size_t inIndex, std::size_t inCount, std::string const& inName, std::string const& inEnding)
{
	std::string number = std::to_string(inIndex + 1);
	number.insert(0, std::max<std::size_t>(2, std::to_string(inCount).size()) - number.size(), '0');
	std::string name = inName;
	std::size_t length = std::min(name.size(), kMostBytes);
	while (length > 0 && length < name.size() && ContinuesCharacter(name[length]))
	{
		--length;
	}
	name.resize(length);
	constexpr std::string_view kForbidden = "/\\:*?\"<>|";
	for (char& character : name)
	{
		bool const isControl = static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
		character = isControl || kForbidden.find(character) != std::string_view::npos ? '_' : character;
	}
	// Some systems cut off blanks and dots at the end, and one before the ending looks odd anywhere.
	name.erase(name.find_last_not_of(" .") + 1);
	return number + (name.empty() ? "" : " " + name) + inEnding;
}

} // namespace SonaroHost::Otio
