#pragma once

#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// Takes the messages that lilv and its parser print on the error output, in place of handing them to the host, for as long as
// it lives. What others print meanwhile comes out at the end.
//
// Threads  Under the lock of the World, since there is one error output.
class MessageCapture
{
public:
	MessageCapture();
	~MessageCapture() { Take(); }
	MessageCapture(MessageCapture const&) = delete;
	MessageCapture& operator=(MessageCapture const&) = delete;

	// Ends it. The messages without the names of functions and the word "error", each on one line and once.
	std::vector<std::string> Take();
	// The same, the last message alone, which says most; empty for none.
	std::string TakeLast();

private:
	// The former error output; -1 where nothing is captured.
	int mErrors = -1;
};

} // namespace SonaroHost::Effects
