#include "Properties.h"

/// The fuzz target of the property that the build names. A violation is not caught, which ends the process as
/// the engine expects.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    property::ZELUTIL_PROPERTY(test::Input(data, std::min<std::size_t>(size, 4096)));
    return 0;
}
