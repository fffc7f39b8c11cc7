// The legend column right of the map: a bar of one box per class or level, bottom up, with the
// Korean class names or the threshold values between levels, and the unit above.
#ifndef LEGEND_DISP_H
#define LEGEND_DISP_H

#include <gd.h>

// 0 when the legend is off or drawn, -1 when there are no classes (nothing is drawn then).
int legend_disp(gdImagePtr im, int color_lvl[], float data_lvl[]);

#endif
