// The nearest station; see probe_station.h.
#include "probe_station.h"

#include <cmath>

#include "aws_rain_data_get.h"
#include "view.h"

namespace {

// The overlay mode whose value is the 15-minute rain x 4 (rn_15x x 0.4, mm/h).
constexpr int RAIN_RATE_MODE = 3;
constexpr float NOT_READ = -999.0f;

}  // namespace

int probe_station(double x, double y, int seq, PROBE_STATION *out)
{
    int n = aws_info_get(seq);
    int best = -1;
    double best_km = STATION_REACH_KM;
    for (int k = 0; k < n && k < STN_MAX; k++) {
        const STN_VAL &s = stn_data[k];
        double d = std::hypot(s.x - x, s.y - y);
        if (!inside_map(s.x, s.y) || d > best_km || (best >= 0 && d == best_km)) continue;
        best = k;
        best_km = d;
    }
    if (best < 0) return -1;
    // Only this station's minutes are read: it goes first and the reader takes one station.
    stn_data[0] = stn_data[best];
    stn_data[0].wd = stn_data[0].ws = NOT_READ;
    aws_rain_data_get(seq, RAIN_RATE_MODE, 1);
    out->stn = stn_data[0];
    out->distance_km = best_km;
    return 0;
}
