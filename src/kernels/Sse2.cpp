#include <cstdint>
#include <cstring>
#include <emmintrin.h>

#include "kernels/Kernels.h"

// The vector rows for SSE2. Internal linkage keeps this code to the rows of this table. Kernels-inl.h comes
// last because it uses the functions above it.
namespace
{

struct Vector
{
    __m128i v;
};

template <typename V>
V Load(const unsigned char* bytes)
{
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))};
}

inline void Store(unsigned char* bytes, Vector a)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), a.v);
}

template <typename V>
V Set(std::uint32_t value)
{
    return {_mm_set1_epi32(static_cast<int>(value))};
}

/// The bytes of the lower or upper half, widened to words.
inline Vector PromoteLower(Vector a)
{
    return {_mm_unpacklo_epi8(a.v, _mm_setzero_si128())};
}

inline Vector PromoteUpper(Vector a)
{
    return {_mm_unpackhi_epi8(a.v, _mm_setzero_si128())};
}

inline Vector PromoteLowerTimes256(Vector a)
{
    return {_mm_unpacklo_epi8(_mm_setzero_si128(), a.v)};
}

inline Vector PromoteUpperTimes256(Vector a)
{
    return {_mm_unpackhi_epi8(_mm_setzero_si128(), a.v)};
}

/// The reverse: words of up to 255, narrowed to bytes.
inline Vector Demote(Vector low, Vector high)
{
    return {_mm_packus_epi16(low.v, high.v)};
}

/// The upper words of the 32-bit products.
inline Vector MulHigh(Vector a, Vector b)
{
    return {_mm_mulhi_epu16(a.v, b.v)};
}

inline Vector And(Vector a, Vector b)
{
    return {_mm_and_si128(a.v, b.v)};
}

inline Vector Or(Vector a, Vector b)
{
    return {_mm_or_si128(a.v, b.v)};
}

/// The bits of `a` where `mask` is set, elsewhere those of `b`.
inline Vector IfThenElse(Vector mask, Vector a, Vector b)
{
    return {_mm_or_si128(_mm_and_si128(mask.v, a.v), _mm_andnot_si128(mask.v, b.v))};
}

inline Vector Equal32(Vector a, Vector b)
{
    return {_mm_cmpeq_epi32(a.v, b.v)};
}

/// The weight of Lerp, 1 to 255. Callers ignore the result for other weights.
template <typename V>
V WeightOf(int weight)
{
    return {_mm_set1_epi16(static_cast<short>(weight))};
}

/// s2 + ((s1 - s2) * weight >> 8) on eight words. The sum s2 * 256 + (s1 - s2) * weight is
/// s1 * weight + s2 * (256 - weight), which fits 16 bits for a weight of up to 256. So the sum is right
/// modulo 2^16 although its terms overflow.
inline __m128i LerpWords(Vector s1, Vector s2, Vector s2Times256, __m128i weight)
{
    const __m128i product = _mm_mullo_epi16(_mm_sub_epi16(s1.v, s2.v), weight);
    return _mm_srli_epi16(_mm_add_epi16(s2Times256.v, product), 8);
}

/// from + ((to - from) * weight >> 8) on every byte.
inline Vector Lerp(Vector from, Vector to, Vector weight)
{
    return {_mm_packus_epi16(
        LerpWords(PromoteLower(to), PromoteLower(from), PromoteLowerTimes256(from), weight.v),
        LerpWords(PromoteUpper(to), PromoteUpper(from), PromoteUpperTimes256(from), weight.v))};
}

/// The last of the four words of each pixel, in all four.
inline __m128i AlphaOf(Vector pixels)
{
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(pixels.v, 0xFF), 0xFF);
}

/// Lerp by the alpha of each pixel of s1.
inline Vector LerpByAlpha(Vector s1, Vector s2)
{
    return {_mm_packus_epi16(
        LerpWords(PromoteLower(s1), PromoteLower(s2), PromoteLowerTimes256(s2), AlphaOf(PromoteLower(s1))),
        LerpWords(PromoteUpper(s1), PromoteUpper(s2), PromoteUpperTimes256(s2), AlphaOf(PromoteUpper(s1))))};
}

/// One byte per pixel, in its highest byte.
template <typename V>
V LoadAsAlpha(const unsigned char* bytes)
{
    int four;
    std::memcpy(&four, bytes, sizeof four);
    const __m128i zero = _mm_setzero_si128();
    return {_mm_unpacklo_epi16(zero, _mm_unpacklo_epi8(zero, _mm_cvtsi32_si128(four)))};
}

/// Spreading pixels of 3 bytes takes a byte shuffle, which SSE2 lacks.
constexpr bool kLoadsTriples = false;

template <typename V>
V LoadPixels(const unsigned char* bytes, int)
{
    return Load<V>(bytes);
}

/// Stores blue, green, red of four pixels of 4 bytes. The fourth byte of the target stays.
inline void StoreColors(unsigned char* bytes, int, Vector a)
{
    const Vector colors = Set<Vector>(0x00FFFFFF);
    Store(bytes, IfThenElse(colors, a, Load<Vector>(bytes)));
}

/// Takes a byte shuffle as well, so nothing is done here.
inline int ScaleColumnsShuffle(unsigned char*, const unsigned char*, const int*, int, int)
{
    return 0;
}

/// HorizontalFixedRow for the first columns. Returns the number of columns done.
inline int HorizontalFixedPixels(std::uint16_t* out, const unsigned char* src, const zel::FixedTaps& columns,
                                 int channels)
{
    const __m128i zero = _mm_setzero_si128();
    for (int i = 0; i < columns.wideReadEnd; ++i, out += channels)
    {
        const unsigned char* const first = src + columns.offsets[i];
        short weights;
        std::memcpy(&weights, columns.weights + 2 * i, sizeof weights);
        int left, right;
        std::memcpy(&left, first, sizeof left);
        std::memcpy(&right, first + columns.step, sizeof right);
        const __m128i pairs = _mm_unpacklo_epi8(_mm_cvtsi32_si128(left), _mm_cvtsi32_si128(right));
        const __m128i both = _mm_unpacklo_epi8(_mm_set1_epi16(weights), zero);
        const __m128i sums = _mm_madd_epi16(_mm_unpacklo_epi8(pairs, zero), both);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packs_epi32(sums, sums));
    }
    return columns.wideReadEnd;
}

using Floats = __m128;

/// Four bytes of a pixel.
inline Floats PixelAsFloats(const unsigned char* bytes)
{
    int four;
    std::memcpy(&four, bytes, sizeof four);
    const __m128i zero = _mm_setzero_si128();
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero);
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(words, zero));
}

inline void StoreFloats(float* out, Floats values)
{
    _mm_storeu_ps(out, values);
}

/// The loop that the compiler vectorises is as fast, so nothing is done here.
inline std::ptrdiff_t VerticalFourTaps(unsigned char*, unsigned char*, const float* const (&)[4],
                                       const float (&)[4], std::ptrdiff_t)
{
    return 0;
}

struct Doubles
{
    __m128d low;
    __m128d high;
};

/// sum += weight * the four bytes of a pixel. Multiplication and addition round one after the other.
inline void AddProduct(Doubles& sum, const unsigned char* bytes, double weight)
{
    int four;
    std::memcpy(&four, bytes, sizeof four);
    const __m128i zero = _mm_setzero_si128();
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero);
    const __m128i pixel = _mm_unpacklo_epi16(words, zero);
    const __m128d both = _mm_set1_pd(weight);
    sum.low = _mm_add_pd(sum.low, _mm_mul_pd(_mm_cvtepi32_pd(pixel), both));
    sum.high = _mm_add_pd(sum.high, _mm_mul_pd(_mm_cvtepi32_pd(_mm_srli_si128(pixel, 8)), both));
}

inline void StoreRounded(unsigned char* bytes, const Doubles& sum, int channels)
{
    const __m128d half = _mm_set1_pd(0.5);
    const __m128i whole = _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_add_pd(sum.low, half)),
                                             _mm_cvttpd_epi32(_mm_add_pd(sum.high, half)));
    const __m128i words = _mm_packs_epi32(whole, whole);
    const int four = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    std::memcpy(bytes, &four, channels == 3 ? 3 : 4);
}

} // namespace

#include "kernels/Kernels-inl.h"

namespace zel
{

constinit const KernelTable kSse2Kernels = VectorTable<Vector>(ShadeRow, kShadeTablePixels);

} // namespace zel
