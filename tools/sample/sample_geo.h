// Geography of the sample tree: real coastlines, national borders, rivers and land from the
// GSHHG data that Debian's gmt ships (intermediate resolution), in degrees and on the 1 km points
// of the whole domain. load_geography returns false, with a reason, when gmt is missing or fails.
#ifndef SAMPLE_GEO_H
#define SAMPLE_GEO_H

#include <string>
#include <vector>

#include "sample_field.h"
#include "topo_grid.h"

namespace sample {

// The whole domain ("HR"): the extent of the 500 m grid of map code 1, whose projection origin
// lies 560 km east and 840 km north of its south-west corner, as the terrain file's does.
constexpr int DOMAIN_NX = 1152;
constexpr int DOMAIN_NY = 1440;
constexpr int DOMAIN_SX = TOPO_REF_EAST;
constexpr int DOMAIN_SY = TOPO_REF_NORTH;

struct LonLat {
    double lon, lat;
};
using GeoLine = std::vector<LonLat>;

struct Geography {
    std::vector<GeoLine> coast;    // shorelines between land and sea
    std::vector<GeoLine> borders;  // national borders
    std::vector<GeoLine> rivers;   // major rivers
    // On the terrain file's points (TOPO_COLS x TOPO_ROWS, 1 km apart): 1 land, 0 water,
    // and each point's longitude and latitude.
    KmField land, lon, lat;
};

bool load_geography(Geography *geo, std::string *error);

// Inside South Korea as the station network covers it: south of the demarcation line, east of
// the Yellow Sea's middle and off Japanese islands. Land is the caller's test.
bool in_south_korea(double lon, double lat);

}  // namespace sample

#endif
