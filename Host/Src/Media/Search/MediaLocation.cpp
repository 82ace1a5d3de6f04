#include "MediaLocation.h"

#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <system_error>
#include <utility>

namespace SonaroHost
{

namespace
{

bool IsLetter(char inChar)
{
	return std::isalpha(static_cast<unsigned char>(inChar)) != 0;
}

// "C:" or "C|", the letter alone being too short for a scheme.
bool HasDriveLetter(std::string_view inPath)
{
	return inPath.size() >= 2 && IsLetter(inPath[0]) && (inPath[1] == ':' || inPath[1] == '|');
}

// "file" of "file:///x", in lower case; empty for plain paths, those with drive letters among them.
std::string FindScheme(std::string_view inUrl)
{
	std::size_t const colon = inUrl.find(':');
	if (colon == std::string_view::npos || colon < 2 || !IsLetter(inUrl[0]))
	{
		return {};
	}
	std::string scheme(inUrl.substr(0, colon));
	bool const isScheme = std::ranges::all_of(scheme,
		[](char inChar)
		{
			return std::isalnum(static_cast<unsigned char>(inChar)) != 0 || inChar == '+' || inChar == '-' ||
				   inChar == '.';
		});
	bool const isFile = isScheme && scheme.size() == 4;
	// A colon is allowed in names of files: only what goes on like a URL is one.
	if (!isScheme || (!isFile && inUrl.substr(colon + 1, 2) != "//"))
	{
		return {};
	}
	return ToLower(std::move(scheme));
}

// What follows "file:": the path, or "//", a host and the path.
std::string TakeFilePath(std::string_view inRest)
{
	constexpr std::string_view kHere = "localhost";
	if (inRest.substr(0, 2) != "//")
	{
		return std::string(inRest);
	}
	inRest.remove_prefix(2);
	std::size_t const slash = std::min(inRest.find('/'), inRest.size());
	std::string_view const host = inRest.substr(0, slash);
	if (host.empty() || host == kHere)
	{
		return std::string(inRest.substr(slash));
	}
	// "file://media/x.wav", where people meant a relative path, and "file://C:/x.wav".
	return HasDriveLetter(host) ? std::string(inRest) : "//" + std::string(inRest);
}

// A path of other systems in the letters of this one: slashes, no slash before a drive letter.
std::string Localize(std::string inPath)
{
	if (inPath.size() > 2 && inPath[0] == '/' && HasDriveLetter(std::string_view(inPath).substr(1)))
	{
		inPath.erase(0, 1);
	}
	if (HasDriveLetter(inPath) || inPath.substr(0, 2) == "\\\\")
	{
		std::replace(inPath.begin(), inPath.end(), '\\', '/');
	}
	return inPath;
}

void Add(std::string const& inPath, std::vector<std::filesystem::path>& ioPaths)
{
	bool const isKnown = std::find(ioPaths.begin(), ioPaths.end(), inPath) != ioPaths.end();
	if (!inPath.empty() && inPath.find('\0') == std::string::npos && !isKnown)
	{
		ioPaths.emplace_back(inPath);
	}
}

} // namespace

MediaLocation ParseMediaLocation(std::string_view inUrl)
{
	MediaLocation location;
	std::string const scheme = FindScheme(inUrl);
	if (scheme == "file")
	{
		std::string const rest = TakeFilePath(inUrl.substr(scheme.size() + 1));
		Add(Localize(DecodePercent(rest)), location.mPaths);
		// Some programs write such URLs without encoding anything.
		Add(Localize(rest), location.mPaths);
	}
	else if (scheme.empty())
	{
		std::string const plain(inUrl);
		Add(plain, location.mPaths);
		Add(Localize(plain), location.mPaths);
		Add(Localize(DecodePercent(plain)), location.mPaths);
		// Relative paths of another system.
		std::string slashes = DecodePercent(plain);
		std::replace(slashes.begin(), slashes.end(), '\\', '/');
		Add(slashes, location.mPaths);
	}
	else
	{
		location.mForeignScheme = scheme;
		std::string_view const rest = inUrl.substr(scheme.size() + 3);
		std::string_view const path = rest.substr(0, rest.find_first_of("?#"));
		// The query of a signed address goes; but names in some stores hold its characters.
		for (std::string const& text : {DecodePercent(path), std::string(path), DecodePercent(rest)})
		{
			Add(text, location.mElsewhere);
		}
	}
	return location;
}

std::string DecodePercent(std::string_view inText)
{
	std::string result;
	result.reserve(inText.size());
	for (std::size_t i = 0; i < inText.size(); ++i)
	{
		unsigned value = 0;
		char const* const digits = inText.data() + i + 1;
		if (inText[i] == '%' && i + 2 < inText.size())
		{
			auto const [end, error] = std::from_chars(digits, digits + 2, value, 16);
			if (error == std::errc() && end == digits + 2)
			{
				result += static_cast<char>(value);
				i += 2;
				continue;
			}
		}
		result += inText[i];
	}
	return result;
}

} // namespace SonaroHost
