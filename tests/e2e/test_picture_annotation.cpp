// The annotation end to end: the title band and its time, the legend column of both kinds, the
// cross-section line, and "No Color Level", on a map of 100 x 120 km. Text is compared with the
// graphics library's own rendering of the expected string at the expected place. Pictures with
// text in the band are 400 pixels wide (NJ 480, GJ 500, GI 435), so that the time, which ends at
// x 319 at the latest, stays clear of the legend column; the line is drawn 200 wide (GJ 260).
#include <gdfontl.h>
#include <gdfonts.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "cgi_run.h"
#include "fixture_tree.h"
#include "picture_writers.h"
#include "rdr_paths.h"

namespace {

const uint32_t kWhite = cgi::rgb(255, 255, 255);
const uint32_t kBlack = cgi::rgb(0, 0, 0);
const uint32_t kBackground = cgi::rgb(180, 180, 180);
const uint32_t kPink = cgi::rgb(255, 0, 172);

class Annotation : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        fixture::write_simple_catalogue(100, 120, 50, 60);
        fixture::install_font();
        ASSERT_TRUE(fixture::write_grid(fixture::make_grid(100, 120), 2024, 1, 15, 12, 35));
    }

    static cgi::Picture draw(const std::string &query)
    {
        cgi::Answer a = cgi::run(("tm=202401151235&" + query).c_str());
        EXPECT_TRUE(a.framed) << query;
        return cgi::Picture(a.png);
    }
};

// Compares the box of `text` drawn in a built-in font at (x, y), `strikes` times one pixel apart:
// ink where the font sets a pixel, `paper` elsewhere (within the picture). Returns the first
// mismatch as "x,y", or an empty string.
std::string text_mismatch(const cgi::Picture &pic, gdFontPtr font, int x, int y, const std::string &text,
                          uint32_t ink, uint32_t paper, int strikes = 1)
{
    int w = font->w * (int)text.size() + strikes - 1, h = font->h;
    gdImagePtr ref = gdImageCreate(w, h);
    gdImageColorAllocate(ref, 255, 255, 255);
    int set = gdImageColorAllocate(ref, 0, 0, 0);
    for (int s = 0; s < strikes; s++) gdImageString(ref, font, s, 0, (unsigned char *)text.c_str(), set);
    std::string where;
    for (int v = 0; v < h && where.empty(); v++)
        for (int u = 0; u < w && where.empty(); u++) {
            if (x + u >= pic.width() || y + v >= pic.height()) continue;
            uint32_t want = gdImageGetPixel(ref, u, v) == set ? ink : paper;
            if (pic.rgb(x + u, y + v) != want) where = std::to_string(x + u) + "," + std::to_string(y + v);
        }
    gdImageDestroy(ref);
    return where;
}

// Pixels of a box that are neither `paper` nor `also`: where text was drawn.
int inked_except(const cgi::Picture &pic, int x0, int y0, int x1, int y1, uint32_t paper, uint32_t also)
{
    int n = 0;
    for (int y = y0; y <= y1; y++)
        for (int x = x0; x <= x1; x++) n += pic.rgb(x, y) != paper && pic.rgb(x, y) != also;
    return n;
}

int inked(const cgi::Picture &pic, int x0, int y0, int x1, int y1, uint32_t paper)
{
    return inked_except(pic, x0, y0, x1, y1, paper, paper);
}

TEST_F(Annotation, TitleBandTimeFollowsTheTitleLength)
{
    ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", {{10, 0, 0, 1.0f}}));
    ASSERT_TRUE(fixture::write_color_file("color_ta_e30.rgb", {{10, 0, 0, 1.0f}}));
    struct Row {
        const char *obs;
        int time_x;
        bool title;
    } rows[] = {{"RNEX", 130, true},  {"RNSN", 130, true}, {"RNSN1", 173, true}, {"RNSN2", 190, true},
                {"AREA", 130, true},  {"TW", 130, true},   {"RN15X", 147, true}, {"HSR", 130, true},
                {"rnsn", 130, false}};
    for (const Row &row : rows) {
        cgi::Picture pic = draw(std::string("size=400&obs=") + row.obs);
        ASSERT_TRUE(pic.ok()) << row.obs;
        // The time twice, one pixel apart, on the white band that spans the legend column too.
        EXPECT_EQ(text_mismatch(pic, gdFontGetLarge(), row.time_x, 1, "2024.01.15.12:35", kBlack, kWhite, 2), "")
            << row.obs;
        EXPECT_EQ(pic.rgb(pic.width() - 1, 0), kWhite) << row.obs;
        // The title in blue, antialiased, from x 5 (none for a product outside the table).
        int title_ink = inked(pic, 5, 2, 125, 19, kWhite);
        EXPECT_EQ(title_ink > 100, row.title) << row.obs << " " << title_ink;
        int pure_blue = title_ink - inked_except(pic, 5, 2, 125, 19, kWhite, cgi::rgb(0, 0, 255));
        EXPECT_EQ(pure_blue > 20, row.title) << row.obs;
    }
    // Without the font only the TrueType text is missing.
    ASSERT_EQ(std::remove(font_path()), 0);
    cgi::Picture pic = draw("size=400&obs=RNSN");
    EXPECT_EQ(inked(pic, 5, 2, 125, 19, kWhite), 0);
    EXPECT_EQ(text_mismatch(pic, gdFontGetLarge(), 130, 1, "2024.01.15.12:35", kBlack, kWhite, 2), "");
    EXPECT_EQ(pic.rgb(404, 440), kWhite);  // the legend's first box
}

TEST_F(Annotation, CategoricalLegendBoxesAndNames)
{
    cgi::Picture pic = draw("obs=RNEX&size=400");
    ASSERT_TRUE(pic.ok());
    ASSERT_EQ(pic.width(), 435);
    // dy = 480 / 4 = 120: boxes from the bottom at 380, 260, 140 and 20.
    const uint32_t boxes[] = {kWhite, cgi::rgb(51, 204, 51), cgi::rgb(51, 153, 255), cgi::rgb(57, 57, 209)};
    for (int i = 0; i < 4; i++) EXPECT_EQ(pic.rgb(404, 440 - 120 * i), boxes[i]) << "class " << i;
    EXPECT_EQ(pic.rgb(399, 300), cgi::rgb(30, 30, 30));  // frame, left edge
    EXPECT_EQ(pic.rgb(408, 300), cgi::rgb(30, 30, 30));  // frame, right edge
    EXPECT_EQ(pic.rgb(404, 499), cgi::rgb(30, 30, 30));  // frame, bottom
    // "AWS RDR" shows as AWS over RDR, baselines 35 and 49 in the top box; "없음" takes one line
    // with its baseline at 395.
    EXPECT_GT(inked(pic, 409, 26, 434, 35, kWhite), 10);
    EXPECT_GT(inked(pic, 409, 40, 434, 49, kWhite), 10);
    EXPECT_GT(inked(pic, 409, 386, 434, 395, kWhite), 10);
    EXPECT_EQ(inked(pic, 409, 399, 434, 499, kWhite), 0);
    // No unit for classes, so the band above the bar stays white.
    EXPECT_EQ(inked(pic, 403, 0, 434, 19, kWhite), 0);

    EXPECT_EQ(draw("obs=RNEX&size=400&legend=0").width(), 400);
}

TEST_F(Annotation, LevelLegendThresholdsAndUnits)
{
    ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", {{10, 0, 0, 0.5f}, {20, 0, 0, 4.9f}, {30, 0, 0, 5.0f},
                                                                {40, 0, 0, 10.0f}, {50, 0, 0, 1e30f}, {60, 0, 0, 0}}));
    cgi::Picture pic = draw("obs=HSR&size=400");
    ASSERT_TRUE(pic.ok());
    // dy = 480 / 6 = 80: level i spans rows 500 - 80 (i + 1) .. 500 - 80 i; the number of its
    // upper bound has its cell top at 500 - 80 (i + 1) - 5.
    for (int i = 0; i < 6; i++) EXPECT_EQ(pic.rgb(404, 460 - 80 * i), cgi::rgb(10 * (i + 1), 0, 0)) << "level " << i;
    // 1e30 prints as 1000000000000000019..., cut by the column's edge.
    const char *numbers[] = {"0.5", "4.9", "5", "10", "1000"};
    for (int i = 0; i < 5; i++)
        EXPECT_EQ(text_mismatch(pic, gdFontGetSmall(), 412, 500 - 80 * (i + 1) - 5, numbers[i], kBlack, kWhite), "")
            << numbers[i];
    // No number above the top level.
    EXPECT_EQ(inked(pic, 409, 21, 434, 90, kWhite), 0);
    EXPECT_EQ(text_mismatch(pic, gdFontGetLarge(), 403, 4, "mm/h", kBlack, kWhite), "");

    ASSERT_TRUE(fixture::write_color_file("color_ta_e30.rgb", {{10, 0, 0, -20.0f}, {20, 0, 0, -3.0f}}));
    pic = draw("obs=TW&size=400");
    // January slides -20 to -14, printed without decimals for TW.
    EXPECT_EQ(text_mismatch(pic, gdFontGetSmall(), 412, 500 - 240 - 5, "-14", kBlack, kWhite), "");
    EXPECT_EQ(text_mismatch(pic, gdFontGetLarge(), 403, 4, "C", kBlack, kWhite), "");
}

TEST_F(Annotation, NoColourLevelWithoutAColourFile)
{
    cgi::Picture pic = draw("obs=TW&size=400");
    ASSERT_TRUE(pic.ok());
    EXPECT_EQ(text_mismatch(pic, gdFontGetLarge(), 100, 100, "No Color Level", kBlack, kBackground), "");
    // No legend either: the column keeps the background below the band.
    EXPECT_EQ(pic.rgb(404, 300), kBackground);
    EXPECT_EQ(pic.rgb(420, 300), kBackground);
}

// Pink pixels of the picture against a line two pixels thick between two end pixels and 5-pixel
// dots on them, drawn by the graphics library; the first mismatch as "x,y", or empty.
std::string line_mismatch(const cgi::Picture &pic, int x1, int y1, int x2, int y2)
{
    gdImagePtr ref = gdImageCreate(pic.width(), pic.height());
    gdImageColorAllocate(ref, 0, 0, 0);
    int pink = gdImageColorAllocate(ref, 255, 0, 172);
    gdImageLine(ref, x1, y1, x2, y2, pink);
    gdImageLine(ref, x1, y1 - 1, x2, y2 - 1, pink);
    gdImageFilledArc(ref, x1, y1, 5, 5, 0, 360, pink, gdArc);
    gdImageFilledArc(ref, x2, y2, 5, 5, 0, 360, pink, gdArc);
    std::string where;
    for (int y = 0; y < pic.height() && where.empty(); y++)
        for (int x = 0; x < pic.width() && where.empty(); x++)
            if ((pic.rgb(x, y) == kPink) != (gdImageGetPixel(ref, x, y) == pink))
                where = std::to_string(x) + "," + std::to_string(y);
    gdImageDestroy(ref);
    return where;
}

TEST_F(Annotation, CrossSectionLineAndDots)
{
    struct Row {
        const char *query;
        int x1, y1, x2, y2;  // end pixels
    } rows[] = {
        // Column 200 x km / 100, row 260 - 240 x km / 120.
        {"x1=50&y1=60&x2=75&y2=90", 100, 140, 150, 80},
        // One step of eighths: corner (12.5, 30) km, magnification 2, whatever the rate.
        {"x1=25&y1=45&x2=50&y2=35&zoom_level=1&zoom_x=2000000&zoom_y=3000000", 50, 200, 150, 240},
        {"x1=25&y1=45&x2=50&y2=35&zoom_level=1&zoom_rate=3&zoom_x=2000000&zoom_y=3000000", 50, 200, 150, 240},
        // Rows scale by NJ / NY: 199 pixels make NJ 238 (GJ 258), so 110 km north is row
        // trunc(258 - 238 x 110 / 120) = 39, where the map layers' 258 - trunc(110 x 1.99) give 40,
        // and 60 km north is row 139, where trunc(258 - 60 x 1.99) would give 138.
        {"x1=50&y1=110&x2=75&y2=60&size=199", 99, 39, 149, 139},
    };
    for (const Row &row : rows) {
        cgi::Picture pic = draw(std::string("size=200&obs=RNSN&") + row.query);
        ASSERT_TRUE(pic.ok()) << row.query;
        EXPECT_EQ(line_mismatch(pic, row.x1, row.y1, row.x2, row.y2), "") << row.query;
    }
    // Without x1 above 0 there is no line, whatever the other ends say.
    cgi::Picture none = draw("size=200&obs=RNSN&x1=0&y1=60&x2=75&y2=60");
    EXPECT_EQ(inked(none, 1, 21, 198, 258, kBackground), 0);
}

}  // namespace
