// The grid layer: every pixel of the map area samples the analysis through the view and takes its
// class colour (class products) or threshold colour (values), with light rain marked under the
// rain products.
#ifndef GRID_DISP_H
#define GRID_DISP_H

#include <gd.h>

// 0 when drawn; -1 when there is no class to colour with ("No Color Level" is written then) or
// the view cannot place the grid.
int grid_disp(gdImagePtr im, int color_lvl[], float data_lvl[]);

#endif
