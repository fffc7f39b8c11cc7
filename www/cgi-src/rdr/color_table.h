// The palette of a picture: the product's classes (from a colour file or a class table) and the
// fixed slots that every layer draws with, by name.
#ifndef COLOR_TABLE_H
#define COLOR_TABLE_H

#include <gd.h>

// color_lvl[slot] is the palette entry of a slot, data_lvl[slot] its value where it has one.
// Class slots are 0 .. num_color - 1; the fixed slots follow.
constexpr int COLOR_SLOTS = 256;
constexpr int SECOND_CLASS = 1;   // its colour marks light rain under the rain products
enum PaletteSlot : int {
    SLOT_RESERVED = 150,       // no layer paints it: palette entry 0 when there is no class
    SLOT_TOPO_FIRST = 151,     // terrain bands 151..153, each up to its height in data_lvl
    SLOT_TOPO_LAST = 153,
    SLOT_RESERVED_171 = 171,
    SLOT_BACKGROUND = 240,     // the whole image before anything is drawn
    SLOT_WHITE = 241,          // title band, legend labels
    SLOT_FRAME = 242,          // frames of the map area and the legend bar
    SLOT_RESERVED_243 = 243,
    SLOT_BLACK = 244,          // outlines of kind 4, texts, wind barbs
    SLOT_DISC = 245,           // station discs
    SLOT_RED = 246,            // centre of a station without rain
    SLOT_BLUE = 247,           // title and class names, centre of a station with rain
    SLOT_RESERVED_248 = 248,
    SLOT_GREY = 249,           // outlines of kind 1
    SLOT_RESERVED_250 = 250,
    SLOT_SECTION = 251,        // the cross-section line
    SLOT_MARKING = 252,        // light rain marked in a colour of its own
};

// The class tables of the class products, in class order; names in EUC-KR. `color` is the
// palette entry that color_table allocated for the row in the current picture.
struct RNEX_COLOR {
    int rnex;
    char rnex_ko[20];
    int color;
    int R, G, B;
};

struct RNSN_COLOR {
    int rnsn;
    char rnsn_ko[10];
    int color;
    int R, G, B;
};

constexpr int CLASS_ROWS = 4;
extern RNEX_COLOR rnex_color[CLASS_ROWS];
extern RNSN_COLOR rnsn_color[CLASS_ROWS];

// Allocates the palette in its fixed order (the classes first, so that class 0 is palette entry
// 0, then the fixed slots) and sets var.num_color and var.num_color_topo; for a product whose
// thresholds slide with the month, slides them. Returns 0.
int color_table(gdImagePtr im, int color_lvl[], float data_lvl[]);

#endif
