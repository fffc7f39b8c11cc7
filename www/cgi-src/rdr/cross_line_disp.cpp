// The cross-section line: the requested path between two map points, two pixels thick with a dot
// at each end, placed by the eighths-and-doubling zoom whatever the request's rate. Returns 0
// after drawing, or x1 (zero or negative) when no line was asked for.
#include "rdr_sfc_pty_img.h"
#include "zoom.h"

namespace {

constexpr int DOT_SIZE = 5;

struct Pixel {
    int x, y;
};

// Rows come from NJ / NY here, not from the map area's NI / NX, so the line may sit one row
// apart from the other layers.
Pixel line_pixel(int x, int y, const ZoomView &v)
{
    float px = var.NI * ((x - v.ox) * v.zm) / var.NX;
    float py = var.GJ - var.NJ * ((y - v.oy) * v.zm) / var.NY;
    return {pixel_trunc(px), pixel_trunc(py)};
}

// A dot wholly outside the picture is not drawn: the library would only scan for nothing.
void dot(gdImagePtr im, Pixel p, int colour)
{
    if (p.x < -DOT_SIZE || p.y < -DOT_SIZE || p.x > gdImageSX(im) + DOT_SIZE || p.y > gdImageSY(im) + DOT_SIZE)
        return;
    gdImageFilledArc(im, p.x, p.y, DOT_SIZE, DOT_SIZE, 0, 360, colour, gdArc);
}

}  // namespace

int cross_line_disp(gdImagePtr im, int color_lvl[])
{
    if (var.x1 <= 0) return var.x1;
    ZoomView v = zoom_view(var.NX, var.NY, ZOOM_RULE_EIGHTHS);
    Pixel a = line_pixel(var.x1, var.y1, v);
    Pixel b = line_pixel(var.x2, var.y2, v);
    int colour = color_lvl[251];
    gdImageLine(im, a.x, a.y, b.x, b.y, colour);
    gdImageLine(im, a.x, a.y - 1, b.x, b.y - 1, colour);
    dot(im, a, colour);
    dot(im, b, colour);
    return 0;
}
