#pragma once

#include "ZelUtil/Export.h"
#include "ZelUtil/StdStr.h"

#include <cstdint>
#include <cstdio>

#include <memory>

namespace zel
{
class IniIndex;
}

ZELUTIL_CONST_RESULTS_BEGIN

/// Reads values and section names from INI files; never writes one. Two engines find values:
///
/// - The indexed engine parses a file once and answers from its index until another file is requested. It is
///   strict: one malformed line, and the whole file gives no value. An empty value counts as not found.
/// - The direct engine keeps the text of a file and scans it for every request. It is lenient: it skips what
///   it does not understand. An empty value is found. Every line that begins with "[" ends a section, even
///   without a "]". A leading word that the requested name begins with is skipped: the line "ab abc=1" is
///   also found under the key "abc".
///
/// Both read "[section]" headers and "key=value" lines. They ignore the letter case of both names (by
/// std::toupper), use the first section and the first key of a name, skip blanks (space and tab) at the start
/// of a line, and return values without the blanks around them. Blanks inside the brackets and before the "="
/// are part of the names. Lines that begin with ";" or CR, and lines before the first header, are ignored.
/// The indexed engine also removes one CR from the end of a value, after trimming the blanks; the direct
/// engine keeps it.
///
/// Files are read in the text mode of Windows on every system: CR LF is one line end, and Ctrl-Z (0x1A) ends
/// the text. A zero byte ends the text for the engines, and its line for a listing.
///
/// Limits, in characters after that translation:
/// - 4,194,304 per file, including a zero byte and what follows it; a longer file gives no value
/// - 511 per value; the rest is cut off before the blanks are trimmed
/// - 253 per requested section and 254 per requested key; longer ones are not found
/// - 511 per file name; a file with a longer one cannot be opened, and neither can a directory
///
/// For the indexed engine these lines are malformed: a header without "]" or with more than 255 characters up
/// to it; inside a section, a key line without "=" or with more than 255 characters up to it; and inside a
/// section, a last line of blanks alone that has no line end.
///
/// If a file cannot be opened or is too long, an engine keeps the file that it holds. If reading fails later,
/// or memory runs out, it holds no file afterwards; only if memory for the result itself runs out does the
/// indexed engine keep its file. No operation throws. Apart from the engines' texts, a reader holds at most
/// one open file, the one that it lists. A reader must not be used by two threads at once.
class ZELUTIL_API INIFileReader
{
public:
    /// Holds no file.
    INIFileReader();

    /// A copy holds no file. Assignment drops what the target held, unless it is assigned to itself.
    INIFileReader(const INIFileReader& other);
    INIFileReader& operator=(const INIFileReader& other);

    ~INIFileReader();

    /// Looks up `key` in `section`, by the indexed engine if `useProfile` is true, else by the direct engine.
    /// Returns true with the value in `*result`. If there is none, `*result` stays as it was (indexed) or
    /// becomes empty (direct). Returns false for a null `result`.
    ///
    /// With `reload` the direct engine reads the file again. The indexed engine reads a file again only after
    /// end_profile_string, after a request for another file, and after a failure that made it drop the file.
    bool getStringFromIni(const CStdStr<char>& fileName, const CStdStr<char>& section,
                          const CStdStr<char>& key, CStdStr<char>* const result, bool useProfile,
                          bool reload);

    /// Drops the direct engine's file and ends the section listing.
    void EndStringFromIni();

    /// Drops the indexed engine's index and file and ends the section listing; does nothing without an index.
    void end_profile_string();

    /// Starts a listing and returns the name of the first section, exactly as written. White space of any
    /// kind may precede the "["; without a "]" the name is empty. A line of more than 511 characters counts
    /// as several lines. The search for a header has no limit, so do not list an endless pipe.
    ///
    /// Returns false, with `name` as it was, if there is no section, for an empty file name, and if an
    /// earlier listing was not ended by one of the two operations above. A listing counts as started even if
    /// its file could not be opened.
    bool getFirstSectionName(const CStdStr<char>& fileName, CStdStr<char>& name);

    /// Returns the next name. Returns false, with `name` as it was, if there is none, and for a header on the
    /// file's last line if that line has no line end (unless its last piece has exactly 511 characters).
    bool getNextSectionName(CStdStr<char>& name);

private:
    int get_profile_string(const char* section, const char* key, const char* defaultValue, char* buffer,
                           int size, const char* fileName);
    const bool GetStringFromIni(const CStdStr<char>& fileName, const CStdStr<char>& section,
                                const CStdStr<char>& key, CStdStr<char>* const result, unsigned int size,
                                bool reload);
    bool ReadProfile(const char* fileName);
    bool ReadDirectText(const CStdStr<char>& fileName);
    bool FindHeader(CStdStr<char>& name, bool& atEnd);
    void CloseList();

    CStdStr<char> m_listFileName;    ///< empty unless a listing was started
    std::FILE* m_listFile = nullptr; ///< null once a listing has no more names
    CStdStr<char> m_directFileName;
    std::unique_ptr<char[]> m_directText; ///< null while the direct engine holds no file
    char m_profileFileName[512] = {};
    std::unique_ptr<char[]> m_profileText;         ///< null while the indexed engine holds no file
    std::unique_ptr<zel::IniIndex> m_profileIndex; ///< of that text; null until the first look-up
    std::uint32_t m_profileCapacity = 2048;        ///< of the next index, in entries
};

ZELUTIL_CONST_RESULTS_END

/// The reader that callers share.
extern ZELUTIL_API INIFileReader ini;
