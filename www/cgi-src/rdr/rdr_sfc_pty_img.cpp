// The program's entry: one request, one PNG. main reads the query and the grid and chooses
// between the picture and the error picture; rdr_sfc_pty_img sizes the canvas and lets the
// layers draw in their stacking order. This is the only place that knows that order.
#include <cstdio>
#include <cstring>

#include "canvas.h"
#include "rdr_sfc_pty_img.h"

int rdr_sfc_pty_img()
{
    if (!canvas_size_of_request()) return err_img(1);

    gdImagePtr im = canvas_create(var.GI, var.GJ);
    int color_lvl[COLOR_SLOTS] = {0};
    float data_lvl[COLOR_SLOTS] = {0};

    color_table(im, color_lvl, data_lvl);
    canvas_fill(im, color_lvl[240]);
    grid_disp(im, color_lvl, data_lvl);
    if (std::strchr(var.gis, 'T')) topo_disp(im, color_lvl, data_lvl);
    if (var.zoom_level > 1) map_disp(im, color_lvl[249], 1);
    map_disp(im, color_lvl[244], 4);
    if (var.aws > 0 && var.zoom_level > 0) aws_disp(im, color_lvl);
    title_disp(im, color_lvl);
    legend_disp(im, color_lvl, data_lvl);
    gdImageRectangle(im, 0, 20, var.NI - 1, var.GJ - 1, color_lvl[242]);
    cross_line_disp(im, color_lvl);

    canvas_send(im);
    return 0;
}

int main()
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::fputs("HTTP/1.0 200 OK\n", stdout);

    int err = 0;
    if (user_input() < 0) err = 1;
    int read_err = rdr_sfc_pty_get_all();
    if (read_err > err) err = read_err;
    // A map code the catalogue does not know leaves no extent to draw on.
    if (err == 0 && (var.NX <= 0 || var.NY <= 0)) err = 1;

    if (err > 0)
        err_img(err);
    else
        rdr_sfc_pty_img();
    return 0;
}
