#pragma once

// Every operation of the image, pixel by pixel, exactly as documented. Tests compare results with these, and
// benchmarks compare speed.

#include "ZelUtil/TarvexDib.h"

#include <string>

namespace reference
{

// One pixel of an image, at a position that may lie between pixels.
void Sample(const CTarvexDib& from, CTarvexDib::InterpolMethod method, double x, double y, int channels,
            unsigned char* out);
void Resize(CTarvexDib& to, const CTarvexDib& from, CTarvexDib::InterpolMethod method);

void AlphaBlendPerPixel(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second);
void AlphaBlend(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second, int alpha);
void TransparentBlend(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second, int red, int green,
                      int blue);
void ShadePerPixel(CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second, int strength);
void SetAlphaPlane(CTarvexDib& to, const CTarvexDib& plane);
void TransparentAlpha(CTarvexDib& to, int red, int green, int blue, bool opaqueOthers);
void ColorMix(CTarvexDib& to, float red, float green, float blue, float weight);
void AlphaAlpha(CTarvexDib& to, int alpha);

void ChangeToTrueColor(CTarvexDib& dib, bool withAlpha);
void Clone(CTarvexDib& to, const CTarvexDib& from, int left, int top, int right, int bottom);
void CopyRect(CTarvexDib& to, int destX, int destY, const CTarvexDib& from, int srcX, int srcY, int columns,
              int srcRowEnd);
// From rows without padding.
void CopyRect(CTarvexDib& to, int destX, int destY, const unsigned char* pixels, int pixelsWidth,
              int pixelsHeight, int srcX, int srcY, int columns, int srcRowEnd);

// Pictures of 24 and 32 bits only; the packed form follows the file header.
void Load(CTarvexDib& to, const unsigned char* packed);
void Save(const CTarvexDib& from, unsigned char* packed);
void Load(CTarvexDib& to, const std::string& path);
void Save(const CTarvexDib& from, const std::string& path);

} // namespace reference
