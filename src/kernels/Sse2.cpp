#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <iterator>

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

template <typename V>
V SetWords(int value)
{
    return {_mm_set1_epi16(static_cast<short>(value))};
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

/// Stores blue, green, red of four pixels at `step` bytes each. A fourth byte of the target stays.
inline void StoreColors(unsigned char* bytes, int step, Vector a)
{
    if (step == 3)
    {
        unsigned char pixels[16];
        Store(pixels, a);
        for (int i = 0; i < 3; ++i) // the next pixel overwrites the fourth byte
            std::memcpy(bytes + 3 * i, pixels + 4 * i, 4);
        std::memcpy(bytes + 9, pixels + 12, 3);
        return;
    }
    const Vector colors = Set<Vector>(0x00FFFFFF);
    Store(bytes, IfThenElse(colors, a, Load<Vector>(bytes)));
}

/// Takes a byte shuffle as well, so nothing is done here.
inline int ScaleColumnsShuffle(unsigned char*, const unsigned char*, const int*, int, int)
{
    return 0;
}

/// ShiftRight<n>: of 32-bit integers; to the left where n is negative.
template <int kBits>
Vector ShiftRight(Vector a)
{
    if constexpr (kBits < 0)
        return {_mm_slli_epi32(a.v, -kBits)};
    else
        return {_mm_srli_epi32(a.v, kBits)};
}

template <typename V>
V LoadWords(const std::uint16_t* words)
{
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(words))};
}

inline void StoreWords(std::uint16_t* words, Vector a)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(words), a.v);
}

template <typename V>
V Load32(const std::uint32_t* integers)
{
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(integers))};
}

/// The 32-bit integers of the lower or upper half, each of them twice.
inline Vector RepeatLower(Vector a)
{
    return {_mm_unpacklo_epi32(a.v, a.v)};
}

inline Vector RepeatUpper(Vector a)
{
    return {_mm_unpackhi_epi32(a.v, a.v)};
}

inline Vector AddWords(Vector a, Vector b)
{
    return {_mm_add_epi16(a.v, b.v)};
}

/// The lower words of the 32-bit products.
inline Vector MulWords(Vector a, Vector b)
{
    return {_mm_mullo_epi16(a.v, b.v)};
}

inline Vector ShiftWordsRight(Vector a, int bits)
{
    return {_mm_srl_epi16(a.v, _mm_cvtsi32_si128(bits))};
}

/// The smaller of signed words.
inline Vector MinWords(Vector a, Vector b)
{
    return {_mm_min_epi16(a.v, b.v)};
}

inline Vector SubtractWords(Vector a, Vector b)
{
    return {_mm_subs_epu16(a.v, b.v)};
}

/// A bit for each byte, set where it is 0.
inline std::uint32_t ZeroBytes(Vector a)
{
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_setzero_si128())));
}

/// A bit for each 32-bit integer: whether it is less than `limit`.
inline int MaskOfLess32(Vector a, int limit)
{
    return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmplt_epi32(a.v, _mm_set1_epi32(limit))));
}

struct Floats
{
    __m128 v;
};

inline Floats LoadFloats(const float* from)
{
    return {_mm_loadu_ps(from)};
}

inline void StoreFloats(float* to, Floats a)
{
    _mm_storeu_ps(to, a.v);
}

inline Floats SetFloats(float value)
{
    return {_mm_set1_ps(value)};
}

inline Floats Mul(Floats a, Floats b)
{
    return {_mm_mul_ps(a.v, b.v)};
}

/// a * b + c.
inline Floats MulAdd(Floats a, Floats b, Floats c)
{
    return {_mm_add_ps(_mm_mul_ps(a.v, b.v), c.v)};
}

inline Vector BitsOf(Floats a)
{
    return {_mm_castps_si128(a.v)};
}

/// One channel of each pixel.
template <int kChannel>
Floats ChannelAsFloats(Vector pixels)
{
    const __m128i values = _mm_srli_epi32(pixels.v, 8 * kChannel);
    return {_mm_cvtepi32_ps(kChannel == 3 ? values : _mm_and_si128(values, _mm_set1_epi32(255)))};
}

constexpr int kNearSpan = 0; // columns are fetched one by one

/// Calls use(fetch). fetch(pixels, src, offsets) loads, for four columns, the pixels at their offsets into
/// pixels[0], the neighbours of these into pixels[1], and so on.
template <typename Taps, typename Use>
void WithFetch(const Taps& columns, const Use& use)
{
    use(
        [step = columns.step](auto& pixels, const unsigned char* src, const int* offsets)
        {
            const __m128i neighbour = _mm_cvtsi32_si128(8 * step);
            const auto evenPixels = [](__m128i a, __m128i b)
            { return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0x88)); };
            for (int k = 0; k < static_cast<int>(std::size(pixels)); k += 2, src += 2 * step)
            {
                const auto two = [=](int i)
                {
                    return _mm_unpacklo_epi64(
                        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + offsets[i])),
                        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + offsets[i + 1])));
                };
                const __m128i a = two(0), b = two(2);
                pixels[k].v = evenPixels(a, b);
                if (k + 1 < static_cast<int>(std::size(pixels)))
                    pixels[k + 1].v = evenPixels(_mm_srl_epi64(a, neighbour), _mm_srl_epi64(b, neighbour));
            }
        });
}

/// The sums of pixels and their neighbours for HorizontalFixedRow: of the bytes that PromoteLower and
/// PromoteUpper widen.
inline void PairSums(Vector& lower, Vector& upper, Vector first, Vector second, const std::uint32_t* weights)
{
    const auto one = Load32<Vector>(weights), other = Load32<Vector>(weights + zel::kGroup);
    lower = AddWords(MulWords(PromoteLower(first), RepeatLower(one)),
                     MulWords(PromoteLower(second), RepeatLower(other)));
    upper = AddWords(MulWords(PromoteUpper(first), RepeatUpper(one)),
                     MulWords(PromoteUpper(second), RepeatUpper(other)));
}

struct Doubles
{
    __m128d low;
    __m128d high;
};

inline Doubles SetDoubles(double value)
{
    return {_mm_set1_pd(value), _mm_set1_pd(value)};
}

inline Doubles Mul(Doubles a, Doubles b)
{
    return {_mm_mul_pd(a.low, b.low), _mm_mul_pd(a.high, b.high)};
}

/// sum += weight * the four bytes of a pixel. Multiplication and addition round one after the other.
inline void AddProduct(Doubles& sum, const unsigned char* bytes, Doubles weight)
{
    int four;
    std::memcpy(&four, bytes, sizeof four);
    const __m128i zero = _mm_setzero_si128();
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero);
    const __m128i pixel = _mm_unpacklo_epi16(words, zero);
    sum.low = _mm_add_pd(sum.low, _mm_mul_pd(_mm_cvtepi32_pd(pixel), weight.low));
    sum.high = _mm_add_pd(sum.high, _mm_mul_pd(_mm_cvtepi32_pd(_mm_srli_si128(pixel, 8)), weight.high));
}

inline void StoreRounded(unsigned char* bytes, const Doubles& sum, int channels)
{
    const __m128d half = _mm_set1_pd(0.5);
    const __m128i whole = _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_add_pd(sum.low, half)),
                                             _mm_cvttpd_epi32(_mm_add_pd(sum.high, half)));
    const __m128i words = _mm_packs_epi32(whole, whole);
    const int four = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    if (channels == 3)
        std::memcpy(bytes, &four, 3);
    else
        std::memcpy(bytes, &four, 4);
}

} // namespace

#include "kernels/Kernels-inl.h"

namespace zel
{

constinit const KernelTable kSse2Kernels = VectorTable<Vector>(ShadeRow, kShadeTablePixels);

} // namespace zel
