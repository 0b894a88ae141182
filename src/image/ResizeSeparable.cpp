#include "image/ResizeRows.h"

// Bilinear and cubic at any scale. Two float passes estimate each sum: each source row is filtered along x
// once, and the filtered rows are then added under the weights along y. If the estimate lies farther than the
// error bound from a rounding border, its byte is certain. The other pixels are computed again in doubles, as
// defined.
//
// The error bound. Let u = 255 * 2^-24, the largest byte times the relative rounding error of a float. One
// pass over n taps errs by at most
//   (n / 2) u   from the weights: one below 1 changes by up to 2^-25 when it becomes a float,
//   1 u         from the products, since the weights sum to 1, and
//   (n - 1) u   from the additions,
// which is 6 u for n = 4. Both passes together err by at most 12 u < 12 / 65536. Truncation to whole units of
// 1 / 65536 adds one unit, so that a byte is certain if its sum is 13 units or more away from a border. One
// unit more covers the rounding errors of the doubles, which are below 2^-40, and makes 14. The margin of 16
// leaves two units to spare.

namespace zel
{

static_assert(kRoundingMargin >= 14);

namespace
{

TapSet MakeTapSet(const LinearTaps& tap)
{
    return {{tap.offset[0], tap.offset[1], 0, 0},
            {static_cast<float>(1.0 - tap.fraction), static_cast<float>(tap.fraction), 0.0F, 0.0F}};
}

TapSet MakeTapSet(const CubicTaps& tap)
{
    TapSet result;
    for (int k = 0; k < 4; ++k)
    {
        result.offsets[k] = tap.offset[k];
        result.coefficients[k] = static_cast<float>(tap.weight[k]);
    }
    return result;
}

// What differs between the methods. FixUpPixels computes the listed pixels, counted from column `begin`,
// in doubles as defined.
struct Linear
{
    using Taps = LinearTaps;
    static constexpr int kTaps = 2;
    static constexpr auto MakeTap = MakeLinearTaps;

    static void FixUpPixels(const ResizeJob& job, const Columns<Taps>& columns, int begin, int row,
                            const Taps& rowTap, const int* list, int count)
    {
        const unsigned char* const upper = job.from.GetPixelFast(0, rowTap.offset[0]);
        const unsigned char* const lower = job.from.GetPixelFast(0, rowTap.offset[1]);
        for (int i = 0; i < count; ++i)
            LinearRow(job.to.GetPixelFast(begin + list[i], row), job.to.PixelSize(), upper, lower,
                      rowTap.fraction, columns.taps.get() + begin + list[i], 1, job.channels);
    }
};

struct Cubic
{
    using Taps = CubicTaps;
    static constexpr int kTaps = 4;
    static constexpr auto MakeTap = MakeCubicTaps;

    static void FixUpPixels(const ResizeJob& job, const Columns<Taps>& columns, int begin, int row,
                            const Taps& rowTap, const int* list, int count)
    {
        ActiveKernels().fixUpCubicPixels(MakeCubicFixUp(job, columns, begin, row, rowTap), list, count);
    }
};

template <typename Method>
void ResizeSeparable(const ResizeJob& job)
{
    using Taps = typename Method::Taps;
    const CTarvexDib &to = job.to, &from = job.from;
    const int width = to.Width(), height = to.Height();
    const Columns<Taps> columns(job, Method::MakeTap);
    const auto tapSets = Tabulate(width, [&](int i) { return MakeTapSet(columns.taps.get()[i]); });
    const auto positions = TabulateRows(height, 0.0, job.stepY, [](double y) { return y; });
    RollingBuffer<float, 4> filtered(4 * kStripColumns + 1); // a row may write one float more
    EstimatedStrip strip(job);

    const KernelTable& kernels = ActiveKernels();
    for (int begin = 0; begin < width; begin += kStripColumns)
    {
        const int count = std::min(width - begin, kStripColumns);
        const auto filterRow = [&](float* out, int row)
        {
            kernels.horizontalRow(out, from.GetPixelFast(0, row), tapSets.get() + begin, Method::kTaps, count,
                                  std::clamp(columns.wideReadEnd - begin, 0, count), job.channels);
        };
        filtered.Clear();
        for (int row = height - 1; row >= 0; --row) // the order of memory
        {
            const Taps rowTap = Method::MakeTap(positions.get()[row], from.Height(), 1);
            const TapSet weights = MakeTapSet(rowTap);
            const float* rows[4] = {};
            for (int k = 0; k < Method::kTaps; ++k)
                rows[k] =
                    filtered.Row(rowTap.offset[k], [&](float* out) { filterRow(out, rowTap.offset[k]); });

            strip.Fill(
                to.GetPixelFast(begin, row), count,
                [&](unsigned char* out, unsigned char* ambiguous)
                {
                    kernels.verticalRow(out, ambiguous, rows, weights.coefficients, Method::kTaps,
                                        std::ptrdiff_t{job.channels} * count);
                },
                [&](const int* list, int listed)
                { Method::FixUpPixels(job, columns, begin, row, rowTap, list, listed); });
        }
    }
}

} // namespace

void ResizeLinearSeparable(const ResizeJob& job)
{
    ResizeSeparable<Linear>(job);
}

void ResizeCubicSeparable(const ResizeJob& job)
{
    ResizeSeparable<Cubic>(job);
}

} // namespace zel
