#pragma once

#include "ImageReference.h"
#include "Pictures.h"
#include "Targets.h"

#include <gtest/gtest.h>

namespace test
{

/// Of rows: every width that takes its own way, and some at which a compiler's loops are under way.
inline std::vector<int> Widths()
{
    std::vector<int> widths = {130, 131, 134, 257, 274, 515, 1003};
    for (int width = 1; width < 71; ++width)
        widths.push_back(width);
    return widths;
}

/// Expects that by every kernel set `run` makes of a copy of `target` what `define` makes of one, to the last
/// byte of padding.
template <typename Run, typename Define>
void ExpectAsDefined(const CTarvexDib& target, const Run& run, const Define& define)
{
    CTarvexDib expected(target);
    if (HasPixels(target))
        define(expected);
    int set = 0;
    ForEachTarget(
        [&]
        {
            CTarvexDib result(target);
            ASSERT_TRUE(run(result));
            ASSERT_EQ(result.BitCount(), expected.BitCount());
            ASSERT_EQ(PixelBytes(result), PixelBytes(expected))
                << target.Width() << " x " << target.Height() << " of " << target.BitCount()
                << " bits by kernel set " << set;
            ++set;
        });
}

} // namespace test
