// The zoom transform and pixel mapping.
#include "zoom.h"

#include "rdr_sfc_pty_img.h"

namespace {

constexpr float PIXEL_LIMIT = 16777216.0f;

int zoom_digit(const char *digits, int n)
{
    char c = digits[n];
    return (c >= '1' && c <= '9') ? c - '0' : 0;
}

}  // namespace

ZoomRule zoom_rule_of_request()
{
    if (var.zoom_rate == 3) return {3, 2, 9};
    if (var.zoom_rate == 2) return {2, 7, 8};
    return {var.zoom_rate, 0, 1};
}

ZoomView zoom_view(double width, double height, ZoomRule rule, float start_x, float start_y)
{
    ZoomView v = {start_x, start_y, 1.0f};
    if (var.zoom_level <= 0) return v;
    // zoom_x and zoom_y hold at most 15 digits, so a step count beyond that ends at the terminator.
    for (int n = 0; n < rule.max_steps && n < (int)sizeof var.zoom_x - 1; n++) {
        int dx = zoom_digit(var.zoom_x, n);
        int dy = zoom_digit(var.zoom_y, n);
        if (dx == 0 || dy == 0) break;
        v.ox = (float)(v.ox + (dx - 1) * (width / rule.divisor) / v.zm);
        v.oy = (float)(v.oy + (dy - 1) * (height / rule.divisor) / v.zm);
        v.zm = v.zm * rule.rate;
    }
    return v;
}

int pixel_trunc(float v)
{
    if (!(v > -PIXEL_LIMIT)) return -(int)PIXEL_LIMIT;
    if (!(v < PIXEL_LIMIT)) return (int)PIXEL_LIMIT;
    return (int)v;
}

int map_row(float y_zoomed, float rate) { return var.GJ - pixel_trunc(y_zoomed * rate); }
