#pragma once

#include <stdexcept>

namespace SonaroHost::Serve
{

// What was asked for was not there by its deadline, since others are served or it takes too long; it may be later.
class TooBusyError : public std::runtime_error
{
public:
	using std::runtime_error::runtime_error;
};

} // namespace SonaroHost::Serve
