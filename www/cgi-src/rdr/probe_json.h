// JSON text, written forward into one string: objects, arrays, strings, numbers and null. The text
// is UTF-8 throughout (a byte that is not part of a UTF-8 character becomes U+FFFD), and a number
// that is not finite is written as null, so that whatever the data, the text parses.
#ifndef PROBE_JSON_H
#define PROBE_JSON_H

#include <string>

struct JSON_TEXT {
    std::string text;
    bool comma = false;  // the current object or array holds a value: the next one needs a comma
};

// Each call writes one member: `key` inside an object, nullptr inside an array.
void json_open(JSON_TEXT &j, const char *key, char bracket);  // '{' or '['
void json_close(JSON_TEXT &j, char bracket);                  // '}' or ']'
void json_string(JSON_TEXT &j, const char *key, const std::string &value);
void json_number(JSON_TEXT &j, const char *key, double value, int decimals);
void json_int(JSON_TEXT &j, const char *key, long long value);
void json_null(JSON_TEXT &j, const char *key);

#endif
