// What the picture shows: the real program on small fixture trees, pixels read back and compared
// with values worked out by hand. Layer pictures draw a 100 x 120 km map of 1 km cells 200 pixels
// wide without legend (2 pixels a km, GJ 260): map cell (c, r) shows at pixel (2c, 260 - 2r).
#include <gdfontl.h>
#include <gdfonts.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include "fixture_tree.h"
#include "picture_table.h"
#include "picture_writers.h"
#include "rdr_paths.h"
#include "station_writers.h"

namespace {

using namespace table;
const uint32_t kRain = rgb(51, 102, 255), kMixed = rgb(102, 255, 255), kSnow = rgb(255, 102, 255);
const uint32_t kAws = rgb(51, 204, 51), kRdr = rgb(51, 153, 255), kBoth = rgb(57, 57, 209), kOwn = rgb(57, 57, 209);
// The four classes of both colour files.
const uint32_t kC0 = rgb(10, 0, 0), kC1 = rgb(20, 0, 0), kC2 = rgb(30, 0, 0), kC3 = rgb(40, 0, 0);
const uint32_t kLow = rgb(240, 240, 225), kMid = rgb(170, 170, 170), kHigh = rgb(120, 120, 120), kGrey = rgb(110, 110, 110);

int px(int c) { return 2 * c; }
int py(int r) { return 260 - 2 * r; }

// Fills cells c0..c1 of rows r0..r1 of one block of a grid.
template <typename T>
void fill(std::vector<T> &block, int c0, int c1, int r0, int r1, T value)
{
    for (int r = r0; r <= r1; r++)
        for (int c = c0; c <= c1; c++) block[(std::size_t)r * 100 + c] = value;
}

void map_100_by_120()
{
    fixture::reset_root();
    ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:50:60"}));
    ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", {{10, 0, 0, 1}, {20, 0, 0, 2}, {30, 0, 0, 5}, {40, 0, 0, 10}}));
    ASSERT_TRUE(fixture::write_color_file("color_ta_e30.rgb", {{10, 0, 0, -20}, {20, 0, 0, -18}, {30, 0, 0, -10}, {40, 0, 0, 0}}));
}

void write_grid(const fixture::Grid &g, int MM = 1) { ASSERT_TRUE(fixture::write_grid(g, 2024, MM, 15, 12, 35)); }

// Bands of 30 rows, blocks of 10 columns. A (rows 0..29): a class code and area per block.
// B (30..59): threshold values per block. C (60..89): light rain below the first bound with
// rain/snow class 2 in blocks 0..4 and 9. D (90..119): rain 3.0 but 1.0 in block 1, cell (30, 101)
// missing. The same grid stands for January and August.
const float kRainOf[10] = {0.5f, 1.0f, 1.01f, 2.0f, 4.99f, 5.0f, 9.0f, 10.0f, 50.0f, -300.0f};
const double kTwOf[10] = {-14, -13.99, -12, -4, 6, 11, 12.5, 21, 31, -300};
void layer_tree()
{
    map_100_by_120();
    fixture::Grid g = fixture::make_grid(100, 120);
    const uint8_t codes[10] = {0x11, 0x22, 0x33, 0x44, 0x00, 0x02, 0x20, 0x01, 0x70, 0x11};
    const uint8_t areas[10] = {1, 2, 3, 4, 0, 4, 3, 2, 7, 1};
    for (int k = 0; k < 10; k++) {
        fill(g.code, 10 * k, 10 * k + 9, 0, 29, codes[k]);
        fill(g.area, 10 * k, 10 * k + 9, 0, 29, areas[k]);
        fill(g.hsr, 10 * k, 10 * k + 9, 30, 59, fixture::rain_raw(kRainOf[k]));
        fill(g.rn15x, 10 * k, 10 * k + 9, 30, 59, fixture::rain_raw(kRainOf[k]));
        fill(g.tw, 10 * k, 10 * k + 9, 30, 59, k == 9 ? (int16_t)-10000 : fixture::tw_raw(kTwOf[k]));
        fill(g.hsr, 10 * k, 10 * k + 9, 60, 89, fixture::rain_raw(k == 9 ? 1.5 : 0.5));
        fill(g.code, 10 * k, 10 * k + 9, 60, 89, (uint8_t)(k < 5 || k == 9 ? 0x02 : 0x01));
        fill(g.hsr, 10 * k, 10 * k + 9, 90, 119, fixture::rain_raw(k == 1 ? 1.0 : 3.0));
    }
    g.hsr[g.at(30, 101)] = fixture::rain_raw(-300.0);
    write_grid(g);
    write_grid(g, 8);
}

// "RNSN2" class 1 everywhere but single marker cells, to see which cell a zoomed pixel samples.
fixture::Grid marker_grid()
{
    fixture::Grid g = fixture::make_grid(100, 120);
    for (uint8_t &c : g.code) c = 0x10;
    for (auto m : {std::array<int, 3>{20, 20, 0x20}, {35, 10, 0x40}, {43, 23, 0x30}, {55, 5, 0x30}, {40, 21, 0x40}, {30, 30, 0x40}})
        g.code[g.at(m[0], m[1])] = (uint8_t)m[2];
    return g;
}
void zoom_tree() { map_100_by_120(), write_grid(marker_grid()); }
// Domain 3 puts the origin 440 km east and 770 km north of the first cell; with the origin at
// (430, 760) of the map the view starts at cell (10, 10).
void placed_tree(int dxy)
{
    zoom_tree();
    ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:430:760"}));
    fixture::Grid g = marker_grid();
    g.head.map_code = 3, g.head.dxy = (short)dxy, g.code[g.at(15, 15)] = 0x30;
    write_grid(g);
}
void domain_3_tree() { placed_tree(1000); }
void two_km_cells_tree() { placed_tree(2000); }

// "RNSN" class 1 (palette entry 0) but class 2 in block 7 and nothing in block 8. Without zoom
// pixel (i, GJ - j) samples terrain point (row j / 2 + 780, column i / 2 + 510), so point
// (790, 520 + 10k) shows at pixel (20 + 20k, 240), over grid cell 10 + 10k.
fixture::Terrain terrain()
{
    fixture::Terrain t;
    const int16_t stored[] = {10, 11, 1000, 4999, 5000, 32767, 30000, 30000};
    for (int k = 0; k < 8; k++) t.at(790, 520 + 10 * k) = stored[k];
    t.at(797, 524) = 11;  // under the zooms below
    t.at(798, 525) = 1000;
    t.at(797, 535) = 11;
    t.at(797, 534) = 1000;
    t.at(790, 1151) = t.at(790, 1152) = t.at(1439, 550) = t.at(1440, 550) = 1000;  // the last column and row
    t.at(790, 553) = 255;  // the low byte of a value that a file cut after it must not show
    return t;
}
void terrain_tree()
{
    map_100_by_120();
    fixture::Grid g = fixture::make_grid(100, 120);
    for (uint8_t &c : g.code) c = 0x01;
    fill(g.code, 70, 79, 0, 119, (uint8_t)0x02);
    fill(g.code, 80, 89, 0, 119, (uint8_t)0x00);
    write_grid(g);
    ASSERT_TRUE(fixture::write_terrain(terrain()));
}

// Kind 4 at 50 km north and kind 1 at 80 km north, both from 10 to 40 km east, over an empty grid.
void outline_tree()
{
    map_100_by_120();
    write_grid(fixture::make_grid(100, 120));
    ASSERT_TRUE(fixture::write_outlines("HR", 4, {{{10, 50}, {40, 50}}, {{70, 10}}}));
    ASSERT_TRUE(fixture::write_outlines("HR", 1, {{{10, 80}, {40, 80}}}));
}

// The annotation: the font installed and an empty grid, pictures 400 wide (NJ 480, GJ 500, GI
// 435) so the time, which ends at x 319 at the latest, stays clear of the legend column.
void annotation_tree()
{
    map_100_by_120();
    ASSERT_TRUE(fixture::write_font());
    write_grid(fixture::make_grid(100, 120));
    ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", {{10, 0, 0, 0.5f}, {20, 0, 0, 4.9f}, {30, 0, 0, 5.0f},
                                                                {40, 0, 0, 10.0f}, {50, 0, 0, 1e30f}, {60, 0, 0, 0}}));
    ASSERT_TRUE(fixture::write_color_file("color_ta_e30.rgb", {{10, 0, 0, -20.0f}, {20, 0, 0, -3.0f}}));
}

// The colour at row y of the middle of each column block, and more checks.
std::vector<Check> blocks(int y, const std::vector<uint32_t> &colours, std::vector<Check> checks = {})
{
    for (std::size_t k = 0; k < colours.size(); k++) checks.push_back(table::px(px(10 * (int)k + 5), y, colours[k]));
    return checks;
}

const std::string kLayer = "tm=202401151235&size=200&legend=0&";
const Expect kLayerPicture = picture(200, 260);

TEST(Pictures, GridLayer)
{
    const uint32_t B = kBackground;
    const std::vector<uint32_t> by_bound = {kC0, kC0, kC1, kC1, kC2, kC2, kC3, kC3, kC3, B};
    run_rows({
        // Class colours of every class product; 4 classes and 18 fixed slots, no text shades.
        {"RNSN", layer_tree, kLayer + "obs=RNSN", kLayerPicture,
         blocks(py(15), {kWhite, kRain, kMixed, kSnow, B, kRain, kRain, kWhite, B}, {colours(22)})},
        {"RNSN1", layer_tree, kLayer + "obs=RNSN1", kLayerPicture, blocks(py(15), {kWhite, kRain, kMixed, kSnow, B, kRain, kRain, kWhite, B})},
        {"RNSN2", layer_tree, kLayer + "obs=RNSN2", kLayerPicture, blocks(py(15), {kWhite, kRain, kMixed, kSnow, B, B, kRain, B, B})},
        {"RNEX", layer_tree, kLayer + "obs=RNEX", kLayerPicture, blocks(py(15), {kWhite, kBoth, kBoth, kBoth, B, kAws, kRdr, B, kRdr})},
        {"AREA", layer_tree, kLayer + "obs=AREA", kLayerPicture, blocks(py(15), {kWhite, kRain, kMixed, kSnow, B, kSnow, kMixed, kRain, B})},
        // Thresholds: a value on a bound is in its class, above every bound in the last; -300 is
        // missing. January slides the TW bounds -20 -18 -10 0 to -14 -12 -4 6, August to 11 13 21 31.
        {"HSR thresholds", layer_tree, kLayer + "obs=HSR", kLayerPicture, blocks(py(45), by_bound, {colours(22)})},
        {"RN15X thresholds", layer_tree, kLayer + "obs=RN15X", kLayerPicture, blocks(py(45), by_bound)},
        {"TW in January", layer_tree, kLayer + "obs=TW", kLayerPicture, blocks(py(45), {kC0, kC1, kC1, kC2, kC3, kC3, kC3, kC3, kC3, B})},
        {"TW in August", layer_tree, "tm=202408151235&size=200&legend=0&obs=TW", kLayerPicture,
         blocks(py(45), {kC0, kC0, kC0, kC0, kC0, kC0, kC1, kC2, kC3, B})},
        // Light rain under a rain/snow class above 1: the second class's colour, a colour of its own, or none.
        {"no marking", layer_tree, kLayer + "obs=HSR&rnexdisp=0", kLayerPicture, blocks(py(75), {kC0, kC0, kC0, kC0, kC0, kC0, kC0, kC0, kC0, kC1})},
        {"second class marks", layer_tree, kLayer + "obs=HSR", kLayerPicture, blocks(py(75), {kC1, kC1, kC1, kC1, kC1, kC0, kC0, kC0, kC0, kC1})},
        {"own colour marks", layer_tree, kLayer + "obs=HSR&rnexdisp=2", kLayerPicture, blocks(py(75), {kOwn, kOwn, kOwn, kOwn, kOwn, kC0, kC0, kC0, kC0, kC1})},
        {"RN15X of 0.0 marks", layer_tree, kLayer + "obs=RN15X&rnexdisp=2", kLayerPicture, blocks(py(75), {kOwn, kOwn, kOwn, kOwn, kOwn, kC0, kC0, kC0, kC0, kOwn})},
        // Pixel 39 lies at x 19.5 between cell 19 (1.0) and 20 (3.0): 19.95 takes cell 19 for the
        // nearest, 2.0 blended is on the bound of class 1, also half a cell up. Cell (30, 101) missing spoils the blend
        // of the pixel below it; the last column and row are only second corners.
        {"nearest", layer_tree, kLayer + "obs=HSR&rnexdisp=0", kLayerPicture,
         {table::px(39, py(100), kC0), table::px(41, py(100), kC2), table::px(px(30), py(100), kC2),
          table::px(px(99), py(100), kC2), table::px(px(50), py(119), kC2)}},
        {"bilinear", layer_tree, kLayer + "obs=HSR&rnexdisp=0&griddisp=1", kLayerPicture,
         {table::px(39, py(100), kC1), table::px(39, py(100) - 1, kC1), table::px(37, py(100), kC0), table::px(px(30), py(100), B),
          table::px(px(30), py(102), kC2), table::px(px(99), py(100), B), table::px(px(98) + 1, py(100), kC2),
          table::px(px(50), py(119), B)}},
    }, true);
    // A single class leaves nothing to mark with.
    run_rows({{"one class", layer_tree, kLayer + "obs=HSR", kLayerPicture, {table::px(px(25), py(75), kC0)},
               [] { ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", {{10, 0, 0, 1.0f}})); }}});
}

TEST(Pictures, ZoomAndPlacement)
{
    const std::string q = kLayer + "obs=RNSN2&";
    run_rows({
        {"unzoomed: pixel (40, 220) is cell (20, 20)", zoom_tree, q + "zoom_level=0&zoom_x=3000000&zoom_y=1000000", kLayerPicture, {table::px(40, 220, kRain)}},
        // One step of eighths: corner at cell 25 east, magnification 2, x = 40 / 4 + 25 = 35.
        {"one step", zoom_tree, q + "zoom_level=1&zoom_x=3000000&zoom_y=1000000", kLayerPicture, {table::px(40, 220, kSnow)}},
        // Two steps: 25 + 4 x 12.5 / 2 = 50 east, magnification 4: cell (40 / 8 + 50, 40 / 8).
        {"two steps", zoom_tree, q + "zoom_level=1&zoom_x=35&zoom_y=11", kLayerPicture, {table::px(40, 220, kMixed)}},
        // Ninths: corner (3 x 100 / 9, 120 / 9), magnification 3: x = 60 / 6 + 33.33 = 43.33.
        {"ninths", zoom_tree, q + "zoom_level=1&zoom_rate=3&zoom_x=40&zoom_y=20", kLayerPicture, {table::px(60, 200, kMixed)}},
        // Rate 3 takes two steps only: corner (37.04, 17.78), magnification 9, cell (40.37, 21.11).
        {"rate 3 stops at two steps", zoom_tree, q + "zoom_level=1&zoom_rate=3&zoom_x=429&zoom_y=229", kLayerPicture, {table::px(60, 200, kSnow)}},
        {"rate 4 is no zoom", zoom_tree, q + "zoom_level=3&zoom_rate=4&zoom_x=3000000&zoom_y=1000000", kLayerPicture, {table::px(40, 220, kRain)}},
        {"a letter ends the digits", zoom_tree, q + "zoom_level=1&zoom_x=x3&zoom_y=11", kLayerPicture, {table::px(40, 220, kRain)}},
        {"domain 3", domain_3_tree, q, kLayerPicture, {table::px(40, 220, kSnow)}},
        // 2 km cells: the same pixel is 20 km in, 10 km offset, cell 15.
        {"2 km cells", two_km_cells_tree, q, kLayerPicture, {table::px(40, 220, kMixed)}},
    }, true);
}

TEST(Pictures, TerrainAndOutlines)
{
    const std::string q = kLayer + "obs=RNSN&gis=";
    std::vector<Check> bands;
    const uint32_t want[] = {kWhite, kLow, kMid, kMid, kHigh, kHigh, kRain, kBackground};
    for (int k = 0; k < 8; k++) bands.push_back(table::px(20 + 20 * k, 240, want[k]));
    std::vector<Row> rows = {
        {"bands on the first class only", terrain_tree, q + "ST", kLayerPicture, bands},
        {"lower-case t is no terrain", terrain_tree, q + "t", kLayerPicture, {table::px(40, 240, kWhite)}},
        // Terrain zooms over 99 x 119 km: corner (12.375, 14.875), so pixel (10, GJ - 12) samples
        // (524.875, 797.875), not the (525, 798) that 100 x 120 would give.
        {"zoomed terrain", terrain_tree, q + "T&zoom_level=1&zoom_x=2&zoom_y=2", kLayerPicture, {table::px(10, 248, kLow)}},
        // Thirds of the width: the corner 2 x 99 / 8 = 24.75 km in, so pixel 1 samples column 535.
        {"zoomed terrain, thirds", terrain_tree, q + "T&zoom_level=1&zoom_x=3&zoom_y=2", kLayerPicture, {table::px(1, 248, kLow)}},
        // The origin moved to 500 km west (south) of the map puts terrain column 1152 at pixel 184
        // (row 1440 at image row 60), in view but never shown.
        {"the terrain's last column", terrain_tree, q + "T", kLayerPicture, {table::px(182, 240, kMid), table::px(184, 240, kWhite)},
         [] { ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:-500:60"})); }},
        {"the terrain's last row", terrain_tree, q + "T", kLayerPicture, {table::px(80, 62, kMid), table::px(80, 60, kWhite)},
         [] { ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:50:-500"})); }},
        // A file cut inside row 790, after the low byte of column 553 (pixel 86): what it holds
        // is shaded, half a value is no value, and nothing after it.
        {"cut terrain file", terrain_tree, q + "T", kLayerPicture,
         {table::px(40, 240, kLow), table::px(80, 240, kMid), table::px(86, 240, kWhite), table::px(100, 240, kWhite)},
         [] { ASSERT_TRUE(fixture::write_terrain(terrain(), 64 + 2 * (790 * 1153 + 553) + 1)); }},
    };
    // Outlines: kind 4 always, kind 1 from zoom level 2, each doubled one row up on larger
    // pictures; a polyline of one point draws nothing.
    struct Width { int size, zoom_level; bool kind1, double4, double1; } widths[] = {
        {200, 0, false, false, false}, {200, 1, false, false, false}, {200, 2, true, false, false},
        {450, 2, true, false, false},  {500, 2, true, true, false},   {601, 2, true, true, true}};
    for (const Width &w : widths) {
        float s = w.size / 100.0f;
        int gj = (int)(120 * s) + 20, mid = (int)(25 * s), row4 = gj - (int)(50 * s), row1 = gj - (int)(80 * s);
        rows.push_back({"outlines " + std::to_string(w.size), outline_tree,
                        "obs=RNSN&tm=202401151235&legend=0&size=" + std::to_string(w.size) + "&zoom_level=" + std::to_string(w.zoom_level),
                        picture(w.size, gj),
                        {table::px(mid, row4, kBlack), table::px(mid, row4 - 1, w.double4 ? kBlack : kBackground),
                         table::px(mid, row1, w.kind1 ? kGrey : kBackground), table::px(mid, row1 - 1, w.double1 ? kGrey : kBackground),
                         table::px((int)(70 * s), gj - (int)(10 * s), kBackground)}});
    }
    // One zoom step with digits 1 and 1 doubles the km: (10..40, 50) lands at 40..160 px, row 60.
    rows.push_back({"zoomed outline", outline_tree, kLayer + "obs=RNSN&zoom_level=1&zoom_x=1&zoom_y=1", kLayerPicture, {table::px(100, 60, kBlack)}});
    // A line that does not parse ends the file and what came before stays; blank lines are
    // spacing, and a NUL byte ends the text of its line only.
    rows.push_back({"outline file ending in a bad line", outline_tree, kLayer + "obs=RNSN", kLayerPicture,
                    {table::px(50, 160, kBlack), table::px(50, 220, kBackground)}, [] {
                        ASSERT_TRUE(fixture::write_outline_text("HR", 4, std::string("2 0\n10 50") + '\0' +
                                                                             "x\n40 50\n\n2 0\n10 30\nten 30\n2 0\n10 20\n40 20\n"));
                    }});
    run_rows(rows, true);
}

TEST(Pictures, PaletteFromColourFiles)
{
    std::string classes_130;
    for (int k = 0; k < 130; k++) classes_130 += std::to_string(k) + " 1 2 " + std::to_string(k) + "\n";
    run_rows({
        // The classes first, then the fixed slots in their order.
        {"classes of RNEX", layer_tree, kLayer + "obs=RNEX", kLayerPicture,
         {palette(0, kWhite), palette(1, kAws), palette(2, kRdr), palette(3, kBoth), palette(4, rgb(206, 229, 241)),
          palette(5, kLow), palette(6, kMid), palette(7, kHigh), palette(8, rgb(98, 169, 213)), palette(9, kBackground),
          palette(10, kWhite), palette(11, kFrame), palette(12, rgb(12, 28, 236)), palette(13, kBlack),
          palette(14, kDisc), palette(15, kRed), palette(16, kBlue), palette(17, rgb(160, 160, 160)),
          palette(18, kGrey), palette(19, rgb(80, 80, 80)), palette(20, kPink), palette(21, kOwn), colours(22)}},
        {"130 lines make 120 classes", layer_tree, kLayer + "obs=RN15X", kLayerPicture,
         {colours(138), palette(119, rgb(119, 1, 2)), palette(120, rgb(206, 229, 241)), palette(137, kOwn)},
         [=] { ASSERT_TRUE(fixture::write_color_text("color_rn_echo.rgb", classes_130)); }},
        // Malformed lines take no slot, components are held to 0..255, a long line is no line.
        {"malformed colour lines", layer_tree, kLayer + "obs=HSR", kLayerPicture,
         {palette(0, rgb(1, 2, 3)), palette(1, rgb(255, 0, 20)), palette(2, rgb(7, 8, 9)), palette(3, rgb(206, 229, 241))},
         [] {
             ASSERT_TRUE(fixture::write_color_text("color_rn_echo.rgb", "1 2 3 nan\n300 -5 20 1e30\n4 5 6\n" +
                                                                           std::string(5000, '7') + " 1 1 1\n7 8 9 -inf\n"));
         }},
    });
}

const std::string kAnnotation = "tm=202401151235&size=400&";

TEST(Pictures, TitleLegendAndSection)
{
    std::vector<Row> rows;
    // The time follows the title by its EUC-KR length; a product outside the table has no title.
    struct Title { const char *obs; int time_x; bool title; } titles[] = {
        {"RNEX", 130, true}, {"RNSN", 130, true}, {"RNSN1", 173, true}, {"RNSN2", 190, true}, {"AREA", 130, true},
        {"TW", 130, true},   {"RN15X", 147, true}, {"HSR", 130, true}, {"rnsn", 130, false}};
    for (const Title &t : titles)
        rows.push_back({std::string("title of ") + t.obs, annotation_tree, kAnnotation + "obs=" + t.obs, picture(435, 500),
                        {text(gdFontGetLarge(), t.time_x, 1, "2024.01.15.12:35", kBlack, kWhite, 2), table::px(434, 0, kWhite),
                         ink(5, 2, 125, 19, kWhite, t.title ? 100 : 0, t.title ? 100000 : 0),
                         count(5, 2, 125, 19, kBlue, t.title ? 21 : 0, t.title ? 100000 : 0)}});
    // Class legend: dy 120, boxes from the bottom at 380, 260, 140 and 20; "AWS RDR" shows as AWS
    // over RDR with baselines 35 and 49, "없음" takes one line with its baseline at 395.
    rows.push_back({"class legend", annotation_tree, kAnnotation + "obs=RNEX", picture(435, 500),
                    {table::px(404, 440, kWhite), table::px(404, 320, kAws), table::px(404, 200, kRdr), table::px(404, 80, kBoth),
                     table::px(399, 300, kFrame), table::px(408, 300, kFrame), table::px(404, 499, kFrame),
                     ink(409, 26, 434, 35, kWhite, 11, 1000), ink(409, 40, 434, 49, kWhite, 11, 1000),
                     ink(409, 386, 434, 395, kWhite, 11, 1000), ink(409, 399, 434, 499, kWhite, 0, 0),
                     ink(403, 0, 434, 19, kWhite, 0, 0)}});
    rows.push_back({"no legend", annotation_tree, kAnnotation + "obs=RNEX&legend=0", picture(400, 500)});
    // Level legend: dy 80; the number of a level's upper bound has its cell top at 500 - 80 (i + 1)
    // - 5, one decimal below 5, none from 5 up; 1e30 is cut by the column; none above the top level.
    std::vector<Check> levels = {ink(409, 21, 434, 90, kWhite, 0, 0), text(gdFontGetLarge(), 403, 4, "mm/h", kBlack, kWhite)};
    const char *numbers[] = {"0.5", "4.9", "5", "10", "1000"};
    for (int i = 0; i < 6; i++) levels.push_back(table::px(404, 460 - 80 * i, rgb(10 * (i + 1), 0, 0)));
    for (int i = 0; i < 5; i++) levels.push_back(text(gdFontGetSmall(), 412, 500 - 80 * (i + 1) - 5, numbers[i], kBlack, kWhite));
    rows.push_back({"level legend", annotation_tree, kAnnotation + "obs=HSR", picture(435, 500), levels});
    // January slides -20 to -14, printed without decimals for TW.
    rows.push_back({"TW legend", annotation_tree, kAnnotation + "obs=TW", picture(435, 500),
                    {text(gdFontGetSmall(), 412, 500 - 240 - 5, "-14", kBlack, kWhite), text(gdFontGetLarge(), 403, 4, "C", kBlack, kWhite)}});
    rows.push_back({"no colour file", annotation_tree, kAnnotation + "obs=TW", picture(435, 500),
                    {text(gdFontGetLarge(), 100, 100, "No Color Level", kBlack, kBackground), table::px(404, 300, kBackground),
                     table::px(420, 300, kBackground)},
                    [] { std::remove(fixture::path_of(color_file_path, "color_ta_e30.rgb").c_str()); }});
    rows.push_back({"no font: only the TrueType text is missing", annotation_tree, kAnnotation + "obs=RNSN", picture(435, 500),
                    {ink(5, 2, 125, 19, kWhite, 0, 0), text(gdFontGetLarge(), 130, 1, "2024.01.15.12:35", kBlack, kWhite, 2),
                     table::px(404, 440, kWhite)},
                    [] { ASSERT_EQ(std::remove(font_path()), 0); }});
    // The section line: column 200 x km / 100, row 260 - 240 x km / 120; a zoom step of eighths
    // whatever the rate; rows from NJ / NY (at 199 pixels 110 km north is row trunc(258 - 238 x
    // 110 / 120) = 39 where the map's rows would give 40); no line unless x1 is above 0.
    struct Section { const char *query; int x1, y1, x2, y2; } sections[] = {
        {"x1=50&y1=60&x2=75&y2=90", 100, 140, 150, 80},
        {"x1=25&y1=45&x2=50&y2=35&zoom_level=1&zoom_x=2000000&zoom_y=3000000", 50, 200, 150, 240},
        {"x1=25&y1=45&x2=50&y2=35&zoom_level=1&zoom_rate=3&zoom_x=2000000&zoom_y=3000000", 50, 200, 150, 240},
        {"x1=50&y1=110&x2=75&y2=60&size=199", 99, 39, 149, 139},
        {"x1=50&y1=0&x2=75&y2=60", 100, 260, 150, 140},  // a dot on the picture's lower edge
    };
    for (const Section &s : sections)
        rows.push_back({std::string("section ") + s.query, annotation_tree, std::string("tm=202401151235&size=200&obs=RNSN&") + s.query,
                        picture(), {section(s.x1, s.y1, s.x2, s.y2)}});
    rows.push_back({"no section without x1", annotation_tree, "tm=202401151235&size=200&obs=RNSN&x1=0&y1=60&x2=75&y2=60",
                    picture(), {ink(1, 21, 198, 258, kBackground, 0, 0)}});
    run_rows(rows);
}

// A 1000 x 1000 km map with its origin in the middle, drawn 500 wide (half a pixel a km, GJ 520):
// a station at (x, y) km lands on column trunc(x / 2) and row 520 - trunc(y / 2). Station k is
// put half a pixel into its pixel, so the round trip through longitude and latitude cannot move it.
fixture::Station at_pixel(int id, int X, int Y) { return {{id}, 2.0f * X + 1, 2.0f * (520 - Y) + 1}; }
void station_map()
{
    fixture::reset_root();
    ASSERT_TRUE(fixture::write_font());
    ASSERT_TRUE(fixture::write_map_catalogue({"HR:1000:1000:500:500"}));
    ASSERT_TRUE(fixture::write_grid(fixture::make_grid(10, 10), 2024, 7, 15, 9, 55));
}
// Elements of stations at 09:55: {station, element, value, element, value, ...}.
void observe(const std::vector<std::vector<int>> &rows)
{
    std::vector<fixture::MinuteSlot> slots;
    for (const auto &row : rows) {
        slots.push_back({55, row[0], fixture::minute_record(row[0], 2024, 7, 15, 9, 55)});
        for (std::size_t k = 1; k + 1 < row.size(); k += 2) slots.back().record.d[row[k]] = (int16_t)row[k + 1];
    }
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, slots));
}
// Numbers 47, 90, 108, 299 and 300 in a row at (100 + 50k, 300); 101 at (625.5, 625.5) km and
// 104 at (300.5, 700.5); 102 on the central meridian (x 500 km exactly) at 39 N, and 103 1.698
// km east of it at y 554.037 km.
const int kNumbered[] = {47, 90, 108, 299, 300};
void numbered_stations()
{
    station_map();
    std::vector<fixture::StationListRow> list;
    std::vector<fixture::SensorRow> sensors;
    std::vector<fixture::PositionRow> positions = {{101}, {104}, {102, 126.0, 39.0}, {103, 126.02, 38.5}};
    fixture::lonlat_of_km(625.5f, 625.5f, 500, 500, &positions[0].lon, &positions[0].lat);
    fixture::lonlat_of_km(300.5f, 700.5f, 500, 500, &positions[1].lon, &positions[1].lat);
    for (int k = 0; k < 5; k++) {
        fixture::Station s = at_pixel(kNumbered[k], 100 + 50 * k, 300);
        positions.push_back({s.list.stn_id});
        fixture::lonlat_of_km(s.x, s.y, 500, 500, &positions.back().lon, &positions.back().lat);
    }
    for (const fixture::PositionRow &p : positions) list.push_back({p.stn_id}), sensors.push_back({p.stn_id});
    ASSERT_TRUE(fixture::write_station_list(list) && fixture::write_sensor_list(sensors) && fixture::write_position_list(positions));
}
// 201 raining 12 tenths a quarter hour (4.8 mm/h) with wind from the north at 12.3 m/s, 202 dry
// ("0"), 203 with wind of 5.5 m/s but no values, 204 and 205 with 0.2 and 0.1 m/s; 206 with a
// name of 17 syllables.
void observed_stations()
{
    station_map();
    fixture::Station long_name = at_pixel(206, 200, 100);
    for (int k = 0; k < 15; k++) long_name.list.name += "\xb0\xad";
    ASSERT_TRUE(fixture::write_station_catalogues({at_pixel(201, 100, 200), at_pixel(202, 300, 200), at_pixel(203, 100, 400),
                                                   at_pixel(204, 300, 400), at_pixel(205, 400, 400), long_name}, 500, 500));
    observe({{201, 67, 12, 68, 77, 69, 55, 65, 0, 66, 123}, {202, 67, 0}, {203, 65, 0, 66, 55}, {204, 65, 0, 66, 2}, {205, 65, 0, 66, 1}});
}

const std::string kStations = "obs=RNSN&tm=202407150955&size=500&legend=0&";

TEST(Pictures, Stations)
{
    std::vector<Row> rows;
    // Zoom levels 1 and 2 show the numbers 90..299 only; a station whose state is unknown is red.
    for (int level : {1, 2, 3}) {
        std::vector<Check> discs;
        for (int k = 0; k < 5; k++)
            discs.push_back(disc(100 + 50 * k, 300, level >= 3 || (kNumbered[k] >= 90 && kNumbered[k] <= 299) ? kRed : kBackground));
        rows.push_back({"zoom level " + std::to_string(level), numbered_stations, kStations + "aws=11&zoom_level=" + std::to_string(level),
                        picture(500, 520), discs});
    }
    for (const char *keys : {"aws=0&zoom_level=3", "aws=11&zoom_level=0", "aws=-1&zoom_level=3"})
        rows.push_back({keys, numbered_stations, kStations + keys, picture(500, 520), {disc(200, 300, kBackground)}});
    // One zoom step with digits 5 and 5: the view starts at (500, 500) km, twice enlarged, so
    // (x, y) km lands on column trunc(x - 500) and row 520 - trunc(y - 500); 102 on the view's
    // west edge (column 0, row 412) is not drawn, 103 (column 1, row 466) is.
    rows.push_back({"zoomed view", numbered_stations, kStations + "aws=11&zoom_level=3&zoom_rate=2&zoom_x=50&zoom_y=50",
                    picture(500, 520),
                    {disc(125, 395, kRed), table::px(2, 412, kBackground), table::px(3, 412, kBackground),
                     table::px(1, 466, kRed), table::px(3, 466, kRed), table::px(5, 466, kDisc)}});
    rows.push_back({"a single station, zoomed", numbered_stations, kStations + "aws=11&zoom_level=3&zoom_rate=2&zoom_x=50&zoom_y=50",
                    picture(500, 520), {disc(125, 395, kRed)},
                    [] { ASSERT_TRUE(fixture::write_station_catalogues({{{101}, 625.5f, 625.5f}}, 500, 500)); }});
    rows.push_back({"unzoomed view", numbered_stations, kStations + "aws=11&zoom_level=3", picture(500, 520),
                    {disc(312, 208, kRed), disc(150, 170, kRed)}});
    // Wind from the north at 12.3 m/s: a 30-pixel shaft straight up, barbs of 20, 20 and 9.2
    // pixels from 30, 25 and 20 pixels up, turned 60 degrees clockwise (a 20-pixel barb ends 17
    // right and 10 up); 0.2 m/s stored as a float is above 0.2 and draws one, 0.1 does not.
    // 203's 5.5 m/s make a full barb and one of 2 pixels 25 pixels up.
    std::vector<Check> barbs = {disc(100, 200, kBlue), disc(300, 200, kRed), disc(100, 400, kRed),
                                text(gdFontGetLarge(), 90, 203, "4.8", kBlack, kBackground, 1, 2),
                                text(gdFontGetLarge(), 297, 203, "0", kBlack, kBackground, 1, 2),
                                ink(90, 405, 140, 418, kBackground, 0, 0), table::px(100, 169, kBackground),
                                table::px(117, 160, kBlack), table::px(117, 165, kBlack), table::px(107, 175, kBlack),
                                table::px(117, 170, kBackground), table::px(118, 164, kBackground), table::px(108, 174, kBackground),
                                table::px(300, 380, kBlack), table::px(400, 380, kBackground), table::px(300, 180, kBackground),
                                table::px(117, 360, kBlack), table::px(101, 374, kBlack)};  // 203: a barb of 0.5 m/s, 2 pixels
    for (int up = 5; up <= 30; up += 5) barbs.push_back(table::px(100, 200 - up, kBlack));
    rows.push_back({"values and barbs", observed_stations, kStations + "aws=8&zoom_level=3", picture(500, 520), barbs});
    // Labels by mode: the name (TrueType, cut to whole syllables, its baseline 15 rows below the
    // station: strokes on rows 206..217 only), the number or a value of 201.
    struct Mode { int mode; const char *label; bool barb; } modes[] = {
        {1, nullptr, false}, {2, "201", false}, {3, "4.8", false}, {4, "7.7", false}, {5, "5.5", false}, {6, nullptr, true},
        {7, "201", true},    {8, "4.8", true},  {9, "7.7", true},  {10, "5.5", true}, {11, "", true},     {12, "", true}};
    for (const Mode &m : modes) {
        std::vector<Check> checks = {disc(100, 200, kBlue), table::px(100, 180, m.barb ? kBlack : kBackground)};
        if (!m.label)
            checks.insert(checks.end(), {ink(90, 206, 140, 217, kBackground, 21, 10000), ink(90, 205, 140, 205, kBackground, 0, 0),
                                         ink(90, 218, 140, 218, kBackground, 0, 0), ink(290, 105, 306, 118, kBackground, 21, 10000),
                                         ink(312, 100, 340, 120, kBackground, 0, 0)});  // 206: nine syllables, no more
        else if (!*m.label)
            checks.push_back(ink(90, 205, 140, 218, kBackground, 0, 0));
        else
            checks.push_back(text(gdFontGetLarge(), 90, 203, m.label, kBlack, kBackground, 1, 2));
        rows.push_back({"mode " + std::to_string(m.mode), observed_stations, kStations + "zoom_level=3&aws=" + std::to_string(m.mode),
                        picture(500, 520), checks});
    }
    run_rows(rows, true);
}

// The answer's frame, the error picture's lines and sizes, the search back and the canvas.
void spine_tree()
{
    fixture::reset_root();
    ASSERT_TRUE(fixture::write_map_catalogue({"HR:900:1000:450:500"}));
    fixture::Grid g = fixture::make_grid(9, 10);
    for (auto &c : g.code) c = 0x22;
    ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, 25));
}

TEST(Pictures, AnswersAndErrorPictures)
{
    cgi::Answer a = cgi::run(nullptr);
    EXPECT_EQ(a.out.substr(0, 45), std::string("HTTP/1.0 200 OK\nContent-type: image/png\n\n\x89PNG", 45));
    // Ten candidates from 11:40 back: the time stands 50 minutes back, the file 45.
    std::vector<Row> rows = {
        {"empty query string", spine_tree, "", error(0, 35, 20)},
        {"no file within ten candidates", spine_tree, "obs=RNSN&tm=202401151140&size=300&cmp=HSO&qcd=Q", error(2, 335, 320),
         {error_lines({{50, "TIME = 2024.01.15.10:50 / err = 2"}, {70, "CMP = HSO / QCD = Q / OBS = RNSN"}, {110, "SIZE = 300px"},
                       {130, ("FILE = " + fixture::grid_path(2024, 1, 15, 10, 55) + " (file is not found)").substr(0, 119)}})}},
        {"without legend", spine_tree, "obs=TW&tm=202401151140&size=300&legend=0", error(0, 300, 320)},
        // A size no canvas takes is drawn at 600 pixels, still naming the requested size.
        {"fallback size", spine_tree, "obs=RNSN&tm=202401151225&size=99999999999&cmp=C", error(1, 635, 620),
         {error_lines({{50, "TIME = 2024.01.15.12:25 / err = 1"}, {70, "CMP = C / QCD =  / OBS = RNSN"}, {110, "SIZE = 2147483647px"},
                       {130, ("FILE = " + fixture::grid_path(2024, 1, 15, 12, 25)).substr(0, 119)}})}},
        {"legend 2 is no legend", spine_tree, "obs=RNSN&tm=202401151237&size=700&legend=2", picture(700, 797)},
    };
    // 900 x 1000 km at 700 pixels: 777 rows (truncated), the title band and the legend column;
    // every product finds the file 10 minutes back.
    for (const char *obs : {"RNSN", "HSR", "RN15X", "RNEX", "AREA", "TW"})
        rows.push_back({obs, spine_tree, std::string("tm=202401151237&size=700&obs=") + obs, picture(735, 797),
                        {table::px(699, 796, kFrame), table::px(0, 400, kFrame)}});
    run_rows(rows);
}

// A picture the graphics library cannot make (here for want of memory) ends the process with
// status 1 after the status line and one line on standard error.
TEST(Pictures, AnImageThatCannotBeMadeEndsWithStatus1)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer reserves more address space than the limit leaves";
#endif
    spine_tree();
    cgi::Answer a = cgi::run("obs=RNSN&tm=202401151225&size=7000", 30000, "UTC0", RDR_PROGRAM, 48LL << 20);
    EXPECT_EQ(a.exit_status, 1);
    EXPECT_EQ(a.out, "HTTP/1.0 200 OK\n");
    EXPECT_EQ(a.err, "rdr_sfc_pty_img: cannot create a 7035 x 7797 image\n");
}

}  // namespace
