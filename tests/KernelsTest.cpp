#include "image/Kernels.h"

#include "Pictures.h"

#include <gtest/gtest.h>

using namespace test;

namespace
{

std::vector<const zel::Kernels*> Variants()
{
#if defined(__x86_64__) || defined(__i386__)
    if (__builtin_cpu_supports("avx2"))
        return {&zel::kSse2Kernels, &zel::kAvx2Kernels};
    return {&zel::kSse2Kernels};
#else
    return {};
#endif
}

// Rows of random bytes, and of few values, so that keys are met; with guard bytes around them.
struct Rows
{
    static constexpr int kGuard = 40;

    explicit Rows(int count) : target(Row(count)), first(Row(count)), second(Row(count)) {}

    static Bytes Row(int count)
    {
        Bytes bytes = RandomBytes(static_cast<std::size_t>(4 * count + 2 * kGuard));
        if (RandomInt(0, 1) == 0)
            for (unsigned char& byte : bytes)
                byte = byte < 128 ? 0 : 255;
        return bytes;
    }

    Bytes target, first, second;
};

} // namespace

TEST(Kernels, VariantsWriteWhatThePlainRowsWrite)
{
    const zel::Kernels& plain = zel::kPlainKernels;
    for (const zel::Kernels* const variant : Variants())
        for (int round = 0; round < 6000; ++round)
        {
            const int count = round % 71, at = RandomInt(0, 31);
            const int steps[] = {RandomInt(3, 4), RandomInt(3, 4), RandomInt(3, 4)};
            const int alpha = round % 257;
            const auto byte = static_cast<unsigned char>(alpha);
            const unsigned char key[3] = {static_cast<unsigned char>(255 * RandomInt(0, 1)), 0,
                                          static_cast<unsigned char>(255 * RandomInt(0, 1))};
            const int color[3] = {RandomInt(0, 255), RandomInt(0, 255), RandomInt(0, 255)};
            const Rows rows(count);
            const bool inPlace = RandomInt(0, 2) == 0, overFirst = !inPlace && RandomInt(0, 1) == 0;

            const auto run = [&](int operation, const zel::Kernels& kernels)
            {
                Bytes target = rows.target, first = rows.first, second = rows.second;
                unsigned char* const to = target.data() + at;
                const bool isSource = operation < 4 && steps[0] == (operation == 0 ? 4 : steps[1]);
                const unsigned char* const s1 = overFirst && isSource ? to : first.data() + at / 2;
                const unsigned char* const s2 = inPlace && steps[0] == steps[2] ? to : second.data() + at / 3;
                switch (operation)
                {
                case 0:
                    kernels.blendRowByAlpha(to, steps[0], s1, s2, steps[2], count);
                    break;
                case 1:
                    kernels.blendRow(to, steps[0], s1, steps[1], s2, steps[2], byte, count);
                    break;
                case 2:
                    kernels.keyRow(to, steps[0], s1, steps[1], s2, steps[2], key, count);
                    break;
                case 3:
                    kernels.multiplyRow(to, steps[0], s1, steps[1], s2, steps[2], count);
                    break;
                case 4:
                    kernels.setAlphaRow(to, s1, count);
                    break;
                case 5:
                    kernels.fillAlphaRow(to, byte, count);
                    break;
                case 6:
                    kernels.keyAlphaRow(to, static_cast<std::uint32_t>(key[0] | key[2] << 16), round % 2 == 0,
                                        count);
                    break;
                case 7:
                    kernels.expandTripleRow(to, s1, count);
                    break;
                case 8:
                    kernels.copyColorsRow(to, steps[0], s1, count);
                    break;
                default:
                    kernels.mixRow(to, color, alpha, count);
                }
                return target;
            };
            for (int operation = 0; operation < 10; ++operation)
                ASSERT_EQ(run(operation, *variant), run(operation, plain))
                    << "operation " << operation << ", " << count << " pixels at " << at << ", steps "
                    << steps[0] << steps[1] << steps[2] << (inPlace ? ", in place" : "");
        }
}

TEST(Kernels, VariantsFilterAndAddTheSame)
{
    const zel::Kernels& plain = zel::kPlainKernels;
    for (const zel::Kernels* const variant : Variants())
        for (int round = 0; round < 3000; ++round)
        {
            const int count = round % 71, taps = RandomInt(0, 1) == 0 ? 2 : 4, channels = RandomInt(3, 4);
            const int sourceWidth = RandomInt(4, 40);
            const Bytes source =
                RandomBytes(static_cast<std::size_t>(sourceWidth * channels)); // nothing behind it
            std::vector<zel::FilterTap> columns(static_cast<std::size_t>(count));
            for (zel::FilterTap& column : columns)
                for (int k = 0; k < taps; ++k)
                {
                    column.offset[k] = RandomInt(0, sourceWidth - 2) * channels; // not the last pixel
                    column.weight[k] =
                        static_cast<float>(RandomInt(0, 1000)) / 1000.0F / static_cast<float>(taps);
                }
            const int within = RandomInt(0, count);

            const auto run = [&](const zel::Kernels& kernels)
            {
                std::vector<float> floats(static_cast<std::size_t>(4 * count) + 1, 7.0F);
                kernels.filterRow(floats.data(), source.data(), columns.data(), taps, count, within,
                                  channels);
                for (int i = 3; channels == 3 && i < 4 * count; i += 4)
                    floats[static_cast<std::size_t>(i)] = 0.0F; // of no meaning
                return floats;
            };
            const std::vector<float> floats = run(plain);
            ASSERT_EQ(run(*variant), floats) << count << " columns of " << taps << " taps";

            const float* const rows[4] = {floats.data(), floats.data(), floats.data(), floats.data()};
            const float weights[4] = {0.125F, 0.25F, 0.5F, 0.125F};
            const auto add = [&](const zel::Kernels& kernels)
            {
                Bytes bytes(static_cast<std::size_t>(8 * count) + 2, 9);
                kernels.addRows(bytes.data(), bytes.data() + 4 * count, rows, weights, taps, 0.1F, 4 * count);
                return bytes;
            };
            ASSERT_EQ(add(*variant), add(plain)) << count;
        }
}
