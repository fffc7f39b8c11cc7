// Korean text; see korean_text.h.
#include "korean_text.h"

#include <iconv.h>

#include <cstring>
#include <string>

#include "rdr_paths.h"

int euckr2utf(char *str, char *out)
{
    std::size_t in_left = std::strlen(str);
    std::size_t out_left = 2 * in_left;
    iconv_t cd = iconv_open("UTF-8", "euc-kr");
    if (cd == (iconv_t)-1) return -1;
    char *in = str;
    char *o = out;
    std::size_t result = iconv(cd, &in, &in_left, &o, &out_left);
    iconv_close(cd);
    return (int)result;
}

// At most twice the EUC-KR length, plus the terminator.
std::string euckr_to_utf8(const char *euckr)
{
    std::string in(euckr);
    std::string out(2 * in.size() + 1, '\0');
    euckr2utf(&in[0], &out[0]);
    out.resize(std::strlen(out.c_str()));
    return out;
}

namespace {

void draw_utf8(gdImagePtr im, const std::string &utf8, double points, int x, int y, int colour)
{
    if (utf8.empty()) return;
    int brect[8];
    gdImageStringFT(im, brect, colour, font_path(), points, 0.0, x, y, utf8.c_str());
}

}  // namespace

std::size_t euckr_whole_prefix(const char *text, std::size_t max_bytes, std::size_t max_utf8)
{
    std::size_t bytes = 0, utf8 = 0;
    while (text[bytes] != '\0') {
        unsigned char lead = (unsigned char)text[bytes];
        bool wide = lead >= 0x80;
        std::size_t width = wide ? 2 : 1;
        // The converter takes a byte of 0x80..0x9f as a character of its own (a C1 control, two
        // bytes of UTF-8), so a pair led by one may become four bytes; any other pair three.
        std::size_t utf8_width = !wide ? 1 : (lead <= 0x9f ? 4 : 3);
        if (wide && text[bytes + 1] == '\0') break;
        if (bytes + width > max_bytes || utf8 + utf8_width > max_utf8) break;
        bytes += width;
        utf8 += utf8_width;
    }
    return bytes;
}

void draw_euckr(gdImagePtr im, const char *euckr, double points, int x, int y, int colour)
{
    draw_utf8(im, euckr_to_utf8(euckr), points, x, y, colour);
}

void draw_euckr_bold(gdImagePtr im, const char *euckr, double points, int x_first, int x_second, int y,
                     int colour)
{
    std::string utf8 = euckr_to_utf8(euckr);
    draw_utf8(im, utf8, points, x_first, y, colour);
    draw_utf8(im, utf8, points, x_second, y, colour);
}
