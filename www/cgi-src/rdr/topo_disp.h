// The terrain layer: heights of the 1 km terrain file shaded in three bands, only on pixels that
// the grid layer painted with the first class colour (palette entry 0).
#ifndef TOPO_DISP_H
#define TOPO_DISP_H

#include <gd.h>

// 0, or -1 when the terrain file does not open (nothing is drawn then).
int topo_disp(gdImagePtr im, int color_lvl[], float data_lvl[]);

#endif
