// Line reading and number scanning for the text formats; see text_fields.h.
#include "text_fields.h"

#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "cgiutil.h"

LineRead read_line(std::FILE *fp, char *buf, std::size_t cap)
{
    std::size_t n = 0;
    bool fits = true;
    int c = getc_unlocked(fp);
    if (c == EOF || cap == 0) return LineRead::End;
    for (; c != EOF && c != '\n'; c = getc_unlocked(fp)) {
        if (n + 1 < cap)
            buf[n++] = (char)c;
        else
            fits = false;
    }
    buf[n] = '\0';
    return fits ? LineRead::Ok : LineRead::TooLong;
}

bool is_blank(const char *line)
{
    for (; *line; line++)
        if (!std::isspace((unsigned char)*line)) return false;
    return true;
}

const char *scan_int(const char *p, int *out)
{
    const char *q = p;
    while (std::isspace((unsigned char)*q)) q++;
    if (*q == '+' || *q == '-') q++;
    if (!std::isdigit((unsigned char)*q)) return nullptr;
    *out = read_int(p);
    while (std::isdigit((unsigned char)*q)) q++;
    return q;
}

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A plain decimal number (digits, a point, an exponent) starts at q: from_chars reads it several
// times faster than strtof and, both rounding correctly, to the same float. Signs other than
// '-', hexadecimal, inf, nan and numbers beyond the float range are strtof's.
const char *scan_plain_decimal(const char *q, float *out)
{
    const char *digits = *q == '-' ? q + 1 : q;
    bool plain = is_digit(digits[0]) ? !(digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
                                     : digits[0] == '.' && is_digit(digits[1]);
    if (!plain) return nullptr;
    float v;
    std::from_chars_result r = std::from_chars(q, q + std::strlen(q), v);
    if (r.ec != std::errc()) return nullptr;
    *out = v;
    return r.ptr;
}

}  // namespace

const char *scan_float(const char *p, float *out)
{
    const char *q = p;
    while (std::isspace((unsigned char)*q)) q++;
    if (const char *end = scan_plain_decimal(q, out)) return end;
    char *end = nullptr;
    float v = std::strtof(p, &end);
    if (end == p) return nullptr;
    *out = v;
    return end;
}
