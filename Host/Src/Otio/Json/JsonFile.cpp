#include "JsonFile.h"

#include "JsonTree.h"

#include "Files/NameForms.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Otio/Limits.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <system_error>

namespace SonaroHost::Otio
{

namespace
{

[[noreturn]] void RefuseAt(
	std::filesystem::path const& inPath, std::string const& inPlace, std::string const& inWhy)
{
	throw HostError(HostError::Kind::kInput, {inPath, inPlace, inWhy, {}});
}

// "line 3, column 17", both from 1; columns are bytes.
std::string DescribeOffset(std::string_view inBytes, std::size_t inOffset)
{
	std::string_view const before = inBytes.substr(0, inOffset);
	auto const line = std::ranges::count(before, '\n') + 1;
	std::size_t const lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
	return "line " + std::to_string(line) + ", column " + std::to_string(before.size() - lineStart + 1);
}

// Anything that is no JSON from its first character on gets a plain word, not that of a parser.
void CheckIsJson(std::string_view inBytes, std::filesystem::path const& inPath, std::string const& inKind)
{
	constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
	std::string_view const text =
		inBytes.substr(inBytes.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
	std::size_t const first = text.find_first_not_of(" \t\r\n");
	if (first == std::string_view::npos)
	{
		RefuseFile(inPath, "is empty");
	}
	if (std::string_view("{[\"-0123456789tfn/").find(text[first]) == std::string_view::npos)
	{
		RefuseFile(inPath, "is not " + inKind + " (expected JSON starting with \"{\")");
	}
}

} // namespace

std::vector<Note> ReadJson(std::string_view inBytes, std::filesystem::path const& inPath,
	std::string const& inKind, std::function<void(Cursor const& inRoot)> const& inRead)
{
	if (inBytes.size() > kMaxFileBytes)
	{
		RefuseFile(inPath, "is larger than 1 GiB; split it");
	}
	CheckIsJson(inBytes, inPath, inKind);
	try
	{
		JsonTree const tree(inBytes, kMaxJsonDepth);
		Findings findings;
		inRead(Cursor(tree.GetRoot(), findings));
		return findings.TakeNotes();
	}
	catch (JsonError const& error)
	{
		RefuseAt(inPath, DescribeOffset(inBytes, error.GetOffset()), error.what());
	}
	catch (Refusal const& refusal)
	{
		RefuseAt(inPath, refusal.GetPlace(), refusal.what());
	}
}

std::string ReadBytes(std::filesystem::path const& inPath)
{
	std::error_code error;
	if (!std::filesystem::is_regular_file(inPath, error))
	{
		RefuseFile(
			inPath, std::filesystem::exists(inPath, error) ? "is not a file" : DescribeMissing(inPath));
	}
	std::uintmax_t const size = std::filesystem::file_size(inPath, error);
	if (error || size > kMaxFileBytes)
	{
		RefuseFile(inPath, "is larger than 1 GiB; split it");
	}
	std::string bytes(size, '\0');
	errno = 0;
	std::ifstream file(inPath, std::ios::binary);
	if (!file.read(bytes.data(), static_cast<std::streamsize>(size)))
	{
		RefuseFile(inPath,
			"cannot be read" + (errno != 0 ? ": " + std::generic_category().message(errno) : std::string()));
	}
	return bytes;
}

} // namespace SonaroHost::Otio
