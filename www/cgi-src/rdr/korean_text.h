// Korean text held in EUC-KR: its conversion to UTF-8, cutting it at a whole character, and
// drawing it with the TrueType font (title bar, legend, station names). A missing font draws
// nothing, a text that does not convert only its converted prefix; nothing is reported.
#ifndef KOREAN_TEXT_H
#define KOREAN_TEXT_H

#include <gd.h>

#include <cstddef>
#include <string>

// EUC-KR to UTF-8. The caller zero-fills `out` and gives it room for twice the input's length
// plus one; nothing is terminated here. Returns the converter's count of irreversible
// conversions, or -1 when the converter fails or meets a bad sequence (what was converted before
// stays in `out`).
int euckr2utf(char *str, char *out);

// The UTF-8 form of an EUC-KR text, as far as it converts: the text as the picture draws it.
std::string euckr_to_utf8(const char *euckr);

// The length of the longest prefix of `text` made of whole characters (a byte of 0x80 or more
// starts a two-byte character) with at most max_bytes bytes and at most max_utf8 bytes once
// converted to UTF-8 (a two-byte character takes at most three there, four when its first byte
// is 0x80..0x9f, which the converter reads as a character of two UTF-8 bytes by itself).
std::size_t euckr_whole_prefix(const char *text, std::size_t max_bytes, std::size_t max_utf8);

// Converts `euckr` to UTF-8 and draws it with its baseline's left end at (x, y).
void draw_euckr(gdImagePtr im, const char *euckr, double points, int x, int y, int colour);

// Converts `euckr` to UTF-8 and draws it bold by double strike: with its baseline's left end at
// (x_first, y), then again at (x_second, y).
void draw_euckr_bold(gdImagePtr im, const char *euckr, double points, int x_first, int x_second, int y,
                     int colour);

#endif
