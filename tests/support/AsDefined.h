#pragma once

#include "Definitions.h"
#include "KernelSets.h"
#include "Pictures.h"

#include <gtest/gtest.h>

namespace test
{

/// Expects that by every kernel set `run` makes of a copy of `target` what `define` makes of one, to the last
/// byte of padding.
template <typename Run, typename Define>
void ExpectAsDefined(const CTarvexDib& target, const Run& run, const Define& define)
{
    CTarvexDib expected(target);
    if (HasPixels(target))
        define(expected);
    int set = 0;
    ByEveryKernelSet(
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
