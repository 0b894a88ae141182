#include "ZelUtil/INIFileReader.h"

#include "Pictures.h"
#include "System.h"

#include <gtest/gtest.h>

using namespace test;

namespace
{

using Text = std::string;

class INIFileReaderTest : public testing::Test
{
protected:
    Text Write(const Text& name, const Text& text)
    {
        std::filesystem::remove(m_folder / name);
        WriteFile(m_folder / name, Bytes(text.begin(), text.end()));
        return m_folder / name;
    }

    Text Ask(bool isIndexed, const Text& file, const Text& section = "a", const Text& key = "k",
             bool reload = false)
    {
        CStdStr<char> value = "as it was";
        if (m_reader.getStringFromIni(file, section, key, &value, isIndexed, reload))
            return value;
        EXPECT_EQ(value, isIndexed ? "as it was" : "");
        return "none";
    }
    Text AskBoth(const Text& file)
    {
        const Text indexed = Ask(true, file);
        return indexed + Ask(false, file);
    }

    // All names, each with a semicolon. The listing is not ended.
    Text List(const Text& file)
    {
        Text names;
        CStdStr<char> name, last;
        for (bool more = m_reader.getFirstSectionName(file, name); more;
             more = m_reader.getNextSectionName(name))
            names += (last = name) + ";";
        EXPECT_EQ(name, last);
        return names;
    }

    TemporaryFolder m_folder;
    INIFileReader m_reader;
};

} // namespace

TEST_F(INIFileReaderTest, ValuesByHand)
{
    const Text file = Write("a.ini", "outside=1\r\n[Roads]\r\n; comment = no\r\nWidth = 12 \r\nwidth=99\r\n"
                                     "Name=  two  words\t \r\nEmpty=\r\nCr=x \r\r\nList=[a] b\r\n"
                                     "ab abc=later\r\n[ Blank ] ignored\n  k=v\n[roads]\nsecond=never\n");
    const char* const cases[][4] = {
        {"ROADS", "width ", "12", "12"},         {"roads", "width", "99", "99"},
        {"Roads", "EMPTY", "none", ""},          {"Roads", "name", "two  words", "two  words"},
        {"Roads", "cr", "x ", "x \r"},           {"Roads", "List", "[a] b", "[a] b"},
        {"Roads", "abc", "none", "later"},       {"Roads", "ab abc", "later", "later"},
        {"Roads", "; comment ", "none", "none"}, {"Roads", "second", "none", "none"},
        {"Blank", "k", "none", "none"},          {" blank ", "K", "v", "v"}};
    for (const auto& [section, key, indexed, direct] : cases)
    {
        EXPECT_EQ(Ask(true, file, section, key), indexed) << section << ", " << key;
        EXPECT_EQ(Ask(false, file, section, key), direct) << section << ", " << key;
    }
    EXPECT_FALSE(m_reader.getStringFromIni(file, "Roads", "width", nullptr, true, false));
}

TEST_F(INIFileReaderTest, IndexGrows)
{
    for (const int entries : {2047, 2048, 2049, 9000})
    {
        Text text;
        for (int i = 0; i < entries; ++i)
            text += (i % 3 == 0 ? "[s" + std::to_string(i) + "]" : "k" + std::to_string(i) + "=1") + "\n";
        const Text file = Write(std::to_string(entries), text);
        for (int i = 1; i < entries; ++i)
            ASSERT_EQ(Ask(true, file, "S" + std::to_string(i / 3 * 3), "K" + std::to_string(i)),
                      i % 3 == 0 ? "none" : "1");
    }
    EXPECT_EQ(Ask(true, Write("a.ini", "[a]\nk=1\n"), "s3", "k4"), "none"); // the old entries are gone
}

TEST_F(INIFileReaderTest, FilesAndTheirNamesHaveLimits)
{
    const Text text = "[a]\r\nk=v\r\n;" + Text(0x400000 - 9, '.'); // two of these bytes do not count
    const Text file = Write("a.ini", text);
    EXPECT_EQ(AskBoth(file), "vv");
    EXPECT_EQ(AskBoth(Write("b.ini", text + ".")), "nonenone");
    std::filesystem::remove(file);
    EXPECT_EQ(AskBoth(file), "vv"); // the longer file has not replaced it

    for (const std::size_t length : {511U, 512U})
    {
        Text path = Write("c.ini", "[a]\nk=1\n");
        path.insert(path.size() - 5, length - path.size(), '/');
        EXPECT_EQ(AskBoth(path), length == 511 ? "11" : "nonenone");
        EXPECT_EQ(List(path), length == 511 ? "a;" : "");
        m_reader.EndStringFromIni();
    }
}

TEST_F(INIFileReaderTest, FilesAreHeldUntilTheyAreDropped)
{
    const Text file = Write("a.ini", "[a]\nk=1\n"), other = Write("b.ini", "[a]\nk=b\n");
    EXPECT_EQ(AskBoth(file), "11");
    Write("a.ini", "[a]\nk=2\n");
    for (const char* const missing : {"missing.ini", "."})
        EXPECT_EQ(AskBoth(m_folder / missing), "nonenone");
    EXPECT_EQ(Ask(true, file, "a", "k", true), "1"); // the index is never reloaded
    EXPECT_EQ(AskBoth(file), "11");
    EXPECT_EQ(Ask(false, file, "a", "k", true), "2");
    m_reader.end_profile_string();
    Write("a.ini", "[a]\nk=3\n");
    EXPECT_EQ(AskBoth(file), "32");
    EXPECT_EQ(AskBoth(other), "bb");
    EXPECT_EQ(AskBoth(file), "33");
    Write("a.ini", "[a]\nk=4\n");
    EXPECT_EQ(AskBoth(Write("c.ini", "[a]\nk=v\nmalformed\n")), "nonev");
    EXPECT_EQ(Ask(true, ""), "none");
    EXPECT_EQ(AskBoth(file), "44");

    std::filesystem::remove(file);
    m_reader = static_cast<const INIFileReader&>(m_reader);
    EXPECT_EQ(AskBoth(file), "44");
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
    CStdStr<char> name;
    EXPECT_FALSE(m_reader.getNextSectionName(name));
    EXPECT_EQ(List("") + List(m_folder / "missing.ini"), "");
    m_reader.end_profile_string(); // without an index this ends nothing
    EXPECT_EQ(List(file), "");
    m_reader.EndStringFromIni();
    EXPECT_EQ(List(file), " One;two;");
    EXPECT_EQ(List(file), "");
    EXPECT_EQ(Ask(true, file), "none"); // makes an index
    for (const auto end : {&INIFileReader::end_profile_string, &INIFileReader::EndStringFromIni})
    {
        (m_reader.*end)();
        EXPECT_TRUE(m_reader.getFirstSectionName(file, name));
    }
}
