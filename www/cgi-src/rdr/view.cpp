// The view of a request; see view.h.
#include "view.h"

VIEW view;

namespace {

constexpr float PIXEL_LIMIT = 16777216.0f;

// Where the projection origin lies, in km from the first cell, for each composite domain; any
// other domain puts the map's corner on cell (0, 0).
struct GridReference {
    int map_code;
    int east;
    int north;
};
const GridReference kReferences[] = {{1, 560, 840}, {2, 800, 1000}, {3, 440, 770}};

int zoom_digit(const char *digits, int n)
{
    char c = digits[n];
    return (c >= '1' && c <= '9') ? c - '0' : 0;
}

// The map area NI x NJ from the size and the map's aspect ratio, the whole image GI x GJ with the
// legend column and the title band; false when no canvas can be made from them.
bool canvas_of_request()
{
    if (var.NX <= 0 || var.NY <= 0) return false;
    var.NI = var.size;
    float nj = (float)var.NY / (float)var.NX * (float)var.NI;
    long long width = canvas_width(var.NI, var.legend);
    if (!(nj >= 0.0f && nj < (float)CANVAS_MAX) || !canvas_fits(width, (long long)nj + TITLE_HEIGHT)) return false;
    var.NJ = (int)nj;
    var.GI = (int)width;
    var.GJ = var.NJ + TITLE_HEIGHT;
    return true;
}

// The grid cell position of the map's south-west corner, from the reference table of the header's
// map code.
struct CellOrigin {
    float x;
    float y;
};
CellOrigin cell_origin(const RDR_CMP_HEAD &head)
{
    CellOrigin o = {0, 0};
    for (const GridReference &r : kReferences) {
        if (r.map_code != head.map_code) continue;
        // In double: a catalogue's origin may lie anywhere in the int range.
        o.x = (float)(((double)r.east - var.SX) * 1000.0 / head.dxy);
        o.y = (float)(((double)r.north - var.SY) * 1000.0 / head.dxy);
    }
    return o;
}

SampleKind sample_kind()
{
    if (product->kind == ProductKind::Classes) return SampleKind::Class;
    return product->marking != ClassRule::None ? SampleKind::Rain : SampleKind::Plain;
}

// The grid's placement in cells: cells per pixel and the zoomed view's corner and magnification.
GridSampling grid_sampling(const RDR_CMP_HEAD &head)
{
    GridSampling g{};
    g.kind = sample_kind();
    g.bilinear = var.griddisp != 0 && g.kind != SampleKind::Class;
    g.nx = head.nx;
    g.ny = head.ny;
    int dxy = head.dxy;
    if (dxy <= 0 || var.NI <= 0) return g;
    CellOrigin o = cell_origin(head);
    float grid_nx = (float)(var.NX * 1000.0 / dxy);
    float grid_ny = (float)(var.NY * 1000.0 / dxy);
    g.rate = grid_nx / (float)var.NI;
    g.cells = zoom_view(grid_nx, grid_ny, zoom_rule_of_request(), o.x, o.y);
    g.placed = true;
    return g;
}

}  // namespace

void view_square_canvas(int size)
{
    var.NI = size;
    var.NJ = size;
    var.GI = (int)canvas_width(size, var.legend);
    var.GJ = size + TITLE_HEIGHT;
}

lamc_parameter map_projection()
{
    lamc_parameter map = {6371.0088f, 1.0f, 30.0f, 60.0f, 126.0f, 38.0f, 0, 0, 0};
    map.xo = (float)var.SX / map.grid;
    map.yo = (float)var.SY / map.grid;
    return map;
}

ZoomRule zoom_rule_of_request()
{
    if (var.zoom_rate == 3) return {3, 2, 9};
    if (var.zoom_rate == 2) return ZOOM_RULE_EIGHTHS;
    return {var.zoom_rate, 0, 1};
}

ZoomView zoom_view(double width, double height, ZoomRule rule, float start_x, float start_y)
{
    ZoomView v = {start_x, start_y, 1.0f};
    if (var.zoom_level <= 0) return v;
    // zoom_x and zoom_y hold at most 15 digits, so a step count beyond that ends at the terminator.
    for (int n = 0; n < rule.max_steps && n < (int)sizeof var.zoom_x - 1; n++) {
        int dx = zoom_digit(var.zoom_x, n);
        int dy = zoom_digit(var.zoom_y, n);
        if (dx == 0 || dy == 0) break;
        v.ox = (float)(v.ox + (dx - 1) * (width / rule.divisor) / v.zm);
        v.oy = (float)(v.oy + (dy - 1) * (height / rule.divisor) / v.zm);
        v.zm = v.zm * rule.rate;
    }
    return v;
}

int view_of_request(const RDR_CMP_HEAD &head)
{
    view = VIEW{};
    if (!canvas_of_request()) return -1;
    view.canvas = true;
    view.px_per_km = (float)var.NI / (float)var.NX;
    view.km_per_px = (float)var.NX / (float)var.NI;
    view.km = zoom_view(var.NX, var.NY, zoom_rule_of_request());
    view.terrain = zoom_view(var.NX - 1, var.NY - 1, zoom_rule_of_request());
    view.section = zoom_view(var.NX, var.NY, ZOOM_RULE_EIGHTHS);
    view.grid = grid_sampling(head);
    return 0;
}

int pixel_trunc(float v)
{
    if (!(v > -PIXEL_LIMIT)) return -(int)PIXEL_LIMIT;
    if (!(v < PIXEL_LIMIT)) return (int)PIXEL_LIMIT;
    return (int)v;
}

int map_row(float y_zoomed, float rate) { return var.GJ - pixel_trunc(y_zoomed * rate); }

PIXEL map_pixel(float x, float y)
{
    const ZoomView &v = view.km;
    return {map_column(zoomed(x, v.ox, v.zm), view.px_per_km), map_row(zoomed(y, v.oy, v.zm), view.px_per_km)};
}

PIXEL section_pixel(int x, int y)
{
    const ZoomView &v = view.section;
    float px = var.NI * zoomed((float)x, v.ox, v.zm) / var.NX;
    float py = var.GJ - var.NJ * zoomed((float)y, v.oy, v.zm) / var.NY;
    return {pixel_trunc(px), pixel_trunc(py)};
}

GridColumn grid_column(int i)
{
    const GridSampling &g = view.grid;
    float x = view_x(g.cells, g.rate, i);
    return {x, cell_index(x + NEAREST_SHIFT, g.nx), cell_index(x, g.nx - 1)};
}

GRID_CELL grid_cell_at(const RDR_CMP_HEAD &head, double x, double y)
{
    if (head.dxy <= 0 || head.nx <= 0 || head.ny <= 0) return {-1, -1};
    CellOrigin o = cell_origin(head);
    // In double: a position typed as 2.55 km of a 1 km grid then rounds at .55 as the rule says,
    // and the float positions of the picture's pixels are held exactly.
    double cx = x * 1000.0 / head.dxy + o.x;
    double cy = y * 1000.0 / head.dxy + o.y;
    return {cell_index(cx + NEAREST_SHIFT, head.nx), cell_index(cy + NEAREST_SHIFT, head.ny)};
}

ROW_PLAN view_row_plan()
{
    ROW_PLAN plan;
    const GridSampling &g = view.grid;
    if (!view.canvas || !g.placed || g.nx <= 0 || g.ny <= 0) return plan;
    plan.classes.assign((std::size_t)g.ny, 0);
    plan.values.assign((std::size_t)g.ny, 0);
    for_each_grid_row([&](int, float, int near_row, int low_row) {
        if (g.kind != SampleKind::Plain) plan.classes[(std::size_t)near_row] = 1;
        if (g.kind == SampleKind::Class) return;
        if (g.bilinear)
            plan.values[(std::size_t)low_row] = plan.values[(std::size_t)low_row + 1] = 1;
        else
            plan.values[(std::size_t)near_row] = 1;
    });
    return plan;
}
