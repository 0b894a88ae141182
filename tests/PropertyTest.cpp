#include "Properties.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>

using test::Bytes;

namespace
{

struct Property
{
    const char* name;
    void (*check)(test::Input);
};

void PrintTo(const Property& property, std::ostream* out)
{
    *out << property.name;
}

// The build lists the properties of this system: ZELUTIL_PROPERTIES is PROPERTY(Bmp) and so on.
#define PROPERTY(name) {#name, property::name},
constexpr Property kProperties[] = {ZELUTIL_PROPERTIES};
constexpr int kMutationsPerFile = 20;
constexpr int kRandomInputs = 2000;

// A copy with a few bytes changed, inserted or removed.
Bytes Mutated(Bytes bytes)
{
    for (int i = test::RandomInt(1, 6); i > 0 && !bytes.empty(); --i)
    {
        const auto at = bytes.begin() + test::RandomInt(0, static_cast<int>(bytes.size()) - 1);
        const auto value = static_cast<unsigned char>(test::RandomInt(0, 255));
        switch (test::RandomInt(0, 4))
        {
        case 0:
            bytes.insert(at, value);
            break;
        case 1:
            bytes.erase(at, std::min(at + test::RandomInt(1, 8), bytes.end()));
            break;
        case 2:
            *at = static_cast<unsigned char>(*at ^ 1 << value % 8);
            break;
        default:
            *at = value;
        }
    }
    return bytes;
}

class PropertyTest : public testing::TestWithParam<Property>
{
protected:
    void Check(const Bytes& bytes)
    {
        try
        {
            GetParam().check(test::Input(bytes.data(), bytes.size()));
        }
        catch (const test::Violation& violation)
        {
            const std::string file = std::string(GetParam().name) + ".violation";
            test::WriteFile(file, bytes);
            FAIL() << violation.what() << "\nThe input is the file "
                   << std::filesystem::absolute(file).string();
        }
    }
};

} // namespace

TEST_P(PropertyTest, HoldsForCorpusAndMutations)
{
    int files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(FUZZ_CORPUS "/") + GetParam().name))
    {
        const Bytes bytes = test::ReadFile(entry.path().string());
        ASSERT_NO_FATAL_FAILURE(Check(bytes)) << entry.path();
        for (int i = 0; i < kMutationsPerFile; ++i)
            ASSERT_NO_FATAL_FAILURE(Check(Mutated(bytes))) << entry.path();
        ++files;
    }
    EXPECT_GT(files, 0);
}

TEST_P(PropertyTest, HoldsForRandomInputs)
{
    for (int i = 0; i < kRandomInputs; ++i)
        ASSERT_NO_FATAL_FAILURE(Check(test::RandomBytes(static_cast<std::size_t>(test::RandomInt(0, 512)))));
}

INSTANTIATE_TEST_SUITE_P(All, PropertyTest, testing::ValuesIn(kProperties),
                         [](const auto& one) { return std::string(one.param.name); });
