// The query string into the request record; see user_input.h.
#include "user_input.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "cgiutil.h"
#include "seq_time.h"

INPUT_VAR var;
const PRODUCT *product = &product_of("");
int seq_asked;

namespace {

// Working storage of the parser, terminator included.
constexpr std::size_t PAIR_CAP = 32;
constexpr std::size_t ITEM_CAP = 32;
constexpr std::size_t TM_CAP = 30;

constexpr int SEARCH_CANDIDATES = 10;
constexpr int SEARCH_STEP_MIN = 5;
constexpr long MIN_GRID_FILE_BYTES = 101;

enum class KeyKind { Text, Number, FirstChar };

struct QueryKey {
    const char *name;
    KeyKind kind;
    char *text;
    std::size_t cap;
    int *number;
};

void set_defaults(char *tm)
{
    var.cmp[0] = var.qcd[0] = var.obs[0] = var.color[0] = '\0';
    var.zoom_x[0] = var.zoom_y[0] = var.gis[0] = '\0';
    copy_text(var.map, sizeof var.map, "HR");
    copy_text(tm, TM_CAP, "0");
    var.x1 = var.y1 = var.x2 = var.y2 = 0;
    var.auto_man = '\0';
    var.aws = var.sms = 0;
    var.zoom_level = 0;
    var.zoom_rate = 2;
    var.size = 0;
    var.legend = 1;
    var.griddisp = 0;
    var.rnexdisp = 1;
    var.dir_mode = 0;
}

void store_pair(const char *item, const char *value, char *tm)
{
    const QueryKey keys[] = {
        {"cmp", KeyKind::Text, var.cmp, sizeof var.cmp, nullptr},
        {"qcd", KeyKind::Text, var.qcd, sizeof var.qcd, nullptr},
        {"obs", KeyKind::Text, var.obs, sizeof var.obs, nullptr},
        {"map", KeyKind::Text, var.map, sizeof var.map, nullptr},
        {"x1", KeyKind::Number, nullptr, 0, &var.x1},
        {"y1", KeyKind::Number, nullptr, 0, &var.y1},
        {"x2", KeyKind::Number, nullptr, 0, &var.x2},
        {"y2", KeyKind::Number, nullptr, 0, &var.y2},
        {"color", KeyKind::Text, var.color, sizeof var.color, nullptr},
        {"tm", KeyKind::Text, tm, TM_CAP, nullptr},
        {"auto_man", KeyKind::FirstChar, &var.auto_man, 1, nullptr},
        {"aws", KeyKind::Number, nullptr, 0, &var.aws},
        {"sms", KeyKind::Number, nullptr, 0, &var.sms},
        {"zoom_level", KeyKind::Number, nullptr, 0, &var.zoom_level},
        {"zoom_rate", KeyKind::Number, nullptr, 0, &var.zoom_rate},
        {"zoom_x", KeyKind::Text, var.zoom_x, sizeof var.zoom_x, nullptr},
        {"zoom_y", KeyKind::Text, var.zoom_y, sizeof var.zoom_y, nullptr},
        {"size", KeyKind::Number, nullptr, 0, &var.size},
        {"legend", KeyKind::Number, nullptr, 0, &var.legend},
        {"gis", KeyKind::Text, var.gis, sizeof var.gis, nullptr},
        {"griddisp", KeyKind::Number, nullptr, 0, &var.griddisp},
        {"rnexdisp", KeyKind::Number, nullptr, 0, &var.rnexdisp},
        {"dir", KeyKind::Number, nullptr, 0, &var.dir_mode},
    };
    for (const QueryKey &key : keys) {
        if (std::strcmp(item, key.name) != 0) continue;
        switch (key.kind) {
        case KeyKind::Text: copy_text(key.text, key.cap, value); break;
        case KeyKind::Number: *key.number = read_int(value); break;
        case KeyKind::FirstChar: *key.text = value[0]; break;
        }
        return;
    }
}

// Values are taken byte for byte: no percent-decoding, no '+' to blank.
void parse_query(const char *query, char *tm)
{
    char pair[PAIR_CAP];
    char item[ITEM_CAP];
    const char *rest = query;
    while (*rest) {
        rest = getword_next(pair, sizeof pair, rest, '&');
        getword(item, sizeof item, pair, '=');
        if (pair[0] == '\0') continue;
        store_pair(item, pair, tm);
    }
}

// One field of the YYYYMMDDHHMI text, converted by itself.
int time_field(const char *tm, std::size_t start, std::size_t len)
{
    char field[8] = {0};
    std::size_t n = std::strlen(tm);
    if (start < n) copy_text(field, len + 1, tm + start);
    return read_int(field);
}

int clamp(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

// Years and months are bounded so that the minute count cannot overflow and the month table
// is never overrun; days, hours and minutes carry over as the calendar arithmetic allows.
int requested_seq(const char *tm)
{
    int YY = clamp(time_field(tm, 0, 4), 1900, 5900);
    int MM = clamp(time_field(tm, 4, 2), 0, 13);
    return time2seq(YY, MM, time_field(tm, 6, 2), time_field(tm, 8, 2), time_field(tm, 10, 2), 'm');
}

}  // namespace

int user_input()
{
    char tm[TM_CAP];
    set_defaults(tm);
    seq_asked = 0;

    const char *query = std::getenv("QUERY_STRING");
    if (query) parse_query(query, tm);
    product = &product_of(var.obs);
    if (!query) return -1;
    var.grid = 0.5f;

    int YY, MM, DD, HH, MI, SS;
    get_time(&YY, &MM, &DD, &HH, &MI, &SS);
    var.seq_now = time2seq(YY, MM, DD, HH, MI, 'm');

    if (std::strlen(tm) >= 10 && var.auto_man != 'a')
        var.seq = requested_seq(tm);
    else
        var.seq = var.seq_now;
    var.seq = (var.seq / SEARCH_STEP_MIN) * SEARCH_STEP_MIN;
    seq_asked = var.seq;

    for (int k = 0; k < SEARCH_CANDIDATES; k++) {
        if (rdr_sfc_pty_file() == 0) return 0;
        var.seq -= SEARCH_STEP_MIN;
    }
    return -1;
}

TIME_SEARCH time_search() { return {SEARCH_CANDIDATES, SEARCH_STEP_MIN}; }

int rdr_sfc_pty_file()
{
    int YY, MM, DD, HH, MI;
    seq2time(var.seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    if (grid_file_path(var.fname, sizeof var.fname, YY, MM, DD, HH, MI) != 0) return -1;

    struct stat st;
    if (stat(var.fname, &st) != 0) return -1;
    return st.st_size >= MIN_GRID_FILE_BYTES ? 0 : -1;
}
