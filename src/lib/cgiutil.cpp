// Text splitting and decimal reading shared by every reader of the system.
#include "cgiutil.h"

#include <cctype>
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

double read_double(const char *text) { return std::strtod(text, nullptr); }

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
