#include "System.h"

#include <gtest/gtest.h>

namespace
{

// Every test leaves as many descriptors open as it found.
class DescriptorCheck : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo&) override { m_descriptors = test::OpenDescriptors(); }
    void OnTestEnd(const testing::TestInfo&) override { EXPECT_EQ(test::OpenDescriptors(), m_descriptors); }

    int m_descriptors = 0;
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new DescriptorCheck);
    return RUN_ALL_TESTS();
}
