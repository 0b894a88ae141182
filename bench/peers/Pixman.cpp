#include "PixelBench.h"

#include <pixman.h>

namespace
{

// A pixman image over the stored rows of a picture, without a copy, or a solid colour.
struct Image
{
    explicit Image(const CTarvexDib& dib)
        : image(pixman_image_create_bits(dib.BitCount() == 32 ? PIXMAN_a8r8g8b8 : PIXMAN_r8g8b8, dib.Width(),
                                         dib.Height(), reinterpret_cast<std::uint32_t*>(dib.GetScanLine(0)),
                                         dib.BytesPerScanLine()))
    {
    }
    explicit Image(const pixman_color_t& color) : image(pixman_image_create_solid_fill(&color)) {}
    ~Image() { pixman_image_unref(image); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    pixman_image_t* const image;
};

void Compose(pixman_op_t operation, const Image& from, const Image& to, int width, int height)
{
    pixman_image_composite32(operation, from.image, nullptr, to.image, 0, 0, 0, 0, 0, 0, width, height);
}

void ComposeColor(pixman_op_t operation, const pixman_color_t& color)
{
    Compose(operation, Image(color), Image(Target(kWidth, kHeight, 32)), kWidth, kHeight);
}

} // namespace

void AddPixman()
{
    constexpr pixman_filter_t filters[] = {PIXMAN_FILTER_NEAREST, PIXMAN_FILTER_BILINEAR};
    for (const Scale& s : kScales)
        for (int i = 0; i < 2; ++i)
            AddPeer(ResizeName(s, i, 32), i == 0 ? "pixman" : "pixman*", s.width, s.height,
                    [=, filter = filters[i]]
                    {
                        const Image from(Picture(s.fromWidth, s.fromHeight, 32)),
                            to(Target(s.width, s.height, 32));
                        pixman_transform_t scale;
                        pixman_transform_init_scale(
                            &scale, pixman_double_to_fixed(static_cast<double>(s.fromWidth) / s.width),
                            pixman_double_to_fixed(static_cast<double>(s.fromHeight) / s.height));
                        pixman_image_set_transform(from.image, &scale);
                        pixman_image_set_filter(from.image, filter, nullptr, 0);
                        pixman_image_set_repeat(from.image, PIXMAN_REPEAT_PAD);
                        Compose(PIXMAN_OP_SRC, from, to, s.width, s.height);
                    });
    AddPeer("AlphaBlendPerPixel 32", "pixman",
            []
            {
                Compose(PIXMAN_OP_OVER, Image(Picture(kWidth, kHeight, 32)),
                        Image(Target(kWidth, kHeight, 32)), kWidth, kHeight);
            });
    for (const int bits : {24, 32})
        AddPeer(bits == 24 ? "CopyRect 24" : "CopyRect 32", "pixman",
                [=]
                {
                    Compose(PIXMAN_OP_SRC, Image(Picture(kWidth, kHeight, bits)),
                            Image(Target(kWidth, kHeight, bits)), kWidth, kHeight);
                });
    AddPeer("ColorMix", "pixman", [] { ComposeColor(PIXMAN_OP_OVER, {0x1999, 0x3333, 0x4CCC, 0x8000}); });
    for (const char* const name : {"AlphaAlpha", "resetAlpha"})
        AddPeer(name, "pixman", [] { ComposeColor(PIXMAN_OP_ADD, {0, 0, 0, 0xFFFF}); });
}
