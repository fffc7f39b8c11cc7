// EUC-KR to UTF-8 (ASCII, Hangul, cut and invalid sequences) and the line and number readers of
// the colour and outline files (long lines, missing fields, odd numbers).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "rdr_sfc_pty_img.h"
#include "text_fields.h"

namespace {

struct Converted {
    int result;
    std::string out;
};

// Converts into a zeroed area of the size the callers give: twice the input plus one.
Converted convert(std::string euckr)
{
    std::string out(2 * euckr.size() + 1, '\0');
    int result = euckr2utf(&euckr[0], &out[0]);
    return {result, out.substr(0, std::strlen(out.c_str()))};
}

TEST(Euckr2utf, AsciiHangulAndCutSequences)
{
    EXPECT_EQ(convert("AWS RDR").out, "AWS RDR");
    EXPECT_EQ(convert("AWS RDR").result, 0);
    Converted empty = convert("");
    EXPECT_EQ(empty.result, 0);
    EXPECT_EQ(empty.out, "");
    // "실황 레이더": 11 bytes of EUC-KR, 16 of UTF-8.
    Converted radar = convert("\xbd\xc7\xc8\xb2 \xb7\xb9\xc0\xcc\xb4\xf5");
    EXPECT_EQ(radar.result, 0);
    EXPECT_EQ(radar.out, "실황 레이더");
    EXPECT_EQ(radar.out.size(), 16u);
    // A chunk cut inside a syllable keeps what came before it.
    Converted cut = convert("\xbd\xc7\xc8");
    EXPECT_EQ(cut.result, -1);
    EXPECT_EQ(cut.out, "실");
    Converted invalid = convert("A\xff\xff" "B");
    EXPECT_EQ(invalid.result, -1);
    EXPECT_EQ(invalid.out, "A");
}

TEST(TextFields, LinesAndNumbers)
{
    std::FILE *fp = std::tmpfile();
    ASSERT_NE(fp, nullptr);
    std::string text = "1 2 3 4.5\n" + std::string(40, '9') + " 8\nshort\n\n" + std::string("a\0b\n", 4) + "last";
    std::fwrite(text.data(), 1, text.size(), fp);
    std::rewind(fp);
    char line[16];
    EXPECT_EQ(read_line(fp, line, sizeof line), LineRead::Ok);
    EXPECT_STREQ(line, "1 2 3 4.5");
    // A long line is reported whole, not cut into a second line.
    EXPECT_EQ(read_line(fp, line, sizeof line), LineRead::TooLong);
    EXPECT_EQ(read_line(fp, line, sizeof line), LineRead::Ok);
    EXPECT_STREQ(line, "short");
    EXPECT_EQ(read_line(fp, line, sizeof line), LineRead::Ok);
    EXPECT_TRUE(is_blank(line));
    // A NUL inside a line ends the text but not the line.
    EXPECT_EQ(read_line(fp, line, sizeof line), LineRead::Ok);
    EXPECT_STREQ(line, "a");
    EXPECT_EQ(read_line(fp, line, sizeof line), LineRead::Ok);
    EXPECT_STREQ(line, "last");
    EXPECT_EQ(read_line(fp, line, sizeof line), LineRead::End);
    std::fclose(fp);

    int i = 0;
    float f = 0;
    const char *rest = scan_int(" -12x", &i);
    ASSERT_NE(rest, nullptr);
    EXPECT_EQ(i, -12);
    EXPECT_STREQ(rest, "x");
    ASSERT_NE(scan_int(" 99999999999", &i), nullptr);
    EXPECT_EQ(i, 2147483647);
    const char *decimal = "4.5";
    EXPECT_EQ(scan_int(decimal, &i), decimal + 1);
    EXPECT_EQ(i, 4);
    EXPECT_EQ(scan_int(" .5", &i), nullptr);
    EXPECT_EQ(scan_int("-", &i), nullptr);
    EXPECT_EQ(scan_int("", &i), nullptr);
    ASSERT_NE(scan_float(" 1e30 2", &f), nullptr);
    EXPECT_EQ(f, 1e30f);
    EXPECT_EQ(scan_float("ten", &f), nullptr);
}

}  // namespace
