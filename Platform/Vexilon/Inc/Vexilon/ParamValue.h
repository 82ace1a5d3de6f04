#pragma once

#include "zorvcore/Export.h"

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <string>

namespace VX
{

// The type codes of values and keyframes.
inline constexpr unsigned kParamTypeFloat = 9;
inline constexpr unsigned kParamTypeBool = 12;

// The code of a value's type.
template <class T>
inline constexpr unsigned kParamTypeCode = 0;
template <>
inline constexpr unsigned kParamTypeCode<float> = kParamTypeFloat;
template <>
inline constexpr unsigned kParamTypeCode<bool> = kParamTypeBool;

// A parameter's control without regard to the type of its value.
class ZORV_API ParamValueBase
{
public:
	ParamValueBase() = default;
	ParamValueBase(ParamValueBase const&) = delete;
	ParamValueBase& operator=(ParamValueBase const&) = delete;

	virtual ~ParamValueBase();
	// kParamTypeFloat says that the object is a ParamValue<float>, kParamTypeBool a ParamValue<bool>.
	virtual unsigned GetTypeCode() const = 0;
	// The value as text for people.
	virtual std::u16string GetText() const = 0;
};

// A control: one value that may be set on one thread and read on another.
template <class T>
class ZORV_API ParamValue : public ParamValueBase
{
public:
	explicit ParamValue(T inValue)
		: mValue(inValue)
	{
	}

	unsigned GetTypeCode() const override { return kParamTypeCode<T>; }
	std::u16string GetText() const override;
	virtual void SetValue(T inValue) { mValue.store(inValue, std::memory_order_relaxed); }
	virtual T GetValue() const { return mValue.load(std::memory_order_relaxed); }
	// An independent control that stands at the same value.
	virtual boost::shared_ptr<ParamValueBase> Clone() const;

private:
	std::atomic<T> mValue;
};

extern template class ParamValue<float>;
extern template class ParamValue<bool>;

} // namespace VX
