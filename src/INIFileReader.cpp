#include "ZelUtil/INIFileReader.h"

#include "TextFile.h"

#include <algorithm>
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

char Upper(char character)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
}

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

// Where the search in a text goes on after something that is not what it looks for: behind a blank, else on
// the next line.
const char* GoOn(const char* p)
{
    return IsBlank(*p) ? p + 1 : SkipLine(p);
}

// What a request or an entry is compared by: in upper case, with what stands around the name in a file.
class Pattern
{
public:
    // Empty where it would not fit an entry.
    Pattern(const char* before, const char* name, const char* behind)
    {
        if (std::strlen(before) + std::strlen(name) + std::strlen(behind) >= kEntrySize)
            return;
        for (const char* part : {before, name, behind})
            for (; *part != '\0'; ++part)
                m_text[m_length++] = Upper(*part);
        m_text[m_length] = '\0';
    }

    bool IsEmpty() const { return m_length == 0; }

    bool Equals(const char (&entry)[kEntrySize]) const
    {
        return std::memcmp(entry, m_text, m_length + 1) == 0;
    }

    // Moves p over what is the same; true when that is the whole pattern.
    bool Matches(const char*& p) const
    {
        for (const char* expected = m_text; *expected != '\0'; ++expected, ++p)
            if (Upper(*p) != *expected)
                return false;
        return true;
    }

private:
    char m_text[kEntrySize] = {};
    std::size_t m_length = 0;
};

Pattern SectionPattern(const char* name)
{
    return Pattern("[", name, "]");
}

Pattern KeyPattern(const char* name)
{
    return Pattern("", name, "=");
}

// Copies the line up to `last` in upper case, `last` included, where p stands then. False where the line has
// none or an entry does not hold so much.
bool CopyName(const char*& p, char last, char (&entry)[kEntrySize])
{
    int length = 0;
    for (; *p != last; ++p)
    {
        if (*p == '\n' || *p == '\0' || length == kEntrySize - 2)
            return false;
        entry[length++] = Upper(*p);
    }
    entry[length] = last;
    return true;
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
        // Zeroed lazily by the platform: only entries that are used cost memory.
        m_profileIndex = static_cast<ProfileEntry*>(std::calloc(m_profileCapacity, sizeof(ProfileEntry)));
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

// No file is held, and every entry is zero. The entries behind the used ones are so already.
void INIFileReader::ClearProfile()
{
    std::free(m_profileText);
    m_profileText = nullptr;
    m_profileFileName[0] = '\0';
    for (std::uint32_t i = 0; i < m_profileCapacity && m_profileIndex[i].text[0] != '\0'; ++i)
        std::memset(&m_profileIndex[i], 0, sizeof(ProfileEntry));
}

// False for a malformed file and where memory runs out; the entries made so far stay.
bool INIFileReader::BuildIndex()
{
    const char* p = SkipBlanks(m_profileText);
    while (*p != '[')
    {
        if (*p == '\0')
            return true;
        p = SkipBlanks(SkipLine(p));
    }

    ProfileEntry* entry = m_profileIndex;
    ProfileEntry* section = nullptr;
    for (;;)
    {
        if (*p == '[')
        {
            if (!CopyName(p, ']', entry->text))
                return false;
            if (section != nullptr)
                section->link = entry;
            section = entry;
        }
        else
        {
            if (!CopyName(p, '=', entry->text))
                return false;
            entry->link = const_cast<char*>(p + 1);
        }
        if (!NextEntry(entry, section))
            return false;

        do
        {
            p = SkipLine(p);
            if (*p == '\0')
                return true;
            p = SkipBlanks(p);
        } while (*p == ';' || *p == '\r' || *p == '\n');
    }
}

// Moves on to the next entry, which is free. Where the index ends it doubles, and everything that points into
// it follows: the chain of its sections, and both pointers.
bool INIFileReader::NextEntry(ProfileEntry*& entry, ProfileEntry*& section)
{
    ++entry;
    if (entry != m_profileIndex + m_profileCapacity)
        return true;

    auto* const larger = static_cast<ProfileEntry*>(std::calloc(m_profileCapacity, 2 * sizeof(ProfileEntry)));
    if (larger == nullptr)
        return false;
    std::memcpy(larger, m_profileIndex, m_profileCapacity * sizeof(ProfileEntry));
    for (ProfileEntry* link = larger; link->link != nullptr; link = static_cast<ProfileEntry*>(link->link))
        link->link = larger + (static_cast<ProfileEntry*>(link->link) - m_profileIndex);
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
    const Pattern sectionPattern = SectionPattern(section);
    const Pattern keyPattern = KeyPattern(key);
    if (sectionPattern.IsEmpty() || keyPattern.IsEmpty())
        return nullptr;

    const ProfileEntry* entry = m_profileIndex;
    while (entry->text[0] != '\0' && !sectionPattern.Equals(entry->text))
    {
        if (entry->link == nullptr)
            return nullptr;
        entry = static_cast<const ProfileEntry*>(entry->link);
    }
    if (entry->text[0] == '\0')
        return nullptr;

    for (++entry; entry->text[0] != '\0' && entry->text[0] != '['; ++entry)
        if (keyPattern.Equals(entry->text))
            return static_cast<const char*>(entry->link);
    return nullptr;
}

// The same in the text. Where a line goes on behind what did not match, with a blank, the search goes on
// there.
const char* INIFileReader::FindInText(const char* section, const char* key) const
{
    const Pattern sectionPattern = SectionPattern(section);
    const Pattern keyPattern = KeyPattern(key);
    if (sectionPattern.IsEmpty() || keyPattern.IsEmpty())
        return nullptr;

    const char* p = LineWithHeader(m_directText);
    while (*p != '[' || !sectionPattern.Matches(p))
    {
        if (*p == '\0')
            return nullptr;
        p = IsBlank(*p) ? p + 1 : LineWithHeader(SkipLine(p));
    }
    for (p = SkipLine(p); *p != '\0' && *p != '['; p = GoOn(p))
        if (*p != ';' && *p != '\r' && keyPattern.Matches(p))
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
