// The palette of a picture; see color_table.h.
#include "color_table.h"

#include <cstdio>

#include "cgiutil.h"
#include "file_ptr.h"
#include "rdr_paths.h"
#include "seq_time.h"
#include "user_input.h"

// Labels in EUC-KR: "없음" (none), "비" (rain), "눈비" (rain and snow), "눈" (snow).
RNEX_COLOR rnex_color[CLASS_ROWS] = {
    {1, "\xbe\xf8\xc0\xbd", 0, 255, 255, 255},
    {2, "AWS", 0, 51, 204, 51},
    {3, "RDR", 0, 51, 153, 255},
    {4, "AWS RDR", 0, 57, 57, 209},
};
RNSN_COLOR rnsn_color[CLASS_ROWS] = {
    {1, "\xbe\xf8\xc0\xbd", 0, 255, 255, 255},
    {2, "\xba\xf1", 0, 51, 102, 255},
    {3, "\xb4\xab\xba\xf1", 0, 102, 255, 255},
    {4, "\xb4\xab", 0, 255, 102, 255},
};

namespace {

constexpr int MAX_CLASSES = 120;
constexpr int LINE_CAP = 256;

struct FixedSlot {
    int slot;
    int R, G, B;
    bool has_value;
    float value;
};

// In the order they are allocated.
const FixedSlot kFixedSlots[] = {
    {SLOT_RESERVED, 206, 229, 241, true, 1.0f},
    {SLOT_TOPO_FIRST, 240, 240, 225, true, 100.0f},
    {SLOT_TOPO_FIRST + 1, 170, 170, 170, true, 500.0f},
    {SLOT_TOPO_LAST, 120, 120, 120, true, 5000.0f},
    {SLOT_RESERVED_171, 98, 169, 213, false, 0},
    {SLOT_BACKGROUND, 180, 180, 180, false, 0},
    {SLOT_WHITE, 255, 255, 255, false, 0},
    {SLOT_FRAME, 30, 30, 30, false, 0},
    {SLOT_RESERVED_243, 12, 28, 236, false, 0},
    {SLOT_BLACK, 0, 0, 0, false, 0},
    {SLOT_DISC, 240, 240, 240, false, 0},
    {SLOT_RED, 255, 0, 0, false, 0},
    {SLOT_BLUE, 0, 0, 255, false, 0},
    {SLOT_RESERVED_248, 160, 160, 160, false, 0},
    {SLOT_GREY, 110, 110, 110, false, 0},
    {SLOT_RESERVED_250, 80, 80, 80, false, 0},
    {SLOT_SECTION, 255, 0, 172, false, 0},
    {SLOT_MARKING, 57, 57, 209, false, 0},
};

// Lowest temperature class bound by month, degrees C.
const float kTaMin[12] = {-15, -15, -10, -5, 5, 5, 10, 10, 0, -5, -10, -15};

// Palette components are bytes; a file's out-of-range component is held to 0..255.
int component(int v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

// "R G B upper-bound" with all four numbers there; trailing text is ignored.
bool parse_class_line(const char *line, int rgb[3], float *bound)
{
    for (int c = 0; c < 3; c++)
        if (!(line = scan_int(line, &rgb[c]))) return false;
    return scan_float(line, bound) != nullptr;
}

// One class per line; a line without four numbers (or longer than any real line) takes no slot.
void read_color_file(gdImagePtr im, int color_lvl[], float data_lvl[])
{
    const char *name = product->color_file;
    if (!name) return;
    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(color_file_path(path, sizeof path, name), path, "r");
    if (!fp) return;

    char line[LINE_CAP];
    LineRead got;
    while (var.num_color < MAX_CLASSES && (got = read_line(fp.get(), line, sizeof line)) != LineRead::End) {
        int rgb[3];
        float bound;
        if (got != LineRead::Ok || !parse_class_line(line, rgb, &bound)) continue;
        color_lvl[var.num_color] =
            gdImageColorAllocate(im, component(rgb[0]), component(rgb[1]), component(rgb[2]));
        data_lvl[var.num_color] = bound;
        var.num_color++;
    }
}

template <typename Row>
void allocate_class_table(gdImagePtr im, Row (&table)[CLASS_ROWS])
{
    for (Row &row : table) row.color = gdImageColorAllocate(im, row.R, row.G, row.B);
    var.num_color = CLASS_ROWS;
}

void shift_by_month(float data_lvl[])
{
    int YY, MM, DD, HH, MI;
    seq2time(var.seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    if (MM < 1 || MM > 12) return;
    float diff = data_lvl[0] - kTaMin[MM - 1] - 1.0;
    for (int k = 0; k < var.num_color; k++) data_lvl[k] -= diff;
}

}  // namespace

int color_table(gdImagePtr im, int color_lvl[], float data_lvl[])
{
    var.num_color = 0;
    if (product->kind == ProductKind::Values)
        read_color_file(im, color_lvl, data_lvl);
    else if (product->table == ClassTable::RNEX)
        allocate_class_table(im, rnex_color);
    else
        allocate_class_table(im, rnsn_color);

    for (const FixedSlot &s : kFixedSlots) {
        color_lvl[s.slot] = gdImageColorAllocate(im, s.R, s.G, s.B);
        if (s.has_value) data_lvl[s.slot] = s.value;
    }
    var.num_color_topo = SLOT_TOPO_LAST - SLOT_TOPO_FIRST + 1;

    if (product->monthly_shift && var.num_color > 0) shift_by_month(data_lvl);
    return 0;
}
