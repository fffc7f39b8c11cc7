// The fast program against its straightforward build (zlib, one read per grid, every row, the
// whole terrain): on a small tree of the benchmark's shape, every benchmark request and a few
// more give the same pixels and palette, also from grid files that are joined from several gzip
// members, cut, damaged or not compressed at all.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <set>

#include "../../bench/requests.h"
#include "cgi_run.h"
#include "fixture_tree.h"
#include "picture_compare.h"
#include "picture_writers.h"
#include "station_writers.h"

namespace {

uint32_t noise(uint32_t x)
{
    x = (x ^ (x >> 16)) * 0x7feb352dU;
    x = (x ^ (x >> 15)) * 0x846ca68bU;
    return x ^ (x >> 16);
}

// The benchmark's map at a coarser grid, 1152 x 1440 km in cells of 4 km: a rain band turning to
// snow in the north, a sprinkle of light rain, disagreeing stations and missing values.
fixture::Grid weather()
{
    fixture::Grid g = fixture::make_grid(289, 361, 4000, 1);
    for (int j = 0; j < 361; j++)
        for (int i = 0; i < 289; i++) {
            std::size_t k = g.at(i, j);
            uint32_t r = noise((uint32_t)k);
            double rain = 40.0 * std::exp(-std::pow((i - 0.6 * j - 20.0) / 25.0, 2)) * (0.5 + 0.5 * std::sin(i / 7.0)) +
                          (r % 100 < 3 ? 0.3 : 0.0);
            double tw = 8.0 - j * 0.04 + (r % 50) * 0.01;
            int radar = rain > 0.5 ? (tw < 0.0 ? 4 : tw < 1.5 ? 3 : 2) : (r % 40 == 0 ? 0 : 1);
            g.code[k] = (uint8_t)((r % 5 == 0 ? (int)(r >> 8) % 5 : radar) | radar << 4);
            g.area[k] = (uint8_t)(1 + (r >> 12) % 4);
            g.tw[k] = fixture::tw_raw(tw);
            g.hsr[k] = r % 97 == 0 ? (int16_t)-30000 : fixture::rain_raw(rain);
            g.rn15x[k] = r % 89 == 0 ? (int16_t)-30000 : fixture::rain_raw(rain * 0.7);
        }
    return g;
}

// Stations mostly inside the benchmark's zoomed views, terrain, and wandering outlines.
void write_tree()
{
    fixture::reset_root();
    fixture::install_font();
    ASSERT_TRUE(fixture::write_map_catalogue({"HR:1152:1440:560:840"}));
    std::vector<fixture::ColorClass> rain, temp;
    for (int k = 0; k < 14; k++) {
        rain.push_back({20 * k, 255 - 15 * k, 100, 0.1f + 3.0f * (float)k});
        temp.push_back({255 - 15 * k, 20 * k, 50, -10.0f + 2.0f * (float)k});
    }
    ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", rain) && fixture::write_color_file("color_ta_e30.rgb", temp));
    std::vector<fixture::Station> stations;
    std::vector<fixture::MinuteSlot> minutes;
    for (int s = 0; s < 120; s++) {
        stations.push_back({{s < 90 ? 90 + 2 * s : 400 + s}, 600.0f + (float)(noise(s * 3 + 1) % 300), 600.0f + (float)(noise(s * 5 + 2) % 600)});
        int id = stations.back().list.stn_id;
        for (int MI = 21; MI <= 35; MI++) {
            uint32_t r = noise(s * 100 + MI);
            minutes.push_back({MI, id, fixture::minute_record(id, 2024, 7, 15, 9, MI)});
            int16_t *d = minutes.back().record.d;
            d[7] = (int16_t)(r % 3 == 0), d[65] = (int16_t)(r % 3600), d[66] = (int16_t)(r % 200);
            d[67] = (int16_t)(r % 4 == 0 ? r % 50 : 0), d[68] = (int16_t)(r % 300);
        }
    }
    ASSERT_TRUE(fixture::write_station_catalogues(stations, 560, 840) && fixture::write_minute_hour(2024, 7, 15, 9, minutes));
    fixture::Terrain t;
    for (int r = 0; r < TOPO_ROWS; r++)
        for (int c = 0; c < TOPO_COLS; c++) t.at(r, c) = (int16_t)(noise(r / 9 * 131 + c / 7) % 9000);
    ASSERT_TRUE(fixture::write_terrain(t));
    for (int kind : {1, 4}) {
        std::vector<fixture::Polyline> lines;
        for (int l = 0; l < 30; l++) {
            lines.push_back({{(float)(500 + noise(l * 7 + kind) % 500), (float)(500 + noise(l * 11) % 800)}});
            for (int q = 1; q < 40; q++)
                lines.back().push_back({lines.back().back().first + (float)(noise(l * 13 + q) % 11) - 5.0f,
                                        lines.back().back().second + (float)(noise(l * 17 + q) % 11) - 5.0f});
        }
        ASSERT_TRUE(fixture::write_outlines("HR", kind, lines));
    }
}

// Both builds draw `query`: the pictures must match, and use at least `least` colours in the map
// area, so that two empty pictures cannot pass for two equal ones. `pixels_may_differ`: damaged
// data, where the inflaters may keep different amounts of what came before the damage.
void expect_same(const std::string &query, std::size_t least, bool pixels_may_differ = false)
{
    std::string q = query + "&" + bench::kDataTime;
    cgi::Answer fast = cgi::run(q.c_str()), plain = cgi::run(q.c_str(), 30000, "UTC0", RDR_PROGRAM_PLAIN);
    ASSERT_TRUE(fast.framed && plain.framed && fast.exit_status == 0) << q;
    std::string diff = cgi::picture_difference(plain.png, fast.png);
    EXPECT_TRUE(diff.empty() || (pixels_may_differ && diff.rfind("pixel", 0) == 0)) << q << ": " << diff;
    cgi::Picture pic(fast.png);
    std::set<int> used;
    for (int y = 20; y < pic.height(); y += 3)
        for (int x = 0; x < pic.width(); x += 3) used.insert(pic.index(x, y));
    EXPECT_GE(used.size(), least) << q;
}

std::string file_bytes(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(StraightforwardIdentity, BenchmarkRequestsNeighboursAndUnusualGridFiles)
{
    write_tree();
    const std::string path = fixture::grid_path(2024, 7, 15, 9, 30), bytes = fixture::encode_grid(weather());
    ASSERT_TRUE(fixture::write_gzip(path, bytes));
    for (const char *q : bench::kRequests) expect_same(q, 6);
    for (const char *q : {"obs=AREA&size=500&gis=T", "obs=RNSN1&size=450&zoom_level=1&zoom_x=3&zoom_y=6",
                          "obs=RNSN2&size=700&gis=T&zoom_level=2&zoom_rate=3&zoom_x=24&zoom_y=42",
                          "obs=HSR&size=640&rnexdisp=2&gis=T&griddisp=1", "obs=RN15X&size=300&rnexdisp=0",
                          "obs=TW&size=900&griddisp=1&aws=4&zoom_level=4&zoom_x=4444&zoom_y=5555",
                          "obs=RN15X&size=500&griddisp=1&zoom_level=1&zoom_x=8&zoom_y=8"})
        expect_same(q, 4);

    const char *requests[] = {"obs=RNSN&size=400", "obs=HSR&size=400&griddisp=1", "obs=RN15X&size=400"};
    ASSERT_TRUE(fixture::write_gzip(path + ".1", bytes.substr(0, 100000), 1) && fixture::write_gzip(path + ".2", bytes.substr(100000), 9));
    std::string joined = file_bytes(path + ".1") + file_bytes(path + ".2");
    std::string damaged = joined;
    for (std::size_t i = damaged.size() / 2; i < damaged.size(); i += 101) damaged[i] = (char)(damaged[i] ^ 0x5a);
    struct File { std::string bytes; std::size_t least; bool may_differ; } files[] = {
        {joined, 4, false}, {joined.substr(0, joined.size() * 2 / 3), 3, false}, {damaged, 1, true}, {bytes, 4, false}};
    for (const File &f : files) {
        ASSERT_TRUE(fixture::write_bytes(path, f.bytes));
        for (const char *q : requests) expect_same(q, f.least, f.may_differ);
    }
}

}  // namespace
