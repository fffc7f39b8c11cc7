// Writers of colour, outline and terrain files. Large inputs are formatted into one reserved
// buffer and written at once.
#include "picture_writers.h"

#include <cstdio>

#include "le_bytes.h"
#include "rdr_paths.h"
#include "rdr_writers.h"

namespace fixture {

namespace {

// Appends one printf-formatted line; the lines of these formats are short.
template <typename... Args>
void append_line(std::string &out, const char *format, Args... args)
{
    char line[128];
    int n = std::snprintf(line, sizeof line, format, args...);
    if (n > 0) out.append(line, (std::size_t)n < sizeof line ? (std::size_t)n : sizeof line - 1);
}

}  // namespace

std::string encode_color_classes(const std::vector<ColorClass> &classes)
{
    std::string out;
    out.reserve(classes.size() * 24);
    for (const ColorClass &c : classes) append_line(out, "%d %d %d %.9g\n", c.R, c.G, c.B, (double)c.bound);
    return out;
}

bool write_color_file(const std::string &name, const std::vector<ColorClass> &classes)
{
    return write_color_text(name, encode_color_classes(classes));
}

bool write_color_text(const std::string &name, const std::string &text)
{
    return write_bytes(path_of(color_file_path, name.c_str()), text);
}

std::vector<ColorClass> rain_classes()
{
    const float bounds[] = {0.1f, 0.5f, 1, 2, 5, 10, 20, 100};
    std::vector<ColorClass> classes;
    for (int k = 0; k < 8; k++) classes.push_back({30 * k, 250 - 30 * k, 120, bounds[k]});
    return classes;
}

std::vector<ColorClass> temperature_classes()
{
    std::vector<ColorClass> classes;
    for (int k = 0; k < 8; k++) classes.push_back({250 - 30 * k, 30 * k, 200, -20.0f + 3.0f * k});
    return classes;
}

bool write_both_color_files()
{
    return write_color_file("color_rn_echo.rgb", rain_classes()) &&
           write_color_file("color_ta_e30.rgb", temperature_classes());
}

std::string encode_outlines(const std::vector<Polyline> &lines)
{
    std::size_t points = 0;
    for (const Polyline &line : lines) points += line.size();
    std::string out;
    out.reserve(lines.size() * 12 + points * 24);
    for (const Polyline &line : lines) {
        append_line(out, "%d %d\n", (int)line.size(), 0);
        for (const auto &p : line) append_line(out, "%f %f\n", (double)p.first, (double)p.second);
    }
    return out;
}

bool write_outlines(const std::string &map, int kind, const std::vector<Polyline> &lines)
{
    return write_outline_text(map, kind, encode_outlines(lines));
}

bool write_outline_text(const std::string &map, int kind, const std::string &text)
{
    return write_bytes(path_of(outline_file_path, map.c_str(), kind), text);
}

std::string encode_terrain(const Terrain &terrain)
{
    std::string out((std::size_t)TOPO_HEADER_BYTES, '\0');
    out.reserve((std::size_t)(TOPO_HEADER_BYTES + TOPO_DATA_BYTES));
    for (int16_t v : terrain.tenths) {
        unsigned char b[2];
        put_le_i16(b, v);
        out.append((const char *)b, 2);
    }
    return out;
}

bool write_terrain(const Terrain &terrain, std::size_t keep_bytes)
{
    std::string bytes = encode_terrain(terrain);
    if (keep_bytes < bytes.size()) bytes.resize(keep_bytes);
    return write_bytes(path_of(topo_file_path), bytes);
}

}  // namespace fixture
