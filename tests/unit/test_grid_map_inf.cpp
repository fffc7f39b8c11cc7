// The map catalogue: matching, comments, first match, line ends, over-long fields, missing file.
#include <gtest/gtest.h>

#include "fixture_tree.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"

namespace {

struct Extent {
    int nx = -1, ny = -1, sx = -1, sy = -1;
};

Extent look_up(const char *map)
{
    Extent e;
    EXPECT_EQ(grid_map_inf(map, &e.nx, &e.ny, &e.sx, &e.sy), 0);
    return e;
}

TEST(MapCatalogue, FindsTheFirstWholeCaseSensitiveMatch)
{
    fixture::reset_root();
    ASSERT_TRUE(fixture::write_map_catalogue({
        "#HR:1:1:1:1",
        "HR2:2:2:2:2",
        "hr:3:3:3:3",
        "HR:1000:1200:500:600\r",
        "HR:9:9:9:9",
        "EA: 50:+60:-7:8x:extra:fields",
        "SHORT:10",
        "LONGCODE12:5:5:5:5",
        "NUM:0000000000000000000123:1:1:1",
        std::string(2000, 'Z') + ":1:1:1:1",
    }));
    Extent hr = look_up("HR");
    EXPECT_EQ(hr.nx, 1000);
    EXPECT_EQ(hr.ny, 1200);
    EXPECT_EQ(hr.sx, 500);
    EXPECT_EQ(hr.sy, 600);   // the carriage return ends the number

    Extent ea = look_up("EA");
    EXPECT_EQ(ea.nx, 50);
    EXPECT_EQ(ea.ny, 60);
    EXPECT_EQ(ea.sx, -7);
    EXPECT_EQ(ea.sy, 8);

    Extent shrt = look_up("SHORT");
    EXPECT_EQ(shrt.nx, 10);
    EXPECT_EQ(shrt.ny, 0);   // missing fields give 0
    EXPECT_EQ(shrt.sy, 0);

    Extent unknown = look_up("XX");
    EXPECT_EQ(unknown.nx, -1);  // untouched
    EXPECT_EQ(unknown.sy, -1);

    // Over-long fields are cut to their storage: 7 for the code, 15 for a number.
    EXPECT_EQ(look_up("LONGCOD").nx, 5);
    EXPECT_EQ(look_up("NUM").nx, 0);
    // A 2000-character line is read in pieces of 1023; its first piece holds the cut code and
    // no numbers, and it is the first match.
    Extent longline = look_up("ZZZZZZZ");
    EXPECT_EQ(longline.nx, 0);
    EXPECT_EQ(longline.sy, 0);
}

TEST(MapCatalogue, MissingCatalogueIsReported)
{
    fixture::reset_root();
    int nx = 0, ny = 0, sx = 0, sy = 0;
    EXPECT_EQ(grid_map_inf("HR", &nx, &ny, &sx, &sy), MAP_NO_CATALOGUE);
}

}  // namespace
