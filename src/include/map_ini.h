// Parameters of the Lambert conformal conic projection, owned by the caller.
#ifndef MAP_INI_H
#define MAP_INI_H

struct lamc_parameter {
    float Re;     // earth radius of the spherical form, km (not read by the ellipsoidal form)
    float grid;   // km per grid unit
    float slat1;  // first standard parallel, degrees
    float slat2;  // second standard parallel, degrees
    float olon;   // longitude of the origin, degrees
    float olat;   // latitude of the origin, degrees
    float xo;     // x of the origin in grid units
    float yo;     // y of the origin in grid units
    int first;    // 0: the derived constants must be computed from this record
};

#endif
