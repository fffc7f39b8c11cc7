// The legend column; see legend_disp.h.
#include "legend_disp.h"

#include <gdfonts.h>
#include <gdfontl.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "color_table.h"
#include "korean_text.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr int BAR_WIDTH = 8;
constexpr double NAME_POINTS = 8.5;
constexpr std::size_t CHUNK_BYTES = 4;
constexpr std::size_t CHUNKS = 2;
constexpr int TXT_CAP = 20;

// Class colours and names of the class products, in class order.
bool rnex_table() { return product->table == ClassTable::RNEX; }
int class_row_colour(int i) { return rnex_table() ? rnex_color[i].color : rnsn_color[i].color; }
const char *class_row_name(int i) { return rnex_table() ? rnex_color[i].rnex_ko : rnsn_color[i].rnsn_ko; }

int class_rows() { return var.num_color < CLASS_ROWS ? var.num_color : CLASS_ROWS; }

void draw_class_boxes(gdImagePtr im, float dy)
{
    for (int i = 0; i < class_rows(); i++) {
        int top = (int)(TITLE_HEIGHT + (var.num_color - 1 - i) * dy);
        int bottom = (int)(top + dy);
        gdImageFilledRectangle(im, var.NI, top, var.NI + BAR_WIDTH, bottom, class_row_colour(i));
    }
}

void draw_level_boxes(gdImagePtr im, const int color_lvl[], float dy)
{
    for (int i = 0; i < var.num_color; i++) {
        int bottom = (int)(var.GJ - i * dy);
        int top = (int)(bottom - dy);
        gdImageFilledRectangle(im, var.NI, top, var.NI + BAR_WIDTH, bottom, color_lvl[i]);
    }
}

// Names show as up to two lines of four bytes each: two Hangul syllables or four ASCII characters.
void draw_class_names(gdImagePtr im, const int color_lvl[], float dy)
{
    for (int i = 0; i < class_rows(); i++) {
        const char *name = class_row_name(i);
        float box_top = TITLE_HEIGHT + (var.num_color - i - 1) * dy;
        std::size_t len = strnlen(name, CHUNKS * CHUNK_BYTES);
        for (std::size_t n = 0; n < CHUNKS && n * CHUNK_BYTES < len; n++) {
            char txt[TXT_CAP];
            std::size_t take = std::min(len - n * CHUNK_BYTES, CHUNK_BYTES);
            std::memcpy(txt, name + n * CHUNK_BYTES, take);
            txt[take] = '\0';
            int baseline = (int)(14 * n + box_top + 15);
            draw_euckr_bold(im, txt, NAME_POINTS, var.NI + 12, var.NI + 11, baseline, color_lvl[SLOT_BLUE]);
        }
    }
}

// A threshold as the legend prints it; any float, nan and 1e30 included, fits the buffer.
void format_threshold(char *txt, std::size_t cap, float value)
{
    const char *format = (product->whole_thresholds || !(value < 5.0f)) ? "%.0f" : "%.1f";
    std::snprintf(txt, cap, format, value);
}

// One number per boundary between levels, across it; none above the top level.
void draw_thresholds(gdImagePtr im, const int color_lvl[], const float data_lvl[], float dy)
{
    for (int i = 0; i + 1 < var.num_color; i++) {
        char txt[TXT_CAP];
        format_threshold(txt, sizeof txt, data_lvl[i]);
        int y = (int)(var.GJ - (i + 1) * dy - 5.0);
        gdImageString(im, gdFontGetSmall(), var.NI + 12, y, (unsigned char *)txt, color_lvl[SLOT_BLACK]);
    }
}

}  // namespace

int legend_disp(gdImagePtr im, int color_lvl[], float data_lvl[])
{
    if (var.legend != 1) return 0;
    if (var.num_color <= 0) return -1;
    float dy = (float)var.NJ / (float)var.num_color;

    bool classes = product->kind == ProductKind::Classes;
    if (classes)
        draw_class_boxes(im, dy);
    else
        draw_level_boxes(im, color_lvl, dy);
    gdImageRectangle(im, var.NI - 1, TITLE_HEIGHT, var.NI + BAR_WIDTH, var.GJ - 1, color_lvl[SLOT_FRAME]);
    gdImageFilledRectangle(im, var.NI + BAR_WIDTH + 1, 0, var.GI - 1, var.GJ, color_lvl[SLOT_WHITE]);
    if (classes)
        draw_class_names(im, color_lvl, dy);
    else
        draw_thresholds(im, color_lvl, data_lvl, dy);
    gdImageString(im, gdFontGetLarge(), var.NI + 3, 4, (unsigned char *)product->unit, color_lvl[SLOT_BLACK]);
    return 0;
}
