#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Base/PrintableText.h"

#include <gtest/gtest.h>

namespace SonaroHost::PathTextTest
{
namespace
{

TEST(PathText, NamesOfEveryScriptAreInMessages)
{
	std::filesystem::path const path(u"Gr\u00fc\u00dfe \u65e5\u672c \U0001d11e.WAV");
	EXPECT_EQ(QuotePath(path), "'Gr\u00fc\u00dfe \u65e5\u672c \U0001d11e.WAV'");
	EXPECT_EQ(GetLowerEnding(path), ".wav");
	EXPECT_EQ(FindContainerByEnding(path), OutputContainer::kWav);
}

// Systems take names that are not Unicode: bytes that are not UTF-8, or half a pair of surrogates.
TEST(PathText, NamesThatAreNotUnicodeAreInMessages)
{
	using Text = std::filesystem::path::string_type;
	bool const hasBytes = sizeof(Text::value_type) == 1;
	Text const unit(1, static_cast<Text::value_type>(hasBytes ? 0xff : 0xd800));
	std::filesystem::path path("a.");
	path += unit;
	EXPECT_EQ(QuotePath(path), hasBytes ? "'a.\\xff'" : "'a.\xef\xbf\xbd'");
	EXPECT_EQ(FindContainerByEnding(path), std::nullopt);
}

} // namespace
} // namespace SonaroHost::PathTextTest
