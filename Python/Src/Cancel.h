#pragma once

#include <stop_token>

namespace SonaroPython
{

// What one thread of Python hands to another to end its render. Once used, it ends whatever gets it.
// Threads: any.
class Cancel
{
public:
	void Use() { mSource.request_stop(); }
	bool IsUsed() const { return mSource.stop_requested(); }
	std::stop_token GetToken() const { return mSource.get_token(); }

private:
	std::stop_source mSource;
};

} // namespace SonaroPython
