// Writers of files in general, the map catalogue, the font and the grid file.
#include <sys/stat.h>
#include <zlib.h>

#include <cerrno>
#include <cmath>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <sstream>

#include "rdr_paths.h"
#include "rdr_writers.h"
#include "file_ptr.h"

namespace fixture {

bool make_parent_dirs(const std::string &path)
{
    for (std::size_t pos = path.find('/', 1); pos != std::string::npos; pos = path.find('/', pos + 1)) {
        std::string dir = path.substr(0, pos);
        if (mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) return false;
    }
    return true;
}

bool write_bytes(const std::string &path, const std::string &bytes)
{
    if (path.empty() || !make_parent_dirs(path)) return false;
    FilePtr fp(std::fopen(path.c_str(), "wb"));
    if (!fp) return false;
    return std::fwrite(bytes.data(), 1, bytes.size(), fp.get()) == bytes.size();
}

std::string gzip_bytes(const std::string &content, int level)
{
    z_stream z{};
    // 15 + 16: a gzip header and trailer around the deflate stream.
    if (deflateInit2(&z, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) return std::string();
    std::string out(deflateBound(&z, content.size()), '\0');
    // One call: the contents written here stay far below zlib's 32-bit counts.
    z.next_in = (Bytef *)content.data();
    z.avail_in = (uInt)content.size();
    z.next_out = (Bytef *)&out[0];
    z.avail_out = (uInt)out.size();
    int status = deflate(&z, Z_FINISH);
    out.resize(status == Z_STREAM_END ? z.total_out : 0);
    deflateEnd(&z);
    return out;
}

bool write_gzip(const std::string &path, const std::string &bytes, int level)
{
    std::string z = gzip_bytes(bytes, level);
    return !z.empty() && write_bytes(path, z);
}

bool write_map_catalogue(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines) text += line + "\n";
    return write_bytes(path_of(map_catalogue_path), text);
}

bool write_font()
{
    std::ifstream in(kKoreanFont, std::ios::binary);
    std::ostringstream bytes;
    return in && bytes << in.rdbuf() && write_bytes(font_path(), bytes.str());
}

Grid make_grid(int nx, int ny, int dxy, int map_code)
{
    Grid g;
    g.head.nx = (short)nx;
    g.head.ny = (short)ny;
    g.head.dxy = (short)dxy;
    g.head.map_code = (char)map_code;
    std::size_t n = (std::size_t)std::max(nx, 0) * (std::size_t)std::max(ny, 0);
    g.code.assign(n, 0);
    g.area.assign(n, 0);
    g.tw.assign(n, 0);
    g.hsr.assign(n, 0);
    g.rn15x.assign(n, 0);
    return g;
}

Grid patterned_grid(int nx, int ny, int dxy, int map_code)
{
    Grid g = make_grid(nx, ny, dxy, map_code);
    for (int j = 0; j < ny; j++)
        for (int i = 0; i < nx; i++) {
            std::size_t k = g.at(i, j);
            g.code[k] = (uint8_t)((i < nx / 2 ? 0x22 : 0x44) ^ ((i + j) % 5 == 0 ? 0x31 : 0));
            g.area[k] = (uint8_t)(1 + (i + j) % 4);
            g.tw[k] = tw_raw(-5.0 + 0.1 * (i + j));
            g.hsr[k] = rain_raw(0.2 * j);
            g.rn15x[k] = j % 7 == 0 ? (int16_t)-30000 : rain_raw(0.3 * i);
        }
    return g;
}

int16_t tw_raw(double celsius) { return (int16_t)std::lround((celsius + 200.0) * 100.0); }
int16_t rain_raw(double mm_per_hour) { return (int16_t)std::lround(mm_per_hour * 100.0); }

std::string encode_grid(const Grid &grid)
{
    unsigned char head[RDR_CMP_HEAD_SIZE];
    encode_rdr_cmp_head(head, grid.head);
    std::string out((const char *)head, sizeof head);
    out.append(grid.code.begin(), grid.code.end());
    out.append(grid.area.begin(), grid.area.end());
    for (const std::vector<int16_t> *block : {&grid.tw, &grid.hsr, &grid.rn15x}) {
        for (int16_t v : *block) {
            unsigned char b[2];
            put_le_i16(b, v);
            out.append((const char *)b, 2);
        }
    }
    return out;
}

std::string grid_path(int YY, int MM, int DD, int HH, int MI)
{
    return path_of(grid_file_path, YY, MM, DD, HH, MI);
}

bool write_grid(const Grid &grid, int YY, int MM, int DD, int HH, int MI, int level)
{
    return write_gzip(grid_path(YY, MM, DD, HH, MI), encode_grid(grid), level);
}

}  // namespace fixture
