// Drawing Korean text held in EUC-KR with the TrueType font, for the title bar and the legend.
// A missing font draws nothing, a text that does not convert only its converted prefix; nothing
// is reported.
#ifndef KOREAN_TEXT_H
#define KOREAN_TEXT_H

#include <gd.h>

// Converts `euckr` to UTF-8 and draws it bold by double strike: with its baseline's left end at
// (x_first, y), then again at (x_second, y).
void draw_euckr_bold(gdImagePtr im, const char *euckr, double points, int x_first, int x_second, int y,
                     int colour);

#endif
