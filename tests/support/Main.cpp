#include <gtest/gtest.h>

#include <sys/stat.h>

namespace
{

// Every test leaves as many descriptors open as it found.
class DescriptorCheck : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo&) override { m_descriptors = OpenDescriptors(); }
    void OnTestEnd(const testing::TestInfo&) override { EXPECT_EQ(OpenDescriptors(), m_descriptors); }

    static int OpenDescriptors()
    {
        int count = 0;
        struct stat status;
        for (int descriptor = 0; descriptor < 1024; ++descriptor)
            count += fstat(descriptor, &status) == 0;
        return count;
    }

    int m_descriptors = 0;
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new DescriptorCheck);
    return RUN_ALL_TESTS();
}
