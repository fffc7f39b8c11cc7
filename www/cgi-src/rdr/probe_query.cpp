// The probe's keys and places; see probe_query.h.
#include "probe_query.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "cgiutil.h"
#include "lamcproj.h"
#include "user_input.h"

namespace {

// Working storage of the parser, terminator included: a longer pair is cut, as the picture cuts.
constexpr std::size_t PAIR_CAP = 64;
constexpr std::size_t KEY_CAP = 16;

enum Key { X, Y, LON, LAT, X1, Y1, X2, Y2, N, KEY_COUNT };
const char *const kKeyNames[KEY_COUNT] = {"x", "y", "lon", "lat", "x1", "y1", "x2", "y2", "n"};

struct Values {
    bool given[KEY_COUNT] = {};
    char text[KEY_COUNT][PAIR_CAP] = {};
};

// As the picture reads its pairs: '&' between pairs, the first '=' ends the key, empty values are
// skipped, the last of a key twice counts, no percent-decoding.
Values read_pairs()
{
    Values v;
    const char *rest = std::getenv("QUERY_STRING");
    char pair[PAIR_CAP], key[KEY_CAP];
    while (rest && *rest) {
        rest = getword_next(pair, sizeof pair, rest, '&');
        const char *value = getword_next(key, sizeof key, pair, '=');
        if (*value == '\0') continue;
        for (int k = 0; k < KEY_COUNT; k++) {
            if (std::strcmp(key, kKeyNames[k]) != 0) continue;
            v.given[k] = true;
            copy_text(v.text[k], PAIR_CAP, value);
        }
    }
    return v;
}

// No map reaches a million km: beyond that a number is a mistake, and it would not stay finite
// through the projection.
constexpr double FAR_KM = 1e6;

// A coordinate is one decimal number within [lo, hi] and nothing after it: "12,5" or "3km" would
// otherwise quietly probe another place.
bool coordinate(const Values &v, Key k, double lo, double hi, double *out)
{
    double d;
    const char *end = scan_double(v.text[k], &d);
    if (!end || *end != '\0' || !(d >= lo && d <= hi)) return false;
    *out = d;
    return true;
}

bool km(const Values &v, Key k, double *out) { return coordinate(v, k, -FAR_KM, FAR_KM, out); }

int refuse(std::string *why, const char *text)
{
    *why = text;
    return -1;
}

int point_of(const Values &v, PROBE_QUERY *q, std::string *why)
{
    bool geo = v.given[LON] || v.given[LAT];
    if (geo && (v.given[X] || v.given[Y]))
        return refuse(why, "give the point either as x and y or as lon and lat, not both");
    q->by_lonlat = geo;
    if (geo && !(coordinate(v, LON, -180, 180, &q->x) && coordinate(v, LAT, -90, 90, &q->y)))
        return refuse(why, "lon and lat must both be decimal degrees, lon -180 to 180 and lat -90 to 90");
    if (!geo && !(km(v, X, &q->x) && km(v, Y, &q->y)))
        return refuse(why, "x and y must both be decimal numbers, km of the map");
    return 0;
}

int line_of(const Values &v, PROBE_QUERY *q, std::string *why)
{
    if (!(km(v, X1, &q->x1) && km(v, Y1, &q->y1) && km(v, X2, &q->x2) && km(v, Y2, &q->y2)))
        return refuse(why, "a line needs x1, y1, x2 and y2, each a decimal number, km of the map");
    int n = v.given[N] ? read_int(v.text[N]) : LINE_SAMPLES_DEFAULT;
    q->n = n < LINE_SAMPLES_MIN ? LINE_SAMPLES_MIN : (n > LINE_SAMPLES_MAX ? LINE_SAMPLES_MAX : n);
    return 0;
}

// The grid cell at a map position, where the picture samples one: inside the map only.
GRID_CELL cell_at(const RDR_CMP_HEAD &head, double x, double y)
{
    if (!(x >= 0 && x <= var.NX && y >= 0 && y <= var.NY)) return {-1, -1};
    return grid_cell_at(head, x, y);
}

}  // namespace

int probe_query(PROBE_QUERY *q, std::string *why)
{
    *q = PROBE_QUERY{};
    Values v = read_pairs();
    bool point = v.given[X] || v.given[Y] || v.given[LON] || v.given[LAT];
    bool line = v.given[X1] || v.given[Y1] || v.given[X2] || v.given[Y2];
    if (point && line) return refuse(why, "ask for a point or for a line, not both");
    if (!point && !line) return refuse(why, "no point (x and y, or lon and lat) and no line (x1, y1, x2, y2)");
    q->shape = point ? ProbeShape::Point : ProbeShape::Line;
    return point ? point_of(v, q, why) : line_of(v, q, why);
}

std::vector<PROBE_SAMPLE> probe_samples(const PROBE_QUERY &q, const RDR_CMP_HEAD &head)
{
    lamc_parameter map = map_projection();
    std::vector<PROBE_SAMPLE> samples;
    if (q.shape == ProbeShape::Point) {
        PROBE_SAMPLE s{q.x, q.y, 0, 0, 0, {-1, -1}};
        float x = (float)q.x, y = (float)q.y, lon = (float)q.x, lat = (float)q.y;
        lamcproj_ellp(&lon, &lat, &x, &y, q.by_lonlat ? 0 : 1, &map);
        if (q.by_lonlat) {
            s.x = x;
            s.y = y;
        }
        s.lon = lon;
        s.lat = lat;
        s.cell = cell_at(head, s.x, s.y);
        samples.push_back(s);
        return samples;
    }
    double length = std::hypot(q.x2 - q.x1, q.y2 - q.y1);
    for (int k = 0; k < q.n; k++) {
        // Weighted so that the first and the last sample are the ends to the bit.
        double t = (double)k / (q.n - 1);
        PROBE_SAMPLE s{q.x1 * (1 - t) + q.x2 * t, q.y1 * (1 - t) + q.y2 * t, 0, 0, length * t, {-1, -1}};
        float x = (float)s.x, y = (float)s.y;
        lamcproj_ellp(&s.lon, &s.lat, &x, &y, 1, &map);
        s.cell = cell_at(head, s.x, s.y);
        samples.push_back(s);
    }
    return samples;
}
