// TrueType drawing of EUC-KR text; see korean_text.h.
#include "korean_text.h"

#include <cstring>
#include <string>

#include "rdr_sfc_pty_img.h"

namespace {

// The UTF-8 form: at most twice the EUC-KR length, plus the terminator.
std::string to_utf8(const char *euckr)
{
    std::string in(euckr);
    std::string out(2 * in.size() + 1, '\0');
    euckr2utf(&in[0], &out[0]);
    out.resize(std::strlen(out.c_str()));
    return out;
}

void draw_utf8(gdImagePtr im, const std::string &utf8, double points, int x, int y, int colour)
{
    if (utf8.empty()) return;
    int brect[8];
    gdImageStringFT(im, brect, colour, font_path(), points, 0.0, x, y, utf8.c_str());
}

}  // namespace

void draw_euckr_bold(gdImagePtr im, const char *euckr, double points, int x_first, int x_second, int y,
                     int colour)
{
    std::string utf8 = to_utf8(euckr);
    draw_utf8(im, utf8, points, x_first, y, colour);
    draw_utf8(im, utf8, points, x_second, y, colour);
}
