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
		// What comes into it has samples that are infinite or not a number, which is not its fault.
		kBadInput,
	};

	// inFrame: the first frame of the block that is wrong, where that is known.
	explicit EffectFault(Kind inKind, unsigned inFrame = 0)
		: mKind(inKind),
		  mFrame(inFrame)
	{
	}

	Kind GetKind() const noexcept { return mKind; }
	unsigned GetFrame() const noexcept { return mFrame; }
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
		case Kind::kBadInput:
			return "was given samples that are infinite or not a number";
		case Kind::kNone:
			break;
		}
		return "works";
	}

	// Whether the frame is known, rather than the block alone.
	static bool HasFrame(Kind inKind) { return inKind == Kind::kNotANumber || inKind == Kind::kBadInput; }

private:
	Kind mKind;
	unsigned mFrame;
};

} // namespace SonaroHost
