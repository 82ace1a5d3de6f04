#include "TemporaryFolder.h"

#include "SonaroHost/HostError.h"

#include <array>
#include <charconv>
#include <random>
#include <string>
#include <system_error>

namespace SonaroHost::Otio
{

namespace
{

std::string MakeName()
{
	std::random_device random;
	std::string name = "sonaro-";
	for (int i = 0; i < 4; ++i)
	{
		std::array<char, 8> digits{};
		auto const result = std::to_chars(digits.data(), digits.data() + digits.size(), random(), 36);
		name.append(digits.data(), result.ptr);
	}
	return name;
}

} // namespace

TemporaryFolder::TemporaryFolder()
{
	std::error_code error;
	std::filesystem::path const parent = std::filesystem::temp_directory_path(error);
	mFolder.emplace(
		[&]
		{
			std::filesystem::path path = parent / MakeName();
			// False when something has the name already, which must not be ours by chance then.
			if (error || !std::filesystem::create_directory(path, error))
			{
				throw HostError(HostError::Kind::eOutput,
					"no temporary folder can be made in " + QuotePath(parent) +
						(error ? ": " + error.message() : std::string()) + "; name another one in TMPDIR");
			}
			return path;
		});
	std::filesystem::permissions(GetPath(), std::filesystem::perms::owner_all, error);
}

} // namespace SonaroHost::Otio
