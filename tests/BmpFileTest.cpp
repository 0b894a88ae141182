#include "Properties.h"

#include <climits>
#include <gtest/gtest.h>

using namespace test;

// Each field that decides whether a file loads, at its limits; files that end at different places. The
// property compares what loads with a plain reading of the same bytes.
TEST(BmpFile, HeadersAreCheckedAtTheirLimits)
{
    const Bytes picture = FileAround(RandomPacked(4, 2, 8, 10, 10), 10);
    for (const unsigned field : {0U, 10U, 14U, 18U, 22U, 28U, 30U, 34U, 46U})
        for (const std::uint32_t value :
             {0U,          1U,          2U,          12U,        40U,         53U,
              54U,         64U,         93U,         94U,        215U,        216U,
              0x4142U,     0x4D41U,     0x10002U,    0x1000000U, 0x3FFFFFFFU, 0x40000000U,
              0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU})
            for (const unsigned length : {33U, 34U, 53U, 54U, 95U, 216U})
            {
                Bytes file = picture;
                file.resize(216);
                PutNumber(file, field, value);
                EXPECT_NO_THROW(property::Bmp(Input(file.data(), length))) << value << " at " << field;
            }

    // The table is read in parts. Lengths: whole, no pixel byte, and cut within a part.
    const Bytes large = FileAround(RandomPacked(1, 1, 32, 0, 100000), 100000);
    for (const std::size_t length : {large.size(), large.size() - 4, std::size_t{200000}})
        EXPECT_NO_THROW(property::Bmp(Input(large.data(), length)));
}

TEST(BmpFile, RefusesNullBuffersStreamsAndPaths)
{
    const TemporaryFolder folder;
    CTarvexDib dib = RandomPicture(3, 3, 4);
    const Bytes packed = Packed(dib), untouched(packed.size() + 1, 9);
    Bytes from = packed, to = untouched;
    for (const int length : {INT_MIN, -1, 0})
        EXPECT_FALSE(dib.Load(from.data(), length) || dib.Save(to.data(), length)) << length;
    EXPECT_FALSE(dib.Load(static_cast<unsigned char*>(nullptr), INT_MAX));
    EXPECT_FALSE(dib.Save(static_cast<unsigned char*>(nullptr), INT_MAX));
    EXPECT_FALSE(dib.Save(static_cast<std::FILE*>(nullptr)));
    EXPECT_FALSE(dib.Load(static_cast<const char*>(nullptr)) || dib.Save(static_cast<const char*>(nullptr)));
    for (const std::string& path : {folder / "missing/a.bmp", folder / ".", std::string()})
        EXPECT_FALSE(dib.Load(path.c_str()) || dib.Save(path.c_str())) << path;
    EXPECT_TRUE(to == untouched && Packed(dib) == packed);
    EXPECT_TRUE(dib.Load(from.data(), INT_MAX) && dib.Save(to.data(), INT_MAX) && to.back() == 9);

    EXPECT_TRUE(!dib.Load(static_cast<std::FILE*>(nullptr)) && dib.Height() == 0);
    // The image is empty now, and saving it creates no file.
    EXPECT_FALSE(dib.Save((folder / "none").c_str()) || std::filesystem::exists(folder / "none"));
}

// A file's colours stay with the image and its copies where the header counts none. What the header block
// lacks is black, and so is a colour of which it has only a part.
TEST(BmpFile, ColorsBeyondTheirCountRemain)
{
    for (std::size_t extra = 0; extra < 12; ++extra)
    {
        Bytes file = FileAround(BlankPacked(4, 1, 8, 0, 0), 0);
        PutNumber(file, 10, static_cast<std::uint32_t>(54 + extra));
        file.insert(file.begin() + 54, extra, 77);
        file[54 + extra] = 1; // the first pixel names the second colour
        CTarvexDib dib, assigned;
        ASSERT_TRUE(dib.Load(Scratch(file).c_str()));
        assigned = CTarvexDib(dib);
        ASSERT_TRUE(assigned.ChangeToTrueColor(false));
        EXPECT_EQ(*assigned.GetPixelFast(0, 0), extra >= 8 ? 77 : 0) << extra;
    }
}

// The PAM files hold what other programs read from the same BMP files: red, green, blue, and alpha where the
// file has it, from the top row down.
TEST(BmpFile, FilesOfOtherProgramsGiveTheirPixels)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA))
    {
        SCOPED_TRACE(entry.path());
        std::ifstream pam(entry.path(), std::ios::binary);
        std::string word;
        int width = 0, height = 0, channels = 0;
        pam >> word >> word >> width >> word >> height >> word >> channels;
        while (pam && word != "ENDHDR")
            pam >> word;
        pam.get();
        CTarvexDib dib;
        const auto name = entry.path().filename().replace_extension(".bmp");
        ASSERT_TRUE(dib.Load((SAMPLE_DATA / name).string().c_str()));
        ASSERT_TRUE(dib.ChangeToTrueColor(channels == 4));
        EXPECT_TRUE(dib.Width() == width && dib.Height() == height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int channel = 0; channel < channels; ++channel)
                    ASSERT_EQ(pam.get(), dib.GetPixelFast(x, y)[channel == 3 ? 3 : 2 - channel]);
        ++files;
    }
    EXPECT_GE(files, 7);
}
