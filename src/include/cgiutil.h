// The one text splitter and the one way to read a decimal number, shared by every reader
// (query string, map catalogue, station catalogues).
#ifndef CGIUTIL_H
#define CGIUTIL_H

#include <cstddef>

// Copies `line` up to the first `stop` (or its end) into `word`, cut to word_cap - 1 characters
// and terminated; skips that one stop character; moves the rest of `line` to its start.
void getword(char *word, std::size_t word_cap, char *line, char stop);

// The same split without moving the rest: returns where the rest begins (at the terminator when
// no stop was found). For long inputs such as the query string, where moving would be quadratic.
const char *getword_next(char *word, std::size_t word_cap, const char *line, char stop);

// Decimal integer: leading white space and one sign allowed, stops at the first non-digit,
// no digits give 0. Values beyond the int range saturate instead of overflowing.
int read_int(const char *text);

// Decimal number with optional fraction and exponent; no number gives 0.
double read_double(const char *text);

// Copies at most cap - 1 bytes of src and terminates; never overruns `dst`.
void copy_text(char *dst, std::size_t cap, const char *src);

#endif
