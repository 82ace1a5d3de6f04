#include "PluginInstance.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "UridMap.h"
#include "zorvcore/utility/RunGuarded.h"

#include <lv2/atom/atom.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

namespace SonaroHost::Effects
{

namespace
{

constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
// The room for messages of parameters: several paths, or hundreds of numbers.
constexpr std::size_t kParameterBytes = 1 << 16;

} // namespace

PluginInstance::PluginInstance(
	std::shared_ptr<PluginData const> inData, PluginFeatures::Settings const& inSettings)
	: mData(std::move(inData)),
	  mSettings(inSettings),
	  mFeatures(std::make_unique<PluginFeatures>(inSettings)),
	  mValues(mData->mPorts.size()),
	  mControlPorts(mData->mDescription.mControls.size()),
	  mSequenceType(UridMap::Get().Map(LV2_ATOM__Sequence)),
	  mChunkType(UridMap::Get().Map(LV2_ATOM__Chunk))
{
	LilvInstance* instance = nullptr;
	Guard(
		[&] { instance = lilv_plugin_instantiate(mData->mPlugin, mSettings.mSampleRate, mFeatures->Get()); });
	mInstance.reset(instance);
	if (!mInstance)
	{
		throw HostError(HostError::Kind::kInput, "the plugin " + QuoteName(mData->mDescription.mName) + " (" +
													 mData->mDescription.mUri + ") does not start");
	}
	// What was connected stays where it is.
	mSamples.reserve(mData->mPorts.size());
	mAtoms.reserve(mData->mPorts.size());
	for (std::size_t port = 0; port < mData->mPorts.size(); ++port)
	{
		lilv_instance_connect_port(mInstance.get(), static_cast<std::uint32_t>(port), MakeMemory(port));
	}
	auto const* const worker = static_cast<LV2_Worker_Interface const*>(
		lilv_instance_get_extension_data(mInstance.get(), LV2_WORKER__interface));
	for (Control const& control : mData->mDescription.mControls)
	{
		mWanted.push_back(control.mDefault);
	}
	mSent = mWanted;
	mFeatures->GetWorker().Start(lilv_instance_get_handle(mInstance.get()), worker);
}

PluginInstance::~PluginInstance()
{
	if (!mIsInRun)
	{
		Free();
	}
	if (mIsInRun)
	{
		static_cast<void>(mInstance.release());
		static_cast<void>(mFeatures.release());
	}
}

void PluginInstance::Free()
{
	try
	{
		// Some plugins free what only their activation allocates.
		if (!mWasActive)
		{
			Activate();
		}
		Guard(
			[this]
			{
				if (mIsActive)
				{
					lilv_instance_deactivate(mInstance.get());
				}
				mInstance.reset();
			});
	}
	catch (...)
	{
		// The guard leaves it marked as one that crashed.
	}
}

template <class Call>
void PluginInstance::Guard(Call const& inCall)
{
	using namespace zorvcore::utility::exceptions;
	mIsInRun = true;
	if (RunGuarded(inCall) != kNoMachineException)
	{
		throw HostError(HostError::Kind::kInput, "the plugin " + QuoteName(mData->mDescription.mName) + " (" +
													 mData->mDescription.mUri + ") crashed");
	}
	mIsInRun = false;
}

void* PluginInstance::MakeMemory(std::size_t inPort)
{
	Port const& port = mData->mPorts[inPort];
	switch (port.mKind)
	{
	case Port::Kind::kControlIn:
	case Port::Kind::kControlOut:
		return MakeValue(inPort);
	case Port::Kind::kAtomIn:
	case Port::Kind::kAtomOut:
		return MakeAtoms(inPort);
	case Port::Kind::kAudioIn:
	case Port::Kind::kAudioOut:
	case Port::Kind::kVoltageIn:
	case Port::Kind::kVoltageOut:
		return port.mIsOptional ? nullptr : MakeSamples(inPort);
	case Port::Kind::kOther:
		break;
	}
	return nullptr;
}

void* PluginInstance::MakeAtoms(std::size_t inPort)
{
	Port const& port = mData->mPorts[inPort];
	bool const hasParameters = mData->mParameterPort == inPort;
	std::size_t const bytes = hasParameters ? std::max(port.mBytes, kParameterBytes) : port.mBytes;
	AtomPort& atoms = mAtoms.emplace_back(AtomPort{inPort, port.mKind == Port::Kind::kAtomIn,
		std::vector<std::uint64_t>(bytes / sizeof(std::uint64_t) + 1)});
	if (hasParameters)
	{
		mParameterPort.emplace(atoms.mMemory.data(), bytes);
	}
	return atoms.mMemory.data();
}

float* PluginInstance::MakeSamples(std::size_t inPort)
{
	Port const& port = mData->mPorts[inPort];
	bool const isVoltage = port.mKind == Port::Kind::kVoltageIn;
	float* const samples =
		mSamples.emplace_back(std::max(mSettings.mMaxFrames, 1u), isVoltage ? port.mDefault : 0.0f).data();
	if (!port.mIsSideChain && port.mKind == Port::Kind::kAudioIn)
	{
		mInputs.push_back({static_cast<std::uint32_t>(inPort), samples, samples});
	}
	if (!port.mIsSideChain && port.mKind == Port::Kind::kAudioOut)
	{
		mOutputs.push_back(samples);
	}
	return samples;
}

void PluginInstance::ConnectInput(std::size_t inIndex, float* inSamples)
{
	Input& input = mInputs[inIndex];
	if (input.mConnected != inSamples)
	{
		input.mConnected = inSamples;
		lilv_instance_connect_port(mInstance.get(), input.mPort, inSamples);
	}
}

float* PluginInstance::MakeValue(std::size_t inPort)
{
	Port const& port = mData->mPorts[inPort];
	float& value = mValues[inPort];
	value = port.mRole == Port::Role::kFreeWheeling ? (mSettings.mIsRealTime ? 0.0f : 1.0f)
			: port.mKind == Port::Kind::kControlIn  ? port.mDefault
													: 0.0f;
	if (port.mControl)
	{
		mControlPorts[*port.mControl] = inPort;
	}
	if (port.mRole == Port::Role::kLatency && port.mKind == Port::Kind::kControlOut)
	{
		mLatency = &value;
	}
	return &value;
}

void PluginInstance::Restore(LilvState const* inState)
{
	Guard(
		[&]
		{
			lilv_state_restore(inState, mInstance.get(), nullptr, nullptr, 0, mFeatures->Get());
			mFeatures->GetWorker().DeliverResponses();
		});
}

void PluginInstance::SetControl(std::size_t inControl, float inValue, std::uint32_t inFrame)
{
	PluginParameter const& parameter = mData->mParameters[inControl];
	if (parameter.mProperty == 0)
	{
		mValues[mControlPorts[inControl]] = inValue;
		return;
	}
	mWanted[inControl] = inValue;
	if (mSent[inControl] != inValue && mParameterPort->Add(inFrame, parameter, static_cast<double>(inValue)))
	{
		mSent[inControl] = inValue;
	}
}

void PluginInstance::ForgetParameter(std::size_t inControl)
{
	mSent[inControl] = kNothing;
}

void PluginInstance::SetText(std::size_t inText, std::string const& inValue)
{
	if (!mParameterPort->Add(0, mData->mTexts[inText], inValue))
	{
		Refuse("the text for " + QuoteName(mData->mDescription.mTexts[inText].mSymbol) + " of the plugin " +
			   QuoteName(mData->mDescription.mName) + " is too long; use a shorter one");
	}
}

// Those for which there was no room come in the next run.
void PluginInstance::ResetParameters()
{
	mParameterPort->Clear();
	for (std::size_t control = 0; control < mWanted.size(); ++control)
	{
		float const wanted = mWanted[control];
		if (mData->mParameters[control].mProperty != 0 && wanted != mSent[control])
		{
			SetControl(control, wanted);
		}
	}
}

void PluginInstance::TakeMessages()
{
	Guard([&] { Run(0); });
}

void PluginInstance::Activate()
{
	if (!mIsActive)
	{
		mIsActive = true;
		mWasActive = true;
		Guard([this] { lilv_instance_activate(mInstance.get()); });
	}
}

void PluginInstance::Probe(std::uint32_t inFrames)
{
	Guard([&] { Run(inFrames); });
}

void PluginInstance::Deactivate()
{
	if (mIsActive && !mIsInRun)
	{
		mIsActive = false;
		lilv_instance_deactivate(mInstance.get());
	}
}

// An input has no events, and an output says how much room it has.
void PluginInstance::ResetAtoms()
{
	for (AtomPort& port : mAtoms)
	{
		auto const bytes = port.mMemory.size() * sizeof(std::uint64_t);
		if (port.mPort == mData->mParameterPort)
		{
			continue;
		}
		if (port.mIsInput)
		{
			new (port.mMemory.data())
				LV2_Atom_Sequence{{sizeof(LV2_Atom_Sequence_Body), mSequenceType}, {0, 0}};
		}
		else
		{
			new (port.mMemory.data())
				LV2_Atom{static_cast<std::uint32_t>(bytes - sizeof(LV2_Atom)), mChunkType};
		}
	}
}

void PluginInstance::Run(std::uint32_t inFrames)
{
	ResetAtoms();
	mIsInRun = true;
	lilv_instance_run(mInstance.get(), inFrames);
	mFeatures->GetWorker().DeliverResponses();
	mIsInRun = false;
	if (mParameterPort)
	{
		ResetParameters();
	}
}

unsigned PluginInstance::GetLatency() const
{
	// More than any plugin buffers; also a guard against what is not a number.
	constexpr float kMost = 1 << 24;
	return mLatency && *mLatency > 0.0f && *mLatency < kMost ? static_cast<unsigned>(std::lround(*mLatency))
															 : 0;
}

} // namespace SonaroHost::Effects
