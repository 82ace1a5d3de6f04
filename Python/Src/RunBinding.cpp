#include "RunBinding.h"

#include "Cancel.h"
#include "CommandRun.h"
#include "Errors.h"
#include "Samples.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace SonaroPython
{

namespace
{

// How often the interpreter hears its signals and the callback is called, while a command runs.
constexpr std::chrono::milliseconds kInterval{40};

py::bytes ToBytes(std::string const& inText)
{
	return py::bytes(inText);
}

py::list ToList(std::vector<std::string> const& inTexts)
{
	py::list list;
	for (std::string const& text : inTexts)
	{
		list.append(ToBytes(text));
	}
	return list;
}

bool WaitFor(CommandRun& ioRun)
{
	py::gil_scoped_release const release;
	return ioRun.WaitFor(kInterval);
}

void Listen(CommandRun& ioRun, py::object const& inProgress)
{
	SignalListener::ThrowIfEnded();
	if (PyErr_CheckSignals() != 0)
	{
		throw py::error_already_set();
	}
	auto const progress = ioRun.TakeProgress();
	if (progress && !inProgress.is_none())
	{
		inProgress(progress->mFramesDone, progress->mFramesTotal);
	}
}

struct ReleasingDelete
{
	// Its thread may have to end first.
	void operator()(CommandRun* inRun) const
	{
		py::gil_scoped_release const release;
		delete inRun;
	}
};

// Why it ended early, to be raised; none for nothing. Throws what Errors does not know.
py::object MakeFailure(CommandRun const& inRun)
{
	if (!inRun.GetFailure())
	{
		return py::none();
	}
	py::object error = MakeError(inRun.GetFailure());
	if (!error)
	{
		std::rethrow_exception(inRun.GetFailure());
	}
	return error;
}

// Returns the exit code, what the command printed, its errors and warnings, all as bytes, and why it failed. What a signal's handler or
// the callback throws ends the command, after which nothing half-written is left, and is thrown on.
py::tuple Run(std::vector<std::string> const& inArguments, std::map<std::string, std::string> const& inTexts,
	CommandRun::Programmes const& inProgrammes, Cancel const& inCancel, py::object const& inProgress)
{
	CommandRun::Texts texts;
	for (auto const& [path, text] : inTexts)
	{
		texts.emplace(path, std::make_shared<std::string const>(text));
	}
	std::unique_ptr<CommandRun, ReleasingDelete> const run(
		new CommandRun(inArguments, std::move(texts), inProgrammes));
	std::stop_callback const stop(inCancel.GetToken(), [&run] { run->Stop(); });
	while (!WaitFor(*run))
	{
		Listen(*run, inProgress);
	}
	Listen(*run, inProgress);
	return py::make_tuple(run->GetExitCode(), ToBytes(run->GetOutput()), ToList(run->GetErrors()),
		ToList(run->GetWarnings()), MakeFailure(*run));
}

} // namespace

void AddRun(py::module_& ioModule)
{
	py::class_<Cancel, std::shared_ptr<Cancel>>(
		ioModule, "Cancel", "Ends the renders that it was given to, from any thread.")
		.def(py::init<>())
		.def("cancel", &Cancel::Use, "Ends them; whatever gets it later ends at once.")
		.def_property_readonly("cancelled", &Cancel::IsUsed);
	ioModule.def("end_calls", &SignalListener::EndCalls);
	ioModule.def("run", &Run, py::arg("arguments"), py::arg("texts"), py::arg("programmes"),
		py::arg("cancel"), py::arg("progress"));
}

} // namespace SonaroPython
