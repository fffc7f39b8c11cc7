// The cross-section line; see cross_line_disp.h. Nothing clips it to the map area.
#include "cross_line_disp.h"

#include "color_table.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr int DOT_SIZE = 5;

// A dot wholly outside the picture is not drawn: the library would only scan for nothing.
void dot(gdImagePtr im, PIXEL p, int colour)
{
    if (p.x < -DOT_SIZE || p.y < -DOT_SIZE || p.x > gdImageSX(im) + DOT_SIZE || p.y > gdImageSY(im) + DOT_SIZE)
        return;
    gdImageFilledArc(im, p.x, p.y, DOT_SIZE, DOT_SIZE, 0, 360, colour, gdArc);
}

}  // namespace

int cross_line_disp(gdImagePtr im, int color_lvl[])
{
    if (var.x1 <= 0) return var.x1;
    PIXEL a = section_pixel(var.x1, var.y1);
    PIXEL b = section_pixel(var.x2, var.y2);
    int colour = color_lvl[SLOT_SECTION];
    gdImageLine(im, a.x, a.y, b.x, b.y, colour);
    gdImageLine(im, a.x, a.y - 1, b.x, b.y - 1, colour);
    dot(im, a, colour);
    dot(im, b, colour);
    return 0;
}
