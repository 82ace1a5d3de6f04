#pragma once

#include "zorvcore/Export.h"

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zorvcore::debug
{

// Where a monitor writes its text, in UTF-16.
class ZORV_API DebugMonitorStream
{
public:
	DebugMonitorStream& operator<<(std::u16string_view inText)
	{
		mText += inText;
		return *this;
	}

	// UTF-8.
	DebugMonitorStream& operator<<(std::string_view inText);

	template <std::integral T>
	requires(sizeof(T) <= 8 && !std::same_as<T, bool> && !std::same_as<T, char> &&
			 !std::same_as<T, char16_t>) DebugMonitorStream&
	operator<<(T inValue)
	{
		return *this << std::string_view(std::to_string(inValue));
	}

	std::u16string const& GetText() const { return mText; }

private:
	std::u16string mText;
};

using DebugMonitorWriter = std::function<void(DebugMonitorStream&)>;

// One registration, which ends with this object: exactly this one, also when another has taken its name
// since. The destructor waits for the writer when it is running, save in the writer itself; after it the
// writer never runs again.
class ZORV_API DebugMonitorRegistration
{
public:
	DebugMonitorRegistration() = default;
	DebugMonitorRegistration(DebugMonitorRegistration&& ioOther) noexcept;
	DebugMonitorRegistration& operator=(DebugMonitorRegistration&& ioOther) noexcept;
	~DebugMonitorRegistration();

private:
	friend ZORV_API DebugMonitorRegistration RegisterDebugMonitorCallback(
		std::string_view inName, DebugMonitorWriter inWriter, bool inEnabled);

	std::string mName;
	// The monitor, for those who made it.
	std::shared_ptr<void> mMonitor;
};

// Registers a source of text about the present state of a component. Whoever looks at monitors runs the
// writer on the thread that looks, and no writer runs twice at a time; a writer that throws is reported
// and its text ends there. A monitor already registered under the name is unregistered first.
// inEnabled: whether GetDebugMonitorTexts shows it.
//
// All functions here: any thread.
[[nodiscard]] ZORV_API DebugMonitorRegistration RegisterDebugMonitorCallback(
	std::string_view inName, DebugMonitorWriter inWriter, bool inEnabled);

// Unregisters what has the name now, whoever registered it. Waits for the writer when it is running; after
// this it never runs again. In the writer itself it does not wait. Nothing when there is no such monitor.
ZORV_API void UnregisterDebugMonitorCallback(std::string_view inName);

ZORV_API std::vector<std::string> GetDebugMonitorNames();

// Runs one monitor, enabled or not. Empty when there is none of the name.
ZORV_API std::u16string GetDebugMonitorText(std::string_view inName);

// Runs all enabled monitors in the order of their names: for each its name in a line and its text.
ZORV_API std::u16string GetDebugMonitorTexts();

ZORV_API void SetDebugMonitorEnabled(std::string_view inName, bool inEnabled);

// Whether a debugger traces this process now. Reads from the system: not for the render path.
ZORV_API bool IsDebuggerAttached();

} // namespace zorvcore::debug
