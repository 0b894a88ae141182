#include "ZelUtil/INIFileReader.h"

#include "config/IniIndex.h"
#include "config/IniScan.h"
#include "config/IniText.h"
#include "config/TextFile.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>

namespace
{

constexpr int kValueSize = 512;
constexpr int kPieceSize = 512; // of a line in a listing

// False, with the string as it was, if memory runs out.
bool Assign(CStdStr<char>& to, std::string_view text)
{
    try
    {
        to.assign(text);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

// Reads the next piece of a line, its line feed included. `atEnd` says whether the text ended in it. False if
// no character is left.
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

void Close(std::FILE*& file)
{
    if (file != nullptr)
        std::fclose(file);
    file = nullptr;
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
    CloseList();
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
    return length > 0 && Assign(*result, std::string_view(value, static_cast<std::size_t>(length)));
}

void INIFileReader::EndStringFromIni()
{
    m_directText.reset();
    CloseList();
}

void INIFileReader::end_profile_string()
{
    if (m_profileIndex == nullptr)
        return;
    m_profileCapacity = m_profileIndex->Capacity();
    m_profileIndex.reset();
    m_profileText.reset();
    CloseList();
}

bool INIFileReader::getFirstSectionName(const CStdStr<char>& fileName, CStdStr<char>& name)
{
    if (!m_listFileName.empty() || fileName.empty() || !Assign(m_listFileName, fileName))
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
        Close(m_listFile);
        return false;
    }
    name.swap(found);
    return true;
}

int INIFileReader::get_profile_string(const char* section, const char* key, const char* defaultValue,
                                      char* buffer, int size, const char* fileName)
{
    const bool isHeld = m_profileText != nullptr && std::strcmp(fileName, m_profileFileName) == 0;
    const char* const found = isHeld || ReadProfile(fileName) ? m_profileIndex->Find(section, key) : nullptr;
    if (found == nullptr)
    {
        std::strcpy(buffer, defaultValue);
        return 0;
    }

    std::string_view value = zel::ValueAt(found, static_cast<std::size_t>(size - 1));
    if (value.ends_with('\r'))
        value.remove_suffix(1);
    buffer[value.copy(buffer, value.size())] = '\0';
    return static_cast<int>(value.size());
}

const bool INIFileReader::GetStringFromIni(const CStdStr<char>& fileName, const CStdStr<char>& section,
                                           const CStdStr<char>& key, CStdStr<char>* const result,
                                           unsigned int size, bool reload)
{
    const bool isHeld = m_directText != nullptr && fileName == m_directFileName && !reload;
    const char* const found = isHeld || ReadDirectText(fileName)
                                  ? zel::ScanForValue(m_directText.get(), section.c_str(), key.c_str())
                                  : nullptr;
    if (found != nullptr)
    {
        if (Assign(*result, zel::ValueAt(found, size - 1)))
            return true;
        m_directText.reset();
    }
    result->clear();
    return false;
}

// Makes the indexed engine hold this file. Returns false if it cannot; it may still hold another.
bool INIFileReader::ReadProfile(const char* fileName)
{
    if (m_profileIndex == nullptr)
        m_profileIndex = zel::IniIndex::Create(m_profileCapacity);
    if (m_profileIndex == nullptr || !zel::ReadTextFile(fileName, m_profileText))
        return false;
    if (!m_profileIndex->Build(m_profileText.get()))
    {
        m_profileText.reset();
        return false;
    }
    std::strcpy(m_profileFileName, fileName);
    return true;
}

// The same for the direct engine.
bool INIFileReader::ReadDirectText(const CStdStr<char>& fileName)
{
    if (!zel::ReadTextFile(fileName.c_str(), m_directText))
        return false;
    if (!Assign(m_directFileName, fileName))
    {
        m_directText.reset();
        return false;
    }
    return true;
}

// Reads on to the next section header of the listing and takes its name. `atEnd` says whether the text ended
// in its line. False if there is none, with the file closed, or if memory for the name
// runs out.
bool INIFileReader::FindHeader(CStdStr<char>& name, bool& atEnd)
{
    if (m_listFile == nullptr)
        return false;

    char piece[kPieceSize];
    while (ReadPiece(m_listFile, piece, atEnd))
    {
        const char* const bracket = std::find_if_not(piece, piece + std::strlen(piece), IsSpace);
        if (*bracket != '[')
            continue;
        const char* const end = std::strchr(bracket, ']');
        return Assign(name, end == nullptr ? std::string_view() : std::string_view(bracket + 1, end));
    }
    Close(m_listFile);
    return false;
}

void INIFileReader::CloseList()
{
    Close(m_listFile);
    m_listFileName.clear();
}
