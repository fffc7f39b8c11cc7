// Reading the program's small text formats (colour files, outline files) one line at a time,
// and scanning numbers out of a line. A line longer than the caller's buffer is reported as such
// and skipped whole, never cut into two lines; a number that is not there is reported, not guessed.
#ifndef TEXT_FIELDS_H
#define TEXT_FIELDS_H

#include <cstddef>
#include <cstdio>

enum class LineRead { Ok, TooLong, End };

// The next line into `buf` without its line feed, or TooLong with the rest of the line consumed,
// or End at the end of the file.
LineRead read_line(std::FILE *fp, char *buf, std::size_t cap);

// True when the line holds nothing but white space.
bool is_blank(const char *line);

// One decimal integer after optional white space (saturating, as read_int); returns the position
// after it, or nullptr when no integer starts there.
const char *scan_int(const char *p, int *out);

// One float after optional white space, as strtof reads it (inf, nan and exponents included);
// returns the position after it, or nullptr when no number starts there.
const char *scan_float(const char *p, float *out);

#endif
