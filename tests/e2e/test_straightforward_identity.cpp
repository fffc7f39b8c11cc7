// The fast program against its straightforward build (RDR_STRAIGHTFORWARD: zlib, one read per
// grid, the whole terrain): on a small tree of the benchmark's shape, every benchmark request and
// a few more must give the same pixels and palette, also from grid files that are cut, made of
// several gzip members or not compressed at all.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "../../bench/requests.h"
#include "cgi_run.h"
#include "fixture_tree.h"
#include "picture_compare.h"
#include "picture_writers.h"
#include "station_writers.h"

namespace {

// The benchmark's map at a coarser grid: 1152 x 1440 km in cells of 4 km.
constexpr int kNx = 289, kNy = 361;

uint32_t noise(uint32_t x)
{
    x ^= x >> 16;
    x *= 0x7feb352dU;
    x ^= x >> 15;
    x *= 0x846ca68bU;
    return x ^ (x >> 16);
}

fixture::Grid weather()
{
    fixture::Grid g = fixture::make_grid(kNx, kNy, 4000, 1);
    for (int j = 0; j < kNy; j++) {
        for (int i = 0; i < kNx; i++) {
            std::size_t k = g.at(i, j);
            uint32_t r = noise((uint32_t)k);
            double band = std::exp(-std::pow((i - 0.6 * j - 20.0) / 25.0, 2));
            double rain = 40.0 * band * (0.5 + 0.5 * std::sin(i / 7.0)) + (r % 100 < 3 ? 0.3 : 0.0);
            double tw = 8.0 - j * 0.04 + (r % 50) * 0.01;
            int radar = rain > 0.5 ? (tw < 0.0 ? 4 : tw < 1.5 ? 3 : 2) : (r % 40 == 0 ? 0 : 1);
            int station = r % 5 == 0 ? (int)(r >> 8) % 5 : radar;
            g.code[k] = (uint8_t)(station | radar << 4);
            g.area[k] = (uint8_t)(1 + (r >> 12) % 4);
            g.tw[k] = fixture::tw_raw(tw);
            // A few missing values, in the file's own terms: far below -299.999 once scaled.
            g.hsr[k] = r % 97 == 0 ? (int16_t)-30000 : fixture::rain_raw(rain);
            g.rn15x[k] = r % 89 == 0 ? (int16_t)-30000 : fixture::rain_raw(rain * 0.7);
        }
    }
    return g;
}

void write_stations()
{
    // Numbers 90..299 show from zoom level 1 on; the rest only from level 3. Most stand inside the
    // zoomed views of the benchmark requests, around (600..900, 600..1200) km.
    std::vector<fixture::Station> stations;
    std::vector<fixture::MinuteSlot> minutes;
    for (int s = 0; s < 120; s++) {
        fixture::Station st;
        st.list.stn_id = s < 90 ? 90 + 2 * s : 400 + s;
        st.x = 600.0f + (float)(noise(s * 3 + 1) % 300);
        st.y = 600.0f + (float)(noise(s * 5 + 2) % 600);
        stations.push_back(st);
        for (int MI = 21; MI <= 35; MI++) {
            uint32_t r = noise(s * 100 + MI);
            fixture::MinuteSlot m{MI, st.list.stn_id, fixture::minute_record(st.list.stn_id, 2024, 7, 15, 9, MI)};
            m.record.d[7] = (int16_t)(r % 3 == 0);
            m.record.d[65] = (int16_t)(r % 3600);
            m.record.d[66] = (int16_t)(r % 200);
            m.record.d[67] = (int16_t)(r % 4 == 0 ? r % 50 : 0);
            m.record.d[68] = (int16_t)(r % 300);
            minutes.push_back(m);
        }
    }
    ASSERT_TRUE(fixture::write_station_catalogues(stations, 560, 840));
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, minutes));
}

void write_map_layers()
{
    fixture::Terrain t;
    for (int r = 0; r < TOPO_ROWS; r++)
        for (int c = 0; c < TOPO_COLS; c++) t.at(r, c) = (int16_t)(noise(r / 9 * 131 + c / 7) % 9000);
    ASSERT_TRUE(fixture::write_terrain(t));
    for (int kind : {1, 4}) {
        std::vector<fixture::Polyline> lines;
        for (int l = 0; l < 30; l++) {
            // Wandering lines, 5 km a step at most.
            fixture::Polyline p = {{(float)(500 + noise(l * 7 + kind) % 500), (float)(500 + noise(l * 11) % 800)}};
            for (int q = 1; q < 40; q++)
                p.push_back({p.back().first + (float)(noise(l * 13 + q) % 11) - 5.0f,
                             p.back().second + (float)(noise(l * 17 + q) % 11) - 5.0f});
            lines.push_back(p);
        }
        ASSERT_TRUE(fixture::write_outlines("HR", kind, lines));
    }
}

class StraightforwardIdentity : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        fixture::install_font();
        ASSERT_TRUE(fixture::write_map_catalogue({"HR:1152:1440:560:840"}));
        std::vector<fixture::ColorClass> rain, temp;
        for (int k = 0; k < 14; k++) {
            rain.push_back({20 * k, 255 - 15 * k, 100, 0.1f + 3.0f * (float)k});
            temp.push_back({255 - 15 * k, 20 * k, 50, -10.0f + 2.0f * (float)k});
        }
        ASSERT_TRUE(fixture::write_color_file("color_rn_echo.rgb", rain));
        ASSERT_TRUE(fixture::write_color_file("color_ta_e30.rgb", temp));
        write_map_layers();
        write_stations();
        bytes_ = fixture::encode_grid(weather());
    }

    // Both builds draw `query`; the pictures must match, and show more than a few colours so that
    // two empty pictures cannot pass for two equal ones.
    void expect_same(const std::string &query, std::size_t least_colours, const std::string &what)
    {
        std::string q = query + "&" + bench::kDataTime;
        cgi::Answer fast = cgi::run(q.c_str());
        cgi::Answer plain = cgi::run(q.c_str(), 30000, "UTC0", RDR_PROGRAM_PLAIN);
        ASSERT_TRUE(fast.framed && plain.framed) << what << ": " << q;
        EXPECT_EQ(fast.exit_status, 0) << what;
        EXPECT_EQ(cgi::picture_difference(plain.png, fast.png), "") << what << ": " << q;
        cgi::Picture pic(fast.png);
        ASSERT_TRUE(pic.ok()) << what;
        std::set<int> used;
        for (int y = 20; y < pic.height(); y += 3)
            for (int x = 0; x < pic.width(); x += 3) used.insert(pic.index(x, y));
        EXPECT_GE(used.size(), least_colours) << what << ": " << q;
    }

    std::string bytes_;
    const std::string path_ = fixture::grid_path(2024, 7, 15, 9, 30);
};

TEST_F(StraightforwardIdentity, BenchmarkRequestsAndTheirNeighbours)
{
    ASSERT_TRUE(fixture::write_gzip(path_, bytes_));
    for (const char *q : bench::kRequests) expect_same(q, 6, "benchmark request");
    for (const char *q : {"obs=AREA&size=500&gis=T", "obs=RNSN1&size=450&zoom_level=1&zoom_x=3&zoom_y=6",
                          "obs=RNSN2&size=700&gis=T&zoom_level=2&zoom_rate=3&zoom_x=24&zoom_y=42",
                          "obs=HSR&size=640&rnexdisp=2&gis=T&griddisp=1", "obs=RN15X&size=300&rnexdisp=0",
                          "obs=TW&size=900&griddisp=1&aws=4&zoom_level=4&zoom_x=4444&zoom_y=5555",
                          "obs=RN15X&size=500&griddisp=1&zoom_level=1&zoom_x=8&zoom_y=8"})
        expect_same(q, 4, "neighbour");
}

TEST_F(StraightforwardIdentity, DamagedAndUnusualGridFiles)
{
    const char *requests[] = {"obs=RNSN&size=400", "obs=HSR&size=400&griddisp=1", "obs=RN15X&size=400"};
    // Several gzip members one after the other read as one stream.
    std::string first = path_ + ".first", second = path_ + ".second";
    ASSERT_TRUE(fixture::write_gzip(first, bytes_.substr(0, 100000), 1));
    ASSERT_TRUE(fixture::write_gzip(second, bytes_.substr(100000), 9));
    std::string joined;
    for (const std::string &p : {first, second}) {
        std::ifstream in(p, std::ios::binary);
        joined += std::string(std::istreambuf_iterator<char>(in), {});
    }
    ASSERT_GT(joined.size(), 1000u);
    ASSERT_TRUE(fixture::write_bytes(path_, joined));
    for (const char *q : requests) expect_same(q, 4, "two gzip members");

    // A file cut in the middle of the rain block: what came before it is drawn, the rest is not.
    ASSERT_TRUE(fixture::write_bytes(path_, joined.substr(0, joined.size() * 2 / 3)));
    for (const char *q : requests) expect_same(q, 3, "cut file");

    // Damaged deflate data: the inflaters may keep different amounts of what came before the
    // damage (see the grid stream's unit test), but both answer with the picture's frame.
    std::string damaged = joined;
    for (std::size_t i = damaged.size() / 2; i < damaged.size(); i += 101) damaged[i] = (char)(damaged[i] ^ 0x5a);
    ASSERT_TRUE(fixture::write_bytes(path_, damaged));
    for (const char *q : requests) {
        std::string query = std::string(q) + "&" + bench::kDataTime;
        cgi::Answer fast = cgi::run(query.c_str());
        cgi::Answer plain = cgi::run(query.c_str(), 30000, "UTC0", RDR_PROGRAM_PLAIN);
        ASSERT_TRUE(fast.framed && plain.framed) << q;
        EXPECT_EQ(fast.exit_status, 0) << q;
        std::string diff = cgi::picture_difference(plain.png, fast.png);
        EXPECT_TRUE(diff.empty() || diff.rfind("pixel", 0) == 0) << q << ": " << diff;
    }

    // Content that was never compressed is read as it stands.
    ASSERT_TRUE(fixture::write_bytes(path_, bytes_));
    for (const char *q : requests) expect_same(q, 4, "uncompressed file");
}

}  // namespace
