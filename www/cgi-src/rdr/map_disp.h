// The outline layer: one kind of map outlines (coastlines, boundaries) of the requested map, read
// as polylines in km of the map domain and drawn through the view, doubled on large pictures.
#ifndef MAP_DISP_H
#define MAP_DISP_H

#include <gd.h>

// Returns 0, also when the file is missing (nothing drawn) or ends in a line that does not parse
// (what was drawn before stays).
int map_disp(gdImagePtr im, int color_map, int kind);

#endif
