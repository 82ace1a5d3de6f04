#pragma once

#include "SonaroHost/Base/HostError.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <type_traits>
#include <utility>

namespace SonaroHost::Farm
{

// Keys in the order in which they were set.
using Json = nlohmann::ordered_json;

// Paths may have bytes that are no UTF-8: those become U+FFFD, and such a file is not found again.
inline std::string ToText(Json const& inJson)
{
	return inJson.dump(1, '\t', false, Json::error_handler_t::replace) + "\n";
}

// A value of a file of JSON that this program wrote, with its place for messages.
class JsonField
{
public:
	JsonField(std::filesystem::path inFile, std::string inWhat, Json const& inValue, std::string inPlace = {})
		: mFile(std::move(inFile)),
		  mWhat(std::move(inWhat)),
		  mPlace(std::move(inPlace)),
		  mValue(inValue)
	{
	}

	// Throw a HostError that names file and place for what is missing or of another kind.
	JsonField At(char const* inKey) const
	{
		auto const found = mValue.is_object() ? mValue.find(inKey) : mValue.end();
		if (found == mValue.end())
		{
			Refuse(mPlace + "/" + inKey, "is missing");
		}
		return {mFile, mWhat, *found, mPlace + "/" + inKey};
	}
	JsonField At(std::size_t inIndex) const
	{
		return {mFile, mWhat, mValue.at(inIndex), mPlace + "/" + std::to_string(inIndex)};
	}
	std::size_t CountItems() const
	{
		if (!mValue.is_array())
		{
			Refuse(mPlace, "is not a list");
		}
		return mValue.size();
	}
	template <class T>
	T Get() const
	{
		try
		{
			if (Holds<T>())
			{
				return mValue.get<T>();
			}
		}
		catch (Json::exception const&)
		{
			// Refused below.
		}
		Refuse(mPlace, "is of another kind than " + mWhat + " has there");
	}
	template <class T>
	T Get(char const* inKey) const
	{
		return At(inKey).Get<T>();
	}

	// Throws a HostError that names file and place.
	[[noreturn]] void Refuse(std::string const& inReason) const { Refuse(mPlace, inReason); }

	// A whole number from inLeast to inMost.
	std::int64_t GetWhole(char const* inKey, std::int64_t inLeast, std::int64_t inMost) const
	{
		JsonField const field = At(inKey);
		bool const isWhole = field.mValue.is_number_integer();
		auto const number = isWhole ? field.Get<std::int64_t>() : 0;
		if (!isWhole || number < inLeast || number > inMost)
		{
			Refuse(field.mPlace,
				"is not a whole number from " + std::to_string(inLeast) + " to " + std::to_string(inMost));
		}
		return number;
	}

	[[noreturn]] void Refuse(std::string const& inPlace, std::string const& inReason) const
	{
		throw HostError(HostError::Kind::kInput,
			{mFile, inPlace, inReason, "take " + mWhat + " as this version of sonaro wrote it"});
	}

private:
	// The library would convert numbers of all kinds and sizes.
	template <class T>
	bool Holds() const
	{
		if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>)
		{
			return mValue.is_number_unsigned()
					   ? std::in_range<T>(mValue.get<std::uint64_t>())
					   : mValue.is_number_integer() && std::in_range<T>(mValue.get<std::int64_t>());
		}
		return true;
	}

	std::filesystem::path mFile;
	// "a plan".
	std::string mWhat;
	// A JSON pointer.
	std::string mPlace;
	Json const& mValue;
};

} // namespace SonaroHost::Farm
