// stb's resizer, which chooses its instructions when it is compiled: here AVX2 and FMA. No other code is in
// this source, so that no inline function of the others is compiled for AVX2.

#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STBIR_USE_FMA
#include <stb_image_resize2.h>
