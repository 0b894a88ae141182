#include "Failing.h"
#include "Pictures.h"
#include "Targets.h"

#include "ZelUtil/ZelUtil.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>

using namespace OSDependant;
using namespace test;
using Text = CStdStr<char>;
using Call = std::function<bool()>;
using Step = std::function<void()>;

static const Text kSection = "a", kKey = "k", kLong = std::string(60, 'x');
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
    EXPECT_TRUE(!isCopy || error.getLine() == 64 || error.getLine() == 80) << error.getLine();
    return error.getMethode() + ": " + error.getMsg() + (isCopy ? " in copying" : "");
}

class Failure : public testing::Test
{
protected:
    // Fails each allocation of `call` in turn, alone and with all later ones, then each read in the same way.
    // Each time the call either succeeds, or fails in one of the ways in `failures` and leaves the state that
    // `after` produces. A repeated call succeeds. At most `kept` blocks may leak. An empty `failures` means
    // that nothing is allocated.
    void Check(std::string_view failures, const Step& after, const Call& call, long kept = 0,
               int line = __builtin_LINE())
    {
        const std::string failed = StateAfter(after), done = StateAfter(call);
        for (int kind = 0; kind < 4; ++kind)
            for (int number = 0, goesOn = 1; goesOn != 0; ++number)
            {
                const testing::ScopedTrace at(__FILE__, line, testing::Message() << kind << ": " << number);
                Prepare();
                const long blocks = g_liveBlocks;
                g_plan = {number, kind >= 2, kind % 2 != 0, m_subject.c_str()};
                std::optional<std::string> outcome = Outcome(call);
                goesOn = std::exchange(g_plan, {}).hasHappened;
                EXPECT_TRUE(kind >= 2 || number > 0 || goesOn != failures.empty());
                const bool isDone = *outcome == "done";
                EXPECT_TRUE(isDone || failures.find(*outcome) != failures.npos) << *outcome;
                EXPECT_TRUE(State() == (isDone ? done : failed)) << *outcome;
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
        m_dc.DeleteDC();
        m_dc.CreateCompatibleDC(nullptr); // draws into one pixel
        SetPixel(m_dc, 0, 0, 0xFFFFFF);
        m_approx.SetupPolynom(kPoints, 1);
        Text("as it was").swap(m_text);
        m_roomy.assign(1000, ' ');
        delete[] std::exchange(m_names, nullptr);
        m_variable = "a variable with the number " + std::to_string(CVar_GetNb());
        std::ofstream(m_held.c_str()) << "[a]\nk=1";
        std::ofstream(m_subject.c_str(), std::ios::binary) << m_file;
        m_reader.emplace();
        for (const bool indexed : {true, false})
            static_cast<void>(Find(m_held, indexed) && m_holdsSubject && Find(m_subject, indexed));
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
        state << (CVar_Get(m_variable.c_str(), nullptr, 0) != nullptr) << (m_made.GetSafeHandle() != nullptr)
              << m_text << m_roomy << (m_names == nullptr ? "" : m_names[0]) << GetPixel(m_dc, 0, 0) << '|'
              << m_approx.Approx({1, 2}).x << m_approx.GetOrder() << m_approx.GetCoefficients().xCoeff[0]
              << m_source.GetInterpolMethod();
        for (const auto* image : std::initializer_list<const CTarvexDib*>{&m_dib, &m_source, &m_target})
            for (const unsigned char byte : Packed(*image))
                state << byte;
        while (m_cache.releaseBitmap(m_subject))
            state << "cached";
        for (const Text& file : {m_held, m_subject})
            for (const bool indexed : {true, false})
                state << std::ofstream(file.c_str()).is_open() << Find(file, indexed);
        return state.str();
    }

    bool Find(const Text& file, bool indexed, Text* value = nullptr)
    {
        return m_reader->getStringFromIni(file, kSection, kKey, value == nullptr ? &m_roomy : value, indexed,
                                          false);
    }

    const TemporaryFolder m_temporary;
    const Text m_held = m_temporary / "held", m_subject = m_temporary / "subject";
    const CTarvexDib m_picture = RandomPicture(50, 50, 24);
    CTarvexDib m_source, m_target, m_blank = RandomPicture(9, 9, 32);
    CWinDib m_dib;
    CBitmap m_made;
    CDC m_dc;
    BitmapCache m_cache;
    std::optional<INIFileReader> m_reader;
    CPolyApprox m_approx;
    Bytes m_colors = RandomPacked(5, 4, 8, 256, 256);
    Text m_text, m_roomy = std::string(1000, ' '), *m_names = nullptr;
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
    const std::vector<tagRGBQUAD> colors(256);
    const auto load = [&] { return m_dib.Load(m_colors.data(), static_cast<int>(m_colors.size())); };
    Check("false", empty, [&] { return m_dib.Create(5, 5, 32); });
    Check("false", empty, load);
    Check("false", empty, [&] { return m_dib.Load(m_subject.c_str()); });
    Check("false", emptyTarget, [&] { return (m_target = m_picture).Width() == 50; });
    Check("bad_alloc, Copy Constructor CTarvexDib: Couldn't allocate memory in copying", m_nothing,
          [&] { return CTarvexDib(m_picture).Width() == 50; });
    Check("false", m_nothing, [&] { return m_dib.SetColorTable(colors.data(), 256); });
    Check("false", m_nothing, [&] { return m_dib.ChangeToTrueColor(true); });
    Check("bad_alloc", m_nothing, [&] { return m_target.Clone(m_source, 1, 2, 40, 50); });
    Check("false, bad_alloc", m_nothing, [&] { return m_cache.getBitmap(m_subject) != nullptr; });
    Check("false", m_nothing, [&] { return m_made.Attach(m_dib.CreateDDB()); });
    Check("false", empty, [&] { return m_dib.Capture(m_dc, CRect(0, 0, 1, 1)); });
    Check("false", m_nothing, [&] { return m_dib.StretchDraw(m_dc, 0, 0, 1, 1), GetPixel(m_dc, 0, 0) == 0; });
    for (int i = 0; i < 18; ++i) // by each method, to larger, smaller and half sizes, of 24 and 32 bits
    {
        const auto method = static_cast<CTarvexDib::InterpolMethod>(i / 6);
        const int size = i % 3 == 0 ? 90 : i % 3 == 1 ? 33 : 25;
        m_blank = RandomPicture(size, size, i % 2 == 0 ? 24 : 32);
        m_blank.SetupInterpolMethod(method);
        const Step choose = [&] { m_source.SetupInterpolMethod(method); };
        Check("bad_alloc", choose, [&] { return m_target.Resize(m_source); });
    }
    if (std::filesystem::exists("/dev/full"))
    {
        for (const int size : {50, 2}) // the first fails as it is written, the second as its file is closed
            EXPECT_FALSE(RandomPicture(size, size, 24).Save("/dev/full"));
    }

    // Blending and copying need no memory.
    m_blank = RandomPicture(256, 257, 32); // large enough for tables to pay
    const CTarvexDib from = m_blank, plane = RandomPicture(256, 257, 8);
    CTarvexDib flat;
    flat.Create(500000000, 0, 32);
    const Call blend = [&, &to = m_target]
    {
        return to.AlphaBlendPerPixel(&from, &from) && to.AlphaBlend(&from, &from, 9) &&
               to.TransparentBlend(&from, &from, 1, 2, 3) && to.ShadePerPixel(&from, &from, 50) &&
               to.SetAlphaPlane(&plane) && to.TransparentAlpha(1, 2, 3, true) && to.AlphaAlpha(3) &&
               to.ColorMix(0.1F, 0.2F, 0.3F, 0.4F) && to.resetAlpha() &&
               to.CopyRect(0, 0, from, 1, 1, 9, 7) && flat.Clone(from, 0, 0, 9, 7);
    };
    ForEachTarget([&] { Check("", m_nothing, blend); });
}

TEST_F(Failure, ChangesAllOrNothing)
{
    const Step drop = [&] { m_reader->EndStringFromIni(); },
               dropIndex = [&] { m_reader->end_profile_string(); },
               dropAndClear = [&] { drop(), m_text = ""; };
    m_file = "[a]\n";
    for (int i = 0; i < 5452; ++i) // the index grows twice
        m_file += "x=\n";
    m_file += "k=" + kLong + "\n"; // begins in the first block of 16384 bytes and ends in the second
    Check("false", dropIndex, [&] { return Find(m_subject, true); });
    Check(
        "false", [&] { drop(), m_roomy = ""; }, [&] { return Find(m_subject, false); });
    m_holdsSubject = true;
    Check("false", m_nothing, [&] { return Find(m_subject, true, &m_text); });
    Check("false", dropAndClear, [&] { return Find(m_subject, false, &m_text); });

    m_holdsSubject = false;
    m_file = "[" + kLong + "]\n;\n[" + kLong + "]\n";
    const auto start = [&](Text& name) { return drop(), m_reader->getFirstSectionName(m_subject, name); };
    Check("false", drop, [&] { return start(m_text); });
    Text first = m_roomy;
    Check("false", drop, [&] { return start(first) && m_reader->getNextSectionName(m_text); });

    static std::atomic<bool> s_hasRun; // a semaphore could need memory, which fails
    const auto run = [] { return beginThread([](void*) { return s_hasRun = true, 0UL; }, nullptr); };
    const auto waitForRun = []
    {
        while (!s_hasRun.exchange(false))
            threadSleep(1);
    };
    const auto open = [&]
    { return std::unique_ptr<IFileAccess>(openFile(m_subject, IFileAccess::BigEndian)); };
    const Text program = std::filesystem::path(testing::internal::GetArgvs()[0]).filename().string();
    const Text folder = m_temporary / "", pattern = "sub*";
    const auto define = [&] { return CVar_Get(m_variable.c_str(), kLong.c_str(), 1) != nullptr; };
    const auto fit = [&] { return m_approx.SetupPolynom(kPoints, 1); };
    const Step unset = [&] { m_approx.SetupPolynom({{}, {}, 4}, 1); };
    Check("false", m_nothing, [&] { return open() != nullptr; });
    Check("false", m_nothing, [&] { return run() != 0 && (waitForRun(), true); });
    Check("false", m_nothing, [&] { return GetFileListInDirectory(folder, pattern, &m_names) == 1; });
    Check("false", m_nothing, [&] { return GetModulePath(program, m_text, 1000); });
    Check("false", m_nothing, define, 4);
    Check("bad_alloc, CPolyArguments::CPolyArguments: Out of memory", unset, fit);
}
