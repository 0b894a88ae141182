#include "config/IniIndex.h"

#include "config/IniText.h"

#include <algorithm>
#include <bit>
#include <new>

namespace zel
{

namespace
{

constexpr std::uint32_t kNone = UINT32_MAX;
constexpr std::uint32_t kBucketsPerEntry = 2; // at least: their number is rounded up to a power of two

// A key's hash depends on its section, so that equal names in different sections differ.
std::uint32_t KeyHash(std::uint32_t nameHash, std::uint32_t section)
{
    return nameHash + (section + 1) * 0x9E3779B1U;
}

// Converts the name up to `closing` to upper case in place and returns its length, `closing` included.
// Returns 0 if its line has no `closing` or the name is too long.
std::uint32_t UppercaseName(char* name, char closing, UpperCase upper, std::uint32_t& hash)
{
    NameHash sum;
    std::uint32_t length = 0;
    for (; name[length] != closing; ++length)
    {
        if (name[length] == '\n' || name[length] == '\0' || length == kMaxIniName - 1)
            return 0;
        const char character = upper(name[length]);
        name[length] = character;
        sum.Add(character);
    }
    sum.Add(closing);
    hash = sum.Value();
    return length + 1;
}

// The first section header, without the blanks before it. Null if there is none.
const char* FirstHeader(const char* text)
{
    const char* p = SkipBlanks(text);
    while (*p != '[')
    {
        if (*p == '\0')
            return nullptr;
        p = SkipBlanks(SkipLine(p));
    }
    return p;
}

// The next line that is neither empty nor a comment, without the blanks before it. Null if there is none. If
// the text ends with a line of blanks, the result is the end of the text, where no name can be read.
const char* NextLine(const char* p)
{
    do
    {
        p = SkipLine(p);
        if (*p == '\0')
            return nullptr;
        p = SkipBlanks(p);
    } while (*p == ';' || *p == '\r' || *p == '\n');
    return p;
}

} // namespace

std::unique_ptr<IniIndex> IniIndex::Create(std::uint32_t capacity)
{
    std::unique_ptr<IniIndex> index(new (std::nothrow) IniIndex);
    if (index == nullptr)
        return nullptr;
    index->m_entries.reset(new (std::nothrow) Entry[capacity]);
    index->m_capacity = capacity;
    return index->m_entries == nullptr ? nullptr : std::move(index);
}

bool IniIndex::Build(char* text)
{
    const UpperCase upper;
    std::uint32_t count = 0, section = 0;
    for (const char* p = FirstHeader(text); p != nullptr; p = NextLine(p))
    {
        const bool isSection = *p == '[';
        char* const name = text + (p - text);
        std::uint32_t hash = 0;
        const std::uint32_t length = UppercaseName(name, isSection ? ']' : '=', upper, hash);
        if (length == 0)
            return false;

        if (isSection)
            section = count;
        m_entries[count] = {name, length, isSection ? hash : KeyHash(hash, section), section, kNone};
        p += length - 1;
        ++count;
        if (count == m_capacity && !Grow())
            return false;
    }
    return FillBuckets(count);
}

const char* IniIndex::Find(const char* section, const char* key) const
{
    const UpperCase upper;
    const SearchTerm sectionTerm = SearchTerm::ForSection(section, upper);
    const SearchTerm keyTerm = SearchTerm::ForKey(key, upper);
    if (sectionTerm.IsEmpty() || keyTerm.IsEmpty())
        return nullptr;

    const std::uint32_t header = FindEntry(sectionTerm, sectionTerm.Hash(), kNone);
    if (header == kNone)
        return nullptr;
    const std::uint32_t entry = FindEntry(keyTerm, KeyHash(keyTerm.Hash(), header), header);
    return entry == kNone ? nullptr : m_entries[entry].name + m_entries[entry].length;
}

bool IniIndex::Grow()
{
    std::unique_ptr<Entry[]> larger(new (std::nothrow) Entry[std::size_t{2} * m_capacity]);
    if (larger == nullptr)
        return false;
    std::copy_n(m_entries.get(), m_capacity, larger.get());
    m_entries = std::move(larger);
    m_capacity *= 2;
    return true;
}

// Within a bucket the entries keep the order of the text, so that the first of a name is found.
bool IniIndex::FillBuckets(std::uint32_t count)
{
    const std::uint32_t bucketCount = std::bit_ceil(kBucketsPerEntry * count);
    m_buckets.reset(new (std::nothrow) std::uint32_t[bucketCount]);
    if (m_buckets == nullptr)
        return false;
    m_bucketMask = bucketCount - 1;
    std::fill_n(m_buckets.get(), bucketCount, kNone);
    for (std::uint32_t i = count; i-- > 0;)
    {
        std::uint32_t& first = m_buckets[m_entries[i].hash & m_bucketMask];
        m_entries[i].next = first;
        first = i;
    }
    return true;
}

// The index of the first entry of this name and hash, in this section or, for kNone, anywhere. kNone if there
// is none.
std::uint32_t IniIndex::FindEntry(const SearchTerm& term, std::uint32_t hash, std::uint32_t section) const
{
    std::uint32_t i = m_buckets[hash & m_bucketMask];
    for (; i != kNone; i = m_entries[i].next)
    {
        const Entry& entry = m_entries[i];
        if (entry.hash == hash && (section == kNone || entry.section == section) &&
            term.Equals(entry.name, entry.length))
            break;
    }
    return i;
}

} // namespace zel
