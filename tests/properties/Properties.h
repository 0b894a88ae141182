#pragma once

#include "Input.h"

/// What holds for any input: each function reads what it tries from the input and throws test::Violation
/// where a result is not the one that an independent computation gives. Fuzz targets and PropertyTest run
/// them.
namespace property
{

/// Every image operation, on every instruction set, gives the bytes of its reference; where it is refused,
/// nothing changes.
void Image(test::Input input);

/// BMP files and packed forms are read as a plain reader reads them; what is saved loads again.
void Bmp(test::Input input);

/// Both engines of the INI reader and its listing give what a model over whole strings gives.
void Ini(test::Input input);

/// The graphics calls over memory give what a model of contexts, bitmaps and palettes gives.
void Gdi(test::Input input);

} // namespace property
