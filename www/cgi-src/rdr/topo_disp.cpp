// The terrain layer; see topo_disp.h.
#include "topo_disp.h"

#include <algorithm>
#include <vector>

#include "canvas.h"
#include "color_table.h"
#include "file_ptr.h"
#include "le_bytes.h"
#include "rdr_paths.h"
#include "straightforward.h"
#include "topo_grid.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr int MAX_BANDS = SLOT_TOPO_LAST - SLOT_TOPO_FIRST + 1;
// Heights up to this many metres stay unshaded.
constexpr float LOWEST_SHADED = 1.0f;
constexpr long ROW_BYTES = 2L * TOPO_COLS;

// The terrain file's rows as stored: the straightforward road reads the whole file at once, the
// fast one only the rows the view samples, each once. Whatever the file does not hold reads as
// 0, a height that is never shaded.
struct TerrainRows {
    std::FILE *fp;
    std::vector<unsigned char> bytes;
    int row_held = -1;
};

// Half a value at the end of what was read is not a value.
void keep_whole_values(std::vector<unsigned char> &bytes, long long got)
{
    if (got % 2) bytes[(std::size_t)got - 1] = 0;
}

void read_whole(TerrainRows &t)
{
    t.bytes.assign((std::size_t)TOPO_DATA_BYTES, 0);
    if (std::fseek(t.fp, TOPO_HEADER_BYTES, SEEK_SET) != 0) return;
    keep_whole_values(t.bytes, (long long)std::fread(t.bytes.data(), 1, t.bytes.size(), t.fp));
}

const unsigned char *terrain_row(TerrainRows &t, int iy)
{
    if (STRAIGHTFORWARD) return t.bytes.data() + ROW_BYTES * iy;
    if (iy != t.row_held) {
        t.bytes.assign((std::size_t)ROW_BYTES, 0);
        long long got = read_at(fileno(t.fp), t.bytes.data(), ROW_BYTES, TOPO_HEADER_BYTES + ROW_BYTES * iy);
        keep_whole_values(t.bytes, std::max(got, 0LL));
        t.row_held = iy;
    }
    return t.bytes.data();
}

// The first band whose bound is above the height; heights above every bound take the last band.
int band_colour(float ht, const int color_lvl[], const float data_lvl[], int last_slot)
{
    for (int k = SLOT_TOPO_FIRST; k < last_slot; k++)
        if (data_lvl[k] > ht) return color_lvl[k];
    return color_lvl[last_slot];
}

struct Shading {
    const int *color_lvl;
    const float *data_lvl;
    int last_slot;
    float east;   // the map's corner from the terrain file's first point, km
    float north;
};

// The last row and column of the file are never shown.
int column_of(const Shading &s, int i)
{
    return cell_index(view_x(view.terrain, view.km_per_px, i) + s.east, TOPO_COLS - 1);
}

int row_of(const Shading &s, int j)
{
    return cell_index(view_y(view.terrain, view.km_per_px, j) + s.north, TOPO_ROWS - 1);
}

// The band colour of a terrain point, or -1 when it stays unshaded.
int shade_of(const Shading &s, const unsigned char *row, int ix)
{
    if (ix < 0) return -1;
    float ht = (float)(le_i16(row + 2 * ix) * 0.1);
    return ht > LOWEST_SHADED ? band_colour(ht, s.color_lvl, s.data_lvl, s.last_slot) : -1;
}

// One row of the map area, image row `GJ - j`. Entry 0 is the first class colour: terrain shows
// through that class only. The fast road takes the columns from a table and works on the row.
void shade_row(gdImagePtr im, const Shading &s, const std::vector<int> &columns, const unsigned char *row, int j)
{
    int y = var.GJ - j;
    if (STRAIGHTFORWARD) {
        for (int i = 1; i < var.NI; i++) {
            int colour = shade_of(s, row, column_of(s, i));
            if (colour >= 0 && gdImageGetPixel(im, i, y) == 0) gdImageSetPixel(im, i, y, colour);
        }
        return;
    }
    unsigned char *line = canvas_row(im, y);
    for (int i = 1; i < var.NI; i++) {
        if (line[i] != 0) continue;
        int colour = shade_of(s, row, columns[i]);
        if (colour >= 0) line[i] = (unsigned char)colour;
    }
}

}  // namespace

int topo_disp(gdImagePtr im, int color_lvl[], float data_lvl[])
{
    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(topo_file_path(path, sizeof path), path, "rb");
    if (!fp) return -1;
    TerrainRows terrain = {fp.get(), {}, -1};
    if (STRAIGHTFORWARD) read_whole(terrain);

    int bands = var.num_color_topo < MAX_BANDS ? var.num_color_topo : MAX_BANDS;
    if (bands <= 0) return 0;
    // In double: a catalogue's origin may lie anywhere in the int range.
    Shading s = {color_lvl, data_lvl, SLOT_TOPO_FIRST + bands - 1, (float)((double)TOPO_REF_EAST - var.SX),
                 (float)((double)TOPO_REF_NORTH - var.SY)};
    std::vector<int> columns;
    if (!STRAIGHTFORWARD)
        for (int i = 0; i < var.NI; i++) columns.push_back(column_of(s, i));

    for (int j = 1; j < var.NJ; j++) {
        int iy = row_of(s, j);
        if (iy >= 0) shade_row(im, s, columns, terrain_row(terrain, iy), j);
    }
    return 0;
}
