#include "system/FileNames.h"

#include "ExtensionModel.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

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
            const bool expected = test::Matches(pattern.c_str(), text.c_str());
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

// What the search for files by name answers on Windows.
TEST(FileNames, SearchesMatchAsOnWindows)
{
    const std::string names[] = {".",    "..",    "a",  "ab",   "a.b", "A.BC",
                                 "ab.c", "a.b.c", ".a", "a..b", "a b", "z"};
    const struct
    {
        const char* pattern;
        std::string matches; // joined by |
    } cases[] = {
        {"*", ".|..|a|ab|a.b|A.BC|ab.c|a.b.c|.a|a..b|a b|z|"},
        {"*.*", ".|..|a|ab|a.b|A.BC|ab.c|a.b.c|.a|a..b|a b|z|"},
        {"*.", "a|ab|a b|z|"}, // no extension
        {"* .", "a|ab|a b|z|"},
        {"a. .", "a|"},
        {"A.b", "a.b|"},
        {"Z", "z|"},
        {"a* ", "a|ab|a.b|A.BC|ab.c|a.b.c|a..b|a b|"},
        {"?", "a|z|"},
        {"a?", "a|ab|"},  // none at the end
        {"a?.b", "a.b|"}, // none before a dot
        {"?.?", ".|a|a.b|.a|z|"},
        {"a.??", "a|a.b|A.BC|"},
        {"a.*", "a|a.b|A.BC|a.b.c|a..b|"},
        {"a*.*", "a|ab|a.b|A.BC|ab.c|a.b.c|a..b|a b|"},
        {"*.b", "a.b|a..b|"},
        {"*.b.c", "a.b.c|"},
        {"*c", "A.BC|ab.c|a.b.c|"},
        {"*b*", "ab|a.b|A.BC|ab.c|a.b.c|a..b|a b|"},
        {".*", ".|..|.a|"},
        {"", ""},
        {"..", ""},
        {"a b ", "a b|"},
        {"[a]", ""},
    };
    for (const auto& c : cases)
    {
        const std::string expression = zel::SearchExpression(c.pattern);
        std::string matches;
        for (const std::string& name : names)
            matches += zel::MatchesSearch(expression, name) ? name + "|" : "";
        EXPECT_EQ(matches, c.matches) << c.pattern;
    }

    std::string hard, text(250, 'a');
    for (int i = 0; i < 100; ++i)
        hard += "*a";
    EXPECT_TRUE(zel::MatchesSearch(zel::SearchExpression(hard), text));
    EXPECT_FALSE(zel::MatchesSearch(zel::SearchExpression(hard + "b"), text));
}
