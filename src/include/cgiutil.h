// The one text splitter, the one line reader and the one way to read a number, shared by every
// reader of the system (query string, map catalogue, colour and outline files, station catalogues).
#ifndef CGIUTIL_H
#define CGIUTIL_H

#include <cstddef>
#include <cstdio>

// Copies `line` up to the first `stop` (or its end) into `word`, cut to word_cap - 1 characters
// and terminated; skips that one stop character; moves the rest of `line` to its start.
void getword(char *word, std::size_t word_cap, char *line, char stop);

// The same split without moving the rest: returns where the rest begins (at the terminator when
// no stop was found). For long inputs such as the query string, where moving would be quadratic.
const char *getword_next(char *word, std::size_t word_cap, const char *line, char stop);

// Copies at most cap - 1 bytes of src and terminates; never overruns `dst`.
void copy_text(char *dst, std::size_t cap, const char *src);

enum class LineRead { Ok, TooLong, End };

// The next line into `buf` with its line feed, as much of it as cap - 1 bytes hold. A longer line
// is cut there and the rest of it dropped, never read as a line of its own: TooLong, and each
// format decides whether a cut line still counts. End at the end of the file.
LineRead read_line(std::FILE *fp, char *buf, std::size_t cap);

// True when the line holds nothing but white space.
bool is_blank(const char *line);

// Decimal integer: leading white space and one sign allowed, stops at the first non-digit,
// no digits give 0. Values beyond the int range saturate instead of overflowing.
int read_int(const char *text);

// One decimal integer after optional white space (saturating, as read_int); returns the position
// after it, or nullptr when no integer starts there.
const char *scan_int(const char *p, int *out);

// One decimal number after optional white space, as strtof reads it (fraction, exponent, inf and
// nan included); returns the position after it, or nullptr (and `out` untouched) when no number
// starts there.
const char *scan_float(const char *p, float *out);
// The same in double precision, as strtod reads it.
const char *scan_double(const char *p, double *out);

#endif
