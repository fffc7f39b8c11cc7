// Drawing Korean text held in EUC-KR with the TrueType font, shared by the title bar, the legend
// and the station overlay. A missing font, or a text that does not convert, draws nothing (or
// the converted prefix); nothing is reported.
#ifndef KOREAN_TEXT_H
#define KOREAN_TEXT_H

#include <gd.h>

// Converts `euckr` to UTF-8 and draws it with its baseline's left end at (x, y).
void draw_euckr_text(gdImagePtr im, const char *euckr, double points, int x, int y, int colour);

// Bold by double strike: the text at x_first, then again at x_second on the same baseline.
void draw_euckr_bold(gdImagePtr im, const char *euckr, double points, int x_first, int x_second, int y,
                     int colour);

#endif
