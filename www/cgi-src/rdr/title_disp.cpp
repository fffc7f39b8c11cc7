// The title band across the top of the picture: the product's Korean title in bold blue and the
// data time in black after it. A product without a title gets none; the time then stands at
// its leftmost place. Returns 0.
#include <gdfontl.h>

#include <cstdio>
#include <cstring>

#include "korean_text.h"
#include "rdr_sfc_pty_img.h"
#include "seq_time.h"

namespace {

constexpr double TITLE_POINTS = 11.5;
constexpr int TITLE_BASELINE = 16;  // 5 + the font size, truncated
constexpr int TIME_MIN_X = 130;
constexpr int TIME_CAP = 100;

struct Title {
    const char *obs;
    const char *euckr;
};

const Title kTitles[] = {
    {"RNEX", "\xbd\xc7\xc8\xb2 \xb0\xad\xbc\xf6\xbf\xb5\xbf\xaa"},                  // 실황 강수영역
    {"RNSN", "\xbd\xc7\xc8\xb2 \xb4\xab\xba\xf1\xbf\xb5\xbf\xaa"},                  // 실황 눈비영역
    {"RNSN1", "\xbd\xc7\xc8\xb2 \xb4\xab\xba\xf1\xbf\xb5\xbf\xaa(\xc3\xd6\xc0\xfb)"},  // 실황 눈비영역(최적)
    {"RNSN2", "\xbd\xc7\xc8\xb2 \xb4\xab\xba\xf1\xbf\xb5\xbf\xaa(\xb7\xb9\xc0\xcc\xb4\xf5)"},  // 실황 눈비영역(레이더)
    {"AREA", "\xb4\xab\xba\xf1\xb0\xa1\xb4\xc9\xbf\xb5\xbf\xaa"},                    // 눈비가능영역
    {"TW", "\xbd\xc7\xc8\xb2 \xbd\xc0\xb1\xb8\xbf\xc2\xb5\xb5"},                    // 실황 습구온도
    {"RN15X", "AWS \xb0\xad\xbc\xf6(15\xba\xd0)*4"},                                 // AWS 강수(15분)*4
    {"HSR", "\xbd\xc7\xc8\xb2 \xb7\xb9\xc0\xcc\xb4\xf5"},                            // 실황 레이더
};

const char *title_of_request()
{
    for (const Title &t : kTitles)
        if (obs_is(t.obs)) return t.euckr;
    return "";
}

// The time follows the title by its EUC-KR byte length, not by its drawn width.
int time_x(const char *euckr)
{
    int x = (int)(std::strlen(euckr) * 8.6 + 10.0);
    return x < TIME_MIN_X ? TIME_MIN_X : x;
}

}  // namespace

int title_disp(gdImagePtr im, int color_lvl[])
{
    gdImageFilledRectangle(im, 0, 0, var.GI, 20, color_lvl[241]);

    const char *title = title_of_request();
    draw_euckr_bold(im, title, TITLE_POINTS, 5, 6, TITLE_BASELINE, color_lvl[247]);

    int YY, MM, DD, HH, MI;
    seq2time(var.seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    char tm_fc_str[TIME_CAP];
    std::snprintf(tm_fc_str, sizeof tm_fc_str, "%04d.%02d.%02d.%02d:%02d", YY, MM, DD, HH, MI);
    int x = time_x(title);
    gdImageString(im, gdFontGetLarge(), x, 1, (unsigned char *)tm_fc_str, color_lvl[244]);
    gdImageString(im, gdFontGetLarge(), x + 1, 1, (unsigned char *)tm_fc_str, color_lvl[244]);
    return 0;
}
