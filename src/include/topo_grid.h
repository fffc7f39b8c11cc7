// The terrain file: a 64-byte header, then 1441 rows of 1153 little-endian int16 heights in
// tenths of a metre, 1 km apart, row 0 the southern edge. Shared by its reader and its writer.
#ifndef TOPO_GRID_H
#define TOPO_GRID_H

constexpr long TOPO_HEADER_BYTES = 64;
constexpr int TOPO_ROWS = 1441;
constexpr int TOPO_COLS = 1153;
constexpr long TOPO_DATA_BYTES = 2L * TOPO_ROWS * TOPO_COLS;

// The projection origin's km position from the file's first point.
constexpr int TOPO_REF_EAST = 560;
constexpr int TOPO_REF_NORTH = 840;

#endif
