// The precipitation-type grid file: a gzip stream of a 64-byte header and five blocks of
// nx x ny cells (codes, areas, then wet-bulb temperature, radar rain and station rain as int16).
// The reader keeps the header in `rdr_cmp_head` and the request product's cells in `pty`
// (classes) or `data` (values); cells the stream did not give are missing (class 0, -999.0).
#ifndef RDR_SFC_PTY_GET_H
#define RDR_SFC_PTY_GET_H

#include "grid_stream.h"
#include "rdr_cmp_header.h"
#include "view.h"

extern RDR_CMP_HEAD rdr_cmp_head;
extern float **data;          // data[j][i], row 0 the southern edge
extern unsigned char **pty;   // pty[j][i]

// Statuses of the reads: the grid file does not open or its header is implausible; the map
// catalogue is missing (so nothing can be placed at all).
constexpr int GRID_NOT_READ = -1;
constexpr int GRID_NO_CATALOGUE = -2;

// Looks var.map up in the map catalogue, then reads every row of the product's block of
// var.fname: 0 or a status.
int rdr_sfc_pty_get();

// The classes that mark light rain under a rain product (its `marking` rule), read from the same
// file by themselves into `pty`: 0 or a status, GRID_NOT_READ also when the file's grid changed
// its shape since the last read.
int rdr_sfc_pty_get_marking();

// The one-pass road: rdr_sfc_pty_open looks the map up and reads the header (0 or a status);
// rdr_sfc_pty_read then reads, from where the header ended, the marking classes (for a rain
// product) and the product's cells, only the rows that `plan` marks (all rows when it is empty).
struct GRID_FILE {
    GridStreamPtr stream;
};
int rdr_sfc_pty_open(GRID_FILE *file);
int rdr_sfc_pty_read(GRID_FILE *file, const ROW_PLAN &plan);

// Frees `data` and `pty` as the last reads allocated them and sets both to null: for a host that
// serves several requests in one process. The program itself never frees its grids.
void rdr_sfc_pty_release();

#endif
