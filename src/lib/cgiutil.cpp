// Text splitting, line reading and number reading shared by every reader of the system.
#include "cgiutil.h"

#include <cctype>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>

const char *getword_next(char *word, std::size_t word_cap, const char *line, char stop)
{
    std::size_t n = 0;
    const char *p = line;
    for (; *p && *p != stop; p++) {
        if (n + 1 < word_cap) word[n++] = *p;
    }
    if (word_cap > 0) word[n] = '\0';
    return *p ? p + 1 : p;
}

void getword(char *word, std::size_t word_cap, char *line, char stop)
{
    const char *rest = getword_next(word, word_cap, line, stop);
    std::memmove(line, rest, std::strlen(rest) + 1);
}

int read_int(const char *text)
{
    const char *p = text;
    while (std::isspace((unsigned char)*p)) p++;
    bool negative = false;
    if (*p == '+' || *p == '-') negative = (*p++ == '-');
    long long v = 0;
    for (; *p >= '0' && *p <= '9'; p++) {
        if (v <= (long long)INT_MAX + 1) v = v * 10 + (*p - '0');
    }
    if (negative) v = -v;
    if (v > INT_MAX) return INT_MAX;
    if (v < INT_MIN) return INT_MIN;
    return (int)v;
}

void copy_text(char *dst, std::size_t cap, const char *src)
{
    if (cap == 0) return;
    std::size_t n = 0;
    while (n + 1 < cap && src[n]) {
        dst[n] = src[n];
        n++;
    }
    dst[n] = '\0';
}

LineRead read_line(std::FILE *fp, char *buf, std::size_t cap)
{
    if (cap == 0) return LineRead::End;
    int c = getc_unlocked(fp);
    if (c == EOF) return LineRead::End;
    std::size_t n = 0;
    bool fits = true;
    for (; c != EOF; c = getc_unlocked(fp)) {
        if (n + 1 < cap)
            buf[n++] = (char)c;
        else
            fits = false;
        if (c == '\n') break;
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
// times faster than strtof and, both rounding correctly, to the same value. Signs other than
// '-', hexadecimal, inf, nan and numbers beyond the type's range are strtof's (strtod's).
template <typename T>
const char *scan_plain_decimal(const char *q, T *out)
{
    const char *digits = *q == '-' ? q + 1 : q;
    bool plain = is_digit(digits[0]) ? !(digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
                                     : digits[0] == '.' && is_digit(digits[1]);
    if (!plain) return nullptr;
    T v;
    std::from_chars_result r = std::from_chars(q, q + std::strlen(q), v);
    if (r.ec != std::errc()) return nullptr;
    *out = v;
    return r.ptr;
}

template <typename T>
const char *scan_number(const char *p, T *out, T (*convert)(const char *, char **))
{
    const char *q = p;
    while (std::isspace((unsigned char)*q)) q++;
    if (const char *end = scan_plain_decimal(q, out)) return end;
    char *end = nullptr;
    T v = convert(p, &end);
    if (end == p) return nullptr;
    *out = v;
    return end;
}

}  // namespace

const char *scan_float(const char *p, float *out) { return scan_number(p, out, std::strtof); }

const char *scan_double(const char *p, double *out) { return scan_number(p, out, std::strtod); }
