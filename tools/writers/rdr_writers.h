// Writers of the system's input formats, so that tests, the sample data and the benchmark
// state their data in a few lines. Paths come from the library's path composers.
#ifndef RDR_WRITERS_H
#define RDR_WRITERS_H

#include <cstdint>
#include <string>
#include <vector>

#include "rdr_cmp_header.h"

namespace fixture {

// Files: parent directories are made as needed. Each returns true on success.
bool make_parent_dirs(const std::string &path);
bool write_bytes(const std::string &path, const std::string &bytes);
// A gzip stream of `content` (empty when zlib refuses), as the producer of the grid files writes it.
std::string gzip_bytes(const std::string &content, int level = 6);
bool write_gzip(const std::string &path, const std::string &bytes, int level = 6);

// A path from one of the library's composers, which fill a buffer.
template <typename Composer, typename... Args>
std::string path_of(Composer compose, Args... args)
{
    char buf[512];
    return compose(buf, sizeof buf, args...) == 0 ? std::string(buf) : std::string();
}

// The map catalogue, one text line per entry (line feeds added).
bool write_map_catalogue(const std::vector<std::string> &lines);

// The Korean TrueType font that fonts-baekmuk installs, copied to the font path under the root.
const char *const kKoreanFont = "/usr/share/fonts/truetype/baekmuk/gulim.ttf";
bool write_font();

// A grid file's content: header and the five blocks of nx x ny cells.
struct Grid {
    RDR_CMP_HEAD head{};
    std::vector<uint8_t> code;    // low 4 bits stations, high 4 bits radar
    std::vector<uint8_t> area;
    std::vector<int16_t> tw;      // degrees C = v * 0.01 - 200
    std::vector<int16_t> hsr;     // mm/h = v * 0.01
    std::vector<int16_t> rn15x;   // mm/h = v * 0.01

    int nx() const { return head.nx; }
    int ny() const { return head.ny; }
    std::size_t at(int i, int j) const { return (std::size_t)j * head.nx + i; }
};

// A grid with every block zero; dxy in metres.
Grid make_grid(int nx, int ny, int dxy = 1000, int map_code = 0);
// A grid with something in every block: rain in the west and snow in the east (with a sprinkle
// of other codes), area classes 1..4, values growing to the north-east, and a missing station
// rain value in every seventh row; every product paints most of it.
Grid patterned_grid(int nx, int ny, int dxy = 1000, int map_code = 0);
int16_t tw_raw(double celsius);
int16_t rain_raw(double mm_per_hour);
std::string encode_grid(const Grid &grid);

// The grid file of a data time (the name the program searches), gzip-compressed. Level 0
// stores the content, so that even a tiny grid passes the program's 100-byte presence test.
std::string grid_path(int YY, int MM, int DD, int HH, int MI);
bool write_grid(const Grid &grid, int YY, int MM, int DD, int HH, int MI, int level = 0);

}  // namespace fixture

#endif
