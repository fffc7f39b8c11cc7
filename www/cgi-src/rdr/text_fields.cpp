// Line reading and number scanning for the text formats; see text_fields.h.
#include "text_fields.h"

#include <cctype>
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

const char *scan_float(const char *p, float *out)
{
    char *end = nullptr;
    float v = std::strtof(p, &end);
    if (end == p) return nullptr;
    *out = v;
    return end;
}
