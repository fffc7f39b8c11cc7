// EUC-KR to UTF-8: ASCII, Hangul, and sequences cut or invalid.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"

namespace {

// The converted text and the result, converted into a zeroed area of twice the input plus one.
std::pair<std::string, int> convert(std::string euckr)
{
    std::string out(2 * euckr.size() + 1, '\0');
    int result = euckr2utf(&euckr[0], &out[0]);
    return {out.substr(0, std::strlen(out.c_str())), result};
}

TEST(Euckr2utf, AsciiHangulAndCutSequences)
{
    using R = std::pair<std::string, int>;
    EXPECT_EQ(convert("AWS RDR"), R("AWS RDR", 0));
    EXPECT_EQ(convert(""), R("", 0));
    // "실황 레이더": 11 bytes of EUC-KR, 16 of UTF-8.
    EXPECT_EQ(convert("\xbd\xc7\xc8\xb2 \xb7\xb9\xc0\xcc\xb4\xf5"), R("실황 레이더", 0));
    // A chunk cut inside a syllable, or a byte that is no EUC-KR, keeps what came before it.
    EXPECT_EQ(convert("\xbd\xc7\xc8"), R("실", -1));
    EXPECT_EQ(convert("A\xff\xff" "B"), R("A", -1));
}

}  // namespace
