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
    const std::string name = file.filename().string(), program = testing::internal::GetArgvs()[0];
    const test::TemporaryFolder folder;
    char foreign[4096] = {};
    CStdStr<char> path;
    for (const char* const wrong : {SHARED_LIBRARY ".no", SAMPLE_DATA, SAMPLE_DATA "/sheet.ini", ""})
        EXPECT_EQ(LoadLib(wrong), nullptr) << wrong;
    ASSERT_TRUE(GetModulePath(std::filesystem::path(program).filename().string(), path, 1000));
    EXPECT_TRUE(std::filesystem::equivalent(path.c_str(), program)) << path;

    for (const std::string& from : {file.string(), "./" + std::filesystem::relative(file).string()})
    {
        path = "as it was";
        EXPECT_FALSE(GetModulePath(name, path, 9)); // the file is there, but not loaded
        char* const library = LoadLib(from);
        ASSERT_TRUE(library != nullptr && LoadLib(from) == library);
        EXPECT_FALSE(GetModulePath(name + "x", path, 9) || GetModulePath(name.substr(1), path, 9));
        EXPECT_EQ(path, "as it was");
        std::filesystem::current_path(folder / ""); // where a relative path leads elsewhere
        ASSERT_TRUE(GetModulePath(name, path, 1000));
        EXPECT_EQ(std::filesystem::canonical(path.c_str()).filename(), name);
        EXPECT_EQ(std::filesystem::file_size(path.c_str()), std::filesystem::file_size(file));
        std::filesystem::current_path(home);
        const CStdStr<char> whole = path;
        for (const unsigned size : {static_cast<unsigned>(whole.size()), UINT_MAX, 2U, 1U, 0U})
        {
            EXPECT_EQ(GetModulePath(whole, path, size), size > 1) << size;
            EXPECT_EQ(path, whole.substr(0, std::max(size, 1U) - 1)) << size;
        }

        const auto find = [&](const char* function) { return GetFunctionReference(library, function); };
        const auto count = reinterpret_cast<decltype(&CVar_GetNb)>(find("_Z10CVar_GetNbv"));
        const auto get = reinterpret_cast<decltype(&CVar_Get)>(find("_Z8CVar_GetPKcS0_j"));
        ASSERT_TRUE(get != nullptr && count != nullptr);
        EXPECT_TRUE(count() == 0 && get("name", "1.5", 0) != nullptr && count() == 1);
        // `malloc` is imported, not exported.
        for (const char* const wrong : {"_z10cvar_getnbv", "", "malloc"})
            EXPECT_EQ(find(wrong), nullptr) << wrong;

        EXPECT_TRUE(FreeLib(library) && count() == 1 && FreeLib(library)); // the second FreeLib unloads it
        for (char* const wrong : {library, foreign, static_cast<char*>(nullptr)})
            EXPECT_FALSE(FreeLib(wrong) || GetFunctionReference(wrong, "_Z10CVar_GetNbv") != nullptr);
    }
}
