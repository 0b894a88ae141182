#pragma once

namespace zel
{

/// The direct engine: scans the whole text for a section, then that section for a key, and returns where the
/// key's value starts. Null if there is none. Accepts every text.
const char* ScanForValue(const char* text, const char* section, const char* key);

} // namespace zel
