#include "system/Platform.h"

// The window functions for a build without libxcb: nothing can be asked about windows, so none exists.
namespace zel
{

bool WindowExists(const unsigned char*)
{
    return false;
}

std::optional<Extent> WindowExtent(const unsigned char*)
{
    return std::nullopt;
}

std::optional<Extent> ClientExtent(const unsigned char*)
{
    return std::nullopt;
}

} // namespace zel
