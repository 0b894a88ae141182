#include <gtest/gtest.h>

#include <sys/stat.h>

static int OpenDescriptors()
{
    int count = 0;
    struct stat status;
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        count += fstat(descriptor, &status) == 0;
    return count;
}

// The tests leave as many descriptors open as they found.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const int before = OpenDescriptors(), result = RUN_ALL_TESTS(), left = OpenDescriptors() - before;
    std::cout << (left == 0 ? "" : "The tests leave descriptors open.\n");
    return left == 0 ? result : 1;
}
