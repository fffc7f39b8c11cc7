// The station nearest to a map point: loaded from the station catalogue and read from the minute
// files as the station overlay loads and reads them, for one station only.
#ifndef PROBE_STATION_H
#define PROBE_STATION_H

#include "aws_info_get.h"

// Stations farther from the point than this are not its station.
constexpr double STATION_REACH_KM = 20.0;

struct PROBE_STATION {
    STN_VAL stn;          // re, d (15-minute rain x 4, mm/h), wd, ws as the overlay reads them
    double distance_km;
};

// The station valid at minute sequence `seq` nearest to (x, y) km, within STATION_REACH_KM and
// inside the map (the first in catalogue order of two at one distance): 0, or -1 for none. Its
// wind stays -999 when the minute of `seq` was not read.
int probe_station(double x, double y, int seq, PROBE_STATION *out);

#endif
