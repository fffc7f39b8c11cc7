// End-to-end tables: each row writes a fixture tree (or keeps the row before's), runs the real
// program with a query under a time limit, and checks its answer (a picture of a size, the error
// picture with its code, or an early exit) and pixels read back from the PNG.
#ifndef PICTURE_TABLE_H
#define PICTURE_TABLE_H

#include <gd.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cgi_run.h"

namespace table {

using cgi::rgb;
const uint32_t kBackground = rgb(180, 180, 180), kWhite = rgb(255, 255, 255), kBlack = rgb(0, 0, 0),
               kFrame = rgb(30, 30, 30), kErrorGrey = rgb(240, 240, 240), kBlue = rgb(0, 0, 255),
               kRed = rgb(255, 0, 0), kDisc = rgb(240, 240, 240), kPink = rgb(255, 0, 172);

enum class Outcome { Picture, ErrorPicture, Exit255, Exit1 };
struct Expect {
    Outcome outcome;
    int width = 0, height = 0;  // 0: not checked
    int code = 0;               // error code shown on the error picture; 0: not read
};
inline Expect picture(int w = 0, int h = 0) { return {Outcome::Picture, w, h}; }
inline Expect error(int code, int w = 0, int h = 0) { return {Outcome::ErrorPicture, w, h, code}; }
const Expect kExit255 = {Outcome::Exit255}, kExit1 = {Outcome::Exit1};

// A check of the decoded picture; it reports through gtest.
using Check = std::function<void(const cgi::Picture &)>;
Check px(int x, int y, uint32_t colour);
// `text` in a built-in font with its top-left corner at (x, y), `strikes` times one pixel apart:
// ink where the font sets a pixel, `paper` elsewhere inside the picture (only from row `from`
// of the text down, where something else may stand above it).
Check text(gdFontPtr font, int x, int y, const std::string &text, uint32_t ink, uint32_t paper, int strikes = 1,
           int from = 0);
// The number of pixels of a box (corners inclusive) that are neither `paper` nor `also` lies in
// [least, most].
Check ink(int x0, int y0, int x1, int y1, uint32_t paper, int least, int most, uint32_t also = 0xffffffff);
// The number of pixels of a box that are exactly `colour` lies in [least, most].
Check count(int x0, int y0, int x1, int y1, uint32_t colour, int least, int most);
// At least `least` different palette entries in the map area (below the title band).
Check distinct(int least);
Check palette(int entry, uint32_t colour);
Check colours(int entries);
// A station disc: a light grey rim 8 across and a centre 5 across; kBackground: no disc.
Check disc(int X, int Y, uint32_t centre);
// The pink pixels are exactly a line two pixels thick between the ends, with a 5-pixel dot on each.
Check section(int x1, int y1, int x2, int y2);
// The whole picture is the error picture with these lines at x = 50 (y, text).
Check error_lines(const std::vector<std::pair<int, std::string>> &lines);

struct Row {
    std::string what;
    void (*tree)();                     // writes the fixture tree; kept for the rows after it
    std::string query;
    Expect expect;
    std::vector<Check> checks = {};
    std::function<void()> damage = {};  // applied to a freshly written tree, for this row only
    int limit_ms = 30000;
    bool pixels_may_differ = false;     // damaged data: the two builds' inflaters may stop apart
};

// Runs every row; rows after a damaged one start from a fresh tree. `against_plain`: the
// straightforward build answers each row too, and its picture must be the same to the pixel
// and palette entry.
void run_rows(const std::vector<Row> &rows, bool against_plain = false);

}  // namespace table

#endif
