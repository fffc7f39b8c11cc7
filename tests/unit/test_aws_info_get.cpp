// The station catalogue: validity by the hour, agency and kind filters, the line-feed rule,
// sensors and positions, duplicates, compaction order, the 2000 cap and long fields.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "fixture_tree.h"
#include "rdr_sfc_pty_img.h"
#include "seq_time.h"
#include "station_writers.h"

namespace {

using fixture::PositionRow;
using fixture::SensorRow;
using fixture::StationListRow;

class StationCatalogue : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        std::memset(&var, 0, sizeof var);
        var.SX = 560;
        var.SY = 840;
        seq_ = time2seq(2024, 7, 15, 9, 45, 'm');
    }

    // Loads and lists the station numbers kept, in table order.
    std::vector<int> load()
    {
        int n = aws_info_get(seq_);
        std::vector<int> ids;
        for (int k = 0; k < n; k++) ids.push_back(stn_data[k].stn_id);
        return ids;
    }

    static StationListRow listed(int id, std::string kind = "SA", std::string gov = "GFR")
    {
        StationListRow r;
        r.stn_id = id;
        r.kind = std::move(kind);
        r.gov = std::move(gov);
        return r;
    }
    static SensorRow sensor(int id)
    {
        SensorRow r;
        r.stn_id = id;
        return r;
    }
    static PositionRow position(int id, double lon = 127.0, double lat = 37.5, double ht = 50.0)
    {
        PositionRow r;
        r.stn_id = id;
        r.lon = lon;
        r.lat = lat;
        r.ht = ht;
        return r;
    }

    // A rain sensor and a position for every number from..to.
    static void sensors_and_positions(int from, int to)
    {
        std::vector<SensorRow> sensors;
        std::vector<PositionRow> positions;
        for (int id = from; id <= to; id++) {
            sensors.push_back(sensor(id));
            positions.push_back(position(id));
        }
        ASSERT_TRUE(fixture::write_sensor_list(sensors));
        ASSERT_TRUE(fixture::write_position_list(positions));
    }

    int seq_ = 0;
};

TEST_F(StationCatalogue, ValidityAgencyKindAndLineFeedRules)
{
    std::vector<StationListRow> rows = {
        listed(101), listed(102), listed(103), listed(104), listed(105, "SA", "TEV"),
        listed(106, "SA", "TEV:GFR"), listed(107, "SA", ""), listed(108, "SA", "KMA"),
        listed(110, "SZ"), listed(111, "SO"), listed(112, "PA"), listed(113, "AB"), listed(114, "SB"),
        listed(115, "S"), listed(116, "SZX"), listed(117, "SA", "TEV:GFRXYZ"),
    };
    rows[1].tm2 = "202407150930";  // ends at 09:30: still the hour of 09:45
    rows[2].tm1 = "202407151000";
    rows[3].tm2 = "202407150859";
    std::string text = "stn_id,tm_ed,tm_st,name,-,kind,-,gov,-\n\n";
    for (const auto &r : rows) text += fixture::station_list_line(r);
    text += "118,210012312359,200001010000,N,-,SA,-,GFR\n";  // the agency keeps its line feed
    // Beyond 999 characters the rest of a line is dropped, never read as a row of its own.
    text += "130," + std::string(995, 'x') + fixture::station_list_line(listed(131));
    ASSERT_TRUE(fixture::write_station_list_text(text));
    sensors_and_positions(101, 131);

    EXPECT_EQ(load(), (std::vector<int>{101, 102, 105, 106, 107, 114, 115, 116, 117}));
    const STN_VAL &s = stn_data[0];
    EXPECT_STREQ(s.stn_ko, "\xbc\xad\xbf\xef");
    EXPECT_STREQ(s.gov_cd, "GFR");
    EXPECT_STREQ(s.stn_sp, "SA");
    // (127 E, 37.5 N) is (86.2349, -53.5529) km from the origin at (560, 840).
    EXPECT_NEAR(s.x, 646.2349, 0.001);
    EXPECT_NEAR(s.y, 786.4471, 0.001);
    EXPECT_EQ(s.ht, 50.0f);
    EXPECT_EQ(s.re, -999);
    EXPECT_EQ(s.rn_15x, -999);
    EXPECT_EQ(s.re_ok, 0);
    EXPECT_EQ(s.re_base, 0);
    EXPECT_EQ(s.d, -999.0f);
    EXPECT_STREQ(stn_data[8].gov_cd, "TEV:GFR");  // cut to its 8 bytes, then accepted
}

TEST_F(StationCatalogue, SensorsPositionsAndDuplicates)
{
    StationListRow again = listed(201);
    again.name = "B";
    std::vector<StationListRow> rows = {listed(201), listed(202), again};
    for (int id = 203; id <= 213; id++) rows.push_back(listed(id));
    ASSERT_TRUE(fixture::write_station_list(rows));

    std::string sensors;
    for (int id : {201, 202, 203, 204, 205, 206, 207, 208, 209, 211, 212, 213}) {
        SensorRow r = sensor(id);
        if (id == 203) r.obs_cd = "TA";
        if (id == 211) r.tm2 = "202407150859";
        sensors += fixture::sensor_line(r);
    }
    sensors += "210,-,RN\n";  // a code that ends its line never matches
    ASSERT_TRUE(fixture::write_sensor_list_text(sensors));

    PositionRow expired = position(205);
    expired.tm1 = "202407151000";
    std::string positions;
    for (const PositionRow &r :
         {position(201), position(202), position(203), position(204, 127.0, 37.5, 0.0), expired,
          position(206, 100.0), position(207, 126.0, 38.0), position(208), position(208, 129.0, 35.0),
          position(210), position(211), position(212, 125.9, 38.0)})
        positions += fixture::position_line(r);
    positions += "209,-,210012312359,200001010000,37,127.0,50\n";  // a latitude of two characters
    ASSERT_TRUE(fixture::write_position_list_text(positions));

    // The origin at (0, 840): 207 on it lies on the square's west edge and counts; 212 west of it.
    var.SX = 0;
    EXPECT_EQ(load(), (std::vector<int>{201, 202, 207, 208}));
    EXPECT_STREQ(stn_data[0].stn_ko, "\xbc\xad\xbf\xef");  // the first of the two 201 rows
    EXPECT_EQ(stn_data[2].x, 0.0f);
    EXPECT_EQ(stn_data[2].y, 840.0f);
    // Of two valid positions the last wins: (129 E, 35 N).
    EXPECT_NEAR(stn_data[3].x, 268.8191, 0.001);
    EXPECT_NEAR(stn_data[3].y, 840 - 320.4683, 0.001);
}

TEST_F(StationCatalogue, CapLongFieldsFarTimesAndMissingFiles)
{
    std::vector<StationListRow> rows;
    for (int id = 1; id <= 2100; id++) rows.push_back(listed(id));
    // 40 bytes of name: cut to 15 whole characters after the one-byte 'A' (31 bytes).
    rows[0].name = "A";
    for (int k = 0; k < 20; k++) rows[0].name += "\xb0\xad";
    rows[1].name = "AB";  // 32 bytes would cut a character in half: 30 bytes stay
    for (int k = 0; k < 20; k++) rows[1].name += "\xb0\xad";
    rows[2].kind = "SABCDEFGHIJKLMNOPQ";
    rows[3].tm2 = "99991231235959";  // beyond the int range: the latest time
    rows[4].tm1 = "9999123123";
    ASSERT_TRUE(fixture::write_station_list(rows));
    sensors_and_positions(1, 2100);

    std::vector<int> ids = load();
    // The first 2000 accepted: number 5 is not valid at the time and takes no place.
    ASSERT_EQ(ids.size(), 2000u);
    EXPECT_EQ(ids[3], 4);
    EXPECT_EQ(ids[4], 6);
    EXPECT_EQ(ids.back(), 2001);
    EXPECT_EQ(std::strlen(stn_data[0].stn_ko), 31u);
    EXPECT_EQ(std::strlen(stn_data[1].stn_ko), 30u);
    EXPECT_EQ(std::string(stn_data[1].stn_ko).substr(0, 4), "AB\xb0\xad");
    EXPECT_STREQ(stn_data[2].stn_sp, "SABCDEF");

    std::remove(fixture::path_of(stn_loc_path).c_str());
    EXPECT_EQ(aws_info_get(seq_), -3);
    std::remove(fixture::path_of(stn_sensor_path).c_str());
    EXPECT_EQ(aws_info_get(seq_), -2);
    ASSERT_TRUE(fixture::write_sensor_list({sensor(1)}));
    std::remove(fixture::path_of(stn_obs_path).c_str());
    EXPECT_EQ(aws_info_get(seq_), -2);
}

}  // namespace
