// Writes a fixture tree under the test build's root for the scripted tests: rdr_fixture_tree
// viewer (grid files 12:00 .. 12:30 on 2024-01-15 but 12:15, and at 12:35 one too small to
// count; the map HR of 100 x 120 km, origin at (50, 60) km) or load (the map HR of 300 x 360 km,
// grid files every 5 minutes of 12:00 .. 12:55 and one of 150 x 180 cells at 11:00, 40 stations
// observed around 12:05).
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "picture_writers.h"
#include "rdr_paths.h"
#include "rdr_writers.h"
#include "station_writers.h"

namespace {

bool viewer_tree()
{
    bool ok = fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:100:120:50:60", "EW:200:100:0:0", "HR:5:5:0:0", "x-y:10:10:0:0"}) &&
              fixture::write_both_color_files() && fixture::write_bytes(fixture::grid_path(2024, 1, 15, 12, 35), std::string(100, 'x'));
    for (int mi : {0, 5, 10, 20, 25, 30}) ok = ok && fixture::write_grid(fixture::patterned_grid(100, 120), 2024, 1, 15, 12, mi);
    return ok;
}

bool load_tree()
{
    bool ok = fixture::write_map_catalogue({"HR:300:360:150:180"}) && fixture::write_both_color_files() && fixture::write_terrain(fixture::Terrain()) &&
              fixture::write_outlines("HR", 4, {{{10, 10}, {150, 80}, {290, 30}, {280, 350}, {10, 10}}}) &&
              fixture::write_outlines("HR", 1, {{{0, 180}, {300, 180}}});
    for (int mi = 0; ok && mi < 60; mi += 5) ok = fixture::write_grid(fixture::patterned_grid(300, 360), 2024, 1, 15, 12, mi, 6);
    ok = ok && fixture::write_grid(fixture::patterned_grid(150, 180), 2024, 1, 15, 11, 0, 6);  // a grid of another size
    std::vector<fixture::Station> stations;
    std::vector<fixture::MinuteSlot> minutes;
    for (int k = 0; k < 40; k++) {
        stations.push_back({{90 + 5 * k}, 10.0f + 7.0f * (float)k, 20.0f + 8.0f * (float)k});
        for (int mi = 0; mi <= 10; mi++) {
            minutes.push_back({mi, 90 + 5 * k, fixture::minute_record(90 + 5 * k, 2024, 1, 15, 12, mi)});
            int16_t *d = minutes.back().record.d;
            d[7] = (int16_t)(k % 2), d[65] = (int16_t)(90 * k), d[66] = (int16_t)(10 * k), d[67] = (int16_t)(3 * k);
        }
    }
    return ok && fixture::write_station_catalogues(stations, 150, 180) && fixture::write_minute_hour(2024, 1, 15, 12, minutes);
}

}  // namespace

int main(int argc, char **argv)
{
    std::string root = rdr_root(), which = argc == 2 ? argv[1] : "";
    std::ifstream font(RDR_SYSTEM_FONT, std::ios::binary);
    std::error_code ec;
    // A mistaken configuration must never make a test wipe a real tree.
    if ((which != "viewer" && which != "load") || root.find("root") == std::string::npos || !font) {
        std::fprintf(stderr, "usage: rdr_fixture_tree viewer|load (with a test root and the Korean font)\n");
        return 2;
    }
    std::filesystem::remove_all(root, ec);
    bool ok = fixture::write_bytes(font_path(), std::string(std::istreambuf_iterator<char>(font), {})) &&
              (which == "viewer" ? viewer_tree() : load_tree());
    if (!ok) std::fprintf(stderr, "rdr_fixture_tree: cannot write the %s tree under %s\n", which.c_str(), root.c_str());
    return ok ? 0 : 1;
}
