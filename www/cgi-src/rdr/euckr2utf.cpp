// EUC-KR to UTF-8, the one conversion of the system's Korean text (titles, class labels,
// station names) just before it is drawn. The caller zero-fills `out` and gives it room for
// twice the input's length plus one; nothing is terminated here. Returns the converter's count
// of irreversible conversions, or -1 when the converter fails or meets a bad sequence (what was
// converted before stays in `out`).
#include <iconv.h>

#include <cstring>

#include "rdr_sfc_pty_img.h"

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
