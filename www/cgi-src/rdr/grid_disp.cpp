// The grid layer: every pixel of the map area samples the analysis through the zoom transform and
// takes its class colour (categorical products) or threshold colour (values), with light rain
// marked for "HSR" and "RN15X". Returns 0, or -1 when there is no class to colour with ("No Color
// Level" is written then) or the grid header gives no cell size to place the grid by.
#include <gdfontl.h>

#include <vector>

#include "canvas.h"
#include "rdr_sfc_pty_img.h"
#include "zoom.h"

namespace {

// Grid values at or below this are missing.
constexpr float MISSING_LIMIT = -299.999f;
// Nearest-cell sampling rounds at .55, not .5.
constexpr double NEAREST_SHIFT = 0.45;

// Where the projection origin lies, in km from the first cell, for each composite domain.
struct GridReference {
    int map_code;
    int east;
    int north;
};
const GridReference kReferences[] = {{1, 560, 840}, {2, 800, 1000}, {3, 440, 770}};

enum class Kind { Class, Rain, Plain };

// How the request samples the grid: its kind and mode, the grid's size, and the view in cells.
struct Sampling {
    Kind kind;
    bool bilinear;
    int nx, ny;
    float rate;  // cells per pixel at magnification 1
    ZoomView view;
};

// What a pixel needs to know of the request and the palette.
struct Layer {
    Kind kind;
    bool bilinear;
    const int *color_lvl;
    const float *data_lvl;
    int marking;  // palette entry for light rain under precipitation, -1 for none
    int nx, ny;
    int class_colours[256];
};

// A cell index from a coordinate: truncation toward zero, -1 outside 0 .. limit - 1.
int cell_index(double v, int limit) { return (v > -1.0 && v < limit) ? (int)v : -1; }

Kind kind_of_request()
{
    if (obs_is_class_product()) return Kind::Class;
    if (obs_is("HSR") || obs_is("RN15X")) return Kind::Rain;
    return Kind::Plain;
}

int marking_colour(const int color_lvl[])
{
    if (var.rnexdisp == 2) return color_lvl[252];
    // The second class marks light rain; with a single class there is none to mark with.
    if (var.rnexdisp == 1 && var.num_color >= 2) return color_lvl[1];
    return -1;
}

// The colour of every class code (-1: no row, left unpainted), looked up once per picture.
void fill_class_colours(int colours[256])
{
    for (int c = 0; c < 256; c++) colours[c] = -1;
    bool rnex = obs_is("RNEX");
    int rows = var.num_color < 4 ? var.num_color : 4;
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

// Where a column samples the grid: `near` the nearest cell (-1 outside), `low` the left cell of
// the bilinear pair (-1 outside). Columns depend on i alone, so the fast road works them out once.
struct Column {
    float x;
    int near;
    int low;
};

Column column_at(const Layer &L, float rate, const ZoomView &v, int i)
{
    float x = i * rate / v.zm + v.ox;
    return {x, cell_index(x + NEAREST_SHIFT, L.nx), cell_index(x, L.nx - 1)};
}

// The palette entry of one pixel, or -1 to leave it as it is. `near_row` is the nearest grid row
// (-1 outside), `low_row` the lower row of the bilinear pair (-1 outside).
int pixel_colour(const Layer &L, const Column &c, float y, int near_row, int low_row)
{
    if (L.kind == Kind::Class) return c.near < 0 ? -1 : L.class_colours[pty[near_row][c.near]];
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
    if (L.kind == Kind::Rain && k == 0 && L.marking >= 0 && pty[near_row][col] > 1) return L.marking;
    return L.color_lvl[k];
}

// One row of the map area, image row `GJ - j`. The straightforward road samples pixel by pixel
// through the graphics library; the fast one takes the columns from a table and writes the row.
void draw_row(gdImagePtr im, const Layer &L, const std::vector<Column> &columns, float rate, const ZoomView &v,
              int j, float y, int near_row, int low_row)
{
    if (STRAIGHTFORWARD) {
        for (int i = 1; i < var.NI; i++) {
            int colour = pixel_colour(L, column_at(L, rate, v, i), y, near_row, low_row);
            if (colour >= 0) gdImageSetPixel(im, i, var.GJ - j, colour);
        }
        return;
    }
    unsigned char *line = canvas_row(im, var.GJ - j);
    int width = var.NI;
    if (L.kind == Kind::Class) {
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

// The grid's placement: cells per pixel and the view's corner and magnification, in cells.
bool grid_view(float *rate, ZoomView *view)
{
    int dxy = rdr_cmp_head.dxy;
    if (dxy <= 0 || var.NI <= 0) return false;
    float xo = 0, yo = 0;
    for (const GridReference &r : kReferences) {
        if (r.map_code != rdr_cmp_head.map_code) continue;
        // In double: a catalogue's origin may lie anywhere in the int range.
        xo = (float)(((double)r.east - var.SX) * 1000.0 / dxy);
        yo = (float)(((double)r.north - var.SY) * 1000.0 / dxy);
    }
    float grid_nx = (float)(var.NX * 1000.0 / dxy);
    float grid_ny = (float)(var.NY * 1000.0 / dxy);
    *rate = grid_nx / (float)var.NI;
    *view = zoom_view(grid_nx, grid_ny, zoom_rule_of_request(), xo, yo);
    return true;
}

// The request's sampling; false when the grid cannot be placed (no cell size or no map width).
bool sampling_of_request(Sampling *s)
{
    if (!grid_view(&s->rate, &s->view)) return false;
    s->kind = kind_of_request();
    s->bilinear = var.griddisp != 0 && s->kind != Kind::Class;
    s->nx = rdr_cmp_head.nx;
    s->ny = rdr_cmp_head.ny;
    return true;
}

// Every row of the map area that shows the grid, bottom to top: `visit(j, y, near_row, low_row)`
// for image row GJ - j, grid position y, the nearest grid row and the lower row of the bilinear
// pair (-1 outside). Drawing and the reader's row plan both go through here.
template <typename Visit>
void for_each_grid_row(const Sampling &s, Visit visit)
{
    for (int j = 1; j < var.NJ; j++) {
        float y = j * s.rate / s.view.zm + s.view.oy;
        int near_row = cell_index(y + NEAREST_SHIFT, s.ny);
        int low_row = cell_index(y, s.ny - 1);
        // Classes come from the nearest row, so the rain products need it in bilinear mode too.
        if ((s.kind != Kind::Plain || !s.bilinear) && near_row < 0) continue;
        if (s.bilinear && low_row < 0) continue;
        visit(j, y, near_row, low_row);
    }
}

}  // namespace

int grid_rows_sampled(char class_rows[], char value_rows[])
{
    Sampling s;
    if (!sampling_of_request(&s) || s.nx <= 0 || s.ny <= 0) return -1;
    for_each_grid_row(s, [&](int, float, int near_row, int low_row) {
        if (s.kind != Kind::Plain) class_rows[near_row] = 1;
        if (s.kind == Kind::Class) return;
        if (s.bilinear)
            value_rows[low_row] = value_rows[low_row + 1] = 1;
        else
            value_rows[near_row] = 1;
    });
    return 0;
}

int grid_disp(gdImagePtr im, int color_lvl[], float data_lvl[])
{
    if (var.num_color <= 0) {
        gdImageString(im, gdFontGetLarge(), 100, 100, (unsigned char *)"No Color Level", color_lvl[244]);
        return -1;
    }
    Sampling s;
    if (!sampling_of_request(&s)) return -1;

    Layer L = {s.kind, s.bilinear, color_lvl, data_lvl, -1, s.nx, s.ny, {}};
    if (L.kind == Kind::Class) fill_class_colours(L.class_colours);
    if (L.kind == Kind::Rain) L.marking = marking_colour(color_lvl);
    bool needs_pty = L.kind != Kind::Plain;
    bool needs_data = L.kind != Kind::Class;
    if (L.nx <= 0 || L.ny <= 0 || (needs_pty && !pty) || (needs_data && !data)) return 0;

    std::vector<Column> columns;
    if (!STRAIGHTFORWARD)
        for (int i = 0; i < var.NI; i++) columns.push_back(column_at(L, s.rate, s.view, i));
    for_each_grid_row(s, [&](int j, float y, int near_row, int low_row) {
        draw_row(im, L, columns, s.rate, s.view, j, y, near_row, low_row);
    });
    return 0;
}
