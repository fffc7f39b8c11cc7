// One fuzz driver for every input surface: a table says which file of a small fixture tree the
// input becomes and which request then runs the whole program in-process. Compiled once per surface
// (RDR_FUZZ_SURFACE; RDR_ROOT a tree of its own). An input's first bytes are the surface's choices,
// the rest the content of its file (so are the seeds in corpus/ made).
#include <gd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "aws_info_get.h"
#include "file_ptr.h"
#include "grid_stream.h"
#include "korean_text.h"
#include "picture_writers.h"
#include "rdr_paths.h"
#include "rdr_sfc_pty_get.h"
#include "rdr_writers.h"
#include "station_writers.h"
#include "user_input.h"

// The mains of the picture and the point program, compiled under these names for the drivers.
int rdr_program_main();
int rdr_probe_main();

namespace {

// The tree's time: grid files at 12:00 and 12:05 of 2024-01-15 (every 5 minutes of the hour for
// the minute files), stations observed around it; the map "HR" is 100 x 120 km, origin (50, 60).
constexpr int YY = 2024, MM = 1, DD = 15, HH = 12;
const std::string kTm = "&tm=202401151205";
enum Part : unsigned {
    CATALOGUE = 1, GRIDS = 2, COLOURS = 4, OUTLINES = 8, TERRAIN = 16, STATIONS = 32, MINUTES = 64, ALL = 127,
    FIRST_SLOTS = 128,  // stations 0..5 instead, whose slots lead every minute block
};
const std::vector<int> kStationIds = {95, 100, 150, 250, 500, 9999};

void must(bool ok, const std::string &what)
{
    if (ok) return;
    std::fprintf(stderr, "fuzz tree: cannot write %s under %s\n", what.c_str(), rdr_root());
    std::abort();
}
void put(const std::string &path, const std::string &bytes) { must(fixture::write_bytes(path, bytes), path); }

// Stations inside the map; every other name is longer than any label and ends in half a character.
std::vector<fixture::Station> stations(const std::vector<int> &ids)
{
    std::vector<fixture::Station> list;
    for (std::size_t k = 0; k < ids.size(); k++) {
        list.push_back({{ids[k]}, 8.0f + 15.0f * (float)k, 10.0f + 17.0f * (float)k});
        if (k % 2) list.back().list.name = std::string(20, '\xb0') + "\xa1";
    }
    return list;
}

// The minutes 0..10 of hour 12, raining in even minutes, with wind, amounts, values and QC flags.
void write_minutes(const std::vector<int> &ids)
{
    std::vector<fixture::MinuteSlot> data;
    std::vector<fixture::QcSlot> qc;
    for (int minute = 0; minute <= 10; minute++)
        for (int id : ids) {
            data.push_back({minute, id, fixture::minute_record(id, YY, MM, DD, HH, minute)});
            int16_t *d = data.back().record.d;
            d[7] = (int16_t)(minute % 2 == 0), d[65] = (int16_t)(450 * (id % 8)), d[66] = (int16_t)(37 * (id % 11));
            d[67] = (int16_t)(5 * minute), d[68] = (int16_t)(id % 300), d[69] = (int16_t)(minute * 3);
            qc.push_back({minute, id, {}});
            qc.back().record.qc[id % 8] = 1u << 7;
        }
    must(fixture::write_minute_hour(YY, MM, DD, HH, data) && fixture::write_qc_hour(YY, MM, DD, HH, qc), "the minute files");
}

// Wipes the surface's root and writes the parts of the tree it does not fuzz, with the font.
void make_tree(unsigned parts)
{
    std::string root = rdr_root();
    if (root.find("/fuzzroot/") == std::string::npos) {  // never wipe a real tree
        std::fprintf(stderr, "fuzz tree: refusing to wipe %s\n", root.c_str());
        std::abort();
    }
    std::error_code ec;
    std::filesystem::remove_all(root, ec);
    setenv("TZ", "UTC0", 1);
    tzset();
    must(std::freopen("/dev/null", "w", stdout) != nullptr, "standard output to /dev/null");
    must(fixture::write_font(), "the font");
    if (parts & CATALOGUE)
        must(fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:100:120:50:60", "SR:60:60:30:30", "A/B:100:120:50:60"}), "the catalogue");
    for (int minute = 0; (parts & GRIDS) && minute < 60; minute += 5)
        must(fixture::write_grid(fixture::patterned_grid(100, 120), YY, MM, DD, HH, minute), "a grid file");
    if (parts & COLOURS) must(fixture::write_both_color_files(), "the colour files");
    if (parts & OUTLINES)
        must(fixture::write_outlines("HR", 4, {{{5, 5}, {50, 30}, {95, 10}, {90, 115}, {10, 100}, {5, 5}}, {{40, 40}}}) &&
                 fixture::write_outlines("HR", 1, {{{0, 60}, {100, 60}}}),
             "the outline files");
    if (parts & TERRAIN) {
        fixture::Terrain t;  // heights rising to the north-east over the map
        for (int r = 0; r < 120; r++)
            for (int q = 0; q < 100; q++) t.at(TOPO_REF_NORTH - 60 + r, TOPO_REF_EAST - 50 + q) = (int16_t)(60 * (r + q) - 50);
        must(fixture::write_terrain(t), "the terrain file");
    }
    if (parts & STATIONS) must(fixture::write_station_catalogues(stations(kStationIds), 50, 60), "the station catalogues");
    if (parts & MINUTES) write_minutes(kStationIds);
    if (parts & FIRST_SLOTS) must(fixture::write_station_catalogues(stations({0, 1, 2, 3, 4, 5}), 50, 60), "the stations");
}

// The choices of an input, a byte each from its front (a byte past the end reads as 0).
struct Choices {
    const uint8_t *data;
    std::size_t size, used = 0;
    int pick(int count) { return (used < size ? data[used++] : 0) % count; }
    std::string rest() const { return used < size ? std::string((const char *)data + used, size - used) : std::string(); }
};

// One run of the program from the state a new process starts in; afterwards the grids it
// allocated are freed and the minute files it keeps open closed, so runs neither grow nor meet.
void run_program(int (*program)(), const std::string &query, bool has_query)
{
    var = INPUT_VAR{};
    rdr_cmp_head = RDR_CMP_HEAD{};
    data = nullptr;
    pty = nullptr;
    std::memset(stn_data, 0, sizeof stn_data);
    if (has_query) setenv("QUERY_STRING", query.c_str(), 1);
    else unsetenv("QUERY_STRING");
    program();
    rdr_sfc_pty_release();
    AWS3_DATA_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
    AWS3_QCD_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
}

// Each surface takes its choices and its file from the input and sets the request to run; an
// input may also be done without a run, or not worth one.
enum class Then { Run, Done, Reject };
using Place = Then (*)(Choices &, std::string &query);

// The query itself; one starting with NUL is a request without a query string. Pictures of 641
// to 8192 pixels cost time by their size and add no path of their own, so they are not run; the
// point program's points and lines of at most 2000 samples are all affordable.
Then place_query(Choices &c, std::string &q)
{
    q = c.rest();
    if (!q.empty() && q[0] == '\0') return Then::Run;
    q.resize(std::strlen(q.c_str()));
    var = INPUT_VAR{};
    setenv("QUERY_STRING", q.c_str(), 1);
    user_input();
    return var.size > 640 && var.size <= 8192 && std::strcmp(RDR_FUZZ_SURFACE, "query") == 0 ? Then::Reject : Then::Run;
}

// The grid file: the rest as it stands, compressed whole or compressed and cut. Headers with
// negative sizes end the process by design and those above a million cells only make the run
// slow; both are rows of the end-to-end table.
Then place_grid(Choices &c, std::string &q)
{
    const char *products[] = {"RNSN", "RNSN1", "RNSN2", "RNEX", "AREA", "TW", "HSR", "RN15X", "RNSN3", "XX"};
    const char *views[] = {"", "&griddisp=1", "&gis=T&rnexdisp=2", "&zoom_level=1&zoom_x=5000000&zoom_y=5000000",
                           "&griddisp=1&zoom_level=2&zoom_rate=3&zoom_x=39&zoom_y=71&rnexdisp=0"};
    q = std::string("obs=") + products[c.pick(10)] + kTm + "&size=160" + views[c.pick(5)];
    int how = c.pick(3), cut = c.pick(256);
    std::string file = how == 0 ? c.rest() : fixture::gzip_bytes(c.rest());
    if (how == 2) file.resize(file.size() * cut / 256);
    std::string path = fixture::grid_path(YY, MM, DD, HH, 5);
    put(path, file);
    // The header as the program's own stream decodes it: damaged data may give garbage first.
    GridStreamPtr s = grid_stream_open(path.c_str(), grid_inflater());
    unsigned char head[RDR_CMP_HEAD_SIZE] = {0};
    if (s) grid_stream_read(s.get(), head, sizeof head);
    RDR_CMP_HEAD h = decode_rdr_cmp_head(head);
    return h.nx >= 0 && h.ny >= 0 && (long)h.nx * h.ny <= 1000000 ? Then::Run : Then::Reject;
}

Then place_catalogue(Choices &c, std::string &q)
{
    const char *queries[] = {"obs=RNSN&size=200", "obs=TW&size=150&gis=T&zoom_level=2&zoom_x=3000000&zoom_y=4000000",
                             "obs=HSR&size=120&aws=8&zoom_level=3&zoom_x=2200000&zoom_y=2200000&x1=10&y1=20&x2=90&y2=100",
                             "obs=RNEX&size=100&map=SR&legend=0", "obs=AREA&size=100&map=A/B&aws=1&zoom_level=1",
                             "obs=RN15X&size=100&map=hr&griddisp=1"};
    q = queries[c.pick(6)] + kTm;
    put(fixture::path_of(map_catalogue_path), c.rest());
    return Then::Run;
}

Then place_colours(Choices &c, std::string &q)
{
    const char *queries[] = {"obs=HSR&size=150", "obs=RN15X&size=120&griddisp=1&rnexdisp=2&gis=T",
                             "obs=HSR&size=100&rnexdisp=0&zoom_level=1&zoom_x=44&zoom_y=44", "obs=TW&size=150&gis=T",
                             "obs=TW&size=90&griddisp=1&legend=1"};
    int k = c.pick(5);
    put(fixture::path_of(color_file_path, k < 3 ? "color_rn_echo.rgb" : "color_ta_e30.rgb"), c.rest());
    q = queries[k] + kTm;
    return Then::Run;
}

// One kind of outline (the other is missing); kind 1 from zoom level 2, doubled lines above 450
// and 600 pixels.
Then place_outline(Choices &c, std::string &q)
{
    const char *queries[] = {"obs=RNSN&size=200&zoom_level=2", "obs=RNSN&size=601&legend=0&zoom_level=3&zoom_x=5500000&zoom_y=5500000",
                             "obs=RNSN&size=460&zoom_level=2&zoom_rate=3&zoom_x=99&zoom_y=11",
                             "obs=RNEX&size=100&zoom_level=1&zoom_x=8800000&zoom_y=1200000"};
    int kind = c.pick(2) == 0 ? 4 : 1;
    q = queries[c.pick(4)] + kTm;
    std::remove(fixture::path_of(outline_file_path, "HR", 5 - kind).c_str());
    put(fixture::path_of(outline_file_path, "HR", kind), c.rest());
    return Then::Run;
}

// The station list, sensor list and position list, separated by 0x1e; a list the input does
// not reach is missing.
Then place_stations(Choices &c, std::string &q)
{
    const char *modes[] = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "-1"};
    const char *views[] = {"&zoom_level=3", "&zoom_level=1", "&zoom_level=2&zoom_x=2000000&zoom_y=2000000",
                           "&zoom_level=4&zoom_rate=3&zoom_x=22&zoom_y=22"};
    q = std::string("obs=RNSN&size=200&aws=") + modes[c.pick(12)] + views[c.pick(4)] + kTm;
    std::string rest = c.rest();
    std::size_t start = 0;
    for (int (*compose)(char *, std::size_t) : {stn_obs_path, stn_sensor_path, stn_loc_path}) {
        std::string path = fixture::path_of(compose);
        std::size_t end = start <= rest.size() ? std::min(rest.find('\x1e', start), rest.size()) : 0;
        if (start > rest.size()) std::remove(path.c_str());
        else put(path, rest.substr(start, end - start));
        start = end + 1;
    }
    return Then::Run;
}

// The data part then the QC part of one minute's block (stations 0..5 have the first slots) in
// otherwise empty (sparse) files, the request's time putting that minute inside the window.
Then place_minutes(Choices &c, std::string &q)
{
    const char *modes[] = {"1", "3", "4", "5", "8", "9", "10", "11"};
    int minute = c.pick(60);
    const char *mode = modes[c.pick(8)];
    std::size_t data_len = (std::size_t)c.pick(256) * 256 + (std::size_t)c.pick(256);
    std::string rest = c.rest();
    struct Part { int (*compose)(char *, std::size_t, int, int, int, int); long long block; std::string bytes; } parts[] = {
        {aws3_min_path, AWS3_DATA_BLOCK, rest.substr(0, data_len)},
        {aws3_qcd_path, AWS3_QCD_BLOCK, data_len < rest.size() ? rest.substr(data_len) : ""}};
    for (const Part &p : parts) {
        std::string path = fixture::path_of(p.compose, YY, MM, DD, HH);
        put(path, "");
        FilePtr fp(std::fopen(path.c_str(), "r+b"));
        must(fp && std::fseek(fp.get(), (long)(minute * p.block), SEEK_SET) == 0, path);
        std::fwrite(p.bytes.data(), 1, p.bytes.size(), fp.get());
    }
    char text[128];
    std::snprintf(text, sizeof text, "obs=RNSN&tm=20240115%02d%02d&size=200&zoom_level=3&aws=%s", HH, minute / 5 * 5, mode);
    q = text;
    return Then::Run;
}

// EUC-KR text on its way to a label: converted into exactly the room its contract asks for, cut
// to whole characters within 29 bytes in both encodings, and drawn.
Then place_euckr(Choices &c, std::string &)
{
    std::string text = c.rest();
    text.resize(std::strlen(text.c_str()));
    std::size_t cut = euckr_whole_prefix(text.c_str(), 29, 29);
    if (euckr_to_utf8(text.c_str()).size() > 2 * text.size() || cut > 29 || euckr_to_utf8(text.substr(0, cut).c_str()).size() > 29)
        std::abort();
    gdImagePtr im = gdImageCreate(120, 24);
    gdImageColorAllocate(im, 255, 255, 255);
    draw_euckr(im, text.substr(0, cut).c_str(), 10.0, 2, 16, gdImageColorAllocate(im, 0, 0, 0));
    gdImageDestroy(im);
    return Then::Done;
}

struct Surface {
    const char *name;
    unsigned tree;  // the parts written once, before the first input
    Place place;
    int (*program)() = rdr_program_main;
};
const Surface kSurfaces[] = {
    {"query", ALL, place_query}, {"probe_query", ALL, place_query, rdr_probe_main}, {"grid_file", ALL & ~GRIDS, place_grid},
    {"map_catalogue", ALL & ~CATALOGUE, place_catalogue}, {"color_file", CATALOGUE | GRIDS | TERRAIN, place_colours},
    {"outline", CATALOGUE | GRIDS, place_outline},        {"stations", ALL & ~STATIONS, place_stations},
    {"minute_files", CATALOGUE | GRIDS | COLOURS | FIRST_SLOTS, place_minutes}, {"euckr", 0, place_euckr},
};

const Surface &surface()
{
    for (const Surface &s : kSurfaces)
        if (std::strcmp(s.name, RDR_FUZZ_SURFACE) == 0) return s;
    std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    make_tree(surface().tree);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, std::size_t size)
{
    Choices c{bytes, size};
    std::string query;
    Then then = surface().place(c, query);
    if (then == Then::Run) run_program(surface().program, query, query.empty() || query[0] != '\0');
    return then == Then::Reject ? -1 : 0;
}
