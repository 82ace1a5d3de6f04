#include "Vexilon/ParamValue.h"

#include "zorvcore/string/StringConversion.h"

#include <boost/make_shared.hpp>

#include <charconv>
#include <type_traits>

namespace VX
{

ParamValueBase::~ParamValueBase() = default;

template <class T>
std::u16string ParamValue<T>::GetText() const
{
	if constexpr (std::is_same_v<T, bool>)
	{
		return GetValue() ? u"on" : u"off";
	}
	else
	{
		// The shortest text that reads back as the same float fits.
		char text[32];
		auto const [end, error] = std::to_chars(text, text + sizeof(text), GetValue());
		return zorvcore::string::AsciiToUTF16(text, static_cast<std::size_t>(end - text));
	}
}

template <class T>
boost::shared_ptr<ParamValueBase> ParamValue<T>::Clone() const
{
	return boost::make_shared<ParamValue<T>>(GetValue());
}

template class ParamValue<float>;
template class ParamValue<bool>;

} // namespace VX
