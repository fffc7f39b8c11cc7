// Minute records observed at each station from the sample weather, one hour file at a time.
// A gauge's 15-minute amount is taken as its rate in the middle of the 15 minutes, the same
// rule that the grid's station rain block follows, so both agree at a station.
#include "sample_minutes.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "sample_random.h"
#include "seq_time.h"
#include "station_writers.h"

namespace sample {

namespace {

struct HourFiles {
    std::vector<fixture::MinuteSlot> data;
    std::vector<fixture::QcSlot> qc;
};

int16_t tenths(double v) { return (int16_t)std::lround(std::clamp(v * 10.0, -30000.0, 30000.0)); }

AWS3_DATA observed_record(const Weather &w, const SampleStation &s, int minute, const int (&t)[5])
{
    Observed now = observe(w, s.x, s.y, minute);
    Observed middle = observe(w, s.x, s.y, minute - 7.5);
    AWS3_DATA r = fixture::minute_record(s.stn_id, t[0], t[1], t[2], t[3], t[4]);
    double humidity = std::min(99.0, 72.0 + (now.moist ? 14.0 : 0.0) + 0.5 * now.rain);
    r.d[ELEMENT_RAIN_INDICATOR] = now.station_rain > 0 ? 1 : 0;
    r.d[ELEMENT_WIND_DIRECTION] = tenths(now.wind_from_deg);
    r.d[ELEMENT_WIND_SPEED] = tenths(now.wind_m_s);
    r.d[ELEMENT_RAIN_15MIN] = tenths(middle.station_rain * 15.0 / 60.0);
    r.d[ELEMENT_TEMPERATURE] = tenths(now.wet_bulb + (100.0 - humidity) * 0.12);
    // Humidity sensors of some stations are out of service.
    r.d[ELEMENT_HUMIDITY] = s.stn_id % 17 == 4 ? (int16_t)-999 : tenths(humidity);
    return r;
}

struct AWS3_QCD qc_record(const SampleStation &s, int minute, const int (&t)[5])
{
    struct AWS3_QCD q {};
    q.aws_id = (int16_t)s.stn_id;
    q.aws_tm = TIMES3{(int16_t)t[0], (int8_t)t[1], (int8_t)t[2], (int8_t)t[3], (int8_t)t[4]};
    const uint64_t indicator_bit = 1ULL << ELEMENT_RAIN_INDICATOR;
    if (station_rain_indicator_rejected(s.stn_id)) q.qc[REJECT_LEVEL] |= indicator_bit;
    uint32_t h = hash_ints(s.stn_id, minute, 77);
    // Now and then a doubtful indicator: rejected at level 2, or confirmed by a level-7 check.
    if (h % 89 == 0) q.qc[2] |= indicator_bit;
    if (h % 97 == 1) {
        q.qc[2] |= indicator_bit;
        q.qc[AWS3_QC_KEEP_LEVEL] |= indicator_bit;
    }
    return q;
}

}  // namespace

int sample_start_seq() { return time2seq(2024, 7, 15, 9, 0, 'm'); }

bool write_station_minutes(const Weather &w, const std::vector<SampleStation> &stations, int first_minute,
                           int last_minute)
{
    std::map<int, HourFiles> hours;  // by the hour's key YYYYMMDDHH
    std::map<int, std::vector<int>> hour_times;
    for (int minute = first_minute; minute <= last_minute; minute++) {
        int t[5];
        seq2time(sample_start_seq() + minute, &t[0], &t[1], &t[2], &t[3], &t[4], 'm', 'n');
        int key = ((t[0] * 100 + t[1]) * 100 + t[2]) * 100 + t[3];
        hour_times[key] = {t[0], t[1], t[2], t[3]};
        HourFiles &files = hours[key];
        for (const SampleStation &s : stations) {
            if (s.listing == Listing::closed || station_is_silent(s.stn_id)) continue;
            // A lost minute now and then: the slot stays empty.
            if (hash_ints(s.stn_id, minute, 71) % 61 == 0) continue;
            files.data.push_back({t[4], s.stn_id, observed_record(w, s, minute, t)});
            files.qc.push_back({t[4], s.stn_id, qc_record(s, minute, t)});
        }
    }
    for (auto &[key, files] : hours) {
        const std::vector<int> &t = hour_times[key];
        if (!fixture::write_minute_hour(t[0], t[1], t[2], t[3], std::move(files.data)) ||
            !fixture::write_qc_hour(t[0], t[1], t[2], t[3], std::move(files.qc)))
            return false;
    }
    return true;
}

}  // namespace sample
