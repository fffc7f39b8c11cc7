// Station rain values; see aws_rain_data_get.h.
#include "aws_rain_data_get.h"

#include "aws3_io.h"
#include "aws_info_get.h"
#include "seq_time.h"

namespace {

constexpr int MINUTES_AFTER = 5;
constexpr int MINUTES_BEFORE = 9;
constexpr int AMOUNT_MINUTES_BEFORE = 4;
constexpr int INDICATOR_MINUTES_TO_DECIDE = 5;

// Elements of the minute record.
constexpr int RAIN_INDICATOR = 7;
constexpr int WIND_DIRECTION = 65;
constexpr int WIND_SPEED = 66;
constexpr int RAIN_15MIN = 67;
constexpr int VALUE_OF_MODES_4_9 = 68;
constexpr int VALUE_OF_MODES_5_10 = 69;

constexpr float MISSING = -999.0f;

float tenths(int v) { return v >= 0 ? (float)(v * 0.1) : MISSING; }

void take_minute(STN_VAL &s, const AWS3_DATA &rec, int seq1, int seq, int aws_mode)
{
    int re = rec.d[RAIN_INDICATOR];
    if (re >= 0) s.re_base++;
    if (re > 0) s.re_ok++;
    // Minutes run from the latest, so the first valid amount is the latest one.
    int rn15 = rec.d[RAIN_15MIN];
    if (seq1 >= seq - AMOUNT_MINUTES_BEFORE && rn15 >= 0 && s.rn_15x < 0) s.rn_15x = (short)rn15;
    if (seq1 != seq) return;

    if (aws_mode == 4 || aws_mode == 9) s.d = tenths(rec.d[VALUE_OF_MODES_4_9]);
    if (aws_mode == 5 || aws_mode == 10) s.d = tenths(rec.d[VALUE_OF_MODES_5_10]);
    bool wind = rec.d[WIND_DIRECTION] >= 0 && rec.d[WIND_SPEED] >= 0;
    s.wd = wind ? tenths(rec.d[WIND_DIRECTION]) : MISSING;
    s.ws = wind ? tenths(rec.d[WIND_SPEED]) : MISSING;
}

// The indicator decides when it was valid often enough; a positive amount always means rain,
// and a zero amount means no rain when the indicator could not decide.
void decide_rain(STN_VAL &s, int aws_mode)
{
    if (s.re_base >= INDICATOR_MINUTES_TO_DECIDE)
        s.re = s.re_ok >= 1 ? 1 : 0;
    else
        s.re = -999;
    if (s.re < 0 && s.rn_15x >= 0) s.re = 0;
    if (s.re < 1 && s.rn_15x > 0) s.re = 1;
    if (aws_mode == 3 || aws_mode == 8) s.d = s.rn_15x >= 0 ? (float)(s.rn_15x * 0.4) : MISSING;
}

}  // namespace

int aws_rain_data_get(int seq, int aws_mode, int num_stn)
{
    if (num_stn > STN_MAX) num_stn = STN_MAX;
    for (int k = 0; k < num_stn; k++) {
        STN_VAL &s = stn_data[k];
        s.re_base = 0;
        s.re_ok = 0;  // 0 after a load already; cleared so that a second call counts afresh
        s.re = 0;
        s.d = MISSING;
        s.rn_15x = -999;
    }
    // Minutes outside, stations inside: the reads of one hour come together, one open per file.
    for (int seq1 = seq + MINUTES_AFTER; seq1 >= seq - MINUTES_BEFORE; seq1--) {
        int YY, MM, DD, HH, MI;
        seq2time(seq1, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
        for (int k = 0; k < num_stn; k++) {
            AWS3_DATA rec;
            if (AWS3_DATA_READ(YY, MM, DD, HH, MI, stn_data[k].stn_id, &rec, 'r') != 0) continue;
            take_minute(stn_data[k], rec, seq1, seq, aws_mode);
        }
    }
    for (int k = 0; k < num_stn; k++) decide_rain(stn_data[k], aws_mode);
    return 0;
}
