// The title band; see title_disp.h.
#include "title_disp.h"

#include <gdfontl.h>

#include <cstdio>
#include <cstring>

#include "color_table.h"
#include "korean_text.h"
#include "seq_time.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr double TITLE_POINTS = 11.5;
constexpr int TITLE_BASELINE = 16;  // 5 + the font size, truncated
constexpr int TIME_MIN_X = 130;
constexpr int TIME_CAP = 100;

// The time follows the title by its EUC-KR byte length, not by its drawn width.
int time_x(const char *euckr)
{
    int x = (int)(std::strlen(euckr) * 8.6 + 10.0);
    return x < TIME_MIN_X ? TIME_MIN_X : x;
}

}  // namespace

int title_disp(gdImagePtr im, int color_lvl[])
{
    // The band's last row is drawn over by the frames of the map area and the legend bar.
    gdImageFilledRectangle(im, 0, 0, var.GI, TITLE_HEIGHT, color_lvl[SLOT_WHITE]);

    const char *title = product->title;
    draw_euckr_bold(im, title, TITLE_POINTS, 5, 6, TITLE_BASELINE, color_lvl[SLOT_BLUE]);

    int YY, MM, DD, HH, MI;
    seq2time(var.seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    char tm_fc_str[TIME_CAP];
    std::snprintf(tm_fc_str, sizeof tm_fc_str, "%04d.%02d.%02d.%02d:%02d", YY, MM, DD, HH, MI);
    int x = time_x(title);
    gdImageString(im, gdFontGetLarge(), x, 1, (unsigned char *)tm_fc_str, color_lvl[SLOT_BLACK]);
    gdImageString(im, gdFontGetLarge(), x + 1, 1, (unsigned char *)tm_fc_str, color_lvl[SLOT_BLACK]);
    return 0;
}
