#pragma once

#include <cstddef>
#include <cstdint>

/// The pixel loops of the image operations, one row per call, over pointers, steps and counts.
///
/// A step is the distance from one pixel to the next in bytes: 3 or 4 in true colour. Nothing is checked
/// here, since the operation that calls has checked everything. Integers of several bytes are little-endian,
/// as on every processor that the library is built for.
///
/// The functions below are the scalar reference: plain loops that define what a row is. KernelTable has those
/// that gain by vectors, once per instruction set; all sets write the same bytes.
///
/// To add an instruction set, copy Sse2.cpp and replace every function before its #include of Kernels-inl.h;
/// declare the table below, choose it in Dispatch.cpp, and add the source to CMakeLists.txt and the table to
/// tests/support/Targets.h. To add a single row for a set, write its function in the source of that set and
/// put it into the table in place of the shared one.
namespace zel
{

/// \name Resampling
/// Taps are the pixels that a position on an axis reads, as pixel index times `step`, with what weights them.
/// Indices are clamped to the axis, which repeats the pixels at its ends.
/// @{

struct LinearTaps
{
    int offset[2];
    double fraction; ///< of the way from the first pixel to the second: 0 or more, less than 1
};

struct CubicTaps
{
    int offset[4];
    double weight[4];
};

/// The offset of the pixel that is nearest to `position`.
int NearestOffset(double position, int length, int step);
LinearTaps MakeLinearTaps(double position, int length, int step);
CubicTaps MakeCubicTaps(double position, int length, int step);

/// dst pixel i = the `channels` bytes at src + offsets[i]. There is at least one offset, and none is smaller
/// than the one before.
void ScaleColumnsRow(unsigned char* dst, int dstStep, const unsigned char* src, const int* offsets, int count,
                     int channels);

/// A row of a result as defined, of which some pixels are to be computed in doubles.
template <typename Taps>
struct DefinedRow
{
    unsigned char* dst; ///< of column 0
    int dstStep;
    int channels;
    const unsigned char* src[4]; ///< the source rows of `tap`
    Taps tap;                    ///< of the row, whose offsets are not used
    const Taps* columns;
    int wideReadEnd; ///< from this column on, loading four bytes at a tap could leave the source row
};

/// Writes the bilinear pixels of the columns that `list` names.
void LinearPixels(const DefinedRow<LinearTaps>& row, const int* list, int count);

/// The same for cubic pixels, sums over four rows of four pixels each, weighted with the products of the
/// weights.
void CubicPixels(const DefinedRow<CubicTaps>& row, const int* list, int count);

/// The passes along x take columns in groups of this many. Their tables and the rows of sums are padded to
/// whole groups.
constexpr int kGroup = 8;

/// Bytes after the end of a source row that the passes along x may load. What is there changes nothing.
constexpr int kRowSlack = 64;

/// What the columns of a result read of a source row: neighbouring pixels, with weights that sum to 1.
template <typename Weight>
struct ColumnTaps
{
    const int* offsets; ///< of the first pixel of each column, in bytes; none is smaller than the one before
    const Weight* weights; ///< see the rows that use them
    int step;              ///< from one pixel to the next, in bytes
    int span;              ///< the largest distance between first pixels of the same group, in bytes
};

/// First pass of an estimate: the sums of `taps` pixels, 2 to 4, for each column. The weights of a group are
/// those of the first pixels of its columns, then those of the second pixels, and so on. Writes
/// kGroup * channels floats for each group, in an order that is VerticalRow's business.
void HorizontalRow(float* out, const unsigned char* src, const ColumnTaps<float>& columns, int taps,
                   int groups, int channels);

/// VerticalRow counts in units of 1 / 32768 (Q15). A byte whose sum lies within kRoundingMargin units of a
/// rounding border is ambiguous.
constexpr int kRoundingMargin = 8;

/// Where VerticalRow starts a sum: one half and the margin make its byte the integer part, which is right
/// unless the fraction is below 2 * kRoundingMargin units. A float from 256 to 512 has units of 1 / 32768, so
/// that bits 0 to 14 are the fraction and bits 15 to 22 are the byte.
constexpr float kVerticalBias = 256.5F + kRoundingMargin / 32768.0F;

/// Second pass: the sum of `taps` rows of the first pass, weighted with `weights`, rounded to bytes. Lists
/// the groups that have ambiguous pixels and returns their number. A group is (its first column << 8), with
/// bit i set where pixel i of the group has an ambiguous byte.
int VerticalRow(unsigned char* dst, int dstStep, const float* const (&rows)[4], const float (&weights)[4],
                int taps, int count, int channels, std::uint32_t* ambiguous);

/// First pass in integers: sums of `taps` pixels, 2 or 3, with integer weights of 0 to 127, whose sum is the
/// same in every column and at most 127. Each is given twice, as weight | weight << 16, in the order of
/// HorizontalRow. Writes 4 * kGroup words for each group, in an order that is VerticalFixedRow's business.
void HorizontalFixedRow(std::uint16_t* out, const unsigned char* src,
                        const ColumnTaps<std::uint32_t>& columns, int taps, int groups);

/// Division by an integer of 2 to 127 as a multiplication: floor(n / divisor) is n * multiplier >>
/// (16 + shift) for every n up to 255.5 * divisor.
///
/// Let k = 16 + shift and multiplier = ceil(2^k / divisor) = (2^k + e) / divisor. Then n * multiplier / 2^k =
/// n / divisor + n * e / (divisor * 2^k). The second term is less than 1 / divisor, and so reaches no further
/// integer, as long as n * e < 2^k. IsExact checks this for the largest n.
struct InvariantDivisor
{
    explicit constexpr InvariantDivisor(int divisor)
        : value(static_cast<std::uint16_t>(divisor)), multiplier(0), shift(0)
    {
        while ((2 << shift) < divisor)
            ++shift;
        multiplier = static_cast<std::uint16_t>(((65536 << shift) + divisor - 1) / divisor);
    }

    constexpr bool IsExact(int divisor) const
    {
        const std::int64_t power = std::int64_t{65536} << shift;
        const std::int64_t excess = std::int64_t{multiplier} * divisor - power;
        return excess >= 0 && 511 * std::int64_t{divisor} / 2 * excess < power;
    }

    std::uint16_t value; ///< the divisor
    std::uint16_t multiplier;
    int shift;
};

static_assert(
    []
    {
        for (int divisor = 2; divisor <= 127; ++divisor)
            if (!InvariantDivisor(divisor).IsExact(divisor))
                return false;
        return true;
    }());

/// The sum of `taps` rows made by HorizontalFixedRow, weighted with integers, divided by `divisor` and
/// rounded, one half up. The product of the sums of weights is at most 127, so a sum fits 16 bits. With three
/// taps, and an even divisor, `ties` gets a word for each group: bit 4 * i + c tells whether channel c of its
/// pixel i is one half.
void VerticalFixedRow(unsigned char* dst, int dstStep, const std::uint16_t* const (&rows)[3],
                      const int (&weights)[3], int taps, const InvariantDivisor& divisor, int count,
                      int channels, std::uint32_t* ties);

/// @}
/// \name Blending
/// `dst` may be one of the sources itself but may not overlap one in part. Only blue, green and red are
/// written.
/// @{

/// A row that is made of two others.
struct BlendRows
{
    unsigned char* dst;
    int dstStep;
    const unsigned char* s1;
    int s1Step;
    const unsigned char* s2;
    int s2Step;
    int count;

    /// What is left of it after `done` pixels.
    BlendRows After(int done) const
    {
        return {dst + dstStep * done, dstStep, s1 + s1Step * done, s1Step,
                s2 + s2Step * done,   s2Step,  count - done};
    }
};

/// dst = s2 + ((s1 - s2) * alpha of s1 >> 8). s1 has 4-byte pixels.
void BlendRowByAlpha(const BlendRows& rows);

/// dst = s1 + ((s2 - s1) * alpha >> 8).
void BlendRow(const BlendRows& rows, int alpha);

/// dst = s1, or s2 where s1 has the colour `key` (blue, green, red).
void KeyRow(const BlendRows& rows, const unsigned char (&key)[3]);

/// The two factors of a shaded channel, for every value of the shading and of the shaded image.
struct ShadeFactors
{
    explicit ShadeFactors(int strength);

    double k;
    double f;            ///< infinite for a strength of -100
    double shading[256]; ///< (s1 - 128.0) * k + 1.0
    double shaded[256];  ///< s2 * f
};

/// dst = shading[s1] * shaded[s2], truncated and clamped to a byte. NaN counts as 0.
void ShadeRow(const BlendRows& rows, const ShadeFactors& factors);

/// The shaded channel for every pair of values.
struct ShadeTable
{
    unsigned char shaded[256][256]; ///< the first index is the value of the shading
};

void FillShadeTable(ShadeTable& table, const ShadeFactors& factors);

/// Images of at least this many pixels gain by a table, where ShadeRow is the alternative.
constexpr std::int64_t kShadeTablePixels = 65536;

/// As ShadeRow.
void ShadeRowByTable(const BlendRows& rows, const ShadeTable& table);

/// dst = s1 * s2 / 256, rounded down: what ShadeRow gives for a strength of 100.
void MultiplyRow(const BlendRows& rows);

/// @}
/// \name Rows of 4-byte pixels
/// @{

/// Alpha = plane[i].
void SetAlphaRow(unsigned char* dst, const unsigned char* plane, int count);

/// Alpha = `alpha`.
void FillAlphaRow(unsigned char* dst, unsigned char alpha, int count);

/// Alpha = 0 where the low 24 bits of the pixel are `key`; elsewhere 255 when `opaqueOthers`.
void KeyAlphaRow(unsigned char* dst, std::uint32_t key, bool opaqueOthers, int count);

/// Each of blue, green, red: c = c + ((color - c) * weight >> 8), with a weight of 0 to 256.
void LerpToColorRow(unsigned char* dst, const int (&color)[3], int weight, int count);

/// @}
/// \name Conversion
/// Where dst has 4-byte pixels their alpha becomes 255.
/// @{

/// From indices of 1, 4 or 8 bits, by a table of 2^bits opaque pixels.
void PaletteToTrueColorRow(unsigned char* dst, int dstStep, const unsigned char* src, int bits,
                           const std::uint32_t* pixels, int count);

/// From 16-bit pixels of 5 bits each of blue, green, red.
void Bgr555ToTrueColorRow(unsigned char* dst, int dstStep, const unsigned char* src, int count);

/// From 3-byte to 4-byte pixels.
void Bgr24ToBgra32Row(unsigned char* dst, const unsigned char* src, int count);

/// @}
/// \name Instruction sets
/// @{

/// The rows that gain by vectors, for one instruction set.
struct KernelTable
{
    /// Groups of columns whose first pixels span fewer pixels than this are fetched faster from rows of 4
    /// bytes per pixel than from rows of 3.
    int nearSpan;

    decltype(&HorizontalRow) horizontalRow;
    decltype(&VerticalRow) verticalRow;
    decltype(&LinearPixels) linearPixels;
    decltype(&CubicPixels) cubicPixels;
    decltype(&HorizontalFixedRow) horizontalFixedRow;
    decltype(&VerticalFixedRow) verticalFixedRow;
    decltype(&ScaleColumnsRow) scaleColumnsRow;
    decltype(&BlendRowByAlpha) blendRowByAlpha;
    decltype(&BlendRow) blendRow;
    decltype(&KeyRow) keyRow;
    decltype(&ShadeRow) shadeRow;
    decltype(&MultiplyRow) multiplyRow;
    decltype(&SetAlphaRow) setAlphaRow;
    decltype(&FillAlphaRow) fillAlphaRow;
    decltype(&KeyAlphaRow) keyAlphaRow;
    decltype(&LerpToColorRow) lerpToColorRow;
    decltype(&Bgr24ToBgra32Row) bgr24ToBgra32Row;

    /// In images of at least this many pixels ShadeRowByTable, its table included, is faster than shadeRow.
    std::int64_t shadeTablePixels;
};

extern const KernelTable kScalarKernels;
extern const KernelTable kSse2Kernels; ///< on x86 alone
extern const KernelTable kAvx2Kernels; ///< on x86 alone; to be called only where AVX2 and FMA are

/// The fastest that the processor has.
const KernelTable& ActiveKernels();

/// Replaces them, for tests. Null brings back the fastest.
void SetKernelsForTest(const KernelTable* kernels);

/// @}

} // namespace zel
