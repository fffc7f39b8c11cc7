// The terrain layer: heights of the 1 km terrain file shaded in three bands, only on pixels that
// the grid layer painted with the first class colour (palette entry 0). Returns 0, or -1 when the
// terrain file does not open (nothing is drawn then).
#include <vector>

#include "file_ptr.h"
#include "le_bytes.h"
#include "rdr_sfc_pty_img.h"
#include "topo_grid.h"
#include "zoom.h"

namespace {

constexpr int FIRST_BAND_SLOT = 151;
constexpr int MAX_BANDS = 3;
// Heights up to this many metres stay unshaded.
constexpr float LOWEST_SHADED = 1.0f;

// The heights as stored. Whatever the file does not hold stays 0, a height that is never shaded.
std::vector<unsigned char> read_heights(std::FILE *fp)
{
    std::vector<unsigned char> bytes((std::size_t)TOPO_DATA_BYTES, 0);
    if (std::fseek(fp, TOPO_HEADER_BYTES, SEEK_SET) != 0) return bytes;
    std::size_t got = std::fread(bytes.data(), 1, bytes.size(), fp);
    // Half a value is not a value.
    if (got % 2) bytes[got - 1] = 0;
    return bytes;
}

// A terrain index from a km coordinate: truncation toward zero, -1 outside 0 .. limit - 1.
int terrain_index(float v, int limit) { return (v > -1.0f && v < limit) ? (int)v : -1; }

// The first band whose bound is above the height; heights above every bound take the last band.
int band_colour(float ht, const int color_lvl[], const float data_lvl[], int last_slot)
{
    for (int k = FIRST_BAND_SLOT; k < last_slot; k++)
        if (data_lvl[k] > ht) return color_lvl[k];
    return color_lvl[last_slot];
}

}  // namespace

int topo_disp(gdImagePtr im, int color_lvl[], float data_lvl[])
{
    float dg = (float)var.NX / (float)var.NI;
    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(topo_file_path(path, sizeof path), path, "rb");
    if (!fp) return -1;
    std::vector<unsigned char> heights = read_heights(fp.get());
    fp.reset();

    int bands = var.num_color_topo < MAX_BANDS ? var.num_color_topo : MAX_BANDS;
    if (bands <= 0) return 0;
    int last_slot = FIRST_BAND_SLOT + bands - 1;
    ZoomView v = zoom_view(var.NX - 1, var.NY - 1, zoom_rule_of_request());
    // In double: a catalogue's origin may lie anywhere in the int range.
    float east = (float)((double)TOPO_REF_EAST - var.SX);
    float north = (float)((double)TOPO_REF_NORTH - var.SY);

    // The last row and column of the file are never shown.
    for (int j = 1; j < var.NJ; j++) {
        int iy = terrain_index(j * dg / v.zm + v.oy + north, TOPO_ROWS - 1);
        if (iy < 0) continue;
        const unsigned char *row = heights.data() + 2L * iy * TOPO_COLS;
        for (int i = 1; i < var.NI; i++) {
            int ix = terrain_index(i * dg / v.zm + v.ox + east, TOPO_COLS - 1);
            if (ix < 0) continue;
            float ht = (float)(le_i16(row + 2 * ix) * 0.1);
            if (!(ht > LOWEST_SHADED)) continue;
            // Entry 0 is the first class colour: terrain shows through that class only.
            if (gdImageGetPixel(im, i, var.GJ - j) != 0) continue;
            gdImageSetPixel(im, i, var.GJ - j, band_colour(ht, color_lvl, data_lvl, last_slot));
        }
    }
    return 0;
}
