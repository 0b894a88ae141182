#pragma once

#include "ZelUtil/Export.h"
#include "ZelUtil/StdStr.h"

#include <cstdint>
#include <cstdio>

ZELUTIL_CONST_RESULTS_BEGIN

/// Reads values and section names out of INI files; never writes one. Two engines find values:
///
/// - indexed: parses a file once into an index and answers from it until another file is asked for. Strict: a
///   file with a malformed line gives no value at all. An empty value counts as not found.
/// - direct: keeps the text of a file and scans it for every request. Lenient: it skips what it does not
///   understand; where a name that has matched so far breaks off at a blank, it tries again behind that
///   blank, so "ab abc=1" answers for the key "abc". A line that begins with "[" ends a section, with or
///   without its "]". An empty value is a found one.
///
/// Both read "[section]" headers and "key=value" lines, ignore the letter case of both names (as std::toupper
/// sees it), take the first section and the first key of a name, skip blanks (space, tab) before a line's
/// first character, and give values without blanks around them. Blanks inside brackets and before "=" belong
/// to the names. Lines that begin with ";" or CR, and lines before the first header, do not count. The
/// indexed engine also drops a CR at the end of a value, behind the blanks; the direct one keeps it.
///
/// Text is read as Windows reads it, on every system: CR LF is one line end, Ctrl-Z (0x1A) ends
/// the text. A zero byte ends it for the engines, and its line for a listing. Limits, counted behind the
/// first two: 4,194,304 characters a file, a zero byte and what follows it included, 511 a value (the rest is
/// cut off), 253 a requested section, 254 a requested key (longer ones are not found), 511 a file name (a
/// longer one, like a folder, cannot be opened). In the indexed engine a header or key line whose name needs
/// more than 255 characters, with its brackets or its "=", is malformed; so are a header without "]", a key
/// line without "=", and a last line inside a section that has nothing but blanks and no line end.
///
/// A file that cannot be opened or is too long leaves what the engine holds. Every later failure to read it
/// or to find memory leaves it holding no file; only where memory for the result itself runs out does the
/// indexed engine keep its file. No operation throws. Apart from its caches a reader holds at most one open
/// file, that of the section listing. One thread uses it at a time.
class ZELUTIL_API INIFileReader
{
public:
    /// Holds nothing.
    INIFileReader();

    /// A copy holds nothing, and assignment drops what the target held, except to itself.
    INIFileReader(const INIFileReader& other);
    INIFileReader& operator=(const INIFileReader& other);

    ~INIFileReader();

    /// Finds the value of `key` in `section`, by the indexed engine when `useProfile`, else by the direct
    /// one. `reload` makes the direct engine read the file again; the indexed one reads a file again only
    /// after end_profile_string, another file, or a failure that left it without one. True with the value in
    /// `*result`. Where no value is found `*result` stays as it was (indexed) or becomes empty (direct).
    /// False for a null `result`.
    bool getStringFromIni(const CStdStr<char>& fileName, const CStdStr<char>& section,
                          const CStdStr<char>& key, CStdStr<char>* const result, bool useProfile,
                          bool reload);

    /// Drops what the direct engine holds, and ends the section listing.
    void EndStringFromIni();

    /// Drops what the indexed engine holds, and ends the section listing; nothing where it has no index.
    void end_profile_string();

    /// Starts a listing: the name of the file's first section, as the file writes it. Lines longer than 511
    /// characters count as several. White space of every kind may stand before the "["; without a "]" the
    /// name is empty. It reads on to a header or the end of the file, however far: a pipe without an end is
    /// nothing to list. False, with `name` as it was: a listing was started before and not ended by one of
    /// the two calls above (one whose file could not be opened counts), an empty file name, no section.
    bool getFirstSectionName(const CStdStr<char>& fileName, CStdStr<char>& name);

    /// The next one. False, with `name` as it was, where there is none, and for a header on the file's last
    /// line when that has no line end (a last piece of exactly 511 characters is still listed).
    bool getNextSectionName(CStdStr<char>& name);

private:
    /// An entry is a section, "[NAME]", or one of its keys, "KEY=".
    struct ProfileEntry
    {
        const char* text; ///< in m_profileText, which has it in upper case; behind a key follows its value
        std::uint32_t length;
        std::uint32_t hash;
        std::uint32_t section; ///< of a key its section's entry, of a section itself
        std::uint32_t next;    ///< entry of the same bucket
    };

    int get_profile_string(const char* section, const char* key, const char* defaultValue, char* buffer,
                           int size, const char* fileName);
    const bool GetStringFromIni(const CStdStr<char>& fileName, const CStdStr<char>& section,
                                const CStdStr<char>& key, CStdStr<char>* const result, unsigned int size,
                                bool reload);
    bool ReadDirectText(const CStdStr<char>& fileName);
    void DropDirectText();
    bool ReadProfile(const char* fileName);
    void ClearProfile();
    bool BuildIndex();
    bool NextEntry(ProfileEntry*& entry, ProfileEntry*& section);
    const char* FindInIndex(const char* section, const char* key) const;
    const char* FindInText(const char* section, const char* key) const;
    bool FindHeader(CStdStr<char>& name, bool& atEnd);
    void CloseList();

    CStdStr<char> m_listFileName; ///< not empty: a listing was started
    std::FILE* m_listFile = nullptr;
    CStdStr<char> m_directFileName;
    char* m_directText = nullptr; ///< owned, terminated
    char m_profileFileName[512] = {};
    char* m_profileText = nullptr; ///< owned, terminated
    /// Owned: the entries in the order of the text, free ones, and behind them buckets, each the number of
    /// its first entry.
    ProfileEntry* m_profileIndex = nullptr;
    std::uint32_t m_profileCapacity = 2048; ///< entries of the index
    std::uint32_t m_profileBuckets = 0;     ///< in use, a power of two; 0 while no file is held
    bool m_profileIndexMissing = true;
};

ZELUTIL_CONST_RESULTS_END

/// The reader that callers share.
extern ZELUTIL_API INIFileReader ini;
