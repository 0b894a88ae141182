#include "ZelUtil/INIFileReader.h"

#include "config/TextFile.h"
#include "system/Platform.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace
{

constexpr std::size_t kMaxText = 0x400000;
constexpr int kValueSize = 512;
constexpr int kEntrySize = 256;
constexpr int kPieceSize = 512; // of a line in a listing

constexpr std::uint32_t kNoEntry = UINT32_MAX;
constexpr std::uint32_t kBucketsPerEntry = 2;
constexpr std::size_t kBucketBytes = kBucketsPerEntry * sizeof(std::uint32_t); // of an entry

// std::toupper, by the locale at the time when this was made.
class UpperCase
{
public:
    char operator()(char character) const
    {
        const auto code = static_cast<unsigned char>(character);
        return static_cast<char>(m_table != nullptr ? m_table[code] : std::toupper(code));
    }

private:
    const std::int32_t* m_table = zel::UpperCaseTable();
};

// Made character by character, while a name is turned to upper case: a name read back by words would have to
// wait for the single characters to be written.
class Hash
{
public:
    void Add(char character) { m_bits = std::rotl(m_bits, 7) ^ static_cast<unsigned char>(character); }

    std::uint32_t Value() const { return static_cast<std::uint32_t>((m_bits * 0x9E3779B97F4A7C15U) >> 32); }

    // The same key counts in every section once.
    std::uint32_t InSection(std::uint32_t section) const { return Value() + (section + 1) * 0x9E3779B1U; }

private:
    std::uint64_t m_bits = 0;
};

bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

const char* SkipBlanks(const char* p)
{
    while (IsBlank(*p))
        ++p;
    return p;
}

const char* LineEnd(const char* p)
{
    const char* end = std::strchr(p, '\n');
    return end == nullptr ? p + std::strlen(p) : end;
}

// Behind the line end, or at the end of the text.
const char* SkipLine(const char* p)
{
    p = LineEnd(p);
    return *p == '\n' ? p + 1 : p;
}

// The start of the first line, from p on, that may hold a section header; the end of the text where none
// does.
const char* LineWithHeader(const char* p)
{
    const char* bracket = std::strchr(p, '[');
    if (bracket == nullptr)
        return p + std::strlen(p);
    while (bracket > p && bracket[-1] != '\n')
        --bracket;
    return bracket;
}

// The same behind the line that p is somewhere in, without a search for that line's end where another line
// has the next bracket.
const char* LaterLineWithHeader(const char* p)
{
    const char* const line = LineWithHeader(p);
    return line > p ? line : LineWithHeader(SkipLine(p));
}

// Where the search in a text goes on after something that is not what it looks for: behind a blank, else on
// the next line.
const char* NextCandidate(const char* p)
{
    return IsBlank(*p) ? p + 1 : SkipLine(p);
}

// What a request is compared by: in upper case, with what stands around the name in a file.
class SearchKey
{
public:
    // Empty where it would not fit an entry.
    SearchKey(const char* name, UpperCase upper, char behind, char before = '\0')
    {
        // Local copies: what is written to the text could otherwise change the members, as compilers see it.
        Hash hash;
        std::size_t length = 0;
        if (before != '\0')
            hash.Add(m_text[length++] = before);
        for (; *name != '\0'; ++name)
        {
            if (length == kEntrySize - 2)
                return;
            const char character = upper(*name);
            m_text[length++] = character;
            hash.Add(character);
        }
        m_text[length++] = behind;
        hash.Add(behind);
        m_hash = hash;
        m_length = length;
    }

    bool IsEmpty() const { return m_length == 0; }

    const Hash& GetHash() const { return m_hash; }

    bool Equals(const char* text, std::size_t length) const
    {
        return length == m_length && std::memcmp(text, m_text, length) == 0;
    }

    // Moves p over what is the same; true when that is the whole pattern.
    bool Matches(const char*& p, UpperCase upper) const
    {
        for (std::size_t i = 0; i < m_length; ++i, ++p)
            if (upper(*p) != m_text[i])
                return false;
        return true;
    }

private:
    char m_text[kEntrySize]; // the first m_length of them; zeroing it would cost as much as filling it
    std::size_t m_length = 0;
    Hash m_hash;
};

SearchKey SectionSearchKey(const char* name, UpperCase upper)
{
    return SearchKey(name, upper, ']', '[');
}

SearchKey KeySearchKey(const char* name, UpperCase upper)
{
    return SearchKey(name, upper, '=');
}

// Turns a line up to `last` to upper case where it stands, and gives its length, `last` included. 0 where the
// line has none or is longer than a request can be.
std::uint32_t UppercaseName(char* name, char last, UpperCase upper, Hash& result)
{
    Hash hash;
    std::uint32_t length = 0;
    for (; name[length] != last; ++length)
    {
        if (name[length] == '\n' || name[length] == '\0' || length == kEntrySize - 2)
            return 0;
        const char character = upper(name[length]);
        name[length] = character;
        hash.Add(character);
    }
    hash.Add(last);
    result = hash;
    return length + 1;
}

// The first header; null where there is none.
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

// The next line that counts, behind its blanks; null where the text ends before it.
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

// Chains the entries of each bucket, the earlier ones first.
template <typename Entry>
void FillBuckets(Entry* entries, std::uint32_t count, std::uint32_t* buckets, std::uint32_t bucketCount)
{
    std::fill_n(buckets, bucketCount, kNoEntry);
    for (std::uint32_t i = count; i-- > 0;)
    {
        std::uint32_t& first = buckets[entries[i].hash & (bucketCount - 1)];
        entries[i].next = first;
        first = i;
    }
}

// A value in a text: what stands from `begin` on its line, cut to `limit` characters, without blanks around
// it.
struct Value
{
    Value(const char* first, std::size_t limit) : begin(first), end(LineEnd(first))
    {
        if (static_cast<std::size_t>(end - begin) > limit)
            end = begin + limit;
        while (end > begin && IsBlank(end[-1]))
            --end;
        while (begin < end && IsBlank(*begin))
            ++begin;
    }

    const char* begin;
    const char* end;
};

// False, with the string as it was, where memory runs out.
bool Assign(CStdStr<char>& to, const char* begin, const char* end)
{
    try
    {
        to.assign(begin, end);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

// The next piece of a line, its line end included. `atEnd` tells whether the text ended in it. False where no
// character is left.
bool ReadPiece(std::FILE* file, char (&piece)[kPieceSize], bool& atEnd)
{
    int length = 0;
    atEnd = false;
    while (length < kPieceSize - 1 && !atEnd && (length == 0 || piece[length - 1] != '\n'))
    {
        const int character = zel::ReadTextCharacter(file);
        atEnd = character == EOF;
        if (!atEnd)
            piece[length++] = static_cast<char>(character);
    }
    piece[length] = '\0';
    return length > 0;
}

bool IsSpace(char character)
{
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

} // namespace

INIFileReader::INIFileReader() = default;

INIFileReader::INIFileReader(const INIFileReader&) : INIFileReader() {}

INIFileReader& INIFileReader::operator=(const INIFileReader& other)
{
    if (&other != this)
    {
        EndStringFromIni();
        end_profile_string();
    }
    return *this;
}

INIFileReader::~INIFileReader()
{
    EndStringFromIni();
    end_profile_string();
}

bool INIFileReader::getStringFromIni(const CStdStr<char>& fileName, const CStdStr<char>& section,
                                     const CStdStr<char>& key, CStdStr<char>* const result, bool useProfile,
                                     bool reload)
{
    if (result == nullptr)
        return false;
    if (!useProfile)
        return GetStringFromIni(fileName, section, key, result, kValueSize, reload);

    char value[kValueSize];
    const int length =
        get_profile_string(section.c_str(), key.c_str(), "", value, kValueSize, fileName.c_str());
    return length > 0 && Assign(*result, value, value + length);
}

void INIFileReader::EndStringFromIni()
{
    DropDirectText();
    CloseList();
}

void INIFileReader::end_profile_string()
{
    if (m_profileIndexMissing)
        return;
    std::free(m_profileText);
    std::free(m_profileIndex);
    m_profileText = nullptr;
    m_profileIndex = nullptr;
    m_profileBuckets = 0;
    m_profileIndexMissing = true;
    CloseList();
}

bool INIFileReader::getFirstSectionName(const CStdStr<char>& fileName, CStdStr<char>& name)
{
    if (!m_listFileName.empty() || fileName.empty() || m_listFile != nullptr)
        return false;
    if (!Assign(m_listFileName, fileName.data(), fileName.data() + fileName.size()))
        return false;

    m_listFile = zel::OpenTextFile(m_listFileName.c_str()).release();
    bool atEnd = false;
    return FindHeader(name, atEnd);
}

bool INIFileReader::getNextSectionName(CStdStr<char>& name)
{
    CStdStr<char> found;
    bool atEnd = false;
    if (!FindHeader(found, atEnd))
        return false;
    if (atEnd)
    {
        std::fclose(m_listFile);
        m_listFile = nullptr;
        return false;
    }
    name.swap(found);
    return true;
}

int INIFileReader::get_profile_string(const char* section, const char* key, const char* defaultValue,
                                      char* buffer, int size, const char* fileName)
{
    if (m_profileIndexMissing)
    {
        m_profileIndex = static_cast<ProfileEntry*>(
            std::malloc(m_profileCapacity * (sizeof(ProfileEntry) + kBucketBytes)));
        m_profileFileName[0] = '\0';
        m_profileIndexMissing = m_profileIndex == nullptr;
    }
    const bool isReady =
        !m_profileIndexMissing && (std::strcmp(fileName, m_profileFileName) == 0 || ReadProfile(fileName));
    const char* const found = isReady ? FindInIndex(section, key) : nullptr;
    if (found == nullptr)
    {
        std::strcpy(buffer, defaultValue);
        return 0;
    }

    Value value(found, static_cast<std::size_t>(size - 1));
    if (value.end > value.begin && value.end[-1] == '\r')
        --value.end;
    const auto length = static_cast<std::size_t>(value.end - value.begin);
    std::memcpy(buffer, value.begin, length);
    buffer[length] = '\0';
    return static_cast<int>(length);
}

const bool INIFileReader::GetStringFromIni(const CStdStr<char>& fileName, const CStdStr<char>& section,
                                           const CStdStr<char>& key, CStdStr<char>* const result,
                                           unsigned int size, bool reload)
{
    const bool isHeld = m_directText != nullptr && fileName == m_directFileName && !reload;
    const char* const found =
        isHeld || ReadDirectText(fileName) ? FindInText(section.c_str(), key.c_str()) : nullptr;
    if (found != nullptr)
    {
        const Value value(found, size - 1);
        if (Assign(*result, value.begin, value.end))
            return true;
        DropDirectText();
    }
    result->clear();
    return false;
}

bool INIFileReader::ReadDirectText(const CStdStr<char>& fileName)
{
    const zel::File file = zel::OpenTextFile(fileName.c_str());
    if (file == nullptr)
        return false;
    const auto count = zel::CountText(file.get(), kMaxText);
    if (!count.has_value())
        return false;

    DropDirectText();
    try
    {
        std::unique_ptr<char[]> text(new char[*count + 1]);
        if (!zel::ReadText(file.get(), text.get(), *count))
            return false;
        text[*count] = '\0';
        m_directFileName = fileName;
        m_directText = text.release();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

void INIFileReader::DropDirectText()
{
    delete[] m_directText;
    m_directText = nullptr;
    m_directFileName.clear();
}

// Reads a file and builds its index.
bool INIFileReader::ReadProfile(const char* fileName)
{
    const zel::File file = zel::OpenTextFile(fileName);
    if (file == nullptr)
        return false;
    const auto count = zel::CountText(file.get(), kMaxText);
    if (!count.has_value())
        return false;

    ClearProfile();
    m_profileText = static_cast<char*>(std::malloc(*count + 1));
    if (m_profileText != nullptr && zel::ReadText(file.get(), m_profileText, *count))
    {
        m_profileText[*count] = '\0';
        if (BuildIndex())
        {
            std::strcpy(m_profileFileName, fileName);
            return true;
        }
    }
    ClearProfile();
    return false;
}

// No file is held.
void INIFileReader::ClearProfile()
{
    std::free(m_profileText);
    m_profileText = nullptr;
    m_profileFileName[0] = '\0';
    m_profileBuckets = 0;
}

// False for a malformed file and where memory runs out.
bool INIFileReader::BuildIndex()
{
    const UpperCase upper;
    ProfileEntry* entry = m_profileIndex;
    ProfileEntry* section = nullptr;
    for (const char* p = FirstHeader(m_profileText); p != nullptr; p = NextLine(p))
    {
        const bool isSection = *p == '[';
        char* const name = m_profileText + (p - m_profileText);
        Hash hash;
        entry->text = name;
        entry->length = UppercaseName(name, isSection ? ']' : '=', upper, hash);
        if (entry->length == 0)
            return false;

        if (isSection)
            section = entry;
        entry->section = static_cast<std::uint32_t>(section - m_profileIndex);
        entry->hash = isSection ? hash.Value() : hash.InSection(entry->section);
        p += entry->length - 1;
        if (!NextEntry(entry, section))
            return false;
    }

    const auto count = static_cast<std::uint32_t>(entry - m_profileIndex);
    m_profileBuckets = std::bit_ceil(kBucketsPerEntry * count);
    FillBuckets(m_profileIndex, count, reinterpret_cast<std::uint32_t*>(m_profileIndex + m_profileCapacity),
                m_profileBuckets);
    return true;
}

// Moves on to the next entry, which is free. Where the index ends it doubles, and both pointers follow.
bool INIFileReader::NextEntry(ProfileEntry*& entry, ProfileEntry*& section)
{
    ++entry;
    if (entry != m_profileIndex + m_profileCapacity)
        return true;

    auto* const larger = static_cast<ProfileEntry*>(
        std::malloc(2 * m_profileCapacity * (sizeof(ProfileEntry) + kBucketBytes)));
    if (larger == nullptr)
        return false;
    std::memcpy(larger, m_profileIndex, m_profileCapacity * sizeof(ProfileEntry));
    section = larger + (section - m_profileIndex);
    entry = larger + m_profileCapacity;
    std::free(m_profileIndex);
    m_profileIndex = larger;
    m_profileCapacity *= 2;
    return true;
}

// Where the value begins in the text; null where there is none.
const char* INIFileReader::FindInIndex(const char* section, const char* key) const
{
    const UpperCase upper;
    const SearchKey sectionPattern = SectionSearchKey(section, upper);
    const SearchKey keyPattern = KeySearchKey(key, upper);
    if (sectionPattern.IsEmpty() || keyPattern.IsEmpty() || m_profileBuckets == 0)
        return nullptr;

    const auto* const buckets = reinterpret_cast<const std::uint32_t*>(m_profileIndex + m_profileCapacity);
    const std::uint32_t mask = m_profileBuckets - 1;
    const std::uint32_t sectionHash = sectionPattern.GetHash().Value();
    std::uint32_t at = buckets[sectionHash & mask];
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): buckets name entries that are filled
    while (at != kNoEntry && (m_profileIndex[at].hash != sectionHash ||
                              !sectionPattern.Equals(m_profileIndex[at].text, m_profileIndex[at].length)))
        at = m_profileIndex[at].next;
    if (at == kNoEntry)
        return nullptr;

    const std::uint32_t inSection = at, keyHash = keyPattern.GetHash().InSection(inSection);
    for (at = buckets[keyHash & mask]; at != kNoEntry; at = m_profileIndex[at].next)
    {
        const ProfileEntry& entry = m_profileIndex[at];
        if (entry.section == inSection && entry.hash == keyHash &&
            keyPattern.Equals(entry.text, entry.length))
            return entry.text + entry.length;
    }
    return nullptr;
}

// The same in the text. Where a line goes on behind what did not match, with a blank, the search goes on
// there.
const char* INIFileReader::FindInText(const char* section, const char* key) const
{
    const UpperCase upper;
    const SearchKey sectionPattern = SectionSearchKey(section, upper);
    const SearchKey keyPattern = KeySearchKey(key, upper);
    if (sectionPattern.IsEmpty() || keyPattern.IsEmpty())
        return nullptr;

    const char* p = LineWithHeader(m_directText);
    while (*p != '[' || !sectionPattern.Matches(p, upper))
    {
        if (*p == '\0')
            return nullptr;
        p = IsBlank(*p) ? p + 1 : LaterLineWithHeader(p);
    }
    for (p = SkipLine(p); *p != '\0' && *p != '['; p = NextCandidate(p))
        if (*p != ';' && *p != '\r' && keyPattern.Matches(p, upper))
            return p;
    return nullptr;
}

// Reads on to the next section header of the listing and gives its name. `atEnd` tells whether the text ended
// in its line. False, with the file closed, where there is none.
bool INIFileReader::FindHeader(CStdStr<char>& name, bool& atEnd)
{
    if (m_listFile == nullptr)
        return false;

    char piece[kPieceSize];
    while (ReadPiece(m_listFile, piece, atEnd))
    {
        const char* p = piece;
        while (IsSpace(*p))
            ++p;
        if (*p != '[')
            continue;
        const char* const end = std::strchr(p, ']');
        return end == nullptr ? Assign(name, p, p) : Assign(name, p + 1, end);
    }
    std::fclose(m_listFile);
    m_listFile = nullptr;
    return false;
}

void INIFileReader::CloseList()
{
    if (m_listFile != nullptr)
        std::fclose(m_listFile);
    m_listFile = nullptr;
    m_listFileName.clear();
}
