#include "Pictures.h"

#include "ZelUtil/CVar.h"
#include "ZelUtil/OSDependant.h"

#include <climits>
#include <gtest/gtest.h>

using namespace OSDependant;

// This program is linked with the static library; the shared one comes and goes.
TEST(SharedLibrary, StartsAfreshWithEveryLoad)
{
    const std::filesystem::path file = SHARED_LIBRARY, home = std::filesystem::current_path();
    const std::string name = file.filename().string();
    const test::TemporaryFolder folder;
    const unsigned own = CVar_GetNb();
    std::string foreign(4096, '\1');
    CStdStr<char> path = "as it was";
    for (const char* const wrong : {SHARED_LIBRARY ".no", SAMPLE_DATA, SAMPLE_DATA "/sheet.ini", ""})
        EXPECT_EQ(LoadLib(wrong), nullptr) << wrong;

    for (const std::string& from : {file.string(), "./" + std::filesystem::relative(file).string()})
    {
        EXPECT_FALSE(GetModulePath(name, path, 9)); // the file is there, but not loaded
        char* const library = LoadLib(from);
        ASSERT_TRUE(library != nullptr && LoadLib(from) == library);
        const auto get =
            reinterpret_cast<decltype(&CVar_Get)>(GetFunctionReference(library, "_Z8CVar_GetPKcS0_j"));
        const auto count =
            reinterpret_cast<decltype(&CVar_GetNb)>(GetFunctionReference(library, "_Z10CVar_GetNbv"));
        ASSERT_TRUE(get != nullptr && count != nullptr);
        EXPECT_EQ(count(), 0U);
        EXPECT_TRUE(get("name", "1.5", 0) != nullptr && count() == 1);
        EXPECT_EQ(CVar_GetNb(), own); // this program has a table of its own
        for (const char* const wrong : {"_z10cvar_getnbv", "", "malloc"}) // which it only uses
            EXPECT_EQ(GetFunctionReference(library, wrong), nullptr) << wrong;

        EXPECT_FALSE(GetModulePath(name + "x", path, 9) || GetModulePath(name.substr(1), path, 9));
        EXPECT_EQ(path, "as it was");
        std::filesystem::current_path(folder / ""); // where a relative path leads elsewhere
        ASSERT_TRUE(GetModulePath(name, path, 1000));
        const CStdStr<char> whole = path;
        EXPECT_EQ(std::filesystem::canonical(whole.c_str()).filename(), name);
        EXPECT_EQ(std::filesystem::file_size(whole.c_str()), std::filesystem::file_size(file));
        const auto length = static_cast<unsigned>(whole.size());
        for (const unsigned size : {length, length + 1, UINT_MAX, 2U, 1U, 0U})
        {
            EXPECT_EQ(GetModulePath(whole, path, size), size > 1) << size;
            EXPECT_EQ(path, whole.substr(0, std::max(size, 1U) - 1)) << size;
        }
        path = "as it was";
        std::filesystem::current_path(home);

        EXPECT_TRUE(FreeLib(library) && count() == 1); // one load is left
        EXPECT_TRUE(FreeLib(library) && !FreeLib(library) && !FreeLib(nullptr) && !FreeLib(foreign.data()));
        for (char* const wrong : {library, foreign.data(), static_cast<char*>(nullptr)})
            EXPECT_EQ(GetFunctionReference(wrong, "_Z10CVar_GetNbv"), nullptr);
    }
    const std::filesystem::path program = testing::internal::GetArgvs()[0];
    EXPECT_TRUE(GetModulePath(program.filename().string(), path, 1000));
    EXPECT_TRUE(std::filesystem::equivalent(path.c_str(), program)) << path;
}
