// The station catalogue: the automatic weather stations valid at a time, with a rain sensor and
// a position on the map grid, in the station list's order.
#ifndef AWS_INFO_GET_H
#define AWS_INFO_GET_H

// One automatic weather station as loaded and as drawn.
struct STN_VAL {
    char gov_cd[8];
    int stn_id;
    char stn_ko[32];       // EUC-KR
    char stn_sp[8];
    float x, y;            // km of the map domain; zoomed by the overlay
    float ht;
    float d;               // loading state, then the value to show (-999.0 missing)
    float wd, ws;          // wind, degrees and m/s
    short re;              // 1 rain, 0 no rain, -999 unknown
    short re_ok;
    short re_base;
    short rn_15x;          // 15-minute rain, 0.1 mm, -999 missing
};

constexpr int STN_MAX = 2000;
extern STN_VAL stn_data[STN_MAX];

// Loads the stations valid at minute sequence `seq` into stn_data, placed with the map origin
// var.SX, var.SY. Returns their number (at most STN_MAX), -2 when the station or sensor list
// cannot be opened, -3 for the position list.
int aws_info_get(int seq);

#endif
