// The map layers end to end: class and threshold colours, sampling, the rain marking, zoom and
// grid placement, terrain shading, outlines and the palette. The map is 100 x 120 km drawn 200
// pixels wide (2 pixels a km, GJ 260); with 1 km cells, map cell (c, r) shows at pixel
// (2c, 260 - 2r), and the expected pixels below are worked out from that by hand.
#include <gtest/gtest.h>

#include "cgi_run.h"
#include "fixture_tree.h"
#include "picture_writers.h"
#include "rdr_paths.h"

namespace {

const uint32_t kBackground = cgi::rgb(180, 180, 180);
const uint32_t kWhite = cgi::rgb(255, 255, 255);
const uint32_t kRain = cgi::rgb(51, 102, 255), kMixed = cgi::rgb(102, 255, 255), kSnow = cgi::rgb(255, 102, 255);
// Four threshold classes of the colour files below.
const uint32_t kC0 = cgi::rgb(10, 0, 0), kC1 = cgi::rgb(20, 0, 0), kC2 = cgi::rgb(30, 0, 0), kC3 = cgi::rgb(40, 0, 0);

class Layers : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        fixture::write_simple_catalogue(100, 120, 50, 60);
        ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", {{10, 0, 0, 1.0f}, {20, 0, 0, 2.0f},
                                                                    {30, 0, 0, 5.0f}, {40, 0, 0, 10.0f}}));
        ASSERT_TRUE(fixture::write_color_file("color_ta_e30.rgb", {{10, 0, 0, -20.0f}, {20, 0, 0, -18.0f},
                                                                   {30, 0, 0, -10.0f}, {40, 0, 0, 0.0f}}));
    }

    // Ten-cell-wide columns: column block k holds cells 10k .. 10k + 9 of every row.
    template <typename T>
    static void fill_block(std::vector<T> &cells, int k, T value)
    {
        for (int r = 0; r < 120; r++)
            for (int c = 10 * k; c < 10 * k + 10; c++) cells[(std::size_t)r * 100 + c] = value;
    }

    // The picture of a grid at 12:35 on 15 January (or August).
    cgi::Picture draw(const fixture::Grid &g, const std::string &query, int MM = 1)
    {
        EXPECT_TRUE(fixture::write_grid(g, 2024, MM, 15, 12, 35));
        std::string tm = MM == 1 ? "tm=202401151235" : "tm=202408151235";
        cgi::Answer a = cgi::run((tm + "&size=200&legend=0&" + query).c_str());
        EXPECT_TRUE(a.framed) << query;
        return cgi::Picture(a.png);
    }

    fixture::Grid grid = fixture::make_grid(100, 120);
};

// The pixel that shows map cell (c, r) without zoom.
int px(int c) { return 2 * c; }
int py(int r) { return 260 - 2 * r; }

TEST_F(Layers, ClassColoursOfEveryCategoricalProduct)
{
    const uint8_t codes[] = {0x11, 0x22, 0x33, 0x44, 0x00, 0x02, 0x20, 0x01, 0x70};
    const uint8_t areas[] = {1, 2, 3, 4, 0, 4, 3, 2, 7};
    for (int k = 0; k < 9; k++) {
        fill_block(grid.code, k, codes[k]);
        fill_block(grid.area, k, areas[k]);
    }
    const uint32_t aws = cgi::rgb(51, 204, 51), rdr = cgi::rgb(51, 153, 255), both = cgi::rgb(57, 57, 209);
    const uint32_t B = kBackground;
    struct Row {
        const char *obs;
        uint32_t colour[9];
    } rows[] = {
        {"RNSN", {kWhite, kRain, kMixed, kSnow, B, kRain, kRain, kWhite, B}},
        {"RNSN1", {kWhite, kRain, kMixed, kSnow, B, kRain, kRain, kWhite, B}},
        {"RNSN2", {kWhite, kRain, kMixed, kSnow, B, B, kRain, B, B}},
        {"RNEX", {kWhite, both, both, both, B, aws, rdr, B, rdr}},
        {"AREA", {kWhite, kRain, kMixed, kSnow, B, kSnow, kMixed, kRain, B}},
    };
    for (const Row &row : rows) {
        cgi::Picture pic = draw(grid, std::string("obs=") + row.obs);
        ASSERT_TRUE(pic.ok()) << row.obs;
        for (int k = 0; k < 9; k++) EXPECT_EQ(pic.rgb(px(10 * k + 5), py(60)), row.colour[k]) << row.obs << " block " << k;
        // Without the font no text shades join the palette: 4 classes and 18 fixed slots.
        EXPECT_EQ(pic.colors(), 22) << row.obs;
    }
}

TEST_F(Layers, ThresholdColoursOnBelowAndAboveBoundsAndMissingValues)
{
    const float rain[] = {0.5f, 1.0f, 1.01f, 2.0f, 4.99f, 5.0f, 9.0f, 10.0f, 50.0f, -300.0f};
    const double tw[] = {-14, -13.99, -12, -4, 6, 11, 12.5, 21, 31, -300};
    for (int k = 0; k < 10; k++) {
        fill_block(grid.hsr, k, fixture::rain_raw(rain[k]));
        fill_block(grid.rn15x, k, fixture::rain_raw(rain[k]));
        fill_block(grid.tw, k, k == 9 ? (int16_t)-10000 : fixture::tw_raw(tw[k]));
    }
    const uint32_t B = kBackground;
    const uint32_t by_bound[10] = {kC0, kC0, kC1, kC1, kC2, kC2, kC3, kC3, kC3, B};
    // January: the bounds -20 -18 -10 0 slide to -14 -12 -4 6; August: to 11 13 21 31.
    const uint32_t tw_january[10] = {kC0, kC1, kC1, kC2, kC3, kC3, kC3, kC3, kC3, B};
    const uint32_t tw_august[10] = {kC0, kC0, kC0, kC0, kC0, kC0, kC1, kC2, kC3, B};
    struct Row {
        const char *query;
        int month;
        const uint32_t *colour;
    } rows[] = {{"obs=HSR", 1, by_bound}, {"obs=RN15X", 1, by_bound}, {"obs=TW", 1, tw_january}, {"obs=TW", 8, tw_august}};
    for (const Row &row : rows) {
        cgi::Picture pic = draw(grid, row.query, row.month);
        ASSERT_TRUE(pic.ok()) << row.query;
        for (int k = 0; k < 10; k++)
            EXPECT_EQ(pic.rgb(px(10 * k + 5), py(60)), row.colour[k]) << row.query << " month " << row.month << " block " << k;
        EXPECT_EQ(pic.colors(), 4 + 18) << row.query;
    }
}

TEST_F(Layers, BilinearSamplingAgainstNearest)
{
    for (int16_t &v : grid.hsr) v = fixture::rain_raw(3.0);
    fill_block(grid.hsr, 1, fixture::rain_raw(1.0));        // cells 10..19
    grid.hsr[grid.at(30, 51)] = fixture::rain_raw(-300.0);  // one missing cell
    // Pixel 39 lies at x 19.5, between cell 19 (1.0) and cell 20 (3.0): 2.0 when blended.
    cgi::Picture nearest = draw(grid, "obs=HSR&rnexdisp=0");
    cgi::Picture bilinear = draw(grid, "obs=HSR&rnexdisp=0&griddisp=1");
    ASSERT_TRUE(nearest.ok() && bilinear.ok());
    EXPECT_EQ(nearest.rgb(39, py(50)), kC0);   // 19.5 + 0.45 truncates to cell 19
    EXPECT_EQ(bilinear.rgb(39, py(50)), kC1);  // (1.0 + 3.0) / 2 = 2.0, on the bound of class 1
    EXPECT_EQ(nearest.rgb(41, py(50)), kC2);   // 20.95: cell 20
    EXPECT_EQ(bilinear.rgb(37, py(50)), kC0);  // 18.5: both corners 1.0
    // Cell (30, 51) missing: the bilinear pixel at (30, 50) needs it as its upper corner.
    EXPECT_EQ(nearest.rgb(px(30), py(50)), kC2);
    EXPECT_EQ(bilinear.rgb(px(30), py(50)), kBackground);
    EXPECT_EQ(bilinear.rgb(px(30), py(52)), kC2);
    // The last column and row only serve as second corners.
    EXPECT_EQ(nearest.rgb(px(99), py(50)), kC2);
    EXPECT_EQ(bilinear.rgb(px(99), py(50)), kBackground);
    EXPECT_EQ(bilinear.rgb(px(98) + 1, py(50)), kC2);
    EXPECT_EQ(nearest.rgb(px(50), py(119)), kC2);
    EXPECT_EQ(bilinear.rgb(px(50), py(119)), kBackground);
}

TEST_F(Layers, LightRainMarkingByRnexdisp)
{
    // Below the first bound everywhere but in block 9; rain/snow class 2 in blocks 0..4 and 9.
    for (int16_t &v : grid.hsr) v = fixture::rain_raw(0.5);
    fill_block(grid.hsr, 9, fixture::rain_raw(1.5));
    for (int k = 0; k < 10; k++) fill_block(grid.code, k, (uint8_t)(k < 5 || k == 9 ? 0x02 : 0x01));
    const uint32_t own = cgi::rgb(57, 57, 209);
    struct Row {
        const char *query;
        uint32_t raining, dry, above;
    } rows[] = {
        {"obs=HSR&rnexdisp=0", kC0, kC0, kC1},
        {"obs=HSR", kC1, kC0, kC1},
        {"obs=HSR&rnexdisp=2", own, kC0, kC1},
        {"obs=RN15X&rnexdisp=2", own, kC0, own},  // its values are all 0.0, below the first bound
    };
    for (const Row &row : rows) {
        cgi::Picture pic = draw(grid, row.query);
        ASSERT_TRUE(pic.ok()) << row.query;
        EXPECT_EQ(pic.rgb(px(25), py(60)), row.raining) << row.query;
        EXPECT_EQ(pic.rgb(px(75), py(60)), row.dry) << row.query;
        EXPECT_EQ(pic.rgb(px(95), py(60)), row.above) << row.query;
    }
    // A single class leaves nothing to mark with.
    ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", {{10, 0, 0, 1.0f}}));
    EXPECT_EQ(draw(grid, "obs=HSR&rnexdisp=1").rgb(px(25), py(60)), kC0);
}

TEST_F(Layers, ZoomedViewsAndGridPlacement)
{
    for (uint8_t &c : grid.code) c = 0x10;  // "RNSN2": class 1 everywhere but the markers
    grid.code[grid.at(20, 20)] = 0x20;
    grid.code[grid.at(35, 10)] = 0x40;
    grid.code[grid.at(43, 23)] = 0x30;
    grid.code[grid.at(55, 5)] = 0x30;
    grid.code[grid.at(40, 21)] = 0x40;
    struct Row {
        const char *query;
        int x, y;
        uint32_t colour;
    } rows[] = {
        // Pixel (40, 220) is cell (20, 20) unzoomed.
        {"zoom_level=0&zoom_x=3000000&zoom_y=1000000", 40, 220, kRain},
        // One step of eighths: corner at cell 25 east, magnification 2, x = 40 / 4 + 25 = 35.
        {"zoom_level=1&zoom_x=3000000&zoom_y=1000000", 40, 220, kSnow},
        // Two steps: 25 + 4 x 12.5 / 2 = 50 east, magnification 4: cell (40 / 8 + 50, 40 / 8).
        {"zoom_level=1&zoom_x=35&zoom_y=11", 40, 220, kMixed},
        // Ninths: corner (3 x 100 / 9, 120 / 9), magnification 3: x = 60 / 6 + 33.33 = 43.33.
        {"zoom_level=1&zoom_rate=3&zoom_x=40&zoom_y=20", 60, 200, kMixed},
        // Rate 3 takes two steps only, the third digit pair unread: corner (37.04, 17.78),
        // magnification 9, cell (40.37, 21.11).
        {"zoom_level=1&zoom_rate=3&zoom_x=429&zoom_y=229", 60, 200, kSnow},
        // Rate 4 is no zoom; a letter ends the digits.
        {"zoom_level=3&zoom_rate=4&zoom_x=3000000&zoom_y=1000000", 40, 220, kRain},
        {"zoom_level=1&zoom_x=x3&zoom_y=11", 40, 220, kRain},
    };
    for (const Row &row : rows) {
        cgi::Picture pic = draw(grid, std::string("obs=RNSN2&") + row.query);
        ASSERT_TRUE(pic.ok()) << row.query;
        EXPECT_EQ(pic.rgb(row.x, row.y), row.colour) << row.query;
    }

    // Domain 3 puts the origin 440 km east and 770 km north of the first cell; with the origin
    // at (430, 760) of the map the view starts at cell (10, 10).
    fixture::write_simple_catalogue(100, 120, 430, 760);
    grid.head.map_code = 3;
    grid.code[grid.at(30, 30)] = 0x40;
    EXPECT_EQ(draw(grid, "obs=RNSN2").rgb(40, 220), kSnow);
    // 2 km cells: the same pixel is 20 km in, 10 km offset, cell 15.
    grid.head.dxy = 2000;
    grid.code[grid.at(15, 15)] = 0x30;
    EXPECT_EQ(draw(grid, "obs=RNSN2").rgb(40, 220), kMixed);
}

TEST_F(Layers, TerrainBandsOnlyOnTheFirstClass)
{
    for (uint8_t &c : grid.code) c = 0x01;  // "RNSN" class 1, palette entry 0
    fill_block(grid.code, 7, (uint8_t)0x02);
    fill_block(grid.code, 8, (uint8_t)0x00);
    // Without zoom pixel (i, GJ - j) samples terrain point (row j / 2 + 780, column i / 2 + 510),
    // so point (790, 520 + 10k) shows at pixel (20 + 20k, 240), over grid cell 10 + 10k.
    fixture::Terrain t;
    const int16_t stored[] = {10, 11, 1000, 4999, 5000, 32767, 30000, 30000};
    for (int k = 0; k < 8; k++) t.at(790, 520 + 10 * k) = stored[k];
    t.at(797, 524) = 11;  // under the zoom below
    t.at(798, 525) = 1000;
    ASSERT_TRUE(fixture::write_terrain(t));
    const uint32_t low = cgi::rgb(240, 240, 225), mid = cgi::rgb(170, 170, 170), high = cgi::rgb(120, 120, 120);
    const uint32_t want[] = {kWhite, low, mid, mid, high, high, kRain, kBackground};

    cgi::Picture pic = draw(grid, "obs=RNSN&gis=ST");
    ASSERT_TRUE(pic.ok());
    for (int k = 0; k < 8; k++) EXPECT_EQ(pic.rgb(20 + 20 * k, 240), want[k]) << "point " << k;
    EXPECT_EQ(draw(grid, "obs=RNSN&gis=t").rgb(40, 240), kWhite);

    // Terrain zooms over 99 x 119 km: corner (12.375, 14.875), so pixel (10, GJ - 12) samples
    // (524.875, 797.875), not the (525, 798) that 100 x 120 would give.
    pic = draw(grid, "obs=RNSN&gis=T&zoom_level=1&zoom_x=2&zoom_y=2");
    EXPECT_EQ(pic.rgb(10, 248), low);

    // A file cut inside row 790 shades what it holds and nothing after.
    ASSERT_TRUE(fixture::write_terrain(t, 64 + 2 * (790 * 1153 + 540) + 1));
    pic = draw(grid, "obs=RNSN&gis=T");
    EXPECT_EQ(pic.rgb(40, 240), low);
    EXPECT_EQ(pic.rgb(60, 240), kWhite);
}

TEST_F(Layers, OutlinesByKindZoomLevelAndWidth)
{
    // Kind 4 at 50 km north, kind 1 at 80 km north, both from 10 to 40 km east.
    ASSERT_TRUE(fixture::write_outlines("HR", 4, {{{10, 50}, {40, 50}}, {{70, 10}}}));
    ASSERT_TRUE(fixture::write_outlines("HR", 1, {{{10, 80}, {40, 80}}}));
    ASSERT_TRUE(fixture::write_grid(grid, 2024, 1, 15, 12, 35));
    const uint32_t black = cgi::rgb(0, 0, 0), grey = cgi::rgb(110, 110, 110);
    struct Row {
        int size, zoom_level;
        bool kind1, double4, double1;
    } rows[] = {{200, 0, false, false, false}, {200, 1, false, false, false}, {200, 2, true, false, false},
                {450, 2, true, false, false},  {500, 2, true, true, false},   {601, 2, true, true, true}};
    for (const Row &row : rows) {
        std::string q = "obs=RNSN&tm=202401151235&legend=0&size=" + std::to_string(row.size) +
                        "&zoom_level=" + std::to_string(row.zoom_level);
        cgi::Picture pic(cgi::run(q.c_str()).png);
        ASSERT_TRUE(pic.ok()) << q;
        float s = row.size / 100.0f;  // pixels per km
        int gj = pic.height();
        int mid = (int)(25 * s);
        int row4 = gj - (int)(50 * s), row1 = gj - (int)(80 * s);
        EXPECT_EQ(pic.rgb(mid, row4), black) << q;
        EXPECT_EQ(pic.rgb(mid, row4 - 1), row.double4 ? black : kBackground) << q;
        EXPECT_EQ(pic.rgb(mid, row1), row.kind1 ? grey : kBackground) << q;
        EXPECT_EQ(pic.rgb(mid, row1 - 1), row.double1 ? grey : kBackground) << q;
        // A polyline of one point draws nothing.
        EXPECT_EQ(pic.rgb((int)(70 * s), gj - (int)(10 * s)), kBackground) << q;
    }
    // One zoom step with digits 1 and 1 doubles the km: (10..40, 50) lands at 40..160 px, row 60.
    cgi::Picture zoomed(cgi::run("obs=RNSN&tm=202401151235&legend=0&size=200&zoom_level=1&zoom_x=1&zoom_y=1").png);
    EXPECT_EQ(zoomed.rgb(100, 60), black);

    // A line that does not parse ends the file; what came before stays. Blank lines are spacing,
    // and a NUL byte ends the text of its line only.
    ASSERT_TRUE(fixture::write_outline_text(
        "HR", 4, std::string("2 0\n10 50") + '\0' + "x\n40 50\n\n2 0\n10 30\nten 30\n2 0\n10 20\n40 20\n"));
    cgi::Picture cut(cgi::run("obs=RNSN&tm=202401151235&legend=0&size=200").png);
    EXPECT_EQ(cut.rgb(50, 160), black);
    EXPECT_EQ(cut.rgb(50, 220), kBackground);
}

TEST_F(Layers, HostileReferenceFilesStillGiveAPicture)
{
    ASSERT_TRUE(fixture::write_grid(grid, 2024, 1, 15, 12, 35));
    fixture::install_font();
    std::string long_line(5000, '7');
    ASSERT_TRUE(fixture::write_outline_text("HR", 4, "2000000000 0\nnan 5\n1e30 -1e30\ninf 3\n-2147483648 1\n" +
                                                         long_line + " 1\n"));
    ASSERT_TRUE(fixture::write_outline_text("HR", 1, "-5 0\n3 0\n1 1\n"));
    ASSERT_TRUE(fixture::write_color_text("color_rn_echo.rgb",
                                          "1 2 3 nan\n300 -5 20 1e30\n4 5 6\n" + long_line + "\n7 8 9 -inf\n"));
    ASSERT_TRUE(fixture::write_bytes(fixture::path_of(topo_file_path), std::string(63, '\x7f')));
    cgi::Answer a = cgi::run("obs=HSR&tm=202401151235&size=200&gis=T&zoom_level=2&x1=2147483647&y1=-2147483647&x2=5",
                             20000);
    ASSERT_TRUE(a.framed);
    EXPECT_EQ(a.exit_status, 0);
    EXPECT_TRUE(a.err.empty()) << a.err;
    cgi::Picture pic(a.png);
    ASSERT_TRUE(pic.ok());
    // Three classes came through, the out-of-range components held to 0..255.
    EXPECT_EQ(pic.palette_rgb(0), cgi::rgb(1, 2, 3));
    EXPECT_EQ(pic.palette_rgb(1), cgi::rgb(255, 0, 20));
    EXPECT_EQ(pic.palette_rgb(2), cgi::rgb(7, 8, 9));
    EXPECT_EQ(pic.palette_rgb(3), cgi::rgb(206, 229, 241));
}

TEST_F(Layers, PaletteOfALongColourFile)
{
    std::vector<fixture::ColorClass> classes;
    for (int k = 0; k < 130; k++) classes.push_back({k, 1, 2, (float)k});
    ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", classes));
    cgi::Picture pic = draw(grid, "obs=RN15X");
    ASSERT_TRUE(pic.ok());
    EXPECT_EQ(pic.colors(), 120 + 18);
    EXPECT_EQ(pic.palette_rgb(119), cgi::rgb(119, 1, 2));
    EXPECT_EQ(pic.palette_rgb(120), cgi::rgb(206, 229, 241));
    EXPECT_EQ(pic.palette_rgb(137), cgi::rgb(57, 57, 209));
}

}  // namespace
