// The loaders' contracts, as tables: the query and the search back for a grid file, the map
// catalogue, the grid reader, the monthly thresholds, the station catalogue and the stations'
// rain values.
#include <gd.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "cgiutil.h"
#include "color_table.h"
#include "fixture_tree.h"
#include "grid_map_inf.h"
#include "picture_writers.h"
#include "rdr_sfc_pty_get.h"
#include "seq_time.h"
#include "station_writers.h"
#include "user_input.h"
#include "view.h"

namespace {

int seq_of(int YY, int MM, int DD, int HH, int MI) { return time2seq(YY, MM, DD, HH, MI, 'm'); }
void place_grid_file(int HH, int MI, std::size_t bytes = 200)
{
    ASSERT_TRUE(fixture::write_bytes(fixture::grid_path(2024, 1, 15, HH, MI), std::string(bytes, 'x')));
}
int ask(const char *query)
{
    setenv("TZ", "UTC0", 1);
    setenv("QUERY_STRING", query, 1);
    return user_input();
}

TEST(UserInput, EveryKeyDefaultsAndPairsByteForByte)
{
    fixture::reset_root();
    place_grid_file(12, 35);
    ASSERT_EQ(ask("cmp=HSO&qcd=QCD&obs=RNSN1&map=EA&x1=10&y1=-20&x2=+30&y2=4x&color=C&tm=202401151237&aws=8&sms=3&"
                  "zoom_level=2&zoom_rate=3&zoom_x=5500000&zoom_y=4400000&size=600&legend=0&gis=ST&griddisp=1&"
                  "rnexdisp=2&dir=7&unknown=1"), 0);
    std::string texts = std::string(var.cmp) + "|" + var.qcd + "|" + var.obs + "|" + var.map + "|" + var.color + "|" +
                        var.zoom_x + "|" + var.zoom_y + "|" + var.gis + "|" + var.fname;
    EXPECT_EQ(texts, "HSO|QCD|RNSN1|EA|C|5500000|4400000|ST|" + fixture::grid_path(2024, 1, 15, 12, 35));
    std::vector<int> numbers = {var.x1, var.y1, var.x2, var.y2, var.aws, var.sms, var.zoom_level, var.zoom_rate,
                                var.size, var.legend, var.griddisp, var.rnexdisp, var.dir_mode, var.seq};
    EXPECT_EQ(numbers, (std::vector<int>{10, -20, 30, 4, 8, 3, 2, 3, 600, 0, 1, 2, 7, seq_of(2024, 1, 15, 12, 35)}));
    EXPECT_EQ(var.grid, 0.5f);
    EXPECT_EQ(product, &product_of("RNSN1"));

    // A second call starts from the defaults; empty values and bare keys are skipped, further '='
    // stay in the value, nothing is decoded, the last of two pairs wins, values are cut to their
    // field and pairs to 31 characters.
    ask("obs=RNEX&obs=&obs&a=b=c&map=XY=1&legend=0&legend=1&gis=T%54&=5&&tm=202401151235&zoom_y="
        "12345678901234567890&x1=-99999999999999999999&size=99999999999999999999");
    texts = std::string(var.cmp) + "|" + var.qcd + "|" + var.color + "|" + var.obs + "|" + var.map + "|" + var.gis +
            "|" + var.zoom_x + "|" + var.zoom_y;
    EXPECT_EQ(texts, "|||RNEX|XY=1|T%54||123456789012345");
    numbers = {var.legend, var.zoom_rate, var.rnexdisp, var.zoom_level, var.x1, var.size, var.auto_man};
    EXPECT_EQ(numbers, (std::vector<int>{1, 2, 1, 0, -2147483647 - 1, 2147483647, 0}));
    ask("obs=ABCDEFGHIJKL&cmp=1234567890123456789012345678901234567890");
    EXPECT_EQ(std::string(var.obs) + "|" + var.cmp, "ABCDEFG|1234567");

    unsetenv("QUERY_STRING");
    var.seq = 12345;
    EXPECT_EQ(user_input(), -1);  // no query string sets the defaults alone
    EXPECT_EQ(var.seq, 12345);
    EXPECT_STREQ(var.map, "HR");
    EXPECT_EQ(product, &product_of(""));
}

TEST(UserInput, TimeTextAndTheSearchBack)
{
    struct Row { const char *query; int file_at; int result, seq; } rows[] = {
        {"tm=202401151237", 1235, 0, seq_of(2024, 1, 15, 12, 35)},
        {"tm=2024011512", 1200, 0, seq_of(2024, 1, 15, 12, 0)},    // 10 characters: minute 0
        {"tm=20240115127", 1205, 0, seq_of(2024, 1, 15, 12, 5)},   // 11: the eleventh is the minute
        {"tm=202401151237&auto_man=m", 1235, 0, seq_of(2024, 1, 15, 12, 35)},
        {"tm=202401151237", 1225, 0, seq_of(2024, 1, 15, 12, 25)},  // found 10 minutes back
        {"tm=202401151235", 1150, 0, seq_of(2024, 1, 15, 11, 50)},  // the tenth candidate
        {"tm=202401151235", 1145, -1, seq_of(2024, 1, 15, 11, 45)}, // 50 minutes back: never tried
        {"tm=999901011200", 0, -1, seq_of(5900, 1, 1, 12, 0) - 50}, // years held to 1900..5900
        {"tm=000099011200", 0, -1, seq_of(1900, 13, 1, 12, 0) - 50},  // months to 0..13
        {"tm=19000000000000", 0, -1, seq_of(1900, 0, 0, 0, 0) / 5 * 5 - 50},
    };
    for (const Row &r : rows) {
        fixture::reset_root();
        if (r.file_at) place_grid_file(r.file_at / 100, r.file_at % 100);
        EXPECT_EQ(ask(r.query), r.result) << r.query;
        EXPECT_EQ(var.seq, r.seq) << r.query;
    }
    EXPECT_EQ(var.fname, fixture::grid_path(1900, 1, 1, 0, 0));  // before the calendar: its start
    // 100 bytes are too few; 101 are enough.
    fixture::reset_root();
    place_grid_file(12, 30, 100);
    place_grid_file(12, 20, 101);
    EXPECT_EQ(ask("tm=202401151237"), 0);
    EXPECT_EQ(var.seq, seq_of(2024, 1, 15, 12, 20));
    // Too short a time, or 'a' in auto_man: the current time, rounded down, then searched back.
    for (const char *q : {"tm=20240115", "tm=202401151237&auto_man=abc", ""}) {
        EXPECT_EQ(ask(q), -1) << q;
        EXPECT_EQ(var.seq, var.seq_now / 5 * 5 - 50) << q;
    }
}

TEST(MapCatalogue, FirstWholeCaseSensitiveMatchCutFieldsAndNoFile)
{
    fixture::reset_root();
    int e[4];
    EXPECT_EQ(grid_map_inf("HR", &e[0], &e[1], &e[2], &e[3]), MAP_NO_CATALOGUE);
    ASSERT_TRUE(fixture::write_map_catalogue({"#HR:1:1:1:1", "HR2:2:2:2:2", "hr:3:3:3:3", "HR:1000:1200:500:600\r",
                                              "HR:9:9:9:9", "EA: 50:+60:-7:8x:extra:fields", "SHORT:10",
                                              "LONGCODE12:5:5:5:5", "NUM:0000000000000000000123:1:1:1",
                                              std::string(2000, 'Z') + ":1:1:1:1", "ZZZZZZZ:4:4:4:4"}));
    struct Row { const char *map; std::vector<int> extent; } rows[] = {
        {"HR", {1000, 1200, 500, 600}},  // the carriage return ends the last number
        {"EA", {50, 60, -7, 8}},
        {"SHORT", {10, 0, 0, 0}},       // missing fields give 0
        {"XX", {-1, -1, -1, -1}},       // unknown: untouched
        {"LONGCOD", {5, 5, 5, 5}},      // fields cut to 7 and 15 characters
        {"NUM", {0, 1, 1, 1}},
        {"ZZZZZZZ", {0, 0, 0, 0}},      // the cut start of the 2000-character line matches first
    };
    for (const Row &r : rows) {
        for (int &v : e) v = -1;
        EXPECT_EQ(grid_map_inf(r.map, &e[0], &e[1], &e[2], &e[3]), 0);
        EXPECT_EQ(std::vector<int>(e, e + 4), r.extent) << r.map;
    }
}

class GridReader : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:50:60"}));
        std::memset(&var, 0, sizeof var);
        copy_text(var.map, sizeof var.map, "HR");
        copy_text(var.fname, sizeof var.fname, path_.c_str());
    }
    // Five cells a row, two rows: every code of the rule table's kind once.
    static fixture::Grid grid()
    {
        fixture::Grid g = fixture::make_grid(5, 2);
        const uint8_t codes[] = {0x21, 0x12, 0x40, 0x02, 0x10, 0x01, 0x22, 0x00, 0x11, 0x33};
        for (int k = 0; k < 10; k++) {
            g.code[k] = codes[k];
            g.area[k] = (uint8_t)(k + 1);
            g.tw[k] = fixture::tw_raw(-10.0 + k);
            g.hsr[k] = (int16_t)(150 * k);
            g.rn15x[k] = (int16_t)(-100 + 50 * k);
        }
        return g;
    }
    // The program's road: header, view, then the grids the view needs.
    static int read(const char *obs)
    {
        copy_text(var.obs, sizeof var.obs, obs);
        product = &product_of(var.obs);
        GRID_FILE file;
        int got = rdr_sfc_pty_open(&file);
        view_of_request(rdr_cmp_head);
        return got < 0 ? got : rdr_sfc_pty_read(&file, view_row_plan());
    }
    template <typename T>
    static std::vector<double> cells(T **grid)
    {
        std::vector<double> out;
        for (int k = 0; k < 10; k++) out.push_back(grid[k / 5][k % 5]);
        return out;
    }
    const std::string path_ = fixture::grid_path(2024, 1, 15, 12, 35);
};

// The blocks, rules and scaling of the products show in the pictures; what they cannot show:
// a rain/snow code without a rule, the values of a code the table does not know (read from the
// start of the code block), and the classes that come with a rain product, released with it.
TEST_F(GridReader, WhatThePicturesCannotShow)
{
    ASSERT_TRUE(fixture::write_grid(grid(), 2024, 1, 15, 12, 35));
    ASSERT_EQ(read("RNSN3"), 0);
    EXPECT_EQ(cells(pty), std::vector<double>(10, 0));
    ASSERT_EQ(read("rnsn"), 0);
    const double want[10] = {0x1221 * 0.01, 0x0240 * 0.01, 0x0110 * 0.01, 0x22 * 0.01, 0x3311 * 0.01, 5.13, 10.27, 15.41, 20.55, 25.69};
    for (int k = 0; k < 10; k++) EXPECT_NEAR(cells(data)[k], want[k], 1e-5) << k;
    ASSERT_EQ(read("RN15X"), 0);
    EXPECT_EQ(cells(pty), (std::vector<double>{2, 2, 4, 2, 1, 1, 2, 0, 1, 3}));
    EXPECT_EQ(cells(data)[0], -1.0);
    rdr_sfc_pty_release();
    EXPECT_TRUE(data == nullptr && pty == nullptr);
}

TEST_F(GridReader, CutStreamsMissingFilesAndImplausibleHeaders)
{
    std::string bytes = fixture::encode_grid(grid());
    ASSERT_TRUE(fixture::write_gzip(path_, bytes.substr(0, 64 + 7)));  // the header and 7 codes
    ASSERT_EQ(read("RNSN"), 0);
    EXPECT_EQ(cells(pty), (std::vector<double>{2, 2, 4, 2, 1, 1, 2, 0, 0, 0}));
    ASSERT_TRUE(fixture::write_gzip(path_, bytes.substr(0, 64 + 4 * 10 + 7)));  // 3.5 HSR values
    ASSERT_EQ(read("HSR"), 0);
    EXPECT_EQ(cells(data), (std::vector<double>{0, 1.5, 3, -999, -999, -999, -999, -999, -999, -999}));

    fixture::Grid big = fixture::make_grid(0, 0);  // above 64,000,000 cells: unreadable
    big.head.nx = 32000;
    big.head.ny = 2001;
    ASSERT_TRUE(fixture::write_grid(big, 2024, 1, 15, 12, 35));
    EXPECT_EQ(read("RNSN"), GRID_NOT_READ);
    ASSERT_TRUE(fixture::write_grid(fixture::make_grid(0, 7), 2024, 1, 15, 12, 35));
    EXPECT_EQ(read("TW"), 0);
    std::remove(path_.c_str());
    EXPECT_EQ(rdr_sfc_pty_get(), GRID_NOT_READ);
    std::remove(fixture::path_of(map_catalogue_path).c_str());
    EXPECT_EQ(rdr_sfc_pty_get(), GRID_NO_CATALOGUE);
}

// The wet-bulb thresholds slide so that the first bound is the month's lowest plus one.
TEST(ColorTable, MonthlyThresholds)
{
    fixture::reset_root();
    ASSERT_TRUE(fixture::write_color_file("color_ta_e30.rgb", {{1, 2, 3, -20.0f}, {4, 5, 6, -17.5f}}));
    const float lowest[12] = {-15, -15, -10, -5, 5, 5, 10, 10, 0, -5, -10, -15};
    copy_text(var.obs, sizeof var.obs, "TW");
    product = &product_of(var.obs);
    for (int MM = 1; MM <= 12; MM++) {
        var.seq = seq_of(2024, MM, 15, 12, 0);
        gdImagePtr im = gdImageCreate(4, 4);
        int color_lvl[COLOR_SLOTS];
        float data_lvl[COLOR_SLOTS];
        color_table(im, color_lvl, data_lvl);
        gdImageDestroy(im);
        ASSERT_EQ(var.num_color, 2);
        EXPECT_FLOAT_EQ(data_lvl[0], lowest[MM - 1] + 1) << "month " << MM;
        EXPECT_FLOAT_EQ(data_lvl[1], lowest[MM - 1] + 3.5f) << "month " << MM;
        EXPECT_FLOAT_EQ(data_lvl[SLOT_TOPO_LAST], 5000.0f);
    }
}

using fixture::PositionRow, fixture::SensorRow, fixture::StationListRow;

// Loads at 09:45 with the origin at (sx, 840) and lists the station numbers kept, in order.
std::vector<int> load_stations(int sx = 560)
{
    var.SX = sx;
    var.SY = 840;
    int n = aws_info_get(seq_of(2024, 7, 15, 9, 45));
    std::vector<int> ids;
    for (int k = 0; k < n; k++) ids.push_back(stn_data[k].stn_id);
    return ids;
}

// A rain sensor and a position at (127 E, 37.5 N) for every number from..to.
void sensors_and_positions(int from, int to)
{
    std::vector<SensorRow> sensors;
    std::vector<PositionRow> positions;
    for (int id = from; id <= to; id++) sensors.push_back({id}), positions.push_back({id});
    ASSERT_TRUE(fixture::write_sensor_list(sensors));
    ASSERT_TRUE(fixture::write_position_list(positions));
}

TEST(StationCatalogue, ValidityAgencyKindAndLineRules)
{
    fixture::reset_root();
    std::vector<StationListRow> rows = {
        {101}, {102}, {103}, {104}, {105, "SA", "TEV"}, {106, "SA", "TEV:GFR"}, {107, "SA", ""}, {108, "SA", "QXZ"}, {109},
        {110, "SZ"}, {111, "SO"}, {112, "PA"}, {113, "AB"}, {114, "SB"}, {115, "S"}, {116, "SZX"}, {117, "SA", "TEV:GFRXYZ"},
    };
    rows[1].tm2 = "202407150930";  // ends at 09:30: still the hour of 09:45
    rows[2].tm1 = "202407151000";
    rows[3].tm2 = "202407150859";
    rows[8].tm1 = "202407150959";  // starts in the hour of 09:45: valid
    std::string text = "stn_id,tm_ed,tm_st,name,-,kind,-,gov,-\n\n" + fixture::lines_of(rows, fixture::station_list_line);
    text += "118,210012312359,200001010000,N,-,SA,-,GFR\n";  // the agency keeps its line feed
    text += "130," + std::string(995, 'x') + fixture::station_list_line({131});  // the rest of a long line is dropped
    ASSERT_TRUE(fixture::write_station_list_text(text));
    sensors_and_positions(101, 131);
    EXPECT_EQ(load_stations(), (std::vector<int>{101, 102, 105, 106, 107, 109, 114, 115, 116, 117}));
    const STN_VAL &s = stn_data[0];
    EXPECT_EQ(std::string(s.stn_ko) + "|" + s.gov_cd + "|" + s.stn_sp, "\xb0\xa1\xb6\xf7|GFR|SA");
    EXPECT_NEAR(s.x, 560 + 86.2349, 0.001);  // (127 E, 37.5 N) from the origin at (560, 840)
    EXPECT_NEAR(s.y, 840 - 53.5529, 0.001);
    EXPECT_EQ(s.ht, 50.0f);
    EXPECT_EQ(std::vector<double>({(double)s.re, (double)s.rn_15x, (double)s.re_ok, (double)s.re_base, s.d}),
              std::vector<double>({-999, -999, 0, 0, -999}));
    EXPECT_STREQ(stn_data[9].gov_cd, "TEV:GFR");  // cut to its 8 bytes, then accepted
}

TEST(StationCatalogue, SensorsPositionsDuplicatesAndTheSquare)
{
    fixture::reset_root();
    std::vector<StationListRow> rows = {{201}, {202}, {201, "SA", "GFR", "B"}};
    for (int id = 203; id <= 213; id++) rows.push_back({id});
    ASSERT_TRUE(fixture::write_station_list(rows));
    std::vector<SensorRow> sensors = {{201}, {202}, {203, "TA"}, {204}, {205}, {206}, {207}, {208}, {209},
                                      {211, "RN", fixture::kValidFrom, "202407150859"}, {212}, {213}};
    // A code that ends its line never matches.
    ASSERT_TRUE(fixture::write_sensor_list_text(fixture::lines_of(sensors, fixture::sensor_line) + "210,-,RN\n"));
    std::vector<PositionRow> positions = {
        {201}, {202}, {203}, {204, 127.0, 37.5, 0.0}, {205, 127.0, 37.5, 50.0, "202407151000"}, {206, 100.0},
        {207, 126.0, 38.0}, {208}, {208, 129.0, 35.0}, {210}, {211}, {212, 125.9, 38.0}, {213, 140.0, 38.0}};
    ASSERT_TRUE(fixture::write_position_list_text(fixture::lines_of(positions, fixture::position_line) +
                                                  "209,-,210012312359,200001010000,37,127.0,50\n"));
    // The origin at (0, 840): 207 on it lies on the square's west edge and counts; 212 west of it,
    // 213 beyond its east edge at 1024 km.
    EXPECT_EQ(load_stations(0), (std::vector<int>{201, 202, 207, 208}));
    EXPECT_STREQ(stn_data[0].stn_ko, "\xb0\xa1\xb6\xf7");  // the first of the two 201 rows
    EXPECT_EQ(stn_data[2].x, 0.0f);
    EXPECT_NEAR(stn_data[3].x, 268.8191, 0.001);  // of two valid positions the last wins
    EXPECT_NEAR(stn_data[3].y, 840 - 320.4683, 0.001);
}

TEST(StationCatalogue, CapLongFieldsFarTimesAndMissingFiles)
{
    fixture::reset_root();
    std::vector<StationListRow> rows;
    for (int id = 1; id <= 2100; id++) rows.push_back({id});
    rows[0].name = "A";  // 40 bytes of Hangul after one or two letters: whole characters in 31 bytes
    rows[1].name = "AB";
    for (int k = 0; k < 20; k++) rows[0].name += "\xb0\xad", rows[1].name += "\xb0\xad";
    rows[2].kind = "SABCDEFGHIJKLMNOPQ";
    rows[3].tm2 = "99991231235959";  // beyond the int range: the latest time
    rows[4].tm1 = "9999123123";
    ASSERT_TRUE(fixture::write_station_list(rows));
    sensors_and_positions(1, 2100);
    std::vector<int> ids = load_stations();  // the first 2000 accepted; 5 is not valid yet
    ASSERT_EQ(ids.size(), 2000u);
    EXPECT_EQ(std::vector<int>({ids[3], ids[4], ids.back()}), std::vector<int>({4, 6, 2001}));
    EXPECT_EQ(std::strlen(stn_data[0].stn_ko) * 100 + std::strlen(stn_data[1].stn_ko), 3130u);
    EXPECT_STREQ(stn_data[2].stn_sp, "SABCDEF");
    std::remove(fixture::path_of(stn_loc_path).c_str());
    EXPECT_EQ(aws_info_get(0), -3);
    std::remove(fixture::path_of(stn_sensor_path).c_str());
    EXPECT_EQ(aws_info_get(0), -2);
    ASSERT_TRUE(fixture::write_sensor_list({{1}}));
    std::remove(fixture::path_of(stn_obs_path).c_str());
    EXPECT_EQ(aws_info_get(0), -2);
}

// Elements of stations at minutes around 09:57, whose 15 minutes 09:48 .. 10:02 span two hour
// files; `rejected` ones are flagged at QC level 3.
struct Obs { int stn, offset, element, value; };
void write_minutes(int seq, const std::vector<Obs> &obs, const std::vector<Obs> &rejected)
{
    std::map<int, std::map<std::pair<int, int>, AWS3_DATA>> data;
    std::map<int, std::vector<fixture::QcSlot>> qc;
    int YY, MM, DD, HH, MI;
    for (const Obs &o : obs) {
        seq2time(seq + o.offset, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
        auto it = data[HH].emplace(std::make_pair(MI, o.stn), fixture::minute_record(o.stn, YY, MM, DD, HH, MI)).first;
        it->second.d[o.element] = (int16_t)o.value;
    }
    for (const Obs &o : rejected) {
        seq2time(seq + o.offset, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
        qc[HH].push_back({MI, o.stn, {}});
        qc[HH].back().record.qc[3] = 1ull << o.element;
    }
    for (int hour : {9, 10}) {
        std::vector<fixture::MinuteSlot> slots;
        for (const auto &e : data[hour]) slots.push_back({e.first.first, e.first.second, e.second});
        ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, hour, slots));
        ASSERT_TRUE(fixture::write_qc_hour(2024, 7, 15, hour, qc[hour]));
    }
}

std::vector<Obs> minutes(int stn, int from, int to, int element, int value)
{
    std::vector<Obs> out;
    for (int m = from; m <= to; m++) out.push_back({stn, m, element, value});
    return out;
}

TEST(RainValues, RainStateValuesAndWindByMode)
{
    fixture::reset_root();
    AWS3_DATA_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
    AWS3_QCD_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
    const int seq = seq_of(2024, 7, 15, 9, 57);
    std::vector<Obs> obs;
    for (const auto &part : {minutes(1, -9, -5, 7, 0), minutes(2, -9, -5, 7, 1), minutes(3, -8, -5, 7, 1),
                             minutes(3, 0, 0, 67, 0), minutes(4, -9, 5, 7, 0), minutes(4, 5, 5, 67, 3),
                             minutes(5, 0, 0, 67, 12), minutes(5, 5, 5, 67, 0), minutes(6, -10, -5, 7, 1),
                             minutes(6, -5, -5, 67, 7)})
        obs.insert(obs.end(), part.begin(), part.end());
    obs.insert(obs.end(), {{7, 0, 68, 123}, {7, 0, 69, 45}, {7, 0, 65, 2700}, {7, 0, 66, 123}, {8, -1, 68, 50},
                           {8, 0, 65, 100}, {8, 0, 66, -999}});
    write_minutes(seq, obs, {{2, -7, 7, 0}});
    std::memset(stn_data, 0, sizeof stn_data);
    const int ids[] = {1, 2, 3, 4, 5, 6, 7, 8, 10000};
    for (int k = 0; k < 9; k++) stn_data[k].stn_id = ids[k];
    struct Want { int re, re_base, re_ok, rn_15x; float d3, d4, d5; } want[] = {
        {0, 5, 0, -999, -999, -999, -999},
        {-999, 4, 4, -999, -999, -999, -999},  // the rejected minute does not count
        {0, 4, 4, 0, 0, -999, -999},           // undecided, a zero amount: no rain
        {1, 15, 0, 3, 1.2f, -999, -999},       // the amount of the next hour beats 15 dry minutes
        {0, 0, 0, 0, 0, -999, -999},           // the later amount wins
        {1, 5, 5, -999, -999, -999, -999},     // an amount at seq - 5 is too early; its indicator counts
        {-999, 0, 0, -999, -999, 12.3f, 4.5f},
        {-999, 0, 0, -999, -999, -999, -999},  // element 68 only a minute early
        {-999, 0, 0, -999, -999, -999, -999},  // a number without a slot
    };
    for (int mode : {3, 4, 5, 8, 1}) {
        ASSERT_EQ(aws_rain_data_get(seq, mode, 9), 0);
        for (int k = 0; k < 9; k++) {
            const STN_VAL &s = stn_data[k];
            const Want &w = want[k];
            float d = (mode == 3 || mode == 8) ? w.d3 : mode == 4 ? w.d4 : mode == 5 ? w.d5 : -999;
            EXPECT_EQ(std::vector<double>({(double)s.re, (double)s.re_base, (double)s.re_ok, (double)s.rn_15x}),
                      std::vector<double>({(double)w.re, (double)w.re_base, (double)w.re_ok, (double)w.rn_15x}))
                << "station " << s.stn_id;
            EXPECT_FLOAT_EQ(s.d, d) << "station " << s.stn_id << " mode " << mode;
        }
    }
    // Wind at seq only; without a readable record at seq it stays as it was.
    EXPECT_EQ(std::vector<float>({stn_data[6].wd, stn_data[6].ws, stn_data[7].wd, stn_data[7].ws, stn_data[2].ws,
                                  stn_data[8].ws}),
              std::vector<float>({270.0f, 12.3f, -999, -999, -999, 0}));
    stn_data[0].d = 5.0f;
    EXPECT_EQ(aws_rain_data_get(seq, 3, 0) + aws_rain_data_get(seq, 3, -1), 0);  // no stations: nothing read
    EXPECT_EQ(stn_data[0].d, 5.0f);
}

}  // namespace
