#include "ZelUtil/INIFileReader.h"

#include "IniModel.h"
#include "Pictures.h"

#include <gtest/gtest.h>
#include <optional>

#if defined(__linux__)
#include <sys/stat.h>
#include <thread>
#endif

using namespace test;

namespace
{

Found Ask(INIFileReader& reader, const Text& file, const Text& section, const Text& key, bool indexed,
          bool reload = false)
{
    CStdStr<char> result = "as it was";
    if (reader.getStringFromIni(file, section, key, &result, indexed, reload))
        return result;
    EXPECT_EQ(result, indexed ? "as it was" : "");
    return {};
}

std::vector<Text> List(INIFileReader& reader, const Text& file)
{
    std::vector<Text> names;
    CStdStr<char> name;
    for (bool more = reader.getFirstSectionName(file, name); more; more = reader.getNextSectionName(name))
        names.push_back(name);
    EXPECT_FALSE(reader.getFirstSectionName(file, name)); // not before it has been ended
    reader.EndStringFromIni();
    return names;
}

class INIFileReaderTest : public testing::Test
{
protected:
    Text Write(const Text& text, const Text& name = "a.ini")
    {
        WriteFile(m_folder / name, Bytes(text.begin(), text.end()));
        return m_folder / name;
    }

    TemporaryFolder m_folder;
    INIFileReader m_reader;
};

} // namespace

TEST_F(INIFileReaderTest, ValuesWorkedOutByHand)
{
    const Text file = Write("outside=1\r\n"
                            "[Roads]\r\n"
                            "; comment = no\r\n"
                            "\rx=no\r\n"
                            "Width = 12 \r\n"
                            "width=99\r\n"
                            "Name=  two  words\t \r\n"
                            "Empty=\r\n"
                            "Cr=x \r\r\n"
                            "List=[a] b\r\n"
                            "ab abc=later\r\n"
                            "  Indented=yes\r\n"
                            "[ Blank ] rest is ignored\n"
                            "k=v\n"
                            "[roads]\n"
                            "second=never\n"
                            "[Last]\n"
                            "open=end");
    const Found none;
    const struct
    {
        const char *section, *key;
        Found indexed, direct;
    } cases[] = {{"ROADS", "width ", "12", "12"},
                 {"roads", "width", "99", "99"},
                 {"Roads", "name", "two  words", "two  words"},
                 {"Roads", "EMPTY", none, ""},
                 {"Roads", "cr", "x ", "x \r"},
                 {"Roads", "List", "[a] b", "[a] b"},
                 {"Roads", "abc", none, "later"}, // a blank lets the scan try again
                 {"Roads", "ab abc", "later", "later"},
                 {"Roads", "indented", "yes", "yes"},
                 {"Roads", "; comment ", none, none},
                 {"Roads", "\rx", none, none},
                 {"Roads", "outside", none, none},
                 {"Roads", "k", none, none},
                 {"Roads", "second", none, none},
                 {"Blank", "k", none, none},
                 {" blank ", "K", "v", "v"},
                 {"Last", "open", "end", "end"},
                 {"", "outside", none, none},
                 {"Missing", "k", none, none}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "[" << c.section << "] " << c.key);
        EXPECT_EQ(Ask(m_reader, file, c.section, c.key, true), c.indexed);
        EXPECT_EQ(Ask(m_reader, file, c.section, c.key, false), c.direct);
    }
    EXPECT_EQ(List(m_reader, file), (std::vector<Text>{"Roads", " Blank ", "roads", "Last"}));
    EXPECT_FALSE(m_reader.getStringFromIni(file, "Roads", "width", nullptr, true, false));
}

TEST_F(INIFileReaderTest, EqualsThePlainModelOnNastyFiles)
{
    const Text tokens[] = {
        "[a]\n",  "\n[A]\n", "[b ]", "\n[",  "]",  "\na=", "\nB = ", "\nab=", "\na ab=", "\n;",
        "=",      "a",       "b",    "a b",  "a=", " ",    "\t",     ";",     "\r",      "\r\n",
        "\r\r\n", "\n",      "x",    "\xE4", "[",  "#",    "\v",     "\x1A"};
    const Text names[] = {"a",  "A", "ab",   "b ", "b", "a b", "", // likely ones first
                          "[a", "x", "\xE4", " a", ";", ";a",  "\ra", "\r"};
    int found = 0, differ = 0;
    for (int round = 0; round < 8000; ++round)
    {
        Text text = round % 3 == 0 ? "[a]\n" : "";
        for (int i = RandomInt(0, 25); i > 0; --i)
            text += tokens[RandomInt(0, static_cast<int>(std::size(tokens)) - (round % 4 ? 5 : 1))];
        if (round % 2)
            text += "\n";
        const Text file = Write(text);
        for (int request = 0; request < 6; ++request)
        {
            const Text section = names[RandomInt(0, RandomInt(0, 14))],
                       key = names[RandomInt(0, RandomInt(0, 14))];
            const Found indexed = IndexedModel(text, section, key), direct = DirectModel(text, section, key);
            ASSERT_EQ(Ask(m_reader, file, section, key, true), indexed)
                << testing::PrintToString(text) << section << "," << key;
            ASSERT_EQ(Ask(m_reader, file, section, key, false, request == 0), direct)
                << testing::PrintToString(text) << section << "," << key;
            found += direct.has_value();
            differ += direct != indexed;
        }
        ASSERT_EQ(List(m_reader, file), ListingModel(text)) << testing::PrintToString(text);
        m_reader.end_profile_string();
    }
    EXPECT_GT(found, 1000);
    EXPECT_GT(differ, 300);
}

TEST_F(INIFileReaderTest, MalformedFilesGiveTheIndexNothing)
{
    for (const char* const bad : {"# no comment\n", "[open\n", "key\n", " \t", "[x]\n \t"})
    {
        m_reader.end_profile_string();
        const Text file = Write(Text("[a]\nk=v\n") + bad);
        EXPECT_EQ(Ask(m_reader, file, "a", "k", true), Found());
        EXPECT_EQ(Ask(m_reader, "", "a", "k", true), Found()); // the index is empty
        EXPECT_EQ(Ask(m_reader, file, "a", "k", false, true), "v");
        Write("[a]\nk=better\n"); // nothing was cached, so the file is read again
        EXPECT_EQ(Ask(m_reader, file, "a", "k", true), "better");
    }
    EXPECT_EQ(Ask(m_reader, Write("# before any section\n[a]\nk=v\n", "b.ini"), "a", "k", true), "v");
}

TEST_F(INIFileReaderTest, NamesAndValuesAtTheirLimits)
{
    for (const int excess : {0, 1})
    {
        const auto n = [excess](std::size_t limit) { return limit + static_cast<std::size_t>(excess); };
        const Text section(n(253), 's'), key(n(254), 'k'), value(n(511), 'v');
        const Text file =
            Write("[" + section + "]\n" + key + "=1\nshort=" + value + "\n", excess ? "b.ini" : "a.ini");
        EXPECT_EQ(Ask(m_reader, file, section, key, true), excess ? Found() : "1");
        EXPECT_EQ(Ask(m_reader, file, section, key, false), excess ? Found() : "1");
        EXPECT_EQ(Ask(m_reader, file, section, "short", false), excess ? Found() : value);
        const Text plain =
            Write("[s]\n" + Text(n(254), 'k') + "=2\nshort= " + value + " \n", excess ? "d.ini" : "c.ini");
        EXPECT_EQ(Ask(m_reader, plain, "s", "short", true),
                  excess ? Found() : Text(510, 'v')); // cut, then trimmed
        EXPECT_EQ(Ask(m_reader, plain, "s", "short", false), Text(510, 'v'));
    }
    const Text file = Write("[" + Text(600, 'x') + "\n[b]\n" + Text(505, ' ') + "[c]\n" + Text(511, 'y') +
                            "[d]\n" + Text(508, ' ') + "[e]");
    EXPECT_EQ(List(m_reader, file), (std::vector<Text>{"", "b", "c", "d", "e"})); // lines in pieces of 511

    Write("[a]\nk=v\n");
    for (const std::size_t length : {511U, 512U})
    {
        Text name = m_folder / "a.ini";
        name.insert(name.size() - 5, length - name.size(), '/');
        for (const bool indexed : {true, false})
            EXPECT_EQ(Ask(m_reader, name, "a", "k", indexed), length == 511 ? "v" : Found());
        EXPECT_EQ(List(m_reader, name).size(), length == 511 ? 1U : 0U);
    }
}

TEST_F(INIFileReaderTest, TheIndexGrowsAndKeepsItsChain)
{
    for (const int entries : {2047, 2048, 2049, 9000})
    {
        Text text;
        for (int i = 0; i < entries; i += 3)
        {
            const Text number = std::to_string(i);
            text += "[s" + number + "]\nk=" + number + "\n" + (i + 3 <= entries ? "l=" + number + "\n" : "");
        }
        const Text file = Write(text, std::to_string(entries) + ".ini");
        for (int i = 0; i < entries; i += 3)
        {
            ASSERT_EQ(Ask(m_reader, file, "S" + std::to_string(i), "K", true), std::to_string(i)) << entries;
        }
        EXPECT_EQ(Ask(m_reader, file, "S2043", "L", false), "2043");
        EXPECT_EQ(Ask(m_reader, file, "s0", "m", true), Found());
    }
    EXPECT_EQ(Ask(m_reader, Write("[a]\nk=1\n"), "s3", "k", true), Found()); // the old entries are gone
    EXPECT_EQ(Ask(m_reader, m_folder / "a.ini", "a", "k", true), "1");
}

TEST_F(INIFileReaderTest, FilesUpToTheirLimitAreCountedAsText)
{
    const Text head = "[a]\r\nk=v\r\n;";
    const Text fits = head + Text(0x400000 - 10 + 0, '.') + "\r"; // two CR do not count
    Text file = Write(fits.substr(0, 0x400000 + 2));
    EXPECT_EQ(Ask(m_reader, file, "a", "k", true), "v");
    EXPECT_EQ(Ask(m_reader, file, "a", "k", false), "v");

    const Text longer = Write(fits.substr(0, 0x400000 + 2) + ".", "b.ini");
    EXPECT_EQ(Ask(m_reader, longer, "a", "k", true), Found());
    EXPECT_EQ(Ask(m_reader, longer, "a", "k", false), Found());
    std::filesystem::remove(file);
    EXPECT_EQ(Ask(m_reader, file, "a", "k", true), "v"); // both engines kept what they had
    EXPECT_EQ(Ask(m_reader, file, "a", "k", false), "v");
    EXPECT_EQ(Ask(m_reader, file, "a", "k", false, true), Found());
    EXPECT_EQ(Ask(m_reader, file, "a", "k", false), "v");
}

TEST_F(INIFileReaderTest, LineEndsAcrossABlockOfTheReader)
{
    const struct
    {
        Text before, behind;
        Found direct;
    } cases[] = {{"\r", "\nl=2\n", "1"},       // one line end
                 {"\r", "\r\nl=2\n", "1\r"},   // the first CR belongs to the value
                 {"\r\r", "\nl=2\n", "1\r"},   // so here
                 {"\r", "\x1A\nl=2\n", "1\r"}, // the text ends
                 {"", "\x1Ax\nl=2\n", "1"},    // so here
                 {"\r", "x\nl=2\n", "1\rx"},   // a character like others
                 {"\r", "", "1\r"}};
    int number = 0;
    for (const auto& [before, behind, direct] : cases)
        for (const int moved : {0, -1, 1, -1000})
        {
            const Text head = "[a]\n;", line = "\nk=1" + before;
            const std::size_t filling = static_cast<std::size_t>(16384 + moved) - head.size() - line.size();
            const Text file =
                Write(head + Text(filling, '.') + line + behind, std::to_string(number++) + ".ini");
            SCOPED_TRACE(testing::Message() << testing::PrintToString(before + "|" + behind) << moved);
            EXPECT_EQ(Ask(m_reader, file, "a", "k", false), direct);
            const bool hasSecond = behind.find('\x1A') == Text::npos && !behind.empty();
            EXPECT_EQ(Ask(m_reader, file, "a", "l", false), hasSecond ? Found("2") : Found());
            const Text indexed = direct->back() == '\r' ? "1" : *direct; // without a CR at its end
            EXPECT_EQ(Ask(m_reader, file, "a", "k", true), indexed);
        }
}

TEST_F(INIFileReaderTest, WhatIsHeldAndFor)
{
    const Text file = Write("[a]\nk=1\n"), other = Write("[a]\nk=other\n", "b.ini");
    for (const bool indexed : {true, false})
        EXPECT_EQ(Ask(m_reader, file, "a", "k", indexed), "1");
    Write("[a]\nk=2\n");
    EXPECT_EQ(Ask(m_reader, file, "a", "k", true, true), "1"); // reload means nothing to the index
    EXPECT_EQ(Ask(m_reader, file, "a", "k", false), "1");
    EXPECT_EQ(Ask(m_reader, file, "a", "k", false, true), "2");
    m_reader.end_profile_string();
    EXPECT_EQ(Ask(m_reader, file, "a", "k", true), "2");
    Write("[a]\nk=3\n");
    for (const bool indexed : {true, false})
    {
        EXPECT_EQ(Ask(m_reader, m_folder / "none.ini", "a", "k", indexed), Found());
        EXPECT_EQ(Ask(m_reader, m_folder / ".", "a", "k", indexed), Found()); // a folder
        EXPECT_EQ(Ask(m_reader, file, "a", "k", indexed), "2");
        EXPECT_EQ(Ask(m_reader, other, "a", "k", indexed), "other");
        EXPECT_EQ(Ask(m_reader, file, "a", "k", indexed), "3");
    }
    EXPECT_EQ(Ask(m_reader, "", "a", "k", true), Found());
    m_reader.EndStringFromIni();
    std::filesystem::remove(file);
    EXPECT_EQ(Ask(m_reader, file, "a", "k", false), Found());
    EXPECT_EQ(Ask(m_reader, file, "a", "k", true), "3");

    INIFileReader copy(m_reader); // starts with nothing
    EXPECT_EQ(Ask(copy, file, "a", "k", true), Found());
    m_reader = static_cast<const INIFileReader&>(m_reader);
    EXPECT_EQ(Ask(m_reader, file, "a", "k", true), "3");
    m_reader = copy;
    EXPECT_EQ(Ask(m_reader, file, "a", "k", true), Found());
    EXPECT_EQ(Ask(ini, other, "a", "k", true), "other");
    ini.end_profile_string();
}

TEST_F(INIFileReaderTest, ListingsEndOnlyWhenTheyAreEnded)
{
    const Text file = Write("x\n \v[one\x1A] [\r\n[two]");
    CStdStr<char> name = "as it was";
    EXPECT_FALSE(m_reader.getNextSectionName(name));
    EXPECT_FALSE(m_reader.getFirstSectionName("", name));
    EXPECT_FALSE(m_reader.getFirstSectionName(m_folder / "none.ini", name));
    EXPECT_FALSE(m_reader.getFirstSectionName(file, name)); // blocked by the failure
    m_reader.end_profile_string();                          // there is no index, so nothing happens
    EXPECT_FALSE(m_reader.getFirstSectionName(file, name));
    m_reader.EndStringFromIni();
    EXPECT_EQ(name, "as it was");
    EXPECT_TRUE(m_reader.getFirstSectionName(file, name)); // the text ends in the middle of the first header
    EXPECT_EQ(name, "");
    name = "as it was";
    EXPECT_FALSE(m_reader.getNextSectionName(name));
    EXPECT_EQ(name, "as it was");

    EXPECT_EQ(Ask(m_reader, file, "a", "k", true), Found()); // makes an index
    m_reader.end_profile_string();
    EXPECT_TRUE(m_reader.getFirstSectionName(Write("[one]\r\n[two]", "b.ini"), name));
    EXPECT_EQ(name, "one");
    EXPECT_FALSE(m_reader.getNextSectionName(name)); // no line end behind it
    EXPECT_EQ(name, "one");
    m_reader.EndStringFromIni();
    EXPECT_TRUE(m_reader.getFirstSectionName(Write("[only]", "c.ini"), name));
    EXPECT_EQ(name, "only");
}

#if defined(__linux__)

TEST_F(INIFileReaderTest, TextThatCannotBeReadTwiceLeavesNothingHeld)
{
    const Text file = Write("[a]\nk=1\n"), pipe = m_folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const bool indexed : {true, false})
    {
        Write("[a]\nk=1\n");
        EXPECT_EQ(Ask(m_reader, file, "a", "k", indexed), "1");
        std::thread writer([&] { std::ofstream(pipe) << "[a]\nk=v\n"; });
        EXPECT_EQ(Ask(m_reader, pipe, "a", "k", indexed), Found());
        writer.join();
        Write("[a]\nk=2\n");
        EXPECT_EQ(Ask(m_reader, file, "a", "k", indexed), "2");
    }
}

TEST_F(INIFileReaderTest, NoFileStaysOpenBehindAListing)
{
    const auto openFiles = []
    { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const Text file = Write("[a]\n[b]\n[c]");
    CStdStr<char> name;
    const auto before = openFiles();
    EXPECT_TRUE(m_reader.getFirstSectionName(file, name) && m_reader.getNextSectionName(name));
    EXPECT_FALSE(m_reader.getNextSectionName(name)); // no line end behind it
    EXPECT_EQ(openFiles(), before);
    m_reader.EndStringFromIni();
    for (const int way : {0, 1, 2, 3})
    {
        std::optional<INIFileReader> reader(std::in_place);
        EXPECT_EQ(Ask(*reader, file, "a", "k", true), Found());
        EXPECT_TRUE(reader->getFirstSectionName(file, name));
        EXPECT_EQ(openFiles(), before + 1);
        if (way == 0)
            reader->EndStringFromIni();
        if (way == 1)
            reader->end_profile_string();
        if (way == 2)
            *reader = INIFileReader();
        if (way == 3)
            reader.reset();
        EXPECT_EQ(openFiles(), before) << way;
    }
}

#endif
