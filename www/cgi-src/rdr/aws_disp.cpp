// The station overlay; see aws_disp.h.
#include "aws_disp.h"

#include <gdfontl.h>

#include <cmath>
#include <cstdio>

#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "cgiutil.h"
#include "color_table.h"
#include "korean_text.h"
#include "user_input.h"
#include "view.h"

namespace {

// At zoom levels 1 and 2 only the stations numbered 90..299 are drawn.
constexpr int FEW_STATIONS_UP_TO_LEVEL = 2;
constexpr int FEW_STATIONS_FIRST = 90;
constexpr int FEW_STATIONS_LAST = 299;

constexpr double BARB_PI = 3.1415927;
constexpr double BARB_TURN_DEG = 60.0;
constexpr double MIN_WIND_SPEED = 0.2;
constexpr float SHAFT_LENGTH = 30.0f;
constexpr float FULL_BARB_SPEED = 5.0f;   // m/s a full barb stands for
constexpr float FULL_BARB_LENGTH = 20.0f;
constexpr float BARB_SPACING = 5.0f;
constexpr float BARB_PIXELS_PER_MS = 4.0f;
// A speed read from the minute file (tenths in 16 bits) never needs more barbs; the bound keeps
// an absurd speed from drawing without end.
constexpr int MAX_BARBS = 656;

constexpr int DISC_SIZE = 8;
constexpr int CENTRE_SIZE = 5;
constexpr double NAME_FONT_SIZE = 10.0;
constexpr std::size_t LABEL_CAP = 30;

bool in_view(const STN_VAL &s) { return inside_map(s.x, s.y); }

bool drawn_at_zoom_level(const STN_VAL &s)
{
    if (var.zoom_level > FEW_STATIONS_UP_TO_LEVEL) return true;
    return s.stn_id >= FEW_STATIONS_FIRST && s.stn_id <= FEW_STATIONS_LAST;
}

// The end of a line of `length` pixels from (x, y) in direction `ang` (radians clockwise from up).
int toward_x(int x, float length, float ang) { return (int)(x + length * std::sin((double)ang)); }
int toward_y(int y, float length, float ang) { return (int)(y - length * std::cos((double)ang)); }

// Shaft toward where the wind comes from; barbs from its outer end inward, 60 degrees clockwise.
void draw_barb(gdImagePtr im, int X, int Y, float wd, float ws, int color)
{
    float ang = (float)(wd * BARB_PI / 180.0);
    float ang_s = (float)((wd + BARB_TURN_DEG) * BARB_PI / 180.0);
    int x1 = toward_x(X, SHAFT_LENGTH, ang);
    int y1 = toward_y(Y, SHAFT_LENGTH, ang);
    gdImageLine(im, X, Y, x1, y1, color);

    float speed = ws;
    float wr = SHAFT_LENGTH;
    for (int barb = 0; speed > 0 && barb < MAX_BARBS; barb++) {
        float wr_s = speed >= FULL_BARB_SPEED ? FULL_BARB_LENGTH : BARB_PIXELS_PER_MS * speed;
        gdImageLine(im, x1, y1, toward_x(x1, wr_s, ang_s), toward_y(y1, wr_s, ang_s), color);
        speed -= FULL_BARB_SPEED;
        wr -= BARB_SPACING;
        x1 = toward_x(X, wr, ang);
        y1 = toward_y(Y, wr, ang);
    }
}

void draw_disc(gdImagePtr im, int X, int Y, const STN_VAL &s, const int color_lvl[])
{
    gdImageFilledArc(im, X, Y, DISC_SIZE, DISC_SIZE, 0, 360, color_lvl[SLOT_DISC], gdPie);
    int centre = s.re == 1 ? color_lvl[SLOT_BLUE] : color_lvl[SLOT_RED];
    gdImageFilledArc(im, X, Y, CENTRE_SIZE, CENTRE_SIZE, 0, 360, centre, gdPie);
}

// The name, cut at a whole character so that it fits 29 bytes in EUC-KR and in UTF-8.
void draw_name(gdImagePtr im, int X, int Y, const STN_VAL &s, int color)
{
    char txt[LABEL_CAP];
    copy_text(txt, sizeof txt, s.stn_ko);
    txt[euckr_whole_prefix(txt, LABEL_CAP - 1, LABEL_CAP - 1)] = '\0';
    draw_euckr(im, txt, NAME_FONT_SIZE, X - 10, Y + 15, color);
}

void draw_text(gdImagePtr im, int x, int y, const char *text, int color)
{
    gdImageString(im, gdFontGetLarge(), x, y, (unsigned char *)text, color);
}

void draw_label(gdImagePtr im, int X, int Y, const STN_VAL &s, int color)
{
    char txt[LABEL_CAP];
    switch (var.aws) {
    case 1:
    case 6:
        draw_name(im, X, Y, s, color);
        break;
    case 2:
    case 7:
        std::snprintf(txt, sizeof txt, "%d", s.stn_id);
        draw_text(im, X - 10, Y + 3, txt, color);
        break;
    case 3: case 4: case 5: case 8: case 9: case 10:
        if (!(s.d >= 0)) break;
        if (s.d > 0) {
            std::snprintf(txt, sizeof txt, "%.1f", s.d);
            draw_text(im, X - 10, Y + 3, txt, color);
        } else {
            draw_text(im, X - 3, Y + 3, "0", color);
        }
        break;
    default:
        break;
    }
}

}  // namespace

int aws_zooming()
{
    var.num_area_stn = var.num_aws_stn;
    if (var.zoom_level == 0 || var.num_aws_stn <= 0) return 0;
    const ZoomView &v = view.km;
    int n = var.num_aws_stn < STN_MAX ? var.num_aws_stn : STN_MAX;
    int inside = 0;
    for (int k = 0; k < n; k++) {
        STN_VAL &s = stn_data[k];
        s.x = zoomed(s.x, v.ox, v.zm);
        s.y = zoomed(s.y, v.oy, v.zm);
        if (in_view(s)) inside++;
    }
    var.num_area_stn = inside;
    return 0;
}

int aws_disp(gdImagePtr im, int color_lvl[])
{
    float rate = view.px_per_km;
    var.num_aws_stn = aws_info_get(var.seq);
    aws_rain_data_get(var.seq, var.aws, var.num_aws_stn);
    aws_zooming();
    if (!(var.num_aws_stn > 0 && var.num_area_stn > 0 && var.aws != 0 && var.zoom_level > 0)) return 0;

    int n = var.num_aws_stn < STN_MAX ? var.num_aws_stn : STN_MAX;
    for (int k = 0; k < n; k++) {
        const STN_VAL &s = stn_data[k];
        if (!drawn_at_zoom_level(s) || !in_view(s)) continue;
        int X = map_column(s.x, rate);
        int Y = map_row(s.y, rate);
        if (var.aws > 5 && s.wd >= 0 && (double)s.ws > MIN_WIND_SPEED) draw_barb(im, X, Y, s.wd, s.ws, color_lvl[SLOT_BLACK]);
        draw_disc(im, X, Y, s, color_lvl);
        draw_label(im, X, Y, s, color_lvl[SLOT_BLACK]);
    }
    return 0;
}
