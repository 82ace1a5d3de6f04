#include "MarkupCheck.h"

#include <gtest/gtest.h>

#include <vector>

namespace SonaroHost::Testing
{

namespace
{

constexpr char const* kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789:-";

// Of an element, such as ' class="a" id="b"': checks them, and takes its id.
void CheckAttributes(std::string const& inTag, std::string const& inText, std::set<std::string>& ioIds)
{
	std::set<std::string> names;
	for (std::size_t at = 0; at < inText.size() && inText.substr(at) != "/";)
	{
		std::size_t const start = inText.find_first_not_of(" \n", at);
		std::size_t const end = inText.find_first_not_of(kLetters, start);
		ASSERT_TRUE(start > at && end != std::string::npos && inText.compare(end, 2, "=\"") == 0)
			<< inTag << inText;
		std::size_t const close = inText.find('"', end + 2);
		ASSERT_NE(close, std::string::npos) << inTag << inText;
		std::string const name = inText.substr(start, end - start);
		std::string const value = inText.substr(end + 2, close - end - 2);
		EXPECT_TRUE(names.insert(name).second) << inTag << inText;
		EXPECT_EQ(value.find('<'), std::string::npos) << inTag << inText;
		EXPECT_FALSE(name.starts_with("on") || name == "src") << inTag << inText;
		EXPECT_TRUE(name != "href" || value.starts_with('#')) << inTag << inText;
		EXPECT_TRUE(name != "id" || ioIds.insert(value).second) << inTag << inText;
		at = close + 1;
	}
}

} // namespace

void ExpectMarkup(std::string const& inText, std::set<std::string> const& inElements)
{
	static std::set<std::string> const sVoid{"meta"};
	std::vector<std::string> open;
	std::set<std::string> ids;
	bool const isDeclared = inText.starts_with("<?xml ") || inText.starts_with("<!DOCTYPE html>");
	std::size_t at = inText.find('<', isDeclared ? 1 : 0);
	for (std::size_t end = 0; at != std::string::npos; at = inText.find('<', end))
	{
		end = inText.find('>', at);
		ASSERT_NE(end, std::string::npos);
		bool const isEnd = inText[at + 1] == '/';
		std::size_t const first = at + (isEnd ? 2 : 1);
		std::size_t const last = inText.find_first_not_of(kLetters, first);
		std::string const name = inText.substr(first, last - first);
		std::string const rest = inText.substr(last, end - last);
		EXPECT_EQ(inElements.count(name), 1u) << name << rest;
		if (isEnd)
		{
			ASSERT_FALSE(open.empty()) << name;
			ASSERT_EQ(open.back(), name);
			open.pop_back();
			continue;
		}
		CheckAttributes(name, rest, ids);
		if (!rest.ends_with('/') && sVoid.count(name) == 0)
		{
			open.push_back(name);
		}
	}
	EXPECT_TRUE(open.empty()) << open.back();
	// Names of XML are no addresses, and nothing else stands for one.
	for (std::size_t address = inText.find("://"); address != std::string::npos;
		 address = inText.find("://", address + 1))
	{
		EXPECT_EQ(inText.compare(address - 4, 18, "http://www.w3.org/"), 0) << inText.substr(address, 40);
	}
}

} // namespace SonaroHost::Testing
