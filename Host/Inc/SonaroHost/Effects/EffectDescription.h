#pragma once

#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// A value of a control that has a name.
struct ScalePoint
{
	float mValue = 0.0f;
	std::string mLabel;
};

// A control port through which an effect is set, or a parameter that messages set to a number.
struct Control
{
	// That of a parameter may be the end of its URI.
	std::string mSymbol;
	std::string mName;
	// The symbol of the unit, as "dB"; empty for none.
	std::string mUnit;
	float mDefault = 0.0f;
	// The range; infinite where the plugin states none.
	float mMinimum = 0.0f;
	float mMaximum = 0.0f;
	bool mIsToggled = false;
	bool mIsInteger = false;
	bool mIsEnumeration = false;
	bool mIsLogarithmic = false;
	// The default and the range are factors of the sample rate.
	bool mCountsInRate = false;
	// The URI of a parameter; empty for a port.
	std::string mParameter;
	// Whether the plugin states the default of a parameter; otherwise that is 0.
	bool mHasDefault = true;
	std::vector<ScalePoint> mScalePoints;
};

// A parameter that messages set to a text or, absolute, the path of a file.
struct TextParameter
{
	std::string mSymbol;
	std::string mName;
	std::string mParameter;
	bool mIsPath = false;
};

// Settings that come with a plugin.
struct Preset
{
	std::string mUri;
	std::string mName;
};

// What every list of effects shows.
struct EffectSummary
{
	std::string mUri;
	std::string mName;
	// The name of its class, as "Compressor Plugin".
	std::string mClass;
	std::string mAuthor;
	// Audio ports, without side chains and optional ones.
	unsigned mInputs = 0;
	unsigned mOutputs = 0;
	// Why it cannot be used as an effect; empty where it can.
	std::string mWhyUnusable;
};

// An installed plugin in plain values.
struct EffectDescription : EffectSummary
{
	std::vector<Control> mControls;
	std::vector<TextParameter> mTexts;
	std::vector<Preset> mPresets;
	std::vector<std::string> mRequiredFeatures;
	// Whether it states a latency, which may depend on its controls.
	bool mReportsLatency = false;
};

} // namespace SonaroHost::Effects
