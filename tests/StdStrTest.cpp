#include "ZelUtil/StdStr.h"

#include <gtest/gtest.h>

using Str = CStdStr<char>;

TEST(StdStr, NullAndResourceIdentifiersAreEmptyTexts)
{
    const char* null = nullptr;
    EXPECT_TRUE(Str(null).empty());
    EXPECT_TRUE(Str(reinterpret_cast<const char*>(std::uintptr_t{1})).empty());
    EXPECT_TRUE(Str(reinterpret_cast<const char*>(std::uintptr_t{65535})).empty());

    Str text = "road";
    text += null;
    EXPECT_EQ(text, "road");
    EXPECT_EQ(text.Find(null), -1);
    EXPECT_GT(text.Compare(null), 0);
    text += " to ";
    text += Str("hell");
    text += 'o';
    EXPECT_EQ(text, "road to hello");
    text = null;
    EXPECT_TRUE(text.empty());
}

TEST(StdStr, AssignsFromItself)
{
    Str text = "a text that is too long for the short string buffer";
    const Str& same = text;
    text = same;
    EXPECT_EQ(text.length(), 51U);
    text = text.c_str() + 40;
    EXPECT_EQ(text, "ring buffer");
}

TEST(StdStr, ComparesByteByByte)
{
    EXPECT_LT(Str("B"), Str("a"));
    EXPECT_LT(Str("z"), Str("\xDC"));
    EXPECT_LT(Str("ab").Compare("b"), 0);
    EXPECT_EQ(Str("ab").Compare(Str("ab")), 0);
    EXPECT_GT(Str("ab").Compare("a"), 0);
}

TEST(StdStr, FindsAndCuts)
{
    const Str path = "maps/north/lake.bmp";
    EXPECT_EQ(path.Find("/"), 4);
    EXPECT_EQ(path.Find(Str("lake")), 11);
    EXPECT_EQ(path.Find("south"), -1);
    EXPECT_EQ(path.ReverseFind('/'), 10);
    EXPECT_EQ(path.ReverseFind('?'), -1);

    const struct
    {
        int start, count;
        const char* result;
    } cases[] = {{5, 5, "north"},
                 {-3, 4, "maps"},
                 {5, -1, ""},
                 {16, 99, "bmp"},
                 {19, 1, ""},
                 {20, 1, ""},
                 {2147483647, 2147483647, ""}};
    for (const auto& c : cases)
        EXPECT_EQ(path.Mid(c.start, c.count), c.result) << c.start << ", " << c.count;
    EXPECT_EQ(path.Mid(11), "lake.bmp");
    EXPECT_EQ(path.Mid(99), "");
}

TEST(StdStr, TrimsWhiteSpaceAtEitherEnd)
{
    EXPECT_EQ(Str(" \t\r\n\v\f\xE4 b ").TrimLeft(), "\xE4 b ");
    EXPECT_EQ(Str(" a \xE4 \t\r\n\v\f").TrimRight(), " a \xE4");
    EXPECT_EQ(Str(" \t ").TrimLeft(), "");
    EXPECT_EQ(Str(" \t ").TrimRight(), "");
}
