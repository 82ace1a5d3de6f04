#include "SonaroHost/Base/HostError.h"

#include "SonaroHost/Base/PrintableText.h"

#include <utility>

namespace SonaroHost
{

namespace
{

// The longest place in a message, in bytes: the way to deeply nested objects is longer.
constexpr std::size_t kLongestPlace = 400;

std::string Compose(HostError::Parts const& inParts)
{
	std::string where = inParts.mFile.empty() ? std::string() : QuotePath(inParts.mFile);
	if (!inParts.mPlace.empty())
	{
		where += where.empty() ? "" : ", ";
		where += ShortenMiddle(inParts.mPlace, kLongestPlace);
	}
	return where + (where.empty() ? "" : ": ") + inParts.mReason +
		   (inParts.mRemedy.empty() ? "" : "; " + inParts.mRemedy);
}

} // namespace

HostError::HostError(Kind inKind, Parts inParts)
	: std::runtime_error(Compose(inParts)),
	  mKind(inKind),
	  mParts(std::move(inParts))
{
}

HostError::HostError(Kind inKind, std::string const& inReason)
	: HostError(inKind, Parts{{}, {}, inReason, {}})
{
}

void Refuse(std::string const& inReason)
{
	throw HostError(HostError::Kind::kRequest, inReason);
}

void RefuseFile(std::filesystem::path const& inFile, std::string const& inReason, std::string const& inRemedy)
{
	throw HostError(HostError::Kind::kInput, {inFile, {}, inReason, inRemedy});
}

void RefuseOutput(std::string const& inReason)
{
	throw HostError(HostError::Kind::kOutput, inReason);
}

std::string QuotePath(std::filesystem::path const& inPath)
{
	std::string quoted = "'";
	quoted += MakePrintable(GetPathText(inPath));
	return quoted + "'";
}

} // namespace SonaroHost
