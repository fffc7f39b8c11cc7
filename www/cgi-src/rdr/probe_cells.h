// The grid file's cells at a few places, read in one forward pass: for each cell asked for, the
// stored byte or int16 of every block the product table names. Only the rows that hold such cells
// are inflated, each into a one-row buffer; the rows between are skipped and the pass stops after
// the last row it needs. Cells the stream did not give (a cut file) stay CELL_NOT_GIVEN.
#ifndef PROBE_CELLS_H
#define PROBE_CELLS_H

#include <climits>
#include <vector>

#include "grid_stream.h"
#include "rdr_cmp_header.h"
#include "view.h"

// After the header the file holds 8 grid sizes (nx x ny bytes): the byte blocks of codes and
// areas, then three int16 blocks. A cell's content is indexed by its block's start among them.
constexpr int GRID_SIZES = 8;
constexpr int CELL_NOT_GIVEN = INT_MIN;

struct CELL_RAW {
    int raw[GRID_SIZES];
};

// Reads from the stream's position right after the header of `head` (nx, ny above 0). A cell with
// i or j below 0 is not read. Returns 0.
int probe_cells(GridStream *s, const RDR_CMP_HEAD &head, const std::vector<GRID_CELL> &cells,
                std::vector<CELL_RAW> *out);

#endif
