// Writes a small sample tree under the build's root: a map catalogue, colour files and one hour
// of grid files every 5 minutes with a rain band moving east. Usage: rdr_sample_data YYYYMMDDHH
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "rdr_paths.h"
#include "rdr_writers.h"

namespace {

constexpr int NX = 1153, NY = 1441;

fixture::Grid field_at(int minute)
{
    fixture::Grid g = fixture::make_grid(NX, NY, 1000, 1);
    double shift = minute * 2.0;
    for (int j = 0; j < NY; j++) {
        for (int i = 0; i < NX; i++) {
            std::size_t k = g.at(i, j);
            double band = std::exp(-std::pow((i - 0.6 * j - 150.0 - shift) / 60.0, 2));
            double rain = 30.0 * band * (0.6 + 0.4 * std::sin(i / 23.0) * std::cos(j / 31.0));
            double tw = 12.0 - j * 0.015 + 2.0 * std::sin(i / 90.0);
            int radar = rain > 0.5 ? (tw < 0.0 ? 4 : tw < 1.5 ? 3 : 2) : 1;
            int station = (i + j) % 7 == 0 ? radar : (rain > 1.0 ? radar : 1);
            g.code[k] = (uint8_t)(station | (radar << 4));
            g.area[k] = (uint8_t)(tw < 0.0 ? 4 : tw < 1.5 ? 3 : 2);
            g.tw[k] = fixture::tw_raw(tw);
            g.hsr[k] = fixture::rain_raw(rain);
            g.rn15x[k] = fixture::rain_raw(rain * 0.8);
        }
    }
    return g;
}

bool write_color_files()
{
    std::string rain, temp;
    const int rgb[][3] = {{250, 250, 250}, {140, 200, 250}, {60, 140, 240}, {40, 200, 80},
                          {250, 220, 60},  {250, 140, 40},  {220, 40, 40},  {150, 20, 150}};
    const double rain_bounds[] = {0.1, 0.5, 1, 2, 5, 10, 20, 100};
    for (int k = 0; k < 8; k++) {
        char line[64];
        std::snprintf(line, sizeof line, "%d %d %d %.1f\n", rgb[k][0], rgb[k][1], rgb[k][2], rain_bounds[k]);
        rain += line;
        std::snprintf(line, sizeof line, "%d %d %d %.1f\n", rgb[7 - k][2], rgb[k][1], rgb[k][0], -20.0 + 3.0 * k);
        temp += line;
    }
    return fixture::write_bytes(fixture::path_of(color_file_path, "color_rn_echo.rgb"), rain) &&
           fixture::write_bytes(fixture::path_of(color_file_path, "color_ta_e30.rgb"), temp);
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2 || std::strlen(argv[1]) != 10) {
        std::fprintf(stderr, "usage: rdr_sample_data YYYYMMDDHH\n");
        return 2;
    }
    int YY, MM, DD, HH;
    if (std::sscanf(argv[1], "%4d%2d%2d%2d", &YY, &MM, &DD, &HH) != 4) return 2;

    bool ok = fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:1152:1440:560:840",
                                             "SR:600:600:300:400"}) &&
              write_color_files();
    for (int MI = 0; ok && MI < 60; MI += 5) ok = fixture::write_grid(field_at(MI), YY, MM, DD, HH, MI, 6);
    if (!ok) {
        std::fprintf(stderr, "rdr_sample_data: cannot write under %s\n", rdr_root());
        return 1;
    }
    std::printf("sample tree written under %s\n", rdr_root());
    return 0;
}
