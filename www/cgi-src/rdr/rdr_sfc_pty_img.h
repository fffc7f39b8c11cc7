// The program's records and the functions of its rooms. One process serves one request; the
// records below are process-wide and filled in the order the driver calls the rooms.
#ifndef RDR_SFC_PTY_IMG_H
#define RDR_SFC_PTY_IMG_H

#include <gd.h>

#include "rdr_cmp_header.h"
#include "rdr_paths.h"

// The request: query values, data time, map extent, canvas sizes, colour and station counts.
struct INPUT_VAR {
    int seq_now;           // current local time, minute sequence
    int seq;               // data time: the time of the grid file found
    char cmp[8];
    char qcd[8];
    char obs[8];           // product code
    char map[8];           // map code (catalogue key, outline file names)
    int x1, y1, x2, y2;    // cross-section line, km of the map domain
    char color[8];
    float grid;
    int zoom_level;        // 0 the whole map; above 0 the zoom digits apply
    int zoom_rate;         // enlargement per zoom step
    char zoom_x[16];       // one digit per zoom step; a '0' ends the steps
    char zoom_y[16];
    char auto_man;         // 'a': use the current time
    int size;              // map width in pixels
    int legend;            // 1 draws the legend column
    int aws;               // station overlay mode; 0 or less none
    int sms;
    char gis[8];           // 'T' adds the terrain
    int griddisp;          // 0 nearest cell, otherwise bilinear
    int rnexdisp;          // marking colour of the rain products
    int num_aws_stn;       // stations loaded (or the loader's negative result)
    int num_area_stn;      // stations inside the zoomed view
    int NX, NY;            // map extent, km
    int SX, SY;            // projection origin, km from the map's south-west corner
    int NI, NJ;            // map area, pixels
    int GI, GJ;            // whole image, pixels
    int num_color;         // colour levels
    int num_color_topo;    // terrain bands
    char fname[RDR_PATH_CAP];  // grid file of the current candidate time
    int dir_mode;
};

// One automatic weather station as loaded and as drawn.
struct STN_VAL {
    char gov_cd[8];
    int stn_id;
    char stn_ko[32];       // EUC-KR
    char stn_sp[8];
    float x, y;            // km of the map domain; zoomed by the overlay
    float ht;
    float d;               // loading state, then the value to show (-999.0 missing)
    float wd, ws;          // wind, degrees and m/s
    short re;              // 1 rain, 0 no rain, -999 unknown
    short re_ok;
    short re_base;
    short rn_15x;          // 15-minute rain, 0.1 mm, -999 missing
};

struct RNEX_COLOR {
    int rnex;
    char rnex_ko[20];      // EUC-KR
    int color;
    int R, G, B;
};

struct RNSN_COLOR {
    int rnsn;
    char rnsn_ko[10];      // EUC-KR
    int color;
    int R, G, B;
};

// Built with RDR_STRAIGHTFORWARD the program takes the plain road wherever it has a faster one
// (zlib, one read per grid, the whole terrain): the reference the fast roads must match pixel for
// pixel. Decided when compiling; nothing is looked up at run time.
#ifdef RDR_STRAIGHTFORWARD
constexpr bool STRAIGHTFORWARD = true;
#else
constexpr bool STRAIGHTFORWARD = false;
#endif

constexpr int STN_MAX = 2000;
constexpr int COLOR_SLOTS = 256;

extern INPUT_VAR var;
extern RDR_CMP_HEAD rdr_cmp_head;
extern float **data;
extern unsigned char **pty;
extern RNEX_COLOR rnex_color[4];
extern RNSN_COLOR rnsn_color[4];
extern STN_VAL stn_data[STN_MAX];

// Request front end.
int user_input();
int rdr_sfc_pty_file();
int err_img(int err);
int rdr_sfc_pty_img();

// Radar grid input.
int grid_map_inf(const char *map, int *nx, int *ny, int *sx, int *sy);
int rdr_sfc_pty_get();
// Every grid the product needs (a second read as "RNSN" for "HSR" and "RN15X"): 0 or error code 2.
int rdr_sfc_pty_get_all();
// Frees `data` and `pty` as the last reads allocated them and sets both to null: for a host that
// serves several requests in one process (the fuzz targets). The program never frees its grids.
void rdr_sfc_pty_release();

// Grid rendering and annotation. Layers return 0, or a negative number when they could not
// draw; the driver ignores it.
int color_table(gdImagePtr im, int color_lvl[], float data_lvl[]);
int grid_disp(gdImagePtr im, int color_lvl[], float data_lvl[]);
// The grid rows that grid_disp will read for the request, marked 1 in the caller's zeroed arrays
// of ny entries: rows of pty, rows of data. Needs the header and the canvas sizes; -1 when the
// grid cannot be placed on a canvas, and nothing is marked.
int grid_rows_sampled(char class_rows[], char value_rows[]);
int topo_disp(gdImagePtr im, int color_lvl[], float data_lvl[]);
int map_disp(gdImagePtr im, int color_map, int kind);
int title_disp(gdImagePtr im, int color_lvl[]);
int legend_disp(gdImagePtr im, int color_lvl[], float data_lvl[]);
int cross_line_disp(gdImagePtr im, int color_lvl[]);
int euckr2utf(char *str, char *out);

// Stations.
int aws_info_get(int seq);
int aws_rain_data_get(int seq, int aws_mode, int num_stn);
int aws_disp(gdImagePtr im, int color_lvl[]);
int aws_zooming();

// The product kinds, decided the same way by every room that chooses by product.
bool obs_is(const char *code);            // obs equals code exactly
bool obs_is_class_product();              // "RNEX", anything containing "RNSN", or "AREA"

#endif
