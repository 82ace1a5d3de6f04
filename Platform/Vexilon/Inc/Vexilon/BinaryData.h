#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace VX
{

// An opaque blob that the engine passes on and never looks into. Empty by default.
class BinaryData
{
public:
	BinaryData() = default;
	explicit BinaryData(std::vector<std::uint8_t> inBytes)
		: mBytes(std::move(inBytes))
	{
	}

	std::vector<std::uint8_t> const& GetBytes() const { return mBytes; }

private:
	std::vector<std::uint8_t> mBytes;
};

} // namespace VX
