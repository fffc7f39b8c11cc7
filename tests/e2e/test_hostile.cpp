// Hostile queries and damaged files, end to end: whatever comes, the program answers within a
// time limit with "HTTP/1.0 200 OK" and a PNG (the picture, or the error picture with its code)
// and nothing on standard error, or with exactly one of its two early exits. Each row states
// its answer; the sanitizer build runs the same table.
#include <gd.h>
#include <gdfontl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "cgi_run.h"
#include "fixture_tree.h"
#include "picture_writers.h"
#include "rdr_paths.h"
#include "station_writers.h"

namespace {

enum class Outcome { Picture, ErrorPicture, Exit255, Exit1 };

struct Expect {
    Outcome outcome;
    int width = 0;   // 0: not checked
    int height = 0;
    int code = 0;    // error code on the error picture; 0: not checked (too narrow to read)
};

// The map is 100 x 120 km, so a 400-pixel picture is 435 x 500 and its error picture 435 x 420.
const Expect kPicture = {Outcome::Picture, 435, 500};
Expect picture(int w, int h) { return {Outcome::Picture, w, h}; }
Expect error(int code, int w = 435, int h = 420) { return {Outcome::ErrorPicture, w, h, code}; }
const Expect kExit255 = {Outcome::Exit255};
const Expect kExit1 = {Outcome::Exit1};

struct Row {
    std::string what;
    std::string query;
    Expect expect;
    std::function<void()> damage = nullptr;  // applied to a fresh tree before the run
    int limit_ms = 30000;
};

const std::string kBase = "obs=RNSN&tm=202401151205&size=400";
const uint32_t kWhite = cgi::rgb(255, 255, 255);
const uint32_t kFrame = cgi::rgb(30, 30, 30);
const uint32_t kErrorGrey = cgi::rgb(240, 240, 240);

std::string grid_file() { return fixture::grid_path(2024, 1, 15, 12, 5); }

// Every reference file of a request at 12:05, without station observations.
void write_tree()
{
    fixture::reset_root();
    fixture::install_font();
    ASSERT_TRUE(fixture::write_map_catalogue(
        {"# code:nx:ny:sx:sy", "HR:100:120:50:60", "A/B:100:120:50:60", "../x:100:120:50:60"}));
    ASSERT_TRUE(fixture::write_grid(fixture::patterned_grid(100, 120), 2024, 1, 15, 12, 5));
    ASSERT_TRUE(fixture::write_both_color_files());
    ASSERT_TRUE(fixture::write_outlines("HR", 4, {{{5, 5}, {50, 30}, {95, 10}, {90, 115}, {5, 5}}}));
    ASSERT_TRUE(fixture::write_outlines("HR", 1, {{{0, 60}, {100, 60}}}));
}

// Whether the ink of `c` in the large font stands black at (x, y) of the picture.
bool shows_glyph(const cgi::Picture &pic, int x, int y, char c)
{
    gdImagePtr t = gdImageCreate(8, 16);
    gdImageColorAllocate(t, 255, 255, 255);
    int ink = gdImageColorAllocate(t, 0, 0, 0);
    gdImageChar(t, gdFontGetLarge(), 0, 0, c, ink);
    bool same = true;
    for (int j = 0; j < 16; j++)
        for (int i = 0; i < 8; i++) same = same && ((gdImageGetPixel(t, i, j) == ink) == (pic.rgb(x + i, y + j) == 0));
    gdImageDestroy(t);
    return same;
}

// The N of "TIME = YYYY.MM.DD.HH:MI / err = N", the 33rd character of the line at (50, 50).
int error_code(const cgi::Picture &pic)
{
    for (char d = '0'; d <= '9'; d++)
        if (shows_glyph(pic, 50 + 32 * 8, 50, d)) return d - '0';
    return -1;
}

void check(const Row &row)
{
    SCOPED_TRACE(row.what + " [" + row.query.substr(0, 120) + "]");
    cgi::Answer a = cgi::run(row.query.c_str(), row.limit_ms);
    ASSERT_FALSE(a.timed_out);
    const Expect &e = row.expect;
    if (e.outcome == Outcome::Exit255 || e.outcome == Outcome::Exit1) {
        EXPECT_EQ(a.exit_status, e.outcome == Outcome::Exit255 ? 255 : 1);
        EXPECT_EQ(a.out, "HTTP/1.0 200 OK\n");
        if (e.outcome == Outcome::Exit1) {
            EXPECT_NE(a.err.find("allocation failure"), std::string::npos) << a.err;
        }
        return;
    }
    EXPECT_EQ(a.exit_status, 0);
    EXPECT_TRUE(a.err.empty()) << a.err.substr(0, 2000);
    ASSERT_TRUE(a.framed) << a.out.substr(0, 80);
    EXPECT_EQ(a.status_line, "HTTP/1.0 200 OK");
    EXPECT_EQ(a.content_type, "Content-type: image/png");
    cgi::Picture pic(a.png);
    ASSERT_TRUE(pic.ok());
    if (e.width) {
        EXPECT_EQ(pic.width(), e.width);
    }
    if (e.height) {
        EXPECT_EQ(pic.height(), e.height);
    }
    if (e.outcome == Outcome::ErrorPicture) {
        EXPECT_EQ(pic.colors(), 2);
        EXPECT_EQ(pic.rgb(0, 0), kErrorGrey);
        if (e.code) {
            EXPECT_EQ(error_code(pic), e.code);
        }
    } else {
        // The title band, and the frame of the map area under it.
        EXPECT_EQ(pic.rgb(0, 0), kWhite);
        if (pic.height() > 20) {
            EXPECT_EQ(pic.rgb(0, 20), kFrame);
        }
    }
}

void check_all(const std::vector<Row> &rows)
{
    write_tree();
    for (const Row &row : rows) {
        if (row.damage) {
            write_tree();
            row.damage();
        }
        check(row);
    }
}

std::string repeat(const std::string &s, int n)
{
    std::string out;
    for (int k = 0; k < n; k++) out += s;
    return out;
}

TEST(Hostile, OverLongKeysAndValues)
{
    std::vector<Row> rows;
    const char *keys[] = {"cmp",      "qcd",  "obs",    "map",        "x1",        "y1",     "x2",     "y2",
                          "color",    "tm",   "auto_man", "aws",      "sms",       "zoom_level", "zoom_rate",
                          "zoom_x",   "zoom_y", "size", "legend",     "gis",       "griddisp", "rnexdisp", "dir"};
    const std::string nines(1000, '9');
    for (const char *key : keys) {
        // The base pairs come after and win, except for the keys they do not set.
        std::string k = key;
        Expect e = k == "map" ? error(1) : k == "legend" ? picture(400, 500) : kPicture;
        rows.push_back({"every key over-long: " + k, k + "=" + nines + "&" + kBase, e});
    }
    rows.push_back({"over-long key", std::string(1000, 'k') + "=1&" + kBase, kPicture});
    rows.push_back({"product cut to 7 characters", kBase + "&obs=RNSN" + std::string(1000, 'X'), kPicture});
    rows.push_back({"time text cut to 29 characters", kBase + "&tm=202401151205" + std::string(1000, '7'), kPicture});
    rows.push_back({"size of 1000 digits", kBase + "&size=" + nines, error(1, 635, 620)});
    rows.push_back({"map code cut to 7 characters", kBase + "&map=HR" + std::string(1000, 'x'), error(1)});
    rows.push_back({"zoom digits cut to 15", kBase + "&zoom_level=1&zoom_x=" + std::string(1000, '5') +
                                                 "&zoom_y=" + std::string(1000, '6'), kPicture});
    rows.push_back({"1000 ampersands", repeat("&", 1000) + "size=400", error(2)});
    rows.push_back({"1000 equals signs", repeat("=", 1000) + "&size=400", error(2)});
    rows.push_back({"1000 characters without '='", std::string(1000, 'a'), error(0, 35, 20)});
    rows.push_back({"one pair repeated to 1000 characters", repeat("obs=RNSN&", 111) + kBase, kPicture});
    check_all(rows);
}

TEST(Hostile, TimesZoomsAndSizes)
{
    check_all({
        {"40 digits", "obs=RNSN&size=400&tm=2024011512051111111111111111111111111111", kPicture},
        {"40 nines", "obs=RNSN&size=400&tm=" + std::string(40, '9'), error(2)},
        {"all zeros", "obs=RNSN&size=400&tm=000000000000", error(2)},
        {"negative year", "obs=RNSN&size=400&tm=-20240115120", error(2)},
        {"month 13, day 45, hour 12, minute 99", "obs=RNSN&size=400&tm=202413451299", error(2)},
        {"rounded down, then found 5 minutes back", "obs=RNSN&size=400&tm=202401151214", kPicture},
        {"minute not a number", "obs=RNSN&size=400&tm=2024011512x5", error(2)},
        {"dashes", "obs=RNSN&size=400&tm=2024-01-15", error(2)},
        {"8 characters: the current time", "obs=RNSN&size=400&tm=20240115", error(2)},
        {"letters as zoom digits", kBase + "&zoom_level=1&zoom_x=abc&zoom_y=abc", kPicture},
        {"signs and percent signs as zoom digits", kBase + "&zoom_level=3&zoom_x=-1%30&zoom_y=+5", kPicture},
        {"zoom level not a number", kBase + "&zoom_level=abc&zoom_x=55&zoom_y=55", kPicture},
        {"lowest zoom rate", kBase + "&zoom_level=2&zoom_rate=-2147483648&zoom_x=55&zoom_y=55", kPicture},
        {"one zoom string empty", kBase + "&zoom_level=1&zoom_x=5555555&zoom_y=", kPicture},
        {"rate 3 with digits beyond its steps", kBase + "&zoom_level=1&zoom_rate=3&zoom_x=999999&zoom_y=999999", kPicture},
        {"size -1: the error picture of its size", "obs=RNSN&tm=202401151205&size=-1", error(0, 34, 19)},
        {"lowest size", "obs=RNSN&tm=202401151205&size=-2147483648", error(1, 635, 620)},
        {"highest size", "obs=RNSN&tm=202401151205&size=2147483647", error(1, 635, 620)},
        {"one row too high for a canvas: a square error picture", "obs=RNSN&tm=202401151205&size=6811",
         error(1, 6846, 6831)},
        {"size 0: the legend alone", "obs=RNSN&tm=202401151205&size=0", picture(35, 20)},
        {"size with a plus sign", "obs=RNSN&tm=202401151205&size=+400", kPicture},
        {"size with a leading blank", "obs=RNSN&tm=202401151205&size= 400", kPicture},
        {"size with trailing letters", "obs=RNSN&tm=202401151205&size=400px", kPicture},
        {"hexadecimal size reads as 0", "obs=RNSN&tm=202401151205&size=0x190&legend=0", error(1, 600, 620)},
        {"cross-section line far outside", kBase + "&x1=2147483647&y1=-2147483648&x2=-5&y2=99999999", kPicture},
        {"stations without a zoom", kBase + "&aws=2147483647", kPicture},
    });
}

TEST(Hostile, MapsProductsAndPairs)
{
    check_all({
        {"parent directory as map code, in the catalogue", kBase + "&map=../x", kPicture},
        {"slash in map code, in the catalogue", kBase + "&map=A/B", kPicture},
        {"unknown map code", kBase + "&map=XX", error(1)},
        {"lower-case map code", kBase + "&map=hr", error(1)},
        {"percent-encoded map code", kBase + "&map=%48%52", error(1)},
        {"map code with a trailing slash", kBase + "&map=HR/", error(1)},
        {"empty map value keeps the default", kBase + "&map=", kPicture},
        {"lower-case product", "obs=rnsn&tm=202401151205&size=400", kPicture},
        {"unknown product", "obs=XYZ&tm=202401151205&size=400", kPicture},
        {"rain/snow product without a rule", "obs=RNSN3&tm=202401151205&size=400", kPicture},
        {"no product at all", "tm=202401151205&size=400", kPicture},
        {"product cut to 7 characters", "obs=TWTWTWTWTW&tm=202401151205&size=400", kPicture},
        {"product after a second '='", "obs==RNSN&tm=202401151205&size=400", kPicture},
        {"lone '='", "=", error(0, 35, 20)},
        {"lone '&'", "&", error(0, 35, 20)},
        {"empty pairs around every pair", "&&obs=RNSN&&tm=202401151205&&size=400&&", kPicture},
        {"pairs of empty keys and values", "=&=&==&obs=&" + kBase, kPicture},
        {"keys without values", "=obs&RNSN=&size=400", error(2)},
        {"empty query string", "", error(0, 35, 20)},
    });
}

std::string gzip_of_grid(const fixture::Grid &g)
{
    std::string path = grid_file();
    EXPECT_TRUE(fixture::write_gzip(path, fixture::encode_grid(g)));
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The 12:05 file as the first fraction x size + extra bytes of a gzip stream of the grid.
std::function<void()> gzip_cut(double fraction, long extra)
{
    return [fraction, extra] {
        std::string z = gzip_of_grid(fixture::patterned_grid(100, 120));
        ASSERT_TRUE(fixture::write_bytes(grid_file(), z.substr(0, (std::size_t)((long)(z.size() * fraction) + extra))));
    };
}

std::function<void()> grid_with_size(int nx, int ny, int data_nx = 100, int data_ny = 120)
{
    return [=] {
        fixture::Grid g = fixture::patterned_grid(data_nx, data_ny);
        g.head.nx = (short)nx;
        g.head.ny = (short)ny;
        ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, 5));
    };
}

std::function<void()> grid_bytes(const std::string &bytes)
{
    return [bytes] { ASSERT_TRUE(fixture::write_bytes(grid_file(), bytes)); };
}

TEST(Hostile, DamagedGridFiles)
{
    const std::string rnsn = kBase, hsr = "obs=HSR&tm=202401151205&size=400", tw = "obs=TW&tm=202401151205&size=400";
    check_all({
        {"gzip cut after 101 bytes", hsr, kPicture, gzip_cut(0, 101)},
        {"gzip cut at a quarter", rnsn, kPicture, gzip_cut(0.25, 0)},
        {"gzip cut at half", tw, kPicture, gzip_cut(0.5, 0)},
        {"gzip without its trailer", hsr, kPicture, gzip_cut(1.0, -8)},
        {"gzip without its last byte", rnsn, kPicture, gzip_cut(1.0, -1)},
        {"cut to 100 bytes: too small to count", rnsn, error(2), gzip_cut(0, 100)},
        {"deflate stream damaged in the middle", hsr, kPicture,
         [] {
             std::string z = gzip_of_grid(fixture::patterned_grid(100, 120));
             for (std::size_t k = z.size() / 3; k < z.size() / 3 + 40; k++) z[k] = (char)(z[k] ^ 0x5a);
             ASSERT_TRUE(fixture::write_bytes(grid_file(), z));
         }},
        {"gzip header damaged", rnsn, kPicture,
         [] {
             std::string z = gzip_of_grid(fixture::patterned_grid(100, 120));
             z[3] = (char)0xff;  // every flag set: extra field, name, comment
             ASSERT_TRUE(fixture::write_bytes(grid_file(), z));
         }},
        {"not gzip: plain bytes whose sizes are too large", rnsn, error(2), grid_bytes(std::string(300, 'x'))},
        {"header of zeros and no blocks", rnsn, kPicture, grid_bytes(std::string(150, '\0'))},
        {"header sizes larger than the data", tw, kPicture, grid_with_size(1000, 1200)},
        {"header sizes larger than the data, classes", rnsn, kPicture, grid_with_size(32767, 100)},
        {"oversized header", tw, error(2), grid_with_size(30000, 30000, 10, 10)},
        {"one row above the cell limit", rnsn, error(2), grid_with_size(8001, 8000, 10, 10)},
        {"exactly at the cell limit", rnsn, kPicture, grid_with_size(8000, 8000, 10, 10), 120000},
        {"no cells per row", rnsn, kPicture, grid_with_size(0, 120, 10, 10)},
        {"no rows", hsr, kPicture, grid_with_size(100, 0, 10, 10)},
        {"no rows, negative cells per row", tw, kExit1, grid_with_size(-1, 0, 10, 10)},
        {"negative cells per row", rnsn, kExit1, grid_with_size(-1, 120, 10, 10)},
        {"negative rows", tw, kExit1, grid_with_size(100, -5, 10, 10)},
        {"both sizes at their lowest", hsr, kExit1, grid_with_size(-32768, -32768, 10, 10)},
        {"cell size 0 and unknown placement", rnsn, kPicture,
         [] {
             fixture::Grid g = fixture::patterned_grid(100, 120, 0, 99);
             ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, 5));
         }},
        {"negative cell size", tw, kPicture,
         [] { ASSERT_TRUE(fixture::write_grid(fixture::patterned_grid(100, 120, -1000, 2), 2024, 1, 15, 12, 5)); }},
        {"a cell size of one metre", hsr + "&griddisp=1", kPicture,
         [] { ASSERT_TRUE(fixture::write_grid(fixture::patterned_grid(100, 120, 1, 1), 2024, 1, 15, 12, 5)); }},
    });
}

std::function<void()> catalogue(const std::vector<std::string> &lines)
{
    return [lines] { ASSERT_TRUE(fixture::write_map_catalogue(lines)); };
}

std::function<void()> colour_text(const std::string &name, const std::string &text)
{
    return [name, text] { ASSERT_TRUE(fixture::write_color_text(name, text)); };
}

std::function<void()> outline_text(const std::string &text)
{
    return [text] {
        ASSERT_TRUE(fixture::write_outline_text("HR", 4, text));
        ASSERT_TRUE(fixture::write_outline_text("HR", 1, text));
    };
}

TEST(Hostile, DamagedReferenceFiles)
{
    const std::string long_digits(2000, '9');
    std::string lines_130;
    for (int k = 0; k < 130; k++) lines_130 += std::to_string(k) + " " + std::to_string(255 - k) + " 9 " + std::to_string(k) + "\n";
    const std::string hsr = "obs=HSR&tm=202401151205&size=400&gis=T";
    const std::string zoomed = kBase + "&zoom_level=2&zoom_x=3000000&zoom_y=3000000";
    check_all({
        {"no catalogue", kBase, kExit255, [] { std::remove(fixture::path_of(map_catalogue_path).c_str()); }},
        {"2000-character line before the map", kBase, kPicture,
         catalogue({"XX:" + long_digits, "HR:100:120:50:60"})},
        {"2000-character code field", kBase, kPicture, catalogue({"HR" + std::string(2000, 'R') + ":1:1:1:1", "HR:100:120:50:60"})},
        {"2000-character number field: the rest of the piece is no field", kBase, error(1),
         catalogue({"HR:" + long_digits + ":120:50:60"})},
        {"zero extent", kBase, error(1), catalogue({"HR:0:0:0:0"})},
        {"negative extent", kBase, error(1), catalogue({"HR:-100:-120:50:60"})},
        {"extent too tall for a canvas", kBase, error(1), catalogue({"HR:1:2147483647:0:0"})},
        {"origin at the int limits, stations and terrain", kBase + "&aws=1&zoom_level=1&gis=T", kPicture,
         [] {
             ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:-2147483648:2147483647"}));
             ASSERT_TRUE(fixture::write_terrain(fixture::Terrain()));
         }},
        {"origin at the int limits, grid placed by its map code", "obs=TW&tm=202401151205&size=400&gis=T", kPicture,
         [] {
             ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:2147483647:-2147483648"}));
             ASSERT_TRUE(fixture::write_grid(fixture::patterned_grid(100, 120, 1000, 1), 2024, 1, 15, 12, 5));
             ASSERT_TRUE(fixture::write_terrain(fixture::Terrain()));
         }},
        {"line ends in CR LF", kBase, kPicture, catalogue({"HR:100:120:50:60\r"})},
        {"binary catalogue", kBase, error(1), catalogue({std::string("\0\xff\x01:HR:\0\n", 9)})},
        {"130 colour lines", hsr, kPicture, colour_text("color_rn_echo.rgb", lines_130)},
        {"malformed colour lines", hsr, kPicture,
         colour_text("color_rn_echo.rgb", "a b c d\n1 2\n\n255 255 255 nan\n0 0 0 1e40\n-5 300 2 1.0\n" +
                                              std::string(10000, '7') + "\n9 9 9 -inf\n")},
        {"one colour line", hsr + "&rnexdisp=1", kPicture, colour_text("color_rn_echo.rgb", "10 20 30 0.5\n")},
        {"empty colour file", "obs=TW&tm=202401151205&size=400", kPicture, colour_text("color_ta_e30.rgb", "")},
        {"binary colour file", "obs=TW&tm=202401151205&size=400", kPicture,
         colour_text("color_ta_e30.rgb", std::string("\0\x01\xff 3 4 5\n", 10))},
        {"outline garbage", zoomed, kPicture, outline_text(std::string("\x89\0\xff\n\x01garbage 12 x\n", 18))},
        {"outline header promising more points than the file has", zoomed, kPicture, outline_text("99999999 0\n1 1\n2 2\n")},
        {"negative point count", zoomed, kPicture, outline_text("-5 0\n1 1\n2 0\n10 10\n90 90\n")},
        {"huge, infinite and undefined coordinates", zoomed, kPicture,
         outline_text("4 0\n1e30 1e30\nnan nan\ninf -inf\n50 50\n")},
        {"100000-character outline line", zoomed, kPicture, outline_text(std::string(100000, '5') + "\n2 0\n1 1\n")},
        {"highest point count and mode", zoomed, kPicture, outline_text("2147483647 2147483647\n1 1\n")},
        {"terrain file of 100 bytes", hsr, kPicture,
         [] { ASSERT_TRUE(fixture::write_terrain(fixture::Terrain(), 100)); }},
        {"empty terrain file", hsr, kPicture, [] { ASSERT_TRUE(fixture::write_terrain(fixture::Terrain(), 0)); }},
    });
}

// A position inside the map for every station, by its number.
fixture::PositionRow position_of(int id)
{
    fixture::PositionRow p;
    p.stn_id = id;
    fixture::lonlat_of_km(5.0f + (float)(id % 90), 5.0f + (float)(id / 90 % 110), 50, 60, &p.lon, &p.lat);
    return p;
}

// 3000 stations with names of 200 bytes of EUC-KR, all valid and placed inside the map.
void many_stations()
{
    std::string list, sensors, positions;
    for (int id = 1; id <= 3000; id++) {
        fixture::StationListRow row;
        row.stn_id = id;
        row.name = repeat("\xb0\xa1", 100);
        list += fixture::station_list_line(row);
        sensors += fixture::sensor_line({id});
        positions += fixture::position_line(position_of(id));
    }
    ASSERT_TRUE(fixture::write_station_list_text(list));
    ASSERT_TRUE(fixture::write_sensor_list_text(sensors));
    ASSERT_TRUE(fixture::write_position_list_text(positions));
}

// Stations 1..5 listed and placed, with rain, wind and amounts at 12:05.
void few_stations()
{
    std::vector<fixture::MinuteSlot> slots;
    std::vector<fixture::StationListRow> list;
    std::vector<fixture::SensorRow> sensors;
    std::vector<fixture::PositionRow> positions;
    for (int id = 1; id <= 5; id++) {
        list.push_back({id});
        sensors.push_back({id});
        positions.push_back(position_of(10 * id));
        positions.back().stn_id = id;
    }
    ASSERT_TRUE(fixture::write_station_list(list));
    ASSERT_TRUE(fixture::write_sensor_list(sensors));
    ASSERT_TRUE(fixture::write_position_list(positions));
}

std::function<void()> minute_file_of(std::size_t bytes, bool qc_too)
{
    return [bytes, qc_too] {
        few_stations();
        AWS3_DATA r = fixture::minute_record(3, 2024, 1, 15, 12, 5);
        r.d[7] = 1;
        r.d[65] = 900;
        r.d[66] = 300;
        std::string block((std::size_t)(5 * AWS3_DATA_BLOCK + 3 * sizeof r), '\xff');
        block.append((const char *)&r, sizeof r);
        ASSERT_TRUE(fixture::write_bytes(fixture::path_of(aws3_min_path, 2024, 1, 15, 12),
                                         block.substr(0, std::min(bytes, block.size()))));
        if (qc_too) {
            ASSERT_TRUE(fixture::write_bytes(fixture::path_of(aws3_qcd_path, 2024, 1, 15, 12), std::string(50, '\xff')));
        }
    };
}

TEST(Hostile, DamagedStationFiles)
{
    const std::string names = kBase + "&aws=1&zoom_level=3", winds = kBase + "&aws=8&zoom_level=3";
    const std::string long_field(2000, 'S');
    check_all({
        {"3000 stations with over-long names", names, kPicture, many_stations, 120000},
        {"3000 stations, values and barbs", winds, kPicture, many_stations, 120000},
        {"2000-character catalogue lines", names, kPicture,
         [] {
             few_stations();
             std::string line = "1," + std::string(2000, '9') + ",2000010100," + std::string(2000, '\xb0') + "\n";
             ASSERT_TRUE(fixture::write_station_list_text(line + line));
         }},
        {"over-long fields everywhere", names, kPicture,
         [long_field] {
             ASSERT_TRUE(fixture::write_station_list_text("1,2100123123,2000010100," + long_field + ",-," + long_field +
                                                          ",-," + long_field + ",-\n"));
             ASSERT_TRUE(fixture::write_sensor_list_text("1,-," + long_field + ",-,2100123123,2000010100,-\n"));
             ASSERT_TRUE(fixture::write_position_list_text("1,-,2100123123,2000010100," + long_field + "," +
                                                           long_field + "," + long_field + "\n"));
         }},
        {"validity beyond the int range and positions not numbers", names, kPicture,
         [] {
             ASSERT_TRUE(fixture::write_station_list_text("1,99999999999999,-9999999999,\xb0\xa1,-,SA,-,GFR,-\n"));
             ASSERT_TRUE(fixture::write_sensor_list_text("1,-,RN,-,99999999999999,0,-\n"));
             ASSERT_TRUE(fixture::write_position_list_text("1,-,99999999999999,0,abc,1e999,nan\n1,-,9999999999,0,37.5,127,inf\n"));
         }},
        {"binary catalogues", names, kPicture,
         [] {
             std::string junk("\0\xff,\n,,,\r\n\x1e\0", 11);
             ASSERT_TRUE(fixture::write_station_list_text(junk));
             ASSERT_TRUE(fixture::write_sensor_list_text(junk));
             ASSERT_TRUE(fixture::write_position_list_text(junk));
         }},
        {"minute file shorter than the stations' slot", winds, kPicture, minute_file_of(5 * AWS3_DATA_BLOCK + 100, false)},
        {"minute file ending inside the minute block", winds, kPicture, minute_file_of(1000, true)},
        {"minute file of one byte", winds, kPicture, minute_file_of(1, true)},
        {"minute file of 0xff bytes, QC file shorter than its slot", winds, kPicture,
         minute_file_of(6 * AWS3_DATA_BLOCK, true)},
    });
}

}  // namespace
