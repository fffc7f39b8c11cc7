// The title band across the top of the picture: the product's Korean title in bold blue and the
// data time in black after it.
#ifndef TITLE_DISP_H
#define TITLE_DISP_H

#include <gd.h>

// A product without a title gets none; the time then stands at its leftmost place. Returns 0.
int title_disp(gdImagePtr im, int color_lvl[]);

#endif
