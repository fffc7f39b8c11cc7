// JSON text; see probe_json.h.
#include "probe_json.h"

#include <cmath>
#include <cstdio>

namespace {

// The length of the UTF-8 character at p (n bytes left), or 0 when the bytes are none.
std::size_t utf8_length(const unsigned char *p, std::size_t n)
{
    std::size_t len = p[0] < 0x80 ? 1 : p[0] >= 0xc2 && p[0] < 0xe0 ? 2 : p[0] >= 0xe0 && p[0] < 0xf0 ? 3
                                      : p[0] >= 0xf0 && p[0] < 0xf5 ? 4 : 0;
    if (len == 0 || len > n) return 0;
    for (std::size_t k = 1; k < len; k++)
        if ((p[k] & 0xc0) != 0x80) return 0;
    // Overlong forms, surrogates and code points above U+10FFFF.
    if (len == 3 && ((p[0] == 0xe0 && p[1] < 0xa0) || (p[0] == 0xed && p[1] >= 0xa0))) return 0;
    if (len == 4 && ((p[0] == 0xf0 && p[1] < 0x90) || (p[0] == 0xf4 && p[1] >= 0x90))) return 0;
    return len;
}

void quoted(std::string &out, const std::string &s)
{
    out += '"';
    const unsigned char *p = (const unsigned char *)s.data();
    for (std::size_t k = 0, n = s.size(); k < n;) {
        unsigned char c = p[k];
        std::size_t len = utf8_length(p + k, n - k);
        if (len == 0) {
            out += "\xef\xbf\xbd";
            k++;
        } else if (c == '"' || c == '\\') {
            out += '\\';
            out += (char)c;
            k++;
        } else if (c < 0x20 || c == 0x7f) {
            char esc[8];
            std::snprintf(esc, sizeof esc, "\\u%04x", c);
            out += esc;
            k++;
        } else {
            out.append(s, k, len);
            k += len;
        }
    }
    out += '"';
}

void member(JSON_TEXT &j, const char *key)
{
    if (j.comma) j.text += ',';
    if (key) {
        quoted(j.text, key);
        j.text += ':';
    }
    j.comma = true;
}

}  // namespace

void json_open(JSON_TEXT &j, const char *key, char bracket)
{
    member(j, key);
    j.text += bracket;
    j.comma = false;
}

void json_close(JSON_TEXT &j, char bracket)
{
    j.text += bracket;
    j.comma = true;
}

void json_string(JSON_TEXT &j, const char *key, const std::string &value)
{
    member(j, key);
    quoted(j.text, value);
}

void json_number(JSON_TEXT &j, const char *key, double value, int decimals)
{
    if (!std::isfinite(value)) return json_null(j, key);
    member(j, key);
    char buf[64];
    // Fixed decimals as long as they fit the buffer; beyond, the exponent form.
    const char *form = std::fabs(value) < 1e15 ? "%.*f" : "%.*e";
    std::snprintf(buf, sizeof buf, form, decimals, value);
    j.text += buf;
}

void json_int(JSON_TEXT &j, const char *key, long long value)
{
    member(j, key);
    j.text += std::to_string(value);
}

void json_null(JSON_TEXT &j, const char *key)
{
    member(j, key);
    j.text += "null";
}
