#include "Pictures.h"

#include <climits>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>

using namespace test;

namespace
{

const TemporaryFolder& Folder()
{
    static const TemporaryFolder folder;
    return folder;
}

bool LoadFile(CTarvexDib& dib, const Bytes& file)
{
    WriteFile(Folder() / "load.bmp", file);
    return dib.Load((Folder() / "load.bmp").c_str());
}

} // namespace

TEST(BmpFile, SavesTheBytesOfTheFormat)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(3, 2, 24));
    std::memset(dib.GetScanLine(0), 100, 24);
    Bytes expected = {'B', 'M', 78, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40,
                      0,   0,   0,  3, 0, 0, 0, 2, 0, 0, 0,  1, 0, 24};
    expected.resize(54);
    expected.resize(78, 100);
    const std::string path = Folder() / "save.bmp";
    ASSERT_TRUE(dib.Save(path.c_str()));
    EXPECT_EQ(ReadFile(path), expected);
    EXPECT_EQ(Packed(dib), Bytes(expected.begin() + 14, expected.end()));

    ASSERT_TRUE(dib.Create(1, 1, 8) && dib.Save(path.c_str()));
    const Bytes palette = ReadFile(path);
    EXPECT_EQ(palette.size(), 1082U);
    EXPECT_EQ(Number(palette, 2), 1082U);
    EXPECT_EQ(Number(palette, 10), 1078U);
    EXPECT_EQ(Number(palette, 46), 256U);
}

TEST(BmpFile, EveryLoaderRefuses)
{
    enum Outcome
    {
        Loads,
        Unchanged,
        Emptied
    };
    const struct
    {
        const char* what;
        std::size_t offset;
        std::uint32_t value;
        Outcome fromMemory, fromFile;
        std::size_t length = 214;
    } cases[] = {{"nothing wrong", 14, 40, Loads, Loads},
                 {"image size is ignored", 34, 0xFFFFFFFF, Loads, Loads},
                 {"no BM", 0, 0x4142, Loads, Emptied},
                 {"core header", 14, 12, Unchanged, Emptied},
                 {"later header", 14, 108, Unchanged, Emptied},
                 {"run lengths", 30, 1, Emptied, Emptied},
                 {"bit fields", 30, 3, Emptied, Emptied},
                 {"compressed, and ends after that field", 30, 0x01000000, Emptied, Emptied, 34},
                 {"ends within that field", 30, 0x01000000, Unchanged, Emptied, 33},
                 {"compressed, unsupported depth", 28, 0x00010002, Emptied, Emptied},
                 {"no width", 18, 0, Loads, Emptied},
                 {"no height", 22, 0, Loads, Emptied},
                 {"top-down", 22, 0xFFFFFFFE, Unchanged, Emptied},
                 {"negative width", 18, 0x80000000, Unchanged, Emptied},
                 {"depth 0", 28, 0, Unchanged, Emptied},
                 {"depth 2", 28, 2, Unchanged, Emptied},
                 {"depth 64", 28, 64, Unchanged, Emptied},
                 {"table beyond the end", 46, 39, Unchanged, Emptied},
                 {"table beyond 32 bits", 46, 0x40000001, Unchanged, Emptied},
                 {"table that wraps to nothing", 46, 0x3FFFFFFF, Unchanged, Emptied},
                 {"2^31 bytes", 18, 0x7FFFFFFF, Unchanged, Emptied},
                 {"size that wraps to 0", 22, 0x40000000, Unchanged, Emptied},
                 {"pixels at 0", 10, 0, Loads, Emptied},
                 {"pixels in the header", 10, 53, Loads, Emptied},
                 {"pixels in the table", 10, 93, Loads, Emptied},
                 {"one pixel byte", 10, 213, Loads, Loads},
                 {"no pixel byte", 10, 214, Loads, Emptied},
                 {"pixels beyond the file", 10, 0x7FFFFFFF, Loads, Emptied},
                 {"pixels beyond an int", 10, 0xFFFFFFFF, Loads, Emptied}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        Bytes file = FileAround(RandomPacked(4, 2, 8, 10, 10), 10);
        file.resize(214);
        PutNumber(file, c.offset, c.value);
        file.resize(c.length);
        CTarvexDib fromMemory = RandomPicture(3, 3, 24), fromFile(fromMemory);
        const Bytes before = Packed(fromMemory);
        EXPECT_EQ(LoadPacked(fromMemory, Bytes(file.begin() + 14, file.end())), c.fromMemory == Loads);
        EXPECT_EQ(fromMemory.GetScanLine(0) == nullptr, c.fromMemory == Emptied);
        EXPECT_EQ(Packed(fromMemory) == before, c.fromMemory == Unchanged);
        EXPECT_EQ(LoadFile(fromFile, file), c.fromFile == Loads);
        EXPECT_EQ(fromFile.GetScanLine(0) == nullptr, c.fromFile == Emptied);
    }
}

TEST(BmpFile, RefusesNoBufferStreamOrPath)
{
    CTarvexDib dib = RandomPicture(3, 3, 4);
    const Bytes packed = Packed(dib), untouched(packed.size() + 1, 9);
    Bytes from = packed, to = untouched;
    const int length = static_cast<int>(packed.size());
    for (const int shorter : {INT_MIN, -1, 0, 39, length - 1})
        EXPECT_FALSE(dib.Load(from.data(), shorter) || dib.Save(to.data(), shorter)) << shorter;
    EXPECT_FALSE(dib.Load(static_cast<unsigned char*>(nullptr), length));
    EXPECT_FALSE(dib.Save(static_cast<unsigned char*>(nullptr), length));
    EXPECT_FALSE(dib.Save(static_cast<std::FILE*>(nullptr)));
    EXPECT_FALSE(dib.Load(static_cast<const char*>(nullptr)) || dib.Save(static_cast<const char*>(nullptr)));
    for (const std::string& path : {Folder() / "missing/a.bmp", Folder() / ".", std::string()})
        EXPECT_FALSE(dib.Load(path.c_str()) || dib.Save(path.c_str())) << path;
    EXPECT_EQ(to, untouched);
    EXPECT_EQ(Packed(dib), packed);
    EXPECT_TRUE(dib.Load(from.data(), INT_MAX) && dib.Save(to.data(), INT_MAX));
    EXPECT_EQ(to.back(), 9);
    EXPECT_TRUE(!std::filesystem::exists("/dev/full") || !dib.Save("/dev/full")); // noticed when it is closed

    EXPECT_FALSE(dib.Load(static_cast<std::FILE*>(nullptr)));
    EXPECT_EQ(dib.Height(), 0);
    EXPECT_FALSE(dib.Save((Folder() / "none.bmp").c_str())); // it is empty now
    EXPECT_FALSE(std::filesystem::exists(Folder() / "none.bmp"));
}

TEST(BmpFile, ColorCountOfZeroMeansAFullTable)
{
    for (const int bits : {1, 4, 8})
    {
        const int full = 1 << bits;
        Bytes packed = RandomPacked(6, 2, bits, 0, full);
        CTarvexDib fromMemory = FromPacked(packed), fromFile;
        EXPECT_EQ(fromMemory.GetDibLength(), static_cast<int>(packed.size()));
        ASSERT_TRUE(LoadFile(fromFile, FileAround(packed, full)));
        EXPECT_EQ(fromFile.GetDibLength(), static_cast<int>(packed.size()) - 4 * full);

        CTarvexDib copy(fromFile), assigned; // the table is there all the same
        assigned = copy;
        ASSERT_TRUE(assigned.ChangeToTrueColor(false) && fromMemory.ChangeToTrueColor(false));
        EXPECT_EQ(PixelBytes(assigned), PixelBytes(fromMemory));
        ASSERT_TRUE(copy.SetColorTable(copy.GetColorTable(), full));
        PutNumber(packed, 32, static_cast<std::uint32_t>(full));
        EXPECT_EQ(Packed(copy), packed);
    }
    // What the header block lacks is black, and so is a colour of which it has only a part.
    for (std::size_t extra = 0; extra < 8; ++extra)
    {
        Bytes file = FileAround(BlankPacked(4, 1, 8, 0, 0), 0);
        PutNumber(file, 10, static_cast<std::uint32_t>(54 + extra));
        file.insert(file.begin() + 54, extra, 77);
        file[54 + extra] = 1; // the first pixel names the second colour
        CTarvexDib dib;
        ASSERT_TRUE(LoadFile(dib, file));
        CTarvexDib trueColor(dib);
        ASSERT_TRUE(trueColor.ChangeToTrueColor(false) && dib.SetColorTable(dib.GetColorTable(), 256));
        EXPECT_EQ(*trueColor.GetPixelFast(0, 0), 0) << extra;
        EXPECT_EQ(dib.GetColorTable()[0].rgbBlue, extra >= 4 ? 77 : 0) << extra;
        EXPECT_EQ(dib.GetColorTable()[255].rgbBlue, 0);
    }
}

TEST(BmpFile, HeaderBlockOfManyKilobytes)
{
    Bytes file = FileAround(RandomPacked(1, 1, 32, 0, 100000), 100000);
    CTarvexDib dib;
    ASSERT_TRUE(LoadFile(dib, file));
    EXPECT_EQ(PixelBytes(dib), Bytes(file.end() - 4, file.end()));
    EXPECT_EQ(std::memcmp(dib.GetColorTable(), file.data() + 54, 400000), 0);
    file.resize(200000);
    EXPECT_FALSE(LoadFile(dib, file));
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
        std::map<std::string, int> header;
        for (std::string word; pam >> word && word != "ENDHDR";)
            if (word == "WIDTH" || word == "HEIGHT" || word == "DEPTH")
                pam >> header[word];
        pam.get();
        const Bytes expected{std::istreambuf_iterator<char>(pam), {}};

        CTarvexDib dib;
        const auto name = entry.path().filename().replace_extension(".bmp");
        ASSERT_TRUE(dib.Load((SAMPLE_DATA / name).string().c_str()));
        ASSERT_TRUE(dib.ChangeToTrueColor(header["DEPTH"] == 4));
        EXPECT_EQ(dib.Width(), header["WIDTH"]);
        EXPECT_EQ(dib.Height(), header["HEIGHT"]);
        Bytes samples;
        for (int y = 0; y < dib.Height(); ++y)
            for (int x = 0; x < dib.Width(); ++x)
                for (int channel = 0; channel < header["DEPTH"]; ++channel)
                    samples.push_back(dib.GetPixelFast(x, y)[channel == 3 ? 3 : 2 - channel]);
        EXPECT_TRUE(samples == expected);
        ++files;
    }
    EXPECT_GE(files, 7);
}
