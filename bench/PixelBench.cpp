// Times the operations of the image: pixels per second of the picture that is written, beside a copy of its
// bytes. Every operation is run once before the clock starts and must succeed.

#include "ZelUtil/TarvexDib.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

std::size_t ImageBytes(const CTarvexDib& dib)
{
    return static_cast<std::size_t>(dib.BytesPerScanLine()) * static_cast<std::size_t>(dib.Height());
}

CTarvexDib Noise(int width, int height, int bits)
{
    std::mt19937 random(1);
    CTarvexDib dib;
    dib.Create(width, height, bits);
    for (std::size_t i = 0; i < ImageBytes(dib); ++i)
        dib.GetScanLine(0)[i] = static_cast<unsigned char>(random());
    return dib;
}

CTarvexDib Picture(int bits)
{
    return Noise(kWidth, kHeight, bits);
}

CTarvexDib OneBitPicture()
{
    const CTarvexDib noise = Noise(kWidth / 8, kHeight, 8); // the same bytes a row
    std::vector<unsigned char> packed(static_cast<std::size_t>(noise.GetDibLength()));
    noise.Save(packed.data(), noise.GetDibLength());
    packed[4] = kWidth & 255;
    packed[5] = kWidth >> 8;
    packed[14] = 1;
    packed[32] = 0;
    packed[33] = 1; // the table stays as long as it is
    CTarvexDib dib;
    dib.Load(packed.data(), static_cast<int>(packed.size()));
    return dib;
}

// One operation on pictures that it owns.
void Add(const std::string& name, int width, int height, std::function<bool()> operation)
{
    const auto run = [=](benchmark::State& state)
    {
        if (!operation())
            state.SkipWithError("refused");
        for ([[maybe_unused]] auto _ : state)
        {
            benchmark::DoNotOptimize(operation());
            benchmark::ClobberMemory();
        }
        const double pixels = static_cast<double>(width) * height;
        state.counters["Mpx/s"] =
            benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
}

void AddCopy(const std::string& name, int width, int height, int bits)
{
    auto run = [=, from = Noise(width, height, bits), to = Noise(width, height, bits)]()
    {
        std::memcpy(to.GetScanLine(0), from.GetScanLine(0), ImageBytes(to));
        return true;
    };
    Add(name, width, height, run);
}

void AddResizes(const std::string& name, int fromWidth, int fromHeight, int width, int height)
{
    const char* const methods[] = {"nearest", "bilinear", "cubic"};
    for (const int bits : {24, 32})
    {
        const std::string suffix = bits == 24 ? "/24" : "/32";
        for (int method = 0; method < 3; ++method)
        {
            CTarvexDib to = Noise(width, height, bits);
            to.SetupInterpolMethod(static_cast<CTarvexDib::InterpolMethod>(method));
            Add("Resize " + name + " " + methods[method] + suffix, width, height,
                [=, from = Noise(fromWidth, fromHeight, bits)]() mutable { return to.Resize(from); });
        }
        AddCopy("memcpy " + name + suffix, width, height, bits);
    }
}

void AddBlends()
{
    for (const int bits : {24, 32})
    {
        const std::string suffix = bits == 24 ? "/24" : "/32";
        const CTarvexDib to = Picture(bits), first = Picture(bits), second = Picture(bits),
                         quad = Picture(32);
        Add("AlphaBlendPerPixel" + suffix, kWidth, kHeight,
            [=] { return to.AlphaBlendPerPixel(&quad, &second); });
        Add("AlphaBlend" + suffix, kWidth, kHeight, [=] { return to.AlphaBlend(&first, &second, 77); });
        Add("TransparentBlend" + suffix, kWidth, kHeight,
            [=] { return to.TransparentBlend(&first, &second, 1, 2, 3); });
        Add("ShadePerPixel 100" + suffix, kWidth, kHeight,
            [=] { return to.ShadePerPixel(&first, &second, 100); });
        Add("ShadePerPixel 50" + suffix, kWidth, kHeight,
            [=] { return to.ShadePerPixel(&first, &second, 50); });
        Add("Clone" + suffix, kWidth, kHeight,
            [=] { return to.Clone(first, 0, 0, kWidth / 2, kHeight / 2); });
        Add("CopyRect" + suffix, kWidth, kHeight,
            [=] { return to.CopyRect(0, 0, first, 0, 0, kWidth, kHeight); });
        AddCopy("memcpy" + suffix, kWidth, kHeight, bits);
    }
    const CTarvexDib to = Picture(32), plane = Picture(8);
    Add("SetAlphaPlane", kWidth, kHeight, [=] { return to.SetAlphaPlane(&plane); });
    Add("TransparentAlpha", kWidth, kHeight, [=] { return to.TransparentAlpha(1, 2, 3, true); });
    Add("ColorMix", kWidth, kHeight, [dib = to]() mutable { return dib.ColorMix(0.2F, 0.4F, 0.6F, 0.5F); });
    Add("AlphaAlpha", kWidth, kHeight, [=] { return to.AlphaAlpha(9); });
    Add("resetAlpha", kWidth, kHeight, [dib = to]() mutable { return dib.resetAlpha(); });
}

void AddConversionsAndFiles()
{
    // ChangeToTrueColor works in place, so each round starts from a copy; the copy alone stands beside it.
    const struct
    {
        const char* name;
        CTarvexDib picture;
        bool withAlpha;
    } conversions[] = {
        {"1 to 24", OneBitPicture(), false}, {"8 to 32", Picture(8), true}, {"24 to 32", Picture(24), true}};
    for (const auto& [name, picture, withAlpha] : conversions)
    {
        Add(std::string("copy and ChangeToTrueColor ") + name, kWidth, kHeight,
            [dib = CTarvexDib(), source = picture, alpha = withAlpha]() mutable
            {
                dib = source;
                return dib.ChangeToTrueColor(alpha);
            });
        Add(std::string("copy before ") + name, kWidth, kHeight,
            [dib = CTarvexDib(), source = picture]() mutable { return (dib = source).BitCount() > 0; });
    }
    std::FILE* const file = std::tmpfile();
    Add("Save to a stream/24", kWidth, kHeight,
        [file, dib = Picture(24)]
        {
            std::rewind(file);
            return dib.Save(file);
        });
    Add("Load from a stream/24", kWidth, kHeight,
        [file, dib = CTarvexDib()]() mutable
        {
            std::rewind(file);
            return dib.Load(file);
        });
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    AddResizes("640 x 480 to 1920 x 1440", 640, 480, 1920, 1440);
    AddBlends();
    AddConversionsAndFiles();
    benchmark::RunSpecifiedBenchmarks();
}
