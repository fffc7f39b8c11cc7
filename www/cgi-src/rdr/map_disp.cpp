// The outline layer; see map_disp.h.
#include "map_disp.h"

#include "cgiutil.h"
#include "file_ptr.h"
#include "rdr_paths.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr int LINE_CAP = 256;

// The next line that holds something; blank lines are only spacing, and a line cut at the buffer
// does not parse.
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
    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(outline_file_path(path, sizeof path, var.map, kind), path, "r");
    if (!fp) return 0;

    char line[LINE_CAP];
    int points;
    while (read_header(fp.get(), line, &points)) {
        PIXEL last = {0, 0};
        for (int k = 0; k < points; k++) {
            float x, y;
            if (!read_point(fp.get(), line, &x, &y)) return 0;
            PIXEL p = map_pixel(x, y);
            if (k > 0) {
                gdImageLine(im, last.x, last.y, p.x, p.y, color_map);
                if (depth) gdImageLine(im, last.x, last.y - 1, p.x, p.y - 1, color_map);
            }
            last = p;
        }
    }
    return 0;
}
