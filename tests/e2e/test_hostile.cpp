// Hostile queries and damaged files: the program answers in time with "HTTP/1.0 200 OK" and a PNG
// (the picture, or the error picture with its code) and nothing on standard error, or with one of
// its two early exits. A 400-pixel picture of the 100 x 120 km map is 435 x 500, its error 435 x 420.
#include <gtest/gtest.h>

#include <cstdio>

#include "fixture_tree.h"
#include "picture_table.h"
#include "picture_writers.h"
#include "rdr_paths.h"
#include "station_writers.h"

namespace {

using namespace table;
const Expect kPicture = picture(435, 500);
Expect err(int code, int w = 435, int h = 420) { return error(code, w, h); }
const std::string kBase = "obs=RNSN&tm=202401151205&size=400", kHsr = "obs=HSR&tm=202401151205&size=400",
                  kTw = "obs=TW&tm=202401151205&size=400";

std::string grid_file() { return fixture::grid_path(2024, 1, 15, 12, 5); }
void grid(const fixture::Grid &g) { ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, 5)); }

// Every reference file of a request at 12:05, and five stations placed inside the map.
void tree()
{
    fixture::reset_root();
    ASSERT_TRUE(fixture::write_font());
    ASSERT_TRUE(fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:100:120:50:60", "A/B:100:120:50:60", "../x:100:120:50:60"}));
    grid(fixture::patterned_grid(100, 120));
    ASSERT_TRUE(fixture::write_both_color_files());
    ASSERT_TRUE(fixture::write_outlines("HR", 4, {{{5, 5}, {50, 30}, {95, 10}, {90, 115}, {5, 5}}}));
    ASSERT_TRUE(fixture::write_outlines("HR", 1, {{{0, 60}, {100, 60}}}));
    std::vector<fixture::Station> stations;
    for (int id = 1; id <= 5; id++) stations.push_back({{id}, 10.0f * id, 12.0f * id});
    ASSERT_TRUE(fixture::write_station_catalogues(stations, 50, 60));
}

std::string repeat(const std::string &s, int n) { return n > 0 ? s + repeat(s, n - 1) : ""; }

TEST(Hostile, Queries)
{
    const std::string nines(1000, '9');
    std::vector<Row> rows;
    for (const char *key : {"cmp", "qcd", "obs", "map", "x1", "y1", "x2", "y2", "color", "tm", "auto_man", "aws", "sms",
                            "zoom_level", "zoom_rate", "zoom_x", "zoom_y", "size", "legend", "gis", "griddisp", "rnexdisp", "dir"}) {
        std::string k = key;  // the base pairs come after and win, but for the keys they do not set
        rows.push_back({"over-long " + k, tree, k + "=" + nines + "&" + kBase, k == "map" ? err(1) : k == "legend" ? picture(400, 500) : kPicture});
    }
    std::vector<Row> more = {
        {"over-long key", tree, std::string(1000, 'k') + "=1&" + kBase, kPicture},
        {"product cut to 7 characters", tree, kBase + "&obs=RNSN" + std::string(1000, 'X'), kPicture},
        {"time text cut to 29 characters", tree, kBase + "&tm=202401151205" + std::string(1000, '7'), kPicture},
        {"size of 1000 digits", tree, kBase + "&size=" + nines, err(1, 635, 620)},
        {"zoom digits cut to 15", tree, kBase + "&zoom_level=1&zoom_x=" + std::string(1000, '5') + "&zoom_y=" + std::string(1000, '6'), kPicture},
        {"1000 ampersands", tree, repeat("&", 1000) + "size=400", err(2)},
        {"1000 characters without '='", tree, std::string(1000, 'a'), error(0, 35, 20)},
        {"one pair repeated to 1000 characters", tree, repeat("obs=RNSN&", 111) + kBase, kPicture},
        {"40 digits", tree, "obs=RNSN&size=400&tm=2024011512051111111111111111111111111111", kPicture},
        {"40 nines", tree, "obs=RNSN&size=400&tm=" + std::string(40, '9'), err(2)},
        {"negative year", tree, "obs=RNSN&size=400&tm=-20240115120", err(2)},
        {"minute not a number", tree, "obs=RNSN&size=400&tm=2024011512x5", err(2)},
        {"letters, signs and percent signs as zoom digits", tree, kBase + "&zoom_level=3&zoom_x=-1%30&zoom_y=+5abc", kPicture},
        {"lowest zoom rate", tree, kBase + "&zoom_level=2&zoom_rate=-2147483648&zoom_x=55&zoom_y=55", kPicture},
        {"rate 3 with digits beyond its steps", tree, kBase + "&zoom_level=1&zoom_rate=3&zoom_x=999999&zoom_y=999999", kPicture},
        {"size -1: the error picture of its size", tree, "obs=RNSN&tm=202401151205&size=-1", error(0, 34, 19)},
        {"lowest size", tree, "obs=RNSN&tm=202401151205&size=-2147483648", err(1, 635, 620)},
        {"one row too high for a canvas", tree, "obs=RNSN&tm=202401151205&size=6811", err(1, 6846, 6831)},
        {"size 0: the legend alone", tree, "obs=RNSN&tm=202401151205&size=0", picture(35, 20)},
        {"size with sign, blank and letters", tree, "obs=RNSN&tm=202401151205&size=+400&size= 400&size=400px", kPicture},
        {"hexadecimal size reads as 0", tree, "obs=RNSN&tm=202401151205&size=0x190&legend=0", err(1, 600, 620)},
        {"section far outside", tree, kBase + "&x1=2147483647&y1=-2147483648&x2=-5&y2=99999999", kPicture},
        {"stations without a zoom", tree, kBase + "&aws=2147483647", kPicture},
        {"every station mode zoomed in", tree, kBase + "&aws=10&zoom_level=5&zoom_x=3333&zoom_y=2222", kPicture},
        {"wind barbs, values and terrain, bilinear", tree, kHsr + "&aws=8&zoom_level=2&zoom_x=43&zoom_y=52&gis=T&griddisp=1", kPicture},
        {"stations named in a zoom of thirds", tree, kTw + "&aws=6&zoom_level=3&zoom_rate=3&zoom_x=55&zoom_y=44", kPicture},
        {"parent directory as map code, in the catalogue", tree, kBase + "&map=../x", kPicture},
        {"slash in map code, in the catalogue", tree, kBase + "&map=A/B", kPicture},
        {"unknown, lower-case, encoded and slashed map codes", tree, kBase + "&map=hr&map=%48%52&map=HR/", err(1)},
        {"no product at all", tree, "tm=202401151205&size=400", kPicture},
        {"product after a second '='", tree, "obs==RNSN&tm=202401151205&size=400", kPicture},
        {"empty pairs, keys and values", tree, "&&=&==&obs=&" + kBase + "&&", kPicture},
        {"keys without values", tree, "=obs&RNSN=&size=400", err(2)},
    };
    rows.insert(rows.end(), more.begin(), more.end());
    run_rows(rows, true);
}

// The gzip stream of the 100 x 120 patterned grid, as the grid writer makes it.
std::string gzipped_grid() { return fixture::gzip_bytes(fixture::encode_grid(fixture::patterned_grid(100, 120))); }
// The grid file as the first fraction x size + extra bytes of its gzip stream.
std::function<void()> cut(double fraction, long extra)
{
    return [=] {
        std::string z = gzipped_grid();
        ASSERT_TRUE(fixture::write_bytes(grid_file(), z.substr(0, (std::size_t)((long)(z.size() * fraction) + extra))));
    };
}
// A patterned grid of data_nx x data_ny cells whose header says nx x ny.
std::function<void()> sized(int nx, int ny, int data_nx = 10, int data_ny = 10)
{
    return [=] {
        fixture::Grid g = fixture::patterned_grid(data_nx, data_ny);
        g.head.nx = (short)nx;
        g.head.ny = (short)ny;
        grid(g);
    };
}
std::function<void()> bytes(const std::string &b) { return [b] { ASSERT_TRUE(fixture::write_bytes(grid_file(), b)); }; }
std::function<void()> placed(int dxy, int map_code) { return [=] { grid(fixture::patterned_grid(100, 120, dxy, map_code)); }; }

TEST(Hostile, DamagedGridFiles)
{
    run_rows({
        {"gzip cut after 101 bytes", tree, kHsr, kPicture, {}, cut(0, 101)},
        {"gzip cut at a quarter", tree, kBase, kPicture, {}, cut(0.25, 0)},
        {"gzip cut at half", tree, kTw, kPicture, {}, cut(0.5, 0)},
        {"gzip without its trailer", tree, kHsr, kPicture, {}, cut(1.0, -8)},
        {"cut to 100 bytes: too small to count", tree, kBase, err(2), {}, cut(0, 100)},
        {"deflate stream damaged in the middle", tree, kHsr, kPicture, {}, [] {
             std::string z = gzipped_grid();
             for (std::size_t k = z.size() / 3; k < z.size() / 3 + 40; k++) z[k] = (char)(z[k] ^ 0x5a);
             ASSERT_TRUE(fixture::write_bytes(grid_file(), z));
         }, 30000, true},
        {"two gzip members", tree, kHsr + "&griddisp=1", kPicture, {}, [] {
             std::string content = fixture::encode_grid(fixture::patterned_grid(100, 120));
             grid(fixture::make_grid(0, 0));
             ASSERT_TRUE(fixture::write_bytes(grid_file(), fixture::gzip_bytes(content.substr(0, 20000), 1) +
                                                               fixture::gzip_bytes(content.substr(20000), 9)));
         }},
        {"content never compressed", tree, kTw, kPicture, {}, bytes(fixture::encode_grid(fixture::patterned_grid(100, 120)))},
        {"gzip header with every flag set", tree, kBase, kPicture, {}, [] {
             std::string z = gzipped_grid();
             z[3] = (char)0xff;
             ASSERT_TRUE(fixture::write_bytes(grid_file(), z));
         }},
        {"not gzip: plain bytes whose sizes are too large", tree, kBase, err(2), {}, bytes(std::string(300, 'x'))},
        {"header of zeros and no blocks", tree, kBase, kPicture, {}, bytes(std::string(150, '\0'))},
        {"header sizes larger than the data", tree, kTw, kPicture, {}, sized(1000, 1200, 100, 120)},
        {"header sizes larger than the data, classes", tree, kBase, kPicture, {}, sized(32767, 100, 100, 120)},
        {"oversized header", tree, kTw, err(2), {}, sized(30000, 30000)},
        {"one row above the cell limit", tree, kBase, err(2), {}, sized(8001, 8000)},
        {"exactly at the cell limit", tree, kBase, kPicture, {}, sized(8000, 8000), 120000},
        {"no cells per row", tree, kBase, kPicture, {}, sized(0, 120)},
        {"no rows", tree, kHsr, kPicture, {}, sized(100, 0)},
        {"no rows, negative cells per row", tree, kTw, kExit1, {}, sized(-1, 0)},
        {"negative cells per row", tree, kBase, kExit1, {}, sized(-1, 120)},
        {"negative rows", tree, kTw, kExit1, {}, sized(100, -5)},
        {"both sizes at their lowest", tree, kHsr, kExit1, {}, sized(-32768, -32768)},
        {"cell size 0 and unknown placement", tree, kBase, kPicture, {}, placed(0, 99)},
        {"negative cell size", tree, kTw, kPicture, {}, placed(-1000, 2)},
        {"a cell size of one metre", tree, kHsr + "&griddisp=1", kPicture, {}, placed(1, 1)},
    }, true);
}

std::function<void()> catalogue(const std::vector<std::string> &lines) { return [lines] { ASSERT_TRUE(fixture::write_map_catalogue(lines)); }; }
std::function<void()> colour_text(const char *name, const std::string &text) { return [=] { ASSERT_TRUE(fixture::write_color_text(name, text)); }; }
std::function<void()> outline_text(const std::string &text)
{
    return [text] { ASSERT_TRUE(fixture::write_outline_text("HR", 4, text) && fixture::write_outline_text("HR", 1, text)); };
}

TEST(Hostile, DamagedReferenceFiles)
{
    const std::string long_digits(2000, '9'), terrain = kHsr + "&gis=T",
                      zoomed = kBase + "&zoom_level=2&zoom_x=3000000&zoom_y=3000000";
    run_rows({
        {"no catalogue", tree, kBase, kExit255, {}, [] { std::remove(fixture::path_of(map_catalogue_path).c_str()); }},
        {"2000-character number field", tree, kBase, err(1), {}, catalogue({"HR:" + long_digits + ":120:50:60"})},
        {"zero extent", tree, kBase, err(1), {}, catalogue({"HR:0:0:0:0"})},
        {"negative extent", tree, kBase, err(1), {}, catalogue({"HR:-100:-120:50:60"})},
        {"extent too tall for a canvas", tree, kBase, err(1), {}, catalogue({"HR:1:2147483647:0:0"})},
        {"origin at the int limits, stations and terrain", tree, kBase + "&aws=1&zoom_level=1&gis=T", kPicture, {}, [] {
             ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:-2147483648:2147483647"}));
             ASSERT_TRUE(fixture::write_terrain(fixture::Terrain()));
         }},
        {"origin at the int limits, grid placed by its map code", tree, kTw + "&gis=T", kPicture, {}, [] {
             ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:2147483647:-2147483648"}));
             ASSERT_TRUE(fixture::write_terrain(fixture::Terrain()));
             grid(fixture::patterned_grid(100, 120, 1000, 1));
         }},
        {"binary catalogue", tree, kBase, err(1), {}, catalogue({std::string("\0\xff\x01:HR:\0\n", 9)})},
        {"empty colour file", tree, kTw, kPicture, {}, colour_text("color_ta_e30.rgb", "")},
        {"binary colour file", tree, kTw, kPicture, {}, colour_text("color_ta_e30.rgb", std::string("\0\x01\xff 3 4 5\n", 10))},
        {"outline garbage", tree, zoomed, kPicture, {}, outline_text(std::string("\x89\0\xff\n\x01garbage 12 x\n", 18))},
        {"outline promising more points than it has", tree, zoomed, kPicture, {}, outline_text("99999999 0\n1 1\n2 2\n")},
        {"negative point count", tree, zoomed, kPicture, {}, outline_text("-5 0\n1 1\n2 0\n10 10\n90 90\n")},
        {"huge, infinite and undefined coordinates", tree, zoomed, kPicture, {}, outline_text("4 0\n1e30 1e30\nnan nan\ninf -inf\n50 50\n")},
        {"100000-character outline line", tree, zoomed, kPicture, {}, outline_text(std::string(100000, '5') + "\n2 0\n1 1\n")},
        {"highest point count and mode", tree, zoomed, kPicture, {}, outline_text("2147483647 2147483647\n1 1\n")},
        {"terrain file of 100 bytes", tree, terrain, kPicture, {}, [] { ASSERT_TRUE(fixture::write_terrain(fixture::Terrain(), 100)); }},
        {"empty terrain file", tree, terrain, kPicture, {}, [] { ASSERT_TRUE(fixture::write_terrain(fixture::Terrain(), 0)); }},
    });
}

// 3000 stations with names of 200 bytes of EUC-KR, all valid and placed inside the map.
void many_stations()
{
    std::vector<fixture::Station> stations;
    for (int id = 1; id <= 3000; id++)
        stations.push_back({{id, "SA", "GFR", repeat("\xb0\xa1", 100)}, 5.0f + (float)(id % 90), 5.0f + (float)(id / 90 % 110)});
    ASSERT_TRUE(fixture::write_station_catalogues(stations, 50, 60));
}

// Station 3 raining with wind at 12:05 in a minute file of `size` bytes (0xff elsewhere), and a
// QC file of 50 bytes of 0xff.
std::function<void()> minute_file(std::size_t size, bool qc_too)
{
    return [=] {
        AWS3_DATA r = fixture::minute_record(3, 2024, 1, 15, 12, 5);
        r.d[7] = 1, r.d[65] = 900, r.d[66] = 300;
        std::string block((std::size_t)(5 * AWS3_DATA_BLOCK + 3 * sizeof r), '\xff');
        block.append((const char *)&r, sizeof r);
        ASSERT_TRUE(fixture::write_bytes(fixture::path_of(aws3_min_path, 2024, 1, 15, 12), block.substr(0, std::min(size, block.size()))));
        std::string qc = qc_too ? std::string(50, '\xff') : std::string();
        ASSERT_TRUE(!qc_too || fixture::write_bytes(fixture::path_of(aws3_qcd_path, 2024, 1, 15, 12), qc));
    };
}

TEST(Hostile, DamagedStationFiles)
{
    const std::string names = kBase + "&aws=1&zoom_level=3", winds = kBase + "&aws=8&zoom_level=3", field(2000, 'S');
    run_rows({
        {"3000 stations with over-long names", tree, names, kPicture, {}, many_stations, 120000},
        {"3000 stations, values and barbs", tree, winds, kPicture, {}, many_stations, 120000},
        {"2000-character catalogue lines", tree, names, kPicture, {}, [] {
             std::string line = "1," + std::string(2000, '9') + ",2000010100," + std::string(2000, '\xb0') + "\n";
             ASSERT_TRUE(fixture::write_station_list_text(line + line));
         }},
        {"over-long fields everywhere", tree, names, kPicture, {}, [field] {
             ASSERT_TRUE(fixture::write_station_list_text("1,2100123123,2000010100," + field + ",-," + field + ",-," + field + ",-\n"));
             ASSERT_TRUE(fixture::write_sensor_list_text("1,-," + field + ",-,2100123123,2000010100,-\n"));
             ASSERT_TRUE(fixture::write_position_list_text("1,-,2100123123,2000010100," + field + "," + field + "," + field + "\n"));
         }},
        {"validity beyond the int range and positions not numbers", tree, names, kPicture, {}, [] {
             ASSERT_TRUE(fixture::write_station_list_text("1,99999999999999,-9999999999,\xb0\xa1,-,SA,-,GFR,-\n"));
             ASSERT_TRUE(fixture::write_sensor_list_text("1,-,RN,-,99999999999999,0,-\n"));
             ASSERT_TRUE(fixture::write_position_list_text("1,-,99999999999999,0,abc,1e999,nan\n1,-,9999999999,0,37.5,127,inf\n"));
         }},
        {"binary catalogues", tree, names, kPicture, {}, [] {
             std::string junk("\0\xff,\n,,,\r\n\x1e\0", 11);
             ASSERT_TRUE(fixture::write_station_list_text(junk) && fixture::write_sensor_list_text(junk) &&
                         fixture::write_position_list_text(junk));
         }},
        {"minute file shorter than the stations' slot", tree, winds, kPicture, {}, minute_file(5 * AWS3_DATA_BLOCK + 100, false)},
        {"minute file ending inside the minute block", tree, winds, kPicture, {}, minute_file(1000, true)},
        {"minute file of 0xff bytes, QC file shorter than its slot", tree, winds, kPicture, {}, minute_file(6 * AWS3_DATA_BLOCK, true)},
    });
}

}  // namespace
