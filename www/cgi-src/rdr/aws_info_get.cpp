// The station catalogue; see aws_info_get.h. Kept are the stations of the accepted agencies that
// at the requested hour were listed, had a rain sensor and a position inside the 1024 km square.
#include "aws_info_get.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "cgiutil.h"
#include "file_ptr.h"
#include "korean_text.h"
#include "lamcproj.h"
#include "rdr_paths.h"
#include "seq_time.h"
#include "user_input.h"
#include "view.h"

STN_VAL stn_data[STN_MAX];

namespace {

constexpr int LINE_CAP = 1000;
constexpr std::size_t NAME_CAP = 32;
constexpr std::size_t KIND_CAP = 16;
constexpr std::size_t CODE_CAP = 8;
constexpr std::size_t FIELD_CAP = 100;
constexpr std::size_t TIME_DIGITS = 10;  // YYYYMMDDHH: validity is decided by the hour
constexpr std::size_t MIN_COORDINATE_CHARS = 3;
constexpr float GRID_EXTENT_KM = 1024.0f;

// What `d` holds while the catalogue is loaded.
constexpr float LISTED = -99.0f;
constexpr float HAS_RAIN_SENSOR = 1.0f;
constexpr float PLACED = 99.0f;
constexpr float PLACED_AT_LEAST = 10.0f;

const char *const ACCEPTED_AGENCIES = "TEV:GFR";
const char *const REFUSED_KINDS[] = {"SZ", "PA", "PB", "SO"};

// One catalogue line, split at commas from the left. The line feed stays on the last field.
struct Fields {
    const char *rest;

    void next(char *word, std::size_t cap) { rest = getword_next(word, cap, rest, ','); }
    void skip()
    {
        char word[FIELD_CAP];
        next(word, sizeof word);
    }
    int number()
    {
        char word[FIELD_CAP];
        next(word, sizeof word);
        return read_int(word);
    }
    // A validity time at hour resolution; beyond the int range it reads as the latest time.
    int hour()
    {
        char word[FIELD_CAP];
        next(word, sizeof word);
        word[TIME_DIGITS] = '\0';
        return read_int(word);
    }
    // A latitude or longitude; too short a text is no position.
    float coordinate()
    {
        char word[FIELD_CAP];
        next(word, sizeof word);
        return std::strlen(word) >= MIN_COORDINATE_CHARS ? decimal(word) : -1.0f;
    }
    float height()
    {
        char word[FIELD_CAP];
        next(word, sizeof word);
        return word[0] != '\0' ? decimal(word) : -1.0f;
    }
    // A text without a number reads as 0.
    static float decimal(const char *word)
    {
        float v = 0.0f;
        scan_float(word, &v);
        return v;
    }
};

// A line cut at the buffer still counts for the fields it holds.
bool next_row(char (&line)[LINE_CAP], std::FILE *fp) { return read_line(fp, line, LINE_CAP) != LineRead::End; }

bool valid_at(int tm1, int tm2, int tm) { return tm1 <= tm && tm <= tm2; }

// The request hour as YYYYMMDDHH; years beyond the int range read as the latest time.
int request_hour(int seq)
{
    int YY, MM, DD, HH, MI;
    seq2time(seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    long long tm = (((long long)YY * 100 + MM) * 100 + DD) * 100 + HH;
    return tm > INT_MAX ? INT_MAX : (int)tm;
}

bool accepted(const char *gov_cd, const char *kind)
{
    if (!std::strstr(ACCEPTED_AGENCIES, gov_cd)) return false;
    for (const char *refused : REFUSED_KINDS) {
        if (std::strcmp(kind, refused) == 0) return false;
    }
    return kind[0] == 'S';
}

int read_station_list(std::FILE *fp, int tm)
{
    int n = 0;
    char line[LINE_CAP];
    while (n < STN_MAX && next_row(line, fp)) {
        Fields f{line};
        int stn_id = f.number();
        int tm2 = f.hour();
        int tm1 = f.hour();
        if (!valid_at(tm1, tm2, tm)) continue;
        char name[NAME_CAP], kind[KIND_CAP], gov_cd[CODE_CAP];
        f.next(name, sizeof name);
        f.skip();
        f.next(kind, sizeof kind);
        f.skip();
        f.next(gov_cd, sizeof gov_cd);
        if (!accepted(gov_cd, kind)) continue;

        STN_VAL &s = stn_data[n++];
        copy_text(s.gov_cd, sizeof s.gov_cd, gov_cd);
        s.stn_id = stn_id;
        name[euckr_whole_prefix(name, sizeof s.stn_ko - 1, SIZE_MAX)] = '\0';
        copy_text(s.stn_ko, sizeof s.stn_ko, name);
        copy_text(s.stn_sp, sizeof s.stn_sp, kind);
        s.d = LISTED;
    }
    return n;
}

// The first loaded entry of each station number, sorted by number: sensor and position rows
// go to it.
using FirstEntries = std::vector<std::pair<int, int>>;

FirstEntries first_entries(int n)
{
    FirstEntries by_id;
    for (int k = 0; k < n; k++) by_id.emplace_back(stn_data[k].stn_id, k);
    std::sort(by_id.begin(), by_id.end());
    return by_id;
}

STN_VAL *first_entry(const FirstEntries &by_id, int stn_id)
{
    auto it = std::lower_bound(by_id.begin(), by_id.end(), std::make_pair(stn_id, INT_MIN));
    return it != by_id.end() && it->first == stn_id ? &stn_data[it->second] : nullptr;
}

void mark_rain_sensors(std::FILE *fp, int tm, const FirstEntries &entries)
{
    char line[LINE_CAP];
    while (next_row(line, fp)) {
        Fields f{line};
        int stn_id = f.number();
        f.skip();
        char obs_cd[CODE_CAP];
        f.next(obs_cd, sizeof obs_cd);
        f.skip();
        int tm2 = f.hour();
        int tm1 = f.hour();
        if (std::strcmp(obs_cd, "RN") != 0 || !valid_at(tm1, tm2, tm)) continue;
        if (STN_VAL *s = first_entry(entries, stn_id)) s->d = HAS_RAIN_SENSOR;
    }
}

// Only a duplicate's first entry can hold a sensor mark, so the first entry decides.
void place_stations(std::FILE *fp, int tm, const FirstEntries &entries)
{
    lamc_parameter map = map_projection();

    char line[LINE_CAP];
    while (next_row(line, fp)) {
        Fields f{line};
        int stn_id = f.number();
        f.skip();
        int tm2 = f.hour();
        int tm1 = f.hour();
        if (!valid_at(tm1, tm2, tm)) continue;
        STN_VAL *s = first_entry(entries, stn_id);
        if (!s || !(s->d > 0)) continue;
        float lat = f.coordinate();
        float lon = f.coordinate();
        float ht = f.height();
        if (!(lat > 0 && lon > 0 && ht > 0)) continue;
        float xx = 0, yy = 0;
        lamcproj_ellp(&lon, &lat, &xx, &yy, 0, &map);
        if (!(xx >= 0 && xx <= GRID_EXTENT_KM && yy >= 0 && yy <= GRID_EXTENT_KM)) continue;
        s->d = PLACED;
        s->x = xx;
        s->y = yy;
        s->ht = ht;
    }
}

// Keeps the placed stations in list order and clears their observation fields.
int keep_placed(int n)
{
    int kept = 0;
    for (int k = 0; k < n; k++) {
        if (stn_data[k].d >= PLACED_AT_LEAST) stn_data[kept++] = stn_data[k];
    }
    for (int k = 0; k < kept; k++) {
        STN_VAL &s = stn_data[k];
        s.re = -999;
        s.re_ok = 0;
        s.re_base = 0;
        s.rn_15x = -999;
        s.d = -999.0f;
    }
    return kept;
}

}  // namespace

int aws_info_get(int seq)
{
    int tm = request_hour(seq);
    char path[RDR_PATH_CAP];

    FilePtr list = open_file(stn_obs_path(path, sizeof path), path, "r");
    if (!list) return -2;
    int n = read_station_list(list.get(), tm);
    list.reset();
    FirstEntries entries = first_entries(n);

    FilePtr sensors = open_file(stn_sensor_path(path, sizeof path), path, "r");
    if (!sensors) return -2;
    mark_rain_sensors(sensors.get(), tm, entries);
    sensors.reset();

    FilePtr positions = open_file(stn_loc_path(path, sizeof path), path, "r");
    if (!positions) return -3;
    place_stations(positions.get(), tm, entries);
    return keep_placed(n);
}
