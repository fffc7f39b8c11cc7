// The request: the query string split into the request record `var`, the product it names, the
// data time, and the search back in 5-minute steps for a grid file.
#ifndef USER_INPUT_H
#define USER_INPUT_H

#include "product_table.h"
#include "rdr_paths.h"

// The one request record: query values, data time, map extent, canvas sizes, colour and station
// counts. Every room reads it; the rooms named beside a field fill it.
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
    int num_aws_stn;       // stations loaded (or the loader's negative result): station overlay
    int num_area_stn;      // stations inside the zoomed view: station overlay
    int NX, NY;            // map extent, km: map catalogue
    int SX, SY;            // projection origin, km from the map's south-west corner: map catalogue
    int NI, NJ;            // map area, pixels: view (error picture: its own square)
    int GI, GJ;            // whole image, pixels: view (error picture: its own square)
    int num_color;         // colour levels: colour table
    int num_color_topo;    // terrain bands: colour table
    char fname[RDR_PATH_CAP];  // grid file of the current candidate time
    int dir_mode;
};

extern INPUT_VAR var;

// The product table's row of var.obs, set by user_input with the query (and looked up nowhere
// else), so every room asks it rather than the code.
extern const PRODUCT *product;

// The time asked for: the requested (or current) time rounded down to 5 minutes, before the
// search back; set by user_input once it has a query string, 0 before.
extern int seq_asked;

// Fills `var` and `product` from QUERY_STRING and finds the data time: 0 when a grid file was
// found for one of the ten candidate times, -1 without a query string or without a file.
int user_input();

// Names the grid file of var.seq in var.fname: 0 when it exists and is larger than 100 bytes.
int rdr_sfc_pty_file();

// The data-time search of user_input, for tools that predict which grid file a time shows: the
// time rounded down to `step_min` minutes, then `candidates` times `step_min` apart, backwards.
struct TIME_SEARCH {
    int candidates;
    int step_min;
};
TIME_SEARCH time_search();

#endif
