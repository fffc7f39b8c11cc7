// The probe's own query keys and the places it looks at: a point (x, y km of the map, or lon, lat
// degrees) or a line (x1, y1, x2, y2 km, n samples), read from QUERY_STRING byte for byte as the
// picture's keys are, and turned into map positions and grid cells.
#ifndef PROBE_QUERY_H
#define PROBE_QUERY_H

#include <string>
#include <vector>

#include "rdr_cmp_header.h"
#include "view.h"

// Samples along a line: the default, and the bounds any other count is held to.
constexpr int LINE_SAMPLES_DEFAULT = 200;
constexpr int LINE_SAMPLES_MIN = 2;
constexpr int LINE_SAMPLES_MAX = 2000;

enum class ProbeShape { Point, Line };

struct PROBE_QUERY {
    ProbeShape shape;
    bool by_lonlat;          // the point came as lon, lat
    double x, y;             // the point: km of the map, or lon, lat degrees with by_lonlat
    double x1, y1, x2, y2;   // the line, km of the map
    int n;                   // samples along the line
};

// 0, or -1 with `why` saying in plain English what the query lacks or holds wrong.
int probe_query(PROBE_QUERY *q, std::string *why);

// One place the answer reports: map position, geographic position, distance from the line's start
// and the grid cell there (-1 outside the grid or outside the map, where the picture samples none).
struct PROBE_SAMPLE {
    double x, y;
    float lon, lat;
    double d;
    GRID_CELL cell;
};

// The point, or the line's n evenly spaced samples from (x1, y1) to (x2, y2) both included. Needs
// the map's origin (var.SX, var.SY) and extent, and the grid header.
std::vector<PROBE_SAMPLE> probe_samples(const PROBE_QUERY &q, const RDR_CMP_HEAD &head);

#endif
