// The station catalogue: validity by the hour, agency and kind filters, the line-feed rule,
// sensors and positions, duplicates, compaction order, the 2000 cap and long fields.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "korean_text.h"
#include "fixture_tree.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"
#include "seq_time.h"
#include "station_writers.h"

namespace {

using fixture::PositionRow;
using fixture::SensorRow;
using fixture::StationListRow;

const char *const kSeoul = "\xbc\xad\xbf\xef";

class StationCatalogue : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        std::memset(&var, 0, sizeof var);
        var.SX = 560;
        var.SY = 840;
    }

    // Loads at 09:45 and lists the station numbers kept, in table order.
    static std::vector<int> load()
    {
        int n = aws_info_get(time2seq(2024, 7, 15, 9, 45, 'm'));
        std::vector<int> ids;
        for (int k = 0; k < n; k++) ids.push_back(stn_data[k].stn_id);
        return ids;
    }

    // A rain sensor and a position at (127 E, 37.5 N) for every number from..to.
    static void sensors_and_positions(int from, int to)
    {
        std::vector<SensorRow> sensors;
        std::vector<PositionRow> positions;
        for (int id = from; id <= to; id++) {
            sensors.push_back({id});
            positions.push_back({id});
        }
        ASSERT_TRUE(fixture::write_sensor_list(sensors));
        ASSERT_TRUE(fixture::write_position_list(positions));
    }
};

TEST_F(StationCatalogue, ValidityAgencyKindAndLineFeedRules)
{
    std::vector<StationListRow> rows = {
        {101}, {102}, {103}, {104}, {105, "SA", "TEV"}, {106, "SA", "TEV:GFR"}, {107, "SA", ""},
        {108, "SA", "KMA"}, {110, "SZ"}, {111, "SO"}, {112, "PA"}, {113, "AB"}, {114, "SB"}, {115, "S"},
        {116, "SZX"}, {117, "SA", "TEV:GFRXYZ"},
    };
    rows[1].tm2 = "202407150930";  // ends at 09:30: still the hour of 09:45
    rows[2].tm1 = "202407151000";
    rows[3].tm2 = "202407150859";
    std::string text = "stn_id,tm_ed,tm_st,name,-,kind,-,gov,-\n\n" + fixture::lines_of(rows, fixture::station_list_line);
    text += "118,210012312359,200001010000,N,-,SA,-,GFR\n";  // the agency keeps its line feed
    // Beyond 999 characters the rest of a line is dropped, never read as a row of its own.
    text += "130," + std::string(995, 'x') + fixture::station_list_line({131});
    ASSERT_TRUE(fixture::write_station_list_text(text));
    sensors_and_positions(101, 131);

    EXPECT_EQ(load(), (std::vector<int>{101, 102, 105, 106, 107, 114, 115, 116, 117}));
    const STN_VAL &s = stn_data[0];
    EXPECT_STREQ(s.stn_ko, kSeoul);
    EXPECT_STREQ(s.gov_cd, "GFR");
    EXPECT_STREQ(s.stn_sp, "SA");
    // (127 E, 37.5 N) is (86.2349, -53.5529) km from the origin at (560, 840).
    EXPECT_NEAR(s.x, 646.2349, 0.001);
    EXPECT_NEAR(s.y, 786.4471, 0.001);
    EXPECT_EQ(s.ht, 50.0f);
    EXPECT_EQ(std::vector<int>({s.re, s.rn_15x, s.re_ok, s.re_base}), std::vector<int>({-999, -999, 0, 0}));
    EXPECT_EQ(s.d, -999.0f);
    EXPECT_STREQ(stn_data[8].gov_cd, "TEV:GFR");  // cut to its 8 bytes, then accepted
}

TEST_F(StationCatalogue, SensorsPositionsAndDuplicates)
{
    std::vector<StationListRow> rows = {{201}, {202}, {201, "SA", "GFR", "B"}};
    for (int id = 203; id <= 213; id++) rows.push_back({id});
    ASSERT_TRUE(fixture::write_station_list(rows));
    std::vector<SensorRow> sensors = {{201}, {202}, {203, "TA"}, {204}, {205}, {206}, {207}, {208}, {209},
                                      {211, "RN", fixture::kValidFrom, "202407150859"}, {212}, {213}};
    // A code that ends its line never matches.
    ASSERT_TRUE(fixture::write_sensor_list_text(fixture::lines_of(sensors, fixture::sensor_line) + "210,-,RN\n"));
    std::vector<PositionRow> positions = {
        {201}, {202}, {203}, {204, 127.0, 37.5, 0.0}, {205, 127.0, 37.5, 50.0, "202407151000"}, {206, 100.0},
        {207, 126.0, 38.0}, {208}, {208, 129.0, 35.0}, {210}, {211}, {212, 125.9, 38.0}};
    ASSERT_TRUE(fixture::write_position_list_text(fixture::lines_of(positions, fixture::position_line) +
                                                  "209,-,210012312359,200001010000,37,127.0,50\n"));

    // The origin at (0, 840): 207 on it lies on the square's west edge and counts; 212 west of it.
    var.SX = 0;
    EXPECT_EQ(load(), (std::vector<int>{201, 202, 207, 208}));
    EXPECT_STREQ(stn_data[0].stn_ko, kSeoul);  // the first of the two 201 rows
    EXPECT_EQ(stn_data[2].x, 0.0f);
    EXPECT_EQ(stn_data[2].y, 840.0f);
    // Of two valid positions the last wins: (129 E, 35 N).
    EXPECT_NEAR(stn_data[3].x, 268.8191, 0.001);
    EXPECT_NEAR(stn_data[3].y, 840 - 320.4683, 0.001);
}

TEST_F(StationCatalogue, CapLongFieldsFarTimesAndMissingFiles)
{
    std::vector<StationListRow> rows;
    for (int id = 1; id <= 2100; id++) rows.push_back({id});
    // 40 bytes of Hangul after one or two ASCII letters, cut to whole characters in 31 bytes.
    rows[0].name = "A";
    rows[1].name = "AB";
    for (int k = 0; k < 20; k++) rows[0].name += "\xb0\xad", rows[1].name += "\xb0\xad";
    rows[2].kind = "SABCDEFGHIJKLMNOPQ";
    rows[3].tm2 = "99991231235959";  // beyond the int range: the latest time
    rows[4].tm1 = "9999123123";
    ASSERT_TRUE(fixture::write_station_list(rows));
    sensors_and_positions(1, 2100);

    // The first 2000 accepted: number 5 is not valid at the time and takes no place.
    std::vector<int> ids = load();
    ASSERT_EQ(ids.size(), 2000u);
    EXPECT_EQ(ids[3], 4);
    EXPECT_EQ(ids[4], 6);
    EXPECT_EQ(ids.back(), 2001);
    EXPECT_EQ(std::strlen(stn_data[0].stn_ko), 31u);
    EXPECT_EQ(std::strlen(stn_data[1].stn_ko), 30u);
    EXPECT_EQ(std::string(stn_data[1].stn_ko).substr(0, 4), "AB\xb0\xad");
    EXPECT_STREQ(stn_data[2].stn_sp, "SABCDEF");

    std::remove(fixture::path_of(stn_loc_path).c_str());
    EXPECT_EQ(aws_info_get(0), -3);
    std::remove(fixture::path_of(stn_sensor_path).c_str());
    EXPECT_EQ(aws_info_get(0), -2);
    ASSERT_TRUE(fixture::write_sensor_list({{1}}));
    std::remove(fixture::path_of(stn_obs_path).c_str());
    EXPECT_EQ(aws_info_get(0), -2);
}

// A label holds 29 bytes in EUC-KR and in UTF-8, where a syllable takes three bytes.
TEST(EuckrText, CutsAtWholeCharactersWithinBothBudgets)
{
    std::string syllables;
    for (int k = 0; k < 15; k++) syllables += "\xb0\xad";
    EXPECT_EQ(euckr_whole_prefix(syllables.c_str(), 29, 29), 18u);
    EXPECT_EQ(euckr_whole_prefix(("AB" + syllables).c_str(), 29, 29), 20u);
    EXPECT_EQ(euckr_whole_prefix("AB\xb0", 10, 10), 2u);  // a lone lead byte is no character
    // The converter makes two UTF-8 bytes of each byte 0x80..0x9f: of 28 such bytes 14 fit.
    EXPECT_EQ(euckr_whole_prefix(std::string(28, '\x88').c_str(), 29, 29), 14u);
}

}  // namespace
