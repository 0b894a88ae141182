#pragma once

#include "ZelUtil/Errors.h"
#include "ZelUtil/Export.h"
#include "ZelUtil/WinTypes.h"

#include <cstddef>
#include <cstdio>

ZELUTIL_CONST_RESULTS_BEGIN

/// A raster image in memory, in the layout of the BMP format. It owns two blocks: the header block (an info
/// header of 40 bytes, then the colour table) and the pixel array.
///
/// - Depths: 1, 4 and 8 bits per pixel (indices into the colour table; in each byte the leftmost pixel has
///   the highest bits), 16 bits (5 bits each of blue, green and red, blue in the lowest), 24 bits (bytes
///   blue, green, red) and 32 bits (bytes blue, green, red, alpha). Create makes 8, 24 and 32 bits; the
///   loaders accept all six depths.
/// - Rows: each is padded to a multiple of four bytes. They are stored from the bottom row of the picture
///   upward.
/// - Coordinates: x counts pixels to the right, y counts rows downward from the top row. Picture row y is
///   stored row Height() - 1 - y. Only GetScanLine counts stored rows.
/// - Alpha: 0 is transparent, 255 is opaque.
/// - Limits: width and height are 0 or more; header, colours and pixels together have at most 2^31 - 1 bytes.
///
/// An image is either empty or holds a picture. It is a value: a copy is a deep copy. It has no lock: several
/// threads may read one image as long as none changes it (Resize changes its source). `const` protects the
/// size and the depth, not the pixels: operations that write only pixel bytes, such as blends, are `const`.
///
/// An operation that can fail returns false then. Unless its comment says otherwise, it checks everything
/// before its first write, so false means that nothing was changed. None of them writes a message.
class ZELUTIL_API CTarvexDib
{
public:
    enum InterpolMethod : int
    {
        InterpolNearest = 0,
        InterpolBiLinear = 1,
        InterpolCubic = 2
    };

    /// \name Life
    /// @{

    /// An empty image with the method InterpolNearest. Allocates nothing.
    CTarvexDib();

    /// A deep copy, including the interpolation method and the whole colour table, even entries beyond the
    /// colour count. Throws MemoryError ("Copy Constructor CTarvexDib", "Couldn't allocate memory") if memory
    /// runs out, or std::bad_alloc if there is no memory for the texts of that error either.
    CTarvexDib(const CTarvexDib& src);

    /// Copies like the copy constructor, but never throws: if memory runs out, this image is left empty. A
    /// source without pixels (empty, or of width or height 0) empties this image. An emptied image keeps its
    /// own interpolation method. Assignment to itself changes nothing.
    CTarvexDib& operator=(const CTarvexDib& src);

    ~CTarvexDib();

    /// Releases the header block and the pixels. PixelSize and the interpolation method keep their values.
    void Empty();

    /// Replaces the image by a new one with `bitCount` bits per pixel: 8, 24 or 32. All bytes of a 32-bit
    /// picture become 255 (opaque white). Pixels of 8 and 24 bits are not initialised; the padding of their
    /// rows is 0. An 8-bit image gets a colour table of 256 entries, all black. The interpolation method does
    /// not change. False, with the image empty: another depth, a size beyond the limits, or out of memory.
    bool Create(int width, int height, int bitCount);

    /// @}
    /// \name Colour table
    /// @{

    /// Replaces the colour table by a copy of the `count` entries at `colors`, which may be this image's own
    /// table. Sets the header's biClrUsed to the count, but leaves it if the count is 0, because a biClrUsed
    /// of 0 means a full table. False: an empty image, more than 8 bits per pixel, a count below 0 or above
    /// 2, 16 or 256 (for 1, 4 or 8 bits), a null `colors` with a count above 0, a table that would exceed the
    /// limits, or out of memory.
    ///
    /// Many BMP files have a biClrUsed of 0, which means a full table. An image loaded from such a file has a
    /// colour count of 0. ChangeToTrueColor, drawing and copies find its table in the header block all the
    /// same, but Save would leave the table out. To keep it, set the count before saving (256 for 8 bits, 16
    /// for 4 bits, 2 for 1 bit). Entries that the file did not contain become black.
    ///
    ///     dib.SetColorTable(dib.GetColorTable(), 256);
    bool SetColorTable(const tagRGBQUAD* const colors, int count);

    /// The first entry of the colour table, which follows the header. Null for an empty image.
    tagRGBQUAD* GetColorTable() const;

    /// Copies the source's colour count and that many entries, whatever the depths. Sets biClrUsed as
    /// SetColorTable does. Does nothing if this image is empty or is the source, if memory runs out, or if
    /// the table would exceed the limits.
    void CopyColorsFromDib(const CTarvexDib& src);

    /// @}
    /// \name Geometry
    /// All take constant time. None checks its arguments; an address outside the picture must not be used.
    /// @{

    /// Width and height in pixels.
    const int Width() const { return m_width; }
    const int Height() const { return m_height; }
    /// Bits per pixel; 0 for an empty image.
    const int BitCount() const { return m_header == nullptr ? 0 : m_header->biBitCount; }
    /// Whole bytes per pixel: 0 for 1 and 4 bits.
    const int PixelSize() const { return m_pixelSize; }
    /// Bytes per stored row, padding included.
    const int BytesPerScanLine() const { return m_scanLineBytes; }
    /// Bytes of a stored row after its pixels; for 1 and 4 bits the length of the whole row.
    const int Padding() const { return m_scanLineBytes - m_pixelSize * m_width; }

    /// The stored row `row`, counted from the bottom of the picture.
    unsigned char* GetScanLine(int row) const
    {
        return m_bits + static_cast<std::ptrdiff_t>(row) * m_scanLineBytes;
    }

    /// The pixel (x, y), with y counted from the top of the picture.
    unsigned char* GetPixelFast(int x, int y) const
    {
        return m_bits + (static_cast<std::ptrdiff_t>(m_height) - y - 1) * m_scanLineBytes +
               static_cast<std::ptrdiff_t>(x) * m_pixelSize;
    }

    /// Length of the packed form in bytes: header, colour count entries, pixels.
    const int GetDibLength() const { return m_imageSize + 4 * m_numColors + 40; }

    const CTarvexDib::InterpolMethod GetInterpolMethod() const { return m_interpolMethod; }

    /// @}
    /// \name Files and memory
    /// The packed form of an image is one block: header, colour table, pixels. A BMP file is a file header of
    /// 14 bytes, then the packed form. Both forms are read and written only with an info header of 40 bytes,
    /// uncompressed, bottom row first. None of these operations throws. Buffers must not overlap the image.
    ///
    /// Save writes the header as the image holds it, so in three cases the result does not load again as it
    /// was:
    /// - biClrUsed exceeds the colour count, either after SetColorTable or CopyColorsFromDib with a count of
    ///   0, or because the image has more than 8 bits and was loaded from memory with a biClrUsed other than
    ///   0. The file does not load; nor, up to 8 bits, does the packed form.
    /// - The colour count is 0 because the image came from a file with a biClrUsed of 0 (see SetColorTable).
    ///   The file loads without its colours, and the packed form does not load.
    /// - An image of more than 8 bits has a colour table, from a file or by CopyColorsFromDib. Loading the
    ///   packed form takes that table for pixels.
    /// @{

    /// Loads the packed form from the `length` bytes at `buffer`. Up to 8 bits, the table has biClrUsed
    /// entries, or 2, 16 or 256 (for 1, 4 or 8 bits) if biClrUsed is 0. Above 8 bits there is no table: the
    /// pixels start at byte 40.
    /// False, with the image unchanged: a null buffer, no info header of 40 bytes, an unsupported depth or
    /// size, or a buffer too short for header, table and pixels. False, with the image empty: a compressed
    /// image, even if the buffer ends right after biCompression, or out of memory.
    bool Load(unsigned char* const buffer, int length);

    /// Loads a BMP file from the stream's current position; the stream stays open. The header block is
    /// everything between the file header and the pixels (bfOffBits). The colour count is biClrUsed as the
    /// file states it, even 0 (see SetColorTable). Pixel bytes that are missing from a truncated file become
    /// 0. As soon as the file has one pixel byte, memory for all pixels of the stated width and height is
    /// allocated.
    /// False, with the image empty: a null stream, not a BMP file, an info header of another length than 40,
    /// compression, an unsupported depth or size, a header block too short for its table, no pixel byte at
    /// all (so always if width or height is 0), or out of memory.
    bool Load(std::FILE* stream);

    /// Opens the file and loads it as from a stream. False with the image unchanged: a null path, or a file
    /// that cannot be opened.
    bool Load(const char* const path);

    /// Writes the packed form, GetDibLength() bytes, to `buffer`. False, with nothing written: an empty
    /// image, a null buffer, or a `length` below GetDibLength().
    bool Save(unsigned char* buffer, int length) const;

    /// Writes a BMP file at the stream's current position; the stream stays open, and its buffer may still
    /// hold bytes. False, with nothing written: an empty image or a null stream. False also if a write is
    /// incomplete; what was written stays.
    bool Save(std::FILE* stream) const;

    /// Creates or truncates the file and writes to it as to a stream. True if every byte was written and the
    /// file was closed without an error. False, with no file touched: an empty image or a null path. After
    /// any other failure an incomplete file may remain.
    bool Save(const char* const path) const;

    /// @}
    /// \name Resampling
    /// @{

    /// Selects the method by which Resize fills this image. Call it after Create: an image that is empty or
    /// has fewer than 24 bits gets InterpolNearest instead. A value that is none of the three is stored, but
    /// does not change the sampler; Resize then samples the source by the sampler that the source already
    /// has.
    void SetupInterpolMethod(CTarvexDib::InterpolMethod method);

    /// Fills the whole of this image, at its own size, from the whole of `source`, by this image's method.
    ///
    /// Pixel (i, r) samples the source at x = i * sx, y = r * sy, where
    /// sx = source width / width and sy = source height / height; x is computed by multiplication, y by
    /// repeated addition of sy. So the top-left corners are aligned. A channel becomes the value given here
    /// + 0.5, truncated. ix and iy are the integer parts of x and y, fx and fy the fractional parts:
    ///
    ///     nearest   the pixel at the integer parts of x + 0.5, y + 0.5
    ///
    ///     bilinear  p00 * w00 + p11 * w11 + p01 * w01 + p10 * w10
    ///               where p00 is pixel (ix, iy), p10 its right neighbour, p01 the pixel below it,
    ///               p11 the pixel below p10;
    ///               w11 = fx * fy, w00 = 1 - fx - fy + w11, w10 = fx - w11, w01 = fy - w11
    ///
    ///     cubic     the sum over rows j = 0 to 3 (outer loop) and columns k = 0 to 3 (inner loop) of
    ///               p(ix - 1 + k, iy - 1 + j) * (B(|j - (fy + 1)|) * B(|k - (fx + 1)|)),
    ///               where B is the uniform cubic B-spline, which blurs even at equal size:
    ///               B(t) = 0.5 * t * t * t - t * t + 2/3 for t <= 1
    ///               B(t) = u * u * u * (1/6) with u = 2 - t for t > 1
    ///
    /// All arithmetic is in doubles, from left to right as written, and rounds after every operation. A
    /// neighbour beyond the edge is the pixel at the edge. Each image may have 24 or 32 bits. From 32 to 32
    /// bits, alpha is a channel like the others; in all other cases only blue, green and red are written, so
    /// a 32-bit image keeps its alpha.
    ///
    /// Side effect: sets the source's method to this image's, so one source cannot serve two threads at once.
    /// False, with both images unchanged: `source` is this image, either has fewer than 24 bits, or this
    /// image has pixels and the source has none. If this image has width or height 0, there is nothing to
    /// fill and the result is true. Throws std::bad_alloc if the tables of the call cannot be allocated
    /// (at most 72 bytes per column and 48 bytes per row of this image, 4 bytes per column of `source`, and
    /// 130 KB); no pixel is written then, but the source's method is set.
    bool Resize(CTarvexDib& source) const;

    /// @}
    /// \name Blending
    /// This image is the target. Sources must have its width and height, and any of them may be the target
    /// itself. True colour means 24 or 32 bits; images of one call may differ in that. s1 and s2 are the
    /// values of one channel of `first` and `second`. The alpha of a source is ignored unless stated
    /// otherwise. `>> 8` divides by 256 and rounds down. Only the named bytes are written, never the padding.
    /// None of these operations allocates. False, with nothing written: a null source, or an
    /// image of another depth or size.
    /// @{

    /// Blue, green, red = s2 + ((s1 - s2) * a >> 8), where a is the alpha of the pixel of `first`. `first`
    /// has 32 bits; `second` and the target are true colour. Alpha 0 gives s2; 255 gives s1, or s1 - 1 where
    /// s1 > s2.
    bool AlphaBlendPerPixel(const CTarvexDib* const first, const CTarvexDib* const second) const;

    /// Blue, green, red = s1 + ((s2 - s1) * alpha >> 8). All three images are true colour. The direction is
    /// the opposite of AlphaBlendPerPixel: alpha 0 gives s1; 255 gives s2, or s2 - 1 where s2 > s1.
    bool AlphaBlend(const CTarvexDib* const first, const CTarvexDib* const second, unsigned char alpha) const;

    /// Blue, green, red = those of `second` where `first` has exactly the key colour, else those of `first`.
    /// All three images are true colour.
    bool TransparentBlend(const CTarvexDib* const first, const CTarvexDib* const second, unsigned char red,
                          unsigned char green, unsigned char blue) const;

    /// `first` shades `second` by `strength` percent. All three images are true colour. Blue, green and red
    /// are the truncated value of the following, in doubles as written:
    ///
    ///     ((s1 - 128.0) * k + 1.0) * (s2 * f)
    ///     k = strength * 7.8125e-5
    ///     f = 1.0 / (strength * 0.01 + 1.0)
    ///
    /// Strength 0 gives s2; 100 gives s1 * s2 / 256, rounded down. For a strength outside 0 to 100 the value
    /// is clamped to 0 to 255, and NaN counts as 0.
    bool ShadePerPixel(const CTarvexDib* const first, const CTarvexDib* const second, int strength) const;

    /// Alpha = the pixel byte of `plane`, an 8-bit image whose colour table is ignored. The target has 32
    /// bits.
    bool SetAlphaPlane(const CTarvexDib* const plane) const;

    /// Alpha = 0 where the pixel has the key colour. Elsewhere alpha becomes 255 if `opaqueOthers`, else it
    /// stays. The target has 32 bits.
    bool TransparentAlpha(unsigned char red, unsigned char green, unsigned char blue,
                          bool opaqueOthers) const;

    /// Mixes a colour into this image, which has 32 bits: each channel c of blue, green and red becomes
    /// c + ((colour - c) * w >> 8). The arguments are clamped to 0 to 1, and NaN counts as 0. Then
    /// colour = argument * 255 and w = weight * 256, both truncated. Alpha stays.
    bool ColorMix(float red, float green, float blue, float weight);

    /// Every alpha becomes `alpha`. The target has 32 bits.
    bool AlphaAlpha(unsigned char alpha) const;

    /// Every alpha becomes 255. The target has 32 bits.
    bool resetAlpha();

    /// @}
    /// \name Conversion and regions
    /// @{

    /// Converts this image to 32 bits (`withAlpha`) or to 24 bits. An image that has as many bits or more is
    /// not changed, and the result is true. Alpha becomes 255. A 5-bit channel v becomes v << 3 | v >> 2. An
    /// index beyond the colour table in the header block becomes black. The colour count becomes 0.
    /// False, with the image unchanged: an empty image, a result beyond the limits, or out of memory.
    bool ChangeToTrueColor(bool withAlpha);

    /// Fills the whole of this image from a rectangle of `src`: columns left to right - 1, rows top to
    /// bottom - 1. Pixel (i, r) becomes source pixel (left + floor(i * sx), floor(top + r * sy)), where
    /// sx = (right - left) / width and sy = (bottom - top) / height in doubles. The row position is computed
    /// by repeated addition of sy and never passes the last row of `src`. If right == left or bottom == top,
    /// the column left or the row top is repeated. Each image may have 24 or 32 bits; from 24 to 32 bits,
    /// alpha becomes 255.
    /// False, with nothing written: `src` is this image, either has fewer than 24 bits, left or top is not a
    /// column or row of `src`, right < left, bottom < top, or right or bottom exceeds the width or height of
    /// `src`. Throws std::bad_alloc if the table of columns or that of rows cannot be allocated; no pixel is
    /// written then.
    bool Clone(const CTarvexDib& src, int left, int top, int right, int bottom) const;

    /// Copies a block of pixels, unscaled, from (srcX, srcY) of `src` to (destX, destY) of this image.
    /// `columns` is a count, but `srcRowEnd` is the row after the last: srcY <= row < srcRowEnd. The block is
    /// clipped to both images; if no column or no row is left, nothing is copied and the result is true.
    /// False, with nothing written: `src` is this image, the depths differ or are below 24, or (destX, destY)
    /// or (srcX, srcY) is not a pixel of its image.
    bool CopyRect(int destX, int destY, const CTarvexDib& src, int srcX, int srcY, int columns,
                  int srcRowEnd) const;

    /// The same from raw pixels: `pixelsHeight` rows of `pixelsWidth` pixels, bottom row first, without
    /// padding between rows. `bitCount` is their depth and must be this image's. srcX, srcY and srcRowEnd
    /// count as in an image: srcY = 0 is the top row. False also for null `pixels`, if there is something to
    /// copy.
    bool CopyRect(int destX, int destY, unsigned char* const pixels, int pixelsWidth, int pixelsHeight,
                  int bitCount, int srcX, int srcY, int columns, int srcRowEnd) const;

    /// @}

protected:
    using Sampler = void (CTarvexDib::*)(double x, double y, unsigned char* out) const;

    /// Recomputes width, height, row length, pixel size and image size from the header, which must exist and
    /// be within the limits. Does not change the colour count.
    void SetMetrics();

    /// Entries of a full colour table: 2, 16 or 256 for 1, 4 or 8 bits, 0 for any other depth.
    const int GetNumColors(int bitCount) const;

    /// \name Samplers
    /// Each writes to `out` the pixel at position (x, y), as Resize defines it: PixelSize() bytes for
    /// NearestNeighbour, three bytes for the Triple forms, four for the Quad forms. Nothing is checked: the
    /// position must lie in the picture, and its pixels must have at least as many bytes as are written.
    /// @{
    void NearestNeighbour(double x, double y, unsigned char* out) const;
    void BiLinearTriple(double x, double y, unsigned char* out) const;
    void BiLinearQuad(double x, double y, unsigned char* out) const;
    void CubicTriple(double x, double y, unsigned char* out) const;
    void CubicQuad(double x, double y, unsigned char* out) const;
    /// @}

    Sampler m_sampler = &CTarvexDib::NearestNeighbour;
    BITMAPINFO* m_info = nullptr;         ///< the header block, owned, m_headerBytes long
    BITMAPINFOHEADER* m_header = nullptr; ///< the same address
    unsigned char* m_bits = nullptr;      ///< the pixel array, owned
    int m_width = 0;
    int m_height = 0;
    int m_scanLineBytes = 0;
    int m_pixelSize = 0;
    int m_imageSize = 0; ///< length of the pixel array in bytes
    int m_numColors = 0;
    InterpolMethod m_interpolMethod = InterpolNearest;
    int m_headerBytes = 0; ///< at least 40 + 4 * m_numColors; the header block of a file may be longer

private:
    void HoldHeader(unsigned char* block, int bytes);
    bool AllocatePixels();
    void HoldCopy(const CTarvexDib& src, unsigned char* header, unsigned char* bits);
    int TableEntries() const;
    void SetColorCount(int count);
    bool ReplaceTable(const tagRGBQUAD* colors, int count);
    bool ReadStream(std::FILE* stream);
    void ResizeBySampler(const CTarvexDib& source, double stepX, double stepY, int channels) const;
    void SampleLinear(double x, double y, unsigned char* out, int channels) const;
    void SampleCubic(double x, double y, unsigned char* out, int channels) const;
};

ZELUTIL_CONST_RESULTS_END
