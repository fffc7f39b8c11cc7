// The sample tree of one time (09:30), written by the generator into the test root and read back
// by the program's own readers: map extents, grids of every product, colour classes, stations,
// their rain and missing values, terrain and outlines against known places.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "aws3_io.h"
#include "cgiutil.h"
#include "file_ptr.h"
#include "fixture_tree.h"
#include "le_bytes.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"
#include "sample_maps.h"
#include "sample_minutes.h"
#include "sample_stations.h"
#include "seq_time.h"
#include "station_writers.h"
#include "topo_grid.h"

namespace {

const int kSeq = time2seq(2024, 7, 15, 9, 30, 'm');

class SampleTree : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        fixture::reset_root();
        std::string command = std::string(RDR_SAMPLE_GENERATOR) + " --time 202407150930 > /dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }

    void SetUp() override
    {
        std::memset(&var, 0, sizeof var);
        copy_text(var.map, sizeof var.map, "HR");
        ASSERT_EQ(grid_map_inf(var.map, &var.NX, &var.NY, &var.SX, &var.SY), 0);
        var.seq = kSeq;
        copy_text(var.fname, sizeof var.fname, fixture::grid_path(2024, 7, 15, 9, 30).c_str());
    }

    // Cells of the grid of `obs`, as classes or as values.
    static std::map<int, long> class_counts(const char *obs)
    {
        copy_text(var.obs, sizeof var.obs, obs);
        product = &product_of(var.obs);
        EXPECT_EQ(rdr_sfc_pty_get(), 0);
        std::map<int, long> counts;
        for (int j = 0; j < rdr_cmp_head.ny; j++)
            for (int i = 0; i < rdr_cmp_head.nx; i++) counts[pty[j][i]]++;
        return counts;
    }

    struct Range {
        float min = 1e9f, max = -1e9f;
        long missing = 0, cells = 0;
    };
    static Range value_range(const char *obs)
    {
        copy_text(var.obs, sizeof var.obs, obs);
        product = &product_of(var.obs);
        EXPECT_EQ(rdr_sfc_pty_get(), 0);
        Range r;
        for (int j = 0; j < rdr_cmp_head.ny; j++)
            for (int i = 0; i < rdr_cmp_head.nx; i++, r.cells++) {
                float v = data[j][i];
                if (v <= -299.999f) {
                    r.missing++;
                    continue;
                }
                r.min = std::min(r.min, v);
                r.max = std::max(r.max, v);
            }
        return r;
    }

    // The grid value of `obs` at a point of the whole map, km.
    static float value_at(const char *obs, float x, float y)
    {
        int i = (int)std::lround(x * 2), j = (int)std::lround(y * 2);
        EXPECT_STREQ(var.obs, obs);
        return i >= 0 && i < rdr_cmp_head.nx && j >= 0 && j < rdr_cmp_head.ny ? data[j][i] : -999.0f;
    }
};

TEST_F(SampleTree, MapCatalogueGivesTheWholeGridAndTheSmallerMaps)
{
    EXPECT_EQ(var.NX, 1152);
    EXPECT_EQ(var.NY, 1440);
    EXPECT_EQ(var.SX, 560);
    EXPECT_EQ(var.SY, 840);
    for (const sample::SampleMap &m : sample::sample_maps()) {
        int nx = 0, ny = 0, sx = 0, sy = 0;
        grid_map_inf(m.code, &nx, &ny, &sx, &sy);
        EXPECT_EQ(nx, m.nx) << m.code;
        EXPECT_EQ(ny, m.ny) << m.code;
        // Every map's origin is the same geographic point: the whole map's origin.
        EXPECT_EQ(m.x0 + sx, 560) << m.code;
        EXPECT_EQ(m.y0 + sy, 840) << m.code;
        EXPECT_LE(m.x0 + nx, 1152) << m.code;
        EXPECT_LE(m.y0 + ny, 1440) << m.code;
    }
}

TEST_F(SampleTree, GridsHoldEveryKindOfCellInPlausibleMeasure)
{
    std::map<int, long> rnsn = class_counts("RNSN");
    EXPECT_EQ(rdr_cmp_head.nx, 2305);
    EXPECT_EQ(rdr_cmp_head.ny, 2881);
    EXPECT_EQ(rdr_cmp_head.dxy, 500);
    EXPECT_EQ(rdr_cmp_head.map_code, 1);
    const long cells = 2305L * 2881L;
    EXPECT_GT(rnsn[0], cells / 10) << "beyond the radars' reach";
    EXPECT_GT(rnsn[1], cells / 5) << "no rain";
    EXPECT_GT(rnsn[2], cells / 50) << "rain";
    EXPECT_GT(rnsn[3], 1000) << "sleet";
    EXPECT_GT(rnsn[4], cells / 500) << "snow";
    EXPECT_EQ(rnsn.size(), 5u);

    // Stations and radar disagree in places: each alone, and both.
    std::map<int, long> rnex = class_counts("RNEX");
    for (int c = 1; c <= 4; c++) EXPECT_GT(rnex[c], 2000) << "existence class " << c;
    std::map<int, long> area = class_counts("AREA");
    for (int c = 1; c <= 4; c++) EXPECT_GT(area[c], 1000) << "area class " << c;

    Range tw = value_range("TW");
    EXPECT_EQ(tw.missing, 0);
    EXPECT_LT(tw.min, -2.0f);
    EXPECT_GT(tw.min, -40.0f);
    EXPECT_GT(tw.max, 25.0f);
    EXPECT_LT(tw.max, 32.0f);
    // Radar reaches about half the grid; the stations only South Korea.
    const struct {
        const char *obs;
        double seen_from, seen_to;
    } kRain[] = {{"HSR", 0.3, 0.7}, {"RN15X", 0.04, 0.15}};
    for (const auto &r : kRain) {
        Range rain = value_range(r.obs);
        double seen = 1.0 - (double)rain.missing / rain.cells;
        EXPECT_GT(seen, r.seen_from) << r.obs;
        EXPECT_LT(seen, r.seen_to) << r.obs;
        EXPECT_GE(rain.min, 0.0f) << r.obs;
        EXPECT_GT(rain.max, 20.0f) << r.obs;
        EXPECT_LT(rain.max, 320.0f) << r.obs;
    }
}

TEST_F(SampleTree, ColourFilesGiveAscendingClasses)
{
    gdImagePtr im = gdImageCreate(10, 10);
    int color_lvl[COLOR_SLOTS];
    float data_lvl[COLOR_SLOTS];
    copy_text(var.obs, sizeof var.obs, "HSR");
    product = &product_of(var.obs);
    color_table(im, color_lvl, data_lvl);
    EXPECT_EQ(var.num_color, 20);
    EXPECT_FLOAT_EQ(data_lvl[0], 0.1f);
    EXPECT_GE(data_lvl[var.num_color - 1], 100.0f);
    for (int k = 1; k < var.num_color; k++) EXPECT_GT(data_lvl[k], data_lvl[k - 1]) << k;
    gdImageDestroy(im);

    im = gdImageCreate(10, 10);
    copy_text(var.obs, sizeof var.obs, "TW");
    product = &product_of(var.obs);
    color_table(im, color_lvl, data_lvl);
    EXPECT_EQ(var.num_color, 20);
    EXPECT_FLOAT_EQ(data_lvl[0], 11.0f) << "July: the month's minimum 10 plus one";
    EXPECT_FLOAT_EQ(data_lvl[19], 30.0f);
    gdImageDestroy(im);
}

TEST_F(SampleTree, StationsLoadInsideTheMapWithRainUnderTheBand)
{
    int n = aws_info_get(kSeq);
    ASSERT_GT(n, 600);
    ASSERT_LT(n, 800);
    int seoul = -1;
    for (int k = 0; k < n; k++) {
        const STN_VAL &s = stn_data[k];
        EXPECT_TRUE(s.x > 0 && s.x < var.NX && s.y > 0 && s.y < var.NY) << s.stn_id;
        EXPECT_GT(std::strlen(s.stn_ko), 3u) << s.stn_id;
        EXPECT_TRUE(std::strcmp(s.gov_cd, "GFR") == 0 || std::strcmp(s.gov_cd, "TEV") == 0) << s.stn_id;
        if (s.stn_id == 108) seoul = k;
    }
    ASSERT_GE(seoul, 0);
    EXPECT_STREQ(stn_data[seoul].stn_ko, "\xbc\xad\xbf\xef");

    aws_rain_data_get(kSeq, 3, n);
    value_range("RN15X");
    int under_rain = 0, wet = 0, dry_ground = 0, dry = 0, silent = 0, rejected = 0;
    for (int k = 0; k < n; k++) {
        const STN_VAL &s = stn_data[k];
        if (sample::station_is_silent(s.stn_id)) {
            silent++;
            EXPECT_EQ(s.re, -999) << s.stn_id;
            EXPECT_EQ(s.rn_15x, -999) << s.stn_id;
            continue;
        }
        if (sample::station_rain_indicator_rejected(s.stn_id)) rejected++;
        float grid = value_at("RN15X", s.x, s.y);
        if (grid > 3.0f) {
            under_rain++;
            wet += s.re == 1 && s.d > 0;
        } else if (grid == 0.0f) {
            dry_ground++;
            dry += s.re == 0;
        }
    }
    EXPECT_GT(silent, 5);
    EXPECT_GT(rejected, 5);
    EXPECT_GT(under_rain, 20);
    EXPECT_GE(wet, under_rain * 9 / 10) << "stations where the grid has rain report it";
    EXPECT_GT(dry_ground, 200);
    EXPECT_GE(dry, dry_ground * 9 / 10);
}

TEST_F(SampleTree, MinuteRecordsCarryMissingAndRejectedValues)
{
    int ids[] = {0, 0, 0};  // a silent station, one whose indicator QC rejects, one without humidity
    int n = aws_info_get(kSeq);
    for (int k = 0; k < n; k++) {
        int id = stn_data[k].stn_id;
        if (!ids[0] && sample::station_is_silent(id)) ids[0] = id;
        if (!ids[1] && sample::station_rain_indicator_rejected(id) && !sample::station_is_silent(id)) ids[1] = id;
        if (!ids[2] && id % 17 == 4 && !sample::station_is_silent(id)) ids[2] = id;
    }
    ASSERT_TRUE(ids[0] && ids[1] && ids[2]);
    AWS3_DATA rec{};
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 30, ids[0], &rec, 'r'), 0);
    EXPECT_EQ(rec.aws_id, -999);
    EXPECT_EQ(rec.d[sample::ELEMENT_RAIN_15MIN], -999);
    // Minute 30 may be one of the few lost minutes; of two neighbouring minutes one has a record.
    bool found = false;
    for (int minute : {30, 31, 32}) {
        if (AWS3_DATA_READ(2024, 7, 15, 9, minute, ids[1], &rec, 'r') != 0 || rec.aws_id != ids[1]) continue;
        found = true;
        EXPECT_EQ(rec.d[sample::ELEMENT_RAIN_INDICATOR], AWS3_QC_REJECTED + sample::REJECT_LEVEL);
        EXPECT_GE(rec.d[sample::ELEMENT_RAIN_15MIN], 0);
        EXPECT_GE(rec.d[sample::ELEMENT_WIND_SPEED], 0);
        EXPECT_GT(rec.d[sample::ELEMENT_HUMIDITY] + rec.d[sample::ELEMENT_TEMPERATURE], 0);
        break;
    }
    EXPECT_TRUE(found);
    aws_rain_data_get(kSeq, 5, n);
    for (int k = 0; k < n; k++) {
        const STN_VAL &s = stn_data[k];
        if (s.stn_id == ids[2]) {
            EXPECT_FLOAT_EQ(s.d, -999.0f) << "no humidity";
        }
        if (s.stn_id == ids[1]) {
            EXPECT_EQ(s.re_base, 0) << "every indicator rejected";
        }
    }
    // The 10:00 picture's minutes are not part of a one-time tree; 09:21 .. 09:35 are.
    EXPECT_NE(AWS3_DATA_READ(2024, 7, 15, 10, 0, 108, &rec, 'r'), 0);
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 21, 108, &rec, 'r'), 0);
    EXPECT_EQ(rec.aws_id, 108);
}

// Outline files parsed as the outline layer reads them: "n mode" then n points.
std::vector<std::pair<float, float>> outline_points(const char *map, int kind)
{
    std::vector<std::pair<float, float>> points;
    FilePtr fp(std::fopen(fixture::path_of(outline_file_path, map, kind).c_str(), "r"));
    EXPECT_TRUE(fp) << map << kind;
    int n = 0, mode = 0;
    while (fp && std::fscanf(fp.get(), "%d %d", &n, &mode) == 2) {
        for (int k = 0; k < n; k++) {
            float x = 0, y = 0;
            if (std::fscanf(fp.get(), "%f %f", &x, &y) != 2) {
                ADD_FAILURE() << map << kind << ": a polyline ends early";
                return points;
            }
            points.emplace_back(x, y);
        }
    }
    EXPECT_TRUE(fp && std::feof(fp.get())) << map << kind << ": text after the last polyline";
    return points;
}

TEST_F(SampleTree, OutlinesLieInTheirMapsAndFollowTheRealCoast)
{
    for (const sample::SampleMap &m : sample::sample_maps()) {
        for (int kind : {1, 4}) {
            std::vector<std::pair<float, float>> points = outline_points(m.code, kind);
            long inside = 0, near = 0;
            for (const auto &p : points) {
                inside += p.first >= 0 && p.first <= m.nx && p.second >= 0 && p.second <= m.ny;
                near += p.first > -20 && p.first < m.nx + 20 && p.second > -20 && p.second < m.ny + 20;
            }
            EXPECT_EQ(near, (long)points.size()) << m.code << " kind " << kind;
            if (kind == 4) {
                EXPECT_GT(points.size(), 20u) << m.code;
            }
            EXPECT_GE(inside, (long)points.size() * 8 / 10) << m.code << " kind " << kind;
        }
    }
    // Coastal cities lie within a few km of the whole map's coastline.
    std::vector<std::pair<float, float>> coast = outline_points("HR", 4);
    fixture::KmProjection projection(560, 840);
    const double cities[][2] = {{129.04, 35.10}, {126.60, 37.46}, {126.53, 33.51}, {128.90, 37.77}};
    for (const auto &city : cities) {
        float x = 0, y = 0;
        projection.km_of_lonlat(city[0], city[1], &x, &y);
        double nearest = 1e9;
        for (const auto &p : coast) nearest = std::min(nearest, (double)std::hypot(p.first - x, p.second - y));
        EXPECT_LT(nearest, 8.0) << city[0] << " E " << city[1] << " N";
    }
}

TEST_F(SampleTree, TerrainRisesOverTheRangesAndIsZeroAtSea)
{
    std::string bytes;
    {
        FilePtr fp(std::fopen(fixture::path_of(topo_file_path).c_str(), "rb"));
        ASSERT_TRUE(fp);
        bytes.resize(TOPO_HEADER_BYTES + TOPO_DATA_BYTES);
        ASSERT_EQ(std::fread(bytes.data(), 1, bytes.size(), fp.get()), bytes.size());
    }
    fixture::KmProjection projection(560, 840);
    auto height = [&](double lon, double lat) {
        float x = 0, y = 0;
        projection.km_of_lonlat(lon, lat, &x, &y);
        std::size_t at = TOPO_HEADER_BYTES + 2 * ((std::size_t)std::lround(y) * TOPO_COLS + std::lround(x));
        return le_i16((const unsigned char *)bytes.data() + at) * 0.1;
    };
    EXPECT_GT(height(126.53, 33.36), 1000) << "Hallasan";
    EXPECT_GT(height(128.55, 37.75), 500) << "the Taebaek range";
    EXPECT_LT(height(126.85, 35.60), 200) << "the Honam plain";
    EXPECT_EQ(height(125.00, 36.00), 0) << "the Yellow Sea";
    EXPECT_EQ(height(130.00, 37.00), 0) << "the East Sea";
}

TEST(SampleGeography, SouthKoreaIsSouthOfTheDemarcationLineAndOffJapan)
{
    EXPECT_TRUE(sample::in_south_korea(126.97, 37.57));   // Seoul
    EXPECT_TRUE(sample::in_south_korea(128.56, 38.25));   // Sokcho, north of the 38th parallel
    EXPECT_TRUE(sample::in_south_korea(126.53, 33.36));   // Jeju
    EXPECT_TRUE(sample::in_south_korea(130.90, 37.48));   // Ulleungdo
    EXPECT_FALSE(sample::in_south_korea(125.75, 39.03));  // Pyongyang
    EXPECT_FALSE(sample::in_south_korea(126.56, 37.97));  // Kaesong
    EXPECT_FALSE(sample::in_south_korea(129.30, 34.40));  // Tsushima
    EXPECT_FALSE(sample::in_south_korea(130.40, 33.60));  // Fukuoka
    EXPECT_FALSE(sample::in_south_korea(122.00, 37.00));  // Shandong
}

}  // namespace
