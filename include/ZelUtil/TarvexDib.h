#pragma once

#include "ZelUtil/Errors.h"
#include "ZelUtil/Export.h"
#include "ZelUtil/WinTypes.h"

#include <cstddef>
#include <cstdio>

ZELUTIL_CONST_RESULTS_BEGIN

/// A raster image in memory, laid out as the BMP format lays it out: a header block (an info header of 40
/// bytes, then the colour table) and, apart from it, the pixel array.
///
/// - Depths: 1, 4 and 8 bits per pixel (indices into the colour table; the leftmost pixel in the high bits),
///   16 (5 bits each of blue, green, red from the low end), 24 (blue, green, red) and 32 (blue, green, red,
///   alpha). Create makes 8, 24 and 32; the loaders take all six.
/// - Rows: filled up to a multiple of four bytes, stored from the bottom row of the picture upward.
/// - Pixels: addressed with x to the right and y downward from the top row: picture row y is stored row
///   Height() - 1 - y. GetScanLine alone counts stored rows.
/// - Alpha: 0 is transparent, 255 opaque.
/// - Limits: width and height are not negative (0 is allowed), and header, colours and pixels together have
///   at most 2^31 - 1 bytes.
///
/// An image is either empty or holds a picture. It is a value: copies are deep. It has no locks; several
/// threads may read one image while none changes it (Resize changes the image that it reads from). Operations
/// that change only pixel bytes are `const`, because the pixels are reached through a pointer.
///
/// Operations that can fail give false. Unless their comment says otherwise they check everything before the
/// first write, so false means that nothing was changed. None of them writes a message.
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

    /// A deep copy, interpolation method included, colour table in its whole length. Throws MemoryError
    /// ("Copy Constructor CTarvexDib", "Couldn't allocate memory") where memory runs out, or std::bad_alloc
    /// where there is none left for its texts either.
    CTarvexDib(const CTarvexDib& src);

    /// As the copy constructor, but never throws: this image is left empty where memory runs out. Another
    /// image without pixels empties this one, which then keeps its own interpolation method.
    CTarvexDib& operator=(const CTarvexDib& src);

    ~CTarvexDib();

    /// Releases header block and pixels. PixelSize and the interpolation method stay as they are.
    void Empty();

    /// Replaces the image by a new one of 8, 24 or 32 bits per pixel. All bytes of a 32-bit picture are 255
    /// (opaque white), and the padding of rows is 0; the other pixels are not initialised. The colour table
    /// of an 8-bit image has 256 entries, all black. The interpolation method stays. False for another depth,
    /// a size beyond the limits and where memory runs out; the image is then empty.
    bool Create(int width, int height, int bitCount);

    /// @}
    /// \name Colour table
    /// @{

    /// Replaces the colour table by a copy of `count` entries; `colors` may be this image's own table. The
    /// header's biClrUsed follows the count; only a count of 0 leaves it, as 0 there would promise a full
    /// table. False for an empty image, one of more than 8 bits, a count below 0 or above 2, 16 or 256 for 1,
    /// 4 or 8 bits, null with a count above 0, a table that would exceed the limits, and where memory runs
    /// out.
    ///
    /// Many BMP files state 0 colours and mean a full table. Such an image reports no colours when it was
    /// loaded from a file, although its pixels find their colours, and Save would leave the table out. This
    /// line keeps it, for 8 bits (16 for 4 bits, 2 for 1 bit); entries that the file lacked come out black:
    ///
    ///     dib.SetColorTable(dib.GetColorTable(), 256);
    bool SetColorTable(const tagRGBQUAD* const colors, int count);

    /// The first entry of the colour table, behind the header. Null for an empty image.
    tagRGBQUAD* GetColorTable() const;

    /// Takes the source's colour count and entries. biClrUsed follows as in SetColorTable. Nothing happens to
    /// an empty image, where memory runs out, and where the table would exceed the limits.
    void CopyColorsFromDib(const CTarvexDib& src);

    /// @}
    /// \name Geometry
    /// Constant-time; none checks its arguments, and addresses outside the picture must not be used.
    /// @{

    /// In pixels.
    const int Width() const { return m_width; }
    const int Height() const { return m_height; }
    /// Bits per pixel; 0 for an empty image.
    const int BitCount() const { return m_header == nullptr ? 0 : m_header->biBitCount; }
    /// Whole bytes per pixel: 0 for 1 and 4 bits.
    const int PixelSize() const { return m_pixelSize; }
    /// Bytes per stored row, padding included.
    const int BytesPerScanLine() const { return m_scanLineBytes; }
    /// Bytes of a row behind its pixels; for 1 and 4 bits the whole row.
    const int Padding() const { return m_scanLineBytes - m_pixelSize * m_width; }

    /// The stored row `row`, counted from the bottom of the picture.
    unsigned char* GetScanLine(int row) const
    {
        return m_bits + static_cast<std::ptrdiff_t>(row) * m_scanLineBytes;
    }

    /// The pixel (x, y), y counted from the top of the picture.
    unsigned char* GetPixelFast(int x, int y) const
    {
        return m_bits + (static_cast<std::ptrdiff_t>(m_height) - y - 1) * m_scanLineBytes +
               static_cast<std::ptrdiff_t>(x) * m_pixelSize;
    }

    /// Length of the packed form in bytes: header, colour table, pixels.
    const int GetDibLength() const { return m_imageSize + 4 * m_numColors + 40; }

    const CTarvexDib::InterpolMethod GetInterpolMethod() const { return m_interpolMethod; }

    /// @}
    /// \name Files and memory
    /// Uncompressed images with the info header of 40 bytes are taken in, stored bottom row first, and
    /// nothing else is written. A file is a BMP file: a file header of 14 bytes, then the packed form. The
    /// packed form is header, colour table and pixels in one block. None of these operations throws. Buffers
    /// lie outside the image.
    ///
    /// The header is written as the image holds it. Where its biClrUsed exceeds the colour count the file
    /// does not load again: after SetColorTable with a count of 0, and where memory gave more than 8 bits and
    /// a biClrUsed. In the packed form a table above 8 bits, which only a file can bring, is taken for pixels
    /// when it comes back.
    /// @{

    /// Takes in the packed form. Above 8 bits the pixels start at byte 40; else the table has biClrUsed
    /// entries, or all of its depth's when that is 0.
    /// False with the image unchanged: no header of 40 bytes at `buffer`, a depth or a size that is not
    /// supported, a buffer shorter than its header, table and pixels. False with the image empty: a
    /// compressed image, even where the buffer ends in the header behind that field, and where memory runs
    /// out.
    bool Load(unsigned char* const buffer, int length);

    /// Takes in a BMP file from the stream's current position; the stream stays open. The colour count is
    /// biClrUsed as the file states it (see SetColorTable about 0). The header block is read for its whole
    /// length, up to where the file says that the pixels start. Pixel bytes that a truncated file lacks are
    /// 0; memory for all pixels that the header states is taken as soon as the file has a byte of them.
    /// False, with the image empty: not a BMP file, an info header of another length, compression, a depth or
    /// size that is not supported, a header block too short for its table, no pixel byte at all (also where
    /// width or height is 0), memory running out.
    bool Load(std::FILE* stream);

    /// Opens the file and loads from it. False with the image unchanged where it cannot be opened.
    bool Load(const char* const path);

    /// Writes GetDibLength() bytes in the packed form. False, with nothing written, for an empty image, null,
    /// and a length below that.
    bool Save(unsigned char* buffer, int length) const;

    /// Writes a BMP file at the stream's current position; the stream stays open and may hold bytes back in
    /// its buffer. False for an empty image, with nothing written, and where a write is incomplete; what was
    /// written stays.
    bool Save(std::FILE* stream) const;

    /// Creates or truncates the file. True when every byte was written and the file was closed without an
    /// error. No file is created for an empty image.
    bool Save(const char* const path) const;

    /// @}
    /// \name Resampling
    /// @{

    /// Chooses the method by which Resize fills this image. An image that is empty or has fewer than 24 bits
    /// falls back to InterpolNearest, so Create comes first. A value that is none of the three is stored,
    /// and the sampler stays.
    void SetupInterpolMethod(CTarvexDib::InterpolMethod method);

    /// Fills this image, at its own size, from the whole of `source`, by this image's method.
    ///
    /// Pixel (i, r) samples the source at x = i * sx, y = r * sy with sx = source width / width and
    /// sy = source height / height (y by repeated addition): top-left corners meet. A channel is its value
    /// + 0.5, truncated. With ix, iy the integer parts of x, y and fx, fy what is left:
    ///
    ///     nearest   the pixel at the integer parts of x + 0.5, y + 0.5
    ///
    ///     bilinear  p00 * w00 + p11 * w11 + p01 * w01 + p10 * w10, p10 the right, p01 the lower neighbour
    ///               w11 = fx * fy, w00 = 1 - fx - fy + w11, w10 = fx - w11, w01 = fy - w11
    ///
    ///     cubic     the sum over rows j (outer) and columns k of 0 to 3 of
    ///               p(ix - 1 + k, iy - 1 + j) * (B(|j - (fy + 1)|) * B(|k - (fx + 1)|)),
    ///               the uniform cubic B-spline, which smooths even at equal size:
    ///               B(t) = 0.5 * t * t * t - t * t + 2/3 for t <= 1
    ///               B(t) = u * u * u * (1/6) with u = 2 - t for t > 1
    ///
    /// All in doubles, each operation rounded, from left to right as written. Pixels beyond the edge are
    /// those at the edge. 24 and 32 bits mix: three bytes of each pixel are then written, and the alpha of
    /// this image stays. From 32 to 32 bits alpha is a channel like the others.
    ///
    /// The source takes this image's method. False, with both images unchanged: `source` is this image,
    /// either has fewer than 24 bits, or this image has pixels and the source has none. An image of width or
    /// height 0 has nothing to fill and gives true. std::bad_alloc where the tables of a call (at most 80
    /// bytes per column, 8 per row and 25 KB) cannot be allocated; no pixel is written then, but the source
    /// has the method.
    bool Resize(CTarvexDib& source) const;

    /// @}
    /// \name Blending
    /// Each walks this image, the target, once; sources are equally wide and high, and any of them may be the
    /// target itself. True colour means 24 or 32 bits, mixed freely; the alpha of a source counts only where
    /// stated. Only the named bytes are written, never the padding. Divisions by 256 round down. Never
    /// allocates. False for null, another depth or another size.
    /// @{

    /// Blue, green, red = s2 + ((s1 - s2) * a >> 8) with a the alpha of `first`, which has 32 bits; `second`
    /// and the target are true colour. Alpha 0 gives s2; 255 gives s1, or s1 - 1 where s1 > s2.
    bool AlphaBlendPerPixel(const CTarvexDib* const first, const CTarvexDib* const second) const;

    /// Blue, green, red = s1 + ((s2 - s1) * alpha >> 8); all three are true colour. The other way round than
    /// above: 0 gives s1.
    bool AlphaBlend(const CTarvexDib* const first, const CTarvexDib* const second, unsigned char alpha) const;

    /// Blue, green, red of `first`, or of `second` where `first` has the key colour. All are true colour.
    bool TransparentBlend(const CTarvexDib* const first, const CTarvexDib* const second, unsigned char red,
                          unsigned char green, unsigned char blue) const;

    /// `first` shades `second` by `strength` percent; all are true colour. Blue, green, red are, truncated,
    ///
    ///     ((s1 - 128.0) * k + 1.0) * (s2 * f)
    ///     k = strength * 7.8125e-5
    ///     f = 1.0 / (strength * 0.01 + 1.0)
    ///
    /// 0 gives s2, 100 gives s1 * s2 / 256. Outside 0 to 100 the value is kept within 0 to 255; what is not a
    /// number is 0.
    bool ShadePerPixel(const CTarvexDib* const first, const CTarvexDib* const second, int strength) const;

    /// Alpha = the byte of `plane`, an 8-bit image whose colours do not matter. The target has 32 bits.
    bool SetAlphaPlane(const CTarvexDib* const plane) const;

    /// Alpha 0 where the pixel of 32 bits has the key colour; elsewhere 255 when `opaqueOthers`, else as it
    /// was.
    bool TransparentAlpha(unsigned char red, unsigned char green, unsigned char blue,
                          bool opaqueOthers) const;

    /// Channel c becomes c + ((colour - c) * w >> 8), for 32 bits; alpha stays. The colour is a fraction of
    /// 255 and w = weight * 256, both truncated. Arguments are confined to 0 to 1; what is not a number is 0.
    bool ColorMix(float red, float green, float blue, float weight);

    /// Every alpha becomes `alpha`. 32 bits.
    bool AlphaAlpha(unsigned char alpha) const;

    /// Every alpha becomes 255. 32 bits.
    bool resetAlpha();

    /// @}
    /// \name Conversion and regions
    /// @{

    /// Converts this image to 32 bits (`withAlpha`) or 24; one that has as many or more stays as it is, which
    /// is true as well. Alpha becomes 255, 5-bit channels widen by v << 3 | v >> 2, and an index beyond the
    /// colour table in the header block is black. The colour count becomes 0.
    /// False for an empty image, a result beyond the limits and where memory runs out.
    bool ChangeToTrueColor(bool withAlpha);

    /// Fills the whole of this image from the columns left to right - 1 and rows top to bottom - 1 of `src`:
    /// pixel (i, r) is source pixel (left + floor(i * sx), floor(top + r * sy)), with sx = (right - left) /
    /// width and sy = (bottom - top) / height in doubles (rows by repeated addition). An empty range repeats
    /// its first column or row. Both have 24 or 32 bits; from 24 to 32 bits alpha becomes 255.
    /// False: `src` is this image, either has fewer bits, left or top is not a column or row of `src`, right
    /// or bottom lies before left or top or beyond the source. std::bad_alloc where the table of columns or
    /// that of rows cannot be allocated; no pixel is written then.
    bool Clone(const CTarvexDib& src, int left, int top, int right, int bottom) const;

    /// Copies, unscaled, the rows srcY to srcRowEnd - 1 of `src`, each `columns` pixels from srcX on, to
    /// (destX, destY). What leaves either image is clipped; a count of 0 or less copies nothing and is true.
    /// False: `src` is this image, the depths differ or are below 24, (destX, destY) or (srcX, srcY) is not
    /// a pixel of its image.
    bool CopyRect(int destX, int destY, const CTarvexDib& src, int srcX, int srcY, int columns,
                  int srcRowEnd) const;

    /// The same from raw pixels: `pixelsHeight` rows of `pixelsWidth` pixels, bottom row first, without
    /// padding, at `bitCount` bits, which is this image's depth. Null, where there is something to copy, is
    /// false too.
    bool CopyRect(int destX, int destY, unsigned char* const pixels, int pixelsWidth, int pixelsHeight,
                  int bitCount, int srcX, int srcY, int columns, int srcRowEnd) const;

    /// @}

protected:
    using Sampler = void (CTarvexDib::*)(double x, double y, unsigned char* out) const;

    /// Recomputes width, height, row length, pixel size and image size from the header, which must be present
    /// and within the limits. Leaves the colour count alone.
    void SetMetrics();

    /// Entries of a full colour table: 2, 16 or 256 for 1, 4 or 8 bits, else 0.
    const int GetNumColors(int bitCount) const;

    /// \name Samplers
    /// Each writes the value at (x, y), as Resize defines it: PixelSize() bytes for NearestNeighbour, three
    /// for the Triple forms, four for the Quad forms. The position lies in the picture, and the picture has
    /// as many bytes per pixel; nothing is checked.
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
    int m_headerBytes = 0; ///< at least 40 + 4 * m_numColors; a file's block may be longer

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
