#pragma once

#include <cstddef>
#include <cstdint>

/// The pixel loops of the image operations, one row a call: pointers, steps and counts, no images.
///
/// A step is the distance from one pixel to the next in bytes, 3 or 4 in true colour. Nothing is checked
/// here: the operation above has. Words are little-endian, as on every processor that the library is built
/// for.
namespace zel
{

/// \name Resampling
/// A position on an axis becomes a tap: the pixels that it reads, as their index times `step`, with what
/// weighs them. Indices are confined to the axis, which repeats the pixels at its ends.
/// @{

struct LinearTap
{
    int offset[2];
    double fraction; ///< of the way from the first pixel to the second
};

struct CubicTap
{
    int offset[4];
    double weight[4];
};

int NearestTap(double position, int length, int step);
LinearTap MakeLinearTap(double position, int length, int step);
CubicTap MakeCubicTap(double position, int length, int step);

/// dst pixel i = the `channels` bytes at src + offsets[i]. Offsets do not fall, and there is one at least.
void ScaleColumnsRow(unsigned char* dst, int dstStep, const unsigned char* src, const int* offsets, int count,
                     int channels);

/// Bilinear mixture of two source rows, `fraction` of the way from `upper` to `lower`.
void LinearRow(unsigned char* dst, int dstStep, const unsigned char* upper, const unsigned char* lower,
               double fraction, const LinearTap* columns, int count, int channels);

/// The taps of either in floats; offsets and weights behind the last tap are 0.
struct TapSet
{
    int offset[4];
    float weight[4];
};

/// `channels` floats for each of `count` columns: the sum of `taps` pixels, 2 or 4, at src + offset, under
/// the weights. The first `within` columns may be read as pixels of four bytes, and write over the float
/// behind their own.
void HorizontalRow(float* out, const unsigned char* src, const TapSet* columns, int taps, int count,
                   int within, int channels);

/// Sums are taken in steps of 1 / 65536; nearer to the border between two bytes than this many, a byte is
/// ambiguous.
constexpr int kRoundingMargin = 16;

/// The sum of `taps` such rows under their weights, rounded to bytes, and 1 where it is ambiguous, else 0.
void VerticalRow(unsigned char* out, unsigned char* ambiguous, const float* const (&rows)[4],
                 const float (&weights)[4], int taps, std::ptrdiff_t count);

/// Neighbouring pixels under whole weights: 0 to 127, with the same sum, up to 127, in every column.
struct FixedTaps
{
    const int* offsets;           ///< of the first pixel; they do not fall
    const unsigned char* weights; ///< two for each column
    int step;                     ///< from the first pixel to the second
    int pairs;                    ///< how many columns have a second pixel; others take the first once more
    int whole;                    ///< how many of these may be read as eight bytes from the first pixel on
};

/// `channels` sums for each of `count` columns. What follows them, up to the sixteenth byte, may be written
/// over.
void HorizontalFixedRow(std::uint16_t* out, const unsigned char* src, const FixedTaps& columns, int count,
                        int channels);

/// A division of 16-bit numbers up to 255.5 times the divisor, 2 to 127, as a product: the quotient is
/// number * multiplier / 2^(16 + shift). With the largest shift that leaves the multiplier 16 bits, the
/// multiplier is too large by less than 1, and the product over its divisor by less than 255.5 * divisor /
/// 2^(16 + shift) < 1 / divisor, which reaches no further quotient.
struct InvariantDivisor
{
    explicit InvariantDivisor(int divisor);

    std::uint16_t half; ///< of the divisor, rounded down
    std::uint16_t multiplier;
    int shift;
};

/// Two such rows under two weights more, divided and rounded.
void VerticalFixedRow(unsigned char* out, const std::uint16_t* upper, const std::uint16_t* lower,
                      int upperWeight, int lowerWeight, const InvariantDivisor& divisor,
                      std::ptrdiff_t count);

/// Filter141Row takes no more bytes of a source row than these.
constexpr int kFilter141Bytes = 4096;

/// Each pixel as the sum of three in three rows, under (1, 4, 1) / 6 across and down, rounded to bytes; and 1
/// where the sum lies on the border between two bytes, else 0. The first pixel's neighbourhood starts where
/// the rows do, that of the next `step` bytes behind; a neighbour is `pixelSize` bytes away. The
/// step * (count - 1) + 3 * pixelSize bytes that this takes of each row are at most kFilter141Bytes.
void Filter141Row(unsigned char* out, unsigned char* ambiguous, const unsigned char* const (&rows)[3],
                  int step, int pixelSize, int count, int channels);

/// Sum of four source rows of four taps each, under the products of their weights.
void CubicRow(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
              const double (&rowWeights)[4], const CubicTap* columns, int count, int channels);

/// The same for the columns that `list` names, each to dst + dstStep * column. Those below `within` may be
/// read as pixels of four bytes.
void FixUpCubicPixels(unsigned char* dst, int dstStep, const unsigned char* const (&rows)[4],
                      const double (&rowWeights)[4], const CubicTap* columns, const int* list, int count,
                      int within, int channels);

/// @}
/// \name Blending
/// The row `dst` may be the row of a source itself, but may not overlap it in part. Elsewhere it overlaps
/// none.
/// @{

/// Blue, green, red of dst = s2 + ((s1 - s2) * alpha of s1 >> 8). s1 has 4-byte pixels.
void BlendRowByAlpha(unsigned char* dst, int dstStep, const unsigned char* s1, const unsigned char* s2,
                     int s2Step, int count);

/// Blue, green, red of dst = s1 + ((s2 - s1) * alpha >> 8).
void BlendRow(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step, const unsigned char* s2,
              int s2Step, int alpha, int count);

/// Blue, green, red of dst are those of s1, or of s2 where s1 has the colour `key` (blue, green, red).
void KeyRow(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step, const unsigned char* s2,
            int s2Step, const unsigned char (&key)[3], int count);

/// The two factors of a shaded channel, for every value of the shading and of the shaded image.
struct ShadeFactors
{
    explicit ShadeFactors(int strength);

    double k;
    double f;            ///< infinite for a strength of -100
    double shading[256]; ///< (s1 - 128.0) * k + 1.0
    double shaded[256];  ///< s2 * f
};

/// Blue, green, red of dst = shading[s1] * shaded[s2], truncated and confined to a byte; not a number is 0.
void ShadeRow(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step, const unsigned char* s2,
              int s2Step, const ShadeFactors& factors, int count);

/// The shaded channel for every pair of values.
struct ShadeTable
{
    unsigned char shaded[256][256]; ///< the shading's value comes first
};

void FillShadeTable(ShadeTable& table, const ShadeFactors& factors);

/// As ShadeRow.
void ShadeRowByTable(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step,
                     const unsigned char* s2, int s2Step, const ShadeTable& table, int count);

/// Blue, green, red of dst = s1 * s2 / 256, rounded down: what ShadeFactors give for a strength of 100.
void MultiplyRow(unsigned char* dst, int dstStep, const unsigned char* s1, int s1Step,
                 const unsigned char* s2, int s2Step, int count);

/// \name Rows of 4-byte pixels
/// @{

/// Alpha = plane[i].
void SetAlphaRow(unsigned char* dst, const unsigned char* plane, int count);

/// Alpha = `alpha`.
void FillAlphaRow(unsigned char* dst, unsigned char alpha, int count);

/// Alpha = 0 where the low 24 bits of the pixel are `key`; elsewhere 255 when `opaqueOthers`.
void KeyAlphaRow(unsigned char* dst, std::uint32_t key, bool opaqueOthers, int count);

/// Blue, green, red c = c + ((color - c) * weight >> 8), weight 0 to 256.
void LerpToColorRow(unsigned char* dst, const int (&color)[3], int weight, int count);

/// @}
/// @}
/// \name Conversion
/// Alpha, where dst has 4-byte pixels, becomes 255, unless said otherwise.
/// @{

/// From indices of 1, 4 or 8 bits, by a table of 2 to the power of `bits` opaque pixels.
void PaletteToTrueColorRow(unsigned char* dst, int dstStep, const unsigned char* src, int bits,
                           const std::uint32_t* pixels, int count);

/// From 16-bit words of 5 bits each of blue, green, red.
void Bgr555ToTrueColorRow(unsigned char* dst, int dstStep, const unsigned char* src, int count);

/// From 3-byte to 4-byte pixels.
void Bgr24ToBgra32Row(unsigned char* dst, const unsigned char* src, int count);

/// @}
/// \name Instruction sets
/// The rows that gain by vectors, as the plain functions above or for one instruction set: all write the
/// same.
/// @{

struct KernelTable
{
    decltype(&HorizontalRow) horizontalRow;
    decltype(&VerticalRow) verticalRow;
    decltype(&FixUpCubicPixels) fixUpCubicPixels;
    decltype(&HorizontalFixedRow) horizontalFixedRow;
    decltype(&VerticalFixedRow) verticalFixedRow;
    decltype(&Filter141Row) filter141Row;
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
    decltype(&ScaleColumnsRow) scaleColumnsRow;
};

extern const KernelTable kScalarKernels;
extern const KernelTable kSse2Kernels; ///< where the processor is an x86
extern const KernelTable kAvx2Kernels; ///< likewise, and never to be called on one without AVX2

/// The fastest that the processor has.
const KernelTable& ActiveKernels();

/// Replaces them, for tests and benchmarks; null brings back the fastest.
void SetKernelsForTest(const KernelTable* kernels);

/// @}

} // namespace zel
