#include "ZelUtil/CVar.h"

#include <gtest/gtest.h>

// One test, because the table is process-wide and forgets nothing.
TEST(CVar, TableFromItsFirstToItsLastRecord)
{
    EXPECT_TRUE(CVar_Get("a", nullptr, 1) == nullptr && CVar_Get(nullptr, "1", 1) == nullptr);
    EXPECT_TRUE(CVar_GetNb() == 0 && CVar_GetAt(0) == nullptr);
    CVar* const a = CVar_Get("a", "2.5 and more", 1);
    ASSERT_NE(a, nullptr);
    EXPECT_TRUE(a->name == "a" && a->valueText == "2.5 and more" && a->value == 2.5F && a->created);
    EXPECT_TRUE(CVar_Get("a", "7", 4) == a && CVar_Get("a", nullptr, 2) == a);
    EXPECT_TRUE(a->flags == 7 && a->value == 2.5F && a->valueText == "2.5 and more" && a->next == nullptr);
    for (unsigned i = 1; i < 1024; ++i)
    {
        CVar* const made = CVar_Get(i == 1 ? "A" : std::to_string(i).c_str(), i == 1 ? "none" : "1e-3", i);
        ASSERT_TRUE(made != nullptr && made == CVar_GetAt(i) && made->next == CVar_GetAt(i - 1));
        EXPECT_EQ(made->flags, i);
        EXPECT_EQ(made->value, i == 1 ? 0.0F : 0.001F);
    }
    EXPECT_TRUE(CVar_Get("one more", "1", 0) == nullptr && CVar_Get("a", "1", 8) == a && a->flags == 15);
    EXPECT_TRUE(CVar_GetNb() == 1024 && CVar_GetAt(1024) == nullptr && CVar_GetAt(~0U) == nullptr);
}
