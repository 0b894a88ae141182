#include "Pictures.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sstream>

using namespace test;

namespace
{

constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};

void Put(Bytes& bytes, std::size_t offset, std::uint32_t value, int width = 4)
{
    for (int i = 0; i < width; ++i)
        bytes[offset + static_cast<std::size_t>(i)] = static_cast<unsigned char>(value >> (8 * i));
}

// Loads from a buffer that ends where it is said to end, so that the sanitizer sees any step beyond.
bool LoadPacked(CTarvexDib& dib, const Bytes& packed)
{
    const std::unique_ptr<unsigned char[]> exact(new unsigned char[packed.size()]);
    std::copy(packed.begin(), packed.end(), exact.get());
    return dib.Load(exact.get(), static_cast<int>(packed.size()));
}

} // namespace

TEST(TarvexDibFile, SavesTheBytesOfTheFormat)
{
    CTarvexDib dib;
    ASSERT_TRUE(dib.Create(3, 2, 24));
    for (int i = 0; i < 24; ++i)
        dib.GetScanLine(0)[i] = static_cast<unsigned char>(100 + i);
    Bytes expected = {'B', 'M', 78, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40,
                      0,   0,   0,  3, 0, 0, 0, 2, 0, 0, 0,  1, 0, 24};
    expected.resize(54);
    for (int i = 0; i < 24; ++i)
        expected.push_back(static_cast<unsigned char>(100 + i));

    const TemporaryFolder folder;
    ASSERT_TRUE(dib.Save((folder / "a.bmp").c_str()));
    EXPECT_EQ(ReadFile(folder / "a.bmp"), expected);
    EXPECT_EQ(Packed(dib), Bytes(expected.begin() + 14, expected.end()));

    Bytes room(65, 9);
    EXPECT_FALSE(dib.Save(room.data(), 63));
    EXPECT_EQ(room, Bytes(65, 9));
    EXPECT_TRUE(dib.Save(room.data(), 65));
    EXPECT_EQ(room[64], 9);

    dib = RandomPicture(1, 1, 8);
    ASSERT_TRUE(dib.Save((folder / "a.bmp").c_str()));
    const Bytes palette = ReadFile(folder / "a.bmp");
    EXPECT_EQ(palette.size(), 1082U);
    EXPECT_EQ(palette[2] | palette[3] << 8, 1082);
    EXPECT_EQ(palette[10] | palette[11] << 8, 1078);
    EXPECT_EQ(palette[46] | palette[47] << 8, 256);
}

TEST(TarvexDibFile, EveryDepthComesBackFromBothForms)
{
    for (const int bits : kDepths)
        for (int width = 1; width < 20; ++width)
        {
            SCOPED_TRACE(testing::Message() << width << " pixels of " << bits << " bits");
            const int table = bits <= 8 ? RandomInt(1, 1 << bits) : 0;
            Bytes packed = RandomPacked(width, 3, bits, table, table);
            Put(packed, 20,
                static_cast<std::uint32_t>(RandomInt(0, 2) - 1)); // the image size is never believed
            CTarvexDib dib, fromFile;
            ASSERT_TRUE(LoadPacked(dib, packed));
            EXPECT_EQ(Packed(dib), packed);
            EXPECT_EQ(dib.BitCount(), bits);

            const File file(std::tmpfile(), std::fclose);
            std::fputs("ahead", file.get());
            ASSERT_TRUE(dib.Save(file.get()));
            std::fputs("behind", file.get());
            std::fseek(file.get(), 5, SEEK_SET);
            ASSERT_TRUE(fromFile.Load(file.get()));
            EXPECT_EQ(Packed(fromFile), packed);
            EXPECT_EQ(std::fgetc(file.get()), 'b');
        }
}

TEST(TarvexDibFile, ColorCountOfZeroMeansAFullTableInMemoryOnly)
{
    for (const int bits : {1, 4, 8})
    {
        const int full = 1 << bits;
        Bytes packed = RandomPacked(6, 2, bits, 0, full);
        CTarvexDib dib, file;
        ASSERT_TRUE(LoadPacked(dib, packed));
        EXPECT_EQ(dib.GetDibLength(), static_cast<int>(packed.size()));

        // From a file the count stays 0 while the table is there, in copies too.
        ASSERT_TRUE(LoadBytes(file, FileAround(packed, full)));
        EXPECT_EQ(file.GetDibLength(), static_cast<int>(packed.size()) - 4 * full);
        CTarvexDib copy(file), assigned;
        assigned = copy;
        ASSERT_TRUE(assigned.ChangeToTrueColor(false) && dib.ChangeToTrueColor(false));
        EXPECT_EQ(PixelBytes(assigned), PixelBytes(dib));
        const TemporaryFolder folder;
        ASSERT_TRUE(copy.Save((folder / "a.bmp").c_str())); // without its table
        EXPECT_EQ(ReadFile(folder / "a.bmp").size(), 14U + packed.size() - 4U * static_cast<unsigned>(full));
        ASSERT_TRUE(copy.SetColorTable(copy.GetColorTable(), full));
        Put(packed, 32, static_cast<std::uint32_t>(full));
        EXPECT_EQ(Packed(copy), packed);
    }
    // A block that ends in the middle of a colour, or has none: what is missing is black.
    for (std::size_t extra = 0; extra < 8; ++extra)
    {
        Bytes file = FileAround(RandomPacked(4, 1, 8, 0, 0), 0);
        Put(file, 10, static_cast<std::uint32_t>(54 + extra));
        file.insert(file.begin() + 54, extra, 77);
        file[54 + extra] = 1; // the first pixel names the second colour
        CTarvexDib dib;
        ASSERT_TRUE(LoadBytes(dib, file));
        CTarvexDib trueColor(dib);
        ASSERT_TRUE(trueColor.ChangeToTrueColor(false));
        EXPECT_EQ(*trueColor.GetPixelFast(0, 0), 0) << extra;
        ASSERT_TRUE(dib.SetColorTable(dib.GetColorTable(), 256));
        EXPECT_EQ(dib.GetColorTable()[0].rgbBlue, extra >= 4 ? 77 : 0) << extra;
        EXPECT_EQ(dib.GetColorTable()[255].rgbBlue, 0);
    }
    CTarvexDib dib; // above 8 bits memory knows no table, a file does
    ASSERT_TRUE(LoadPacked(dib, RandomPacked(2, 2, 24, 5, 0)));
    EXPECT_EQ(dib.GetDibLength(), 56);
    ASSERT_TRUE(LoadBytes(dib, FileAround(RandomPacked(2, 2, 24, 5, 7), 7)));
    EXPECT_EQ(dib.GetDibLength(), 76);
}

TEST(TarvexDibFile, MemoryFormRefuses)
{
    enum After
    {
        Unchanged,
        Emptied
    };
    const struct
    {
        const char* what;
        std::size_t offset;
        std::uint32_t value;
        std::size_t length;
        After after;
    } cases[] = {{"core header", 0, 12, 200, Unchanged},
                 {"later header", 0, 108, 200, Unchanged},
                 {"run lengths", 16, 1, 200, Emptied},
                 {"bit fields", 16, 3, 200, Emptied},
                 {"compressed, cut", 16, 0x01000000, 20, Emptied},
                 {"compressed, of no depth", 13, 0x01000000, 200, Emptied},
                 {"top-down", 8, 0xFFFFFFFF, 200, Unchanged},
                 {"negative width", 4, 0x80000000, 200, Unchanged},
                 {"strange depth", 14, 2, 200, Unchanged},
                 {"depth 0", 14, 0, 200, Unchanged},
                 {"depth 64", 14, 64, 200, Unchanged},
                 {"table beyond the buffer", 32, 39, 200, Unchanged},
                 {"table beyond 32 bits", 32, 0x40000001, 200, Unchanged},
                 {"table that wraps to nothing", 32, 0x3FFFFFFF, 200, Unchanged},
                 {"picture of 2^31 bytes", 4, 0x7FFFFFFF, 200, Unchanged},
                 {"size that wraps to 0", 8, 0x40000000, 200, Unchanged}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        Bytes packed = RandomPacked(4, 2, 8, 10, 10);
        packed.resize(200);
        Put(packed, c.offset, c.value, c.offset == 14 ? 2 : 4);
        packed.resize(c.length);
        CTarvexDib dib = RandomPicture(3, 3, 24);
        const Bytes before = Packed(dib);
        EXPECT_FALSE(LoadPacked(dib, packed));
        EXPECT_EQ(Packed(dib), c.after == Emptied ? Bytes() : before);
    }

    const Bytes whole = RandomPacked(5, 3, 4, 0, 16);
    CTarvexDib dib = RandomPicture(3, 3, 24);
    const Bytes before = Packed(dib);
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(
            LoadPacked(dib, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))));
    EXPECT_FALSE(dib.Load(const_cast<unsigned char*>(whole.data()), -1));
    EXPECT_FALSE(dib.Load(static_cast<unsigned char*>(nullptr), 200));
    EXPECT_EQ(Packed(dib), before);
    EXPECT_TRUE(LoadPacked(dib, whole));
}

TEST(TarvexDibFile, StreamFormRefusesAndEmpties)
{
    const struct
    {
        const char* what;
        std::size_t offset;
        std::uint32_t value;
    } cases[] = {{"no BM", 0, 0x00004142},
                 {"core header", 14, 12},
                 {"later header", 14, 124},
                 {"run lengths", 30, 1},
                 {"compressed", 30, 2},
                 {"bit fields", 30, 3},
                 {"top-down", 22, 0xFFFFFFFE},
                 {"no width", 18, 0},
                 {"no height", 22, 0},
                 {"offset 0", 10, 0},
                 {"offset in the header", 10, 53},
                 {"offset in the table", 10, 93},
                 {"offset beyond the file", 10, 0x7FFFFFFF},
                 {"offset without sign", 10, 0xFFFFFFFF},
                 {"huge table", 46, 0x40000000},
                 {"2^31 bytes", 18, 0x7FFFFFF0},
                 {"product that wraps", 22, 0x40000000}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        Bytes file = FileAround(RandomPacked(4, 2, 8, 10, 10), 10);
        Put(file, c.offset, c.value);
        CTarvexDib dib = RandomPicture(3, 3, 24);
        EXPECT_FALSE(LoadBytes(dib, file));
        EXPECT_EQ(dib.GetScanLine(0), nullptr);
        EXPECT_EQ(dib.Height(), 0);
    }
    CTarvexDib dib = RandomPicture(3, 3, 24);
    EXPECT_FALSE(dib.Load(static_cast<std::FILE*>(nullptr)));
    EXPECT_EQ(dib.Height(), 0);
}

TEST(TarvexDibFile, MissingPixelsAreZero)
{
    const Bytes file = FileAround(RandomPacked(5, 3, 24, 0, 0), 0);
    for (std::size_t length = 0; length <= file.size(); ++length)
    {
        CTarvexDib dib = RandomPicture(3, 3, 24);
        const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
        ASSERT_EQ(LoadBytes(dib, cut), length > 54) << length;
        if (length <= 54)
            continue;
        Bytes expected(cut.begin() + 54, cut.end());
        expected.resize(48);
        EXPECT_EQ(PixelBytes(dib), expected);
    }
    // A header block that is really as large as it claims.
    Bytes large = FileAround(RandomPacked(1, 1, 32, 0, 100000), 100000);
    CTarvexDib dib;
    ASSERT_TRUE(LoadBytes(dib, large));
    EXPECT_EQ(PixelBytes(dib), Bytes(large.end() - 4, large.end()));
    EXPECT_EQ(std::memcmp(dib.GetColorTable(), large.data() + 54, 400000), 0);
    large.resize(200000);
    EXPECT_FALSE(LoadBytes(dib, large));
}

TEST(TarvexDibFile, PathsThatCannotBeOpenedChangeNothing)
{
    const TemporaryFolder folder;
    CTarvexDib dib = RandomPicture(3, 3, 24);
    const Bytes before = Packed(dib);
    for (const std::string& path : {folder / "missing.bmp", folder / ".", std::string()})
    {
        EXPECT_FALSE(dib.Load(path.c_str())) << path;
        EXPECT_FALSE(dib.Save((path + "/").c_str())) << path;
    }
    EXPECT_FALSE(dib.Load(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(dib.Save(static_cast<const char*>(nullptr)));
    EXPECT_EQ(Packed(dib), before);

    WriteFile(folder / "text.bmp", {'B', 'M', 'x'});
    EXPECT_FALSE(dib.Load((folder / "text.bmp").c_str()));
    EXPECT_FALSE(dib.Save((folder / "none.bmp").c_str())); // empty by now
    EXPECT_FALSE(std::filesystem::exists(folder / "none.bmp"));
    unsigned char room[64];
    EXPECT_FALSE(dib.Save(room, sizeof room));
    const File file(std::tmpfile(), std::fclose);
    EXPECT_FALSE(dib.Save(file.get()));
    EXPECT_EQ(std::ftell(file.get()), 0);
}

TEST(TarvexDibFile, IncompleteWritesAreReported)
{
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "needs a device that is always full";
    const CTarvexDib small = RandomPicture(1, 1, 24), large = RandomPicture(500, 500, 24);
    EXPECT_FALSE(small.Save("/dev/full")); // refused only when the file is closed
    EXPECT_FALSE(large.Save("/dev/full"));
    const File readOnly(std::fopen("/dev/null", "rb"), std::fclose);
    EXPECT_FALSE(small.Save(readOnly.get()));
}

// Files that other programs wrote, beside the pixels that those programs read from them: PAM files, whose
// samples are red, green, blue and where the file has one alpha, from the top row down.
TEST(TarvexDibFile, FilesOfOtherProgramsGiveTheirPixels)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(SAMPLE_DATA))
    {
        if (entry.path().extension() != ".bmp")
            continue;
        SCOPED_TRACE(entry.path().filename());
        ++files;
        std::ifstream pam(std::filesystem::path(TEST_DATA) /
                              entry.path().filename().replace_extension(".pam"),
                          std::ios::binary);
        std::string word, header;
        int width = 0, height = 0, depth = 0;
        while (std::getline(pam, header) && header != "ENDHDR")
        {
            std::istringstream line(header);
            line >> word;
            (word == "WIDTH" ? line >> width : word == "HEIGHT" ? line >> height : line);
            if (word == "DEPTH")
                line >> depth;
        }
        const Bytes samples{std::istreambuf_iterator<char>(pam), {}};

        CTarvexDib dib;
        ASSERT_TRUE(dib.Load(entry.path().string().c_str()));
        ASSERT_EQ(dib.Width(), width);
        ASSERT_EQ(dib.Height(), height);
        ASSERT_TRUE(dib.ChangeToTrueColor(depth == 4));
        ASSERT_EQ(samples.size(), static_cast<std::size_t>(width * height * depth));
        const unsigned char* sample = samples.data();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x, sample += depth)
            {
                const unsigned char* pixel = dib.GetPixelFast(x, y);
                ASSERT_TRUE(pixel[2] == sample[0] && pixel[1] == sample[1] && pixel[0] == sample[2] &&
                            (depth == 3 || pixel[3] == sample[3]))
                    << x << ", " << y;
            }
    }
    EXPECT_GE(files, 6);
}
