// Writes the fixture tree of the scripted tests under the test build's root: the map HR of 100 x
// 120 km, origin at (50, 60) km, beside catalogue entries the viewer lists as a second map or
// skips; grid files 12:00 .. 12:30 on 2024-01-15 but 12:15, at 12:35 one too small to count, and
// one of another size outside the data folders (other-size.bin.gz); terrain, outlines, and 20
// stations observed 12:00 .. 12:10.
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "picture_writers.h"
#include "rdr_paths.h"
#include "rdr_writers.h"
#include "station_writers.h"

namespace {

bool write_tree(const std::string &root)
{
    bool ok = fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:100:120:50:60", "EW:200:100:0:0", "HR:5:5:0:0", "x-y:10:10:0:0"}) &&
              fixture::write_both_color_files() && fixture::write_terrain(fixture::Terrain()) &&
              fixture::write_outlines("HR", 4, {{{5, 5}, {50, 30}, {95, 10}, {90, 115}, {5, 5}}}) &&
              fixture::write_outlines("HR", 1, {{{0, 60}, {100, 60}}}) &&
              fixture::write_bytes(fixture::grid_path(2024, 1, 15, 12, 35), std::string(100, 'x')) &&
              fixture::write_gzip(root + "/other-size.bin.gz", fixture::encode_grid(fixture::patterned_grid(50, 60)));
    for (int mi : {0, 5, 10, 20, 25, 30}) ok = ok && fixture::write_grid(fixture::patterned_grid(100, 120), 2024, 1, 15, 12, mi, 6);
    std::vector<fixture::Station> stations;
    std::vector<fixture::MinuteSlot> minutes;
    for (int k = 0; k < 20; k++) {
        stations.push_back({{90 + 5 * k}, 10.0f + 4.0f * (float)k, 8.0f + 5.0f * (float)k});
        for (int mi = 0; mi <= 10; mi++) {
            minutes.push_back({mi, 90 + 5 * k, fixture::minute_record(90 + 5 * k, 2024, 1, 15, 12, mi)});
            int16_t *d = minutes.back().record.d;
            d[7] = (int16_t)(k % 2), d[65] = (int16_t)(90 * k), d[66] = (int16_t)(10 * k), d[67] = (int16_t)(3 * k);
        }
    }
    return ok && fixture::write_station_catalogues(stations, 50, 60) && fixture::write_minute_hour(2024, 1, 15, 12, minutes);
}

}  // namespace

int main()
{
    std::string root = rdr_root();
    std::error_code ec;
    // A mistaken configuration must never make a test wipe a real tree.
    if (root.find("root") == std::string::npos) {
        std::fprintf(stderr, "rdr_fixture_tree: %s does not look like a test root\n", root.c_str());
        return 2;
    }
    std::filesystem::remove_all(root, ec);
    bool ok = fixture::write_font() && write_tree(root);
    if (!ok) std::fprintf(stderr, "rdr_fixture_tree: cannot write the tree under %s\n", root.c_str());
    return ok ? 0 : 1;
}
