// The fixture tree of a fuzz target and one in-process run of the program; see fuzz_tree.h.
#include "fuzz_tree.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "aws3_io.h"
#include "picture_writers.h"
#include "rdr_paths.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"
#include "rdr_writers.h"
#include "station_writers.h"

namespace fuzz {

namespace {

void must(bool ok, const char *what)
{
    if (ok) return;
    std::fprintf(stderr, "fuzz tree: cannot write %s under %s\n", what, rdr_root());
    std::abort();
}

void write_grid_at(int minute)
{
    must(fixture::write_grid(fixture::patterned_grid(MAP_NX, MAP_NY), YY, MM, DD, HH, minute), "a grid file");
}

void write_outlines()
{
    fixture::Polyline coast = {{5, 5}, {50, 30}, {95, 10}, {90, 115}, {10, 100}, {5, 5}};
    fixture::Polyline border = {{0, 60}, {100, 60}};
    must(fixture::write_outlines("HR", 4, {coast, {{40, 40}}}) && fixture::write_outlines("HR", 1, {border}),
         "the outline files");
}

// Heights rising to the north-east over the map's part of the terrain grid.
void write_terrain()
{
    fixture::Terrain t;
    for (int r = 0; r < MAP_NY; r++)
        for (int q = 0; q < MAP_NX; q++)
            t.at(TOPO_REF_NORTH - MAP_SY + r, TOPO_REF_EAST - MAP_SX + q) = (int16_t)(60 * (r + q) - 50);
    must(fixture::write_terrain(t), "the terrain file");
}

// A station's record of one minute: raining in even minutes, with wind, amounts and values.
AWS3_DATA observed(int stn_id, int minute)
{
    AWS3_DATA r = fixture::minute_record(stn_id, YY, MM, DD, HH, minute);
    r.d[7] = (int16_t)(minute % 2 == 0 ? 1 : 0);
    r.d[65] = (int16_t)(450 * (stn_id % 8));
    r.d[66] = (int16_t)(37 * (stn_id % 11));
    r.d[67] = (int16_t)(5 * minute);
    r.d[68] = (int16_t)(stn_id % 300);
    r.d[69] = (int16_t)(minute * 3);
    return r;
}

// The minutes 0..10 of hour 12 (the window of 12:05), with QC flags on the rain indicator.
void write_minutes(const std::vector<int> &ids)
{
    std::vector<fixture::MinuteSlot> data;
    std::vector<fixture::QcSlot> qc;
    for (int minute = 0; minute <= 10; minute++)
        for (int id : ids) {
            data.push_back({minute, id, observed(id, minute)});
            fixture::QcSlot q{minute, id, {}};
            q.record.qc[id % 8] = 1u << 7;
            qc.push_back(q);
        }
    must(fixture::write_minute_hour(YY, MM, DD, HH, data) && fixture::write_qc_hour(YY, MM, DD, HH, qc),
         "the minute files");
}

void install_font()
{
    std::ifstream in(RDR_SYSTEM_FONT, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    must(in && fixture::write_bytes(font_path(), bytes.str()), "the font");
}

}  // namespace

const std::vector<int> STATION_IDS = {95, 100, 150, 250, 500, 9999};

void write_stations(const std::vector<int> &ids)
{
    std::vector<fixture::Station> list;
    for (std::size_t k = 0; k < ids.size(); k++) {
        fixture::Station s;
        s.list.stn_id = ids[k];
        // Every other name is longer than any label and ends in half a character.
        if (k % 2) s.list.name = std::string(20, '\xb0') + "\xa1";
        s.x = 8.0f + 15.0f * (float)k;
        s.y = 10.0f + 17.0f * (float)k;
        list.push_back(s);
    }
    must(fixture::write_station_catalogues(list, MAP_SX, MAP_SY), "the station catalogues");
}

void make_tree(unsigned parts)
{
    namespace fs = std::filesystem;
    std::string root = rdr_root();
    // A mistaken configuration must never make a target wipe a real tree.
    if (root.find("/fuzzroot/") == std::string::npos) {
        std::fprintf(stderr, "fuzz tree: refusing to wipe %s\n", root.c_str());
        std::abort();
    }
    std::error_code ec;
    fs::remove_all(root, ec);
    fs::create_directories(root);

    setenv("TZ", "UTC0", 1);
    tzset();
    int null_fd = open("/dev/null", O_WRONLY);
    if (null_fd >= 0) {
        dup2(null_fd, STDOUT_FILENO);
        close(null_fd);
    }
    install_font();
    if (parts & CATALOGUE)
        must(fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:100:120:50:60", "SR:60:60:30:30",
                                           "A/B:100:120:50:60"}),
             "the map catalogue");
    if (parts & GRIDS) {
        write_grid_at(0);
        write_grid_at(5);
    }
    if (parts & COLOURS) must(fixture::write_both_color_files(), "the colour files");
    if (parts & OUTLINES) write_outlines();
    if (parts & TERRAIN) write_terrain();
    if (parts & STATIONS) write_stations(STATION_IDS);
    if (parts & MINUTES) write_minutes(STATION_IDS);
}

void write_hour_of_grids()
{
    for (int minute = 0; minute < 60; minute += 5) write_grid_at(minute);
}

std::string gzip_bytes(const std::string &content)
{
    z_stream z{};
    // 15 + 16: a gzip header and trailer around the deflate stream.
    if (deflateInit2(&z, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) std::abort();
    std::string out(deflateBound(&z, content.size()), '\0');
    z.next_in = (Bytef *)content.data();
    z.avail_in = (uInt)content.size();
    z.next_out = (Bytef *)&out[0];
    z.avail_out = (uInt)out.size();
    if (deflate(&z, Z_FINISH) != Z_STREAM_END) std::abort();
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

void put_file(const std::string &path, const std::string &bytes) { must(fixture::write_bytes(path, bytes), path.c_str()); }

void run_program(const char *query, int (*program_main)())
{
    var = INPUT_VAR{};
    rdr_cmp_head = RDR_CMP_HEAD{};
    data = nullptr;
    pty = nullptr;
    std::memset(stn_data, 0, sizeof stn_data);
    if (query)
        setenv("QUERY_STRING", query, 1);
    else
        unsetenv("QUERY_STRING");

    program_main();

    rdr_sfc_pty_release();
    AWS3_DATA_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
    AWS3_QCD_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
}

int Choices::pick(int count)
{
    int byte = used_ < size_ ? data_[used_++] : 0;
    return byte % count;
}

std::string Choices::rest() const
{
    return used_ < size_ ? std::string((const char *)data_ + used_, size_ - used_) : std::string();
}

}  // namespace fuzz
