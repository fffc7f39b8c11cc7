// The program end to end on small fixture trees: the HTTP framing, the error picture and its
// sizes, the search back, the canvas of the composition and the early exits.
#include <gd.h>
#include <gdfontl.h>
#include <gtest/gtest.h>

#include "cgi_run.h"
#include "fixture_tree.h"

namespace {

const uint32_t kErrorGrey = cgi::rgb(240, 240, 240);

class Spine : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        fixture::write_simple_catalogue(900, 1000, 450, 500);
    }

    void grid_at(int HH, int MI, int nx = 9, int ny = 10)
    {
        fixture::Grid g = fixture::make_grid(nx, ny);
        for (auto &c : g.code) c = 0x22;
        ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, HH, MI));
    }
};

// The error picture as it should look: grey, with the four lines at x = 50.
gdImagePtr expected_error_picture(int w, int h, const std::vector<std::pair<int, std::string>> &lines)
{
    gdImagePtr im = gdImageCreate(w, h);
    int bg = gdImageColorAllocate(im, 240, 240, 240);
    int black = gdImageColorAllocate(im, 0, 0, 0);
    gdImageFilledRectangle(im, 0, 0, w, h, bg);
    for (const auto &line : lines)
        gdImageString(im, gdFontGetLarge(), 50, line.first, (unsigned char *)line.second.c_str(), black);
    return im;
}

void expect_picture(const cgi::Answer &a, gdImagePtr expected)
{
    ASSERT_TRUE(a.framed) << a.out.substr(0, 80);
    cgi::Picture pic(a.png);
    ASSERT_TRUE(pic.ok());
    ASSERT_EQ(pic.width(), gdImageSX(expected));
    ASSERT_EQ(pic.height(), gdImageSY(expected));
    std::vector<std::string> diffs = cgi::differing_pixels(pic, expected);
    EXPECT_TRUE(diffs.empty()) << "first differing pixel " << diffs[0];
    gdImageDestroy(expected);
}

TEST_F(Spine, NoQueryStringGivesTheSmallErrorPicture)
{
    cgi::Answer a = cgi::run(nullptr);
    EXPECT_EQ(a.exit_status, 0);
    ASSERT_GE(a.out.size(), 45u);
    EXPECT_EQ(a.out.substr(0, 41), "HTTP/1.0 200 OK\nContent-type: image/png\n\n");
    EXPECT_EQ(a.out.substr(41, 4), "\x89PNG");
    cgi::Picture pic(a.png);
    ASSERT_TRUE(pic.ok());
    EXPECT_EQ(pic.width(), 35);
    EXPECT_EQ(pic.height(), 20);
    EXPECT_TRUE(pic.is_palette());
    EXPECT_EQ(pic.rgb(0, 0), kErrorGrey);
    EXPECT_TRUE(a.err.empty()) << a.err;
}

TEST_F(Spine, NoFileWithinTenCandidatesGivesTheErrorPictureOfItsSize)
{
    grid_at(11, 45);  // 50 minutes back from 12:35: not a candidate
    std::string tenth = fixture::grid_path(2024, 1, 15, 11, 50);
    cgi::Answer a = cgi::run("obs=RNSN&tm=202401151237&size=300&cmp=HSO&qcd=Q");
    expect_picture(a, expected_error_picture(335, 320, {
        {50, "TIME = 2024.01.15.11:45 / err = 2"},
        {70, "CMP = HSO / QCD = Q / OBS = RNSN"},
        {110, "SIZE = 300px"},
        {130, ("FILE = " + tenth + " (file is not found)").substr(0, 119)},
    }));

    a = cgi::run("obs=TW&tm=202401151237&size=300&legend=0");
    cgi::Picture pic(a.png);
    ASSERT_TRUE(pic.ok());
    EXPECT_EQ(pic.width(), 300);
    EXPECT_EQ(pic.height(), 320);
}

TEST_F(Spine, FindsTheFileTenMinutesBackAndSizesTheCanvasFromTheMap)
{
    grid_at(12, 25);
    for (const char *obs : {"RNSN", "HSR", "RN15X", "RNEX", "AREA", "TW"}) {
        cgi::Answer a = cgi::run((std::string("obs=") + obs + "&tm=202401151237&size=700").c_str());
        ASSERT_TRUE(a.framed) << obs;
        EXPECT_EQ(a.status_line, "HTTP/1.0 200 OK");
        EXPECT_EQ(a.content_type, "Content-type: image/png");
        cgi::Picture pic(a.png);
        ASSERT_TRUE(pic.ok()) << obs;
        // 900 x 1000 km at 700 pixels: 777 rows (truncated), 20 title rows, 35 legend columns.
        EXPECT_EQ(pic.width(), 735) << obs;
        EXPECT_EQ(pic.height(), 797) << obs;
        // The frame of the map area.
        EXPECT_EQ(pic.rgb(0, 20), cgi::rgb(30, 30, 30)) << obs;
        EXPECT_EQ(pic.rgb(699, 796), cgi::rgb(30, 30, 30)) << obs;
        EXPECT_EQ(pic.rgb(0, 400), cgi::rgb(30, 30, 30)) << obs;
    }
    cgi::Answer a = cgi::run("obs=RNSN&tm=202401151237&size=700&legend=2");
    EXPECT_EQ(cgi::Picture(a.png).width(), 700);
}

TEST_F(Spine, CategoricalPaletteStartsWithClassesThenFixedSlots)
{
    grid_at(12, 35);
    cgi::Picture pic(cgi::run("obs=RNEX&tm=202401151235&size=200").png);
    ASSERT_TRUE(pic.ok());
    ASSERT_GE(pic.colors(), 22);
    const uint32_t expected[22] = {
        cgi::rgb(255, 255, 255), cgi::rgb(51, 204, 51),   cgi::rgb(51, 153, 255), cgi::rgb(57, 57, 209),
        cgi::rgb(206, 229, 241), cgi::rgb(240, 240, 225), cgi::rgb(170, 170, 170), cgi::rgb(120, 120, 120),
        cgi::rgb(98, 169, 213),  cgi::rgb(180, 180, 180), cgi::rgb(255, 255, 255), cgi::rgb(30, 30, 30),
        cgi::rgb(12, 28, 236),   cgi::rgb(0, 0, 0),       cgi::rgb(240, 240, 240), cgi::rgb(255, 0, 0),
        cgi::rgb(0, 0, 255),     cgi::rgb(160, 160, 160), cgi::rgb(110, 110, 110), cgi::rgb(80, 80, 80),
        cgi::rgb(255, 0, 172),   cgi::rgb(57, 57, 209)};
    for (int k = 0; k < 22; k++) EXPECT_EQ(pic.palette_rgb(k), expected[k]) << "entry " << k;
}

// The table of hostile requests covers the sizes and exits; this is the one thing it cannot
// read back: a size the canvas cannot take is drawn at 600 pixels, still naming the requested size.
TEST_F(Spine, TheFallbackErrorPictureNamesTheRequestedSize)
{
    grid_at(12, 35);
    cgi::Answer a = cgi::run("obs=RNSN&tm=202401151235&size=99999999999&cmp=C");
    expect_picture(a, expected_error_picture(635, 620, {
        {50, "TIME = 2024.01.15.12:35 / err = 1"},
        {70, "CMP = C / QCD =  / OBS = RNSN"},
        {110, "SIZE = 2147483647px"},
        {130, ("FILE = " + fixture::grid_path(2024, 1, 15, 12, 35)).substr(0, 119)},
    }));
}

}  // namespace
