#include "ZelUtil/CVar.h"

#include <gtest/gtest.h>
#include <string>

// One test, as the table is one for the process and never forgets.
TEST(CVar, TableFromItsFirstToItsLastRecord)
{
    ASSERT_EQ(CVar_GetNb(), 0U);
    EXPECT_EQ(CVar_GetAt(0), nullptr);
    EXPECT_EQ(CVar_Get("a", nullptr, 1), nullptr);
    EXPECT_EQ(CVar_Get(nullptr, "1", 1), nullptr);
    EXPECT_EQ(CVar_GetNb(), 0U);

    CVar* const a = CVar_Get("a", "2.5 and more", 1);
    CVar* const upper = CVar_Get("A", "1e-3", 0);
    CVar* const text = CVar_Get("a text", "none", 0x80000000U);
    ASSERT_TRUE(a != nullptr && upper != nullptr && text != nullptr);
    EXPECT_EQ(a->valueText, "2.5 and more");
    EXPECT_EQ(a->value, 2.5F);
    EXPECT_EQ(upper->value, 0.001F);
    EXPECT_EQ(text->value, 0.0F);
    EXPECT_TRUE(a->created && upper->created && text->created);

    EXPECT_EQ(CVar_Get("a", "7", 4), a);
    EXPECT_EQ(CVar_Get("a", nullptr, 2), a);
    EXPECT_EQ(a->flags, 7U);
    EXPECT_EQ(a->value, 2.5F);
    EXPECT_EQ(text->flags, 0x80000000U);
    EXPECT_TRUE(CVar_GetAt(0) == a && CVar_GetAt(1) == upper && CVar_GetAt(2) == text);
    EXPECT_TRUE(text->next == upper && upper->next == a && a->next == nullptr);
    EXPECT_EQ(text - a, 2);

    const CVar copy(*text);
    EXPECT_EQ(copy.name, "a text");
    EXPECT_EQ(copy.next, upper);
    CVar_Init(0, nullptr);
    CVar_Fini();
    CVar_SaveVars("cvar.txt");
    EXPECT_EQ(CVar_GetNb(), 3U);

    for (int i = 3; i < 1024; ++i)
        ASSERT_EQ(CVar_Get(("v" + std::to_string(i)).c_str(), "0.1", 0), a + i);
    EXPECT_EQ(CVar_Get("one more", "1", 0), nullptr);
    EXPECT_EQ(CVar_GetNb(), 1024U);
    EXPECT_EQ(CVar_GetAt(1024), nullptr);
    EXPECT_EQ(CVar_Get("v1023", nullptr, 0)->next, a + 1022);
    EXPECT_EQ(CVar_Get("a", "1", 8), a);
    EXPECT_EQ(a->flags, 15U);
}
