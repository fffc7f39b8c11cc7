// The query into the request record, the time text, and the search back for a grid file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "fixture_tree.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"
#include "seq_time.h"

namespace {

class UserInput : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        std::memset(&var, 0, sizeof var);
        setenv("TZ", "UTC0", 1);
        tzset();
    }
    void TearDown() override { unsetenv("QUERY_STRING"); }

    int ask(const char *query)
    {
        setenv("QUERY_STRING", query, 1);
        return user_input();
    }

    // A file of `bytes` bytes under the grid name of a time.
    void place(int YY, int MM, int DD, int HH, int MI, std::size_t bytes = 200)
    {
        ASSERT_TRUE(fixture::write_bytes(fixture::grid_path(YY, MM, DD, HH, MI), std::string(bytes, 'x')));
    }
};

int seq_of(int YY, int MM, int DD, int HH, int MI) { return time2seq(YY, MM, DD, HH, MI, 'm'); }

int now_rounded()
{
    int YY, MM, DD, HH, MI, SS;
    get_time(&YY, &MM, &DD, &HH, &MI, &SS);
    return seq_of(YY, MM, DD, HH, MI) / 5 * 5;
}

TEST_F(UserInput, DefaultsAndEveryKey)
{
    place(2024, 1, 15, 12, 35);
    ASSERT_EQ(ask("cmp=HSO&qcd=QCD&obs=RNSN1&map=EA&x1=10&y1=-20&x2=+30&y2=4x&color=C&"
                  "tm=202401151237&aws=8&sms=3&zoom_level=2&zoom_rate=3&zoom_x=5500000&"
                  "zoom_y=4400000&size=600&legend=0&gis=ST&griddisp=1&rnexdisp=2&dir=7&unknown=1"),
              0);
    EXPECT_STREQ(var.cmp, "HSO");
    EXPECT_STREQ(var.qcd, "QCD");
    EXPECT_STREQ(var.obs, "RNSN1");
    EXPECT_STREQ(var.map, "EA");
    EXPECT_EQ(var.x1, 10);
    EXPECT_EQ(var.y1, -20);
    EXPECT_EQ(var.x2, 30);
    EXPECT_EQ(var.y2, 4);
    EXPECT_STREQ(var.color, "C");
    EXPECT_EQ(var.aws, 8);
    EXPECT_EQ(var.sms, 3);
    EXPECT_EQ(var.zoom_level, 2);
    EXPECT_EQ(var.zoom_rate, 3);
    EXPECT_STREQ(var.zoom_x, "5500000");
    EXPECT_STREQ(var.zoom_y, "4400000");
    EXPECT_EQ(var.size, 600);
    EXPECT_EQ(var.legend, 0);
    EXPECT_STREQ(var.gis, "ST");
    EXPECT_EQ(var.griddisp, 1);
    EXPECT_EQ(var.rnexdisp, 2);
    EXPECT_EQ(var.dir_mode, 7);
    EXPECT_FLOAT_EQ(var.grid, 0.5f);
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 35));
    EXPECT_EQ(var.fname, fixture::grid_path(2024, 1, 15, 12, 35));

    // A second call starts again from the defaults.
    place(2024, 1, 15, 12, 0);
    ASSERT_EQ(ask("tm=2024011512"), 0);
    EXPECT_STREQ(var.map, "HR");
    EXPECT_STREQ(var.obs, "");
    EXPECT_EQ(var.zoom_rate, 2);
    EXPECT_EQ(var.legend, 1);
    EXPECT_EQ(var.rnexdisp, 1);
    EXPECT_EQ(var.zoom_level, 0);
    EXPECT_EQ(var.auto_man, '\0');
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 0));  // 10 characters: minute 0
}

TEST_F(UserInput, PairsAreTakenByteForByte)
{
    place(2024, 1, 15, 12, 35);
    ask("obs=RNEX&obs=&obs&a=b=c&map=XY=1&legend=0&legend=1&gis=T%54&=5&&tm=202401151235");
    EXPECT_STREQ(var.obs, "RNEX");     // empty values and bare keys are skipped
    EXPECT_STREQ(var.map, "XY=1");
    EXPECT_EQ(var.legend, 1);
    EXPECT_STREQ(var.gis, "T%54");

    // Values longer than their field are cut to it; so are pairs longer than 31 characters.
    ask("obs=ABCDEFGHIJKL&zoom_x=12345678901234567890&tm=2024011512350000000000000000000000");
    EXPECT_STREQ(var.obs, "ABCDEFG");
    EXPECT_STREQ(var.zoom_x, "123456789012345");
    ask("zoom_y=1234567890123456789012345678901234");
    EXPECT_STREQ(var.zoom_y, "123456789012345");
    ask("size=99999999999999999999&x1=-99999999999999999999");
    EXPECT_EQ(var.size, 2147483647);
    EXPECT_EQ(var.x1, -2147483647 - 1);
}

TEST_F(UserInput, TimeTextRules)
{
    place(2024, 1, 15, 12, 35);
    ask("tm=202401151237&obs=RNSN");
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 35));
    // Eleven characters: the single eleventh character is the minute.
    place(2024, 1, 15, 12, 5);
    ask("tm=20240115127");
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 5));

    // Too short, or 'a' in auto_man: the current time, rounded down to 5 minutes.
    for (const char *q : {"tm=20240115", "tm=202401151237&auto_man=a", "tm=202401151237&auto_man=abc", ""}) {
        int now = now_rounded();
        EXPECT_EQ(ask(q), -1) << q;
        int expected_now = (var.seq_now / 5) * 5;
        EXPECT_TRUE(expected_now == now || expected_now == now + 5) << q;
        EXPECT_EQ(var.seq, expected_now - 50) << q;
    }
    ask("tm=202401151237&auto_man=m");
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 35));

    // Years and months are held to 1900..5900 and 0..13 before conversion.
    ask("tm=999901011200");
    EXPECT_EQ(var.seq, seq_of(5900, 1, 1, 12, 0) - 50);
    ask("tm=000099011200");
    EXPECT_EQ(var.seq, seq_of(1900, 13, 1, 12, 0) - 50);
    ask("tm=19000000000000");
    EXPECT_EQ(var.seq, (seq_of(1900, 0, 0, 0, 0) / 5) * 5 - 50);
    EXPECT_STREQ(var.fname, fixture::grid_path(1900, 1, 1, 0, 0).c_str());
}

TEST_F(UserInput, SearchesTenCandidatesBackForAFileOfMoreThan100Bytes)
{
    place(2024, 1, 15, 12, 25);
    ASSERT_EQ(ask("tm=202401151237"), 0);
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 25));

    // 100 bytes is too small; 101 is enough.
    fixture::reset_root();
    place(2024, 1, 15, 12, 30, 100);
    place(2024, 1, 15, 12, 20, 101);
    ASSERT_EQ(ask("tm=202401151237"), 0);
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 20));

    // The tenth candidate is 45 minutes back; 50 minutes back is not tried.
    fixture::reset_root();
    place(2024, 1, 15, 11, 50);
    ASSERT_EQ(ask("tm=202401151235"), 0);
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 11, 50));
    fixture::reset_root();
    place(2024, 1, 15, 11, 45);
    EXPECT_EQ(ask("tm=202401151235"), -1);
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 11, 45));
    EXPECT_EQ(var.fname, fixture::grid_path(2024, 1, 15, 11, 50));

    // Crossing midnight and a month end.
    fixture::reset_root();
    place(2024, 2, 29, 23, 55);
    ASSERT_EQ(ask("tm=202403010005"), 0);
    EXPECT_EQ(var.seq, seq_of(2024, 2, 29, 23, 55));
}

TEST_F(UserInput, NoQueryStringSetsNothingButTheDefaults)
{
    unsetenv("QUERY_STRING");
    var.seq = 12345;
    EXPECT_EQ(user_input(), -1);
    EXPECT_EQ(var.seq, 12345);
    EXPECT_STREQ(var.map, "HR");
    EXPECT_EQ(var.legend, 1);
}

}  // namespace
