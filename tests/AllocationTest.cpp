#include "DebugLog.h"
#include "FailingAllocator.h"
#include "Targets.h"

#include "ZelUtil/BitmapCache.h"
#include "ZelUtil/CVar.h"
#include "ZelUtil/INIFileReader.h"
#include "ZelUtil/OSDependant.h"
#include "ZelUtil/PolyApprox.h"
#include "ZelUtil/WinDib.h"

#include <functional>
#include <new>
#include <optional>

using namespace test;

namespace
{

// Runs `attempt` with its 1st, 2nd, 3rd ... allocation failing until none fails any more. `prepare` and
// `check` stand before and behind it with memory enough; `check` is told which allocation failed. Gives their
// number.
int FailEach(const std::function<void()>& prepare, const std::function<void()>& attempt,
             const std::function<void(int failed)>& check)
{
    for (int failing = 0; failing < 50; ++failing)
    {
        prepare();
        FailAllocation(failing);
        attempt();
        const bool failed = AllocationFailed();
        FailAllocation(-1);
        if (!failed)
            return failing;
        check(failing);
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

template <typename Error, typename Operation>
bool Throws(const Operation& operation)
{
    try
    {
        operation();
    }
    catch (const Error&)
    {
        return true;
    }
    return false;
}

} // namespace

TEST(Allocation, ImagesAreEmptyOrUnchangedAfterAFailure)
{
    const TemporaryFolder folder;
    const std::string path = folder / "a.bmp", longHeader = folder / "long.bmp";
    Bytes packed = RandomPacked(9, 7, 8, 0, 256);
    WriteFile(path, FileAround(packed, 256));
    WriteFile(longHeader, FileAround(RandomPacked(1, 1, 24, 0, 50000), 50000));
    const CTarvexDib picture = RandomPicture(9, 7, 32);
    CTarvexDib table;
    ASSERT_TRUE(table.Create(1, 1, 8));

    const struct
    {
        const char* name;
        int allocations;
        bool empties;
        std::function<bool(CTarvexDib&)> run;
    } cases[] = {
        {"Create", 2, true, [](auto& dib) { return dib.Create(5, 5, 24); }},
        {"Load from memory", 2, true,
         [&](auto& dib) { return dib.Load(packed.data(), static_cast<int>(packed.size())); }},
        {"Load", 2, true, [&](auto& dib) { return dib.Load(path.c_str()); }},
        {"Load a long header", 4, true, [&](auto& dib) { return dib.Load(longHeader.c_str()); }},
        {"operator=", 2, true, [&](auto& dib) { return (dib = picture).Width() == 9; }},
        {"SetColorTable", 1, false, [&](auto& dib) { return dib.SetColorTable(table.GetColorTable(), 256); }},
        {"CopyColorsFromDib", 1, false,
         [&](auto& dib)
         {
             dib.CopyColorsFromDib(table);
             return dib.GetDibLength() == 1112;
         }},
        {"ChangeToTrueColor", 1, false, [](auto& dib) { return dib.ChangeToTrueColor(true); }}};

    Bytes small = RandomPacked(6, 6, 8, 3, 3);
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        const long before = LiveBlocks();
        CTarvexDib dib;
        bool done = false;
        const int allocations = FailEach([&] { dib.Load(small.data(), static_cast<int>(small.size())); },
                                         [&] { done = c.run(dib); },
                                         [&](int failed)
                                         {
                                             EXPECT_FALSE(done) << failed;
                                             EXPECT_EQ(Packed(dib), c.empties ? Bytes() : small) << failed;
                                         });
        EXPECT_TRUE(done);
        EXPECT_EQ(allocations, c.allocations);
        dib.Empty();
        EXPECT_EQ(LiveBlocks(), before);
    }
}

TEST(Allocation, FailedCopyTellsWhichBlockWasRefused)
{
    const CTarvexDib picture = RandomPicture(9, 7, 8);
    const long before = LiveBlocks();
    for (const int line : {64, 80})
    {
        FailAllocation(line == 64 ? 0 : 1);
        try
        {
            const CTarvexDib copy(picture);
            ADD_FAILURE() << copy.Width();
        }
        catch (const MemoryError& error)
        {
            EXPECT_EQ(error.getMethode(), "Copy Constructor CTarvexDib");
            EXPECT_EQ(error.getMsg(), "Couldn't allocate memory");
            EXPECT_EQ(error.getFile(), ".\\src\\TarvexDib");
            EXPECT_EQ(error.getLine(), line);
        }
        FailAllocation(-1);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(Allocation, TablesOfResizeAndCloneFailBeforeTheFirstPixel)
{
    for (int round = 0; round < 36; ++round) // depths, methods, larger and smaller, by a whole step as well
    {
        CTarvexDib source = RandomPicture(50, 50, round & 1 ? 24 : 32), dib;
        const int sizes[] = {90, 9, 25}, size = sizes[round / 4 % 3], bits = round & 2 ? 24 : 32;
        const CTarvexDib target = RandomPicture(size, size, bits);
        const auto method = static_cast<CTarvexDib::InterpolMethod>(round / 12);
        const Bytes before = PixelBytes(target);
        const struct
        {
            const char* name;
            std::function<bool()> run;
        } cases[] = {{"Resize", [&] { return dib.Resize(source); }},
                     {"Clone", [&] { return dib.Clone(source, 1, 2, 40, 50); }}};
        for (const auto& c : cases)
        {
            SCOPED_TRACE(testing::Message() << c.name << " in round " << round);
            dib.Empty();
            const long blocks = LiveBlocks();
            bool thrown = false;
            const int allocations = FailEach(
                [&]
                {
                    dib = target;
                    dib.SetupInterpolMethod(method);
                },
                [&] { thrown = Throws<std::bad_alloc>([&] { c.run(); }); },
                [&](int failed)
                {
                    EXPECT_TRUE(thrown) << failed;
                    EXPECT_EQ(PixelBytes(dib), before) << failed;
                    EXPECT_EQ(source.GetInterpolMethod(), method) << failed;
                });
            EXPECT_GE(allocations, 1);
            EXPECT_NE(PixelBytes(dib), before);
            dib.Empty();
            EXPECT_EQ(LiveBlocks(), blocks);
        }
    }
}

TEST(Allocation, BlendingAndCopyingNeedNone)
{
    CTarvexDib target = RandomPicture(256, 257, 32), flat; // large enough for tables to pay
    ASSERT_TRUE(flat.Create(500000000, 0, 32));
    const CTarvexDib source = RandomPicture(256, 257, 32), plane = RandomPicture(256, 257, 8);
    ForEachTarget(
        [&]
        {
            FailAllocation(0);
            const bool done =
                target.AlphaBlendPerPixel(&source, &source) && target.AlphaBlend(&source, &source, 9) &&
                target.TransparentBlend(&source, &source, 1, 2, 3) &&
                target.ShadePerPixel(&source, &source, 50) && target.SetAlphaPlane(&plane) &&
                target.TransparentAlpha(1, 2, 3, true) && target.ColorMix(0.1F, 0.2F, 0.3F, 0.4F) &&
                target.AlphaAlpha(3) && target.resetAlpha() && target.CopyRect(0, 0, source, 1, 1, 9, 7) &&
                flat.Clone(source, 0, 0, 9, 7);
            const bool failed = AllocationFailed();
            FailAllocation(-1);
            EXPECT_TRUE(done);
            EXPECT_FALSE(failed);
        });
}

TEST(Allocation, CacheStaysAsItWas)
{
    const TemporaryFolder folder;
    const CStdStr<char> name = folder / "a name that is longer than any short string.bmp";
    ASSERT_TRUE(RandomPicture(3, 3, 24).Save(name.c_str()));
    const long before = LiveBlocks();
    {
        BitmapCache cache;
        CTarvexDib* image = nullptr;
        const int allocations = FailEach([] {},
                                         [&]
                                         {
                                             image = nullptr;
                                             Throws<std::bad_alloc>([&] { image = cache.getBitmap(name); });
                                         },
                                         [&](int failed)
                                         {
                                             EXPECT_EQ(image, nullptr) << failed;
                                             EXPECT_FALSE(cache.releaseBitmap(name)) << failed;
                                         });
        EXPECT_GE(allocations, 6);
        EXPECT_NE(image, nullptr);

        const long held = LiveBlocks();
        EXPECT_TRUE(cache.releaseBitmap(image));
        EXPECT_LT(LiveBlocks(), held - 3); // entry, image and its two blocks at least
        image = cache.getBitmap(name);

        // A hit allocates nothing beyond the name that the caller hands over.
        FailAllocation(1);
        EXPECT_EQ(cache.getBitmap(name), image);
        FailAllocation(-1);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(Allocation, FailedFitLeavesTheMappingUnset)
{
    ControlPoints points = {{{0, 0}, {4, 0}, {0, 2}, {4, 2}}, {{10, 20}, {18, 24}, {7, 26}, {15, 30}}, 4};
    CPolyApprox fitted;
    ASSERT_TRUE(fitted.SetupPolynom(points, 1));
    const double before = fitted.GetCoefficients().xCoeff[0];
    const long blocks = LiveBlocks();
    bool thrown = false;
    CPolyApprox approx;
    const auto setup = [&]
    {
        thrown = false;
        try
        {
            approx.SetupPolynom(points, 1);
        }
        catch (const MemoryError& error)
        {
            thrown = error.getMethode() == "CPolyArguments::CPolyArguments" &&
                     error.getMsg() == "Out of memory" && error.getFile().Find("PolyApprox") >= 0;
        }
    };
    const int allocations = FailEach([&] { approx = fitted; }, setup,
                                     [&](int failed)
                                     {
                                         EXPECT_TRUE(thrown) << failed;
                                         EXPECT_EQ(approx.Approx({1, 2}).x, 1);
                                         EXPECT_EQ(approx.GetOrder(), 1);
                                         EXPECT_EQ(approx.GetCoefficients().xCoeff[0], before);
                                     });
    EXPECT_EQ(allocations, 4); // matrix, elements, two right-hand sides
    EXPECT_FALSE(thrown);
    EXPECT_EQ(LiveBlocks(), blocks);
}

TEST(Allocation, IniReaderHoldsNoFileAfterAFailure)
{
    const TemporaryFolder folder;
    const CStdStr<char> small = folder / "small.ini", large = folder / "large.ini", section = "a", key = "k";
    std::string text = "[a]\nk=a value that is longer than short strings are\n";
    for (int i = 0; i < 4100; ++i) // the index grows twice
        text += "x=\n";
    WriteFile(large, Bytes(text.begin(), text.end()));
    for (const bool indexed : {true, false})
        for (const bool isFresh : {true, false})
        {
            SCOPED_TRACE(testing::Message() << "indexed " << indexed << ", fresh " << isFresh);
            const long blocks = LiveBlocks();
            std::optional<INIFileReader> reader;
            CStdStr<char> result;
            bool done = false;
            const int allocations = FailEach(
                [&]
                {
                    reader.emplace();
                    WriteFile(small, {'[', 'a', ']', '\n', 'k', '=', '1'});
                    if (!isFresh)
                        reader->getStringFromIni(small, section, key, &result, indexed, false);
                    WriteFile(small, {'[', 'a', ']', '\n', 'k', '=', '2'});
                    result = CStdStr<char>();
                    result.shrink_to_fit();
                },
                [&] { done = reader->getStringFromIni(large, section, key, &result, indexed, false); },
                [&](int failed)
                {
                    EXPECT_FALSE(done) << failed;
                    EXPECT_TRUE(result.empty()) << failed;
                    const bool keepsFile = indexed && failed == (isFresh ? 4 : 3); // no room for the result
                    std::remove(large.c_str());
                    EXPECT_EQ(reader->getStringFromIni(large, section, key, &result, indexed, false),
                              keepsFile);
                    WriteFile(large, Bytes(text.begin(), text.end()));
                    EXPECT_TRUE(reader->getStringFromIni(small, section, key, &result, indexed, false))
                        << failed;
                    EXPECT_EQ(result, "2") << failed; // read again
                });
            EXPECT_TRUE(done);
            EXPECT_EQ(result.size(), 45U);
            // index, text, growth twice, result; or text, file name, result
            EXPECT_EQ(allocations, indexed ? (isFresh ? 5 : 4) : (isFresh ? 3 : 2));
            reader.reset();
            result = CStdStr<char>();
            result.shrink_to_fit();
            EXPECT_EQ(LiveBlocks(), blocks);
        }
}

TEST(Allocation, ListingsSkipNoNameWithoutSayingSo)
{
    const TemporaryFolder folder;
    const CStdStr<char> file = folder / "a.ini";
    const std::string longName(60, 'n'), text = "[" + longName + "]\n[" + longName + "]\n[c]\n";
    WriteFile(file, Bytes(text.begin(), text.end()));
    const long blocks = LiveBlocks();
    for (const bool first : {true, false})
    {
        std::optional<INIFileReader> reader;
        CStdStr<char> name;
        bool done = false;
        const int allocations = FailEach(
            [&]
            {
                reader.emplace();
                ASSERT_TRUE(first || reader->getFirstSectionName(file, name));
                name = "as it was";
                name.shrink_to_fit();
            },
            [&]
            { done = first ? reader->getFirstSectionName(file, name) : reader->getNextSectionName(name); },
            [&](int failed)
            {
                EXPECT_FALSE(done) << failed;
                EXPECT_EQ(name, "as it was") << failed;
                reader->EndStringFromIni();
                EXPECT_TRUE(reader->getFirstSectionName(file, name)) << failed;
                EXPECT_EQ(name, longName) << failed;
            });
        EXPECT_TRUE(done);
        EXPECT_EQ(name, longName);
        EXPECT_EQ(allocations, first ? 2 : 1); // the file's name, the section's
    }
    EXPECT_EQ(LiveBlocks(), blocks);
}

TEST(Allocation, VariableIsMadeWholeOrNotAtAll)
{
    const char* const name = "a name that is longer than short strings are";
    CVar* variable = nullptr;
    const int allocations =
        FailEach([] {}, [&] { variable = CVar_Get(name, "1.5 and a long text behind it", 1); },
                 [&](int failed)
                 {
                     EXPECT_EQ(variable, nullptr) << failed;
                     EXPECT_EQ(CVar_GetNb(), 0U) << failed;
                 });
    EXPECT_GE(allocations, 1);
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable->name, name);
    EXPECT_EQ(CVar_Get(name, nullptr, 0), variable);
}

TEST(Allocation, ErrorsAndStringsThrowAndLeakNothing)
{
    const CStdStr<char> text = std::string(60, 'x'), before = "as it was";
    const EConstruction other(text, text, text, text, 7);
    const EFileAccess fileError(EFileAccess::FILE_WRITE_PROTECTED);
    CStdStr<char> changed;
    std::optional<EConstruction> assigned;
    const struct
    {
        const char* name;
        int allocations;
        std::function<void()> run;
    } cases[] = {{"BasicError", 3, [&] { BasicError(text, text, text, 1); }},
                 {"MemoryError", 3, [&] { MemoryError(text, text, text, 1); }},
                 {"ParameterError", 4, [&] { ParameterError(text, text, text, text, 1); }},
                 {"MemberError", 4, [&] { MemberError(text, text, text, text, 1); }},
                 {"EStdException", 3, [&] { EStdException(text, text, text, 1); }},
                 {"EOutOfBounds", 3, [&] { EOutOfBounds(text, text, text, 1); }},
                 {"EConstruction", 4, [&] { EConstruction(text, text, text, text, 1); }},
                 {"a copy", 4, [&] { EConstruction{other}; }},
                 {"an assignment", 4, [&] { *assigned = other; }},
                 {"getErrorText", 1, [&] { fileError.getErrorText(); }},
                 {"CStdStr", 1, [&] { CStdStr<char>(text.c_str()); }},
                 {"CStdStr =", 1, [&] { changed = text.c_str(); }},
                 {"CStdStr +=", 1, [&] { changed += text.c_str(); }},
                 {"Mid", 2, [&] { text.Mid(1, 50); }}};
    const auto clear = [&]
    {
        CStdStr<char>().swap(changed);
        assigned.reset();
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        clear();
        const long blocks = LiveBlocks();
        bool thrown = false;
        const int allocations = FailEach(
            [&]
            {
                clear();
                changed = before;
                assigned.emplace("", "", "", "", 1);
            },
            [&] { thrown = Throws<std::bad_alloc>(c.run); },
            [&](int failed)
            {
                EXPECT_TRUE(thrown) << failed;
                EXPECT_EQ(changed, before) << failed;
            });
        EXPECT_FALSE(thrown);
        EXPECT_EQ(allocations, c.allocations);
        clear();
        EXPECT_EQ(LiveBlocks(), blocks);
    }

    // The log itself needs no memory of the program's.
    const Log log;
    OSDependant::ActivateDebugLog(true);
    testing::internal::CaptureStderr();
    FailAllocation(0);
    EXCEPTION_LOG(other);
    EXCEPTION_LOG(static_cast<const EStdException&>(other));
    FailAllocation(-1);
    const std::string echo = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(echo.begin(), echo.end(), 'x'), 7 * 60);
    const std::string entries = log.Text();
    EXPECT_EQ(std::count(entries.begin(), entries.end(), 'x'), 7 * 60);
}

TEST(Allocation, ServicesGiveNothing)
{
    const TemporaryFolder folder;
    const CStdStr<char> directory = folder / "a folder whose name is long", all = "*";
    const CStdStr<char> module = std::filesystem::path(testing::internal::GetArgvs()[0]).filename().string();
    ASSERT_TRUE(OSDependant::CreateDir(directory, nullptr));
    for (const char* name : {"/a file whose name is long", "/b", "/c"})
        WriteFile(directory + name, {1});

    CStdStr<char>*names = nullptr, path;
    OSDependant::IFileAccess* file = nullptr;
    unsigned long result = 0;
    const struct
    {
        const char* name;
        std::function<void()> run;
        unsigned long expected;
    } cases[] = {
        {"GetModulePath", [&] { result = OSDependant::GetModulePath(module, path, 1000); }, 1},
        {"openFile",
         [&]
         {
             file = OSDependant::openFile(directory, OSDependant::IFileAccess::BigEndian);
             result = file != nullptr;
         },
         1},
        {"beginThread",
         [&] { result = OSDependant::beginThread([](void*) -> unsigned long { return 0; }, nullptr) != 0; },
         1},
        {"GetFileListInDirectory",
         [&] { result = OSDependant::GetFileListInDirectory(directory, all, &names); }, 3},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_GE(FailEach([&] { path = "as it was"; }, c.run,
                           [&](int failed)
                           {
                               EXPECT_EQ(result, 0U) << failed;
                               EXPECT_EQ(names, nullptr) << failed;
                               EXPECT_EQ(path, "as it was") << failed;
                           }),
                  1);
        EXPECT_EQ(result, c.expected);
    }
    ASSERT_NE(names, nullptr);
    EXPECT_EQ(names[0], "a file whose name is long");
    delete[] names;
    delete file;
}

TEST(Allocation, DeviceBridgeFailsWithAnEmptyImage)
{
    CWinDib picture, result;
    Bytes packed = RandomPacked(5, 4, 8, 256, 256);
    ASSERT_TRUE(picture.Load(packed.data(), static_cast<int>(packed.size())) &&
                picture.SetColorTable(nullptr, 0)); // so that its header has to be copied
    ASSERT_TRUE(result.Create(3, 3, 24));
    CBitmap surface, made;
    CDC memory;
    bool done = false;
    // The first call of all makes the device, where that is the library's own.
    FailEach([] {}, [&] { done = memory.CreateCompatibleDC(nullptr); },
             [&](int failed) { EXPECT_FALSE(done) << failed; });
    const struct
    {
        const char* name;
        bool empties;
        std::function<void()> run;
    } cases[] = {
        {"CreateDDB", false, [&] { done = made.Attach(picture.CreateDDB()); }},
        {"CreateFromDDB", true, [&] { done = result.CreateFromDDB(&surface, nullptr); }},
        {"Capture", true, [&] { done = result.Capture(memory, CRect(0, 0, 4, 4)); }},
    };
    const long blocks = LiveBlocks();
    for (const auto& c : cases)
    {
        FailEach(
            [&]
            {
                memory.DeleteDC();
                made.DeleteObject();
                surface.DeleteObject();
                ASSERT_TRUE(surface.Attach(CreateBitmap(4, 4, 1, 32, nullptr)) &&
                            memory.CreateCompatibleDC(nullptr));
                ASSERT_TRUE(result.Create(3, 3, 24));
            },
            c.run,
            [&](int failed)
            {
                EXPECT_FALSE(done) << c.name << failed;
                EXPECT_EQ(result.BitCount(), c.empties ? 0 : 24) << c.name << failed;
            });
        EXPECT_TRUE(done) << c.name;
    }

    SelectObject(memory, surface.GetSafeHandle());
    FailEach([&] { SetPixel(memory, 0, 0, 0x123456); }, [&] { picture.StretchDraw(memory, 0, 0, 4, 4); },
             [&](int failed) { EXPECT_EQ(GetPixel(memory, 0, 0), 0x123456U) << failed; });
    EXPECT_NE(GetPixel(memory, 0, 0), 0x123456U);
    memory.DeleteDC();
    surface.DeleteObject();
    made.DeleteObject();
    ASSERT_TRUE(result.Create(3, 3, 24));
    EXPECT_EQ(LiveBlocks(), blocks);
}
