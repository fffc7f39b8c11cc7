// The station overlay end to end: the real program on a map of 1000 x 1000 km with its
// projection origin in the middle, drawn 500 pixels wide (half a pixel per km, image rows
// 0..519). A station at (x, y) km lands on column trunc(x / 2) and row 520 - trunc(y / 2).
// Nothing but the overlay is drawn in the map area here, so the rest is background.
#include <gd.h>
#include <gdfontl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "cgi_run.h"
#include "fixture_tree.h"
#include "station_writers.h"

namespace {

const uint32_t kBackground = cgi::rgb(180, 180, 180);
const uint32_t kBlack = cgi::rgb(0, 0, 0);
const uint32_t kDisc = cgi::rgb(240, 240, 240);
const uint32_t kRed = cgi::rgb(255, 0, 0);
const uint32_t kBlue = cgi::rgb(0, 0, 255);

constexpr int GJ = 520;

class Stations : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        fixture::install_font();
        ASSERT_TRUE(fixture::write_map_catalogue({"HR:1000:1000:500:500"}));
        ASSERT_TRUE(fixture::write_grid(fixture::make_grid(10, 10), 2024, 7, 15, 9, 55));
    }

    // A station whose pixel is (X, Y): (2X + 1) km is half a pixel into column X, so the
    // round trip through longitude and latitude cannot move it to a neighbour.
    static fixture::Station at_pixel(int id, int X, int Y)
    {
        fixture::Station s;
        s.list.stn_id = id;
        s.x = 2.0f * X + 1;
        s.y = 2.0f * (GJ - Y) + 1;
        return s;
    }

    // Elements of stations at the picture's time, 09:55.
    static void observe(const std::vector<std::vector<int>> &rows)  // {station, element, value, ...}
    {
        std::vector<fixture::MinuteSlot> slots;
        for (const auto &row : rows) {
            fixture::MinuteSlot s{55, row[0], fixture::minute_record(row[0], 2024, 7, 15, 9, 55)};
            for (std::size_t k = 1; k + 1 < row.size(); k += 2) s.record.d[row[k]] = (int16_t)row[k + 1];
            slots.push_back(s);
        }
        ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, slots));
    }

    static cgi::Picture picture(const std::string &keys)
    {
        cgi::Answer a = cgi::run(("obs=RNSN&tm=202407150955&size=500&legend=0&" + keys).c_str());
        EXPECT_TRUE(a.framed) << keys << " " << a.err;
        EXPECT_TRUE(a.err.empty()) << a.err;
        return cgi::Picture(a.png);
    }
};

// The disc: 8 pixels across in light grey, its centre 5 across in the rain-state colour. A
// centre of background colour means no disc at all.
void expect_disc(const cgi::Picture &pic, int X, int Y, uint32_t centre, const std::string &what)
{
    uint32_t rim = centre == kBackground ? kBackground : kDisc;
    for (int dx : {-2, 0, 2}) EXPECT_EQ(pic.rgb(X + dx, Y), centre) << what;
    for (auto d : {std::make_pair(4, 0), std::make_pair(-4, 0), std::make_pair(0, 4), std::make_pair(0, -4)})
        EXPECT_EQ(pic.rgb(X + d.first, Y + d.second), rim) << what;
    EXPECT_EQ(pic.rgb(X + 5, Y), kBackground) << what;
}

// Every inked pixel of `text` in the large built-in font with its top-left corner at (x, y) is
// black, and the text's box has no other black below the disc.
void expect_text(const cgi::Picture &pic, int x, int y, const char *text, const std::string &what)
{
    int w = 8 * (int)std::strlen(text);
    gdImagePtr t = gdImageCreate(w, 16);
    gdImageColorAllocate(t, 255, 255, 255);
    int ink = gdImageColorAllocate(t, 0, 0, 0);
    gdImageString(t, gdFontGetLarge(), 0, 0, (unsigned char *)text, ink);
    int inked = 0;
    for (int j = 0; j < 16; j++)
        for (int i = 0; i < w; i++) {
            bool on = gdImageGetPixel(t, i, j) == ink;
            inked += on;
            if (!on && j < 2) continue;  // the two top rows cross the disc
            EXPECT_EQ(pic.rgb(x + i, y + j) == kBlack, on) << what << " at " << i << "," << j;
        }
    gdImageDestroy(t);
    EXPECT_GT(inked, 10) << what;
}

// Pixels of the label area under a station's disc that are not background.
int label_pixels(const cgi::Picture &pic, int X, int Y)
{
    int n = 0;
    for (int y = Y + 5; y <= Y + 18; y++)
        for (int x = X - 10; x <= X + 40; x++) n += pic.rgb(x, y) != kBackground;
    return n;
}

TEST_F(Stations, ZoomLevelsOneAndTwoShowOnlyNumbers90To299)
{
    const int ids[] = {47, 90, 108, 299, 300};
    std::vector<fixture::Station> list;
    for (int k = 0; k < 5; k++) list.push_back(at_pixel(ids[k], 100 + 50 * k, 300));
    ASSERT_TRUE(fixture::write_station_catalogues(list, 500, 500));

    for (int level : {1, 2, 3}) {
        cgi::Picture pic = picture("aws=11&zoom_level=" + std::to_string(level));
        ASSERT_TRUE(pic.ok());
        for (int k = 0; k < 5; k++) {
            std::string what = "station " + std::to_string(ids[k]) + " level " + std::to_string(level);
            bool shown = level >= 3 || (ids[k] >= 90 && ids[k] <= 299);
            expect_disc(pic, 100 + 50 * k, 300, shown ? kRed : kBackground, what);  // unknown: red
        }
    }
    for (const char *keys : {"aws=0&zoom_level=3", "aws=11&zoom_level=0", "aws=-1&zoom_level=3"}) {
        expect_disc(picture(keys), 200, 300, kBackground, keys);
    }
}

// One zoom step of rate 2 with digits 5 and 5: the view starts at (500, 500) km, twice enlarged,
// so (x, y) km lands on column trunc(x - 500) and row 520 - trunc(y - 500).
TEST_F(Stations, ZoomedPositionsAndTheViewBorder)
{
    ASSERT_TRUE(fixture::write_station_list({{101}, {102}, {103}, {104}}));
    ASSERT_TRUE(fixture::write_sensor_list({{101}, {102}, {103}, {104}}));
    fixture::PositionRow p101{101}, p104{104};
    fixture::lonlat_of_km(625.5f, 625.5f, 500, 500, &p101.lon, &p101.lat);
    fixture::lonlat_of_km(300.5f, 700.5f, 500, 500, &p104.lon, &p104.lat);
    // On the central meridian x is 500 km exactly: 102 lands on the view's west edge. 103 lies
    // 1.698 km east of it at y 554.037 km (PROJ's cs2cs), column 1 and row 466.
    ASSERT_TRUE(fixture::write_position_list({p101, {102, 126.0, 39.0}, {103, 126.02, 38.5}, p104}));

    cgi::Picture pic = picture("aws=11&zoom_level=3&zoom_rate=2&zoom_x=50&zoom_y=50");
    ASSERT_TRUE(pic.ok());
    expect_disc(pic, 125, 395, kRed, "101 at (625.5, 625.5) km");
    // 102 would centre on column 0, row 412 (y 608.02 km); its centre would reach column 2.
    EXPECT_EQ(pic.rgb(2, 412), kBackground);
    EXPECT_EQ(pic.rgb(3, 412), kBackground);
    EXPECT_EQ(pic.rgb(1, 466), kRed);
    EXPECT_EQ(pic.rgb(3, 466), kRed);
    EXPECT_EQ(pic.rgb(5, 466), kDisc);

    // Unzoomed, 101 sits at (312, 208) and 104 (west of the zoomed view) at (150, 170).
    pic = picture("aws=11&zoom_level=3");
    expect_disc(pic, 312, 208, kRed, "101 unzoomed");
    expect_disc(pic, 150, 170, kRed, "104 unzoomed");
}

TEST_F(Stations, DiscsBarbsAndValueLabels)
{
    ASSERT_TRUE(fixture::write_station_catalogues(
        {at_pixel(201, 100, 200), at_pixel(202, 300, 200), at_pixel(203, 100, 400), at_pixel(204, 300, 400),
         at_pixel(205, 400, 400)},
        500, 500));
    observe({{201, 67, 12, 65, 0, 66, 123},  // raining 12 tenths a quarter hour: 4.8 mm/h
             {202, 67, 0},                   // dry: "0"
             {204, 65, 0, 66, 2},            // 0.2 m/s: a barb
             {205, 65, 0, 66, 1}});          // 0.1 m/s: none

    cgi::Picture pic = picture("aws=8&zoom_level=3");
    ASSERT_TRUE(pic.ok());
    expect_disc(pic, 100, 200, kBlue, "201");
    expect_disc(pic, 300, 200, kRed, "202");
    expect_disc(pic, 100, 400, kRed, "203");
    expect_text(pic, 90, 203, "4.8", "201");
    expect_text(pic, 297, 203, "0", "202");
    EXPECT_EQ(label_pixels(pic, 100, 400), 0);  // no value, no label

    // Wind from the north at 12.3 m/s: a 30-pixel shaft straight up, then barbs of 20, 20 and
    // 9.2 pixels from 30, 25 and 20 pixels up, turned 60 degrees clockwise. At the float angle
    // sin is 0.8660254 and cos 0.49999997, so a 20-pixel barb ends 17 right and 10 up.
    for (int up = 5; up <= 30; up++) EXPECT_EQ(pic.rgb(100, 200 - up), kBlack) << up;
    EXPECT_EQ(pic.rgb(100, 169), kBackground);
    EXPECT_EQ(pic.rgb(117, 160), kBlack);  // first barb's end
    EXPECT_EQ(pic.rgb(117, 165), kBlack);  // second barb's end
    EXPECT_EQ(pic.rgb(107, 175), kBlack);  // third: 7.97 right, 4.6 up of (100, 180)
    EXPECT_EQ(pic.rgb(117, 170), kBackground);  // a full third barb would end here
    EXPECT_EQ(pic.rgb(118, 164), kBackground);  // the barbs end where they should, no longer
    EXPECT_EQ(pic.rgb(108, 174), kBackground);
    EXPECT_EQ(pic.rgb(100, 200 - 20), kBlack);
    EXPECT_EQ(pic.rgb(300, 380), kBlack);       // 204: the 0.2 stored as float is above 0.2
    EXPECT_EQ(pic.rgb(400, 380), kBackground);  // 205
    EXPECT_EQ(pic.rgb(300, 180), kBackground);  // 202 has no wind

    // Mode 3 shows the same value without barbs.
    pic = picture("aws=3&zoom_level=3");
    expect_text(pic, 90, 203, "4.8", "201 mode 3");
    EXPECT_EQ(pic.rgb(100, 180), kBackground);
    EXPECT_EQ(pic.rgb(300, 380), kBackground);
}

TEST_F(Stations, LabelsByMode)
{
    fixture::Station long_name = at_pixel(202, 300, 200);
    for (int k = 0; k < 15; k++) long_name.list.name += "\xb0\xad";  // 17 syllables, cut to 9
    ASSERT_TRUE(fixture::write_station_catalogues({at_pixel(201, 100, 200), long_name}, 500, 500));
    observe({{201, 67, 12, 68, 77, 69, 55, 65, 0, 66, 123}});
    struct Row {
        int mode;
        const char *text;  // nullptr: the name; "": no label
        bool barb;
    } rows[] = {{1, nullptr, false}, {2, "201", false}, {3, "4.8", false}, {4, "7.7", false}, {5, "5.5", false},
                {6, nullptr, true},  {7, "201", true},  {8, "4.8", true},  {9, "7.7", true},  {10, "5.5", true},
                {11, "", true},      {12, "", true}};
    for (const Row &r : rows) {
        std::string what = "mode " + std::to_string(r.mode);
        cgi::Picture pic = picture("aws=" + std::to_string(r.mode) + "&zoom_level=3");
        ASSERT_TRUE(pic.ok()) << what;
        expect_disc(pic, 100, 200, kBlue, what);
        EXPECT_EQ(pic.rgb(100, 180) == kBlack, r.barb) << what;
        if (r.text == nullptr) {
            EXPECT_GT(label_pixels(pic, 100, 200), 20) << what;  // "서울" in the TrueType font
            EXPECT_GT(label_pixels(pic, 300, 200), 20) << what;
        }
        else if (r.text[0] == '\0')
            EXPECT_EQ(label_pixels(pic, 100, 200), 0) << what;
        else
            expect_text(pic, 90, 203, r.text, what);
    }
}

}  // namespace
