#include "ImageReference.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace reference
{

namespace
{

// The pixel at (x, y), or that at the edge where there is none.
const unsigned char* At(const CTarvexDib& dib, int x, int y)
{
    return dib.GetPixelFast(std::clamp(x, 0, dib.Width() - 1), std::clamp(y, 0, dib.Height() - 1));
}

// The uniform cubic B-spline.
double B(double t)
{
    if (t <= 1.0)
        return 0.5 * t * t * t - t * t + 2.0 / 3.0;
    const double u = 2.0 - t;
    return u * u * u * (1.0 / 6.0);
}

double Bilinear(const CTarvexDib& from, double x, double y, int channel)
{
    const int ix = static_cast<int>(x), iy = static_cast<int>(y);
    const double fx = x - ix, fy = y - iy;
    const double w11 = fx * fy;
    const double w00 = 1.0 - fx - fy + w11;
    const double w10 = fx - w11;
    const double w01 = fy - w11;
    return At(from, ix, iy)[channel] * w00 + At(from, ix + 1, iy + 1)[channel] * w11 +
           At(from, ix, iy + 1)[channel] * w01 + At(from, ix + 1, iy)[channel] * w10;
}

// All channels of one pixel at once, because they share the weights.
void Cubic(const CTarvexDib& from, double x, double y, int channels, double* sums)
{
    const int ix = static_cast<int>(x), iy = static_cast<int>(y);
    const double fx = x - ix, fy = y - iy;
    std::fill_n(sums, channels, 0.0);
    for (int j = 0; j < 4; ++j)
        for (int k = 0; k < 4; ++k)
        {
            const double weight = B(std::fabs(j - (fy + 1))) * B(std::fabs(k - (fx + 1)));
            for (int c = 0; c < channels; ++c)
                sums[c] += At(from, ix - 1 + k, iy - 1 + j)[c] * weight;
        }
}

int RoundDown(int product)
{
    return static_cast<int>(std::floor(product / 256.0));
}

double Confine(float value)
{
    return value > 0.0F ? std::min(static_cast<double>(value), 1.0) : 0.0;
}

template <typename Pixel>
void ForEachPixel(const CTarvexDib& dib, const Pixel& pixel)
{
    for (int y = 0; y < dib.Height(); ++y)
        for (int x = 0; x < dib.Width(); ++x)
            pixel(x, y);
}

std::uint32_t Number(const unsigned char* bytes)
{
    return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16) |
           static_cast<std::uint32_t>(bytes[3]) << 24;
}

void PutNumber(unsigned char* bytes, std::uint32_t number)
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(number >> (8 * i));
}

} // namespace

void Sample(const CTarvexDib& from, CTarvexDib::InterpolMethod method, double x, double y, int channels,
            unsigned char* out)
{
    double sums[4];
    if (method == CTarvexDib::InterpolCubic)
        Cubic(from, x, y, channels, sums);
    for (int c = 0; c < channels; ++c)
    {
        if (method == CTarvexDib::InterpolNearest)
            out[c] = At(from, static_cast<int>(x + 0.5), static_cast<int>(y + 0.5))[c];
        else if (method == CTarvexDib::InterpolBiLinear)
            out[c] = static_cast<unsigned char>(Bilinear(from, x, y, c) + 0.5);
        else
            out[c] = static_cast<unsigned char>(sums[c] + 0.5);
    }
}

void Resize(CTarvexDib& to, const CTarvexDib& from, CTarvexDib::InterpolMethod method)
{
    const double sx = static_cast<double>(from.Width()) / to.Width();
    const double sy = static_cast<double>(from.Height()) / to.Height();
    const int channels = std::min(to.PixelSize(), from.PixelSize());
    double y = 0.0;
    for (int r = 0; r < to.Height(); ++r, y += sy)
        for (int i = 0; i < to.Width(); ++i)
            Sample(from, method, i * sx, y, channels, to.GetPixelFast(i, r));
}

void AlphaBlendPerPixel(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second)
{
    ForEachPixel(to,
                 [&](int x, int y)
                 {
                     const unsigned char *const s1 = At(first, x, y), *const s2 = At(second, x, y);
                     const int a = s1[3];
                     for (int c = 0; c < 3; ++c)
                         to.GetPixelFast(x, y)[c] =
                             static_cast<unsigned char>(s2[c] + RoundDown((s1[c] - s2[c]) * a));
                 });
}

void AlphaBlend(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second, int alpha)
{
    ForEachPixel(to,
                 [&](int x, int y)
                 {
                     const unsigned char *const s1 = At(first, x, y), *const s2 = At(second, x, y);
                     for (int c = 0; c < 3; ++c)
                         to.GetPixelFast(x, y)[c] =
                             static_cast<unsigned char>(s1[c] + RoundDown((s2[c] - s1[c]) * alpha));
                 });
}

void TransparentBlend(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second, int red, int green,
                      int blue)
{
    ForEachPixel(to,
                 [&](int x, int y)
                 {
                     const unsigned char* const s1 = At(first, x, y);
                     const bool isKey = s1[0] == blue && s1[1] == green && s1[2] == red;
                     std::copy_n(isKey ? At(second, x, y) : s1, 3, to.GetPixelFast(x, y));
                 });
}

void ShadePerPixel(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second, int strength)
{
    const double k = strength * 7.8125e-5;
    const double f = 1.0 / (strength * 0.01 + 1.0);
    ForEachPixel(to,
                 [&](int x, int y)
                 {
                     const unsigned char *const s1 = At(first, x, y), *const s2 = At(second, x, y);
                     for (int c = 0; c < 3; ++c)
                     {
                         const double value = ((s1[c] - 128.0) * k + 1.0) * (s2[c] * f);
                         to.GetPixelFast(x, y)[c] = static_cast<unsigned char>(
                             std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 255.0));
                     }
                 });
}

void SetAlphaPlane(CTarvexDib& to, const CTarvexDib& plane)
{
    ForEachPixel(to, [&](int x, int y) { to.GetPixelFast(x, y)[3] = *At(plane, x, y); });
}

void TransparentAlpha(CTarvexDib& to, int red, int green, int blue, bool opaqueOthers)
{
    ForEachPixel(to,
                 [&](int x, int y)
                 {
                     unsigned char* const pixel = to.GetPixelFast(x, y);
                     if (pixel[0] == blue && pixel[1] == green && pixel[2] == red)
                         pixel[3] = 0;
                     else if (opaqueOthers)
                         pixel[3] = 255;
                 });
}

void ColorMix(CTarvexDib& to, float red, float green, float blue, float weight)
{
    const int color[] = {static_cast<int>(Confine(blue) * 255.0), static_cast<int>(Confine(green) * 255.0),
                         static_cast<int>(Confine(red) * 255.0)};
    const int w = static_cast<int>(Confine(weight) * 256.0);
    ForEachPixel(to,
                 [&](int x, int y)
                 {
                     unsigned char* const pixel = to.GetPixelFast(x, y);
                     for (int c = 0; c < 3; ++c)
                         pixel[c] =
                             static_cast<unsigned char>(pixel[c] + RoundDown((color[c] - pixel[c]) * w));
                 });
}

void AlphaAlpha(CTarvexDib& to, int alpha)
{
    ForEachPixel(to, [&](int x, int y) { to.GetPixelFast(x, y)[3] = static_cast<unsigned char>(alpha); });
}

void ChangeToTrueColor(CTarvexDib& dib, bool withAlpha)
{
    CTarvexDib from(dib);
    const int bits = from.BitCount();
    if (bits <= 8)
        from.SetColorTable(from.GetColorTable(), 1 << bits); // entries beyond the table are black
    const tagRGBQUAD* const table = from.GetColorTable();
    if (bits >= (withAlpha ? 32 : 24))
        return;

    dib.Create(from.Width(), from.Height(), withAlpha ? 32 : 24);
    // The info header, 40 bytes before the table. ChangeToTrueColor also sets its biSizeImage.
    reinterpret_cast<BITMAPINFOHEADER*>(dib.GetColorTable() - 10)->biSizeImage =
        static_cast<std::uint32_t>(dib.BytesPerScanLine() * dib.Height());
    ForEachPixel(dib,
                 [&](int x, int y)
                 {
                     const unsigned char* const row = from.GetScanLine(from.Height() - 1 - y);
                     unsigned char* const pixel = dib.GetPixelFast(x, y);
                     if (bits >= 24)
                         std::copy_n(row + x * (bits / 8), 3, pixel);
                     else if (bits == 16)
                     {
                         const int word = row[2 * x] | row[2 * x + 1] << 8;
                         for (int c = 0; c < 3; ++c)
                         {
                             const int v = word >> (5 * c) & 31;
                             pixel[c] = static_cast<unsigned char>(v << 3 | v >> 2);
                         }
                     }
                     else
                     {
                         const int at = x * bits; // from the highest bit of the first byte on
                         const int index = row[at / 8] >> (8 - bits - at % 8) & ((1 << bits) - 1);
                         const tagRGBQUAD& color = table[index];
                         pixel[0] = color.rgbBlue;
                         pixel[1] = color.rgbGreen;
                         pixel[2] = color.rgbRed;
                     }
                     if (withAlpha)
                         pixel[3] = 255;
                 });
}

void Clone(CTarvexDib& to, const CTarvexDib& from, int left, int top, int right, int bottom)
{
    const double sx = static_cast<double>(right - left) / to.Width();
    const double sy = static_cast<double>(bottom - top) / to.Height();
    double y = top;
    for (int r = 0; r < to.Height(); ++r, y += sy)
        for (int i = 0; i < to.Width(); ++i)
        {
            const unsigned char* const pixel =
                At(from, left + static_cast<int>(std::floor(i * sx)), static_cast<int>(std::floor(y)));
            std::copy_n(pixel, 3, to.GetPixelFast(i, r));
            if (to.BitCount() == 32)
                to.GetPixelFast(i, r)[3] = from.BitCount() == 32 ? pixel[3] : 255;
        }
}

void CopyRect(CTarvexDib& to, int destX, int destY, const CTarvexDib& from, int srcX, int srcY, int columns,
              int srcRowEnd)
{
    for (int y = srcY; y < std::min(srcRowEnd, from.Height()); ++y)
        for (int x = srcX; x < from.Width() && x - srcX < columns; ++x)
            if (destX + x - srcX < to.Width() && destY + y - srcY < to.Height())
                std::copy_n(from.GetPixelFast(x, y), to.PixelSize(),
                            to.GetPixelFast(destX + x - srcX, destY + y - srcY));
}

void CopyRect(CTarvexDib& to, int destX, int destY, const unsigned char* pixels, int pixelsWidth,
              int pixelsHeight, int srcX, int srcY, int columns, int srcRowEnd)
{
    for (int y = srcY; y < std::min(srcRowEnd, pixelsHeight); ++y)
        for (int x = srcX; x < pixelsWidth && x - srcX < columns; ++x)
            if (destX + x - srcX < to.Width() && destY + y - srcY < to.Height())
                std::copy_n(pixels + ((pixelsHeight - 1 - y) * pixelsWidth + x) * to.PixelSize(),
                            to.PixelSize(), to.GetPixelFast(destX + x - srcX, destY + y - srcY));
}

void Load(CTarvexDib& to, const unsigned char* packed)
{
    to.Create(static_cast<int>(Number(packed + 4)), static_cast<int>(Number(packed + 8)), packed[14]);
    const unsigned char* from = packed + 40;
    for (int row = 0; row < to.Height(); ++row, from += to.BytesPerScanLine())
        std::copy_n(from, to.BytesPerScanLine(), to.GetScanLine(row));
}

void Save(const CTarvexDib& from, unsigned char* packed)
{
    std::fill_n(packed, 40, static_cast<unsigned char>(0));
    packed[0] = 40;
    PutNumber(packed + 4, static_cast<std::uint32_t>(from.Width()));
    PutNumber(packed + 8, static_cast<std::uint32_t>(from.Height()));
    packed[12] = 1;
    packed[14] = static_cast<unsigned char>(from.BitCount());
    unsigned char* to = packed + 40;
    for (int row = 0; row < from.Height(); ++row, to += from.BytesPerScanLine())
        std::copy_n(from.GetScanLine(row), from.BytesPerScanLine(), to);
}

void Load(CTarvexDib& to, const std::string& path)
{
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    std::fseek(file, 0, SEEK_END);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size())
        Load(to, bytes.data() + 14);
    std::fclose(file);
}

void Save(const CTarvexDib& from, const std::string& path)
{
    std::vector<unsigned char> bytes(14 + static_cast<std::size_t>(from.GetDibLength()));
    bytes[0] = 'B';
    bytes[1] = 'M';
    PutNumber(&bytes[2], static_cast<std::uint32_t>(bytes.size()));
    bytes[10] = 54;
    Save(from, bytes.data() + 14);
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
}

} // namespace reference
