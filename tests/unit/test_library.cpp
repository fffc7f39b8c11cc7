// Arithmetic and contracts cheaper to pin directly than through a picture, as tables: calendar
// time, the projection, the text readers, index-range arrays, class rules, QC levels, EUC-KR.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "aws3_io.h"
#include "cgiutil.h"
#include "korean_text.h"
#include "lamcproj.h"
#include "nrutil.h"
#include "product_table.h"
#include "seq_time.h"

namespace {

using Date = std::array<int, 5>;  // YY, MM, DD, HH, MI
Date back(int seq, char mode = 'm', char c24 = 'n')
{
    Date d{};
    seq2time(seq, &d[0], &d[1], &d[2], &d[3], &d[4], mode, c24);
    return d;
}
int seq_of(const Date &d, char mode = 'm') { return time2seq(d[0], d[1], d[2], d[3], d[4], mode); }

TEST(SeqTime, KnownValuesCarryOverAndBounds)
{
    struct Row { Date in; char mode; int seq; } rows[] = {
        {{2024, 1, 15, 12, 35}, 'm', 65239955}, {{2024, 1, 15, 12, 35}, 'h', 1087332},
        {{2024, 1, 15, 12, 35}, 'd', 45305},    {{1900, 1, 1, 0, 0}, 'm', 0},
        {{1900, 3, 1, 0, 0}, 'd', 60},  // 1900-02-29 exists on this calendar
    };
    for (const Row &r : rows) EXPECT_EQ(seq_of(r.in, r.mode), r.seq) << testing::PrintToString(r.in);
    // Out of range fields carry over; months stop at 13 rather than read past the month table.
    struct Same { Date a, b; } same[] = {
        {{2024, 1, 0, 0, 0}, {2023, 12, 31, 0, 0}}, {{2023, 13, 1, 0, 0}, {2024, 1, 1, 0, 0}},
        {{2023, 99, 1, 0, 0}, {2024, 1, 1, 0, 0}},  {{2023, 0, 1, 0, 0}, {2023, 1, 1, 0, 0}},
        {{2024, 1, 15, 25, 61}, {2024, 1, 16, 2, 1}},
    };
    for (const Same &s : same) EXPECT_EQ(seq_of(s.a), seq_of(s.b)) << testing::PrintToString(s.a);
    EXPECT_EQ(back(time2seq(2024, 3, 1, 0, 0, 'm'), 'm', 'y'), (Date{2024, 2, 29, 24, 0}));
    EXPECT_EQ(back(time2seq(2024, 3, 1, 0, 5, 'm'), 'm', 'y'), (Date{2024, 3, 1, 0, 5}));
    EXPECT_EQ(back(-1440), (Date{1900, 1, 1, 0, 0}));  // before the calendar: its start
    EXPECT_GT(time2seq(5900, 13, 99, 99, 99, 'm'), time2seq(5900, 1, 1, 0, 0, 'm'));
}

// Every day from 1900 to 2100 round-trips in all three modes and follows the day before.
TEST(SeqTime, RoundTripOverTwoCenturies)
{
    const int length[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int day = 0;
    for (int YY = 1900; YY <= 2100; YY++)
        for (int MM = 1; MM <= 12; MM++)
            for (int DD = 1; DD <= length[MM - 1] + (MM == 2 && YY % 4 == 0); DD++, day++) {
                ASSERT_EQ(time2seq(YY, MM, DD, 0, 0, 'd'), day) << YY << "-" << MM << "-" << DD;
                ASSERT_EQ(back(day, 'd'), (Date{YY, MM, DD, 0, 0}));
                ASSERT_EQ(back(time2seq(YY, MM, DD, 7, 0, 'h'), 'h'), (Date{YY, MM, DD, 7, 0}));
                ASSERT_EQ(back(time2seq(YY, MM, DD, 23, 59, 'm')), (Date{YY, MM, DD, 23, 59}));
                ASSERT_EQ(back(time2seq(YY, MM, DD, 0, 0, 'm')), (Date{YY, MM, DD, 0, 0}));
            }
}

lamc_parameter korea(float xo = 0, float yo = 0) { return {6371.0088f, 1.0f, 30.0f, 60.0f, 126.0f, 38.0f, xo, yo, 0}; }

TEST(Lamcproj, WorkedValuesRoundTripsAndTheCache)
{
    struct Row { float lon, lat; double x, y; } rows[] = {
        {126, 38, 0, 0},                    {127, 37.5, 86.2349, -53.5529},   {129, 35, 268.8191, -320.4683},
        {124, 33, -184.6941, -541.7037},    {131, 43, 393.9190, 550.8185},
    };
    lamc_parameter map = korea(560, 840);
    for (const Row &r : rows) {
        float lon = r.lon, lat = r.lat, x = 0, y = 0;
        lamcproj_ellp(&lon, &lat, &x, &y, 0, &map);
        EXPECT_NEAR(x, 560 + r.x, 0.001) << r.lon << "," << r.lat;
        EXPECT_NEAR(y, 840 + r.y, 0.001) << r.lon << "," << r.lat;
        lamcproj_ellp(&lon, &lat, &x, &y, 1, &map);
        EXPECT_NEAR(lon, r.lon, 2e-5);
        EXPECT_NEAR(lat, r.lat, 2e-5);
    }
    // A record that says its constants are derived is served from the cache, whatever it holds.
    lamc_parameter other = korea();
    other.slat1 = 10;
    other.first = 1;
    float lon = 129, lat = 35, x = 0, y = 0;
    lamcproj_ellp(&lon, &lat, &x, &y, 0, &other);
    EXPECT_NEAR(x, 268.8191, 0.001);
    other.first = 0;
    lamcproj_ellp(&lon, &lat, &x, &y, 0, &other);
    EXPECT_GT(std::fabs(x - 268.8191), 1.0);
    EXPECT_EQ(other.first, 1);
}

TEST(TextReaders, GetwordReadIntCopyText)
{
    char line[64] = "HR:1000::600\r\n";
    char word[16];
    const char *want[] = {"HR", "1000", "", "600\r\n", ""};  // the last field keeps its line end
    for (const char *w : want) {
        getword(word, sizeof word, line, ':');
        EXPECT_STREQ(word, w);
    }
    char small[9];
    std::memset(small, 'X', sizeof small);
    const char *rest = getword_next(small, 8, "abcdefghijk=b=c", '=');
    EXPECT_STREQ(small, "abcdefg");  // cut to its capacity, and nothing written past it
    EXPECT_EQ(small[8], 'X');
    EXPECT_STREQ(rest, "b=c");
    EXPECT_STREQ(getword_next(small, 8, "tail", '&'), "");
    copy_text(small, 8, "RNSN1234567");
    EXPECT_STREQ(small, "RNSN123");

    struct Row { const char *text; int value; } ints[] = {
        {"600", 600}, {" -7x", -7}, {"+12", 12}, {"abc", 0}, {"", 0}, {"- 5", 0}, {"1200\r\n", 1200},
        {"2147483647", INT_MAX}, {"99999999999999999999", INT_MAX}, {"-2147483648", INT_MIN}, {"-9999999999999", INT_MIN},
    };
    for (const Row &r : ints) EXPECT_EQ(read_int(r.text), r.value) << "'" << r.text << "'";
    int v = 0;
    EXPECT_STREQ(scan_int("  -12 7", &v), " 7");
    EXPECT_EQ(v, -12);
    EXPECT_EQ(scan_int(" x", &v), nullptr);
}

// scan_float reads exactly what strtof reads (the same float, bit for bit, and the same end).
TEST(TextReaders, ScanFloatIsStrtof)
{
    auto same = [](const std::string &t) {
        char *want_end = nullptr;
        float want = std::strtof(t.c_str(), &want_end), got = 12345.0f;
        const char *end = scan_float(t.c_str(), &got);
        if (want_end == t.c_str()) return end == nullptr && got == 12345.0f;
        return end == want_end && (std::memcmp(&got, &want, sizeof got) == 0 || (std::isnan(got) && std::isnan(want)));
    };
    for (const char *t : {"0", "-0", "+5", " \t-3.25 7", ".5", "-.5", "5.", "5e", "1e+", "1e-3x", "0x10", "inf",
                          "-Infinity", "nan", "-", ".", "", "e5", "1e39", "1e-50", "3.4028236e38", "16777217",
                          "0.1000000000000000000000000000001", "123456789012345678901234567890", "1.5\n", "2,5"})
        EXPECT_TRUE(same(t)) << "'" << t << "'";
    std::mt19937 rng(7);
    const char *formats[] = {"%f", "%.9g", "%.17g", "%e"};
    char buf[64];
    for (int k = 0; k < 20000; k++) {
        double v = std::ldexp((double)(rng() % 100000000) / 1e8, (int)(rng() % 60) - 30) * ((rng() & 1) ? 1 : -1);
        std::snprintf(buf, sizeof buf, formats[k % 4], v);
        ASSERT_TRUE(same(buf)) << buf;
    }
}

// Lines keep their line feed; a longer line is cut at the buffer and its rest is never a line.
TEST(TextReaders, ReadLineCutsAndDropsTheRest)
{
    std::string text = "a b\n\n" + std::string(20, 'x') + "\nlast";
    FILE *fp = fmemopen(&text[0], text.size(), "r");
    char buf[8];
    struct Row { LineRead got; const char *line; } rows[] = {
        {LineRead::Ok, "a b\n"}, {LineRead::Ok, "\n"}, {LineRead::TooLong, "xxxxxxx"}, {LineRead::Ok, "last"},
    };
    for (const Row &r : rows) {
        EXPECT_EQ(read_line(fp, buf, sizeof buf), r.got) << r.line;
        EXPECT_STREQ(buf, r.line);
    }
    EXPECT_EQ(read_line(fp, buf, sizeof buf), LineRead::End);
    std::fclose(fp);
    EXPECT_TRUE(is_blank(" \t\r\n"));
    EXPECT_FALSE(is_blank(" 1 "));
}

TEST(NrutilDeathTest, OneRowHasItsCellsEnormousCountsEndTheProcess)
{
    unsigned char **one = cmatrix(0, 0, 0, 4);
    one[0][4] = 7;
    EXPECT_EQ(one[0][4], 7);
    free_cmatrix(one, 0, 0, 0, 4);
    EXPECT_EXIT(cvector(0, -2), testing::ExitedWithCode(1),
                "Numerical Recipes run-time error...\nallocation failure in cvector\\(\\)\n...now exiting to system...");
    EXPECT_EXIT(svector(0, -3), testing::ExitedWithCode(1), "allocation failure in svector");
    EXPECT_EXIT(matrix(0, -5, 0, 10), testing::ExitedWithCode(1), "allocation failure 1 in matrix");
    EXPECT_EXIT(matrix(0, 5, 0, -10), testing::ExitedWithCode(1), "allocation failure 2 in matrix");
    EXPECT_EXIT(cmatrix(0, 2, 0, -30000), testing::ExitedWithCode(1), "allocation failure 2 in cmatrix");
    EXPECT_EXIT(smatrix(0, -2, 0, 2), testing::ExitedWithCode(1), "allocation failure 1 in smatrix");
}

// A code byte holds the station class in its low and the radar class in its high 4 bits.
TEST(ClassRules, EveryRuleOnEveryKindOfByte)
{
    const ClassRule rules[] = {ClassRule::RNSN, ClassRule::RNSN1, ClassRule::RNSN2, ClassRule::RNEX, ClassRule::AREA,
                               ClassRule::None};
    struct Row { unsigned char b; int want[6]; } rows[] = {
        {0x21, {2, 1, 2, 3, 0x21, 0}}, {0x12, {2, 1, 1, 2, 0x12, 0}}, {0x40, {4, 4, 4, 3, 0x40, 0}},
        {0x02, {2, 2, 0, 2, 0x02, 0}}, {0x10, {1, 1, 1, 1, 0x10, 0}}, {0x01, {1, 1, 0, 0, 0x01, 0}},
        {0x22, {2, 2, 2, 4, 0x22, 0}}, {0x00, {0, 0, 0, 0, 0, 0}},    {0x11, {1, 1, 1, 1, 0x11, 0}},
        {0x33, {3, 3, 3, 4, 0x33, 0}}, {0x31, {3, 1, 3, 3, 0x31, 0}}, {0x13, {3, 1, 1, 2, 0x13, 0}},
    };
    for (const Row &r : rows)
        for (int k = 0; k < 6; k++) EXPECT_EQ(class_of_code(rules[k], r.b), r.want[k]) << std::hex << (int)r.b << " rule " << k;
    // The table's rows by code; codes of the rain/snow family it does not know have no rule.
    EXPECT_EQ(product_of("AREA").block, 1);
    EXPECT_EQ(product_of("RNSN3").kind, ProductKind::Classes);
    EXPECT_EQ(product_of("RNSN3").rule, ClassRule::None);
    EXPECT_EQ(product_of("rnsn").kind, ProductKind::Values);
    EXPECT_EQ(product_count(), 8);
}

TEST(Aws3Qc, LevelsDecideFromTheHighestFlag)
{
    AWS3_DATA r{};
    for (int i = 0; i < 88; i++) r.d[i] = (int16_t)(100 + i);
    struct AWS3_QCD q{};
    q.qc[7] = 1u << 7;
    q.qc[3] = (1u << 7) | (1u << 8);
    q.qc[0] = 1u << 0;
    for (int k = 1; k <= 6; k++) q.qc[k] |= 1ull << (10 + k);  // element 10 + k at level k
    q.qc[2] |= 1ull << 20;
    q.qc[5] |= 1ull << 20;
    q.qc[6] |= 1ull << 63;
    AWS3_QCD(&r, &q);
    struct Row { int element, value; } rows[] = {
        {7, 107}, {8, -995}, {0, 100}, {9, 109}, {20, -993}, {63, -992},  // the highest level wins; 7 keeps
        {11, -997}, {12, -996}, {13, -995}, {14, -994}, {15, -993}, {16, -992},
    };
    for (const Row &row : rows) EXPECT_EQ(r.d[row.element], row.value) << "element " << row.element;
    // Elements from 64 on are never flagged, whatever the words hold.
    for (int k = 1; k <= 7; k++) q.qc[k] = k == 7 ? 0 : ~0ull;
    AWS3_QCD(&r, &q);
    EXPECT_EQ(r.d[0], -992);
    for (int i = 64; i < 88; i++) EXPECT_EQ(r.d[i], 100 + i) << "element " << i;
}

TEST(KoreanText, ConversionAndWholeCharacterCuts)
{
    struct Row { std::string euckr, utf8; int result; } rows[] = {
        {"AWS RDR", "AWS RDR", 0}, {"", "", 0}, {"\xbd\xc7\xc8\xb2 \xb7\xb9\xc0\xcc\xb4\xf5", "실황 레이더", 0},
        {"\xbd\xc7\xc8", "실", -1}, {"A\xff\xff" "B", "A", -1},  // a cut or invalid sequence keeps what came before
    };
    for (Row r : rows) {
        std::string out(2 * r.euckr.size() + 1, '\0');
        EXPECT_EQ(euckr2utf(&r.euckr[0], &out[0]), r.result) << r.utf8;
        EXPECT_EQ(out.c_str(), r.utf8);
    }
    // Cuts in whole characters within both budgets: a syllable is 3 bytes of UTF-8, a pair led by
    // 0x80..0x9f 4, ASCII 1; a lead byte at the end is no character.
    std::string hangul;
    for (int k = 0; k < 15; k++) hangul += "\xb0\xad";
    struct Cut { std::string text; std::size_t bytes, utf8, want; } cuts[] = {
        {hangul, 29, 29, 18}, {"AB" + hangul, 29, 29, 20}, {"A" + hangul, 29, SIZE_MAX, 29},
        {"\x9f\x41\x9f\x41", 29, 7, 2}, {"\xa0\x41\xa0\x41", 29, 7, 4}, {"\x80\x41\x80\x41", 29, 5, 2}, {"AB\xb0", 29, 29, 2},
    };
    for (const Cut &c : cuts) EXPECT_EQ(euckr_whole_prefix(c.text.c_str(), c.bytes, c.utf8), c.want) << c.text;
}

}  // namespace
