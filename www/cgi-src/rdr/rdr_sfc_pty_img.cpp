// The program's entry: one request, one PNG. main shows the road of a request (query, map
// catalogue, grid header, view, grids, then the picture or the error picture) and every early
// exit; rdr_sfc_pty_img is the only place that knows the order of the layers.
#include "rdr_sfc_pty_img.h"

#include <cstdio>
#include <cstring>

#include "aws_disp.h"
#include "canvas.h"
#include "color_table.h"
#include "cross_line_disp.h"
#include "err_img.h"
#include "grid_disp.h"
#include "legend_disp.h"
#include "map_disp.h"
#include "rdr_sfc_pty_get.h"
#include "straightforward.h"
#include "title_disp.h"
#include "topo_disp.h"
#include "user_input.h"
#include "view.h"

namespace {

// Exit statuses of the two requests that cannot be answered with a picture.
constexpr int EXIT_NO_CATALOGUE = 255;
constexpr int EXIT_NO_IMAGE = 1;

// The grid file's header places the view, and the view says which grid rows the picture needs:
// one pass over the file. The straightforward road reads every row of the product's block and
// then, for a rain product, the marking classes in a second read. 0 or a GRID_* status.
int read_grids_of_request()
{
    if (STRAIGHTFORWARD) {
        int got = rdr_sfc_pty_get();
        if (got == 0 && product->marking != ClassRule::None) got = rdr_sfc_pty_get_marking();
        view_of_request(rdr_cmp_head);
        return got;
    }
    GRID_FILE file;
    int got = rdr_sfc_pty_open(&file);
    view_of_request(rdr_cmp_head);
    return got < 0 ? got : rdr_sfc_pty_read(&file, view_row_plan());
}

}  // namespace

int rdr_sfc_pty_img()
{
    gdImagePtr im = gdImageCreate(var.GI, var.GJ);
    if (!im) return PICTURE_NO_IMAGE;
    int color_lvl[COLOR_SLOTS] = {0};
    float data_lvl[COLOR_SLOTS] = {0};

    color_table(im, color_lvl, data_lvl);
    canvas_fill(im, color_lvl[SLOT_BACKGROUND]);
    grid_disp(im, color_lvl, data_lvl);
    if (std::strchr(var.gis, 'T')) topo_disp(im, color_lvl, data_lvl);
    if (var.zoom_level > 1) map_disp(im, color_lvl[SLOT_GREY], 1);
    map_disp(im, color_lvl[SLOT_BLACK], 4);
    if (var.aws > 0 && var.zoom_level > 0) aws_disp(im, color_lvl);
    title_disp(im, color_lvl);
    legend_disp(im, color_lvl, data_lvl);
    gdImageRectangle(im, 0, TITLE_HEIGHT, var.NI - 1, var.GJ - 1, color_lvl[SLOT_FRAME]);
    cross_line_disp(im, color_lvl);

    canvas_send(im);
    return 0;
}

int main()
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::fputs("HTTP/1.0 200 OK\n", stdout);

    int err = 0;
    if (user_input() < 0) err = ERR_QUERY;
    int got = read_grids_of_request();
    if (got == GRID_NO_CATALOGUE) return EXIT_NO_CATALOGUE;
    if (got < 0) err = ERR_GRID_FILE;
    // A map code the catalogue does not know, or a size, leaves no canvas to draw on.
    if (err == 0 && !view.canvas) err = ERR_QUERY;

    int drawn = err > 0 ? err_img(err) : rdr_sfc_pty_img();
    if (drawn == PICTURE_NO_IMAGE) {
        std::fprintf(stderr, "rdr_sfc_pty_img: cannot create a %d x %d image\n", var.GI, var.GJ);
        return EXIT_NO_IMAGE;
    }
    return 0;
}
