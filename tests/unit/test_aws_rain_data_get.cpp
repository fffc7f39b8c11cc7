// Station rain values over 15 minutes that cross an hour boundary: the rain state from the
// indicator and the 15-minute amount, the value of each mode, the wind, and QC rejections.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <tuple>
#include <vector>

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

// One element of one station at seq + offset minutes.
struct Obs {
    int stn;
    int offset;
    int element;
    int value;
};

class RainValues : public testing::Test {
protected:
    // 09:57: the minutes 09:48 .. 10:02 come from two hours of files.
    const int seq_ = time2seq(2024, 7, 15, 9, 57, 'm');

    void SetUp() override
    {
        fixture::reset_root();
        AWS3_DATA_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
        AWS3_QCD_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
        std::memset(stn_data, 0, sizeof stn_data);
    }

    void write(const std::vector<Obs> &obs, const std::vector<Obs> &rejected)
    {
        std::map<int, std::map<std::pair<int, int>, AWS3_DATA>> data;  // hour: (minute, station)
        std::map<int, std::vector<fixture::QcSlot>> qc;
        for (const Obs &o : obs) {
            int YY, MM, DD, HH, MI;
            seq2time(seq_ + o.offset, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
            auto key = std::make_pair(MI, o.stn);
            auto it = data[HH].emplace(key, fixture::minute_record(o.stn, YY, MM, DD, HH, MI)).first;
            it->second.d[o.element] = (int16_t)o.value;
        }
        for (const Obs &o : rejected) {  // the element flagged at QC level 3
            int YY, MM, DD, HH, MI;
            seq2time(seq_ + o.offset, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
            fixture::QcSlot q{MI, o.stn, {}};
            q.record.qc[3] = 1ull << o.element;
            qc[HH].push_back(q);
        }
        for (int HH : {9, 10}) {
            std::vector<fixture::MinuteSlot> slots;
            for (const auto &entry : data[HH]) slots.push_back({entry.first.first, entry.first.second, entry.second});
            ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, HH, slots));
            ASSERT_TRUE(fixture::write_qc_hour(2024, 7, 15, HH, qc[HH]));
        }
    }

    static void stations(const std::vector<int> &ids)
    {
        for (std::size_t k = 0; k < ids.size(); k++) stn_data[k].stn_id = ids[k];
    }
};

std::vector<Obs> every_minute(int stn, int from, int to, int element, int value)
{
    std::vector<Obs> out;
    for (int m = from; m <= to; m++) out.push_back({stn, m, element, value});
    return out;
}

std::vector<Obs> operator+(std::vector<Obs> a, const std::vector<Obs> &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST_F(RainValues, RainStateValuesAndWindByMode)
{
    write(every_minute(1, -9, -5, 7, 0)                                 // 5 minutes without rain
              + every_minute(2, -9, -5, 7, 1)                           // 5 with rain, one rejected
              + every_minute(3, -8, -5, 7, 1) + every_minute(3, 0, 0, 67, 0)
              + every_minute(4, -9, 5, 7, 0) + every_minute(4, 5, 5, 67, 3)   // 10:02, next hour
              + every_minute(5, 0, 0, 67, 12) + every_minute(5, 5, 5, 67, 0)
              + every_minute(6, -10, -5, 7, 1) + every_minute(6, -5, -5, 67, 7)
              + std::vector<Obs>{{7, 0, 68, 123}, {7, 0, 69, 45}, {7, 0, 65, 2700}, {7, 0, 66, 123},
                                 {8, -1, 68, 50}, {8, 0, 65, 100}, {8, 0, 66, -999}},
          {{2, -7, 7, 0}});
    stations({1, 2, 3, 4, 5, 6, 7, 8, 10000});

    struct Want {
        int re, re_base, re_ok, rn_15x;
        float d3, d4, d5;
    } want[] = {
        {0, 5, 0, -999, -999.0f, -999.0f, -999.0f},
        {-999, 4, 4, -999, -999.0f, -999.0f, -999.0f},  // the rejected minute does not count
        {0, 4, 4, 0, 0.0f, -999.0f, -999.0f},           // undecided, a zero amount: no rain
        {1, 15, 0, 3, 1.2f, -999.0f, -999.0f},          // the amount beats 15 dry minutes
        {0, 0, 0, 0, 0.0f, -999.0f, -999.0f},           // the later amount wins
        {1, 5, 5, -999, -999.0f, -999.0f, -999.0f},     // seq - 5: counted, but no amount
        {-999, 0, 0, -999, -999.0f, 12.3f, 4.5f},
        {-999, 0, 0, -999, -999.0f, -999.0f, -999.0f},  // element 68 only a minute early
        {-999, 0, 0, -999, -999.0f, -999.0f, -999.0f},  // a number without a slot
    };
    for (int mode : {3, 4, 5, 8, 1}) {
        ASSERT_EQ(aws_rain_data_get(seq_, mode, 9), 0);
        for (int k = 0; k < 9; k++) {
            const STN_VAL &s = stn_data[k];
            const Want &w = want[k];
            float d = (mode == 3 || mode == 8) ? w.d3 : mode == 4 ? w.d4 : mode == 5 ? w.d5 : -999.0f;
            EXPECT_EQ(std::make_tuple(s.re, s.re_base, s.re_ok, s.rn_15x), std::make_tuple(w.re, w.re_base, w.re_ok, w.rn_15x))
                << "station " << s.stn_id << " mode " << mode;
            EXPECT_FLOAT_EQ(s.d, d) << "station " << s.stn_id << " mode " << mode;
        }
    }
    EXPECT_FLOAT_EQ(stn_data[6].wd, 270.0f);
    EXPECT_FLOAT_EQ(stn_data[6].ws, 12.3f);
    EXPECT_EQ(stn_data[7].wd, -999.0f);
    EXPECT_EQ(stn_data[7].ws, -999.0f);
    EXPECT_EQ(stn_data[2].ws, -999.0f);  // a record at seq without wind
    EXPECT_EQ(stn_data[8].ws, 0.0f);     // no readable record at seq: the wind is left as it was

    // No stations: nothing is read or written.
    stn_data[0].d = 5.0f;
    EXPECT_EQ(aws_rain_data_get(seq_, 3, 0), 0);
    EXPECT_EQ(aws_rain_data_get(seq_, 3, -1), 0);
    EXPECT_EQ(stn_data[0].d, 5.0f);
}

}  // namespace
