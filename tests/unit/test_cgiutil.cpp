// The text splitter and decimal reading every reader shares.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "cgiutil.h"

namespace {

TEST(Getword, SplitsAtTheFirstStopAndMovesTheRest)
{
    char line[64] = "HR:1000::600\r\n";
    char word[16];
    getword(word, sizeof word, line, ':');
    EXPECT_STREQ(word, "HR");
    EXPECT_STREQ(line, "1000::600\r\n");
    getword(word, sizeof word, line, ':');
    EXPECT_STREQ(word, "1000");
    getword(word, sizeof word, line, ':');
    EXPECT_STREQ(word, "");                   // consecutive stops give an empty word
    getword(word, sizeof word, line, ':');
    EXPECT_STREQ(word, "600\r\n");            // the last field keeps its line end
    EXPECT_STREQ(line, "");
    getword(word, sizeof word, line, ':');
    EXPECT_STREQ(word, "");
}

TEST(Getword, NeverWritesPastTheWord)
{
    char line[64] = "abcdefghijklmnopqrstuvwxyz&next";
    char word[9];
    std::memset(word, 'X', sizeof word);
    getword(word, 8, line, '&');
    EXPECT_STREQ(word, "abcdefg");
    EXPECT_EQ(word[8], 'X');
    EXPECT_STREQ(line, "next");

    const char *rest = getword_next(word, sizeof word, "a=b=c", '=');
    EXPECT_STREQ(word, "a");
    EXPECT_STREQ(rest, "b=c");
    rest = getword_next(word, sizeof word, "tail", '&');
    EXPECT_STREQ(word, "tail");
    EXPECT_STREQ(rest, "");
}

TEST(ReadInt, LikeTheCLibraryButSaturating)
{
    EXPECT_EQ(read_int("600"), 600);
    EXPECT_EQ(read_int("  -12abc"), -12);
    EXPECT_EQ(read_int("+7"), 7);
    EXPECT_EQ(read_int("abc"), 0);
    EXPECT_EQ(read_int(""), 0);
    EXPECT_EQ(read_int("- 5"), 0);
    EXPECT_EQ(read_int("1200\r\n"), 1200);
    EXPECT_EQ(read_int("2147483647"), INT_MAX);
    EXPECT_EQ(read_int("99999999999999999999999999999999999999"), INT_MAX);
    EXPECT_EQ(read_int("-2147483648"), INT_MIN);
    EXPECT_EQ(read_int("-99999999999999999999"), INT_MIN);
}

TEST(CopyText, CutsToCapacity)
{
    char field[8];
    copy_text(field, sizeof field, "RNSN1234567");
    EXPECT_STREQ(field, "RNSN123");
    copy_text(field, sizeof field, "HR");
    EXPECT_STREQ(field, "HR");
}

}  // namespace
