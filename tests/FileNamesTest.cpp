#include "system/FileNames.h"

#include <cctype>
#include <gtest/gtest.h>
#include <string>

// How an extension matches a pattern, step by step as defined.
static bool Matches(const char* p, const char* s)
{
    if (*s == '\0' || *p == '\0')
        return *s == *p;
    const bool isLast = p[1] == '\0';
    if (*p == '*')
        return isLast || Matches(p + 1, s + 1) || Matches(p, s + 1);
    if (*p != '?' && std::tolower(*p) != std::tolower(*s))
        return false;
    return isLast ? s[1] == '\0' : Matches(p + 1, s + 1);
}

// Text number `number` of all texts over an alphabet.
static std::string TextNumber(std::size_t number, const std::string& alphabet)
{
    std::string text;
    for (; number != 0; number = (number - 1) / alphabet.size())
        text += alphabet[(number - 1) % alphabet.size()];
    return text;
}

static const std::string kStars = "*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a", kText(250, 'a');

TEST(FileNames, ExtensionsMatchAsDefined)
{
    for (std::size_t i = 0; i < 5461; ++i)    // up to six characters
        for (std::size_t j = 0; j < 364; ++j) // up to five
        {
            const std::string pattern = TextNumber(i, "aB*?"), text = TextNumber(j, "AbB");
            const bool matches = Matches(pattern.c_str(), text.c_str());
            ASSERT_EQ(zel::MatchesExtension(pattern, text), matches) << pattern << " " << text;
        }
    EXPECT_FALSE(zel::MatchesExtension(kStars + "b", kText)); // at once
    EXPECT_FALSE(zel::MatchesExtension("\xC4", "\xE4"));      // letters beyond ASCII

    const char* const cases[][2] = {{"", ""},         {"a", ""},         {"a.b.c", ".c"}, {".b", ".b"},
                                    {"a.", "."},      {"a.b\\c", ""},    {"a.b/c", ""},   {"c:.e", ".e"},
                                    {"a\\b.c", ".c"}, {"a.b:c", ".b:c"}, {".:e", ""}};
    for (const auto& [path, extension] : cases)
        EXPECT_EQ(zel::Extension(path), extension) << path;
}

TEST(FileNames, SearchesMatchAsOnWindows)
{
    const char* const cases[][2] = {{"*", ". .. a ab a.b A.BC a.b.c .a a..b a b "},
                                    {"*.*", ". .. a ab a.b A.BC a.b.c .a a..b a b "},
                                    {"*.", "a ab a b "}, // no extension
                                    {"* .", "a ab a b "},
                                    {"a. .", "a "},
                                    {"A.b", "a.b "},
                                    {"a* ", "a ab a.b A.BC a.b.c a..b a b "},
                                    {"a?", "a ab "},  // none at the end
                                    {"a?.b", "a.b "}, // none before a dot
                                    {"?.?", ". a a.b .a "},
                                    {"a.??", "a a.b A.BC "},
                                    {"a.*", "a a.b A.BC a.b.c a..b "},
                                    {"*.b", "a.b a..b "},
                                    {"*c", "A.BC a.b.c "},
                                    {".*", ". .. .a "},
                                    {"", ""},
                                    {"..", ""}};
    for (const auto& [pattern, matches] : cases)
    {
        std::string found;
        for (const std::string name : {".", "..", "a", "ab", "a.b", "A.BC", "a.b.c", ".a", "a..b", "a b"})
            found += zel::MatchesSearch(zel::SearchExpression(pattern), name) ? name + " " : "";
        EXPECT_EQ(found, matches) << pattern;
    }
    EXPECT_FALSE(zel::MatchesSearch(zel::SearchExpression(kStars + "b"), kText)); // at once
}
