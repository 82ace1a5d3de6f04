#pragma once

#include <exception>

namespace SonaroHost
{

// What an effect raises, while it processes, once nothing more is to be expected of it.
class EffectFault final : public std::exception
{
public:
	enum class Kind
	{
		kNone,
		// It would have ended the process.
		kCrash,
		// Its output has samples that are infinite or not a number.
		kNotANumber,
		// It raised an exception.
		kException,
	};

	explicit EffectFault(Kind inKind)
		: mKind(inKind)
	{
	}

	Kind GetKind() const noexcept { return mKind; }
	char const* what() const noexcept override { return Describe(mKind); }

	// What it did, as "crashed".
	static char const* Describe(Kind inKind)
	{
		switch (inKind)
		{
		case Kind::kCrash:
			return "crashed";
		case Kind::kNotANumber:
			return "gave samples that are infinite or not a number";
		case Kind::kException:
			return "failed";
		case Kind::kNone:
			break;
		}
		return "works";
	}

private:
	Kind mKind;
};

} // namespace SonaroHost
