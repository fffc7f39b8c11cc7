// The error picture; see err_img.h.
#include "err_img.h"

#include <gdfontl.h>

#include <cstdarg>
#include <cstdio>

#include "canvas.h"
#include "seq_time.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr int TEXT_CAP = 120;
// A size the canvas cannot take is drawn as if this had been asked.
constexpr int FALLBACK_SIZE = 600;

// Formats one line into the text buffer, cut at its capacity, and draws it at x = 50.
__attribute__((format(printf, 4, 5))) void draw_line(gdImagePtr im, int y, int color, const char *fmt, ...)
{
    char text[TEXT_CAP];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(text, sizeof text, fmt, ap);
    va_end(ap);
    gdImageString(im, gdFontGetLarge(), 50, y, (unsigned char *)text, color);
}

}  // namespace

int err_img(int err)
{
    bool fits = canvas_fits(canvas_width(var.size, var.legend), (long long)var.size + TITLE_HEIGHT);
    view_square_canvas(fits ? var.size : FALLBACK_SIZE);

    gdImagePtr im = gdImageCreate(var.GI, var.GJ);
    if (!im) return PICTURE_NO_IMAGE;
    int background = gdImageColorAllocate(im, 240, 240, 240);
    int black = gdImageColorAllocate(im, 0, 0, 0);
    canvas_fill(im, background);

    int YY, MM, DD, HH, MI;
    seq2time(var.seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');

    draw_line(im, 50, black, "TIME = %04d.%02d.%02d.%02d:%02d / err = %d", YY, MM, DD, HH, MI, err);
    draw_line(im, 70, black, "CMP = %s / QCD = %s / OBS = %s", var.cmp, var.qcd, var.obs);
    draw_line(im, 110, black, "SIZE = %dpx", var.size);
    if (err == ERR_GRID_FILE)
        draw_line(im, 130, black, "FILE = %s (file is not found)", var.fname);
    else
        draw_line(im, 130, black, "FILE = %s", var.fname);

    canvas_send(im);
    return 0;
}
