// Minute-sequence time: the calendar, the three modes and midnight as hour 24.
#include <gtest/gtest.h>

#include "seq_time.h"

namespace {

struct Date {
    int YY, MM, DD, HH, MI;
};

Date back(int seq, char mode, char c24 = 'n')
{
    Date d{};
    seq2time(seq, &d.YY, &d.MM, &d.DD, &d.HH, &d.MI, mode, c24);
    return d;
}

int days_in(int YY, int MM)
{
    static const int len[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return len[MM - 1] + (MM == 2 && YY % 4 == 0 ? 1 : 0);
}

TEST(SeqTime, KnownValuesInEveryMode)
{
    EXPECT_EQ(time2seq(2024, 1, 15, 12, 35, 'm'), 65239955);
    EXPECT_EQ(time2seq(2024, 1, 15, 12, 35, 'h'), 1087332);
    EXPECT_EQ(time2seq(2024, 1, 15, 12, 35, 'd'), 45305);
    EXPECT_EQ(time2seq(1900, 1, 1, 0, 0, 'm'), 0);
    Date d = back(0, 'm');
    EXPECT_EQ(d.YY * 10000 + d.MM * 100 + d.DD, 19000101);
    EXPECT_EQ(d.HH * 100 + d.MI, 0);
}

TEST(SeqTime, EveryFourthYearIsLeapIncluding1900And2100)
{
    for (int year : {1900, 1904, 2000, 2024, 2100}) {
        int feb29 = time2seq(year, 2, 29, 0, 0, 'd');
        EXPECT_EQ(time2seq(year, 3, 1, 0, 0, 'd'), feb29 + 1) << year;
        Date d = back(feb29, 'd');
        EXPECT_EQ(d.MM * 100 + d.DD, 229) << year;
    }
    for (int year : {1901, 2023, 2099}) {
        EXPECT_EQ(time2seq(year, 3, 1, 0, 0, 'd'), time2seq(year, 2, 28, 0, 0, 'd') + 1) << year;
    }
    // The last day of a leap year and the next day.
    EXPECT_EQ(time2seq(1905, 1, 1, 0, 0, 'd'), time2seq(1904, 12, 31, 0, 0, 'd') + 1);
    Date d = back(time2seq(1904, 12, 31, 0, 0, 'd'), 'd');
    EXPECT_EQ(d.YY * 10000 + d.MM * 100 + d.DD, 19041231);
    d = back(time2seq(2100, 3, 1, 0, 0, 'm'), 'm');
    EXPECT_EQ(d.YY * 10000 + d.MM * 100 + d.DD, 21000301);
}

// Every day from 1900 to 2100 round-trips in all three modes, at several times of day.
TEST(SeqTime, RoundTripOverTwoCenturies)
{
    int expected_day = 0;
    for (int YY = 1900; YY <= 2100; YY++) {
        for (int MM = 1; MM <= 12; MM++) {
            for (int DD = 1; DD <= days_in(YY, MM); DD++, expected_day++) {
                ASSERT_EQ(time2seq(YY, MM, DD, 0, 0, 'd'), expected_day) << YY << "-" << MM << "-" << DD;
                Date d = back(expected_day, 'd');
                ASSERT_TRUE(d.YY == YY && d.MM == MM && d.DD == DD) << YY << "-" << MM << "-" << DD;
                for (int HH : {0, 7, 23}) {
                    Date h = back(time2seq(YY, MM, DD, HH, 0, 'h'), 'h');
                    ASSERT_TRUE(h.YY == YY && h.MM == MM && h.DD == DD && h.HH == HH);
                    for (int MI : {0, 35, 59}) {
                        Date m = back(time2seq(YY, MM, DD, HH, MI, 'm'), 'm');
                        ASSERT_TRUE(m.YY == YY && m.MM == MM && m.DD == DD && m.HH == HH && m.MI == MI)
                            << YY << "-" << MM << "-" << DD << " " << HH << ":" << MI;
                    }
                }
            }
        }
    }
}

TEST(SeqTime, MidnightAsHour24OfTheDayBefore)
{
    Date d = back(time2seq(2024, 3, 1, 0, 0, 'm'), 'm', 'y');
    EXPECT_EQ(d.YY * 10000 + d.MM * 100 + d.DD, 20240229);
    EXPECT_EQ(d.HH * 100 + d.MI, 2400);
    d = back(time2seq(2024, 3, 1, 0, 0, 'm'), 'm', 'n');
    EXPECT_EQ(d.MM * 100 + d.DD, 301);
    EXPECT_EQ(d.HH, 0);
    d = back(time2seq(2024, 3, 1, 0, 5, 'm'), 'm', 'y');
    EXPECT_EQ(d.DD * 10000 + d.HH * 100 + d.MI, 10005);
}

TEST(SeqTime, OutOfRangeFieldsCarryOverAndAreBounded)
{
    int base = time2seq(2024, 1, 15, 0, 0, 'm');
    EXPECT_EQ(time2seq(2024, 1, 15, 25, 61, 'm'), base + 25 * 60 + 61);
    EXPECT_EQ(time2seq(2024, 1, 0, 0, 0, 'd'), time2seq(2023, 12, 31, 0, 0, 'd'));
    EXPECT_EQ(time2seq(2023, 13, 1, 0, 0, 'd'), time2seq(2024, 1, 1, 0, 0, 'd'));
    EXPECT_EQ(time2seq(2023, 0, 1, 0, 0, 'd'), time2seq(2023, 1, 1, 0, 0, 'd'));
    // Months beyond 13 stop at 13 instead of reading past the month table.
    EXPECT_EQ(time2seq(2023, 99, 1, 0, 0, 'd'), time2seq(2023, 13, 1, 0, 0, 'd'));
    // The largest accepted year still fits the minute count.
    EXPECT_GT(time2seq(5900, 13, 99, 99, 99, 'm'), time2seq(5900, 1, 1, 0, 0, 'm'));
    // Negative sequence numbers are read as the start of the calendar.
    Date d = back(-1440, 'm');
    EXPECT_EQ(d.YY * 10000 + d.MM * 100 + d.DD, 19000101);
}

}  // namespace
