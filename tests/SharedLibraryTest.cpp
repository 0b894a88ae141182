#include "ZelUtil/CVar.h"
#include "ZelUtil/OSDependant.h"
#include "ZelUtil/ZelId.h"

#include <gtest/gtest.h>

// This program is linked with the static library; the shared one comes and goes.
TEST(SharedLibrary, StartsAfreshWithEveryLoad)
{
    const unsigned int own = CVar_GetNb();
    for (int round = 0; round < 3; ++round)
    {
        char* const library = OSDependant::LoadLib(SHARED_LIBRARY);
        ASSERT_NE(library, nullptr);
        auto* const get = reinterpret_cast<decltype(&CVar_Get)>(
            OSDependant::GetFunctionReference(library, "_Z8CVar_GetPKcS0_j"));
        auto* const count = reinterpret_cast<decltype(&CVar_GetNb)>(
            OSDependant::GetFunctionReference(library, "_Z10CVar_GetNbv"));
        auto* const toText = reinterpret_cast<decltype(&BinToString)>(
            OSDependant::GetFunctionReference(library, "_Z11BinToStringPKvtPc"));
        ASSERT_TRUE(get != nullptr && count != nullptr && toText != nullptr);
        EXPECT_EQ(count(), 0U);
        ASSERT_NE(get("name", "1.5", 0), nullptr);
        EXPECT_EQ(count(), 1U);
        EXPECT_EQ(CVar_GetNb(), own); // a table of its own
        char text[5];
        toText("\x12\xAB", 2, text);
        EXPECT_STREQ(text, "12ab");
        EXPECT_EQ(OSDependant::GetFunctionReference(library, "malloc"), nullptr); // it only uses that
        EXPECT_TRUE(OSDependant::FreeLib(library));
        EXPECT_EQ(OSDependant::GetFunctionReference(library, "_Z10CVar_GetNbv"), nullptr);
    }
}
