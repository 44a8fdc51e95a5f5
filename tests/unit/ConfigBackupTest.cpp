// The configuration listing read back: what a line holds, and every way a line can be broken.
#include "TempDir.h"
#include "util/ConfigBackup.h"
#include "util/DevicePath.h"
#include "util/Pardb.h"

#include <gtest/gtest.h>

#include <Poco/File.h>

using panelkit::test::TempDir;
using panelkit::util::ConfigBackup;
using panelkit::util::Pardb;

namespace {

using Entries = std::vector<ConfigBackup::Entry>;

// The error of a listing that must not parse; "" when it parsed.
std::string ErrorOf(const std::string& text)
{
    Entries entries{{"left", "over", 's'}};
    std::string error;
    if (ConfigBackup::Parse(text, entries, error))
        return "";
    EXPECT_TRUE(entries.empty()) << "a broken listing yields no entries";
    return error;
}

Entries Parsed(const std::string& text)
{
    Entries entries;
    std::string error;
    EXPECT_TRUE(ConfigBackup::Parse(text, entries, error)) << error;
    return entries;
}

void ExpectEntry(const ConfigBackup::Entry& entry, const std::string& key, const std::string& value, char type)
{
    EXPECT_EQ(key, entry.key);
    EXPECT_EQ(value, entry.value);
    EXPECT_EQ(type, entry.type);
}

}  // namespace

TEST(ConfigBackup, ALineIsTheQuotedKeyAndValueAndTheTypeLetter)
{
    EXPECT_EQ("\"net/hostname\",\"field\", s\n", ConfigBackup::Line({"net/hostname", "field", 's'}));
    EXPECT_EQ("\"debug/seriald\",\"5\", i\n", ConfigBackup::Line({"debug/seriald", "5", 'i'}));
}

TEST(ConfigBackup, ValuesMayHoldQuotesCommasAndTheSeparatorItself)
{
    const Entries entries = Parsed("\"a\",\"say \"hi\"\", s\n"
                                   "\"b\",\"x\", \"y\", s\n"
                                   "\"c\",\"\", s\n"
                                   "\"d\",\"-12\", i\n"
                                   "\"e\",\"0.25\", f\n");
    ASSERT_EQ(5u, entries.size());
    ExpectEntry(entries[0], "a", "say \"hi\"", 's');
    ExpectEntry(entries[1], "b", "x\", \"y", 's');
    ExpectEntry(entries[2], "c", "", 's');
    ExpectEntry(entries[3], "d", "-12", 'i');
    ExpectEntry(entries[4], "e", "0.25", 'f');
}

TEST(ConfigBackup, EveryLineReadsBackAsItWasWritten)
{
    const Entries written = {{"k/1", "a \"b\", c", 's'}, {"k/2", "2147483647", 'i'}, {"k/3", "-1.5e3", 'f'}};
    std::string text;
    for (const auto& entry : written)
        text += ConfigBackup::Line(entry);
    const Entries read = Parsed(text);
    ASSERT_EQ(written.size(), read.size());
    for (std::size_t i = 0; i < read.size(); ++i)
        ExpectEntry(read[i], written[i].key, written[i].value, written[i].type);
}

TEST(ConfigBackup, BlankLinesAndLineEndsOfOtherSystemsAreRead)
{
    const Entries entries = Parsed("\r\n\"a\",\"1\", i\r\n\n\"b\",\"x\", s");
    ASSERT_EQ(2u, entries.size());
    ExpectEntry(entries[0], "a", "1", 'i');
    ExpectEntry(entries[1], "b", "x", 's');
    EXPECT_TRUE(Parsed("").empty());
}

TEST(ConfigBackup, ABrokenLineIsNamedByItsNumberAndReason)
{
    EXPECT_EQ("Line 2: a line must begin with a double quote", ErrorOf("\"a\",\"1\", i\nb,\"1\", i\n"));
    EXPECT_EQ("Line 1: the key has no closing double quote", ErrorOf("\"a,1, i\n"));
    EXPECT_EQ("Line 1: the key is empty", ErrorOf("\"\",\"1\", i\n"));
    EXPECT_EQ("Line 1: the key must be followed by a comma and a double quote", ErrorOf("\"a\" \"1\", i\n"));
    EXPECT_EQ("Line 1: the value must end with a double quote, a comma and a blank", ErrorOf("\"a\",\"1\",i\n"));
    EXPECT_EQ("Line 1: the value must end with a double quote, a comma and a blank", ErrorOf("\"a\",\", s\n"));
    EXPECT_EQ("Line 3: the type must be i, f or s", ErrorOf("\n\"a\",\"1\", i\n\"b\",\"1\", x\n"));
    EXPECT_EQ("Line 1: the type must be i, f or s", ErrorOf("\"a\",\"1\", ii\n"));
    EXPECT_EQ("Line 1: the type must be i, f or s", ErrorOf("\"a\",\"1\", \n"));
}

TEST(ConfigBackup, NumbersMustParseWhole)
{
    EXPECT_EQ("Line 1: the value of a is not a whole number", ErrorOf("\"a\",\"seven\", i\n"));
    EXPECT_EQ("Line 1: the value of a is not a whole number", ErrorOf("\"a\",\"7x\", i\n"));
    EXPECT_EQ("Line 1: the value of a is not a whole number", ErrorOf("\"a\",\"\", i\n"));
    EXPECT_EQ("Line 1: the value of a is not a whole number", ErrorOf("\"a\",\" 7\", i\n"));
    EXPECT_EQ("Line 1: the value of a is not a whole number", ErrorOf("\"a\",\"2147483648\", i\n"));
    EXPECT_EQ("Line 1: the value of a is not a whole number", ErrorOf("\"a\",\"1.5\", i\n"));
    EXPECT_EQ("Line 1: the value of b is not a number", ErrorOf("\"b\",\"abc\", f\n"));
    EXPECT_EQ("Line 1: the value of b is not a number", ErrorOf("\"b\",\"nan\", f\n"));
    EXPECT_EQ("Line 1: the value of b is not a number", ErrorOf("\"b\",\"1e999\", f\n"));
    EXPECT_EQ("", ErrorOf("\"a\",\"-2147483648\", i\n\"b\",\"3\", f\n"));
}

TEST(ConfigBackup, AKeyListedTwiceIsRefused)
{
    EXPECT_EQ("Line 3: the key a is listed twice", ErrorOf("\"a\",\"1\", i\n\"b\",\"1\", i\n\"a\",\"2\", i\n"));
}

TEST(ConfigBackup, ARestoreWritesTheDifferingKeysAsTheirTypes)
{
    TempDir root;
    Poco::File(root / "var/lib/pardb").createDirectories();
    panelkit::util::SetDeviceRoot(root.path());
    ASSERT_TRUE(Pardb::Set("same/int", 3));
    ASSERT_TRUE(Pardb::Set("same/float", 0.5f));
    ASSERT_TRUE(Pardb::Set("same/text", std::string("x")));
    ASSERT_TRUE(Pardb::Set("typed/text", std::string("4")));
    std::size_t changed = 99;
    ASSERT_TRUE(ConfigBackup::Restore({{"same/int", "03", 'i'},
                                       {"same/float", "0.50", 'f'},
                                       {"same/text", "x", 's'},
                                       {"typed/text", "4", 'i'},
                                       {"new/float", "2.5", 'f'}},
                                      changed));
    EXPECT_EQ(2u, changed);
    std::string value;
    PARDB_PAR_T type{};
    ASSERT_TRUE(Pardb::Get("typed/text", value, type));
    EXPECT_EQ(0, static_cast<int>(type));
    EXPECT_FLOAT_EQ(2.5f, Pardb::GetFloat("new/float"));
}
