// Times the operations of CTarvexDib and CWinDib, in pixels of the written picture per second. They are
// compared with a memcpy of as many bytes, those of CTarvexDib also with their definitions (ImageReference.h)
// and with other libraries. An operation that differs from its definition in one byte is not timed.

#include "PixelBench.h"

#include "ImageReference.h"
#include "ZelUtil/WinDib.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace
{

// The picture number for which every second block of 32 x 32 pixels has the key colour.
constexpr int kCutOut = 1;
constexpr unsigned char kKey[] = {3, 2, 1}; // blue, green, red

void Draw(CTarvexDib& dib, int number)
{
    std::mt19937 random(static_cast<unsigned>(number) + 1);
    const int channels = dib.PixelSize();
    std::vector<double> waves(static_cast<std::size_t>(dib.Width() * channels));
    for (int i = 0; i < dib.Width() * channels; ++i)
        waves[static_cast<std::size_t>(i)] = 120.0 * std::sin(i / channels / 37.0 + i % channels + number);
    for (int y = 0; y < dib.Height(); ++y)
    {
        const double wave = std::cos(y / 29.0 + number);
        unsigned char* const row = dib.GetPixelFast(0, y);
        for (int i = 0; i < dib.Width() * channels; ++i)
        {
            const double noise = static_cast<double>(random() % 33) - 16.0;
            const double value = 128.0 + waves[static_cast<std::size_t>(i)] * wave + noise;
            row[i] = static_cast<unsigned char>(std::clamp(value, 0.0, 255.0));
        }
        for (int x = 0; number == kCutOut && x < dib.Width(); ++x)
            if ((x / 32 + y / 32) % 2 == 0)
                std::copy_n(kKey, 3, dib.GetPixelFast(x, y));
    }
}

// Fills an image of a depth that Create does not make with random pixels and a random colour table.
void LoadNoise(CTarvexDib& dib, int width, int height, int bits)
{
    const int colors = bits <= 8 ? 1 << bits : 0;
    const int rowBytes = (width * bits + 31) / 32 * 4;
    std::vector<unsigned char> packed(static_cast<std::size_t>(40 + 4 * colors + rowBytes * height));
    std::mt19937 random(1);
    for (std::size_t i = 40; i < packed.size(); ++i)
        packed[i] = static_cast<unsigned char>(random());
    packed[0] = 40;
    packed[4] = static_cast<unsigned char>(width);
    packed[5] = static_cast<unsigned char>(width >> 8);
    packed[8] = static_cast<unsigned char>(height);
    packed[9] = static_cast<unsigned char>(height >> 8);
    packed[12] = 1;
    packed[14] = static_cast<unsigned char>(bits);
    dib.Load(packed.data(), static_cast<int>(packed.size()));
}

bool SameBytes(const CTarvexDib& a, const CTarvexDib& b)
{
    return a.Width() == b.Width() && a.Height() == b.Height() && a.BitCount() == b.BitCount() &&
           std::memcmp(a.GetScanLine(0), b.GetScanLine(0), ImageBytes(a)) == 0;
}

std::vector<char> FileBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string TemporaryFile(const char* name)
{
    return (std::filesystem::temp_directory_path() / name).string();
}

std::string CopyName(int width, int height, int bits)
{
    return "memcpy " + std::to_string(width) + "x" + std::to_string(height) + "x" + std::to_string(bits);
}

std::string WithBits(const std::string& name, int bits)
{
    return name + " " + std::to_string(bits);
}

std::string ScaleName(const Scale& scale)
{
    const auto size = [](int width, int height)
    { return std::to_string(width) + "x" + std::to_string(height); };
    return size(scale.fromWidth, scale.fromHeight) + " to " + size(scale.width, scale.height);
}

void AddCopy(int width, int height, int bits)
{
    const auto copy = [=]
    {
        const CTarvexDib &to = Target(width, height, bits), &from = Picture(width, height, bits);
        std::memcpy(to.GetScanLine(0), from.GetScanLine(0), ImageBytes(to));
        return true;
    };
    Add(CopyName(width, height, bits), width, height, copy, copy);
}

// Times an operation and, unless `timeDefinition` is false, its definition. Neither is timed unless `agree`,
// which is asked once, says that their results are equal.
void AddPair(const std::string& name, int width, int height, int bits, const Work& operation,
             const Work& definition, const Work& agree, const Work& restore = nullptr,
             bool timeDefinition = true)
{
    const Work once = [agree, known = std::make_shared<int>(-1)]
    {
        if (*known < 0)
            *known = agree();
        return *known == 1;
    };
    Add(name + "/library", width, height, operation, once, restore, CopyName(width, height, bits));
    if (timeDefinition)
        Add(name + "/definition", width, height, definition, once, restore);
}

// An operation that writes the whole target picture.
void AddOperation(const std::string& name, int width, int height, int bits,
                  const std::function<bool(CTarvexDib&)>& operation,
                  const std::function<void(CTarvexDib&)>& definition, bool timeDefinition = true)
{
    const auto agree = [=]
    {
        CTarvexDib result = Target(width, height, bits), expected = result;
        definition(expected);
        return operation(result) && SameBytes(result, expected);
    };
    const auto define = [=]
    {
        definition(Target(width, height, bits));
        return true;
    };
    AddPair(
        name, width, height, bits, [=] { return operation(Target(width, height, bits)); }, define, agree,
        nullptr, timeDefinition);
}

void AddResizes()
{
    for (int i = 0; i < 3; ++i)
        for (const int bits : {24, 32})
            for (const Scale& s : kScales)
            {
                const auto method = static_cast<CTarvexDib::InterpolMethod>(i);
                const auto resize = [=](CTarvexDib& to)
                {
                    to.SetupInterpolMethod(method);
                    return to.Resize(Picture(s.fromWidth, s.fromHeight, bits));
                };
                const auto define = [=](CTarvexDib& to)
                { reference::Resize(to, Picture(s.fromWidth, s.fromHeight, bits), method); };
                // The definition of cubic takes up to a second for a large picture.
                AddOperation(ResizeName(s, i, bits), s.width, s.height, bits, resize, define,
                             i < 2 || s.width * s.height < 1000000);
                if (i == 0)
                    AddCopy(s.width, s.height, bits);
            }
}

// The blends of two sources, with 24 or 32 bits.
void AddBlends(int bits)
{
    using Blend = std::function<bool(CTarvexDib&, CTarvexDib&, CTarvexDib&)>;
    using Definition = std::function<void(CTarvexDib&, CTarvexDib&, CTarvexDib&)>;
    const auto add = [bits](const std::string& name, int firstBits, int first, const Blend& blend,
                            const Definition& definition)
    {
        const auto sources = [=](const auto& operation)
        {
            return [=](CTarvexDib& to) {
                return operation(to, Picture(kWidth, kHeight, firstBits, first),
                                 Picture(kWidth, kHeight, bits, 2));
            };
        };
        AddOperation(WithBits(name, bits), kWidth, kHeight, bits, sources(blend), sources(definition));
    };
    add(
        "AlphaBlendPerPixel", 32, 0, [](auto& to, auto& a, auto& b) { return to.AlphaBlendPerPixel(&a, &b); },
        reference::AlphaBlendPerPixel);
    add(
        "AlphaBlend", bits, 0, [](auto& to, auto& a, auto& b) { return to.AlphaBlend(&a, &b, 77); },
        [](auto& to, auto& a, auto& b) { reference::AlphaBlend(to, a, b, 77); });
    add(
        "TransparentBlend", bits, kCutOut,
        [](auto& to, auto& a, auto& b) { return to.TransparentBlend(&a, &b, kKey[2], kKey[1], kKey[0]); },
        [](auto& to, auto& a, auto& b) { reference::TransparentBlend(to, a, b, kKey[2], kKey[1], kKey[0]); });
    for (const int strength : {100, bits == 24 ? 37 : 50})
        add(
            "ShadePerPixel " + std::to_string(strength) + "%", bits, 0,
            [=](auto& to, auto& a, auto& b) { return to.ShadePerPixel(&a, &b, strength); },
            [=](auto& to, auto& a, auto& b) { reference::ShadePerPixel(to, a, b, strength); });
}

void AddRegions(int bits)
{
    const auto source = [bits]() -> CTarvexDib& { return Picture(kWidth, kHeight, bits); };
    const auto add = [bits](const char* name, const auto& operation, const auto& definition)
    { AddOperation(WithBits(name, bits), kWidth, kHeight, bits, operation, definition); };
    add(
        "Clone", [=](CTarvexDib& to) { return to.Clone(source(), 0, 0, kWidth / 2, kHeight / 2); },
        [=](CTarvexDib& to) { reference::Clone(to, source(), 0, 0, kWidth / 2, kHeight / 2); });
    add(
        "CopyRect", [=](CTarvexDib& to) { return to.CopyRect(0, 0, source(), 0, 0, kWidth, kHeight); },
        [=](CTarvexDib& to) { reference::CopyRect(to, 0, 0, source(), 0, 0, kWidth, kHeight); });
    add(
        "CopyRect from bytes",
        [=](CTarvexDib& to)
        { return to.CopyRect(1, 0, source().GetScanLine(0), kWidth, kHeight, bits, 0, 1, kWidth, kHeight); },
        [=](CTarvexDib& to)
        { reference::CopyRect(to, 1, 0, source().GetScanLine(0), kWidth, kHeight, 0, 1, kWidth, kHeight); });
    add(
        "Copy",
        [=](CTarvexDib& to)
        {
            to = source();
            return true;
        },
        [=](CTarvexDib& to)
        {
            to.Create(kWidth, kHeight, bits);
            reference::CopyRect(to, 0, 0, source(), 0, 0, kWidth, kHeight);
        });
}

void AddAlphas()
{
    const auto add = [](const char* name, const auto& operation, const auto& definition)
    { AddOperation(name, kWidth, kHeight, 32, operation, definition); };
    const auto plane = []() -> CTarvexDib& { return Picture(kWidth, kHeight, 8); };
    add(
        "SetAlphaPlane", [=](CTarvexDib& to) { return to.SetAlphaPlane(&plane()); },
        [=](CTarvexDib& to) { reference::SetAlphaPlane(to, plane()); });
    add(
        "ColorMix", [](CTarvexDib& to) { return to.ColorMix(0.2F, 0.4F, 0.6F, 0.5F); },
        [](CTarvexDib& to) { reference::ColorMix(to, 0.2F, 0.4F, 0.6F, 0.5F); });
    add(
        "AlphaAlpha", [](CTarvexDib& to) { return to.AlphaAlpha(9); },
        [](CTarvexDib& to) { reference::AlphaAlpha(to, 9); });
    add(
        "resetAlpha", [](CTarvexDib& to) { return to.resetAlpha(); },
        [](CTarvexDib& to) { reference::AlphaAlpha(to, 255); });
}

// An operation that changes a picture in place. Every round needs the original picture again.
void AddChange(const std::string& name, const std::function<CTarvexDib&()>& source, int bits,
               const std::function<bool(CTarvexDib&)>& operation,
               const std::function<void(CTarvexDib&)>& definition)
{
    const auto dib = std::make_shared<CTarvexDib>();
    const auto agree = [=]
    {
        CTarvexDib result = source(), expected = result;
        definition(expected);
        return operation(result) && SameBytes(result, expected);
    };
    const auto define = [=]
    {
        definition(*dib);
        return true;
    };
    const auto restore = [=]
    {
        *dib = source();
        return true;
    };
    AddPair(
        name, kWidth, kHeight, bits, [=] { return operation(*dib); }, define, agree, restore);
}

void AddChanges()
{
    for (const bool opaqueOthers : {false, true})
        AddChange(
            opaqueOthers ? "TransparentAlpha, opaque others" : "TransparentAlpha",
            []() -> CTarvexDib& { return Picture(kWidth, kHeight, 32, kCutOut); }, 32,
            [=](CTarvexDib& dib) { return dib.TransparentAlpha(kKey[2], kKey[1], kKey[0], opaqueOthers); },
            [=](CTarvexDib& dib)
            { reference::TransparentAlpha(dib, kKey[2], kKey[1], kKey[0], opaqueOthers); });

    constexpr int conversions[][2] = {{1, 24}, {4, 24}, {8, 24}, {8, 32}, {16, 32}, {24, 32}};
    for (const auto [from, to] : conversions)
    {
        const bool withAlpha = to == 32;
        AddChange(
            "ChangeToTrueColor " + std::to_string(from) + " to " + std::to_string(to),
            [depth = from]() -> CTarvexDib& { return Picture(kWidth, kHeight, depth); }, to,
            [=](CTarvexDib& dib) { return dib.ChangeToTrueColor(withAlpha); },
            [=](CTarvexDib& dib) { reference::ChangeToTrueColor(dib, withAlpha); });
    }
}

void AddFiles()
{
    const auto source = []() -> CTarvexDib& { return Picture(kWidth, kHeight, 24); };
    const auto pack = [=](const auto& save)
    {
        std::vector<unsigned char> packed(static_cast<std::size_t>(source().GetDibLength()));
        save(packed);
        return packed;
    };
    using Bytes = std::vector<unsigned char>;
    const auto save = [=](Bytes& bytes)
    { return source().Save(bytes.data(), static_cast<int>(bytes.size())); };
    const auto define = [=](Bytes& bytes) { reference::Save(source(), bytes.data()); };

    AddOperation(
        "Load from memory 24", kWidth, kHeight, 24,
        [=, packed = std::make_shared<Bytes>()](CTarvexDib& to)
        {
            if (packed->empty())
                *packed = pack(define);
            return to.Load(packed->data(), static_cast<int>(packed->size()));
        },
        [=, packed = std::make_shared<Bytes>()](CTarvexDib& to)
        {
            if (packed->empty())
                *packed = pack(define);
            reference::Load(to, packed->data());
        });
    const auto buffer = std::make_shared<Bytes>();
    AddPair(
        "Save to memory 24", kWidth, kHeight, 24, [=] { return save(*buffer); },
        [=]
        {
            define(*buffer);
            return true;
        },
        [=]
        {
            *buffer = pack(save);
            return *buffer == pack(define);
        });

    AddOperation(
        "Load from a file 24", kWidth, kHeight, 24, [](CTarvexDib& to) { return to.Load(BmpFile().c_str()); },
        [](CTarvexDib& to) { reference::Load(to, BmpFile()); });
    AddPair(
        "Save to a file 24", kWidth, kHeight, 24, [=] { return source().Save(ScratchFile().c_str()); },
        [=]
        {
            reference::Save(source(), ScratchFile());
            return true;
        },
        [=]
        {
            if (!source().Save(ScratchFile().c_str()))
                return false;
            const std::vector<char> saved = FileBytes(ScratchFile());
            reference::Save(source(), ScratchFile());
            return saved == FileBytes(ScratchFile());
        });
}

// Drawing into a memory context and capturing from it. GdiProperty.cpp checks the pixels.
void AddDrawing()
{
    struct Canvas
    {
        CBitmap bitmap;
        CDC dc; // is destroyed first, which deselects the bitmap
        CWinDib dib;
    };
    const auto add = [](const std::string& name, const Scale& s, int bits, int mode, const auto& work)
    {
        const auto canvas = std::make_shared<Canvas>();
        const auto prepare = [=]
        {
            if (canvas->dc.GetSafeHdc() != nullptr)
                return true; // made for an earlier repetition
            static_cast<CTarvexDib&>(canvas->dib) = Picture(s.fromWidth, s.fromHeight, bits);
            return canvas->bitmap.Attach(CreateBitmap(s.width, s.height, 1, 32, nullptr)) &&
                   canvas->dc.CreateCompatibleDC(nullptr) &&
                   SelectObject(canvas->dc, canvas->bitmap.GetSafeHandle()) != nullptr &&
                   SetStretchBltMode(canvas->dc, mode) != 0;
        };
        Add(
            name + "/library", s.width, s.height, [=] { return work(*canvas); }, prepare, nullptr,
            CopyName(s.width, s.height, 32));
    };
    for (const Scale& s : kScales)
        for (const int bits : {8, 32})
            for (const int mode : {COLORONCOLOR, BLACKONWHITE})
                if (mode == COLORONCOLOR || s.fromWidth > s.width)
                    add(WithBits(mode == COLORONCOLOR ? "StretchDraw" : "StretchDraw by AND", bits) + ", " +
                            ScaleName(s),
                        s, bits, mode,
                        [=](Canvas& to) { return to.dib.StretchDraw(to.dc, 0, 0, s.width, s.height), true; });
    add("Capture 32", {kWidth, kHeight, kWidth, kHeight}, 32, COLORONCOLOR,
        [](Canvas& from) { return from.dib.Capture(from.dc, CRect(0, 0, kWidth, kHeight)); });
}

} // namespace

CTarvexDib& Picture(int width, int height, int bits, int number)
{
    static std::map<std::tuple<int, int, int, int>, CTarvexDib> pictures;
    const auto [place, isNew] = pictures.try_emplace({width, height, bits, number});
    CTarvexDib& dib = place->second;
    if (isNew && bits >= 24 && dib.Create(width, height, bits))
        Draw(dib, number);
    else if (isNew)
        LoadNoise(dib, width, height, bits);
    return dib;
}

std::size_t ImageBytes(const CTarvexDib& dib)
{
    return static_cast<std::size_t>(dib.BytesPerScanLine()) * static_cast<std::size_t>(dib.Height());
}

const std::string& BmpFile()
{
    static const std::string path = []
    {
        const std::string name = TemporaryFile("zelutil-bench-in.bmp");
        reference::Save(Picture(kWidth, kHeight, 24), name);
        return name;
    }();
    return path;
}

const std::string& ScratchFile()
{
    static const std::string path = TemporaryFile("zelutil-bench-out.bmp");
    return path;
}

std::string ResizeName(const Scale& scale, int method, int bits)
{
    return "Resize " + WithBits(kMethods[method], bits) + ", " + ScaleName(scale);
}

void Add(const std::string& name, int width, int height, const Work& work, const Work& prepare,
         const Work& restore, const std::string& label)
{
    const auto run = [=](benchmark::State& state)
    {
        if (!prepare())
            return state.SkipWithError("differs from its definition");
        if (restore)
            restore();
        work(); // makes the pictures and fills the caches before the clock starts
        for ([[maybe_unused]] auto _ : state)
        {
            if (restore)
            {
                state.PauseTiming();
                restore();
                state.ResumeTiming();
            }
            benchmark::DoNotOptimize(work());
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * width * height);
        state.SetLabel(label);
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
}

void AddPeer(const std::string& name, const std::string& peer, int width, int height,
             const std::function<void()>& work)
{
    const auto run = [work]
    {
        work();
        return true;
    };
    Add(name + "/" + peer, width, height, run, [] { return true; });
}

void AddPeer(const std::string& name, const std::string& peer, const std::function<void()>& work)
{
    AddPeer(name, peer, kWidth, kHeight, work);
}

int main(int argc, char** argv)
{
#if defined(__GLIBC__)
    // Keeps freed memory in the process, so that a round does not measure how the system provides pages.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
#endif
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    AddResizes();
    for (const int bits : {24, 32})
    {
        AddBlends(bits);
        AddRegions(bits);
        AddCopy(kWidth, kHeight, bits);
    }
    AddAlphas();
    AddChanges();
    AddFiles();
    AddDrawing();
#if defined(HAVE_FREEIMAGE)
    AddFreeImage();
#endif
#if defined(HAVE_LIBYUV)
    AddLibYuv();
#endif
#if defined(HAVE_OPENCV)
    AddOpenCv();
#endif
#if defined(HAVE_PIXMAN)
    AddPixman();
#endif
#if defined(HAVE_SDL)
    AddSdl();
#endif
#if defined(HAVE_STB)
    AddStb();
#endif
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove(TemporaryFile("zelutil-bench-in.bmp"));
    std::filesystem::remove(ScratchFile());
}
