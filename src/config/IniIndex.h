#pragma once

#include <cstdint>

#include <memory>

namespace zel
{

class SearchTerm;

/// The indexed engine: parses a text once, then finds values in a hash table. Its entries are the sections
/// and keys in the order of the text; those with hashes of the same low bits are chained into a bucket.
class IniIndex
{
public:
    /// An index with room for `capacity` entries. Null if memory runs out.
    static std::unique_ptr<IniIndex> Create(std::uint32_t capacity);

    /// Indexes `text` and converts the names of its sections and keys to upper case in place. Returns false
    /// if the text is malformed or memory runs out; Find must not be called then.
    bool Build(char* text);

    /// Returns where a value starts in the text that was indexed last. Null if there is none.
    const char* Find(const char* section, const char* key) const;

    /// The number of entries that fit. It doubles when a text has that many, and never shrinks.
    std::uint32_t Capacity() const { return m_capacity; }

private:
    struct Entry
    {
        const char* name; ///< "[SECTION]" or "KEY=" in the text; a value follows the latter
        std::uint32_t length;
        std::uint32_t hash;
        std::uint32_t section; ///< index of the key's section, or of this entry if it is a section
        std::uint32_t next;    ///< index of the next entry in the same bucket
    };

    bool Grow();
    bool FillBuckets(std::uint32_t count);
    std::uint32_t FindEntry(const SearchTerm& term, std::uint32_t hash, std::uint32_t section) const;

    std::unique_ptr<Entry[]> m_entries;
    std::uint32_t m_capacity = 0;
    std::unique_ptr<std::uint32_t[]> m_buckets; ///< index of each bucket's first entry
    std::uint32_t m_bucketMask = 0;             ///< the number of buckets, a power of two, minus 1
};

} // namespace zel
