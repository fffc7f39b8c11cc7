// Writers of the picture layers' reference files: colour files, map outline files and the
// terrain file, for tests, the sample data and the benchmark. Each returns true on success;
// paths come from the library's path composers.
#ifndef PICTURE_WRITERS_H
#define PICTURE_WRITERS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "topo_grid.h"

namespace fixture {

// Colour files, by file name under the colour directory ("color_rn_echo.rgb", "color_ta_e30.rgb").
struct ColorClass {
    int R, G, B;
    float bound;  // upper bound of the class, inclusive
};
std::string encode_color_classes(const std::vector<ColorClass> &classes);
bool write_color_file(const std::string &name, const std::vector<ColorClass> &classes);
bool write_color_text(const std::string &name, const std::string &text);
// Eight classes each: rain rates 0.1 .. 100 mm/h, wet-bulb temperatures -20 .. 1 C.
std::vector<ColorClass> rain_classes();
std::vector<ColorClass> temperature_classes();
// Both colour files with those classes.
bool write_both_color_files();

// Outline files of a map and kind: polylines of (km east, km north) points of the map domain.
using Polyline = std::vector<std::pair<float, float>>;
std::string encode_outlines(const std::vector<Polyline> &lines);
bool write_outlines(const std::string &map, int kind, const std::vector<Polyline> &lines);
bool write_outline_text(const std::string &map, int kind, const std::string &text);

// The terrain grid in tenths of a metre, row 0 the southern edge.
struct Terrain {
    std::vector<int16_t> tenths = std::vector<int16_t>((std::size_t)TOPO_ROWS * TOPO_COLS, 0);
    int16_t &at(int row, int col) { return tenths[(std::size_t)row * TOPO_COLS + col]; }
};
std::string encode_terrain(const Terrain &terrain);
// `keep_bytes` below the full size writes a truncated file (header included in the count).
bool write_terrain(const Terrain &terrain, std::size_t keep_bytes = SIZE_MAX);

}  // namespace fixture

#endif
