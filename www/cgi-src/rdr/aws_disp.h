// The station overlay: the stations at the picture's time in the zoomed view, each with a disc
// whose centre shows rain, a wind barb in modes 6 and up, and a label by mode.
#ifndef AWS_DISP_H
#define AWS_DISP_H

#include <gd.h>

// Loads the stations and their values, moves them into the view and draws each station inside
// it completely before the next. Returns 0.
int aws_disp(gdImagePtr im, int color_lvl[]);

// Moves the loaded stations of stn_data into the zoomed view (km of the view, magnified) and
// counts those inside it into var.num_area_stn. Returns 0.
int aws_zooming();

#endif
