// Lambert conformal conic projection on an ellipsoid (a = 6378.138 km, f = 1/298.257223563).
// The derived constants are cached for the whole process and recomputed whenever a record
// arrives with first == 0; a record with first == 1 is served from the cache. Returns 0.
#ifndef LAMCPROJ_H
#define LAMCPROJ_H

#include "map_ini.h"

// code 0: (lon, lat) degrees to grid (x, y); any other code: grid to degrees.
int lamcproj_ellp(float *lon, float *lat, float *x, float *y, int code, lamc_parameter *map);

#endif
