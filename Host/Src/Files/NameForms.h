#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace SonaroHost
{

// The forms in which names of files are compared. "é" is one character or an "e" with an accent, and file systems
// differ in which they keep. Bytes that are no UTF-8 stay as they are.

// The name in the composed form (NFC).
std::string ComposeName(std::string_view inName);
// The same without the case of letters.
std::string FoldName(std::string_view inName);

// Why a file that is not there cannot be read: "does not exist", and that one does whose name is the same but for the form,
// which looks alike.
std::string DescribeMissing(std::filesystem::path const& inPath);

} // namespace SonaroHost
