// The probe's answer; see probe_answer.h.
#include "probe_answer.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "color_table.h"
#include "korean_text.h"
#include "probe_json.h"
#include "product_table.h"
#include "seq_time.h"
#include "user_input.h"

namespace {

// The byte blocks: codes (stations in the low, radar in the high 4 bits) first, then areas.
constexpr int CODE_BLOCK = 0;
constexpr int AREA_BLOCK = 1;

// Decimals: km to the metre, degrees to about a metre, values to their stored hundredths.
constexpr int KM_DECIMALS = 3;
constexpr int DEGREE_DECIMALS = 5;
constexpr int VALUE_DECIMALS = 2;
constexpr int WIND_DECIMALS = 1;

// The class tables' names in UTF-8, converted once per answer.
struct ClassNames {
    std::string rnex[CLASS_ROWS], rnsn[CLASS_ROWS];
};

ClassNames class_names()
{
    ClassNames n;
    for (int k = 0; k < CLASS_ROWS; k++) {
        n.rnex[k] = euckr_to_utf8(rnex_color[k].rnex_ko);
        n.rnsn[k] = euckr_to_utf8(rnsn_color[k].rnsn_ko);
    }
    return n;
}

// The name of the first row of the table with class c, or nullptr.
const std::string *name_of(const ClassNames &names, ClassTable table, int c)
{
    for (int k = 0; k < CLASS_ROWS; k++) {
        int code = table == ClassTable::RNEX ? rnex_color[k].rnex : rnsn_color[k].rnsn;
        if (code == c) return table == ClassTable::RNEX ? &names.rnex[k] : &names.rnsn[k];
    }
    return nullptr;
}

std::string time_text(int seq)
{
    int YY, MM, DD, HH, MI;
    seq2time(seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    char text[64];
    std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d", YY, MM, DD, HH, MI);
    return text;
}

// What every answer opens with, as far as it is known.
void request_members(JSON_TEXT &j, Known known)
{
    if (known == Known::Nothing) return;
    if (known == Known::File) json_string(j, "tm", time_text(var.seq));
    json_string(j, "tm_asked", time_text(seq_asked));
    if (known == Known::File) {
        const char *slash = std::strrchr(var.fname, '/');
        json_string(j, "file", slash ? slash + 1 : var.fname);
    }
    json_string(j, "map", var.map);
}

void optional_byte(JSON_TEXT &j, const char *key, int raw, int shift, int mask)
{
    if (raw == CELL_NOT_GIVEN) return json_null(j, key);
    json_int(j, key, (raw >> shift) & mask);
}

// Every product of the table: a class product's class and name, a value product's value.
void products(JSON_TEXT &j, const CELL_RAW &cell, const ClassNames &names)
{
    json_open(j, "classes", '{');
    for (int k = 0; k < product_count(); k++) {
        const PRODUCT &p = product_at(k);
        if (p.kind != ProductKind::Classes) continue;
        int raw = cell.raw[p.block];
        int c = raw == CELL_NOT_GIVEN ? 0 : class_of_code(p.rule, (unsigned char)raw);
        if (c == 0) {
            json_null(j, p.code);
            continue;
        }
        json_open(j, p.code, '{');
        json_int(j, "class", c);
        const std::string *name = name_of(names, p.table, c);
        if (name) json_string(j, "name", *name); else json_null(j, "name");
        json_close(j, '}');
    }
    json_close(j, '}');
    for (int k = 0; k < product_count(); k++) {
        const PRODUCT &p = product_at(k);
        if (p.kind != ProductKind::Values) continue;
        std::string key = p.code;
        for (char &ch : key) ch = (char)std::tolower((unsigned char)ch);
        int raw = cell.raw[p.block];
        float v = raw == CELL_NOT_GIVEN ? MISSING_LIMIT : scaled_value(raw, p.value_offset);
        if (v <= MISSING_LIMIT) json_null(j, key.c_str()); else json_number(j, key.c_str(), v, VALUE_DECIMALS);
    }
}

void sample(JSON_TEXT &j, const char *key, const PROBE_SAMPLE &s, const CELL_RAW &cell, bool on_line,
            const ClassNames &names)
{
    json_open(j, key, '{');
    json_number(j, "x", s.x, KM_DECIMALS);
    json_number(j, "y", s.y, KM_DECIMALS);
    json_number(j, "lon", s.lon, DEGREE_DECIMALS);
    json_number(j, "lat", s.lat, DEGREE_DECIMALS);
    if (on_line) json_number(j, "d", s.d, KM_DECIMALS);
    if (s.cell.i >= 0 && s.cell.j >= 0) {
        json_open(j, "cell", '[');
        json_int(j, nullptr, s.cell.i);
        json_int(j, nullptr, s.cell.j);
        json_close(j, ']');
    } else {
        json_null(j, "cell");
    }
    optional_byte(j, "pty_aws", cell.raw[CODE_BLOCK], 0, 0x0f);
    optional_byte(j, "pty_rdr", cell.raw[CODE_BLOCK], 4, 0x0f);
    optional_byte(j, "area", cell.raw[AREA_BLOCK], 0, 0xff);
    products(j, cell, names);
    json_close(j, '}');
}

// A station value that the readers mark missing by a negative number.
void observed(JSON_TEXT &j, const char *key, float v, int decimals)
{
    if (v < 0) return json_null(j, key);
    json_number(j, key, v, decimals);
}

void station_member(JSON_TEXT &j, const PROBE_STATION *station)
{
    if (!station) return json_null(j, "station");
    const STN_VAL &s = station->stn;
    json_open(j, "station", '{');
    json_int(j, "stn_id", s.stn_id);
    json_string(j, "name", euckr_to_utf8(s.stn_ko));
    json_number(j, "distance_km", station->distance_km, KM_DECIMALS);
    json_number(j, "x", s.x, KM_DECIMALS);
    json_number(j, "y", s.y, KM_DECIMALS);
    if (s.re == 0 || s.re == 1) json_int(j, "rain", s.re); else json_null(j, "rain");
    observed(j, "rn15x_x4", s.d, VALUE_DECIMALS);
    observed(j, "wd", s.wd, WIND_DECIMALS);
    observed(j, "ws", s.ws, WIND_DECIMALS);
    json_close(j, '}');
}

void line_member(JSON_TEXT &j, const PROBE_QUERY &q, const std::vector<PROBE_SAMPLE> &samples,
                 const std::vector<CELL_RAW> &cells, const ClassNames &names)
{
    json_open(j, "line", '{');
    json_number(j, "x1", q.x1, KM_DECIMALS);
    json_number(j, "y1", q.y1, KM_DECIMALS);
    json_number(j, "x2", q.x2, KM_DECIMALS);
    json_number(j, "y2", q.y2, KM_DECIMALS);
    json_int(j, "n", (long long)samples.size());
    json_number(j, "length_km", samples.empty() ? 0 : samples.back().d, KM_DECIMALS);
    json_open(j, "samples", '[');
    for (std::size_t k = 0; k < samples.size(); k++) sample(j, nullptr, samples[k], cells[k], true, names);
    json_close(j, ']');
    json_close(j, '}');
}

}  // namespace

std::string probe_answer(const PROBE_QUERY &q, const std::vector<PROBE_SAMPLE> &samples,
                         const std::vector<CELL_RAW> &cells, const PROBE_STATION *station)
{
    ClassNames names = class_names();
    JSON_TEXT j;
    json_open(j, nullptr, '{');
    request_members(j, Known::File);
    if (q.shape == ProbeShape::Point && !samples.empty()) {
        sample(j, "point", samples[0], cells[0], false, names);
        station_member(j, station);
    } else {
        line_member(j, q, samples, cells, names);
    }
    json_close(j, '}');
    return j.text + "\n";
}

std::string probe_error(const std::string &why, Known known)
{
    JSON_TEXT j;
    json_open(j, nullptr, '{');
    json_string(j, "error", why);
    request_members(j, known);
    json_close(j, '}');
    return j.text + "\n";
}
