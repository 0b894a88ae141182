#include <cstdint>
#include <cstring>
#include <immintrin.h>
#include <iterator>
#include <limits>

#include "kernels/Kernels.h"

// The vector rows for AVX2. Internal linkage keeps this code to the rows of this table. Kernels-inl.h comes
// last because it uses the functions above it.
namespace
{

struct Vector
{
    __m256i v;
};

template <typename V>
V Load(const unsigned char* bytes)
{
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes))};
}

inline void Store(unsigned char* bytes, Vector a)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), a.v);
}

template <typename V>
V Set(std::uint32_t value)
{
    return {_mm256_set1_epi32(static_cast<int>(value))};
}

template <typename V>
V SetWords(int value)
{
    return {_mm256_set1_epi16(static_cast<short>(value))};
}

/// The bytes of the lower or upper half of each 16 bytes, widened to words.
inline Vector PromoteLower(Vector a)
{
    return {_mm256_unpacklo_epi8(a.v, _mm256_setzero_si256())};
}

inline Vector PromoteUpper(Vector a)
{
    return {_mm256_unpackhi_epi8(a.v, _mm256_setzero_si256())};
}

inline Vector PromoteLowerTimes256(Vector a)
{
    return {_mm256_unpacklo_epi8(_mm256_setzero_si256(), a.v)};
}

inline Vector PromoteUpperTimes256(Vector a)
{
    return {_mm256_unpackhi_epi8(_mm256_setzero_si256(), a.v)};
}

/// The reverse: words of up to 255, narrowed to bytes.
inline Vector Demote(Vector low, Vector high)
{
    return {_mm256_packus_epi16(low.v, high.v)};
}

/// The upper words of the 32-bit products.
inline Vector MulHigh(Vector a, Vector b)
{
    return {_mm256_mulhi_epu16(a.v, b.v)};
}

inline Vector And(Vector a, Vector b)
{
    return {_mm256_and_si256(a.v, b.v)};
}

inline Vector Or(Vector a, Vector b)
{
    return {_mm256_or_si256(a.v, b.v)};
}

/// The bytes of `a` where those of `mask` are 255, and those of `b` where they are 0.
inline Vector IfThenElse(Vector mask, Vector a, Vector b)
{
    return {_mm256_blendv_epi8(b.v, a.v, mask.v)};
}

inline Vector Equal32(Vector a, Vector b)
{
    return {_mm256_cmpeq_epi32(a.v, b.v)};
}

/// The weight of Lerp, 1 to 255, in pairs with 256 - weight. Callers ignore the result for other weights.
template <typename V>
V WeightOf(int weight)
{
    return {_mm256_set1_epi16(static_cast<short>(weight | (256 - weight) << 8))};
}

/// (s1 * weight + s2 * (256 - weight)) / 256 on every byte, rounded down, which is
/// s2 + ((s1 - s2) * weight >> 8). Both bytes are biased by -128 so that the 16-bit sum cannot overflow:
/// (s1 - 128) * weight + (s2 - 128) * (256 - weight) = 256 * result - 32768.
inline Vector LerpPairs(Vector s1, Vector s2, __m256i lowWeights, __m256i highWeights)
{
    const __m256i sign = _mm256_set1_epi8(-128);
    const __m256i first = _mm256_xor_si256(s1.v, sign), second = _mm256_xor_si256(s2.v, sign);
    const __m256i low = _mm256_maddubs_epi16(lowWeights, _mm256_unpacklo_epi8(first, second));
    const __m256i high = _mm256_maddubs_epi16(highWeights, _mm256_unpackhi_epi8(first, second));
    const __m256i bytes = _mm256_packs_epi16(_mm256_srai_epi16(low, 8), _mm256_srai_epi16(high, 8));
    return {_mm256_xor_si256(bytes, sign)};
}

/// from + ((to - from) * weight >> 8) on every byte.
inline Vector Lerp(Vector from, Vector to, Vector weight)
{
    return LerpPairs(to, from, weight.v, weight.v);
}

/// Lerp by the alpha of each pixel of s1. Alpha 0 is chosen apart, since the weight 256 of s2 is not a byte.
inline Vector LerpByAlpha(Vector s1, Vector s2)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i last =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15));
    const __m256i alpha = _mm256_shuffle_epi8(s1.v, last), rest = _mm256_sub_epi8(zero, alpha);
    const Vector mixed =
        LerpPairs(s1, s2, _mm256_unpacklo_epi8(alpha, rest), _mm256_unpackhi_epi8(alpha, rest));
    return IfThenElse({_mm256_cmpeq_epi8(alpha, zero)}, s2, mixed);
}

/// One byte per pixel, in its highest byte.
template <typename V>
V LoadAsAlpha(const unsigned char* bytes)
{
    const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
    return {_mm256_slli_epi32(_mm256_cvtepu8_epi32(eight), 24)};
}

constexpr bool kLoadsTriples = true;

/// Eight pixels of `step` bytes, widened to 4 bytes each. For a step of 3 this loads 28 bytes.
template <typename V>
V LoadPixels(const unsigned char* bytes, int step)
{
    if (step == 4)
        return Load<V>(bytes);
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 12));
    const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    return {_mm256_set_m128i(_mm_shuffle_epi8(high, spread), _mm_shuffle_epi8(low, spread))};
}

/// Stores four pixels of 4 bytes as pixels of 3 bytes.
inline void StoreTriples(unsigned char* bytes, __m128i pixels)
{
    const __m128i close = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m128i triples = _mm_shuffle_epi8(pixels, close);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), triples);
    const int rest = _mm_extract_epi32(triples, 2);
    std::memcpy(bytes + 8, &rest, sizeof rest);
}

/// Stores blue, green, red of eight pixels at `step` bytes each. A fourth byte of the target stays.
inline void StoreColors(unsigned char* bytes, int step, Vector a)
{
    if (step == 3)
    {
        StoreTriples(bytes, _mm256_castsi256_si128(a.v));
        StoreTriples(bytes + 12, _mm256_extracti128_si256(a.v, 1));
        return;
    }
    const Vector colors = Set<Vector>(0x00FFFFFF);
    Store(bytes, IfThenElse(colors, a, Load<Vector>(bytes)));
}

/// ScaleColumnsRow for the first pixels, where target pixels have `channels` bytes. Returns the number of
/// pixels done. It takes four pixels at a time as long as the sixteen bytes from the first of them on contain
/// all four, as they do when a row is enlarged. The last offset tells how far the source may be read.
inline int ScaleColumnsShuffle(unsigned char* dst, const unsigned char* src, const int* offsets, int count,
                               int channels)
{
    constexpr int kOverrun = 2; // storing sixteen bytes touches this many more pixels of 3 bytes
    const bool triples = channels == 3;
    const __m128i spread = triples ? _mm_setr_epi8(0, 0, 0, 4, 4, 4, 8, 8, 8, 12, 12, 12, 0, 0, 0, 0)
                                   : _mm_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12);
    const __m128i bytes = triples ? _mm_setr_epi8(0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 0, 0, 0)
                                  : _mm_setr_epi8(0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3);
    int done = 0;
    for (; done + 4 + kOverrun <= count; done += 4, dst += 4 * channels)
    {
        const int first = offsets[done];
        if (offsets[done + 3] > first + 12 || offsets[count - 1] + channels < first + 16)
            break;
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(offsets + done));
        const __m128i relative = _mm_shuffle_epi8(_mm_sub_epi32(four, _mm_set1_epi32(first)), spread);
        const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + first));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst),
                         _mm_shuffle_epi8(pixels, _mm_add_epi8(relative, bytes)));
    }
    return done;
}

/// ShiftRight<n>: of 32-bit integers; to the left where n is negative.
template <int kBits>
Vector ShiftRight(Vector a)
{
    if constexpr (kBits < 0)
        return {_mm256_slli_epi32(a.v, -kBits)};
    else
        return {_mm256_srli_epi32(a.v, kBits)};
}

template <typename V>
V LoadWords(const std::uint16_t* words)
{
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(words))};
}

inline void StoreWords(std::uint16_t* words, Vector a)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(words), a.v);
}

template <typename V>
V Load32(const std::uint32_t* integers)
{
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(integers))};
}

/// The 32-bit integers of the lower or upper half of each 16 bytes, each of them twice.
inline Vector RepeatLower(Vector a)
{
    return {_mm256_unpacklo_epi32(a.v, a.v)};
}

inline Vector RepeatUpper(Vector a)
{
    return {_mm256_unpackhi_epi32(a.v, a.v)};
}

inline Vector AddWords(Vector a, Vector b)
{
    return {_mm256_add_epi16(a.v, b.v)};
}

/// The lower words of the 32-bit products.
inline Vector MulWords(Vector a, Vector b)
{
    return {_mm256_mullo_epi16(a.v, b.v)};
}

inline Vector ShiftWordsRight(Vector a, int bits)
{
    return {_mm256_srl_epi16(a.v, _mm_cvtsi32_si128(bits))};
}

/// The smaller of signed words.
inline Vector MinWords(Vector a, Vector b)
{
    return {_mm256_min_epi16(a.v, b.v)};
}

inline Vector SubtractWords(Vector a, Vector b)
{
    return {_mm256_subs_epu16(a.v, b.v)};
}

/// A bit for each byte, set where it is 0.
inline std::uint32_t ZeroBytes(Vector a)
{
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(a.v, _mm256_setzero_si256())));
}

/// A bit for each 32-bit integer: whether it is less than `limit`.
inline int MaskOfLess32(Vector a, int limit)
{
    return _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpgt_epi32(_mm256_set1_epi32(limit), a.v)));
}

struct Floats
{
    __m256 v;
};

inline Floats LoadFloats(const float* from)
{
    return {_mm256_loadu_ps(from)};
}

inline void StoreFloats(float* to, Floats a)
{
    _mm256_storeu_ps(to, a.v);
}

inline Floats SetFloats(float value)
{
    return {_mm256_set1_ps(value)};
}

inline Floats Mul(Floats a, Floats b)
{
    return {_mm256_mul_ps(a.v, b.v)};
}

/// a * b + c, rounded once.
inline Floats MulAdd(Floats a, Floats b, Floats c)
{
    return {_mm256_fmadd_ps(a.v, b.v, c.v)};
}

inline Vector BitsOf(Floats a)
{
    return {_mm256_castps_si256(a.v)};
}

/// One channel of each pixel.
template <int kChannel>
Floats ChannelAsFloats(Vector pixels)
{
    const __m256i values =
        kChannel == 0   ? _mm256_and_si256(pixels.v, _mm256_set1_epi32(255))
        : kChannel == 3 ? _mm256_srli_epi32(pixels.v, 24)
                        : _mm256_shuffle_epi8(pixels.v, _mm256_set_epi32(-244 + kChannel, -248 + kChannel,
                                                                         -252 + kChannel, -256 + kChannel,
                                                                         -244 + kChannel, -248 + kChannel,
                                                                         -252 + kChannel, -256 + kChannel));
    return {_mm256_cvtepi32_ps(values)};
}

inline __m256i LoadIntegers(const void* from)
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

/// Fetches the pixels of eight columns from a row of kStep bytes per pixel, wherever they are: from every
/// column's offset on, as many bytes as hold all its taps.
template <int kStep>
struct FarFetch
{
    void operator()(Vector (&pixels)[2], const unsigned char* src, const int* offsets) const
    {
        const auto two = [=](int i, int j)
        {
            long long left, right;
            std::memcpy(&left, src + offsets[i], sizeof left);
            std::memcpy(&right, src + offsets[j], sizeof right);
            return _mm_set_epi64x(right, left);
        };
        const __m256i a = _mm256_set_m128i(two(4, 5), two(0, 1));
        const __m256i b = _mm256_set_m128i(two(6, 7), two(2, 3));
        const auto evenPixels = [](__m256i c, __m256i d) {
            return _mm256_castps_si256(
                _mm256_shuffle_ps(_mm256_castsi256_ps(c), _mm256_castsi256_ps(d), 0x88));
        };
        pixels[0].v = evenPixels(a, b);
        pixels[1].v = evenPixels(_mm256_srli_epi64(a, 8 * kStep), _mm256_srli_epi64(b, 8 * kStep));
    }

    template <int kTaps>
    void operator()(Vector (&pixels)[kTaps], const unsigned char* src, const int* offsets) const
    {
        const auto two = [=](int i, int j)
        {
            const __m256i taps =
                _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + offsets[j])),
                                 _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + offsets[i])));
            const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
            return kStep == 4 ? taps : _mm256_shuffle_epi8(taps, _mm256_broadcastsi128_si256(spread));
        };
        const __m256i a = two(0, 4), b = two(1, 5), c = two(2, 6), d = two(3, 7);
        const __m256i ab = _mm256_unpacklo_epi32(a, b), cd = _mm256_unpacklo_epi32(c, d);
        pixels[0].v = _mm256_unpacklo_epi64(ab, cd);
        pixels[1].v = _mm256_unpackhi_epi64(ab, cd);
        const __m256i abAfter = _mm256_unpackhi_epi32(a, b), cdAfter = _mm256_unpackhi_epi32(c, d);
        pixels[2].v = _mm256_unpacklo_epi64(abAfter, cdAfter);
        if constexpr (kTaps == 4)
            pixels[3].v = _mm256_unpackhi_epi64(abAfter, cdAfter);
    }
};

constexpr int kNearSpan = 8; // the pixels of a vector

/// Calls use(fetch) with the fastest fetch for the columns. fetch(pixels, src, offsets) loads, for eight
/// columns, the pixels at their offsets into pixels[0], the neighbours of these into pixels[1], and so on.
template <typename Taps, typename Use>
void WithFetch(const Taps& columns, const Use& use)
{
    if (columns.step == 3)
        use(FarFetch<3>());
    else if (columns.span >= kNearSpan * 4)
        use(FarFetch<4>());
    else
        use(
            [](auto& pixels, const unsigned char* src, const int* offsets)
            {
                const __m256i index = _mm256_srli_epi32(
                    _mm256_sub_epi32(LoadIntegers(offsets), _mm256_set1_epi32(*offsets)), 2);
                for (int k = 0; k < static_cast<int>(std::size(pixels)); ++k)
                    pixels[k].v = _mm256_permutevar8x32_epi32(LoadIntegers(src + *offsets + 4 * k), index);
            });
}

/// The sums of pixels and their neighbours for HorizontalFixedRow: of the bytes that PromoteLower and
/// PromoteUpper widen.
inline void PairSums(Vector& lower, Vector& upper, Vector first, Vector second, const std::uint32_t* weights)
{
    const __m256i both =
        _mm256_or_si256(LoadIntegers(weights), _mm256_slli_epi32(LoadIntegers(weights + zel::kGroup), 8));
    lower.v =
        _mm256_maddubs_epi16(_mm256_unpacklo_epi8(first.v, second.v), _mm256_unpacklo_epi32(both, both));
    upper.v =
        _mm256_maddubs_epi16(_mm256_unpackhi_epi8(first.v, second.v), _mm256_unpackhi_epi32(both, both));
}

struct Doubles
{
    __m256d v;
};

inline Doubles SetDoubles(double value)
{
    return {_mm256_set1_pd(value)};
}

inline Doubles Mul(Doubles a, Doubles b)
{
    return {_mm256_mul_pd(a.v, b.v)};
}

/// sum += weight * the four bytes of a pixel. Multiplication and addition round one after the other.
inline void AddProduct(Doubles& sum, const unsigned char* bytes, Doubles weight)
{
    int four;
    std::memcpy(&four, bytes, sizeof four);
    const __m256d pixel = _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(four)));
    sum.v = _mm256_add_pd(sum.v, _mm256_mul_pd(pixel, weight.v));
}

inline void StoreRounded(unsigned char* bytes, const Doubles& sum, int channels)
{
    const __m128i whole = _mm256_cvttpd_epi32(_mm256_add_pd(sum.v, _mm256_set1_pd(0.5)));
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

namespace
{

/// s1 and s2 are doubles 2^52 + byte. Returns 2^52 + floor(product): the low word is the product; negative
/// products come out doubled, and the saturating packs clamp them to 0.
__m256 ShadedWords(__m256i s1, __m256i s2, __m256d k, __m256d f)
{
    const __m256d base = _mm256_set1_pd(0x1p52), one = _mm256_set1_pd(1.0);
    const __m256d centred = _mm256_sub_pd(_mm256_castsi256_pd(s1), _mm256_set1_pd(0x1p52 + 128.0));
    const __m256d shading = _mm256_add_pd(_mm256_mul_pd(centred, k), one);
    const __m256d shaded = _mm256_mul_pd(_mm256_sub_pd(_mm256_castsi256_pd(s2), base), f);
    const __m256d whole = _mm256_floor_pd(_mm256_mul_pd(shading, shaded));
    return _mm256_castpd_ps(_mm256_add_pd(whole, base));
}

/// The bytes that `part` selects, shaded, as 32-bit integers.
__m256i ShadedPart(__m256i s1, __m256i s2, __m256i part, __m256d k, __m256d f)
{
    const __m256i upper = _mm256_set1_epi32(0x43300000); // the high word of 2^52
    const __m256i a = _mm256_shuffle_epi8(s1, part), b = _mm256_shuffle_epi8(s2, part);
    const __m256 low = ShadedWords(_mm256_unpacklo_epi32(a, upper), _mm256_unpacklo_epi32(b, upper), k, f);
    const __m256 high = ShadedWords(_mm256_unpackhi_epi32(a, upper), _mm256_unpackhi_epi32(b, upper), k, f);
    return _mm256_castps_si256(_mm256_shuffle_ps(low, high, 0x88));
}

/// A shuffle mask that puts these four of each sixteen bytes into the low bytes of four 32-bit integers.
__m256i Part(int first, int second, int third, int fourth)
{
    const int unused = static_cast<int>(0x80808000);
    return _mm256_broadcastsi128_si256(
        _mm_setr_epi32(unused | first, unused | second, unused | third, unused | fourth));
}

/// Computes in doubles, operation by operation as ShadeFactors and ShadeRow do, so every byte is the same.
///
/// A product fits 32 bits with room, and packing it twice with saturation clamps it to a byte: |(s1 - 128) *
/// k| <= 0.01 * |strength|, so the product is at most 255 * (100 + |strength|) / |100 + strength|. That is
/// 255 for strengths of 0 or more; below 0 it is largest at -101, where it is 255 * 201 < 2^16.
void ShadeRowInDoubles(const BlendRows& rows, const ShadeFactors& factors)
{
    const __m256d k = _mm256_set1_pd(factors.k), f = _mm256_set1_pd(factors.f);
    const auto clamped = [](__m256i a, __m256i b, __m256i c, __m256i d)
    { return _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d)); };

    const auto bytes = [=](Vector a, Vector b) -> Vector
    {
        return {clamped(ShadedPart(a.v, b.v, Part(0, 1, 2, 3), k, f),
                        ShadedPart(a.v, b.v, Part(4, 5, 6, 7), k, f),
                        ShadedPart(a.v, b.v, Part(8, 9, 10, 11), k, f),
                        ShadedPart(a.v, b.v, Part(12, 13, 14, 15), k, f))};
    };
    const auto colors = [=](Vector a, Vector b) -> Vector
    {
        const __m256i last = ShadedPart(a.v, b.v, Part(10, 12, 13, 14), k, f);
        const __m256i close = clamped(ShadedPart(a.v, b.v, Part(0, 1, 2, 4), k, f),
                                      ShadedPart(a.v, b.v, Part(5, 6, 8, 9), k, f), last, last);
        const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
        return {_mm256_shuffle_epi8(close, _mm256_broadcastsi128_si256(spread))};
    };

    using Rows = VectorRows<Vector>;
    int done = 0;
    if (__builtin_isfinite(factors.f))
        done = rows.dstStep == 3 && rows.s1Step == 3 && rows.s2Step == 3 ? Rows::ByBytes(rows, bytes)
                                                                         : Rows::ByPixels(rows, colors);
    ShadeRow(rows.After(done), factors);
}

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

} // namespace

constinit const KernelTable kAvx2Kernels = VectorTable<Vector>(ShadeRowInDoubles, kNever);

} // namespace zel
