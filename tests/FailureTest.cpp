#include "Failing.h"
#include "Pictures.h"
#include "System.h"
#include "Targets.h"

#include "ZelUtil/BitmapCache.h"
#include "ZelUtil/CVar.h"
#include "ZelUtil/INIFileReader.h"
#include "ZelUtil/OSDependant.h"
#include "ZelUtil/PolyApprox.h"
#include "ZelUtil/WinDib.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <semaphore>
#include <sstream>

using namespace test;
using Text = CStdStr<char>;
using Call = std::function<bool()>;
using Step = std::function<void()>;

static const Text kSection = "a", kKey = "k", kPattern = "sub*", kLong = std::string(60, 'x');
static const ControlPoints kPoints = {{{0, 0}, {4, 0}, {0, 2}, {4, 2}}, {{1, 2}, {9, 6}, {0, 8}, {6, 9}}, 4};

// What becomes of a call: it is done, or false, or it throws.
static std::string Outcome(const Call& call)
try
{
    return call() ? "done" : "false";
}
catch (const std::bad_alloc&)
{
    return "bad_alloc";
}
catch (const MemoryError& error)
{
    g_plan.callsBefore = -1;
    const bool isCopy = error.getFile() == ".\\src\\TarvexDib";
    return error.getMethode() + ": " + error.getMsg() + (isCopy ? " " + std::to_string(error.getLine()) : "");
}

class Failure : public testing::Test
{
protected:
    Failure()
    {
        m_surface.Attach(CreateBitmap(4, 4, 1, 32, nullptr));
        m_memory.CreateCompatibleDC(nullptr);
        SelectObject(m_memory, m_surface.GetSafeHandle());
        m_roomy.reserve(1000);
    }

    // Lets every allocation of a call fail in turn, and every read. The call is done all the same, or its
    // outcome is among `failures` and it leaves what `after` would leave in its place. Repeated, it is done.
    // No more blocks of memory than `kept` are lost.
    void Check(const char* failures, const Step& after, const Call& call, long kept = 0,
               int line = __builtin_LINE())
    {
        const testing::ScopedTrace row(__FILE__, line, "this call");
        const std::string failed = StateAfter(after), done = StateAfter(call);
        for (const Fault fault : {Fault::Allocation, Fault::AllAllocations, Fault::Read, Fault::Cut})
            for (int number = 0, goesOn = 1; goesOn != 0 && number < 20; ++number)
            {
                SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << number);
                Prepare();
                const long blocks = g_liveBlocks;
                g_plan = {fault, number, m_subject.c_str()};
                std::optional<std::string> outcome = Outcome(call);
                goesOn = g_plan.hasHappened;
                g_plan = {};
                EXPECT_TRUE(fault >= Fault::Read || (number == 0 ? goesOn != 0 : number < 19))
                    << "too many or none";
                EXPECT_TRUE(*outcome == "done" || std::strstr(failures, outcome->c_str()) != nullptr)
                    << *outcome;
                EXPECT_TRUE(State() == (*outcome == "done" ? done : failed)) << *outcome;
                outcome.reset();
                EXPECT_TRUE(StateAfter(call) == done) << "afterwards";
                Prepare();
                EXPECT_LE(g_liveBlocks, blocks + kept);
            }
    }

    void Prepare()
    {
        m_dib.Load(m_colors.data(), static_cast<int>(m_colors.size()));
        m_dib.SetColorTable(nullptr, 0); // the device needs a longer copy of the header
        m_source = m_picture;
        m_target = m_blank;
        m_made.DeleteObject();
        SetPixel(m_memory, 1, 1, 0x123456);
        m_approx.SetupPolynom(kPoints, 1);
        Text("as it was").swap(m_text);
        delete[] std::exchange(m_names, nullptr);
        m_variable = "a variable with the number " + std::to_string(CVar_GetNb());
        std::ofstream(m_held.c_str()) << "[a]\nk=1";
        std::ofstream(m_subject.c_str(), std::ios::binary) << m_file;
        m_reader.emplace();
        for (const bool indexed : {true, false})
            static_cast<void>(Find(m_held, indexed, m_roomy) && m_holdsSubject &&
                              Find(m_subject, indexed, m_roomy));
    }

    std::string StateAfter(const Step& step)
    {
        Prepare();
        step();
        return State();
    }

    // All that can be seen of the objects. The files are emptied, so that the reader shows what it holds.
    std::string State()
    {
        std::ostringstream state;
        state << m_text << (m_names == nullptr ? "" : m_names[0]) << (m_made.GetSafeHandle() != nullptr)
              << (CVar_Get(m_variable.c_str(), nullptr, 0) != nullptr) << GetPixel(m_memory, 1, 1) << '|'
              << m_approx.Approx({1, 2}).x << m_approx.GetOrder() << m_approx.GetCoefficients().xCoeff[0];
        for (const auto* const image : std::initializer_list<const CTarvexDib*>{&m_dib, &m_source, &m_target})
            for (const unsigned char byte : Packed(*image))
                state << byte << image->GetInterpolMethod();
        while (m_cache.releaseBitmap(m_subject))
            state << "cached";
        for (const Text& file : {m_held, m_subject})
            for (const bool indexed : {true, false})
                state << std::ofstream(file.c_str()).is_open() << Find(file, indexed, m_roomy);
        return state.str();
    }

    bool Find(const Text& file, bool indexed, Text& value)
    {
        return m_reader->getStringFromIni(file, kSection, kKey, &value, indexed, false);
    }

    const TemporaryFolder m_temporary;
    const Text m_folder = m_temporary / "", m_held = m_temporary / "held",
               m_subject = m_temporary / "subject";
    const CTarvexDib m_picture = RandomPicture(50, 50, 24);
    CTarvexDib m_source, m_target, m_blank = RandomPicture(9, 9, 32);
    CWinDib m_dib;
    CBitmap m_surface, m_made;
    CDC m_memory;
    BitmapCache m_cache;
    std::optional<INIFileReader> m_reader;
    CPolyApprox m_approx;
    Bytes m_colors = RandomPacked(5, 4, 8, 256, 256);
    Text m_text, m_roomy, *m_names = nullptr;
    std::string m_variable, m_file;
    bool m_holdsSubject = false;
    const Step m_nothing = [] {};
};

TEST_F(Failure, LeavesImagesEmptyOrUnchanged)
{
    const Bytes header = FileAround(RandomPacked(1, 1, 24, 0, 50000), 50000);
    m_file.assign(header.begin(), header.end() - 3); // one pixel byte, and zeros as after the end of a file
    m_file.resize(220000);
    const Step empty = [&] { m_dib.Empty(); }, emptyTarget = [&] { m_target.Empty(); };
    Bytes packed = m_colors;
    const auto* const colors = reinterpret_cast<const tagRGBQUAD*>(packed.data());
    const auto draw = [&] { m_dib.StretchDraw(m_memory, 0, 0, 4, 4); };
    Check("false", empty, [&] { return m_dib.Create(5, 5, 32); });
    Check("false", empty, [&] { return m_dib.Load(packed.data(), static_cast<int>(packed.size())); });
    Check("false", empty, [&] { return m_dib.Load(m_subject.c_str()); });
    Check("false", emptyTarget, [&] { return (m_target = m_picture).Width() == 50; });
    Check("bad_alloc, Copy Constructor CTarvexDib: Couldn't allocate memory 64, "
          "Copy Constructor CTarvexDib: Couldn't allocate memory 80",
          m_nothing, [&] { return CTarvexDib(m_picture).Width() == 50; });
    Check("false", m_nothing, [&] { return m_dib.SetColorTable(colors, 256); });
    Check("false", m_nothing, [&] { return m_dib.ChangeToTrueColor(true); });
    Check("bad_alloc", m_nothing, [&] { return m_target.Clone(m_source, 1, 2, 40, 50); });
    Check("false, bad_alloc", m_nothing, [&] { return m_cache.getBitmap(m_subject) != nullptr; });
    Check("false", m_nothing, [&] { return m_made.Attach(m_dib.CreateDDB()); });
    Check("false", empty, [&] { return m_dib.Capture(m_memory, CRect(0, 0, 4, 4)); });
    Check("false", m_nothing, [&] { return draw(), GetPixel(m_memory, 1, 1) == 0; });
    for (int i = 0; i < 18; ++i) // by each method, to larger, smaller and half sizes, of 24 and 32 bits
    {
        const auto method = static_cast<CTarvexDib::InterpolMethod>(i / 6);
        const int size = i % 3 == 0 ? 90 : i % 3 == 1 ? 33 : 25;
        m_blank = RandomPicture(size, size, i % 2 == 0 ? 24 : 32);
        m_blank.SetupInterpolMethod(method);
        const Step choose = [&] { m_source.SetupInterpolMethod(method); };
        Check("bad_alloc", choose, [&] { return m_target.Resize(m_source); });
    }
}

TEST_F(Failure, LeavesNoFileHeldByHalves)
{
    const Step drop = [&] { m_reader->EndStringFromIni(); },
               dropIndex = [&] { m_reader->end_profile_string(); };
    m_file = "[a]\nk=" + kLong + "\n";
    for (int i = 0; i < 4100; ++i) // the index grows twice
        m_file += "x=\n";
    for (const bool indexed : {true, false})
        Check("false", indexed ? dropIndex : drop, [&] { return Find(m_subject, indexed, m_roomy); });
    m_holdsSubject = true;
    Check("false", m_nothing, [&] { return Find(m_subject, true, m_text); });
    Check(
        "false", [&] { drop(), m_text = ""; }, [&] { return Find(m_subject, false, m_text); });

    m_holdsSubject = false;
    m_file = "[" + kLong + "]\n;\n[" + kLong + "]\n";
    const auto start = [&](Text& name) { return drop(), m_reader->getFirstSectionName(m_subject, name); };
    Check("false", drop, [&] { return start(m_text); });
    Check("false", drop, [&] { return start(m_roomy) && m_reader->getNextSectionName(m_text); });
}

TEST_F(Failure, LeavesServicesAndValuesAsTheyWere)
{
    static std::binary_semaphore s_ended(0);
    unsigned long (*const routine)(void*) = [](void*) -> unsigned long { return s_ended.release(), 0; };
    const auto run = [&]
    { return OSDependant::beginThread(routine, nullptr) != 0 && (s_ended.acquire(), true); };
    const auto read = [&]
    {
        char block[16384];
        const std::unique_ptr<OSDependant::IFileAccess> reader(
            OSDependant::openFile(m_subject, OSDependant::IFileAccess::BigEndian));
        return reader != nullptr && reader->read(block, 16384UL);
    };
    const Text program = std::filesystem::path(testing::internal::GetArgvs()[0]).filename().string();
    const Step unset = [&] { m_approx.SetupPolynom({{}, {}, 4}, 1); };
    m_file.resize(20000);
    Check("false", m_nothing, read);
    Check("false", m_nothing, run);
    Check("false", m_nothing,
          [&] { return OSDependant::GetFileListInDirectory(m_folder, kPattern, &m_names) == 1; });
    Check("false", m_nothing, [&] { return OSDependant::GetModulePath(program, m_text, 1000); });
    Check(
        "false", m_nothing, [&] { return CVar_Get(m_variable.c_str(), kLong.c_str(), 1) != nullptr; }, 4);
    Check("bad_alloc, CPolyArguments::CPolyArguments: Out of memory", unset,
          [&] { return m_approx.SetupPolynom(kPoints, 1); });
    Check("bad_alloc", m_nothing,
          [&] { return EConstruction(kLong, kLong, kLong, kLong, 1).getLine() == 1; });
    Check("bad_alloc", m_nothing, [&] { return (m_text = kLong.Mid(1, 50).c_str()).size() == 50; });
}

TEST(FailureOfMemory, DoesNotMatterToBlending)
{
    CTarvexDib to = RandomPicture(256, 257, 32), flat; // large enough for tables to pay
    flat.Create(500000000, 0, 32);
    const CTarvexDib from = RandomPicture(256, 257, 32), plane = RandomPicture(256, 257, 8);
    ForEachTarget(
        [&]
        {
            g_plan = {Fault::Allocation, 0};
            EXPECT_TRUE(to.AlphaBlendPerPixel(&from, &from) && to.AlphaBlend(&from, &from, 9) &&
                        to.TransparentBlend(&from, &from, 1, 2, 3) && to.ShadePerPixel(&from, &from, 50) &&
                        to.SetAlphaPlane(&plane) && to.TransparentAlpha(1, 2, 3, true) && to.AlphaAlpha(3) &&
                        to.ColorMix(0.1F, 0.2F, 0.3F, 0.4F) && to.resetAlpha() &&
                        to.CopyRect(0, 0, from, 1, 1, 9, 7) && flat.Clone(from, 0, 0, 9, 7) &&
                        !g_plan.hasHappened);
            g_plan = {};
        });
}

// A file of 54 bytes fails when it is closed, one of 30,054 before.
TEST(FailureOfWriting, IsTold)
{
    if (kFullDevice == nullptr)
        GTEST_SKIP() << "there is no device that takes nothing";
    CTarvexDib flat;
    flat.Create(0, 5, 24);
    EXPECT_FALSE(flat.Save(kFullDevice) || RandomPicture(100, 100, 24).Save(kFullDevice));
}
