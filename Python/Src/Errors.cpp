#include "Errors.h"

#include "SonaroHost/Base/HostError.h"
#include "Terminal/Caller.h"

#include <exception>
#include <string>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

using SonaroHost::HostError;

char const* GetName(HostError::Kind inKind)
{
	// In the order of HostError::Kind.
	constexpr char const* kNames[] = {"usage", "input", "output", "nothing-heard", "engine"};
	return kNames[static_cast<std::size_t>(inKind)];
}

py::object Make(char const* inKind, char const* inMessage, HostError::Parts const& inParts)
{
	// Names of files may hold any bytes.
	auto const text = [](std::string const& inText) { return py::bytes(inText); };
	return py::module_::import("sonaro._errors")
		.attr("make")(inKind, text(inMessage), text(inParts.mFile.string()), text(inParts.mPlace),
			text(inParts.mReason), text(inParts.mRemedy));
}

void Translate(std::exception_ptr inException)
{
	if (py::object const error = MakeError(inException))
	{
		PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
		return;
	}
	std::rethrow_exception(inException);
}

} // namespace

py::object MakeError(std::exception_ptr const& inException)
{
	try
	{
		std::rethrow_exception(inException);
	}
	catch (HostError const& error)
	{
		return Make(GetName(error.GetKind()), error.what(), error.GetParts());
	}
	catch (SonaroCommand::CommandStopped const&)
	{
		constexpr char const* kText = "cancelled; nothing was written";
		return Make("cancelled", kText, {{}, {}, kText, {}});
	}
	catch (...)
	{
		return {};
	}
}

void AddErrors(py::module_& /*ioModule*/)
{
	py::register_local_exception_translator(&Translate);
}

} // namespace SonaroPython
