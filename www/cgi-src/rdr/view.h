// The view of a request: the canvas sizes, the zoom transform, the mapping between map km and
// pixels both ways, the grid cell a map position falls in, and which grid rows the picture
// samples. Worked out once per request by view_of_request, after the map catalogue and the grid
// header; the reader and every layer take their geometry from here and from nowhere else.
#ifndef VIEW_H
#define VIEW_H

#include <vector>

#include "map_ini.h"
#include "rdr_cmp_header.h"
#include "user_input.h"

// The legend column beside the map area and the title band above it, in pixels.
constexpr int LEGEND_WIDTH = 35;
constexpr int TITLE_HEIGHT = 20;
constexpr long long CANVAS_MAX = 8192;

// A canvas is only made when both sides are 1 to 8192 pixels.
inline bool canvas_fits(long long width, long long height)
{
    return width >= 1 && height >= 1 && width <= CANVAS_MAX && height <= CANVAS_MAX;
}

// The whole image's width for a map area `size` pixels wide: the legend column comes on top.
inline long long canvas_width(long long size, int legend) { return size + (legend == 1 ? LEGEND_WIDTH : 0); }

// The error picture's canvas in var: a square map area of `size` pixels.
void view_square_canvas(int size);

// The corner of a view (in the caller's units: km or grid cells) and its magnification.
struct ZoomView {
    float ox;
    float oy;
    float zm;
};

// How a view steps: enlargement per step, at most so many steps, each moving by 1/divisor.
struct ZoomRule {
    int rate;
    int max_steps;
    int divisor;
};

// The rule that var.zoom_rate selects (3: two steps of ninths; 2: seven of eighths); any other
// rate has no steps. The cross-section line always steps by eighths and doubling.
ZoomRule zoom_rule_of_request();
constexpr ZoomRule ZOOM_RULE_EIGHTHS = {2, 7, 8};

// The request's zoom digits applied with `rule` over a domain of width x height, from `start`
// (magnification 1). Only with zoom_level above 0; only '1'..'9' are steps, any other character
// (a '0', the end of the digits) ends the transform.
ZoomView zoom_view(double width, double height, ZoomRule rule, float start_x = 0, float start_y = 0);

// How the grid layer samples the grid file's cells: classes (nearest cell), rain values with
// their classes, or plain values; nearest cell or bilinear.
enum class SampleKind { Class, Rain, Plain };

struct GridSampling {
    bool placed;       // false without a cell size or a map width: nothing to sample
    SampleKind kind;
    bool bilinear;
    int nx, ny;        // the grid's cells per row and rows
    float rate;        // cells per pixel at magnification 1
    ZoomView cells;    // the view in grid cells
};

// The request's view. `canvas` false: var's canvas sizes could not be made (unknown map, a size
// no canvas takes), and nothing else here is worked out.
struct VIEW {
    bool canvas;
    float px_per_km;     // NI / NX, both axes: the map area's scale
    float km_per_px;     // NX / NI: the terrain's step
    ZoomView km;         // the request's zoom over the map, km
    ZoomView terrain;    // the same over the terrain's NX - 1 by NY - 1 km
    ZoomView section;    // eighths and doubling over the map, km, whatever the request's rate
    GridSampling grid;
};

extern VIEW view;

// Works out `view` and the canvas sizes in var (NI, NJ, GI, GJ) from the request, the map
// extent and the grid header; returns 0, or -1 when no canvas can be made.
int view_of_request(const RDR_CMP_HEAD &head);

// The map's projection: Lambert conformal conic (30 and 60 N, origin 126 E 38 N) in km of the map
// domain, the origin at (SX, SY); a fresh record, so the first conversion derives its constants.
lamc_parameter map_projection();

// A map position after the zoom (km from the view's corner, magnified) and its pixel column and
// image row at `rate` pixels per km.
inline float zoomed(float v, float origin, float zm) { return (v - origin) * zm; }
int pixel_trunc(float v);
inline int map_column(float x_zoomed, float rate) { return pixel_trunc(x_zoomed * rate); }
int map_row(float y_zoomed, float rate);

// Where a map point (km) lands on the picture, through the request's zoom.
struct PIXEL {
    int x, y;
};
PIXEL map_pixel(float x, float y);
// The cross-section line's own placement: rows from NJ / NY, the whole difference truncated.
PIXEL section_pixel(int x, int y);

// The position (in a view's units) that pixel column i or row counter j (image row GJ - j) shows,
// `per_pixel` units a pixel at magnification 1.
inline float view_x(const ZoomView &v, float per_pixel, int i) { return i * per_pixel / v.zm + v.ox; }
inline float view_y(const ZoomView &v, float per_pixel, int j) { return j * per_pixel / v.zm + v.oy; }

// A cell index from a position in cells: truncation toward zero, -1 outside 0 .. limit - 1.
inline int cell_index(double v, int limit) { return (v > -1.0 && v < limit) ? (int)v : -1; }

// Where the grid layer's column i samples: `x` in cells, `near` the nearest cell and `low` the
// left cell of the bilinear pair (-1 outside). Nearest-cell sampling rounds at .55, not .5.
struct GridColumn {
    float x;
    int near;
    int low;
};
constexpr double NEAREST_SHIFT = 0.45;
GridColumn grid_column(int i);

// The grid cell that nearest-cell sampling takes at the map position (x, y) km, unzoomed: column
// i and row j, -1 for an axis outside the grid (and both without a cell size or cells).
struct GRID_CELL {
    int i, j;
};
GRID_CELL grid_cell_at(const RDR_CMP_HEAD &head, double x, double y);

// Whether a map position (km) lies inside the map, its edges excluded.
inline bool inside_map(float x, float y) { return x > 0 && x < var.NX && y > 0 && y < var.NY; }

// Every row of the map area that shows the grid, bottom to top: `visit(j, y, near_row, low_row)`
// for image row GJ - j, grid position y, the nearest grid row and the lower row of the bilinear
// pair (-1 outside). The grid layer draws and the row plan is made through here.
template <typename Visit>
void for_each_grid_row(Visit visit)
{
    const GridSampling &g = view.grid;
    for (int j = 1; j < var.NJ; j++) {
        float y = view_y(g.cells, g.rate, j);
        int near_row = cell_index(y + NEAREST_SHIFT, g.ny);
        int low_row = cell_index(y, g.ny - 1);
        // Classes come from the nearest row, so the rain products need it in bilinear mode too.
        if ((g.kind != SampleKind::Plain || !g.bilinear) && near_row < 0) continue;
        if (g.bilinear && low_row < 0) continue;
        visit(j, y, near_row, low_row);
    }
}

// The grid rows the picture reads, 1 for each: rows of classes and rows of values, ny entries
// each. Empty (every row) when the view cannot place the grid.
struct ROW_PLAN {
    std::vector<char> classes;
    std::vector<char> values;
};
ROW_PLAN view_row_plan();

#endif
