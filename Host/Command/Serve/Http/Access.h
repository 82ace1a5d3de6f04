#pragma once

#include <httplib.h>

#include <string>
#include <string_view>

namespace SonaroCommand::Serve
{

// Whether an address is one that only this machine reaches: localhost, 127.0.0.0/8 or ::1.
bool IsLoopback(std::string_view inHost);

// Whether both are equal, in a time that does not depend on where they differ.
bool AreEqualInConstantTime(std::string_view inA, std::string_view inB);

// Who may ask for what. Without a token everybody on this machine may, but no page of another site: requests have to name
// the machine by a name of the loopback, which defeats names that are pointed at it.
class Access
{
public:
	// inToken: empty for none.
	Access(std::string inToken, int inPort);

	// 0 when the client may ask, otherwise the status that refuses it, with the reason.
	int Check(httplib::Request const& inRequest, std::string& outReason) const;
	// The same of a request that changes something: of where it comes from, and of its content.
	static int CheckChange(httplib::Request const& inRequest, std::string& outReason);

	// The cookie for a request that gives the token in its address; empty for others.
	std::string MakeCookie(httplib::Request const& inRequest) const;

private:
	bool HasToken(httplib::Request const& inRequest) const;

	std::string mToken;
	std::string mCookieName;
};

} // namespace SonaroCommand::Serve
