// Cutting EUC-KR text at a whole character, so that no half character is kept or drawn.
#ifndef EUCKR_TEXT_H
#define EUCKR_TEXT_H

#include <cstddef>

// The length of the longest prefix of `text` made of whole characters (a byte of 0x80 or more
// starts a two-byte character) with at most max_bytes bytes and at most max_utf8 bytes once
// converted to UTF-8 (a two-byte character takes at most three there).
inline std::size_t euckr_whole_prefix(const char *text, std::size_t max_bytes, std::size_t max_utf8)
{
    std::size_t bytes = 0, utf8 = 0;
    while (text[bytes] != '\0') {
        bool wide = (unsigned char)text[bytes] >= 0x80;
        std::size_t width = wide ? 2 : 1;
        std::size_t utf8_width = wide ? 3 : 1;
        if (wide && text[bytes + 1] == '\0') break;
        if (bytes + width > max_bytes || utf8 + utf8_width > max_utf8) break;
        bytes += width;
        utf8 += utf8_width;
    }
    return bytes;
}

#endif
