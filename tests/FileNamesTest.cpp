#include "system/FileNames.h"

#include <gtest/gtest.h>
#include <string>

using Row = const char* const[2];

static const std::string kStars = "*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a", kText(250, 'a');

// "*" matches one character or more, "?" exactly one. Each row has an x for each of the texts that match.
TEST(FileNames, ExtensionsMatch)
{
    const Row paths[] = {{"", ""},      {"a.b.c", ".c"}, {".b", ".b"},     {"a.", "."},       {"a.b\\c", ""},
                         {"a.b/c", ""}, {"c:.e", ".e"},  {"a\\b.c", ".c"}, {"a.b:c", ".b:c"}, {".:e", ""}};
    for (const auto& [path, extension] : paths)
        EXPECT_EQ(zel::Extension(path), extension) << path;

    const Row rows[] = {{"", "x-------"},     {"*", "-xxxxxxx"},   {"?", "-xx-----"},    {"A", "-x------"},
                        {"a?", "---xx---"},   {"a*", "---xxxxx"},  {"*b", "---xx-xx"},   {"**", "---xxxxx"},
                        {"*?", "---xxxxx"},   {"a*b", "------xx"}, {"*a*b", "--------"}, {"*b*", "-----x-x"},
                        {"?*?", "-----xxx"},  {"*ab", "------xx"}, {"abc", "-----x--"},  {"?B*", "-----x-x"},
                        {"*b*b", "-------x"}, {"ab?", "-----x--"}};
    for (const auto& [pattern, expected] : rows)
    {
        std::string marks;
        for (const std::string text : {"", "a", "b", "ab", "aB", "abc", "aab", "abab"})
            marks += zel::MatchesExtension(pattern, text) ? 'x' : '-';
        EXPECT_EQ(marks, expected) << pattern;
    }
    // At once, and letters beyond ASCII differ in case.
    EXPECT_FALSE(zel::MatchesExtension(kStars + "b", kText) || zel::MatchesExtension("\xC4", "\xE4"));
}

// "?" also matches no character at the end and before a dot, "*." only names without an extension.
TEST(FileNames, SearchesMatchAsOnWindows)
{
    const Row rows[] = {{"*", "xxxxxxxx"},    {"*.*", "xxxxxxxx"},  {"* .", "--xx----"}, {"a* ", "--xxxxxx"},
                        {"a. .", "--x-----"}, {"A.b", "----x---"},  {"a?", "--xx----"},  {"a?.b", "----x---"},
                        {"?.?", "x-x-x---"},  {"a.??", "--x-xx--"}, {"a.*", "--x-xxxx"}, {"*.b", "----x--x"},
                        {"*c", "-----xx-"},   {"..", "--------"}};
    for (const auto& [pattern, expected] : rows)
    {
        std::string marks;
        for (const std::string name : {".", "..", "a", "ab", "a.b", "A.BC", "a.b.c", "a..b"})
            marks += zel::MatchesSearch(zel::SearchExpression(pattern), name) ? 'x' : '-';
        EXPECT_EQ(marks, expected) << pattern;
    }
    EXPECT_FALSE(zel::MatchesSearch(zel::SearchExpression(kStars + "b"), kText)); // at once
}
