// The cross-section line: the requested path between two map points, two pixels thick with a dot
// at each end, placed by the eighths-and-doubling zoom whatever the request's rate.
#ifndef CROSS_LINE_DISP_H
#define CROSS_LINE_DISP_H

#include <gd.h>

// 0 after drawing, or x1 (zero or negative) when no line was asked for.
int cross_line_disp(gdImagePtr im, int color_lvl[]);

#endif
