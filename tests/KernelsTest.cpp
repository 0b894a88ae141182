#include "image/Kernels.h"

#include "Pictures.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>

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
    const zel::ShadeFactors shades[] = {zel::ShadeFactors(50), zel::ShadeFactors(-80), zel::ShadeFactors(900),
                                        zel::ShadeFactors(-100)};
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
            const int behind = RandomInt(0, 1) == 0 ? 0 : Rows::kGuard; // nothing, for the sanitizer to watch
            const Rows rows(count);
            const bool inPlace = RandomInt(0, 2) == 0, overFirst = !inPlace && RandomInt(0, 1) == 0;

            const auto run = [&](int operation, const zel::Kernels& kernels)
            {
                const int toStep = operation < 5 || operation == 9 ? steps[0] : 4;
                const int fromSteps[] = {4, steps[1], steps[1], steps[1], steps[1], 1, 0, 0, 3, 4, 0};
                const auto part = [&](const Bytes& bytes, int offset, int step)
                { return Bytes(bytes.begin(), bytes.begin() + offset + step * count + behind); };
                Bytes target = part(rows.target, at, toStep);
                const Bytes first = part(rows.first, at / 2, fromSteps[operation]);
                const Bytes second = part(rows.second, at / 3, steps[2]);
                unsigned char* const to = target.data() + at;
                const bool isSource = operation < 5 && steps[0] == (operation == 0 ? 4 : steps[1]);
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
                    kernels.shadeRow(to, steps[0], s1, steps[1], s2, steps[2], shades[round % 4], count);
                    break;
                case 5:
                    kernels.setAlphaRow(to, s1, count);
                    break;
                case 6:
                    kernels.fillAlphaRow(to, byte, count);
                    break;
                case 7:
                    kernels.keyAlphaRow(to, static_cast<std::uint32_t>(key[0] | key[2] << 16), round % 2 == 0,
                                        count);
                    break;
                case 8:
                    kernels.expandTripleRow(to, s1, count);
                    break;
                case 9:
                    kernels.copyColorsRow(to, steps[0], s1, count);
                    break;
                default:
                    kernels.mixRow(to, color, alpha, count);
                }
                return target;
            };
            for (int operation = 0; operation < 11; ++operation)
                ASSERT_EQ(run(operation, *variant), run(operation, plain))
                    << "operation " << operation << ", " << count << " pixels at " << at << ", steps "
                    << steps[0] << steps[1] << steps[2] << (inPlace ? ", in place" : "");
        }
}

TEST(Kernels, RowsEndWithTheirLastPixels)
{
    std::uint32_t pixels[256];
    for (std::uint32_t& pixel : pixels)
        pixel = static_cast<std::uint32_t>(Random()());
    for (int round = 0; round < 1200; ++round)
    {
        const int count = 1 + round % 40, step = RandomInt(3, 4), channels = RandomInt(3, step);
        const auto bytes = static_cast<std::size_t>(step * count);
        Bytes row(bytes), expected(bytes); // with nothing behind them, like their sources
        for (const int bits : {1, 4, 8})
        {
            const Bytes indices = RandomBytes(static_cast<std::size_t>((count * bits + 7) / 8));
            for (int x = 0; x < count; ++x)
            {
                const int byte = indices[static_cast<std::size_t>(x * bits / 8)];
                const int index = byte >> (8 - bits - x * bits % 8) & ((1 << bits) - 1);
                std::memcpy(&expected[static_cast<std::size_t>(step * x)], &pixels[index],
                            static_cast<std::size_t>(step));
            }
            zel::ExpandIndexRow(row.data(), step, indices.data(), bits, pixels, count);
            ASSERT_EQ(row, expected) << count << " indices of " << bits << " bits";
        }

        const Bytes words = RandomBytes(2 * static_cast<std::size_t>(count));
        for (int x = 0; x < count; ++x)
            zel::ExpandWordRow(expected.data() + step * x, step, words.data() + 2 * x, 1);
        zel::ExpandWordRow(row.data(), step, words.data(), count);
        ASSERT_EQ(row, expected) << count << " words";

        const Bytes source = RandomBytes(static_cast<std::size_t>(channels * RandomInt(1, 60)));
        const int last = static_cast<int>(source.size()) / channels - 1;
        std::vector<int> offsets(static_cast<std::size_t>(count));
        for (int& offset : offsets)
            offset = RandomInt(0, last) * channels;
        offsets.back() = last * channels;
        std::sort(offsets.begin(), offsets.end());
        for (int x = 0; x < count; ++x)
            std::copy_n(source.data() + offsets[static_cast<std::size_t>(x)], channels,
                        expected.data() + step * x);
        zel::GatherRow(row.data(), step, source.data(), offsets.data(), count, channels);
        ASSERT_EQ(row, expected) << count << " offsets";
    }
}

TEST(Kernels, EveryPairOfBytesIsShadedTheSame)
{
    constexpr int kCount = 65536 / 3 + 10; // so that vectors reach all pairs
    Bytes first(3 * kCount), second(3 * kCount);
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        first[i] = static_cast<unsigned char>(i);
        second[i] = static_cast<unsigned char>(i >> 8);
    }
    std::vector<int> strengths = {std::numeric_limits<int>::min(),
                                  std::numeric_limits<int>::max(),
                                  -100000,
                                  100000,
                                  12800,
                                  -12800,
                                  1000,
                                  -1000};
    for (int strength = -120; strength <= 400; strength += 4)
        strengths.push_back(strength);
    for (int distance = 1; distance <= 30; ++distance) // where results are largest
        strengths.insert(strengths.end(), {-100 - distance, -100 + distance});
    const auto table = std::make_unique<zel::ShadeTable>();
    for (const int strength : strengths)
    {
        const zel::ShadeFactors factors(strength);
        Bytes expected(first.size()), actual(first.size());
        zel::ShadeRow(expected.data(), 3, first.data(), 3, second.data(), 3, factors, kCount);
        zel::FillShadeTable(*table, factors);
        zel::ShadeRowByTable(actual.data(), 3, first.data(), 3, second.data(), 3, *table, kCount);
        ASSERT_EQ(actual, expected) << strength;
        for (const zel::Kernels* const variant : Variants())
        {
            std::fill(actual.begin(), actual.end(), static_cast<unsigned char>(1));
            variant->shadeRow(actual.data(), 3, first.data(), 3, second.data(), 3, factors, kCount);
            ASSERT_EQ(actual, expected) << strength;
        }
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
                floats.resize(static_cast<std::size_t>(channels * count)); // without what may be written over
                return floats;
            };
            const std::vector<float> floats = run(plain);
            ASSERT_EQ(run(*variant), floats) << count << " columns of " << taps << " taps";

            const float* const rows[4] = {floats.data(), floats.data(), floats.data(), floats.data()};
            const float weights[4] = {0.125F, taps == 2 ? 0.875F : 0.25F, 0.5F, 0.125F};
            const auto add = [&](const zel::Kernels& kernels)
            {
                const int sums = channels * count;
                Bytes bytes(static_cast<std::size_t>(2 * sums) + 2, 9);
                kernels.addRows(bytes.data(), bytes.data() + sums, rows, weights, taps, sums);
                return bytes;
            };
            ASSERT_EQ(add(*variant), add(plain)) << count;
        }
}

TEST(Kernels, VariantsSumPairsAndCubicPixelsTheSame)
{
    const zel::Kernels& plain = zel::kPlainKernels;
    for (const zel::Kernels* const variant : Variants())
        for (int round = 0; round < 3000; ++round)
        {
            const int count = round % 71, channels = RandomInt(3, 4), step = RandomInt(channels, 4);
            const int sourceWidth = RandomInt(4, 40), total = RandomInt(1, 11), rows = RandomInt(1, 11);
            const int rowBytes = sourceWidth * step;
            const Bytes source = RandomBytes(static_cast<std::size_t>(rowBytes)); // nothing behind it
            std::vector<int> offsets, list;
            Bytes weights;
            std::vector<zel::CubicTap> taps(static_cast<std::size_t>(count));
            zel::PairColumns columns = {nullptr, nullptr, step, 0, 0};
            int within = 0;
            for (int i = 0; i < count; ++i)
            {
                const int at = i * sourceWidth / count, offset = at * step;
                offsets.push_back(offset);
                columns.pairs += at + 1 < sourceWidth;
                columns.whole += offset + 8 <= rowBytes;
                weights.push_back(static_cast<unsigned char>(RandomInt(0, total)));
                weights.push_back(static_cast<unsigned char>(total - weights.back()));
                taps[static_cast<std::size_t>(i)] =
                    zel::MakeCubicTap(at + RandomInt(0, 6) / 6.0, sourceWidth, step);
                within += taps[static_cast<std::size_t>(i)].offset[3] + 4 <= rowBytes;
                if (RandomInt(0, 2) == 0)
                    list.push_back(i);
            }
            columns.offsets = offsets.data();
            columns.weights = weights.data();
            columns.whole = std::min(columns.whole, columns.pairs);

            const auto sums = static_cast<std::size_t>(channels * count);
            const auto pairs = [&](const zel::Kernels& kernels)
            {
                std::vector<std::uint16_t> words(sums + 8, 7);
                kernels.pairRow(words.data(), source.data(), columns, count, channels);
                words.resize(sums); // without what may be written over
                return words;
            };
            const std::vector<std::uint16_t> words = pairs(plain);
            ASSERT_EQ(pairs(*variant), words) << count << " columns of " << step << " bytes";

            const std::vector<std::uint16_t> others(words.rbegin(), words.rend());
            Bytes divided(sums), quotients(sums);
            const int weight = RandomInt(0, rows);
            if (total * rows < 2)
                continue;
            variant->addPairRows(divided.data(), words.data(), others.data(), rows - weight, weight,
                                 zel::SmallDivisor(total * rows), static_cast<std::ptrdiff_t>(sums));
            for (std::size_t i = 0; i < sums; ++i)
                quotients[i] = static_cast<unsigned char>(
                    (words[i] * (rows - weight) + others[i] * weight + total * rows / 2) / (total * rows));
            ASSERT_EQ(divided, quotients) << "over " << total * rows;

            const unsigned char* const four[4] = {source.data(), source.data(), source.data(), source.data()};
            const double shares[4] = {1.0 / 6, 4.0 / 6, 1.0 / 6, 0.0};
            const auto cubic = [&](const zel::Kernels& kernels)
            {
                Bytes bytes(static_cast<std::size_t>(step * count), 9);
                kernels.cubicPixels(bytes.data(), step, four, shares, taps.data(), list.data(),
                                    static_cast<int>(list.size()), within, channels);
                return bytes;
            };
            ASSERT_EQ(cubic(*variant), cubic(plain)) << count << " columns of " << step << " bytes";
        }
}

TEST(Kernels, SixthsAreRoundedAndTheirBordersMarked)
{
    std::vector<const zel::Kernels*> all = Variants();
    all.push_back(&zel::kPlainKernels);
    for (const zel::Kernels* const kernels : all)
        for (int round = 0; round < 2000; ++round)
        {
            const int pixelSize = RandomInt(3, 4), channels = RandomInt(3, pixelSize);
            const int step = pixelSize * RandomInt(1, 16), count = 1 + round % 63;
            const auto bytes = static_cast<std::size_t>(step * (count - 1) + 3 * pixelSize);
            const Bytes source[3] = {RandomBytes(bytes), RandomBytes(bytes), RandomBytes(bytes)};
            const unsigned char* const rows[3] = {source[0].data(), source[1].data(), source[2].data()};
            const auto sums = static_cast<std::size_t>(channels * count);
            Bytes out(sums), undecided(sums), quotients, borders;
            for (int i = 0; i < count; ++i)
                for (int c = 0; c < channels; ++c)
                {
                    int sum = 0;
                    for (int j = 0; j < 3; ++j)
                        for (int k = 0; k < 3; ++k)
                            sum +=
                                rows[j][i * step + k * pixelSize + c] * (j == 1 ? 4 : 1) * (k == 1 ? 4 : 1);
                    quotients.push_back(static_cast<unsigned char>((sum + 18) / 36));
                    borders.push_back(sum % 36 == 18);
                }
            kernels->sixthsRow(out.data(), undecided.data(), rows, step, pixelSize, count, channels);
            ASSERT_EQ(out, quotients) << count << " columns of " << pixelSize << " bytes, by " << step;
            ASSERT_EQ(undecided, borders) << count << " columns of " << pixelSize << " bytes, by " << step;
        }
}

TEST(Kernels, SmallDivisorsDivideEveryNumber)
{
    for (int divisor = 2; divisor <= 127; ++divisor)
    {
        const zel::SmallDivisor small(divisor);
        for (int number = 0; 2 * number <= 511 * divisor; ++number)
            ASSERT_EQ(number * small.multiplier >> 16 >> small.shift, number / divisor) << number;
    }
}
