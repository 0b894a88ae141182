#include "ZelUtil/INIFileReader.h"

#include "Pictures.h"

#include <gtest/gtest.h>

using namespace test;

using Text = std::string;

class INIFileReaderTest : public testing::Test
{
protected:
    Text Write(const Text& name, const Text& text)
    {
        WriteFile(m_folder / name, Bytes(text.begin(), text.end()));
        return m_folder / name;
    }

    Text Ask(bool isIndexed, const Text& file, const Text& section, const Text& key, bool reload = false)
    {
        CStdStr<char> value;
        return m_reader.getStringFromIni(file, section, key, &value, isIndexed, reload) ? value : "none";
    }
    Text AskBoth(const Text& file, bool reload = false)
    {
        return Ask(true, file, "a", "k", reload) + Ask(false, file, "a", "k", reload);
    }

    // All names, each with a semicolon. The listing is not ended.
    Text List(const Text& file)
    {
        Text names;
        CStdStr<char> name;
        for (bool more = m_reader.getFirstSectionName(file, name); more;
             more = m_reader.getNextSectionName(name))
            names += name + ";";
        return names;
    }

    TemporaryFolder m_folder;
    INIFileReader m_reader;
};

TEST_F(INIFileReaderTest, ValuesByHand)
{
    const Text file = Write("a.ini", "outside=1\r\n[Roads]\r\n; comment = no\r\nWidth = 12 \r\nwidth=99\r\n"
                                     "Empty=\r\nCr=x \r\r\nab abc=later\r\n[roads]\nsecond=never\n");
    const char* const cases[][4] = {
        {"ROADS", "width ", "12", "12"},   {"Roads", "EMPTY", "none", ""},
        {"Roads", "cr", "x ", "x \r"},     {"roads", "; comment ", "none", "none"},
        {"Roads", "abc", "none", "later"}, {"Roads", "second", "none", "none"}};
    for (const auto& [section, key, indexed, direct] : cases)
        EXPECT_EQ(Ask(true, file, section, key) + Ask(false, file, section, key), Text(indexed) + direct);
    EXPECT_FALSE(m_reader.getStringFromIni(file, "Roads", "width", nullptr, true, false));
}

TEST_F(INIFileReaderTest, IndexGrows)
{
    Text text;
    for (int i = 0; i < 9000; ++i)
        text += (i % 3 == 0 ? "[s" + std::to_string(i) + "]" : "k" + std::to_string(i) + "=1") + "\n";
    const Text file = Write("a.ini", text);
    for (int i = 1; i < 9000; ++i)
        ASSERT_EQ(Ask(true, file, "S" + std::to_string(i / 3 * 3), "K" + std::to_string(i)),
                  i % 3 == 0 ? "none" : "1");
}

TEST_F(INIFileReaderTest, FilesAndTheirNamesHaveLimits)
{
    const Text text = "[a]\r\nk=v\r\n;" + Text(0x400000 - 9, '.'); // two of these bytes do not count
    EXPECT_EQ(AskBoth(Write("a.ini", text)), "vv");
    EXPECT_EQ(AskBoth(Write("b.ini", text + ".")), "nonenone");
    std::filesystem::remove(m_folder / "a.ini");
    EXPECT_EQ(AskBoth(m_folder / "a.ini"), "vv"); // the longer file has not replaced it

    Text path = Write("c.ini", "[a]\nk=1\n");
    path.insert(path.size() - 5, 511 - path.size(), '/');
    EXPECT_EQ(AskBoth(path) + List(path), "11a;");
    m_reader.EndStringFromIni();
    path.insert(path.size() - 5, "/");
    EXPECT_EQ(AskBoth(path) + List(path), "nonenone");
}

TEST_F(INIFileReaderTest, FilesAreHeldUntilTheyAreDropped)
{
    const Text file = Write("a.ini", "[a]\nk=1\n"), other = Write("b.ini", "[a]\nk=b\n");
    EXPECT_EQ(AskBoth(file), "11");
    Write("a.ini", "[a]\nk=2\n");
    EXPECT_EQ(AskBoth("") + AskBoth(m_folder / "."), "nonenonenonenone");
    EXPECT_EQ(AskBoth(file), "11");
    EXPECT_EQ(AskBoth(file, true), "12"); // the index is never reloaded
    m_reader.end_profile_string();
    Write("a.ini", "[a]\nk=3\n");
    EXPECT_EQ(AskBoth(file), "32");
    EXPECT_EQ(AskBoth(Write("c.ini", "[a]\nk=v\nmalformed\nj=w\n")), "nonev"); // which drops the index
    EXPECT_EQ(AskBoth(file), "33");

    std::filesystem::remove(file);
    m_reader = static_cast<const INIFileReader&>(m_reader);
    EXPECT_EQ(AskBoth(file), "33");
    m_reader = INIFileReader(m_reader);
    EXPECT_EQ(AskBoth(file), "nonenone");
    EXPECT_EQ(AskBoth(other), "bb");
    std::filesystem::remove(other);
    m_reader.EndStringFromIni();
    EXPECT_EQ(AskBoth(other), "bnone");
}

TEST_F(INIFileReaderTest, ListingsLastUntilTheyAreEnded)
{
    const Text file = Write("a.ini", "[ One]\nk=1\n[two]\n[three]");
    EXPECT_EQ(List("") + List(m_folder / "missing.ini"), "");
    m_reader.end_profile_string(); // without an index this ends nothing
    EXPECT_EQ(List(file), "");
    m_reader.EndStringFromIni();
    EXPECT_EQ(List(file) + List(file), " One;two;");
    EXPECT_EQ(AskBoth(file), "nonenone"); // makes an index
    m_reader.end_profile_string();
    EXPECT_EQ(List(file), " One;two;");
}
