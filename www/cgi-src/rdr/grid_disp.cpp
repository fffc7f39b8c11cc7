// The grid layer; see grid_disp.h.
#include "grid_disp.h"

#include <gdfontl.h>

#include <vector>

#include "canvas.h"
#include "color_table.h"
#include "rdr_sfc_pty_get.h"
#include "straightforward.h"
#include "user_input.h"
#include "view.h"

namespace {

// What a pixel needs to know of the request and the palette.
struct Layer {
    SampleKind kind;
    bool bilinear;
    const int *color_lvl;
    const float *data_lvl;
    int marking;  // palette entry for light rain under precipitation, -1 for none
    int class_colours[256];
};

int marking_colour(const int color_lvl[])
{
    if (var.rnexdisp == 2) return color_lvl[SLOT_MARKING];
    // The second class marks light rain; with a single class there is none to mark with.
    if (var.rnexdisp == 1 && var.num_color >= 2) return color_lvl[SECOND_CLASS];
    return -1;
}

// The colour of every class code (-1: no row, left unpainted), looked up once per picture.
void fill_class_colours(int colours[256])
{
    for (int c = 0; c < 256; c++) colours[c] = -1;
    bool rnex = product->table == ClassTable::RNEX;
    int rows = var.num_color < CLASS_ROWS ? var.num_color : CLASS_ROWS;
    // Scanned from the last row so that the first row with a code wins, as a scan from the top would.
    for (int k = rows - 1; k >= 0; k--) {
        int code = rnex ? rnex_color[k].rnex : rnsn_color[k].rnsn;
        if (code >= 0 && code < 256) colours[code] = rnex ? rnex_color[k].color : rnsn_color[k].color;
    }
}

// The first class whose upper bound is not below the value; above every bound, the last class.
int threshold_class(float value, const float data_lvl[])
{
    for (int k = 0; k < var.num_color; k++)
        if (data_lvl[k] >= value) return k;
    return var.num_color - 1;
}

bool missing(float v) { return v <= MISSING_LIMIT; }

// The value at (x, y) by the four surrounding cells, or false when one of them is missing.
bool bilinear_value(float x, float y, int ix, int iy, float *value)
{
    const float d00 = data[iy][ix], d01 = data[iy][ix + 1];
    const float d10 = data[iy + 1][ix], d11 = data[iy + 1][ix + 1];
    if (missing(d00) || missing(d01) || missing(d10) || missing(d11)) return false;
    float wx2 = x - ix, wx1 = 1.0f - wx2;
    float wy2 = y - iy, wy1 = 1.0f - wy2;
    *value = (d00 * wx1 + d01 * wx2) * wy1 + (d10 * wx1 + d11 * wx2) * wy2;
    return true;
}

// The palette entry of one pixel, or -1 to leave it as it is. `near_row` is the nearest grid row
// (-1 outside), `low_row` the lower row of the bilinear pair (-1 outside).
int pixel_colour(const Layer &L, const GridColumn &c, float y, int near_row, int low_row)
{
    if (L.kind == SampleKind::Class) return c.near < 0 ? -1 : L.class_colours[pty[near_row][c.near]];
    float value;
    int col = L.bilinear ? c.low : c.near;
    if (col < 0) return -1;
    if (L.bilinear) {
        if (!bilinear_value(c.x, y, col, low_row, &value)) return -1;
    } else {
        value = data[near_row][col];
        if (missing(value)) return -1;
    }
    int k = threshold_class(value, L.data_lvl);
    if (L.kind == SampleKind::Rain && k == 0 && L.marking >= 0 && pty[near_row][col] > 1) return L.marking;
    return L.color_lvl[k];
}

// One row of the map area, image row `GJ - j`. The straightforward road samples pixel by pixel
// through the graphics library; the fast one takes the columns from a table and writes the row.
void draw_row(gdImagePtr im, const Layer &L, const std::vector<GridColumn> &columns, int j, float y, int near_row,
              int low_row)
{
    if (STRAIGHTFORWARD) {
        for (int i = 1; i < var.NI; i++) {
            int colour = pixel_colour(L, grid_column(i), y, near_row, low_row);
            if (colour >= 0) gdImageSetPixel(im, i, var.GJ - j, colour);
        }
        return;
    }
    unsigned char *line = canvas_row(im, var.GJ - j);
    int width = var.NI;
    if (L.kind == SampleKind::Class) {
        // The class products' pixel_colour, with the row's codes at hand.
        const unsigned char *codes = pty[near_row];
        for (int i = 1; i < width; i++) {
            int colour = columns[i].near < 0 ? -1 : L.class_colours[codes[columns[i].near]];
            if (colour >= 0) line[i] = (unsigned char)colour;
        }
        return;
    }
    for (int i = 1; i < width; i++) {
        int colour = pixel_colour(L, columns[i], y, near_row, low_row);
        if (colour >= 0) line[i] = (unsigned char)colour;
    }
}

}  // namespace

int grid_disp(gdImagePtr im, int color_lvl[], float data_lvl[])
{
    if (var.num_color <= 0) {
        gdImageString(im, gdFontGetLarge(), 100, 100, (unsigned char *)"No Color Level", color_lvl[SLOT_BLACK]);
        return -1;
    }
    const GridSampling &g = view.grid;
    if (!g.placed) return -1;

    Layer L = {g.kind, g.bilinear, color_lvl, data_lvl, -1, {}};
    if (L.kind == SampleKind::Class) fill_class_colours(L.class_colours);
    if (L.kind == SampleKind::Rain) L.marking = marking_colour(color_lvl);
    bool needs_pty = L.kind != SampleKind::Plain;
    bool needs_data = L.kind != SampleKind::Class;
    if (g.nx <= 0 || g.ny <= 0 || (needs_pty && !pty) || (needs_data && !data)) return 0;

    std::vector<GridColumn> columns;
    if (!STRAIGHTFORWARD)
        for (int i = 0; i < var.NI; i++) columns.push_back(grid_column(i));
    for_each_grid_row([&](int j, float y, int near_row, int low_row) {
        draw_row(im, L, columns, j, y, near_row, low_row);
    });
    return 0;
}
