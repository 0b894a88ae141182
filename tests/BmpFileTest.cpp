#include "Pictures.h"

#include <climits>
#include <cstring>
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
}

TEST(BmpFile, EveryLoaderRefuses)
{
    constexpr int kLoads = 0, kUnchanged = 1, kEmptied = 2;
    const struct
    {
        const char* what;
        std::size_t offset;
        std::uint32_t value;
        int fromMemory, fromFile;
        std::size_t length = 214;
    } cases[] = {{"nothing wrong", 14, 40, kLoads, kLoads},
                 {"image size is ignored", 34, 0xFFFFFFFF, kLoads, kLoads},
                 {"no BM", 0, 0x4142, kLoads, kEmptied},
                 {"core header", 14, 12, kUnchanged, kEmptied},
                 {"run lengths", 30, 1, kEmptied, kEmptied},
                 {"compressed, and ends after that field", 30, 0x01000000, kEmptied, kEmptied, 34},
                 {"ends within that field", 30, 0x01000000, kUnchanged, kEmptied, 33},
                 {"compressed, unsupported depth", 28, 0x00010002, kEmptied, kEmptied},
                 {"no width", 18, 0, kLoads, kEmptied},
                 {"no height", 22, 0, kLoads, kEmptied},
                 {"top-down", 22, 0xFFFFFFFE, kUnchanged, kEmptied},
                 {"negative width", 18, 0x80000000, kUnchanged, kEmptied},
                 {"depth 2", 28, 2, kUnchanged, kEmptied},
                 {"depth 64", 28, 64, kUnchanged, kEmptied},
                 {"table beyond the end", 46, 39, kUnchanged, kEmptied},
                 {"table that wraps to nothing", 46, 0x3FFFFFFF, kUnchanged, kEmptied},
                 {"2^31 bytes", 18, 0x7FFFFFFF, kUnchanged, kEmptied},
                 {"size that wraps to 0", 22, 0x40000000, kUnchanged, kEmptied},
                 {"pixels at 0", 10, 0, kLoads, kEmptied},
                 {"pixels in the header", 10, 53, kLoads, kEmptied},
                 {"pixels in the table", 10, 93, kLoads, kEmptied},
                 {"one pixel byte", 10, 213, kLoads, kLoads},
                 {"no pixel byte", 10, 214, kLoads, kEmptied},
                 {"pixels beyond the file", 10, 0x7FFFFFFF, kLoads, kEmptied},
                 {"pixels beyond an int", 10, 0xFFFFFFFF, kLoads, kEmptied}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        Bytes file = FileAround(RandomPacked(4, 2, 8, 10, 10), 10);
        file.resize(214);
        PutNumber(file, c.offset, c.value);
        file.resize(c.length);
        CTarvexDib fromMemory = RandomPicture(3, 3, 24), fromFile(fromMemory);
        const Bytes before = Packed(fromMemory);
        EXPECT_EQ(LoadPacked(fromMemory, Bytes(file.begin() + 14, file.end())), c.fromMemory == kLoads);
        EXPECT_EQ(fromMemory.GetScanLine(0) == nullptr, c.fromMemory == kEmptied);
        EXPECT_EQ(Packed(fromMemory) == before, c.fromMemory == kUnchanged);
        EXPECT_EQ(LoadFile(fromFile, file), c.fromFile == kLoads);
        EXPECT_EQ(fromFile.GetScanLine(0) == nullptr, c.fromFile == kEmptied);
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
