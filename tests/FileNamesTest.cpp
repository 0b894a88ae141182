#include "FileNames.h"

#include <cctype>
#include <gtest/gtest.h>
#include <string>

namespace
{

// The definition, step by step.
bool Matches(const char* p, const char* s)
{
    if (*s == '\0')
        return *p == '\0';
    if (*p == '\0')
        return false;
    if (*p == '?')
        return p[1] == '\0' ? s[1] == '\0' : Matches(p + 1, s + 1);
    if (*p == '*')
        return p[1] == '\0' || Matches(p + 1, s + 1) || Matches(p, s + 1);
    if (std::tolower(static_cast<unsigned char>(*p)) != std::tolower(static_cast<unsigned char>(*s)))
        return false;
    return p[1] == '\0' ? s[1] == '\0' : Matches(p + 1, s + 1);
}

// Text number `number` over an alphabet: every text comes once.
std::string TextNumber(unsigned number, const std::string& alphabet)
{
    std::string text;
    for (; number != 0; number = (number - 1) / static_cast<unsigned>(alphabet.size()))
        text += alphabet[(number - 1) % alphabet.size()];
    return text;
}

} // namespace

TEST(FileNames, ExtensionsMatchAsDefined)
{
    int matches = 0;
    for (unsigned i = 0; i < 5461; ++i)    // up to six characters
        for (unsigned j = 0; j < 364; ++j) // up to five
        {
            const std::string pattern = TextNumber(i, "aB*?"), text = TextNumber(j, "AbB");
            const bool expected = Matches(pattern.c_str(), text.c_str());
            matches += expected;
            ASSERT_EQ(zel::MatchesExtension(pattern, text), expected) << pattern << " " << text;
        }
    EXPECT_GT(matches, 1000);

    std::string hard, text(250, 'a');
    for (int i = 0; i < 100; ++i)
        hard += "*a";
    EXPECT_TRUE(zel::MatchesExtension(hard, text));
    EXPECT_FALSE(zel::MatchesExtension(hard + "b", text));
    EXPECT_FALSE(zel::MatchesExtension("\xC4", "\xE4")); // letters beyond ASCII
}

TEST(FileNames, ExtensionBeginsAtTheLastDot)
{
    const struct
    {
        const char *path, *extension;
    } cases[] = {{"", ""},      {"a", ""},         {"a.b", ".b"},        {"a.b.c", ".c"},
                 {".b", ".b"},  {"a.", "."},       {"..", "."},          {"a.b\\c", ""},
                 {"a.b/c", ""}, {"a\\b.c", ".c"},  {"a.b/c\\d.e", ".e"}, {"c:.e", ".e"},
                 {"c:a", ""},   {"a.b:c", ".b:c"}, {".:e", ""},          {"*.*", ".*"}};
    for (const auto& c : cases)
        EXPECT_EQ(zel::Extension(c.path), c.extension) << c.path;
}
