#include <cstdint>
#include <cstring>
#include <immintrin.h>

#include "image/Kernels.h"

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
V All16(int value)
{
    return {_mm256_set1_epi16(static_cast<short>(value))};
}

template <typename V>
V All32(std::uint32_t value)
{
    return {_mm256_set1_epi32(static_cast<int>(value))};
}

/// The bytes of the lower or upper half, of each 16 bytes, as words.
inline Vector Low(Vector a)
{
    return {_mm256_unpacklo_epi8(a.v, _mm256_setzero_si256())};
}

inline Vector High(Vector a)
{
    return {_mm256_unpackhi_epi8(a.v, _mm256_setzero_si256())};
}

inline Vector LowTimes256(Vector a)
{
    return {_mm256_unpacklo_epi8(_mm256_setzero_si256(), a.v)};
}

inline Vector HighTimes256(Vector a)
{
    return {_mm256_unpackhi_epi8(_mm256_setzero_si256(), a.v)};
}

/// The reverse, for words up to 255.
inline Vector Pack(Vector low, Vector high)
{
    return {_mm256_packus_epi16(low.v, high.v)};
}

inline Vector Add16(Vector a, Vector b)
{
    return {_mm256_add_epi16(a.v, b.v)};
}

inline Vector Subtract16(Vector a, Vector b)
{
    return {_mm256_sub_epi16(a.v, b.v)};
}

inline Vector Multiply16(Vector a, Vector b)
{
    return {_mm256_mullo_epi16(a.v, b.v)};
}

inline Vector Divide256(Vector a)
{
    return {_mm256_srli_epi16(a.v, 8)};
}

inline Vector And(Vector a, Vector b)
{
    return {_mm256_and_si256(a.v, b.v)};
}

inline Vector Or(Vector a, Vector b)
{
    return {_mm256_or_si256(a.v, b.v)};
}

inline Vector AndNot(Vector mask, Vector a)
{
    return {_mm256_andnot_si256(mask.v, a.v)};
}

inline Vector Equal32(Vector a, Vector b)
{
    return {_mm256_cmpeq_epi32(a.v, b.v)};
}

/// Of each pixel of four words the last, in all four.
inline Vector AlphaOf(Vector pixels)
{
    return {_mm256_shufflehi_epi16(_mm256_shufflelo_epi16(pixels.v, 0xFF), 0xFF)};
}

/// One byte for each pixel, in its highest place.
template <typename V>
V LoadAsAlpha(const unsigned char* bytes)
{
    const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
    return {_mm256_slli_epi32(_mm256_cvtepu8_epi32(eight), 24)};
}

constexpr bool kReadsTriples = true;

/// Eight pixels, `step` bytes each, as 4 bytes each. Of 3 bytes each it reads 28 bytes.
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

/// Stores four pixels as 3 bytes each.
inline void StoreTriples(unsigned char* bytes, __m128i pixels)
{
    const __m128i close = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m128i triples = _mm_shuffle_epi8(pixels, close);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), triples);
    const int rest = _mm_extract_epi32(triples, 2);
    std::memcpy(bytes + 8, &rest, sizeof rest);
}

/// Stores the three colours of eight pixels, `step` bytes each. A fourth byte stays.
inline void StoreColors(unsigned char* bytes, int step, Vector a)
{
    if (step == 3)
    {
        StoreTriples(bytes, _mm256_castsi256_si128(a.v));
        StoreTriples(bytes + 12, _mm256_extracti128_si256(a.v, 1));
        return;
    }
    const Vector colors = All32<Vector>(0x00FFFFFF);
    Store(bytes, Or(And(colors, a), AndNot(colors, Load<Vector>(bytes))));
}

/// PairRow for the first columns, two at a time; gives how many.
inline int PairPixels(std::uint16_t* out, const unsigned char* src, const zel::PairColumns& columns,
                      int channels)
{
    const bool triples = channels == 3;
    const char to = static_cast<char>(columns.step), next = static_cast<char>(8);
    const auto pairOf = [=](int pixel, int c)
    { return static_cast<short>((pixel * next + c) | (pixel * next + c + to) << 8); };
    const short none = -1;
    const __m128i bytes = triples ? _mm_setr_epi16(pairOf(0, 0), pairOf(0, 1), pairOf(0, 2), pairOf(1, 0),
                                                   pairOf(1, 1), pairOf(1, 2), none, none)
                                  : _mm_setr_epi16(pairOf(0, 0), pairOf(0, 1), pairOf(0, 2), pairOf(0, 3),
                                                   pairOf(1, 0), pairOf(1, 1), pairOf(1, 2), pairOf(1, 3));
    const short first = 0x0100, second = 0x0302;
    const __m128i spread = triples
                               ? _mm_setr_epi16(first, first, first, second, second, second, none, none)
                               : _mm_setr_epi16(first, first, first, first, second, second, second, second);
    int done = 0;
    for (; done + 2 <= columns.whole; done += 2, out += 2 * channels)
    {
        long long left, right;
        int weights;
        std::memcpy(&left, src + columns.offsets[done], sizeof left);
        std::memcpy(&right, src + columns.offsets[done + 1], sizeof right);
        std::memcpy(&weights, columns.weights + 2 * done, sizeof weights);
        const __m128i pixels = _mm_shuffle_epi8(_mm_set_epi64x(right, left), bytes);
        const __m128i sums = _mm_maddubs_epi16(pixels, _mm_shuffle_epi8(_mm_cvtsi32_si128(weights), spread));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), sums);
    }
    return done;
}

using Floats = __m128;

/// The four bytes of a pixel.
inline Floats PixelAsFloats(const unsigned char* bytes)
{
    int four;
    std::memcpy(&four, bytes, sizeof four);
    return _mm_cvtepi32_ps(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(four)));
}

inline void StoreFloats(float* out, Floats values)
{
    _mm_storeu_ps(out, values);
}

} // namespace

#include "image/VectorKernels.h"

namespace zel
{

constinit const Kernels kAvx2Kernels = VectorKernels<Vector>();

} // namespace zel
