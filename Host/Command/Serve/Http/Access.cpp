#include "Access.h"

#include <algorithm>
#include <utility>

namespace SonaroCommand::Serve
{

namespace
{

// The name of a Host header, without its port and the brackets of IPv6.
std::string_view CutPort(std::string_view inHost)
{
	if (inHost.starts_with('['))
	{
		return inHost.substr(1, inHost.find(']') - 1);
	}
	return inHost.substr(0, inHost.find(':'));
}

// What stands after the name of the scheme, which is written in any case (RFC 9110, section 11.1); empty for other schemes.
std::string_view CutBearer(std::string_view inField)
{
	constexpr std::string_view kScheme = "bearer ";
	auto const isSame = [](char inA, char inB) { return inA == (inB >= 'A' && inB <= 'Z' ? inB + 32 : inB); };
	bool const isBearer = inField.size() >= kScheme.size() &&
						  std::equal(kScheme.begin(), kScheme.end(), inField.begin(), isSame);
	inField.remove_prefix(isBearer ? kScheme.size() : inField.size());
	inField.remove_prefix(std::min(inField.find_first_not_of(' '), inField.size()));
	return inField;
}

// Whether a page of this server sent it, itself or through a proxy that adds TLS and passes the Host on.
bool IsOwnOrigin(std::string_view inOrigin, std::string const& inHost)
{
	return inOrigin == "http://" + inHost || inOrigin == "https://" + inHost;
}

std::string_view FindCookie(std::string_view inCookies, std::string const& inName)
{
	while (!inCookies.empty())
	{
		std::size_t const end = std::min(inCookies.find(';'), inCookies.size());
		std::string_view entry = inCookies.substr(0, end);
		entry.remove_prefix(std::min(entry.find_first_not_of(' '), entry.size()));
		if (entry.starts_with(inName + "="))
		{
			return entry.substr(inName.size() + 1);
		}
		inCookies.remove_prefix(std::min(end + 1, inCookies.size()));
	}
	return {};
}

} // namespace

bool IsLoopback(std::string_view inHost)
{
	bool const isNumber =
		inHost.starts_with("127.") && inHost.find_first_not_of("0123456789.") == std::string_view::npos;
	return isNumber || inHost == "localhost" || inHost == "::1";
}

bool AreEqualInConstantTime(std::string_view inA, std::string_view inB)
{
	if (inB.empty())
	{
		return inA.empty();
	}
	unsigned difference = inA.size() == inB.size() ? 0 : 1;
	for (std::size_t i = 0; i < inA.size(); ++i)
	{
		difference |= static_cast<unsigned char>(inA[i]) ^ static_cast<unsigned char>(inB[i % inB.size()]);
	}
	return difference == 0;
}

Access::Access(std::string inToken, int inPort)
	: mToken(std::move(inToken)),
	  mCookieName("sonaro_" + std::to_string(inPort))
{
}

int Access::Check(httplib::Request const& inRequest, std::string& outReason) const
{
	std::string const host = inRequest.get_header_value("Host");
	if (mToken.empty() && !IsLoopback(CutPort(host)))
	{
		outReason = "this server answers only to localhost, 127.0.0.1 and [::1]";
		return 421;
	}
	if (!mToken.empty() && !HasToken(inRequest))
	{
		outReason = "the token is missing or wrong; add ?token=TOKEN to the address of the page";
		return 401;
	}
	return 0;
}

int Access::CheckChange(httplib::Request const& inRequest, std::string& outReason)
{
	// Pages of other sites cannot send these without asking first, which is not answered.
	std::string const host = inRequest.get_header_value("Host");
	if (inRequest.has_header("Origin") && !IsOwnOrigin(inRequest.get_header_value("Origin"), host))
	{
		outReason = "the request comes from another site";
		return 403;
	}
	if (!inRequest.get_header_value("Content-Type").starts_with("application/json"))
	{
		outReason = "send application/json";
		return 415;
	}
	// The library limits neither of these.
	if (inRequest.has_header("Content-Encoding"))
	{
		outReason = "send the content without a Content-Encoding";
		return 415;
	}
	if (inRequest.has_header("Transfer-Encoding"))
	{
		outReason = "send the content with its Content-Length, not in chunks";
		return 411;
	}
	return 0;
}

bool Access::HasToken(httplib::Request const& inRequest) const
{
	std::string const field = inRequest.get_header_value("Authorization");
	std::string const cookies = inRequest.get_header_value("Cookie");
	// All three are compared, whichever is given.
	bool const isBearer = AreEqualInConstantTime(CutBearer(field), mToken);
	bool const isCookie = AreEqualInConstantTime(FindCookie(cookies, mCookieName), mToken);
	bool const isParameter = AreEqualInConstantTime(inRequest.get_param_value("token"), mToken);
	return isBearer || isCookie || isParameter;
}

std::string Access::MakeCookie(httplib::Request const& inRequest) const
{
	if (mToken.empty() || !inRequest.has_param("token"))
	{
		return {};
	}
	return mCookieName + "=" + mToken + "; Path=/; HttpOnly; SameSite=Strict";
}

} // namespace SonaroCommand::Serve
