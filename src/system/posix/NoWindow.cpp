#include "system/Platform.h"

// For a system without libxcb: no window can be asked for, so none exists.
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
