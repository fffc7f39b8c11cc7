// The probe end to end on a 100 x 120 km map whose 1 km grid (cell (i, j) at km (i, j)) stores its
// own position in every block: each row's answer is status 200 and one JSON object, in time, with
// the values the row expects.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "cgi_run.h"
#include "fixture_tree.h"
#include "rdr_paths.h"
#include "station_writers.h"

namespace {

// The value at `path` ("point.classes.RNSN.name", "line.samples.3.x") as compact JSON, or
// "(absent)"; the whole body must parse as one object.
std::string lookup(const std::string &body, const std::string &path)
{
    nlohmann::json j = nlohmann::json::parse(body, nullptr, false);
    if (j.is_discarded() || !j.is_object()) return "(not one JSON object)";
    std::string pointer = "/" + path;
    std::replace(pointer.begin(), pointer.end(), '.', '/');
    nlohmann::json::json_pointer at(pointer);
    return j.contains(at) ? j.at(at).dump() : "(absent)";
}

const char *const kTm = "&tm=202401151205";
constexpr int kStation = 123;

fixture::Grid positional_grid()
{
    fixture::Grid g = fixture::make_grid(100, 120);
    for (int j = 0; j < 120; j++)
        for (int i = 0; i < 100; i++) {
            std::size_t k = g.at(i, j);
            g.code[k] = (uint8_t)((i % 5) | (j % 5) << 4);
            g.area[k] = (uint8_t)((i + j) % 5);
            g.tw[k] = fixture::tw_raw(i + 0.01 * j);
            g.hsr[k] = (int16_t)(100 * i + j);
            g.rn15x[k] = (int16_t)(100 * j + i);
        }
    g.hsr[g.at(30, 40)] = fixture::rain_raw(-300.0);
    return g;
}

// The map, the grid of 12:05 and one raining station at (20, 30) km observed 12:00 .. 12:10.
void write_tree()
{
    fixture::reset_root();
    ASSERT_TRUE(fixture::write_map_catalogue({"HR:100:120:50:60", "ONE:100:1:50:60"}));
    for (int mi : {5, 30}) ASSERT_TRUE(fixture::write_grid(positional_grid(), 2024, 1, 15, 12, mi));
    ASSERT_TRUE(fixture::write_station_catalogues({{{kStation}, 20, 30}}, 50, 60));
    std::vector<fixture::MinuteSlot> slots;
    for (int mi = 0; mi <= 10; mi++) {
        fixture::MinuteSlot m{mi, kStation, fixture::minute_record(kStation, 2024, 1, 15, 12, mi)};
        m.record.d[7] = 1, m.record.d[67] = 12, m.record.d[65] = 1800, m.record.d[66] = 35;
        slots.push_back(m);
    }
    ASSERT_TRUE(fixture::write_minute_hour(2024, 1, 15, 12, slots));
}

std::function<void()> grid_damage(std::function<void(std::string &)> change)
{
    return [change] {
        std::string bytes = fixture::encode_grid(positional_grid());
        change(bytes);  // left uncompressed: the stream reads a file without the gzip magic as it stands
        ASSERT_TRUE(fixture::write_bytes(fixture::grid_path(2024, 1, 15, 12, 5), bytes));
    };
}

std::string lonlat_query(float x, float y)
{
    double lon, lat;
    fixture::lonlat_of_km(x, y, 50, 60, &lon, &lat);
    return "lon=" + std::to_string(lon) + "&lat=" + std::to_string(lat);  // six decimals: 0.1 m
}

struct Row {
    std::string what, query;
    std::vector<std::pair<std::string, std::string>> expect;  // path, value as compact JSON ("*": a text)
    std::function<void()> damage = nullptr;
};

TEST(Probe, AnswersByTable)
{
    const std::string tm = kTm, line = "x1=10&y1=20&x2=40&y2=60&n=11" + tm, big(1000, '9');
    const std::string rnsn2 = "{\"class\":3,\"name\":\"\xeb\x88\x88\xeb\xb9\x84\"}";  // 눈비
    const std::pair<std::string, std::string> error = {"error", "*"};
    const std::string bad4 = "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\"";  // four U+FFFD
    auto cut = grid_damage([](std::string &b) { b.resize(64 + 48000 + 2000); });  // HSR rows 0..9
    std::vector<Row> rows = {
        {"x.55 takes the next cell", "x=2.55&y=40" + tm, {{"point.cell", "[3,40]"}, {"point.hsr", "3.4"}}},
        {"x.54 keeps its cell", "x=2.54&y=40" + tm, {{"point.cell", "[2,40]"}, {"point.hsr", "2.4"}}},
        {"y.55 likewise", "x=5&y=39.55" + tm, {{"point.rn15x", "40.05"}}},
        {"codes, classes, names, values", "x=7&y=13" + tm,
         {{"point.pty_aws", "2"}, {"point.pty_rdr", "3"}, {"point.classes.RNSN2", rnsn2}, {"point.tw", "7.13"},
          {"point.classes.RNEX.name", "\"AWS RDR\""}, {"point.area", "0"}, {"point.classes.AREA", "null"}}},
        {"missing value", "x=30&y=40" + tm, {{"point.hsr", "null"}, {"point.rn15x", "40.3"}}},
        {"outside the map (inside the grid's rounding)", "x=-0.5&y=10" + tm, {{"point.cell", "null"}, {"point.tw", "null"}}},
        {"lon and lat", lonlat_query(20.3f, 30.3f) + tm, {{"point.cell", "[20,30]"}}},
        {"search back", "x=5&y=5&tm=202401151214", {{"tm", "\"202401151205\""}, {"tm_asked", "\"202401151210\""},
                                                    {"file", "\"RDR_SFC_PTY_202401151205.bin.gz\""}}},
        {"station", "x=23&y=34" + tm,
         {{"station.stn_id", "123"}, {"station.distance_km", "5.0"}, {"station.rain", "1"},
          {"station.name", "\"\xea\xb0\x80\xeb\x9e\x8c\""}, {"station.rn15x_x4", "4.8"}, {"station.wd", "180.0"}}},
        {"no station within 20 km", "x=41&y=30" + tm, {{"station", "null"}}},
        {"no minute at the grid's time", "x=23&y=34&tm=202401151230", {{"station.stn_id", "123"}, {"station.wd", "null"}}},
        {"a map one km tall", "x=3&y=0.5&map=ONE" + tm, {{"point.cell", "[3,0]"}}},
        {"line", line, {{"line.x1", "10.0"}, {"line.samples.10.y", "60.0"}, {"line.length_km", "50.0"},
                        {"line.samples.1.cell", "[13,24]"}, {"line.samples.1.hsr", "13.24"}, {"line.samples.5.d", "25.0"}}},
        {"n=0 becomes 2", line + "&n=0", {{"line.samples.1.x", "40.0"}, {"line.samples.2", "(absent)"}}},
        {"n=-5 becomes 2", line + "&n=-5", {{"line.n", "2"}}},
        {"n=99999 becomes 2000", line + "&n=99999", {{"line.samples.1999.x", "40.0"}, {"line.samples.2000", "(absent)"}}},
        {"over-long number", "x=" + big + "&y=5" + tm, {error}},
        {"over-long decimals are cut", "x=2.5" + std::string(1000, '0') + "&y=5" + tm, {{"point.cell", "[2,5]"}}},
        {"over-long key", big + "=1&x=1&y=1" + tm, {{"point.cell", "[1,1]"}}},
        {"lon garbage", "lon=abc&lat=37" + tm, {error}},
        {"lat beyond the pole", "lon=127&lat=95" + tm, {error}},
        {"lon not a number", "lon=nan&lat=inf" + tm, {error}},
        {"trailing letters", "x=3km&y=4" + tm, {error}},
        {"x without y", "x=3" + tm, {error}},
        {"no point", tm.substr(1), {error, {"tm_asked", "\"202401151205\""}}},
        {"empty query", "", {error}},
        {"no query string", "(unset)", {error, {"tm_asked", "(absent)"}}},
        {"point and line", "x=3&y=4&x1=1" + tm, {error}},
        {"x and lon", "x=3&y=4&lon=127" + tm, {error}},
        {"unknown map beyond U+10FFFF", "x=3&y=4&map=\xf4\x90\x80\x80" + tm, {error, {"map", bad4}}},
        {"unknown map of no UTF-8", "x=3&y=4&map=\xf5\x80\x80\x80" + tm, {error, {"map", bad4}}},
        {"no file in the candidates", "x=3&y=4&tm=202401151400", {error, {"tm_asked", "\"202401151400\""}}},
        {"missing catalogue", "x=3&y=4" + tm, {error}, [] { std::remove(fixture::path_of(map_catalogue_path).c_str()); }},
        {"cut file: rows given", "x=5&y=9" + tm, {{"point.hsr", "5.09"}}, cut},
        {"cut file: rows not given", "x=5&y=10" + tm, {{"point.hsr", "null"}, {"point.rn15x", "null"}}, cut},
        {"huge header", "x=5&y=5" + tm, {error}, grid_damage([](std::string &b) { b[20] = b[22] = 0x30, b[21] = b[23] = 0x75; })},
        {"no cells per row", "x=5&y=5" + tm, {error}, grid_damage([](std::string &b) { b[20] = b[21] = 0; })},
    };
    write_tree();
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what + " [" + row.query.substr(0, 80) + "]");
        if (row.damage) write_tree(), row.damage();
        const char *query = row.query == "(unset)" ? nullptr : row.query.c_str();
        cgi::Answer a = cgi::run(query, 10000, "UTC0", RDR_PROBE);
        ASSERT_FALSE(a.timed_out);
        EXPECT_EQ(std::to_string(a.exit_status) + "|" + a.status_line + "|" + a.content_type, "0|HTTP/1.0 200 OK|Content-type: application/json");
        for (const auto &[path, expected] : row.expect) {
            std::string got = lookup(a.png, path);
            EXPECT_TRUE(expected == "*" ? got[0] == '"' && got.size() > 2 : got == expected)
                << path << ": " << got << " where " << expected << " was expected, in " << a.png.substr(0, 400);
        }
        if (row.damage) write_tree();
    }
}

}  // namespace
