// The outline layer: one kind of map outlines (coastlines, boundaries) of the requested map, read
// as polylines in km of the map domain and drawn through the zoom transform, doubled on large
// pictures. Returns 0, also when the file is missing (nothing drawn) or ends in a line that does
// not parse (what was drawn before stays).
#include "file_ptr.h"
#include "rdr_sfc_pty_img.h"
#include "text_fields.h"
#include "zoom.h"

namespace {

constexpr int LINE_CAP = 256;

// The next line that holds something; blank lines are only spacing.
bool next_line(std::FILE *fp, char *line, std::size_t cap)
{
    LineRead got;
    while ((got = read_line(fp, line, cap)) == LineRead::Ok && is_blank(line)) {
    }
    return got == LineRead::Ok;
}

// A polyline's header: its number of points and a mode that nothing uses.
bool read_header(std::FILE *fp, char *line, int *points)
{
    int mode;
    const char *p;
    return next_line(fp, line, LINE_CAP) && (p = scan_int(line, points)) && scan_int(p, &mode);
}

bool read_point(std::FILE *fp, char *line, float *x, float *y)
{
    const char *p;
    return next_line(fp, line, LINE_CAP) && (p = scan_float(line, x)) && scan_float(p, y);
}

}  // namespace

int map_disp(gdImagePtr im, int color_map, int kind)
{
    bool depth = var.NI > 600 || (var.NI > 450 && kind == 4);
    ZoomView v = zoom_view(var.NX, var.NY, zoom_rule_of_request());
    float rate = (float)var.NI / (float)var.NX;

    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(outline_file_path(path, sizeof path, var.map, kind), path, "r");
    if (!fp) return 0;

    char line[LINE_CAP];
    int points;
    while (read_header(fp.get(), line, &points)) {
        int last_col = 0, last_row = 0;
        for (int k = 0; k < points; k++) {
            float x, y;
            if (!read_point(fp.get(), line, &x, &y)) return 0;
            int col = map_column((x - v.ox) * v.zm, rate);
            int row = map_row((y - v.oy) * v.zm, rate);
            if (k > 0) {
                gdImageLine(im, last_col, last_row, col, row, color_map);
                if (depth) gdImageLine(im, last_col, last_row - 1, col, row - 1, color_map);
            }
            last_col = col;
            last_row = row;
        }
    }
    return 0;
}
