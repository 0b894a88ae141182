#include "platform/posix/SearchPattern.h"

#include <gtest/gtest.h>
#include <string>

// What the search for files by name answers on Windows.
TEST(SearchPattern, MatchesAsWindowsDoes)
{
    const std::string names[] = {".", "..", "a", "ab", "a.b", "A.BC", "ab.c", "a.b.c", ".a", "a..b", "a b"};
    const struct
    {
        const char* pattern;
        std::string matches; // joined by |
    } cases[] = {
        {"*", ".|..|a|ab|a.b|A.BC|ab.c|a.b.c|.a|a..b|a b|"},
        {"*.*", ".|..|a|ab|a.b|A.BC|ab.c|a.b.c|.a|a..b|a b|"},
        {"*.", "a|ab|a b|"},  // no extension
        {"*..", "a|ab|a b|"}, // as many dots as one likes
        {"a.", "a|"},
        {"a. .", "a|"},
        {"a", "a|"},
        {"A.b", "a.b|"},
        {"?", "a|"},
        {"??", "a|ab|"},
        {"a?", "a|ab|"},  // none at the end
        {"a?.b", "a.b|"}, // none before a dot
        {"?.?", ".|a|a.b|.a|"},
        {"a.?", "a|a.b|"},
        {"a.??", "a|a.b|A.BC|"},
        {"a.*", "a|a.b|A.BC|a.b.c|a..b|"},
        {"a*.*", "a|ab|a.b|A.BC|ab.c|a.b.c|a..b|a b|"},
        {"*.b", "a.b|a..b|"},
        {"*.b.c", "a.b.c|"},
        {"*c", "A.BC|ab.c|a.b.c|"},
        {"*b*", "ab|a.b|A.BC|ab.c|a.b.c|a..b|a b|"},
        {".*", ".|..|.a|"},
        {"", ""},
        {".", ""},
        {"..", ""},
        {" ", ""},
        {"a b ", "a b|"},
        {"[a]", ""},
    };
    for (const auto& c : cases)
    {
        const zel::SearchPattern pattern(c.pattern);
        std::string matches;
        for (const std::string& name : names)
            matches += pattern.Matches(name) ? name + "|" : "";
        EXPECT_EQ(matches, c.matches) << c.pattern;
    }

    std::string hard, text(250, 'a');
    for (int i = 0; i < 100; ++i)
        hard += "*a";
    EXPECT_TRUE(zel::SearchPattern(hard).Matches(text));
    EXPECT_FALSE(zel::SearchPattern(hard + "b").Matches(text));
}
